// The status event list: delta texts, base points, and the events of a loaded recording with
// two sampling rates and a contact bounce.

#include "cfgfixture.h"
#include "statusevents.h"
#include "timetext.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(TimeTexts, ShortestFullAndMillisecondForms)
{
    EXPECT_EQ(TimeText(1500000), "0:01.5");
    EXPECT_EQ(TimeText(-1000), "-0:00.001");

    EXPECT_EQ(TimeTextFull(1500000), "0:01.500000");
    EXPECT_EQ(TimeTextFull(-1000), "-0:00.001000");
    EXPECT_EQ(TimeTextFull(3723000001), "62:03.000001");

    EXPECT_EQ(TimeTextMs(1500000), "1500.000ms");
    EXPECT_EQ(TimeTextMs(-1000), "-1.000ms");
    EXPECT_EQ(TimeTextMs(-1), "-0.001ms");
    EXPECT_EQ(TimeTextMs(INT64_MIN), "-9223372036854775.808ms");

    EXPECT_EQ(StatusDeltaText(-1000, StatusTimeMsUs), "-1.000ms");
}

namespace {

// 12 samples, 1 kHz up to sample 6 and 500 Hz after it, every stamp 0 so that the times come
// from the rates; the start lies 100 ms before the trigger.
// Trip: rises at 4, falls at 9. Breaker: a one-sample bounce at 1, rises at 5, falls at 9,
// rises at 11.
std::string WriteTwoRateRecording(const TempRecording &dir)
{
    const char *trip = "000011111000";
    const char *breaker = "010001111001";
    std::vector<std::string> dat;
    for (int n = 0; n < 12; ++n)
        dat.push_back(std::to_string(n + 1) + ",0,0," + trip[n] + "," + breaker[n]);
    dir.write("r.dat", dat);
    return dir.write("r.cfg", {"S,R,1999", "3,1A,2D", "1,UA,,,V,1,0,0,-32767,32767,1,1,S", "1,Trip,,,0",
                               "2,Breaker,,,0", "50", "2", "1000,6", "500,12", "01/02/2024,10:00:00.000000",
                               "01/02/2024,10:00:00.100000", "ASCII", "1"});
}

using StatusEventList = RecordingTest;

} // namespace

TEST_F(StatusEventList, TwoRateRecordingInTimeOrderAndBasePoints)
{
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, WriteTwoRateRecording(dir)));
    const std::vector<StatusEvent> events = CollectStatusEvents(file);

    // By hand: the step into the second segment still takes the period of the first, so samples
    // 0..6 lie one millisecond apart and the rest two (sample 9 at 6 + 3 * 2 = 12 ms). The
    // bounce at sample 1 is gone; at sample 9 Trip comes first.
    const struct
    {
        int sample;
        int64_t timeUs;
        int index;
        const char *name;
        int state;
    } expected[] = {{4, 4000, 1, "Trip", 1},
                    {5, 5000, 2, "Breaker", 1},
                    {9, 12000, 1, "Trip", 0},
                    {9, 12000, 2, "Breaker", 0},
                    {11, 16000, 2, "Breaker", 1}};
    ASSERT_EQ(events.size(), std::size(expected));
    for (size_t i = 0; i < events.size(); ++i) {
        EXPECT_EQ(events[i].sample, expected[i].sample) << i;
        EXPECT_EQ(events[i].timeUs, expected[i].timeUs) << i;
        EXPECT_EQ(events[i].index, expected[i].index) << i;
        EXPECT_EQ(events[i].channel, expected[i].index - 1) << i;
        EXPECT_EQ(events[i].name, expected[i].name) << i;
        EXPECT_EQ(events[i].state, expected[i].state) << i;
    }
    // The bounce is filled in on the bits as well.
    EXPECT_EQ(file.statusMaps[1]->Bit(1), 0);

    // Base points.
    int64_t base = -1;
    // T0 is the trigger, 100 ms after the first sample, though no sample falls on it.
    ASSERT_TRUE(StatusBaseTime(file, StatusBaseTripT0, 0, base));
    EXPECT_EQ(base, 100000);
    EXPECT_EQ(StatusDeltaText(12000 - base, StatusTimeMinSecUs), "-0:00.088");

    EXPECT_FALSE(StatusBaseTime(file, StatusBaseCustomT0, 0, base));
    ASSERT_TRUE(file.SetCustomT0(9));
    ASSERT_TRUE(StatusBaseTime(file, StatusBaseCustomT0, 0, base));
    EXPECT_EQ(base, 12000);

    ASSERT_TRUE(StatusBaseTime(file, StatusBaseT1, 6, base));
    EXPECT_EQ(base, 6000);
    ASSERT_TRUE(StatusBaseTime(file, StatusBaseT1Fixed, 11, base));
    EXPECT_EQ(base, 16000);
    EXPECT_FALSE(StatusBaseTime(file, StatusBaseT1Fixed, 12, base));
    EXPECT_FALSE(StatusBaseTime(file, StatusBaseT1, -1, base));

    CCmtd99File empty;
    EXPECT_FALSE(StatusBaseTime(empty, StatusBaseTripT0, 0, base));
    EXPECT_TRUE(CollectStatusEvents(empty).empty());
}
