// The older positional ".ext" beside a ".cfg": its records, its refusals, and what it fills in a
// recording under what the sectioned extension file gave.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "extfile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// Two voltages, two currents, three protection outputs; the first output has no phase.
const Lines kBayCfg = {
    "Substation B,Relay 9,1999",
    "7,4A,3D",
    "1,UA,A,,V,1,0,,-32767,32767",
    "2,UB,B,,V,1,0,,-32767,32767",
    "3,IA,A,,A,1,0,,-32767,32767",
    "4,IB,B,,A,1,0,,-32767,32767",
    "1,Trip A,,,0",
    "2,Trip ABC,,,0",
    "3,Carrier,,,0",
    "50",
    "1",
    "1000,20",
    "15/03/2021,10:20:30.000000",
    "15/03/2021,10:20:30.010000",
    "ascii",
    "1",
};

// A busbar with its secondary in kV, a line of type 1 with four rating pairs and a reactor, a
// line of type 4 and a nameless line (neither makes a unit), one dual line, the status lists
// (one for an unknown line), and two channel lines.
const Lines kBayExt = {
    "COMTRADE_EXT,Maker,R2",
    "YES",
    "0.1,0.2,1.1,3.3",
    "0.1,0.2,1.1,3.3",
    "1,3,1",
    "1,Bus I,1,2,0,0,110,kV,100,kV",
    "10,Feeder,3,4,0,0,600,A,1,A,1,50,0.4,1.2,0.05,0.3,0.01,0.005,0.02,0.1,0.001,0.002,"
    "600,1,1200,1,600,5,600,1,1,0,1,2.5",
    "11,Spare,0,0,0,0,1,A,1,A,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,4,0",
    "12,,0,0,0,0,1,A,1,A,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,0",
    "1,2,3,4,5",
    "3,0,0",
    "10,1:25,2:28,3:38",
    "99,2:26",
    "[CHANNELS_INFO_BEGIN]",
    "2",
    "1,1,110,kV,100,V,1,0,kV",
    "3,2,600,A,5,A,1,0,A",
};

class ExtFile : public RecordingTest
{
protected:
    // Writes the ".cfg", the ".ext" and (when given) an ".inf", and loads the description.
    bool Load(const Lines &ext, const Lines &inf = {})
    {
        dir.write("bay.ext", ext);
        std::remove(dir.path("bay.inf").c_str());
        if (!inf.empty())
            dir.write("bay.inf", inf);
        return rec.LoadFile(dir.write("bay.cfg", kBayCfg).c_str());
    }
    // Reads `ext` alone against a recording of four analog channels.
    int Read(const Lines &ext)
    {
        messages.clear();
        file = CmtdExtFile();
        return file.Load(dir.write("alone.ext", ext).c_str(), 4, messages);
    }
    CCmtd99File rec;
    CmtdExtFile file;
    LoadMessageList messages;
};

