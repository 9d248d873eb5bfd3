#include "powercurves.h"

#include "freqseries.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double kDegrees = 57.29577957855229;

// Where a sample stands in the walk.
enum WindowState
{
    WindowInside = 0, // a whole window of the sample's segment lies at `start`
    WindowHeld = 1,   // the window runs out (the segment's tail, or past the samples): hold
    WindowNone = 2    // the segment is too slow for a window
};

// The one-cycle window of a sample: its start, points per cycle and decimation step, in its
// rate segment.
struct Window
{
    WindowState state = WindowNone;
    int start = -1;
    int n = 0;
    int step = 1;
    RateSegment segment;
};

// The sliding frame of the derived curves, sample by sample: each sample of a usable segment
// gets its window start as the cursor would, the samples behind the last whole window hold, and
// a segment too slow for windows has no value. sample(i, window) writes every output of sample
// i. False when the progress asks to stop.
template <typename Sample>
bool walkWindows(const CCmtd99File &file, float freq, int total, SeriesProgress &progress, Sample sample)
{
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        Window w;
        w.segment = segment;
        const bool usable = SegmentUsable(segment);
        w.n = usable ? PointsPerCycle(segment.rate, freq) : 0;
        w.step = DecimationStep(w.n);
        const int64_t last = int64_t(DftWindowShift(w.n)) + segment.end - w.n;
        for (int i = segment.first; i < segment.end; ++i) {
            if (usable) {
                w.start = i < last ? DftWindowStart(i, w.n, segment, total) : -1;
                const bool whole = w.n >= 1 && w.start >= 0 && int64_t(w.start) + w.n <= total;
                w.state = whole ? WindowInside : WindowHeld;
            }
            sample(i, std::as_const(w));
            if (!progress.at(i))
                return false;
        }
        return progress.segmentDone();
    });
}

// The value before sample i, or `noValue` at the first sample.
inline void holdOrNone(float *y, int i, WindowState state, float noValue)
{
    if (y)
        y[i] = state == WindowHeld && i > 0 ? y[i - 1] : noValue;
}

int shortest(const CCmtd99File &file, const SeriesSource *sources, int count, int total)
{
    for (int c = 0; c < count; ++c) {
        if (sources[c].x)
            total = std::min(total, SeriesLength(file, sources[c]));
    }
    return std::max(0, total);
}

bool phaseCounts(const PowerInputs &in, int p)
{
    return in.u[p].x && in.i[0][p].x;
}

// The channels of the power curves in one list for the batched transform: index of each
// voltage and current in `x`, -1 where there is none.
struct PowerChannels
{
    const float *x[kDftBatch] = {};
    int count = 0;
    int u[3] = {-1, -1, -1};
    int i[2][3] = {{-1, -1, -1}, {-1, -1, -1}};

    explicit PowerChannels(const PowerInputs &in)
    {
        for (int p = 0; p < 3; ++p) {
            if (!phaseCounts(in, p))
                continue;
            u[p] = add(in.u[p].x);
            for (int b = 0; b < 2; ++b)
                i[b][p] = in.i[b][p].x ? add(in.i[b][p].x) : -1;
        }
    }
    int add(const float *samples)
    {
        x[count] = samples;
        return count++;
    }
};

void writePower(const PowerOutputs &out, int place, int i, double p, double q)
{
    if (out.p[place])
        out.p[place][i] = static_cast<float>(p);
    if (out.q[place])
        out.q[place][i] = static_cast<float>(q);
    if (out.s[place])
        out.s[place][i] = static_cast<float>(std::sqrt(p * p + q * q));
}

void holdPower(const PowerOutputs &out, int i, WindowState state, float noValue)
{
    for (int place = 0; place < kPowerPlaces; ++place) {
        holdOrNone(out.p[place], i, state, noValue);
        holdOrNone(out.q[place], i, state, noValue);
        holdOrNone(out.s[place], i, state, noValue);
    }
}

// The first phase with a voltage: its rated frequency sets the window of all.
float windowFreq(const SeriesSource *u)
{
    for (int p = 0; p < 3; ++p) {
        if (u[p].x)
            return u[p].freq;
    }
    return 50.0f;
}

// E·U* of the voltage behind the reactance, whose angle is the load angle.
double loadAngle(const ComplexD &u, const ComplexD &i, double xq)
{
    const ComplexD e{u.re - xq * i.im, u.im + xq * i.re};
    return std::atan2(e.im * u.re - e.re * u.im, e.re * u.re + e.im * u.im) * kDegrees;
}

} // namespace

int PowerCurveLength(const CCmtd99File &file, const PowerInputs &in)
{
    int total = file.loadedPoints;
    bool any = false;
    for (int p = 0; p < 3; ++p) {
        if (!phaseCounts(in, p))
            continue;
        any = true;
        total = shortest(file, &in.u[p], 1, total);
        total = shortest(file, &in.i[0][p], 1, total);
        total = shortest(file, &in.i[1][p], 1, total);
    }
    return any ? std::max(0, total) : 0;
}

