#include "genseries.h"

#include "chnmap.h"
#include "phasor.h"
#include "seriesframe.h"

#include <algorithm>
#include <climits>

namespace {

// The two phases of the pair in the order of the difference: A-B, C-A, B-C.
bool pairOf(int32_t kind, int &first, int &second)
{
    switch (kind) {
    case GenZab:
        first = 0, second = 1;
        return true;
    case GenZca:
        first = 2, second = 0;
        return true;
    case GenZbc:
        first = 1, second = 2;
        return true;
    default:
        return false;
    }
}

// The per-sample work: the window's phasors of every present channel, then the values.
class TerminalSample
{
public:
    TerminalSample(const GenTerminal &t, const GenSeriesOut &out) : m_t(t), m_out(out)
    {
        for (int k = 0; k < 3; ++k) {
            if (t.chnU[k] && t.chnI[k] && t.chnU[k]->Values() && t.chnI[k]->Values())
                m_phases |= 1 << k;
        }
        for (int k = 0; k < 3; ++k) {
            if (t.chnI[k]) {
                m_pFactor = 0.01 * t.chnI[k]->Unit().factor;
                break;
            }
        }
        m_hasPair = pairOf(t.nZKind, m_first, m_second) && (m_phases & (1 << m_first)) &&
                    (m_phases & (1 << m_second));
    }

    void at(int i, int start, int n, int step)
    {
        const float *samples[6];
        int used = 0;
        for (int k = 0; k < 3; ++k) {
            if (m_phases & (1 << k)) {
                samples[used++] = m_t.chnU[k]->Values() + start;
                samples[used++] = m_t.chnI[k]->Values() + start;
            }
        }
        ComplexD phasors[6];
        DftPhasors(samples, used, n, 1, step, phasors);
        ComplexD u[3], c[3];
        double p = 0.0, q = 0.0;
        for (int k = 0, j = 0; k < 3; ++k) {
            if (!(m_phases & (1 << k)))
                continue;
            u[k] = phasors[j++];
            c[k] = phasors[j++];
            p += u[k].re * c[k].re + u[k].im * c[k].im;
            q += u[k].im * c[k].re - u[k].re * c[k].im;
        }
        if (m_out.p)
            m_out.p[i] = float(p * m_pFactor);
        if (m_out.q)
            m_out.q[i] = float(q * m_pFactor);
        if (m_hasPair) {
            const ComplexD du{u[m_first].re - u[m_second].re, u[m_first].im - u[m_second].im};
            const ComplexD di{c[m_first].re - c[m_second].re, c[m_first].im - c[m_second].im};
            const double den = di.re * di.re + di.im * di.im;
            const double zr = den > 0.0 ? (du.re * di.re + du.im * di.im) / den : 0.0;
            const double zx = den > 0.0 ? (du.im * di.re - du.re * di.im) / den : 0.0;
            if (m_out.r)
                m_out.r[i] = float(zr);
            if (m_out.x)
                m_out.x[i] = float(zx);
        }
    }

    void hold(int i)
    {
        for (float *y : {m_out.r, m_out.x, m_out.p, m_out.q}) {
            if (y)
                HoldSample(y, i);
        }
    }

private:
    const GenTerminal &m_t;
    const GenSeriesOut &m_out;
    int m_phases = 0;
    int m_first = 0;
    int m_second = 0;
    bool m_hasPair = false;
    double m_pFactor = 0.01;
};

} // namespace

GenSeriesNames GenSeriesNamesOf(const QString &unitName, int32_t nZKind)
{
    const char *pair = nZKind == GenZca ? "Zca" : nZKind == GenZbc ? "Zbc" : "Zab";
    const QString impedance = unitName + QStringLiteral(" Terminal Impedance ") + QLatin1String(pair);
    return GenSeriesNames{QString::asprintf("%s R-Part", impedance.toUtf8().constData()),
                          QString::asprintf("%s X-Part", impedance.toUtf8().constData()),
                          QString::asprintf("%s Terminal Power", unitName.toUtf8().constData())};
}

float GenTerminalFreq(const GenTerminal &t)
{
    for (const CChnMapAnalog *u : t.chnU) {
        if (u)
            return RatedFreq(*u);
    }
    return 50.0f;
}

bool GenTerminalSeries(const CCmtd99File &file, const GenTerminal &t, const GenSeriesOut &out,
                       ProgressFn report, void *owner)
{
    const int total = std::min<int>(out.count, file.loadedPoints);
    SeriesProgress progress(report, owner, std::max(0, total));
    TerminalSample sample(t, out);
    const float freq = t.freq >= 1.0f ? t.freq : 50.0f;
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        int i = segment.first;
        if (SegmentUsable(segment)) {
            const int n = PointsPerCycle(segment.rate, freq);
            const int step = DecimationStep(n);
            const int64_t last = int64_t(segment.end) - n + DftWindowShift(n);
            const int end =
                int(std::clamp<int64_t>(std::min<int64_t>(segment.end, last), segment.first, INT_MAX));
            if (int64_t(segment.end) - segment.first >= n) {
                for (; i < end; ++i) {
                    if (!progress.at(i))
                        return false;
                    sample.at(i, DftWindowStart(i, n, segment, file.loadedPoints), n, step);
                }
            }
        }
        for (; i < segment.end; ++i)
            sample.hold(i);
        return progress.segmentDone();
    });
}

bool GenCountSlips(const StepBounds &b, const float *r, const float *x, int lo, int hi, double scale,
                   GenSlipCounts &counts, ProgressFn report, void *owner)
{
    counts = GenSlipCounts();
    if (lo > hi || lo < 0)
        return true;
    SeriesProgress progress(report, owner, hi - lo + 1);
    StepSlipCounter slips;
    slips.start(StepRegion(b, r[lo] * scale, x[lo] * scale));
    for (int i = lo + 1; i <= hi; ++i) {
        if (!progress.at(i - lo))
            return false;
        switch (slips.next(StepRegion(b, r[i] * scale, x[i] * scale))) {
        case StepSlipCounter::SlipSystem:
            ++counts.nSlipSystem;
            break;
        case StepSlipCounter::SlipGT:
            ++counts.nSlipGT;
            break;
        case StepSlipCounter::NoSlip:
            break;
        }
    }
    return true;
}