TEST_F(ExtFile, BayFillsChannelsStatusKindsAndOneLineUnit)
{
    ASSERT_TRUE(Load(kBayExt));
    EXPECT_EQ(MessageLines(rec.extMessages), std::vector<std::string>{});

    // Channel lines give kind, ratings and units; UB has none and takes the busbar's second pair
    // (kV turned into V), IB the line's second pair (fields 23 to 30).
    const CmtdChn_Analog &ua = *rec.FindAnalogChannel(1), &ub = *rec.FindAnalogChannel(2);
    EXPECT_EQ(ua.flags & 0xFE8000u, 0xFE8000u);
    EXPECT_EQ((std::vector<QByteArray>{ua.typeCode, ua.secondaryUnit, rec.FindAnalogChannel(3)->typeCode,
                                       ub.primaryUnit, ub.secondaryUnit}),
              (std::vector<QByteArray>{"TV", "V", "TA", "kV", "V"}));
    EXPECT_TRUE(ub.HasRatings());
    EXPECT_EQ(
        (std::vector<float>{ua.primaryRating, ua.secondaryRating, rec.FindAnalogChannel(3)->secondaryRating,
                            ub.primaryRating, ub.secondaryRating, rec.FindAnalogChannel(4)->primaryRating,
                            rec.FindAnalogChannel(4)->secondaryRating}),
        (std::vector<float>{110, 100, 5, 110, 100000, 1200, 1}));

    // Status kinds: phase only where absent; the list of an unknown line is passed over.
    const CmtdChn_Status &tripA = *rec.FindStatusChannel(1);
    EXPECT_EQ(
        (std::vector<QByteArray>{tripA.typeCode, tripA.signalClass, tripA.ph, tripA.ccbm,
                                 rec.FindStatusChannel(2)->typeCode, rec.FindStatusChannel(2)->ph,
                                 rec.FindStatusChannel(3)->typeCode, rec.FindStatusChannel(3)->signalClass}),
        (std::vector<QByteArray>{"Jump_A", "Relay_Act", "A", "Feeder", "Jump_ABC", "", "Send", ""}));
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(rec.FindStatusChannel(i)->flags & 0x180u, 0x180u) << i;

    // Only the named line of a known type makes a unit.
    ASSERT_EQ(rec.lineUnits.size(), 1u);
    const CmtdInfTrwk_UnitLine &line = *rec.lineUnits[0];
    EXPECT_EQ(line.name, "Feeder");
    EXPECT_EQ(line.devId, 10);
    EXPECT_EQ(line.objectType, "LINE");
    EXPECT_EQ(line.flags, 0x15FFFAu);
    EXPECT_EQ(line.taChns, (ChannelSet{3, 4, 0, 0}));
    EXPECT_EQ(line.tvCount, 1);
    EXPECT_EQ(line.tvChns[0], (ChannelSet{1, 2, 0, 0}));
    EXPECT_EQ(line.statusChannels, (std::vector<uint16_t>{1, 2, 3}));
    EXPECT_EQ((std::vector<float>{line.length, line.x1, line.x0, line.r1, line.r0, line.c0, line.mutualX,
                                  line.g0, line.reactor}),
              (std::vector<float>{50, 0.4f, 1.2f, 0.05f, 0.3f, 0.005f, 0.1f, 0.002f, 2.5f}));
    EXPECT_EQ(ExtMadeUnitCount(rec), 1);

    // The reader alone keeps the revision and the lines that make no unit.
    EXPECT_EQ(Read(kBayExt), CCmtd99File::ReadDone);
    EXPECT_EQ(file.revision, 2);
    EXPECT_TRUE(file.sampled);
    ASSERT_EQ(file.lines.size(), 3u);
    EXPECT_EQ(file.lines[1].lineType, 4);
    EXPECT_EQ(file.dualLineCount, 1);
}

TEST_F(ExtFile, RefusalsGiveTheirMessageAndResult)
{
    const Lines head = {"COMTRADE_EXT,x", "YES", "0,0,0,0", "0,0,0,0"};
    auto with = [&head](const Lines &rest) {
        Lines all = head;
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    };
    const struct
    {
        Lines ext;
        int result;
        const char *message; // the last message, empty for none
    } cases[] = {
        {{"COMTRADE_EXT"}, 5, "Lossing Parameters (<2), Needs [file-flag, copy-right <, revision>]!"},
        {{"COMTRADE,x"}, 5, "Invalid [file-flag]!"},
        {{"COMTRADE_EXT,x", "yes"}, 5, "Invalid [sampling-data type]!"},
        {{"COMTRADE_EXT,x", "NO", "1,2,3"},
         5,
         "Lossing Parameters (<4), Needs local system impedance [rm1, rm0, xm1, xm0]!"},
        {{"COMTRADE_EXT,x", "NO", "1,2,3,4", "1,2,3"},
         5,
         "Lossing Parameters (<4), Needs remote system impedance [rn1, rn0, xn1, xn0]!"},
        {with({"1"}), 5, "Lossing Parameters (&lt;2), Needs [nBus, nLine <, nT>]!"},
        {with({"33,0"}), 5, "Invalid [basbar num.]! [nBus=33]"},
        {with({"0,65"}), 5, "Invalid [line num.]! [nLine=65]"},
        {with({"0,0,-5", "[CHANNELS_INFO_BEGIN]", "1", "1,1,1,V,1,V,1,0,V"}), 3, ""},
        {with({"1,2,0", "1,B", "1,L1", "1,L2", "3"}), 5,
         "Invalid the number status channels related the line (<2)!"},
        {with({"0,0,0", "[CHANNELS_INFO_BEGIN]", "5"}), 5, "Invalid the number of analog channels (<4)!"},
        {with({"0,0,0", "[CHANNELS_INFO_BEGIN]", "0"}), 5, "Invalid the number of analog channels (<4)!"},
        {with({"0,0,1", "1,2,3,4", "[CHANNELS_INFO_BEGIN]", "1", "1,1,1"}), 3,
         "Lossing parameters of analog channel (<9)!"},
        {with({"0,0,0", "CHANNELS"}), 3, ""},
        {with({"2,0,0"}), 3, ""},
    };
    for (const auto &c : cases) {
        const std::string first = c.ext.back();
        EXPECT_EQ(Read(c.ext), c.result) << first;
        if (*c.message) {
            ASSERT_FALSE(messages.isEmpty()) << first;
            EXPECT_EQ(messages.last().text, c.message) << first;
        } else {
            EXPECT_TRUE(messages.isEmpty()) << first;
        }
    }

    // Short records each give their message, stay zeroed, and the read goes on.
    EXPECT_EQ(
        Read(with({"1,1,1", "1,B", "1,L", "1,2", "1", "[CHANNELS_INFO_BEGIN]", "1", "1,1,1,V,1,V,1,0,V"})),
        CCmtd99File::ReadDone);
    EXPECT_EQ(MessageLines(messages), (std::vector<std::string>{"6: Lossing parameter of basbar (<10)!",
                                                                "7: Lossing parameter of line (<22)!",
                                                                "8: Lossing parameter of dual-line (<5)!"}));
    EXPECT_EQ(file.busbars.size(), 1u);
    EXPECT_EQ(file.busbars[0].id, 0);
    EXPECT_EQ(file.channels.size(), 1u);

    // A revision below 1 counts as 1; a name is cut to 48 bytes, a unit to 8.
    EXPECT_EQ(Read({"COMTRADE_EXT,x,R0", "NO", "0,0,0,0", "0,0,0,0", "1,0",
                    "1," + std::string(60, 'N') + ",1,0,0,0,1,kilovolts,1,V"}),
              CCmtd99File::ReadDone);
    EXPECT_EQ(file.revision, 1);
    EXPECT_FALSE(file.sampled);
    ASSERT_EQ(file.busbars.size(), 1u);
    EXPECT_EQ(file.busbars[0].name, QByteArray(48, 'N'));
    EXPECT_EQ(file.busbars[0].primaryUnit, "kilovolt");
}

