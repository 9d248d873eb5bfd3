// Derived series: each curve against values worked by hand or summed independently in long
// double, at segment heads, across rate changes, and on flat, DC and low-level channels.

#include "derivedseries.h"
#include "exprseries.h"
#include "freqseries.h"
#include "interpolation.h"
#include "memoryrecording.h"
#include "seriesjob.h"

#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

using Series = PhasorSwitchesRestored;

// A cycle of `n` samples repeated: every cycle equal bit for bit, the second half of a cycle
// the negative of the first.
std::vector<float> Periodic(int count, int n, double amplitude)
{
    std::vector<float> cycle(static_cast<size_t>(n));
    for (int j = 0; j < n / 2; ++j) {
        cycle[size_t(j)] = float(amplitude * std::sin(2 * M_PI * j / n));
        cycle[size_t(j + n / 2)] = -cycle[size_t(j)];
    }
    std::vector<float> x(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        x[size_t(i)] = cycle[size_t(i % n)];
    return x;
}

std::vector<float> Derive(const CCmtd99File &file, const CChnMapAnalog &chn, SeriesJobParams params)
{
    std::vector<float> y(size_t(file.loadedPoints), -1.0f);
    EXPECT_TRUE(RunSeriesJob(file, chn, params, y.data()));
    return y;
}

} // namespace

TEST_F(Series, DeltaHeadsPeriodicSignalsAndRateChange)
{
    // 1 kHz (20 points per cycle) then 2 kHz (40): each segment's head is zero again and the
    // second segment never reaches back into the first.
    MemoryRecording r({{1000.0f, 200}, {2000.0f, 600}});
    std::vector<float> ramp(600);
    for (int i = 0; i < 600; ++i)
        ramp[size_t(i)] = float(i * i % 97);
    CChnMapAnalog &u = r.add(ramp);
    SeriesJobParams mn = SeriesJobParams{SeriesJobDelta};
    const std::vector<float> y = Derive(r.file, u, mn);
    for (int i : {0, 19, 200, 239})
        EXPECT_EQ(y[size_t(i)], 0.0f) << i;
    EXPECT_EQ(y[20], ramp[20] - ramp[0]);
    EXPECT_EQ(y[240], ramp[240] - ramp[200]);
    EXPECT_EQ(y[599], ramp[599] - ramp[559]);

    // Every cycle less the first: zero after the first cycle; the half-cycle sum of a sine with
    // an even count: zero from half a cycle on.
    MemoryRecording p({{1000.0f, 400}});
    CChnMapAnalog &sine = p.add(Periodic(400, 20, 100.0));
    mn.mode = DeltaAllMinusFirst;
    std::vector<float> zeroN = Derive(p.file, sine, mn);
    mn.mode = DeltaHalfCycleSum;
    std::vector<float> nn = Derive(p.file, sine, mn);
    for (int i = 0; i < 400; ++i) {
        EXPECT_EQ(zeroN[size_t(i)], 0.0f) << i;
        EXPECT_EQ(nn[size_t(i)], 0.0f) << i;
    }
    // A wave that is not periodic shows its change against the first cycle.
    std::vector<float> grow = Periodic(400, 20, 100.0);
    grow[345] += 7.0f;
    CChnMapAnalog &fault = p.add(grow);
    mn.mode = DeltaAllMinusFirst;
    EXPECT_EQ(Derive(p.file, fault, mn)[345], 7.0f);
    EXPECT_EQ(SeriesJobDefaultName(QStringLiteral("UA"), mn), QStringLiteral("UA Delta (0N)"));
}

