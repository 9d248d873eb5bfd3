// Virtual channels: naming and reuse, a job on one derived from another, a stopped job, and
// the writers that must never put them on disk.

#include "cfgfixture.h"
#include "channeledit.h"
#include "chnmap.h"
#include "chnvocabulary.h"
#include "exactcopy.h"
#include "memoryrecording.h"
#include "seriesjob.h"
#include "virtualchannel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using VirtualWriters = InfPairTest;

CChnMapAnalog *Make(CCmtd99File &file, const char *name)
{
    QString message;
    CChnMapAnalog *map = MakeVirtualChannel(file, name, message);
    EXPECT_TRUE(map && message.isEmpty());
    return map;
}

// Every sample is a step; the job is told to stop at the 30th poll.
int StopAt30(void *polls, int code, int, int)
{
    return code == 8 ? 1 : (code == 0 && ++*static_cast<int *>(polls) >= 30 ? -1 : 0);
}

// A ramp of 600 samples at 1 kHz: 20 points to a 50 Hz cycle.
struct Ramp
{
    Ramp()
    {
        std::vector<float> ramp(600);
        for (int i = 0; i < 600; ++i)
            ramp[size_t(i)] = float(i);
        source = &r.add(ramp);
    }
    MemoryRecording r{{{1000.0f, 600}}};
    CChnMapAnalog *source = nullptr;
};

} // namespace

TEST(VirtualChannel, NamesIndexesReuseAndRemoval)
{
    Ramp ramp;
    CCmtd99File &file = ramp.r.file;
    CChnMapAnalog *delta = Make(file, "UA Delta (MN)");
    EXPECT_EQ(delta->sampleCount, 600);
    delta->Values()[5] = 7.0f;
    // Taken again by name (any case) as it stands; a file channel's name gets the suffix, and
    // the suffixed name is a virtual one from then on.
    EXPECT_EQ(Make(file, "ua delta (mn)"), delta);
    EXPECT_EQ(delta->Value(5), 7.0f);
    CChnMapAnalog *copy = Make(file, "UA");
    EXPECT_STREQ(copy->Name(), "UA Virtual Channel");
    EXPECT_EQ(Make(file, "UA"), copy);
    ASSERT_EQ(file.analogMaps.size(), 3u);
    EXPECT_EQ(file.FileAnalogCount(), 1);
    EXPECT_GE(std::min(delta->Index(), copy->Index()), file.firstFreeChannelIndex);
    EXPECT_NE(delta->Index(), copy->Index());
    EXPECT_EQ(file.FindAnalogMap(copy->Index()), copy);

    file.BuildScaleGroups();
    EXPECT_FALSE(RemoveVirtualChannel(file, ramp.source));
    EXPECT_TRUE(RemoveVirtualChannel(file, copy));
    EXPECT_FALSE(RemoveVirtualChannel(file, copy));
    EXPECT_EQ(file.analogChannels.size(), 2u);
    EXPECT_EQ(file.FindMapByName("UA Virtual Channel"), nullptr);
    for (const ScaleGroup &group : file.scaleGroups)
        EXPECT_NE(group.store, copy);
}

