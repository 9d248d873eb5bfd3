// Virtual channels: naming and reuse, the description taken from the source, the job's closing
// steps and a stopped job, removal, and the writers that must never put them on disk.

#include "cfgfixture.h"
#include "channeledit.h"
#include "chnmap.h"
#include "chnvocabulary.h"
#include "exactcopy.h"
#include "memoryrecording.h"
#include "seriesjob.h"
#include "virtualchannel.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

SeriesJobParams Job(int kind, int mode = 0)
{
    SeriesJobParams params;
    params.kind = kind;
    params.mode = mode;
    return params;
}

CChnMapAnalog *Make(CCmtd99File &file, const char *name)
{
    QString message;
    CChnMapAnalog *map = MakeVirtualChannel(file, name, message);
    EXPECT_TRUE(message.isEmpty());
    return map;
}

// Stops the job at its `stopAt`-th poll; every sample is a step.
struct StopAfter
{
    int stopAt = 0;
    int polls = 0;
    int total = -1;
    static int report(void *context, int code, int total, int)
    {
        auto *self = static_cast<StopAfter *>(context);
        if (code == 8)
            self->total = total;
        if (code == 8)
            return 1;
        return code == 0 && ++self->polls >= self->stopAt ? -1 : 0;
    }
};

// A ramp of 600 samples at 1 kHz: 20 points to a 50 Hz cycle.
class VirtualRamp : public ::testing::Test
{
protected:
    void SetUp() override
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

TEST_F(VirtualRamp, NamesIndexesAndReuse)
{
    CCmtd99File &file = r.file;
    CChnMapAnalog *delta = Make(file, "UA Delta (MN)");
    ASSERT_NE(delta, nullptr);
    EXPECT_TRUE(delta->isVirtual);
    EXPECT_EQ(delta->sampleCount, 600);
    EXPECT_EQ(delta->Value(599), 0.0f);
    EXPECT_EQ(file.analogMaps.back().get(), delta);
    EXPECT_EQ(file.analogChannels.back().get(), delta->config);

    // Taken again by name (any case): the same channel, nothing added, nothing cleared.
    delta->Values()[5] = 7.0f;
    EXPECT_EQ(Make(file, "ua delta (mn)"), delta);
    EXPECT_EQ(file.analogMaps.size(), 2u);
    EXPECT_EQ(delta->Value(5), 7.0f);

    // A file channel's name gets the suffix and a channel of its own; the suffixed name is then
    // a virtual one and is taken again.
    CChnMapAnalog *copy = Make(file, "UA");
    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy->Name(), "UA Virtual Channel");
    EXPECT_EQ(Make(file, "UA"), copy);
    EXPECT_EQ(file.analogMaps.size(), 3u);
    EXPECT_EQ(file.FileAnalogCount(), 1);

    EXPECT_GE(delta->Index(), file.firstFreeChannelIndex);
    EXPECT_GE(copy->Index(), file.firstFreeChannelIndex);
    EXPECT_NE(delta->Index(), copy->Index());
    EXPECT_EQ(file.FindAnalogMap(copy->Index()), copy);
    EXPECT_EQ(file.FindMapByName("UA Virtual Channel"), copy);

    // Only virtual channels can be taken out.
    EXPECT_FALSE(RemoveVirtualChannel(file, source));
    EXPECT_FALSE(RemoveVirtualChannel(file, nullptr));
    file.BuildScaleGroups();
    EXPECT_TRUE(RemoveVirtualChannel(file, copy));
    EXPECT_FALSE(RemoveVirtualChannel(file, copy));
    EXPECT_EQ(file.analogMaps.size(), 2u);
    EXPECT_EQ(file.analogChannels.size(), 2u);
    EXPECT_EQ(file.FindMapByName("UA Virtual Channel"), nullptr);
    for (const ScaleGroup &group : file.scaleGroups)
        EXPECT_NE(group.store, copy);
}