TEST_F(Series, AverageStaysInItsSegmentAndHoldsWhereTooSlow)
{
    // 1 at 1 kHz, 2 at 2 kHz, then a stretch at 100 Hz that no window serves.
    MemoryRecording r({{1000.0f, 100}, {2000.0f, 300}, {100.0f, 350}});
    std::vector<float> x(350, 1.0f);
    std::fill(x.begin() + 100, x.end(), 2.0f);
    x[320] = 50.0f;
    CChnMapAnalog &u = r.add(x);
    const std::vector<float> y = Derive(r.file, u, SeriesJobParams{SeriesJobAverage});
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(y[size_t(i)], 1.0f) << i;
    for (int i = 100; i < 350; ++i)
        EXPECT_EQ(y[size_t(i)], 2.0f) << i;

    // The mean of a cycle of a sine on 3.0 is 3.0; the channel becomes a DC voltage.
    MemoryRecording s({{1000.0f, 200}});
    std::vector<float> w = Sine(200, 1000.0, 100.0);
    for (float &v : w)
        v += 3.0f;
    CChnMapAnalog &ua = s.add(w);
    EXPECT_TRUE(NearRelative(Derive(s.file, ua, SeriesJobParams{SeriesJobAverage})[150], 3.0, 1e-5));
    const SeriesJobTraits traits = SeriesJobResultTraits(ua, SeriesJobParams{SeriesJobAverage});
    EXPECT_EQ(traits.chnClass, 3);
    EXPECT_FALSE(traits.ac);
    EXPECT_TRUE(traits.direct);
}

TEST_F(Series, HarmonicCurveOnTwentyMillisecondWindows)
{
    // A 50 Hz wave on a channel rated 60 Hz: the windows still span 20 ms (20 points), so the
    // base wave's effective value is exact; 60 Hz windows (17 points) would miss it.
    MemoryRecording r({{1000.0f, 400}});
    CChnMapAnalog &u = r.add(Sine(400, 1000.0, 100.0), "V", 60.0f);
    SeriesJobParams harm = SeriesJobParams{SeriesJobHarmonic};
    EXPECT_TRUE(NearRelative(Derive(r.file, u, harm)[200], 100.0 / std::sqrt(2.0), 1e-5));

    // Order 3, real part: an AC channel at 150 Hz.
    harm.order = 3;
    harm.part = HarmonicReal;
    const SeriesJobTraits traits = SeriesJobResultTraits(u, harm);
    EXPECT_EQ(traits.ratedFreq, 150.0f);
    EXPECT_TRUE(traits.ac);
    EXPECT_EQ(SeriesJobDefaultName(QStringLiteral("UA"), harm), QStringLiteral("UA harm-3 R-Part Curve"));
    harm.part = HarmonicEffective;
    EXPECT_FALSE(SeriesJobResultTraits(u, harm).ac);

    // With windows that begin at the sample, the last cycle continues the last phasor as
    // m·sin(j·dw + a) for the real part.
    dftWin = 2;
    harm.order = 1;
    harm.part = HarmonicReal;
    const std::vector<float> x = Sine(400, 1000.0, 100.0, 30.0, 50.0);
    CChnMapAnalog &v = r.add(x);
    const std::vector<float> y = Derive(r.file, v, harm);
    long double s = 0, c = 0;
    const long double w = static_cast<long double>(6.2831855f) / 20;
    for (int i = 0; i < 20; ++i) {
        s += sinl(i * w) * x[size_t(379 + i)];
        c += cosl(i * w) * x[size_t(379 + i)];
    }
    const double m = std::hypot(double(2 * s / 20), double(2 * c / 20));
    const double a = std::atan2(double(2 * c / 20), double(2 * s / 20));
    EXPECT_TRUE(NearRelative(y[379], double(2 * s / 20), 1e-6));
    for (int j = 1; j <= 20; ++j)
        EXPECT_NEAR(y[size_t(379 + j)], m * std::sin(j * 2 * M_PI / 20 + a), 1e-4) << j;
}

TEST_F(Series, HarmonicCurveOnSlowSegments)
{
    // At 100 Hz no window fits: the base wave copies the source, a harmonic is zero and the DC
    // part holds.
    MemoryRecording r({{1000.0f, 200}, {100.0f, 260}});
    std::vector<float> x = Sine(260, 1000.0, 10.0);
    for (int i = 200; i < 260; ++i)
        x[size_t(i)] = float(i);
    CChnMapAnalog &u = r.add(x);
    SeriesJobParams harm = SeriesJobParams{SeriesJobHarmonic};
    EXPECT_EQ(Derive(r.file, u, harm)[230], 230.0f);
    harm.order = 2;
    EXPECT_EQ(Derive(r.file, u, harm)[230], 0.0f);
    harm.order = 0;
    const std::vector<float> dc = Derive(r.file, u, harm);
    EXPECT_EQ(dc[230], dc[199]);
    EXPECT_EQ(SeriesJobDefaultName(QStringLiteral("UA"), harm), QStringLiteral("UA DC-Part"));
}

