// Start and trigger stamps on both sides of a daylight-saving switch. Recorders keep standard
// time the year round, and only differences of stamps count: the distance from start to
// trigger is the wall-clock distance of the two texts, whatever zone the machine runs in.
// CTest runs these once more with VELDRIX_TEST_TZ=Europe/Berlin.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "cmtdtypes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

using StampsAcrossSwitch = RecordingTest;

std::string ConfigWith(const char *start, const char *trigger)
{
    return std::string("S,R,1999\n1,1A,0D\n1,UA,,,V,1,0,0,-32767,32767,1,1,S\n50\n1\n1000,10\n") + start +
           "\n" + trigger + "\nASCII\n1";
}

} // namespace

TEST_F(StampsAcrossSwitch, DistanceIsTheWallClockDistanceOfTheTexts)
{
    struct Case
    {
        const char *start;
        const char *trigger;
        int64_t micros; // worked by hand from the texts
        int triggerHour;
    };
    const Case cases[] = {
        // Spring: 01:59:59 to 03:00:01 is 1 h 0 min 2 s on the clock face.
        {"31/03/2024,01:59:59.000000", "31/03/2024,03:00:01.000000", 3602000000LL, 3},
        // Spring, inside the hour that Berlin skips: 02:30 is still a reading of the recorder.
        {"31/03/2024,01:59:59.250000", "31/03/2024,02:30:00.000000", 1800750000LL, 2},
        // Autumn: 02:59:59 to 03:00:01 is 2 s, though Berlin passes 02:xx twice that night.
        {"27/10/2024,02:59:59.000000", "27/10/2024,03:00:01.000000", 2000000LL, 3},
        // Autumn: 01:59:59.5 to 03:00:00.5 is 1 h 0 min 1 s.
        {"27/10/2024,01:59:59.500000", "27/10/2024,03:00:00.500000", 3601000000LL, 3},
        // Both in summer time: 12:00 to 12:00:00.000250 is 250 µs.
        {"15/07/2024,12:00:00.000000", "15/07/2024,12:00:00.000250", 250LL, 12},
    };
    for (const Case &c : cases) {
        const std::string cfg = dir.write("r.cfg", {ConfigWith(c.start, c.trigger)});
        CCmtd99File file;
        ASSERT_TRUE(file.LoadFile(cfg.c_str())) << c.start;
        const auto &desc = file.fileDesc;
        EXPECT_EQ(desc.triggerTime.ToMicroseconds() - desc.startTime.ToMicroseconds(), c.micros) << c.start;
        // The fields stay as the recorder wrote them.
        EXPECT_EQ(desc.triggerTime.hour, c.triggerHour) << c.trigger;
    }
}

TEST(ClockFields, CarriedThroughTheCalendarWithoutSummerTime)
{
    // A summer start plus 3 h 30 min 5 s of samples, as the tool bar counts it: the clock
    // fields run over and are carried, and the hour is the recorder's, not moved by the zone.
    // Across the spring switch night: 01:59:59 plus 2 s is 02:00:01 on the recorder's clock.
    auto carried = [](int month, int day, int hour, int minute, int second) {
        std::tm fields{};
        fields.tm_year = 2024 - 1900;
        fields.tm_mon = month - 1;
        fields.tm_mday = day;
        fields.tm_hour = hour;
        fields.tm_min = minute;
        fields.tm_sec = second;
        NormalizeClockFields(fields);
        char text[32];
        std::snprintf(text, sizeof text, "%02d/%02d %02d:%02d:%02d", fields.tm_mday, fields.tm_mon + 1,
                      fields.tm_hour, fields.tm_min, fields.tm_sec);
        return std::string(text);
    };
    EXPECT_EQ(carried(7, 15, 22, 59, 59 + 3 * 3600 + 30 * 60 + 5), "16/07 02:30:04");
    EXPECT_EQ(carried(3, 31, 1, 59, 61), "31/03 02:00:01");
}