TEST_F(ExtFile, InfSectionsGoFirstAndVersionTwoLeavesTheExtUnread)
{
    // Version 1 with analog parameters and a line: the ".ext" gives only the status kinds.
    ASSERT_TRUE(Load(kBayExt, {"[Public Record_Information]", "Source=Recorder, TRWKINF_V1",
                               "[TRWK Analog_Channels_Parameter]",
                               "CHNL_INFO_#1=1, 7, alias, DV, 50, 1, kV, 1, V, 1, 0, V", "[TRWK LINE_#1]",
                               "DEV_ID=1,From inf"}));
    EXPECT_EQ(rec.FindAnalogChannel(1)->typeCode, "DV");
    EXPECT_FALSE(rec.FindAnalogChannel(3)->flags & CmtdChn_Analog::TypeCodeGiven);
    ASSERT_EQ(rec.lineUnits.size(), 1u);
    EXPECT_EQ(rec.lineUnits[0]->name, "From inf");
    EXPECT_EQ(ExtMadeUnitCount(rec), 0);
    EXPECT_EQ(rec.FindStatusChannel(1)->typeCode, "Jump_A");

    // Status parameters in the ".inf" keep the status kinds out.
    ASSERT_TRUE(Load(kBayExt, {"[Public Record_Information]", "Source=Recorder, TRWKINF_V1",
                               "[TRWK Status_Channels_Parameter]", "CHNL_INFO_#1=2, 1, a, Other, Kind, f"}));
    EXPECT_EQ(rec.FindStatusChannel(1)->typeCode, "");
    EXPECT_EQ(rec.FindStatusChannel(2)->typeCode, "Kind");
    EXPECT_EQ(rec.lineUnits.size(), 1u);

    // Version 2: the ".ext" is not read, even a broken one.
    ASSERT_TRUE(Load({"BROKEN"}, {"[Public Record_Information]", "Source=Recorder, TRWKINF_V2"}));
    EXPECT_TRUE(rec.extMessages.isEmpty());
    EXPECT_EQ(rec.FindAnalogChannel(1)->typeCode, "");

    // Version 1 and a broken ".ext": its message, and the recording still opens.
    ASSERT_TRUE(Load({"BROKEN,x"}));
    EXPECT_EQ(MessageLines(rec.extMessages), (std::vector<std::string>{"1: Invalid [file-flag]!"}));
    EXPECT_TRUE(rec.lineUnits.empty());
}

} // namespace