TEST_F(VirtualRamp, DerivedFromAVirtualChannelWithClosingSteps)
{
    CCmtd99File &file = r.file;
    source->config->ph = "B";
    source->config->flags |= CmtdChn_Analog::PhaseGiven;
    CChnMapAnalog *first = Make(file, "D1");
    ASSERT_NE(first, nullptr);
    DescribeVirtualChannel(*first, *source, Job(SeriesJobDelta));
    first->flags = 0x2 | 0x80 | 0x400;
    EXPECT_TRUE(RunVirtualChannelJob(file, *first, *source, Job(SeriesJobDelta), nullptr, nullptr));
    // Next cycle minus this one on a ramp: 20 from the second cycle on.
    EXPECT_EQ(first->Value(19), 0.0f);
    EXPECT_EQ(first->Value(20), 20.0f);
    EXPECT_EQ(first->Value(599), 20.0f);
    EXPECT_EQ(first->maxValue, 20.0f);
    EXPECT_EQ(first->minValue, 0.0f);
    EXPECT_EQ(first->flags, 0x2u);
    EXPECT_EQ(first->config->deviceIndex, source->Index());
    EXPECT_EQ(first->config->uu, "V");
    EXPECT_EQ(first->Class(), ClassACV);
    EXPECT_EQ(first->Phase(), PhaseB);

    // From the virtual channel: its real channel stays the file's, and the curve is that of the
    // virtual channel's samples (20 only over the second cycle).
    CChnMapAnalog *second = Make(file, "D2");
    DescribeVirtualChannel(*second, *first, Job(SeriesJobDelta));
    EXPECT_TRUE(RunVirtualChannelJob(file, *second, *first, Job(SeriesJobDelta), nullptr, nullptr));
    EXPECT_EQ(second->config->deviceIndex, source->Index());
    EXPECT_EQ(second->Value(39), 20.0f);
    EXPECT_EQ(second->Value(40), 0.0f);

    // A mean is a DC quantity: class, a scale group of its own, no phasors.
    CChnMapAnalog *mean = Make(file, "UA DC-Part");
    DescribeVirtualChannel(*mean, *source, Job(SeriesJobAverage));
    EXPECT_TRUE(RunVirtualChannelJob(file, *mean, *source, Job(SeriesJobAverage), nullptr, nullptr));
    EXPECT_EQ(mean->Class(), ClassDCV);
    EXPECT_FALSE(mean->IsAC());
    EXPECT_TRUE(mean->direct);
    int groupsOfMean = 0;
    for (const ScaleGroup &group : file.scaleGroups)
        groupsOfMean += group.store == mean && group.peak == mean->absMax ? 1 : 0;
    EXPECT_EQ(groupsOfMean, 1);
}

TEST_F(VirtualRamp, StoppedJobKeepsWhatItWrote)
{
    CCmtd99File &file = r.file;
    CChnMapAnalog *target = Make(file, "D1");
    std::fill(target->Values(), target->Values() + 600, 5.0f); // an earlier curve
    target->flags = 0x80;
    StopAfter stop{30};
    EXPECT_FALSE(
        RunVirtualChannelJob(file, *target, *source, Job(SeriesJobDelta), &StopAfter::report, &stop));
    EXPECT_EQ(stop.total, 600);
    // Samples 20 to 49 were written before the 30th poll; the earlier curve is gone.
    EXPECT_EQ(target->Value(19), 0.0f);
    EXPECT_EQ(target->Value(49), 20.0f);
    EXPECT_EQ(target->Value(50), 0.0f);
    EXPECT_EQ(target->Value(599), 0.0f);
    EXPECT_EQ(target->maxValue, 20.0f);
    EXPECT_EQ(target->flags, 0u);

    // Without samples only the closing steps run.
    CCmtd99File empty;
    empty.firstFreeChannelIndex = 1;
    CChnMapAnalog *none = Make(empty, "X");
    ASSERT_NE(none, nullptr);
    none->maxValue = 3.0f;
    none->flags = 0x100;
    EXPECT_TRUE(RunVirtualChannelJob(empty, *none, *none, Job(SeriesJobAverage), nullptr, nullptr));
    EXPECT_EQ(none->maxValue, 0.0f);
    EXPECT_EQ(none->flags, 0u);
    EXPECT_EQ(empty.scaleGroups.size(), 1u);
}

