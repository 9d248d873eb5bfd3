#include "freqseries.h"

#include "complexd.h"
#include "interpolation.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace {

// The time at which the straight line between samples a and b crosses zero.
double crossingTime(const int64_t *t, const float *x, int a, int b)
{
    return double(t[b]) - (double(t[b]) - double(t[a])) * x[b] / (x[b] - x[a]);
}

// The level below which a channel's zero crossings are noise: volts for voltages, amperes for
// currents; other classes are not measured (0).
double levelFloor(int chnClass)
{
    if (chnClass == 1)
        return 5.0;
    if (chnClass == 2)
        return 0.1;
    return 0.0;
}

// Resamples the two cycles from `index` at the period of `f` into scratch[0 .. 2n): the
// ordinates handed to the interpolation are the sample times themselves, so the trace is the
// time axis, and a second estimate is taken over it.
double secondPass(const int64_t *t, const RateSegment &segment, int index, int n, int step, int total,
                  double f, float *scratch)
{
    const double period = 1000000 / f;
    const double dt = period / n;
    for (int j = 0; j < 2 * n; ++j) {
        // An estimate near zero makes a period beyond any recording: the offsets are bounded
        // (and the sample then limited to the end) rather than overflow.
        const double offset = j * dt;
        const int64_t tj = offset < 9.0e18 ? static_cast<int64_t>(offset) : int64_t(9.0e18);
        const float ahead = float(tj) * segment.rate * 0.000001f;
        int64_t s = index + (ahead < float(total) ? static_cast<int64_t>(ahead) : int64_t(total));
        s = std::max<int64_t>(0, std::min<int64_t>(s, total - 3));
        const double x0 = double(t[s]);
        const double x1 = double(t[s + 1]);
        const double x2 = double(t[s + 2]);
        scratch[j] =
            static_cast<float>(InterpHermite2(x0, x0, x1, x1, x2, x2, double(t[index]) + double(tj)));
    }
    return TwoCycleFreq(scratch, n, step, f);
}

// The largest scratch that a second pass of this recording needs: two cycles, in segments
// long enough to hold them.
int64_t scratchLength(const CCmtd99File &file, const SeriesSource &source, int total)
{
    int64_t most = 0;
    ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        if (SegmentUsable(segment)) {
            const int64_t twoCycles = 2 * int64_t(PointsPerCycle(segment.rate, source.freq));
            most = std::max(most, std::min<int64_t>(twoCycles, segment.end - segment.first));
        }
        return true;
    });
    return most;
}

// One usable segment of the DFT-insert curve: the value at a sample rests on the two cycles
// that end there; the samples before the first such value repeat it.
bool dftInsertSegment(const CCmtd99File &file, const SeriesSource &source, const RateSegment &segment,
                      int total, float &held, float *scratch, float *y, SeriesProgress &progress)
{
    const int64_t n = PointsPerCycle(segment.rate, source.freq);
    const int64_t a = segment.first + 2 * n;
    const int64_t b = int64_t(segment.end) - 3;
    int64_t i = a;
    for (; i < b; ++i) {
        held = DftInsertFreq(file.sampleTimes, segment, source, static_cast<int>(i - 2 * n), total, held,
                             scratch);
        y[i] = held;
        if (!progress.at(static_cast<int>(i)))
            return false;
    }
    for (; i < segment.end; ++i)
        y[i] = held;
    if (a < segment.end)
        std::fill(y + segment.first, y + a, y[a]);
    return true;
}

} // namespace

