#include "expcurves.h"

#include "interpolation.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kDegrees = 57.29577957855229;

// A script's number as a whole sample number, truncated; far outside any recording (or not a
// number) as -1, which every range rule treats as outside.
int64_t wholeNumber(double v)
{
    if (!(v > -1.0e15 && v < 1.0e15))
        return -1;
    return static_cast<int64_t>(std::trunc(v));
}

int loadedTotal(const CCmtd99File &file)
{
    return std::max(file.loadedPoints, 0);
}

} // namespace

void AverageWindowSeries(const CCmtd99File &file, const SeriesSource &source, double points, float *y)
{
    const int total = SeriesLength(file, source);
    if (!y || total < 1)
        return;
    float maxRate = 0.0f;
    for (const SampleSegment &s : file.segments)
        maxRate = std::max(maxRate, s.rate);
    const double m = std::max(points, 1.0);
    const float *x = source.x;
    SeriesProgress none;
    ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        // The window covers the same time in every segment: n points at the fastest rate.
        const double w = std::trunc(m / (double(maxRate) / double(segment.rate)) + 0.5);
        if (!(w >= 1.0)) {
            std::copy(x + segment.first, x + segment.end, y + segment.first);
            return true;
        }
        // A window beyond any recording fits nowhere and holds; only the int must stay whole.
        const int n = static_cast<int>(std::min(w, 1.0e9));
        return SlideSegment(
            segment, n, total, total, y, none,
            [x](int start, int count, int) { return static_cast<float>(StridedMean(x + start, count, 1)); },
            [y](int i, int) { HoldSample(y, i); });
    });
}

void TimeShiftSeries(const CCmtd99File &file, const SeriesSource &source, double ms, int method, float *y)
{
    const int total = SeriesLength(file, source);
    const int64_t *time = file.sampleTimes;
    if (!y || !time || total < 2)
        return;
    const double shift = std::fabs(ms * 1000.0);
    int j = 1;
    while (j < total - 1 && double(time[j] - time[0]) < shift)
        ++j;
    int d = 0;
    int s = 0;
    double offset = 0.0;
    if (ms > 0.0) {
        d = j;
        offset = double(time[j] - time[0]) - shift;
    } else {
        s = j - 1;
        offset = shift - double(time[j - 1] - time[0]);
    }
    std::fill(y, y + d, 0.0f);
    const int limit = method == InterpLine ? total - 1 : total - 2;
    const float *x = source.x;
    for (; s < limit && d < total; ++s, ++d) {
        // The line reads only two points; the third is held inside the recording.
        const int s2 = std::min(s + 2, total - 1);
        y[d] = static_cast<float>(Interpolate(method, double(time[s]), x[s], double(time[s + 1]), x[s + 1],
                                              double(time[s2]), x[s2], double(time[s]) + offset));
    }
}

void PhaseDifferenceSeries(const CCmtd99File &file, const SeriesSource &c1, const SeriesSource &c2, float *y)
{
    const int total = std::min(SeriesLength(file, c1), SeriesLength(file, c2));
    if (!y || total < 1)
        return;
    std::fill(y, y + total, 0.0f);
    SeriesProgress none;
    SlideCurve(
        file, c1.freq, total, total, y, none,
        [&c1, &c2](int start, int n, int step) {
            const ComplexD p1 = DftPhasor(c1.x + start, n, 1, step);
            const ComplexD p2 = DftPhasor(c2.x + start, n, 1, step);
            double d = std::atan2(p1.im, p1.re) * kDegrees - std::atan2(p2.im, p2.re) * kDegrees;
            // 0 to 360 rather than -180 to 180.
            if (d < 0.0)
                d += 360.0;
            return static_cast<float>(d);
        },
        [y](int i) { y[i] = 0.0f; });
}

bool WaveRange(const CCmtd99File &file, double start, double end, int &first, int &last)
{
    const int total = loadedTotal(file);
    if (total < 1)
        return false;
    const int64_t s = wholeNumber(start) - 1;
    const int64_t e = wholeNumber(end) - 1;
    first = s >= 0 && s < total ? int(s) : 0;
    last = e >= 0 && e < total ? int(e) : total - 1;
    return true;
}

double SineWave(const CCmtd99File &file, double start, double end, double degrees, double f, float *y)
{
    if (!(f >= 0.0 && f <= 5000.0))
        f = 50.0;
    int first = 0;
    int last = -1;
    const int64_t *time = file.sampleTimes;
    if (!y || !time || !WaveRange(file, start, end, first, last))
        return f;
    for (int i = first; i <= last; ++i)
        y[i] = static_cast<float>(
            std::sin(f * 6.2831855 * double(time[i] - time[first]) * 0.000001 + degrees * 0.0174532925));
    return f;
}

void StepWave(const CCmtd99File &file, double start, double end, float *y)
{
    int first = 0;
    int last = -1;
    if (y && WaveRange(file, start, end, first, last))
        std::fill(y + first, y + last + 1, 1.0f);
}

void DecayWave(const CCmtd99File &file, double start, double end, double ms, float *y)
{
    int first = 0;
    int last = -1;
    const int64_t *time = file.sampleTimes;
    if (!y || !time || !WaveRange(file, start, end, first, last))
        return;
    double tau = ms * 1000.0;
    if (!(tau >= 1.0))
        tau = 1.0;
    for (int i = first; i <= last; ++i)
        y[i] = static_cast<float>(std::exp(-double(time[i] - time[first]) / tau));
}

void SpliceWave(const SeriesSource &c1, double start, double end, double after, int count, float *y)
{
    const int total = std::min(count, c1.count);
    if (!y || !c1.x || total < 1)
        return;
    const int64_t s = wholeNumber(start) - 1;
    const int64_t e = wholeNumber(end) - 1;
    const int64_t i = wholeNumber(after) - 1;
    const int first = s >= 0 && s < total ? int(s) : 0;
    const int last = e >= 0 && e < total ? int(e) : total - 1;
    const int into = i >= 0 && i < count ? int(i) : 0;
    for (int k = first; k <= last && into + (k - first) < count; ++k)
        y[into + (k - first)] = c1.x[k];
}