namespace {

class VirtualWriters : public InfPairTest
{
protected:
    void SetUp() override
    {
        InfPairTest::SetUp();
        std::vector<std::string> lines;
        for (int n = 0; n < 200; ++n)
            lines.push_back(std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," +
                            std::to_string((n * 7) % 100 - 50) + "," + std::to_string(n % 13) + "," +
                            std::to_string(n % 2));
        dir.write("rec.dat", lines);
        ASSERT_TRUE(Load({"[Public Record_Information]", "Source=X,TRWKINF_V1"}));
        ASSERT_TRUE(rec.LoadDat(dir.path("rec.cfg").c_str(), nullptr, nullptr));
        CChnMapAnalog *ia = rec.analogMaps[0].get();
        virt = Make(rec, "IA Delta (MN)");
        ASSERT_NE(virt, nullptr);
        DescribeVirtualChannel(*virt, *ia, Job(SeriesJobDelta));
        ASSERT_TRUE(RunVirtualChannelJob(rec, *virt, *ia, Job(SeriesJobDelta), nullptr, nullptr));
    }
    // Same channels, same samples as the recording's own.
    void expectFileChannels(const CCmtd99File &back, double slack)
    {
        ASSERT_EQ(back.analogChannels.size(), 2u);
        EXPECT_EQ(back.fileDesc.analogCount, 2);
        EXPECT_EQ(back.FindMapByName("IA Delta (MN)"), nullptr);
        for (size_t c = 0; c < 2; ++c) {
            for (int n = 0; n < 200; ++n)
                ASSERT_NEAR(back.analogMaps[c]->Value(n), rec.analogMaps[c]->Value(n), slack)
                    << c << " " << n;
        }
    }
    CChnMapAnalog *virt = nullptr;
};

} // namespace

TEST_F(VirtualWriters, SavesAndCopiesLeaveVirtualChannelsOut)
{
    rec.commentaries.push_back(InfCommentary{});
    rec.commentaries.back().channelIndex = virt->config->index;
    rec.commentaries.back().text = "on the virtual channel";

    ASSERT_TRUE(rec.SaveFile(dir.path("saved.cfg").c_str()));
    EXPECT_EQ(dir.read("saved.inf").find("IA Delta"), std::string::npos);
    CCmtd99File saved;
    // The ".inf" written is of version 2, whose channel sections make channels: none may be extra.
    ASSERT_TRUE(LoadRecording(saved, dir.path("saved.cfg")));
    EXPECT_EQ(saved.infVersion, 2);
    expectFileChannels(saved, 0.0);
    EXPECT_TRUE(saved.commentaries.empty());

    for (const char *name : {"copy.cfg", "copy.cff"}) {
        ASSERT_EQ(SaveExactCopy(rec, QString::fromStdString(dir.path(name)), ExactCopyFormat{}, nullptr),
                  ExactCopyResult::Written);
        CCmtd99File copy;
        ASSERT_TRUE(LoadRecording(copy, dir.path(name)));
        expectFileChannels(copy, 0.25 / 2);
    }
    for (const ChangedChannel &changed : FindChannelsChangedBySave(rec, ExactCopyFormat{}))
        EXPECT_LT(changed.position, 2);

    // The configuration page lists the file's channels; the position after them is no channel.
    QString reason;
    EXPECT_FALSE(SetChannelField(rec, true, 2, ChannelField::Unit, "kV", &reason));
    EXPECT_TRUE(ChannelFieldText(rec, true, 2, ChannelField::Name).isEmpty());
    EXPECT_EQ(virt->config->uu, "A");

    // A new read of the samples drops what was derived from the old ones.
    ASSERT_TRUE(rec.LoadDat(dir.path("rec.cfg").c_str(), nullptr, nullptr));
    EXPECT_EQ(rec.analogChannels.size(), 2u);
    EXPECT_EQ(rec.analogMaps.size(), 2u);
}
