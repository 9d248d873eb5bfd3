#include "derivedseries.h"

#include "complexd.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace {

// Pi and two pi as the nearest 32-bit floats: the filter taps are built from them.
constexpr float kPiF = 3.1415927f;
constexpr float kTwoPiF = 6.2831855f;

// The curve's length, and its array cleared: a job writes into a fresh, zeroed channel.
int clearedLength(const CCmtd99File &file, const SeriesSource &source, float *y)
{
    const int total = y ? SeriesLength(file, source) : 0;
    std::fill(y, y + total, 0.0f);
    return total;
}

// The delta value that lands one cycle (half a cycle for the half-cycle sum) after sample i.
float deltaValue(const float *x, int mode, const RateSegment &segment, int n, int i)
{
    switch (mode) {
    case DeltaNextMinusCurrent:
        return x[i + n] - x[i];
    case DeltaAllMinusFirst:
        return x[i + n] - x[segment.first + (i - segment.first) % n];
    default:
        return x[i + n / 2] + x[i];
    }
}

// The mean of the first L samples of a segment, written over them: the filter's lead-in,
// which spares the curve a step from zero.
int hammingLeadIn(const float *x, float *y, const RateSegment &segment, int length)
{
    const int i = segment.first;
    const int span = int64_t(i) >= int64_t(segment.end) - length ? segment.end - i : length;
    double sum = 0.0;
    for (int k = i; k < i + span; ++k)
        sum += x[k];
    const float mean = static_cast<float>(sum / span);
    std::fill(y + i, y + i + span, mean);
    return i + span;
}

} // namespace

bool DeltaSeries(const CCmtd99File &file, const SeriesSource &source, int mode, float *y,
                 SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = clearedLength(file, source, y);
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        const int n = PointsPerCycle(segment.rate, source.freq);
        // A rate too slow for one point per cycle has no first cycle to subtract.
        if (mode == DeltaAllMinusFirst && n < 1)
            return report.segmentDone();
        const int64_t shift = mode == DeltaHalfCycleSum ? n / 2 : n;
        for (int i = segment.first; i + shift < segment.end; ++i) {
            y[i + shift] = deltaValue(source.x, mode, segment, n, i);
            if (!report.at(i))
                return false;
        }
        return report.segmentDone();
    });
}

bool AverageSeries(const CCmtd99File &file, const SeriesSource &source, float *y, SeriesProgress *progress)
{
    SeriesProgress none;
    const int total = clearedLength(file, source, y);
    const float *x = source.x;
    return SlideCurve(
        file, source.freq, total, total, y, progress ? *progress : none,
        [x](int start, int n, int) { return static_cast<float>(StridedMean(x + start, n, 1)); },
        [y](int i) { HoldSample(y, i); });
}

bool HarmonicPartSeries(const CCmtd99File &file, const SeriesSource &source, int order, int part, float *y,
                        SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = clearedLength(file, source, y);
    const float *x = source.x;
    const bool holds = order == 0 || part == HarmonicEffective;
    ComplexD last; // the phasor of the last window, continued over the tail
    const auto value = [&](int start, int n, int step) {
        if (order != 0) {
            last = DftPhasor(x + start, n, order, step);
        } else {
            last.re = 0.0;
            last.im = StridedMean(x + start, n, step);
        }
        if (part == HarmonicReal)
            return static_cast<float>(last.re);
        if (part == HarmonicImaginary)
            return static_cast<float>(last.im);
        return static_cast<float>(order != 0 ? Effective(last) : last.im);
    };
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        if (!SegmentUsable(segment)) {
            // Too slow for a 20 ms window: the DC part holds, the base wave is the signal
            // itself, and a harmonic has nothing to show.
            for (int i = segment.first; i < segment.end; ++i) {
                if (order == 0)
                    HoldSample(y, i);
                else if (order == 1)
                    y[i] = x[i];
                if (!report.at(i))
                    return false;
            }
            return report.segmentDone();
        }
        const double dw = 6.283185307179586 / double(segment.rate * 0.02f);
        // The tail begins at sample 1 at the earliest; its count j starts there.
        int skipped = 0;
        const auto tail = [&](int i, int j) {
            if (i < 1) {
                skipped = 1;
                return;
            }
            if (holds) {
                HoldSample(y, i);
                return;
            }
            // The last phasor goes on as a sine wave of the base frequency; the sine pairs
            // with the real part and the cosine with the imaginary part.
            const double m = std::sqrt(last.re * last.re + last.im * last.im);
            const double a = std::atan2(last.im, last.re);
            const double angle = (j - skipped) * dw + a;
            y[i] = static_cast<float>(part == HarmonicReal ? m * std::sin(angle) : m * std::cos(angle));
        };
        const int n = Cycle50Points(segment.rate);
        return SlideSegment(segment, n, total, total, y, report, value, tail) && report.segmentDone();
    });
}

