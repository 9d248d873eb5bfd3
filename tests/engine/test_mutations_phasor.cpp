// Phasor read-outs whose sign or length a slip would change without changing their size: the
// one-cycle window of the true effective value, the turn of a cursor's phasor from the window
// start to the cursor's own sample, the direction of the phase compensation, and where the
// number formatter of a DC channel changes its prefix. Expected values are worked by hand.

#include "chntext.h"
#include "cmtd99file.h"
#include "cursorvalue.h"
#include "globalsettings.h"
#include "memoryrecording.h"
#include "phasor.h"
#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

double Degrees(const ComplexD &p)
{
    return std::atan2(p.im, p.re) * 180.0 / M_PI;
}

using PhasorMutations = PhasorSwitchesRestored;

} // namespace

TEST_F(PhasorMutations, TrueEffectiveValueSpansExactlyOneCycle)
{
    // 1 kHz, rated 50 Hz: 20 points per cycle. Samples x[i] = i, so the window from sample 0
    // holds 0..19: sum of squares 19 × 20 × 39 / 6 = 2470, effective sqrt(2470 / 20).
    MemoryRecording r({{1000.0f, 100}});
    std::vector<float> ramp(100);
    for (int i = 0; i < 100; ++i)
        ramp[size_t(i)] = float(i);
    CChnMapAnalog &u = r.add(ramp);
    double out = 0.0;
    EXPECT_EQ(RealEffectiveAt(r.file, nullptr, &u, 0, out), EffectiveValue);
    EXPECT_TRUE(NearRelative(out, std::sqrt(2470.0 / 20.0), 1e-12));
    // From sample 30: 30..49, sum of squares 2470 + 20 × 30² + 2 × 30 × 190 = 31870.
    EXPECT_EQ(RealEffectiveAt(r.file, nullptr, &u, 30, out), EffectiveValue);
    EXPECT_TRUE(NearRelative(out, std::sqrt(31870.0 / 20.0), 1e-12));

    // Rated 100 Hz: 10 points per cycle, samples 0..9: sum of squares 285.
    CChnMapAnalog &fast = r.add(ramp, "V", 100.0f);
    EXPECT_EQ(RealEffectiveAt(r.file, nullptr, &fast, 0, out), EffectiveValue);
    EXPECT_TRUE(NearRelative(out, std::sqrt(285.0 / 10.0), 1e-12));

    // A whole cycle of a sine of amplitude 100 is 100 / sqrt(2); a cycle and one sample is not.
    CChnMapAnalog &sine = r.add(Sine(100, 1000.0, 100.0));
    EXPECT_EQ(RealEffectiveAt(r.file, nullptr, &sine, 3, out), EffectiveValue);
    EXPECT_TRUE(NearRelative(out, 100.0 / std::sqrt(2.0), 1e-6));
}

TEST_F(PhasorMutations, CursorPhasorTurnsForwardFromTheSegmentStart)
{
    // 10 kHz, 200 points per cycle, window "prev". A cursor 37 samples into a segment has its
    // window pushed forward to the segment's first sample; the phasor of that window is turned
    // on by 37 samples, 37 × 360° / 200 = 66.6°, the angle of the sine at the cursor itself.
    // The second segment starts at 1000, which is 5 whole cycles on: the same angle again.
    MemoryRecording r({{10000.0f, 1000}, {10000.0f, 2000}});
    CChnMapAnalog &u = r.add(Sine(2000, 10000.0, 100.0));
    for (int cursor : {37, 1037}) {
        const ChnCursorValue v = ChnCursorValueAt(r.file, u, cursor);
        ASSERT_TRUE(v.flags & ChnCursorValue::HasPhasor) << cursor;
        EXPECT_EQ(v.windowStart, cursor - 37) << cursor;
        EXPECT_TRUE(NearRelative(Degrees(v.phasor), 66.6, 1.5e-4)) << cursor;
        EXPECT_TRUE(NearRelative(std::hypot(v.phasor.re, v.phasor.im), 100.0, 1e-4)) << cursor;
    }
}

TEST_F(PhasorMutations, PhaseCompensationTurnsTheFundamentalByTheTableAngle)
{
    // One table entry of +0.3 rad: the whole raw range is one cell pair, so every effective
    // value reads entry 0. The uncompensated phasor of a sine from the window start is 100∠0;
    // compensated it is 100∠+0.3 rad: re = 100 cos 0.3, im = 100 sin 0.3.
    MemoryRecording r({{1000.0f, 100}});
    CChnMapAnalog &u = r.add(Sine(100, 1000.0, 100.0));
    u.config->a = 1.0f;
    u.config->b = 0.0f;
    u.config->min = -32767.0f;
    u.config->max = 32767.0f;
    u.config->angleCount = 1;
    u.config->compAngle[0] = 0.3f;
    u.config->flags |= CmtdChn_Analog::CompAngleGiven;

    int index = 0;
    ComplexD plain;
    ASSERT_EQ(BasePhasorAt(r.file, nullptr, &u, index, plain), PhasorValue);
    EXPECT_NEAR(Degrees(plain), 0.0, 1e-3);

    PhComp = true;
    index = 0;
    ComplexD turned;
    ASSERT_EQ(BasePhasorAt(r.file, nullptr, &u, index, turned), PhasorValue);
    const double angle = double(0.3f);
    EXPECT_TRUE(NearRelative(turned.re, 100.0 * std::cos(angle), 1e-4));
    EXPECT_TRUE(NearRelative(turned.im, 100.0 * std::sin(angle), 1e-4));
}

TEST(PrefixBoundary, DcChannelChangesPrefixOnlyAboveOneThousandAndBelowFiveHundredths)
{
    // A DC channel in mV: values are held in V, and the formatter picks the prefix by size:
    // below 0.05 milli, above 1000 kilo, above 1000000 mega; the bounds themselves stay plain.
    CmtdChn_Analog record;
    record.Reset(1);
    record.ch_id = "Udc";
    record.uu = "mV";
    CChnMapAnalog dc(&record);
    // A DC current in mA follows the same bounds with its own unit.
    CmtdChn_Analog current;
    current.Reset(2);
    current.ch_id = "Idc";
    current.uu = "mA";
    CChnMapAnalog idc(&current);
    const std::pair<double, const char *> volts[] = {
        {999.9, "999.900V"},   {1000.0, "1000.000V"},     {1001.0, "1.001kV"},
        {-1500.0, "-1.500kV"}, {1000000.0, "1000.000kV"}, {2000000.0, "2.000MV"},
        {0.05, "0.050V"},      {0.049, "49.000mV"},       {-0.02, "-20.000mV"}};
    for (const auto &[value, text] : volts)
        EXPECT_EQ(FormatChannelNumber(dc, value, 0), text);
    EXPECT_EQ(FormatChannelNumber(idc, 1500.0, 0), "1.500kA");
    EXPECT_EQ(FormatChannelNumber(idc, 999.9, 0), "999.900A");
}
