#include "exprseries.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

constexpr double kDegrees = 57.29577957855229;

// What a segment too slow for a window shows.
enum class SlowSegment
{
    Source, // the source's own samples
    Zero,
    Hold
};

// The curve's length over several channels: the shortest one's.
int commonLength(const CCmtd99File &file, std::initializer_list<const SeriesSource *> first,
                 const SeriesSource *more = nullptr, int moreCount = 0)
{
    int total = file.loadedPoints;
    for (const SeriesSource *s : first)
        total = std::min(total, SeriesLength(file, *s));
    for (int i = 0; i < moreCount; ++i)
        total = std::min(total, SeriesLength(file, more[i]));
    return std::max(0, total);
}

// A curve of the sliding frame in the expression language's form: no progress, no stop.
template <typename Value>
bool slide(const CCmtd99File &file, const SeriesSource &source, int total, float *y, SlowSegment slow,
           Value value)
{
    if (!y)
        return true;
    std::fill(y, y + total, 0.0f);
    SeriesProgress none;
    const float *x = source.x;
    return SlideCurve(file, source.freq, total, total, y, none, value, [&](int i) {
        if (slow == SlowSegment::Source)
            y[i] = x[i];
        else if (slow == SlowSegment::Hold)
            HoldSample(y, i);
        else
            y[i] = 0.0f;
    });
}

// The sum of the branch currents' phasors at a window.
ComplexD currentSum(const SeriesSource *currents, int count, int start, int n, int step)
{
    ComplexD sum;
    for (int i = 0; i < count; ++i)
        sum = sum + DftPhasor(currents[i].x + start, n, 1, step);
    return sum;
}

} // namespace

float PhasorPartValue(const ComplexD &p, PhasorPart part)
{
    switch (part) {
    case PhasorPart::Effective:
        return static_cast<float>(Effective(p));
    case PhasorPart::Modulus:
        return static_cast<float>(std::sqrt(p.re * p.re + p.im * p.im));
    case PhasorPart::Angle:
        return static_cast<float>(std::atan2(p.im, p.re) * kDegrees);
    case PhasorPart::Real:
        return static_cast<float>(p.re);
    case PhasorPart::Imaginary:
        break;
    }
    return static_cast<float>(p.im);
}

bool ChannelCurveSeries(const CCmtd99File &file, const SeriesSource &source, ChannelCurve curve, float *y)
{
    const int total = SeriesLength(file, source);
    const float *x = source.x;
    if (curve == ChannelCurve::Rms)
        return slide(file, source, total, y, SlowSegment::Source,
                     [x](int start, int n, int) { return static_cast<float>(CycleEffective(x + start, n)); });
    if (curve == ChannelCurve::DPart)
        return slide(file, source, total, y, SlowSegment::Hold,
                     [x](int start, int n, int) { return static_cast<float>(StridedMean(x + start, n, 1)); });
    PhasorPart part = PhasorPart::Effective;
    switch (curve) {
    case ChannelCurve::Mod:
    case ChannelCurve::DftM:
        part = PhasorPart::Modulus;
        break;
    case ChannelCurve::Phs:
    case ChannelCurve::DftA:
        part = PhasorPart::Angle;
        break;
    case ChannelCurve::DftR:
        part = PhasorPart::Real;
        break;
    case ChannelCurve::DftX:
        part = PhasorPart::Imaginary;
        break;
    default:
        break;
    }
    // The angle of the base wave alone shows zero where there is no window; the others keep
    // the source's samples there.
    const SlowSegment slow = curve == ChannelCurve::Phs ? SlowSegment::Zero : SlowSegment::Source;
    return slide(file, source, total, y, slow, [x, part](int start, int n, int step) {
        return PhasorPartValue(DftPhasor(x + start, n, 1, step), part);
    });
}

bool HarmonicFunctionSeries(const CCmtd99File &file, const SeriesSource &source, PhasorPart part, int order,
                            float *y)
{
    const int k = std::max(1, order);
    const float *x = source.x;
    // A harmonic at or above half the points of a cycle cannot be told apart: no value.
    return slide(file, source, SeriesLength(file, source), y, SlowSegment::Zero,
                 [x, k, part](int start, int n, int step) {
                     return k >= n / 2 ? 0.0f : PhasorPartValue(DftPhasor(x + start, n, k, step), part);
                 });
}