void HammingCoefficients(float rate, int length, float endFreq, float *h)
{
    if (!h || length < 1)
        return;
    const float fc = 2.0f * endFreq / rate;
    std::fill(h, h + length, 0.0f);
    const int half = length / 2;
    if (length % 2 != 0)
        h[half] = fc;
    for (int i = 0; i < half; ++i) {
        const double m = double(i - half) * double(kPiF);
        const float v = static_cast<float>(std::sin(m * double(fc)) / double(static_cast<float>(m)));
        h[i] = v;
        h[length - 1 - i] = v;
    }
    // Length 1 divides by zero here: the taps are not numbers, and so is the curve.
    const float dw = kTwoPiF / float(length - 1);
    float sum = 0.0f;
    for (int i = 0; i < length; ++i) {
        const float angle = float(i) * dw;
        h[i] = static_cast<float>(h[i] * (0.54 - 0.46 * std::cos(double(angle))));
        sum += h[i];
    }
    for (int i = 0; i < length; ++i)
        h[i] /= sum;
}

bool HammingFilterSeries(const CCmtd99File &file, const SeriesSource &source, float endFreq, int length,
                         float *y, SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = clearedLength(file, source, y);
    if (length < 1 || total < 1)
        return true;
    const std::unique_ptr<float[]> h(new (std::nothrow) float[size_t(length)]);
    if (!h)
        return false;
    const float *x = source.x;
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        // The taps depend on the rate: renewed for every segment.
        HammingCoefficients(segment.rate, length, endFreq, h.get());
        for (int i = hammingLeadIn(x, y, segment, length); i < segment.end; ++i) {
            const float *window = x + i - length + 1;
            double sum = 0.0;
            for (int j = 0; j < length; ++j)
                sum += double(h[size_t(j)]) * double(window[j]);
            y[i] = static_cast<float>(sum);
            if (!report.at(i))
                return false;
        }
        return report.segmentDone();
    });
}

bool HammingFunctionSeries(const CCmtd99File &file, const SeriesSource &source, double endFreq, double length,
                           float *y)
{
    if (!(endFreq >= 0.1 && endFreq <= 1000.0))
        endFreq = 5.0;
    int taps = 0;
    if (!(length >= 1.0))
        taps = 8;
    else if (length > 1000.0)
        taps = 32;
    else
        taps = static_cast<int>(length);
    return HammingFilterSeries(file, source, static_cast<float>(endFreq), taps, y);
}

bool OnePointDiffSeries(const CCmtd99File &file, const SeriesSource &source, bool firstFromSecond, float *y,
                        SeriesProgress *progress)
{
    SeriesProgress none;
    SeriesProgress &report = progress ? *progress : none;
    const int total = clearedLength(file, source, y);
    const float *x = source.x;
    return ForEachRateSegment(file, total, [&](const RateSegment &segment) {
        const int n = std::max(1, PointsPerCycle(segment.rate, source.freq));
        // A one-sample difference shrinks the base wave by 2·sin(π/n); the divisor restores it.
        const float g = static_cast<float>(2 * std::sin(3.141592653589793 / n));
        y[segment.first] = x[segment.first];
        for (int i = segment.first + 1; i < segment.end; ++i) {
            y[i] = n >= 10 ? (x[i] - x[i - 1]) / g : x[i];
            if (!report.at(i))
                return false;
        }
        if (firstFromSecond && total > 1)
            y[0] = y[1];
        return report.segmentDone();
    });
}