bool PowerCurves(const CCmtd99File &file, const PowerInputs &in, const PowerOutputs &out, float noValue,
                 SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = PowerCurveLength(file, in);
    const PowerChannels chn(in);
    // U·I* of peak phasors is twice the power of effective values.
    const double half = 0.5 / out.unitSize;
    ComplexD phasors[kDftBatch];
    return walkWindows(file, windowFreq(in.u), total, report, [&](int i, const Window &w) {
        if (w.state != WindowInside) {
            holdPower(out, i, w.state, noValue);
            return;
        }
        const float *x[kDftBatch];
        for (int c = 0; c < chn.count; ++c)
            x[c] = chn.x[c] + w.start;
        DftPhasors(x, chn.count, w.n, 1, w.step, phasors);
        double pSum = 0.0;
        double qSum = 0.0;
        for (int p = 0; p < 3; ++p) {
            if (chn.u[p] < 0)
                continue;
            const ComplexD u = phasors[chn.u[p]].scaled(in.uScale[p]);
            ComplexD current;
            for (int b = 0; b < 2; ++b) {
                if (chn.i[b][p] >= 0)
                    current = current + phasors[chn.i[b][p]].scaled(in.iScale[b][p]);
            }
            const double pPhase = (u.re * current.re + u.im * current.im) * half;
            const double qPhase = (u.im * current.re - u.re * current.im) * half;
            writePower(out, p, i, pPhase, qPhase);
            pSum += pPhase;
            qSum += qPhase;
        }
        writePower(out, kPowerTotal, i, pSum, qSum);
    });
}

bool VoltsPerHertzCurve(const CCmtd99File &file, const SeriesSource &u, double ratedVoltage, double ratedFreq,
                        float *y, float noValue, SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = y ? SeriesLength(file, u) : 0;
    const bool rated = ratedVoltage > 0.0 && ratedFreq > 0.0;
    // The frequency is followed sample by sample as the zero-cross curve does, so that a
    // measurement that jumps keeps the last accepted value.
    float held = u.freq;
    return walkWindows(file, u.freq, total, report, [&](int i, const Window &w) {
        if (w.state != WindowNone && file.sampleTimes)
            held = ZeroCrossFilter(file.sampleTimes, w.segment, u, i, w.n, held);
        if (w.state != WindowInside || !rated) {
            holdOrNone(y, i, rated ? w.state : WindowNone, noValue);
            return;
        }
        const double volts = Effective(DftPhasor(u.x + w.start, w.n, 1, w.step));
        y[i] =
            held > 0.0f ? static_cast<float>((volts / ratedVoltage) / (double(held) / ratedFreq)) : noValue;
    });
}

int LoadAngleLength(const CCmtd99File &file, const LoadAngleInputs &in)
{
    const bool three = in.u[1].x && in.u[2].x && in.i[1].x && in.i[2].x;
    if (!in.u[0].x || !in.i[0].x)
        return 0;
    const int total = shortest(file, in.u, three ? 3 : 1, file.loadedPoints);
    return shortest(file, in.i, three ? 3 : 1, total);
}

bool LoadAngleCurve(const CCmtd99File &file, const LoadAngleInputs &in, float *y, float noValue,
                    SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = y ? LoadAngleLength(file, in) : 0;
    const int phases = in.u[1].x && in.u[2].x && in.i[1].x && in.i[2].x ? 3 : 1;
    const float *channels[6] = {in.u[0].x, in.u[1].x, in.u[2].x, in.i[0].x, in.i[1].x, in.i[2].x};
    return walkWindows(file, in.u[0].freq, total, report, [&](int i, const Window &w) {
        if (w.state != WindowInside) {
            holdOrNone(y, i, w.state, noValue);
            return;
        }
        const float *x[6];
        ComplexD p[6];
        int c = 0;
        for (int k = 0; k < 6; ++k) {
            if (k % 3 < phases)
                x[c++] = channels[k] + w.start;
        }
        DftPhasors(x, c, w.n, 1, w.step, p);
        ComplexD u = p[0];
        ComplexD current = p[phases];
        if (phases == 3) {
            ComplexD zero, negative;
            SymmetricalParts(p[0], p[1], p[2], zero, u, negative);
            SymmetricalParts(p[3], p[4], p[5], zero, current, negative);
        }
        current = current.scaled(in.iScale);
        y[i] = u.re == 0.0 && u.im == 0.0 ? noValue : static_cast<float>(loadAngle(u, current, in.xq));
    });
}

double QuadratureOhms(double xqPerUnit, double ratedKv, double ratedMva, double ratioU, double ratioI)
{
    if (!(ratedMva > 0.0) || !(ratioU > 0.0) || !(ratioI > 0.0))
        return 0.0;
    // kV² / MVA is ohm; a secondary ohm is a primary one times the current ratio over the
    // voltage ratio, since U is divided by the one and I by the other.
    return xqPerUnit * ratedKv * ratedKv / ratedMva * ratioI / ratioU;
}
