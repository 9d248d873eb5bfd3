// Phasors and effective values: the kernels against their per-term definition, bit for bit,
// the window rules at segment and recording ends, and the read-outs built from them.

#include "chntext.h"
#include "cmtd99file.h"
#include "cursorvalue.h"
#include "globalsettings.h"
#include "memoryrecording.h"
#include "phasor.h"
#include "slidingeval.h"

#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

// The kernels as their definition reads, with sine and cosine per term; the trapezoid pairs
// are summed in double, so a pair rounded to a 32-bit float on its way shows.
ComplexD Definition(int method, const float *x, int count, int k, int step)
{
    const int n = count / step;
    const double w = double(6.2831855f) / n;
    double s = 0, c = 0;
    if (method == 2 || method == 3) {
        for (int i = 0; i <= n - 2; ++i) {
            const double pair = double(x[i * step]) + double(x[(i + 1) * step]);
            s += std::sin(double((i + 1) * k) * w) * pair;
            c += std::cos(double((i + 1) * k) * w) * pair;
        }
        return method == 2 ? ComplexD{s / n, c / n} : ComplexD{c / n, -(s / n)};
    }
    for (int i = 0; i < n; ++i) {
        s += std::sin(double(i * k) * w) * double(x[i * step]);
        c += std::cos(double(i * k) * w) * double(x[i * step]);
    }
    return method == 0 ? ComplexD{2 * s / n, 2 * c / n} : ComplexD{2 * c / n, -(2 * s / n)};
}

using Phasor = PhasorSwitchesRestored;

} // namespace

TEST_F(Phasor, KernelsMatchTheirDefinitionBitForBit)
{
    const std::vector<float> x = Sine(2000, 20000.0, 100.0, 37.0, 50.0, 3.0);
    const struct
    {
        int count, k, step;
    } windows[] = {{400, 1, 2}, {200, 1, 1}, {200, 3, 1}, {600, 1, 3}, {21, 2, 1}, {399, 1, 1}};
    for (int method = 0; method < 4; ++method) {
        dftMethod = method;
        for (const auto &w : windows) {
            for (int offset : {0, 17, 1000}) {
                const ComplexD got = DftPhasor(x.data() + offset, w.count, w.k, w.step);
                const ComplexD want = Definition(method, x.data() + offset, w.count, w.k, w.step);
                EXPECT_EQ(got.re, want.re) << method << " " << w.count << " " << w.k;
                EXPECT_EQ(got.im, want.im) << method << " " << w.count << " " << w.k;
            }
        }
    }
    dftMethod = 7; // a number without a kernel runs the first
    const ComplexD fallback = DftPhasor(x.data(), 200, 1, 1);
    EXPECT_EQ(fallback.re, Definition(0, x.data(), 200, 1, 1).re);
}

TEST_F(Phasor, SineGivesItsAmplitudeAndAngle)
{
    // A sine from the window's first sample: A·cos(p) + j·A·sin(p) with the sine reference.
    const std::vector<float> x = Sine(400, 10000.0, 100.0, 30.0);
    const ComplexD p = DftPhasor(x.data(), 200, 1, 1);
    EXPECT_TRUE(NearRelative(std::hypot(p.re, p.im), 100.0, 1e-6));
    EXPECT_TRUE(NearRelative(std::atan2(p.im, p.re) * 180 / M_PI, 30.0, 3e-5));
    EXPECT_TRUE(NearRelative(Effective(p), 100.0 / std::sqrt(2.0), 1.5e-6));
    // The trapezoid kernels leak a constant: N - 1 pairs do not close the cycle.
    dftMethod = 2;
    const std::vector<float> dc(200, 10.0f);
    EXPECT_GT(std::fabs(DftPhasor(dc.data(), 200, 1, 1).im), 1e-3);
    dftMethod = 0;
    EXPECT_LT(std::fabs(DftPhasor(dc.data(), 200, 1, 1).re), 1e-4);
}