TEST_F(Series, FrequencyCurvesOfFlatDcAndWeakChannels)
{
    MemoryRecording r({{1000.0f, 600}});
    SetSampleTimes(r.file);
    CChnMapAnalog &zero = r.add(std::vector<float>(600, 0.0f));
    CChnMapAnalog &flat = r.add(std::vector<float>(600, 100.0f));
    CChnMapAnalog &dc = r.add(Sine(600, 1000.0, 100.0, 0.0, 45.0), "mV");
    CChnMapAnalog &weak = r.add(Sine(600, 1000.0, 6.0, 0.0, 45.0)); // 4.2 V effective
    for (const CChnMapAnalog *chn : {&zero, &flat, &dc, &weak}) {
        for (int kind : {SeriesJobFreqZeroCross, SeriesJobFreqDft}) {
            if (kind == SeriesJobFreqDft && chn != &zero && chn != &flat)
                continue;
            const std::vector<float> y = Derive(r.file, *chn, SeriesJobParams{kind});
            for (int i = 0; i < 600; ++i)
                ASSERT_EQ(y[size_t(i)], 50.0f) << kind << " " << i;
        }
    }
    // A strong 45 Hz voltage is measured.
    CChnMapAnalog &strong = r.add(Sine(600, 1000.0, 100.0, 0.0, 45.0));
    EXPECT_TRUE(
        NearRelative(Derive(r.file, strong, SeriesJobParams{SeriesJobFreqZeroCross})[300], 45.0, 2e-3));
}

TEST_F(Series, ZeroCrossCurveRefusesJumpsBeyondTwoPercent)
{
    // 50 Hz, then from a rising zero at sample 2000 a 51.5 Hz wave: 3% in one step.
    MemoryRecording r({{10000.0f, 4000}});
    SetSampleTimes(r.file);
    std::vector<float> x = Periodic(4000, 200, 100.0);
    for (int i = 2000; i < 4000; ++i)
        x[size_t(i)] = float(100.0 * std::sin(2 * M_PI * 51.5 * (i - 2000) / 10000.0));
    CChnMapAnalog &u = r.add(x);
    const std::vector<float> y = Derive(r.file, u, SeriesJobParams{SeriesJobFreqZeroCross});
    for (int i = 0; i < 4000; ++i)
        ASSERT_EQ(y[size_t(i)], 50.0f) << i;
    // A step of 1.5% is followed.
    for (int i = 2000; i < 4000; ++i)
        x[size_t(i)] = float(100.0 * std::sin(2 * M_PI * 50.75 * (i - 2000) / 10000.0));
    CChnMapAnalog &v = r.add(x);
    EXPECT_TRUE(NearRelative(Derive(r.file, v, SeriesJobParams{SeriesJobFreqZeroCross})[3500], 50.75, 1e-3));
    const RateSegment segment{10000.0f, 0, 4000};
    EXPECT_EQ(ZeroCrossFilter(r.file.sampleTimes, segment, SourceOf(v), 3500, 200, 49.0f), 49.0f);
}

TEST_F(Series, DftInsertEstimateAndCurve)
{
    MemoryRecording r({{1000.0f, 600}});
    SetSampleTimes(r.file);
    // The estimate from the phase step, summed independently with the rectangle-cosine kernel.
    const std::vector<float> x = Sine(600, 1000.0, 100.0, 10.0, 50.3);
    long double re[2] = {0, 0}, im[2] = {0, 0};
    const long double w = static_cast<long double>(6.2831855f) / 20;
    for (int c = 0; c < 2; ++c) {
        for (int i = 0; i < 20; ++i) {
            re[c] += 2 * cosl(i * w) * x[size_t(c * 20 + i)] / 20;
            im[c] -= 2 * sinl(i * w) * x[size_t(c * 20 + i)] / 20;
        }
    }
    const long double d = (im[0] * re[1] - im[1] * re[0]) / (im[1] * im[1] + re[1] * re[1]);
    EXPECT_TRUE(NearRelative(TwoCycleFreq(x.data(), 20, 1, 50.0), double((d / (2 * M_PI) + 1) * 50), 1e-9));

    // A 50 Hz wave: every value rests on the two cycles before it, the head repeats the first.
    CChnMapAnalog &u = r.add(Sine(600, 1000.0, 100.0));
    const std::vector<float> y = Derive(r.file, u, SeriesJobParams{SeriesJobFreqDft});
    EXPECT_EQ(y[0], y[40]);
    EXPECT_EQ(y[599], y[596]);
    for (int i = 0; i < 600; ++i)
        ASSERT_NEAR(y[size_t(i)], 50.0, 1e-3) << i;
}