double ZeroCrossFreq(const int64_t *t, const RateSegment &segment, const SeriesSource &chn, int index, int n)
{
    const int64_t span = n / 2 + 2 * int64_t(n);
    if (segment.end - segment.first < span)
        return 0.0;
    const double floor = levelFloor(chn.chnClass);
    if (floor == 0.0)
        return 0.0;
    const int half = static_cast<int>(span / 2);
    int c = index;
    if (c < segment.first + half)
        c = segment.first + half;
    if (c > segment.end - half)
        c = segment.end - half;
    const float *x = chn.x;
    if (CycleEffective(x + c - n / 2, n) < floor)
        return 0.0;
    const int lim = half - 1;
    if (lim < 1)
        return 0.0;
    // Only rising crossings count: a whole cycle is measured around the sample.
    int back = -1;
    for (int j = c; j > c - lim; --j) {
        if (x[j - 1] < 0 && x[j] >= 0) {
            back = j;
            break;
        }
    }
    int ahead = -1;
    for (int j = c; j < c + lim; ++j) {
        if (x[j] < 0 && x[j + 1] >= 0) {
            ahead = j;
            break;
        }
    }
    if (back < 0 || ahead < 0)
        return 0.0;
    const double t1 = crossingTime(t, x, back - 1, back);
    const double t2 = crossingTime(t, x, ahead, ahead + 1);
    const double f = 1000000 / (t2 - t1);
    const float fr = chn.freq;
    if (f < 0.1 * fr || f > 10 * fr)
        return 0.0;
    return f;
}

float ZeroCrossFilter(const int64_t *t, const RateSegment &segment, const SeriesSource &chn, int index, int n,
                      float held)
{
    const double m = ZeroCrossFreq(t, segment, chn, index, n);
    const float fr = chn.freq;
    if (m < 0.2f * fr || m > 10 * fr)
        return held;
    if (index < 1)
        return static_cast<float>(m);
    if (std::fabs(m - held) > 0.02 * held)
        return held;
    return static_cast<float>(m);
}

double TwoCycleFreq(const float *x, int n, int step, double base)
{
    const int rectCos = 1;
    const ComplexD p1 = DftPhasorMethod(rectCos, x, n, 1, step);
    const ComplexD p2 = DftPhasorMethod(rectCos, x + n, n, 1, step);
    // The imaginary part of the quotient stands in for the phase step between the cycles.
    double d = (p1.im * p2.re - p2.im * p1.re) / (p2.im * p2.im + p2.re * p2.re);
    if (d > 3.14159265)
        d = d - 6.2831853;
    else if (d < -3.14159265)
        d = d + 6.2831853;
    return (d * 0.15915494327375637 + 1.0) * base;
}

float DftInsertFreq(const int64_t *t, const RateSegment &segment, const SeriesSource &chn, int index,
                    int total, float held, float *scratch)
{
    const float fr = chn.freq;
    const int n = PointsPerCycle(segment.rate, fr);
    const int step = DecimationStep(n);
    double f = TwoCycleFreq(chn.x + index, n, step, fr);
    // A flat channel has no phase: its estimate is not a number, and counts as none.
    if (!(f > 0))
        return held;
    if (std::fabs(f - fr) > 0.01 * fr) {
        const int64_t e = index + 2 * int64_t(n);
        if (e >= segment.end || total < 3)
            return held;
        f = secondPass(t, segment, index, n, step, total, f, scratch);
    }
    if (!(std::fabs(f - held) <= 0.02 * held))
        return held;
    if (!(std::fabs(f - fr) <= 0.1 * fr))
        return held;
    return static_cast<float>(f);
}

bool ZeroCrossFreqSeries(const CCmtd99File &file, const SeriesSource &source, float *y,
                         SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = y ? SeriesLength(file, source) : 0;
    float held = source.freq;
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        const bool usable = SegmentUsable(segment) && file.sampleTimes;
        const int n = PointsPerCycle(segment.rate, source.freq);
        for (int i = segment.first; i < segment.end; ++i) {
            if (usable)
                held = ZeroCrossFilter(file.sampleTimes, segment, source, i, n, held);
            y[i] = held;
            if (!report.at(i))
                return false;
        }
        return report.segmentDone();
    });
}

bool DftInsertFreqSeries(const CCmtd99File &file, const SeriesSource &source, float *y,
                         SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = y ? SeriesLength(file, source) : 0;
    std::fill(y, y + total, 0.0f);
    // Two cycles of scratch, taken once for the whole curve.
    const std::unique_ptr<float[]> scratch(
        new (std::nothrow) float[size_t(scratchLength(file, source, total)) + 1]);
    if (!scratch)
        return false;
    float held = source.freq;
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        if (SegmentUsable(segment) && file.sampleTimes) {
            if (!dftInsertSegment(file, source, segment, total, held, scratch.get(), y, report))
                return false;
        } else {
            std::fill(y + segment.first, y + segment.end, held);
        }
        return report.segmentDone();
    });
}