TEST_F(Phasor, PointsPerCycleUsableSegmentsAndRatedFrequency)
{
    EXPECT_EQ(PointsPerCycle(1000.0f, 50.0f), 20);
    EXPECT_EQ(DecimationStep(20), 1);
    EXPECT_EQ(DecimationStep(399), 1);
    EXPECT_EQ(DecimationStep(400), 2);
    EXPECT_EQ(DecimationStep(600), 3);
    EXPECT_FALSE(SegmentUsable(RateSegment{499.9f, 0, 100000}));
    EXPECT_TRUE(SegmentUsable(RateSegment{500.0f, 0, 100000}));
    // 20 points of a 50 Hz cycle at 1 kHz; one more than the segment holds is counted.
    EXPECT_FALSE(SegmentUsable(RateSegment{1000.0f, 0, 19}));
    EXPECT_TRUE(SegmentUsable(RateSegment{1000.0f, 0, 20}));

    MemoryRecording r({{1000.0f, 100}});
    CChnMapAnalog &half = r.add(std::vector<float>(100, 1.0f), "V", 0.5f);
    EXPECT_EQ(RatedFreq(half), 50.0f);
    CChnMapAnalog &nan = r.add(std::vector<float>(100, 1.0f), "V", std::nanf(""));
    EXPECT_EQ(RatedFreq(nan), 50.0f);
}

TEST_F(Phasor, WindowsStayInsideTheirSegmentAndOffTheLastSample)
{
    const RateSegment segment{1000.0f, 100, 300};
    EXPECT_EQ(DftWindowStart(150, 20, segment, 1000), 130); // ends at the sample
    EXPECT_EQ(DftWindowStart(105, 20, segment, 1000), 100); // pushed to the segment's first
    dftWin = 2;
    EXPECT_EQ(DftWindowStart(295, 20, segment, 1000), 280); // pushed back from the segment's end
    dftWin = 1;
    EXPECT_EQ(DftWindowStart(150, 21, segment, 1000), 140); // centred: (n - 1) / 2 before
    // A window ending exactly at the last sample of the recording moves one back.
    dftWin = 0;
    EXPECT_EQ(DftWindowStart(280, 20, segment, 280), 259);

    // Across a rate change the window never draws from both sides.
    MemoryRecording r({{1000.0f, 200}, {2000.0f, 600}});
    int index = 205;
    int n = 0, step = 0;
    RateSegment found;
    dftWin = 0;
    ASSERT_TRUE(SegmentWindow(r.file, 50.0f, index, n, step, found));
    EXPECT_EQ(found.first, 200);
    EXPECT_EQ(n, 40);
    EXPECT_EQ(index, 200);
    // Segments that the loader derives from the stamps carry no start; the second still begins
    // where the first ended.
    for (SampleSegment &s : r.file.segments)
        s.start = 0;
    ASSERT_TRUE(FindRateSegment(r.file, 250, found));
    EXPECT_EQ(found.first, 200);
    EXPECT_EQ(found.end, 600);
}

