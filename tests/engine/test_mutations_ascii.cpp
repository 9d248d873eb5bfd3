// The ASCII sample file: the running extremes a load leaves in a store, the range that the
// channel's declared raw limits span, and the 5 % rule that joins jittering stamps into one rate.
// Every expected value here is worked by hand from the raw text the test writes.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "tolerance.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// One ASCII line per stamp, one analog value 0 and the status bit 0.
Lines StampLines(const std::vector<int> &stamps)
{
    Lines lines;
    for (size_t n = 0; n < stamps.size(); ++n)
        lines.push_back(std::to_string(n + 1) + "," + std::to_string(stamps[n]) + ",0,0");
    return lines;
}

using AsciiMutations = RecordingTest;

} // namespace

TEST_F(AsciiMutations, ExtremesFollowTheEitherOrRuleOverScaledValues)
{
    // UA: a = 0.5, b = 1. Raw 5, -3, 7, 2, -8, 4 give 3.5, -0.5, 4.5, 2, -3, 3.
    // Running from max -9999999 / min 9999999: 3.5 raises the max only; -0.5 lowers the min;
    // 4.5 is the new max; 2 touches neither; -3 is the new min; 3 touches neither.
    // IB: a = 2, b = 0, raw 1..6 rising: every sample raises the max, so the min never moves.
    // IC: a = 1, b = 0, raw falling 6..1: the first sample raises the max, the rest lower the min.
    const std::string cfg = dir.write(
        "r.cfg", RecordingConfig({"1,UA,,,V,0.5,1,0,-32767,32767,1,1,S", "2,IB,,,A,2,0,0,-32767,32767,1,1,S",
                                  "3,IC,,,A,1,0,0,-32767,32767,1,1,S"},
                                 1, {"1000,6"}, "ASCII"));
    dir.write("r.dat", {"1,-100000,5,1,6,0", "2,-99000,-3,2,5,0", "3,-98000,7,3,4,0", "4,-97000,2,4,3,0",
                        "5,-96000,-8,5,2,0", "6,-95000,4,6,1,0"});
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, cfg));
    ASSERT_EQ(file.loadedPoints, 6);

    const CChnMapAnalog &ua = *file.analogMaps[0];
    EXPECT_EQ(ua.maxValue, 4.5f);
    EXPECT_EQ(ua.minValue, -3.0f);
    EXPECT_EQ(ua.Value(4), -3.0f);

    const CChnMapAnalog &ib = *file.analogMaps[1];
    EXPECT_EQ(ib.maxValue, 12.0f);
    EXPECT_EQ(ib.minValue, 9999999.0f);

    const CChnMapAnalog &ic = *file.analogMaps[2];
    EXPECT_EQ(ic.maxValue, 6.0f);
    EXPECT_EQ(ic.minValue, 1.0f);

    // The scale group of the volts takes the larger absolute extreme: |4.5| against |-3|.
    bool foundVolts = false;
    for (const auto &group : file.scaleGroups) {
        if (group.store == &ua) {
            foundVolts = true;
            EXPECT_EQ(group.peak, 4.5f);
        }
    }
    EXPECT_TRUE(foundVolts);
}

TEST_F(AsciiMutations, DeclaredRawLimitsGiveTheRangeInStoredUnits)
{
    // UA: secondary, a = 0.5, b = 1, raw limits -100..200: -100 × 0.5 + 1 = -49, 200 × 0.5 + 1 = 101.
    // UB: primary kV through 10 kV / 0.1 kV, a = 2, b = 3, raw limits -100..200:
    //   gain = 2 × (0.1 / 10) × 1000 = 20, offset = 3 × (0.1 / 10) × 1000 = 30,
    //   so -100 × 20 + 30 = -1970 and 200 × 20 + 30 = 4030 (secondary volts).
    // IC: the offset alone moves the range: a = 1, b = -7, limits 0..10 give -7..3.
    const std::string cfg = dir.write(
        "r.cfg", RecordingConfig({"1,UA,,,V,0.5,1,0,-100,200,1,1,S", "2,UB,,,kV,2,3,0,-100,200,10,0.1,P",
                                  "3,IC,,,A,1,-7,0,0,10,1,1,S"},
                                 1, {"1000,5"}, "ASCII"));
    dir.write("r.dat", {"1,-100000,0,0,0,0", "2,-99000,0,0,0,0", "3,-98000,0,0,0,0", "4,-97000,0,0,0,0",
                        "5,-96000,0,0,0,0"});
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, cfg));

    const CChnMapAnalog &ua = *file.analogMaps[0];
    EXPECT_TRUE(NearRelative(ua.rangeMin, -49.0, 1e-6));
    EXPECT_TRUE(NearRelative(ua.rangeMax, 101.0, 1e-6));
    const CChnMapAnalog &ub = *file.analogMaps[1];
    EXPECT_TRUE(NearRelative(ub.rangeMin, -1970.0, 1e-6));
    EXPECT_TRUE(NearRelative(ub.rangeMax, 4030.0, 1e-6));
    const CChnMapAnalog &ic = *file.analogMaps[2];
    EXPECT_TRUE(NearRelative(ic.rangeMin, -7.0, 1e-6));
    EXPECT_TRUE(NearRelative(ic.rangeMax, 3.0, 1e-6));
    // All samples are raw 0: the stored value is the offset alone.
    EXPECT_TRUE(NearRelative(ic.Value(0), -7.0, 1e-6));
}

TEST_F(AsciiMutations, StampJitterAgainstTheFivePercentRule)
{
    // Rates missing, so the stamps make the segments; the first spacing of 1000 µs sets 1000 Hz.
    // One spacing of 953 µs reads 1e6 / 953 = 1049.3 Hz, 4.93 % off: still the same rate, so one
    // segment of all 8 samples. A spacing of 951 µs reads 1051.5 Hz, 5.15 % off: a segment
    // {1000 Hz, end 3} closes at sample 3, and the spacings of 951 µs after it run to 8.
    const std::string cfg =
        dir.write("r.cfg", RecordingConfig({"1,UA,,,V,1,0,0,-32767,32767,1,1,S"}, 1, {"0,8"}, "ASCII"));
    dir.write("r.dat", StampLines({0, 1000, 2000, 2953, 3953, 4953, 5953, 6953}));
    CCmtd99File within;
    ASSERT_TRUE(LoadRecording(within, cfg));
    ASSERT_EQ(within.segments.size(), 1u);
    EXPECT_FLOAT_EQ(within.segments[0].rate, 1000.0f);
    EXPECT_EQ(within.segments[0].end, 8);

    dir.write("r.dat", StampLines({0, 1000, 2000, 2951, 3902, 4853, 5804, 6755}));
    CCmtd99File beyond;
    ASSERT_TRUE(LoadRecording(beyond, cfg));
    ASSERT_EQ(beyond.segments.size(), 2u);
    EXPECT_FLOAT_EQ(beyond.segments[0].rate, 1000.0f);
    EXPECT_EQ(beyond.segments[0].end, 3);
    EXPECT_TRUE(NearRelative(beyond.segments[1].rate, 1000000.0 / 951.0, 1e-6));
    EXPECT_EQ(beyond.segments[1].end, 8);
    // A first stamp of 0 counts from the start, 100 ms before the trigger.
    EXPECT_EQ(beyond.sampleTimes[0], -100000);
    EXPECT_EQ(beyond.sampleTimes[3], 2951 - 100000);
}