TEST_F(Series, OnePointDifferenceRestoresTheBaseWave)
{
    // 20 points per cycle: the difference of A·sin is A·cos half a sample back.
    MemoryRecording r({{1000.0f, 200}, {450.0f, 260}});
    const std::vector<float> x = Sine(260, 1000.0, 100.0);
    CChnMapAnalog &u = r.add(x);
    const std::vector<float> y = Derive(r.file, u, SeriesJobParams{SeriesJobOnePointDiff});
    for (int i = 1; i < 200; ++i)
        ASSERT_NEAR(y[size_t(i)], 100.0 * std::cos(2 * M_PI * 50 * (i - 0.5) / 1000.0), 1e-3) << i;
    EXPECT_EQ(y[0], y[1]); // the worker's form
    // At 450 Hz (9 points per cycle) the input passes.
    for (int i = 200; i < 260; ++i)
        EXPECT_EQ(y[size_t(i)], x[size_t(i)]) << i;
}

TEST_F(Series, HammingTapsOddEvenAndSingle)
{
    // The taps worked from their definition in long double: a windowed sinc, DC gain one.
    for (int length : {5, 4}) {
        std::vector<float> h(static_cast<size_t>(length));
        HammingCoefficients(1000.0f, length, 100.0f, h.data());
        std::vector<long double> want(static_cast<size_t>(length));
        const long double fc = 0.2L;
        long double sum = 0;
        for (int i = 0; i < length; ++i) {
            const int mirrored = i < length / 2 ? i : length - 1 - i;
            const long double m = (mirrored - length / 2) * static_cast<long double>(M_PI);
            const long double v = length % 2 && i == length / 2 ? fc : sinl(m * fc) / m;
            want[size_t(i)] = v * (0.54L - 0.46L * cosl(2 * M_PI * i / (length - 1)));
            sum += want[size_t(i)];
        }
        for (int i = 0; i < length; ++i)
            EXPECT_TRUE(NearRelative(h[size_t(i)], double(want[size_t(i)] / sum), 2e-6))
                << length << " " << i;
    }
    float single = 0.0f;
    HammingCoefficients(1000.0f, 1, 100.0f, &single);
    EXPECT_TRUE(std::isnan(single));

    // The lead-in is the mean of the first `length` samples; a constant passes unchanged, and
    // the taps are renewed at the rate change.
    MemoryRecording r({{1000.0f, 100}, {2000.0f, 300}});
    std::vector<float> x(300, 4.0f);
    x[0] = 0.0f;
    CChnMapAnalog &u = r.add(x);
    SeriesJobParams hamm = SeriesJobParams{SeriesJobHamming};
    hamm.endFreq = 50.0f;
    hamm.length = 8;
    const std::vector<float> y = Derive(r.file, u, hamm);
    EXPECT_EQ(y[0], 3.5f);
    EXPECT_EQ(y[7], 3.5f);
    EXPECT_TRUE(NearRelative(y[50], 4.0, 1e-6));
    EXPECT_TRUE(NearRelative(y[250], 4.0, 1e-6));
    hamm.length = 1;
    EXPECT_TRUE(std::isnan(Derive(r.file, u, hamm)[150]));
}

