// Notices that stand beside numbers a user could take for facts: phasor windows on 50 Hz in a
// recording of another line frequency, and stamps that run backwards.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "notices.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// One voltage channel at 1200 Hz, 12 samples; the stamps given per sample (ASCII, so the
// time-stamp mode of the file: nrates 0).
class Notices : public RecordingTest
{
protected:
    QStringList noticesOf(const char *lineFreq, const std::vector<int> &stamps)
    {
        std::vector<std::string> dat;
        for (size_t i = 0; i < stamps.size(); ++i)
            dat.push_back(std::to_string(i + 1) + "," + std::to_string(stamps[i]) + ",100");
        dir.write("r.dat", dat);
        const std::string cfg =
            dir.write("r.cfg", {"S,R,1999", "1,1A,0D", "1,UA,A,,V,1,0,0,-32767,32767,1,1,S", lineFreq, "0",
                                "0," + std::to_string(stamps.size()), "01/01/2024,10:00:00.000000",
                                "01/01/2024,10:00:00.000000", "ASCII", "1"});
        CCmtd99File file;
        EXPECT_TRUE(file.LoadFile(cfg.c_str()) && file.LoadDat(cfg.c_str(), nullptr, nullptr));
        return RecordingNotices(file);
    }
};

} // namespace

TEST_F(Notices, LineFrequencyAndBackwardStamps)
{
    std::vector<int> steady;
    for (int i = 0; i < 12; ++i)
        steady.push_back(i * 833);
    EXPECT_TRUE(noticesOf("50", steady).isEmpty());
    EXPECT_TRUE(noticesOf("0", steady).isEmpty()); // no line frequency: 50 Hz is taken, nothing to say
    const QStringList sixty = noticesOf("60", steady);
    ASSERT_EQ(sixty.size(), 1);
    EXPECT_EQ(sixty[0].toStdString(), "Phasors use 50 Hz windows; the recording's line frequency is 60 Hz");
    EXPECT_EQ(noticesOf("16.7", steady).value(0).toStdString(),
              "Phasors use 50 Hz windows; the recording's line frequency is 16.7 Hz");

    // A 16-bit microsecond counter wraps after 65,535: the stamp of point 7 lies before point 6.
    std::vector<int> wrapped = {60000, 61000, 62000, 63000, 64000, 65000, 465, 1465, 2465, 3465, 4465, 5465};
    const QStringList back = noticesOf("50", wrapped);
    ASSERT_EQ(back.size(), 1);
    EXPECT_TRUE(back[0].startsWith(QStringLiteral("Time stamps run backwards at point 6 ")))
        << back[0].toStdString();
}