TEST(VirtualChannel, JobOnAVirtualSourceClosingStepsAndStop)
{
    Ramp ramp;
    CCmtd99File &file = ramp.r.file;
    // Next cycle minus this one on a ramp: 20 from the second cycle on ...
    CChnMapAnalog *first = Make(file, "D1");
    DescribeVirtualChannel(*first, *ramp.source, SeriesJobParams{SeriesJobDelta});
    first->flags = 0x2 | 0x80 | 0x400;
    EXPECT_TRUE(
        RunVirtualChannelJob(file, *first, *ramp.source, SeriesJobParams{SeriesJobDelta}, nullptr, nullptr));
    EXPECT_EQ(first->Value(19), 0.0f);
    EXPECT_EQ(first->Value(599), 20.0f);
    EXPECT_EQ(first->maxValue, 20.0f);
    EXPECT_EQ(first->flags, 0x2u);
    // ... and of that, 20 over the second cycle only; the real channel stays the file's.
    CChnMapAnalog *second = Make(file, "D2");
    DescribeVirtualChannel(*second, *first, SeriesJobParams{SeriesJobDelta});
    EXPECT_TRUE(
        RunVirtualChannelJob(file, *second, *first, SeriesJobParams{SeriesJobDelta}, nullptr, nullptr));
    EXPECT_EQ(second->config->deviceIndex, ramp.source->Index());
    EXPECT_EQ(second->Value(39), 20.0f);
    EXPECT_EQ(second->Value(40), 0.0f);

    // A mean is a DC quantity in a scale group of its own.
    CChnMapAnalog *mean = Make(file, "UA DC-Part");
    DescribeVirtualChannel(*mean, *ramp.source, SeriesJobParams{SeriesJobAverage});
    EXPECT_TRUE(
        RunVirtualChannelJob(file, *mean, *ramp.source, SeriesJobParams{SeriesJobAverage}, nullptr, nullptr));
    file.BuildScaleGroups(); // what the frame does when the job has ended
    EXPECT_EQ(mean->Class(), ClassDCV);
    EXPECT_FALSE(mean->IsAC());
    EXPECT_EQ(
        std::count_if(file.scaleGroups.begin(), file.scaleGroups.end(),
                      [mean](const ScaleGroup &g) { return g.store == mean && g.peak == mean->absMax; }),
        1);

    // Stopped at the 30th sample: D2 taken again keeps samples 20 to 49 and nothing earlier.
    int polls = 0;
    EXPECT_FALSE(
        RunVirtualChannelJob(file, *second, *ramp.source, SeriesJobParams{SeriesJobDelta}, StopAt30, &polls));
    EXPECT_EQ(second->Value(49), 20.0f);
    EXPECT_EQ(second->Value(50), 0.0f);
    EXPECT_EQ(second->minValue, 0.0f);
    EXPECT_EQ(second->maxValue, 20.0f);
}

TEST_F(VirtualWriters, SavesAndCopiesLeaveThemOut)
{
    std::vector<std::string> lines;
    for (int n = 0; n < 200; ++n)
        lines.push_back(std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," +
                        std::to_string((n * 7) % 100 - 50) + "," + std::to_string(n % 13) + ",1");
    dir.write("rec.dat", lines);
    ASSERT_TRUE(Load({"[Public Record_Information]"}));
    ASSERT_TRUE(rec.LoadDat(dir.path("rec.cfg").c_str(), nullptr, nullptr));
    CChnMapAnalog *virt = Make(rec, "IA Delta (MN)");
    DescribeVirtualChannel(*virt, *rec.analogMaps[0], SeriesJobParams{SeriesJobDelta});
    ASSERT_TRUE(RunVirtualChannelJob(rec, *virt, *rec.analogMaps[0], SeriesJobParams{SeriesJobDelta}, nullptr,
                                     nullptr));

    // A version 2 ".inf" makes a channel of every channel section: none may be extra.
    ASSERT_TRUE(rec.SaveFile(dir.path("saved.cfg").c_str()));
    ASSERT_EQ(SaveExactCopy(rec, QString::fromStdString(dir.path("copy.cff")), ExactCopyFormat{}, nullptr),
              ExactCopyResult::Written);
    for (const char *name : {"saved.cfg", "copy.cff"}) {
        CCmtd99File back;
        ASSERT_TRUE(LoadRecording(back, dir.path(name))) << name;
        ASSERT_EQ(back.analogChannels.size(), 2u);
        for (size_t c = 0; c < 2; ++c) {
            for (int n = 0; n < 200; ++n)
                ASSERT_NEAR(back.analogMaps[c]->Value(n), rec.analogMaps[c]->Value(n), 0.125) << name;
        }
    }
    EXPECT_EQ(dir.read("saved.inf").find("IA Delta"), std::string::npos);

    // The configuration page's positions end with the file's channels.
    EXPECT_FALSE(SetChannelField(rec, true, 2, ChannelField::Unit, "kV", nullptr));
    // A new read of the samples drops what was derived from the old ones.
    ASSERT_TRUE(rec.LoadDat(dir.path("rec.cfg").c_str(), nullptr, nullptr));
    EXPECT_EQ(rec.analogChannels.size(), 2u);
}