TEST_F(Series, ExpressionCurvesOfSinesAndSlowSegments)
{
    MemoryRecording r({{1000.0f, 400}, {100.0f, 450}});
    std::vector<float> a = Sine(450, 1000.0, 100.0, 0.0, 50.0);
    std::vector<float> b = Sine(450, 1000.0, 100.0, -120.0, 50.0);
    std::vector<float> c = Sine(450, 1000.0, 100.0, 120.0, 50.0);
    std::vector<float> i1 = Sine(450, 1000.0, 10.0, -30.0, 50.0); // lags by 30 degrees
    std::vector<float> h3 = Sine(450, 1000.0, 100.0);
    const std::vector<float> third = Sine(450, 1000.0, 20.0, 0.0, 150.0);
    for (size_t k = 0; k < h3.size(); ++k)
        h3[k] += third[k];
    const SeriesSource ua = SourceOf(r.add(a));
    const SeriesSource ub = SourceOf(r.add(b));
    const SeriesSource uc = SourceOf(r.add(c));
    const SeriesSource ia = SourceOf(r.add(i1, "A"));
    const SeriesSource mixed = SourceOf(r.add(h3));
    std::vector<float> y(450);

    ASSERT_TRUE(ChannelCurveSeries(r.file, ua, ChannelCurve::Eff, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 100.0 / std::sqrt(2.0), 1e-5));
    EXPECT_EQ(y[420], a[420]); // the slow stretch keeps the source's samples
    ASSERT_TRUE(ChannelCurveSeries(r.file, ua, ChannelCurve::Phs, y.data()));
    EXPECT_EQ(y[420], 0.0f);
    ASSERT_TRUE(HarmonicFunctionSeries(r.file, mixed, PhasorPart::Modulus, 3, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 20.0, 1e-4));
    ASSERT_TRUE(HarmonicFunctionSeries(r.file, mixed, PhasorPart::Modulus, 10, y.data()));
    EXPECT_EQ(y[300], 0.0f); // 10 is half of the 20 points of a cycle
    ASSERT_TRUE(DistortionSeries(r.file, mixed, 40, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 0.2, 1e-4));

    ASSERT_TRUE(SequenceSeries(r.file, ua, ub, uc, 1.7, PhasorPart::Effective, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 100.0 / std::sqrt(2.0), 1e-5));
    ASSERT_TRUE(SequenceSeries(r.file, ua, ub, uc, 5.0, PhasorPart::Effective, y.data()));
    EXPECT_NEAR(y[300], 0.0, 1e-3);

    const double s = 100.0 / std::sqrt(2.0) * 10.0 / std::sqrt(2.0);
    ASSERT_TRUE(PowerSeries(r.file, ua, &ia, 1, PowerPart::Active, y.data()));
    EXPECT_TRUE(NearRelative(y[300], s * std::cos(M_PI / 6), 1e-4));
    ASSERT_TRUE(PowerSeries(r.file, ua, &ia, 1, PowerPart::Reactive, y.data()));
    EXPECT_TRUE(NearRelative(y[300], s * 0.5, 1e-4));
    EXPECT_EQ(y[420], 0.0f);
    ASSERT_TRUE(ImpedanceSeries(r.file, ua, &ia, 1, PhasorPart::Modulus, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 10.0, 1e-5));
    ASSERT_TRUE(ImpedanceSeries(r.file, ua, &ia, 1, PhasorPart::Angle, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 30.0, 1e-4));
    // K = 1 with the current itself as residual: half the impedance.
    ASSERT_TRUE(
        GroundImpedanceSeries(r.file, ia, ComplexD{1.0, 0.0}, ua, &ia, 1, PhasorPart::Modulus, y.data()));
    EXPECT_TRUE(NearRelative(y[300], 5.0, 1e-5));
}

TEST(Interpolation, ThreePointFormulas)
{
    // A parabola is reproduced by both parabolic forms, a straight line by all four.
    const auto parabola = [](double x) { return 3.0 - 2.0 * x + 0.5 * x * x; };
    const double x0 = 100.0, x1 = 150.0, x2 = 230.0, x = 170.0;
    EXPECT_TRUE(NearRelative(InterpLagrange2(x0, parabola(x0), x1, parabola(x1), x2, parabola(x2), x),
                             parabola(x), 1e-12));
    EXPECT_TRUE(NearRelative(InterpNewton2(x0, parabola(x0), x1, parabola(x1), x2, parabola(x2), x),
                             parabola(x), 1e-12));
    for (int method = 0; method < 4; ++method)
        EXPECT_TRUE(
            NearRelative(Interpolate(method, x0, 1.0 + x0, x1, 1.0 + x1, x2, 1.0 + x2, 120.0), 121.0, 1e-12))
            << method;
    // The Hermite segment takes the chords as slopes at its two ends.
    // On 0..1 with p(0) = 0, p(1) = 1, p'(0) = 1, p'(1) = 3 that is 2t³ - 2t² + t.
    EXPECT_DOUBLE_EQ(InterpHermite2(0.0, 0.0, 1.0, 1.0, 2.0, 4.0, 0.5), 0.25);
}