TEST_F(Phasor, LowRatesMeansAndCodes)
{
    // 500 Hz on a channel rated 1000 Hz: less than 4 points per cycle, a 20 ms mean instead.
    MemoryRecording r({{500.0f, 100}});
    std::vector<float> ramp(100);
    for (int i = 0; i < 100; ++i)
        ramp[size_t(i)] = float(i);
    CChnMapAnalog &fast = r.add(ramp, "V", 1000.0f);
    int index = 10;
    ComplexD out;
    EXPECT_EQ(BasePhasorAt(r.file, nullptr, &fast, index, out), MeanValue);
    EXPECT_DOUBLE_EQ(out.re, 14.5); // samples 10 .. 19
    EXPECT_EQ(out.im, 0.0);
    // The strided mean reads with a stride of step² and still divides by n / step.
    const float x[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_DOUBLE_EQ(StridedMean(x, 12, 2), (1.0 + 5.0 + 9.0) / 6.0);
    EXPECT_DOUBLE_EQ(CycleEffective(x, 2), std::sqrt(2.5));
}

TEST_F(Phasor, CursorValuesTurnToTheCursorsOwnSample)
{
    MemoryRecording r({{10000.0f, 1000}});
    CChnMapAnalog &u = r.add(Sine(1000, 10000.0, 100.0, 0.0));
    // At sample 500 the sine stands at 50 Hz × 50 ms = 2.5 cycles: angle 180°.
    const ChnCursorValue v = ChnCursorValueAt(r.file, u, 500);
    EXPECT_EQ(v.flags, ChnCursorValue::HasPhasor | ChnCursorValue::HasValue);
    EXPECT_EQ(v.windowStart, 300);
    EXPECT_TRUE(NearRelative(std::fabs(std::atan2(v.phasor.im, v.phasor.re) * 180 / M_PI), 180.0, 6e-5));
    EXPECT_TRUE(NearRelative(v.effective, 100.0 / std::sqrt(2.0), 1.5e-5));
    EXPECT_EQ(ValueText(u, v, 500, DisplayBaseEffective), "70.711V");
    const QByteArray withAngle = ValueText(u, v, 500, DisplayBaseEffective | DisplayAngle);
    EXPECT_TRUE(withAngle.startsWith("70.711V(Ang)")) << withAngle.constData();
    EXPECT_TRUE(withAngle.endsWith("180.000(Deg)")) << withAngle.constData();
}

TEST_F(Phasor, SequencesOfABalancedSetAndRotation)
{
    const ComplexD a{100.0, 0.0};
    const ComplexD b = RotatePhasor(a, -2 * M_PI / 3);
    const ComplexD c = RotatePhasor(a, 2 * M_PI / 3);
    ComplexD zero, positive, negative;
    SymmetricalParts(a, b, c, zero, positive, negative);
    EXPECT_NEAR(std::hypot(zero.re, zero.im), 0.0, 1e-9);
    EXPECT_TRUE(NearRelative(positive.re, 100.0, 1e-11));
    EXPECT_NEAR(std::hypot(negative.re, negative.im), 0.0, 1e-9);
    const ComplexD turned = RotatePhasor(ComplexD{1.0, 0.0}, M_PI / 2);
    EXPECT_NEAR(turned.re, 0.0, 1e-15);
    EXPECT_TRUE(NearRelative(turned.im, 1.0, 1e-15));
}

TEST(ChannelText, NumbersWithPrefixesAndRatios)
{
    CmtdChn_Analog record;
    record.Reset(3);
    record.ch_id = "Udc";
    record.uu = "mV";
    CChnMapAnalog dc(&record);
    EXPECT_EQ(FormatChannelNumber(dc, 0.01, 0), "10.000mV");
    EXPECT_EQ(FormatChannelNumber(dc, 1500.0, 0), "1.500kV");
    EXPECT_EQ(FormatChannelNumber(dc, 2.5e6, 0), "2.500MV");

    CmtdChn_Analog line;
    line.Reset(1);
    line.ch_id = "UA";
    line.uu = "kV";
    line.primary = 220.0f;
    line.secondary = 0.1f;
    line.flags |= CmtdChn_Analog::PrimaryGiven | CmtdChn_Analog::SecondaryGiven | CmtdChn_Analog::PsGiven;
    CChnMapAnalog ac(&line);
    EXPECT_EQ(FormatChannelNumber(ac, 57.735, 0), "57.735V");
    EXPECT_EQ(FormatChannelNumber(ac, 57.735, DisplayPrimary), "127.017kV");

    ChnCursorValue none;
    EXPECT_EQ(RowText(ac, none, 0, none, 0, DisplayNameAhead), "  1:UA [T1=0.000V][T2=0.000V]");
    EXPECT_EQ(RowText(ac, none, 0, none, 0, DisplayNoIndex), "[T1=0.000V][T2=0.000V] UA");
}

TEST_F(Phasor, SlidingFrameHoldsWhereNoWindowReaches)
{
    // 400 samples at 1 kHz (20 points per cycle), then 100 at 100 Hz, which is too slow.
    MemoryRecording r({{1000.0f, 400}, {100.0f, 500}});
    std::vector<float> x(500);
    for (int i = 0; i < 500; ++i)
        x[size_t(i)] = float(i);
    struct First
    {
        static float of(void *, const float *samples, int, int) { return samples[0]; }
    };
    std::vector<float> out(500, -1.0f);
    // "prev": the first cycle sees the window pushed to the segment's start.
    SlidingEvaluate(r.file, 50.0f, x.data(), 500, out.data(), HoldRule::Zero, First::of, nullptr);
    EXPECT_EQ(out[0], 0.0f);
    EXPECT_EQ(out[19], 0.0f);
    EXPECT_EQ(out[25], 5.0f);
    EXPECT_EQ(out[399], 379.0f);
    EXPECT_EQ(out[450], 0.0f); // the slow stretch is filled by the curve's rule
    SlidingEvaluate(r.file, 50.0f, x.data(), 500, out.data(), HoldRule::Last, First::of, nullptr);
    EXPECT_EQ(out[450], 379.0f);

    // "next": the last cycle of the segment holds the last value written.
    dftWin = 2;
    SlidingEvaluate(r.file, 50.0f, x.data(), 500, out.data(), HoldRule::Zero, First::of, nullptr);
    EXPECT_EQ(out[379], 379.0f);
    EXPECT_EQ(out[380], 379.0f);
    EXPECT_EQ(out[399], 379.0f);

    // The phasor series is the cursor's phasor of every sample, bit for bit.
    dftWin = 0;
    std::vector<ComplexD> series(500);
    const std::vector<float> sine = Sine(500, 1000.0, 10.0, 20.0);
    PhasorSeries(r.file, 50.0f, sine.data(), 500, series.data());
    const ComplexD direct = DftPhasor(sine.data() + 230, 20, 1, 1);
    EXPECT_EQ(series[250].re, direct.re);
    EXPECT_EQ(series[250].im, direct.im);
}

TEST_F(Phasor, ChannelsTakenTogetherGiveEachItsOwnPhasor)
{
    // Two rated frequencies (two window lengths), a gap in one window, a short channel, a slow
    // segment where a mean stands in, a null place, and more channels than one pass takes: each
    // gets what it alone gets, bit for bit, with every kernel.
    MemoryRecording r({{4000.0f, 600}, {200.0f, 700}});
    std::vector<const CChnMapAnalog *> chns;
    for (int c = 0; c < 14; ++c) {
        std::vector<float> x = Sine(700, 4000.0, 10.0 + c, 17.0 * c, c % 4 == 3 ? 60.0 : 50.0, 0.1 * c);
        if (c == 5)
            x[310] = std::nanf("");
        if (c == 6)
            x.resize(305);
        chns.push_back(&r.add(x, "V", c % 4 == 3 ? 60.0f : 50.0f));
    }
    chns[9] = nullptr;
    for (int method = 0; method < 4; ++method) {
        dftMethod = method;
        for (int index : {0, 280, 300, 590, 650}) {
            ComplexD together[14];
            int codes[14];
            BasePhasorsAt(r.file, nullptr, chns.data(), 14, index, together, codes);
            // Channels found free of gaps beforehand skip the scan and give the same.
            bool gapFree[14];
            for (int c = 0; c < 14; ++c)
                gapFree[c] = chns[size_t(c)] && HoldsNoGap(*chns[size_t(c)]);
            ComplexD hinted[14];
            int hintedCodes[14];
            BasePhasorsAt(r.file, nullptr, chns.data(), 14, index, hinted, hintedCodes, gapFree);
            for (int c = 0; c < 14; ++c) {
                int at = index;
                ComplexD alone;
                const int code = BasePhasorAt(r.file, nullptr, chns[size_t(c)], at, alone);
                EXPECT_EQ(codes[c], code) << "channel " << c << " at " << index;
                EXPECT_EQ(together[c].re, alone.re) << "channel " << c << " at " << index;
                EXPECT_EQ(together[c].im, alone.im) << "channel " << c << " at " << index;
                EXPECT_EQ(hintedCodes[c], code);
                EXPECT_EQ(hinted[c].re, alone.re);
                EXPECT_EQ(hinted[c].im, alone.im);
            }
        }
    }
}