bool DistortionSeries(const CCmtd99File &file, const SeriesSource &source, int maxOrder, float *y)
{
    const int kmax = std::clamp(maxOrder, 2, 31);
    const float *x = source.x;
    return slide(file, source, SeriesLength(file, source), y, SlowSegment::Zero,
                 [x, kmax](int start, int n, int step) {
                     const double base = Effective(DftPhasor(x + start, n, 1, step));
                     double sum = 0.0;
                     for (int k = 2; k <= kmax && k < n / 2; ++k)
                         sum += Effective(DftPhasor(x + start, n, k, step));
                     return base == 0.0 ? 0.0f : static_cast<float>(sum / base);
                 });
}

bool SequenceSeries(const CCmtd99File &file, const SeriesSource &a, const SeriesSource &b,
                    const SeriesSource &c, double sequence, PhasorPart part, float *y)
{
    const double truncated = std::trunc(sequence);
    const int s = truncated == 1.0 || truncated == 2.0 ? static_cast<int>(truncated) : 0;
    return slide(file, a, commonLength(file, {&a, &b, &c}), y, SlowSegment::Zero,
                 [&a, &b, &c, s, part](int start, int n, int step) {
                     ComplexD parts[3];
                     SymmetricalParts(DftPhasor(a.x + start, n, 1, step), DftPhasor(b.x + start, n, 1, step),
                                      DftPhasor(c.x + start, n, 1, step), parts[0], parts[1], parts[2]);
                     return PhasorPartValue(parts[s], part);
                 });
}

bool PowerSeries(const CCmtd99File &file, const SeriesSource &voltage, const SeriesSource *currents,
                 int currentCount, PowerPart part, float *y)
{
    const int total = commonLength(file, {&voltage}, currents, currentCount);
    return slide(file, voltage, total, y, SlowSegment::Zero, [&](int start, int n, int step) {
        const ComplexD uPhasor = DftPhasor(voltage.x + start, n, 1, step);
        const double u = Effective(uPhasor);
        const double au = std::atan2(uPhasor.im, uPhasor.re);
        double p = 0.0;
        double q = 0.0;
        for (int k = 0; k < currentCount; ++k) {
            const ComplexD iPhasor = DftPhasor(currents[k].x + start, n, 1, step);
            const double i = Effective(iPhasor);
            const double d = au - std::atan2(iPhasor.im, iPhasor.re);
            p += std::cos(d) * i * u;
            q += std::sin(d) * i * u;
        }
        if (part == PowerPart::Active)
            return static_cast<float>(p);
        if (part == PowerPart::Reactive)
            return static_cast<float>(q);
        return static_cast<float>(std::sqrt(p * p + q * q));
    });
}

bool ImpedanceSeries(const CCmtd99File &file, const SeriesSource &voltage, const SeriesSource *currents,
                     int currentCount, PhasorPart part, float *y)
{
    const int total = commonLength(file, {&voltage}, currents, currentCount);
    return slide(file, voltage, total, y, SlowSegment::Zero, [&](int start, int n, int step) {
        ComplexD z = DftPhasor(voltage.x + start, n, 1, step);
        z.divide(currentSum(currents, currentCount, start, n, step));
        return PhasorPartValue(z, part);
    });
}

bool GroundImpedanceSeries(const CCmtd99File &file, const SeriesSource &io, const ComplexD &k,
                           const SeriesSource &voltage, const SeriesSource *currents, int currentCount,
                           PhasorPart part, float *y)
{
    const int total = commonLength(file, {&io, &voltage}, currents, currentCount);
    return slide(file, io, total, y, SlowSegment::Zero, [&](int start, int n, int step) {
        const ComplexD residual = k * DftPhasor(io.x + start, n, 1, step);
        ComplexD z = DftPhasor(voltage.x + start, n, 1, step);
        z.divide(currentSum(currents, currentCount, start, n, step) + residual);
        return PhasorPartValue(z, part);
    });
}
