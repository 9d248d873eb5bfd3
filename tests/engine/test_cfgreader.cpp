#include "cfgfixture.h"
#include "cmtd99file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;
using Messages = std::vector<std::string>;

// Two analog and two status channels, two sampling rates, 1999 revision: the shape of a
// typical feeder recording, small enough to read at a glance.
const Lines kFeeder = {
    "Substation A,Relay 7,1999",
    "4,2A,2D",
    "1,IA,A,Feeder 1,A,0.25,0.5,2,-32767,32767,600,1,S",
    "3,VA,B,,kV,0.125,0,,,,110,0.1,p",
    "1,Trip,,,1",
    "2,CB open,3",
    "60",
    "2",
    "1000,200",
    "2000,600",
    "15/03/2021,10:20:30.000123",
    "15/03/2021,10:20:30.100123",
    "ascii",
    "1.5",
};

// The head and counts of a one-channel 1999 recording, followed by `tail`.
Lines OneChannel(const Lines &tail)
{
    Lines lines = {"S,R,1999", "1,1A,0D", "1,IA,A,,A,1,0,0,-1,1,1,1,S"};
    lines.insert(lines.end(), tail.begin(), tail.end());
    return lines;
}

// A stamp as one comparable text, "yyyy-mm-dd hh:mm:ss.ffffff".
std::string Stamp(const RecordTime &t)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%06d", t.year, t.month, t.day, t.hour,
                  t.minute, t.second, t.microsecond);
    return text;
}

// The effective segments as "rate:start-end" items, to compare a whole list at once.
std::string SegmentText(const std::vector<SampleSegment> &segments)
{
    std::string text;
    for (const SampleSegment &s : segments)
        text += (text.empty() ? "" : " ") + std::to_string(int(s.rate)) + ":" + std::to_string(s.start) +
                "-" + std::to_string(s.end);
    return text;
}

SampleSegment Segment(int index, float rate, int end)
{
    SampleSegment segment;
    segment.index = static_cast<int16_t>(index);
    segment.rate = rate;
    segment.end = end;
    return segment;
}

using CfgLookups = RecordingTest;
using CfgPaths = RecordingTest;
using CfgReader = RecordingTest;
using CfgWriter = RecordingTest;

} // namespace

TEST_F(CfgReader, ReadsACompleteRecording)
{
    dir.write("feeder.cfg", kFeeder, "\r\n");
    CCmtd99File rec;
    // Any extension names the recording: the ".cfg" beside it is read.
    ASSERT_TRUE(rec.LoadFile(dir.path("feeder.dat").c_str()));
    EXPECT_EQ(rec.validationMask, 0);
    EXPECT_TRUE(rec.cfgMessages.isEmpty());
    EXPECT_TRUE(rec.datMessages.isEmpty());

    // The written copy (see the writer test) shows every value; here the bits that tell which
    // fields the file really gave, and what the reader derives.
    const CmtdFileDescription &d = rec.fileDesc;
    EXPECT_EQ(d.flags, 0xFFFu);
    EXPECT_STREQ(d.recDevId.constData(), "Relay 7");
    EXPECT_EQ(d.lineFreq, 60.0f);
    ASSERT_EQ(rec.analogChannels.size(), 2u);
    EXPECT_EQ(rec.analogChannels[0]->flags, 0x1FFFu);
    // Empty fields keep the defaults and leave their bits open to the extension file.
    const CmtdChn_Analog &va = *rec.analogChannels[1];
    EXPECT_EQ(va.min, -1e9f);
    EXPECT_EQ(va.flags, 0x1FFFu & ~(CmtdChn_Analog::CcbmGiven | CmtdChn_Analog::SkewGiven |
                                    CmtdChn_Analog::MinGiven | CmtdChn_Analog::MaxGiven));
    EXPECT_EQ(va.ratedFreq, 60.0f) << "a channel without its own rated frequency takes lf";
    EXPECT_EQ(rec.firstFreeChannelIndex, 4);
    EXPECT_EQ(rec.firstFreeChannelIndex2, 4);
    // The 1991 form "Dn,ch_id,y" inside a 1999 file; y keeps only its lowest bit.
    ASSERT_EQ(rec.statusChannels.size(), 2u);
    EXPECT_STREQ(rec.statusChannels[1]->ch_id.constData(), "CB open");
    EXPECT_EQ(rec.statusChannels[1]->normalState, 1);

    EXPECT_EQ(SegmentText(rec.segments), "1000:0-200 2000:200-600");
    EXPECT_EQ(rec.segments[0].flags, 3u);
    EXPECT_EQ(rec.pointCount, 600);
    EXPECT_EQ(Stamp(d.startTime), "2021-03-15 10:20:30.000123");
    EXPECT_EQ(d.triggerTime.ToMicroseconds() - d.startTime.ToMicroseconds(), 100000);
}

TEST_F(CfgReader, HeadLineDecidesRevisionAndItsFlag)
{
    CCmtd99File rec;
    // The revision is only final when the device name came with it.
    EXPECT_EQ(rec.LoadCfg(dir.write("a.cfg", {"Station,,1999"}).c_str()), 3);
    EXPECT_STREQ(rec.fileDesc.revYear.constData(), "1999");
    EXPECT_EQ(rec.fileDesc.flags, CmtdFileDescription::StationGiven);

    rec.ClearAll();
    EXPECT_EQ(rec.LoadCfg(dir.write("b.cfg", {"Station"}).c_str()), 5);
    EXPECT_EQ(MessageLines(rec.cfgMessages),
              Messages{"1: Lossing Parameters (<2), Needs [station-name, station-id <, revision>]!"});

    rec.ClearAll();
    EXPECT_EQ(rec.LoadCfg(dir.path("missing.cfg").c_str()), 5);
    EXPECT_FALSE(rec.LoadFile(dir.path("missing.cfg").c_str()));
}

TEST_F(CfgReader, CountLineTakesBothOrdersAndRefusesBadSums)
{
    struct Case
    {
        const char *line;
        int result;
        int analogs;
        int statuses;
        const char *message;
    };
    const Case cases[] = {
        {"5,3A,2D", 3, 3, 2, nullptr},
        {"5,2D,3A", 3, 3, 2, nullptr},
        {" 5 , 2d , 3a ", 3, 3, 2, nullptr},
        {"2,0A,2D", 3, 0, 2, nullptr},
        {"5,3A,3D", 5, 0, 0, "2: Channel number error! [5, 3A, 3D]"},
        {"0,0A,0D", 5, 0, 0, "2: Channel number error! [0, 0A, 0D]"},
        {"2,-1A,3D", 5, 0, 0, "2: Channel number error! [2, -1A, 3D]"},
        {"3,3A", 5, 0, 0, "2: Lossing Parameters (<3), Needs [T, xxA, xxD]!"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line);
        CCmtd99File rec;
        ASSERT_EQ(rec.LoadCfg(dir.write("counts.cfg", {"S,R,1999", c.line}).c_str()), c.result);
        EXPECT_EQ(rec.fileDesc.analogCount, c.analogs);
        EXPECT_EQ(rec.fileDesc.statusCount, c.statuses);
        EXPECT_EQ(MessageLines(rec.cfgMessages), c.message ? Messages{c.message} : Messages{});
        EXPECT_EQ(rec.fileDesc.flags & 0x70u, c.result == 3 ? 0x70u : 0u);
    }
}

TEST_F(CfgReader, DuplicateAndShortChannelLines)
{
    const Lines tail = {"50",     "1", "1000,100", "01/01/2020,00:00:00.0", "01/01/2020,00:00:00.0",
                        "BINARY", "1"};
    auto load = [&](Lines lines, CCmtd99File &rec) {
        lines.insert(lines.end(), tail.begin(), tail.end());
        return rec.LoadFile(dir.write("dup.cfg", lines).c_str());
    };

    // A second analog index 1 is kept out of the way, under 10001.
    CCmtd99File analog;
    EXPECT_TRUE(
        load({"S,R,1999", "3,2A,1D", "1,IA,,,A,1,0,0,-1,1", "1,IB,,,A,1,0,0,-1,1", "1,Trip,0"}, analog));
    EXPECT_EQ(MessageLines(analog.cfgMessages),
              Messages{"4: The index [idx_cfg=1] of analog channel overlaped!"});
    ASSERT_EQ(analog.analogChannels.size(), 2u);
    EXPECT_EQ(analog.analogChannels[1]->index, 10001);
    EXPECT_EQ(analog.FindAnalogChannel(10001), analog.analogChannels[1].get());

    // A second status index 1 is dropped, and the count no longer matches.
    CCmtd99File status;
    EXPECT_FALSE(load({"S,R,1999", "3,1A,2D", "1,IA,,,A,1,0,0,-1,1", "1,Trip,0", "1,Close,1"}, status));
    EXPECT_EQ(MessageLines(status.cfgMessages),
              Messages{"5: The index [idx_cfg=1] of status channel overlaped!"});
    EXPECT_EQ(status.statusChannels.size(), 1u);
    EXPECT_EQ(status.validationMask, CCmtd99File::BadStatus);

    CCmtd99File shortAnalog;
    EXPECT_FALSE(
        load({"S,R,1999", "3,2A,1D", "1,IA,,,A,1,0,0,-1,1", "2,IB,,,A,1,0,0,-1", "1,Trip,0"}, shortAnalog));
    EXPECT_EQ(MessageLines(shortAnalog.cfgMessages),
              Messages{"4: Lossing parameters of analog channel! (<10)"});
    EXPECT_EQ(shortAnalog.validationMask, CCmtd99File::BadAnalog);

    CCmtd99File shortStatus;
    EXPECT_FALSE(load({"S,R,1999", "2,1A,1D", "1,IA,,,A,1,0,0,-1,1", "1,Trip"}, shortStatus));
    EXPECT_EQ(MessageLines(shortStatus.cfgMessages),
              Messages{"4: Lossing parameters of analog channel! (<3)"});
    EXPECT_EQ(shortStatus.validationMask, CCmtd99File::BadStatus);
}

TEST_F(CfgReader, TruncatedFileIsReportedOnlyByValidationAndResetKeepsThat)
{
    const std::string path = dir.write("cut.cfg", {"S,R,1999", "2,1A,1D", "1,IA,,,A,1,0,0,-1,1"});
    CCmtd99File rec;
    EXPECT_EQ(rec.LoadCfg(path.c_str()), 3);
    EXPECT_TRUE(rec.cfgMessages.isEmpty());
    EXPECT_FALSE(rec.LoadFile(path.c_str()));
    EXPECT_EQ(rec.validationMask, CCmtd99File::BadStatus | CCmtd99File::BadSegments);
    EXPECT_EQ(MessageLines(rec.datMessages), (Messages{"1: Invalid status channel parameter! [n=1][ar=0]",
                                                       "2: Invalid sampling segment! [npt=0][nrate=0]"}));

    // Only the data messages outlive a reset: they stay readable after the frame gave up.
    rec.ClearAll();
    EXPECT_EQ(rec.datMessages.size(), 2);
    EXPECT_TRUE(rec.analogChannels.empty());
    EXPECT_EQ(rec.validationMask, 0);
    EXPECT_EQ(rec.triggerIndex, -1);
    EXPECT_EQ(rec.fileDesc.flags, 0u);
    // Each load starts from the empty state and does not add to the last one's channels.
    const std::string feeder = dir.write("feeder.cfg", kFeeder);
    ASSERT_TRUE(rec.LoadFile(feeder.c_str()) && rec.LoadFile(feeder.c_str()));
    EXPECT_EQ(rec.analogChannels.size(), 2u);
}

TEST_F(CfgReader, RevisionBefore1999ReadsMonthFirstAndIsWrittenBackAs1999)
{
    CCmtd99File rec;
    ASSERT_TRUE(rec.LoadFile(
        dir.write("old.cfg", {"Old Station,Relay 2", "1,1A,0D", "1,IA,A,,A,1,0,0,-1,1", "50", "1", "1200,240",
                              "03/15/95,10:20:30.000000", "03/15/95,10:20:30.500000", "ASCII", "0"})
            .c_str()));
    const CmtdFileDescription &d = rec.fileDesc;
    EXPECT_EQ(Stamp(d.startTime), "1995-03-15 10:20:30.000000");
    EXPECT_EQ(d.timeMult, 1.0f) << "the line behind ft is no multiplier in a 1991 file";
    EXPECT_EQ(d.flags & CmtdFileDescription::TimeMultGiven, 0u);
    EXPECT_TRUE(rec.cfgMessages.isEmpty());

    // Written back with the 1999 fields filled in from the defaults, and stamps day first.
    ASSERT_TRUE(rec.SaveCfg(dir.path("copy.cfg").c_str()));
    const std::string text = dir.read("copy.cfg");
    EXPECT_NE(text.find("\n1,IA,A,,A,1.0000000000,0.0000000000,0.000000,-1,1,1.000000,1.000000,S\n"),
              std::string::npos);
    EXPECT_NE(text.find("\n15/03/1995,10:20:30.000000\n"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 16), "\nASCII\n1.000000\n");
    EXPECT_FALSE(rec.SaveCfg(dir.path("missing/x.cfg").c_str()));
}

TEST_F(CfgReader, SegmentLines)
{
    const Lines stamps = {"01/01/2020,00:00:00.0", "01/01/2020,00:00:00.0", "ASCII", "1"};
    auto load = [&](Lines segmentLines, CCmtd99File &rec) {
        Lines lines = OneChannel({"50"});
        lines.insert(lines.end(), segmentLines.begin(), segmentLines.end());
        lines.insert(lines.end(), stamps.begin(), stamps.end());
        return rec.LoadFile(dir.write("seg.cfg", lines).c_str());
    };

    // nrates 0 still has one line: rate unknown, the end gives the sample count.
    CCmtd99File none;
    EXPECT_TRUE(load({"0", "0,1000"}, none));
    EXPECT_EQ(SegmentText(none.segments), "0:0-1000");
    EXPECT_EQ(none.segments[0].flags, SampleSegment::EndGiven);
    EXPECT_EQ(none.pointCount, 1000);

    // Ends that do not rise are per-segment counts.
    CCmtd99File counts;
    EXPECT_TRUE(load({"3", "1000,500", "2000,500", "1000,500"}, counts));
    EXPECT_EQ(SegmentText(counts.segments), "1000:0-500 2000:500-1000 1000:1000-1500");
    EXPECT_TRUE(counts.cfgMessages.isEmpty()) << "all three segment lines were consumed";
    EXPECT_EQ(counts.pointCount, 1500);

    // Bad values are reported and kept; a short line is used as far as it goes.
    CCmtd99File bad;
    load({"3", "-1000,100", "1000,3", "4000"}, bad);
    const Messages messages = MessageLines(bad.cfgMessages);
    ASSERT_GE(messages.size(), 3u);
    EXPECT_EQ(Messages(messages.begin(), messages.begin() + 3),
              (Messages{"6: Invalid Sampling-Rate of [sampling segment 1]! [-1000]",
                        "7: Invalid End-point-number of [sampling segment 2]! [3]",
                        "8: Lossing parameters of [sampling segment 3]! (&lt;2)"}));
    ASSERT_EQ(bad.fileDesc.rawSegments.size(), 3u);
    EXPECT_EQ(SegmentText(bad.fileDesc.rawSegments).substr(0, 25), "-1000:0-100 1000:0-3 4000");
    EXPECT_EQ(bad.fileDesc.rawSegments[2].index, 3);

    // A negative count reads no segment line: the next line is the start stamp.
    CCmtd99File negative;
    EXPECT_FALSE(load({"-1"}, negative));
    EXPECT_EQ(MessageLines(negative.cfgMessages), Messages{"5: Invalid [sampling segments num.]! [-1]"});
    EXPECT_TRUE(negative.fileDesc.rawSegments.empty());
    EXPECT_NE(negative.fileDesc.flags & CmtdFileDescription::StartTimeGiven, 0u);
    EXPECT_EQ(negative.validationMask, CCmtd99File::BadSegments);
}

TEST_F(CfgReader, EffectiveSegmentsOrderByOrdinal)
{
    CCmtd99File rec;
    // Segments supplied out of order; the later of two ordinals 1 wins.
    rec.fileDesc.rawSegments = {Segment(2, 1000, 600), Segment(1, 4000, 100), Segment(1, 2000, 200)};
    EXPECT_NE(rec.Validate() & CCmtd99File::BadTotal, 0);
    EXPECT_EQ(SegmentText(rec.segments), "2000:0-200 1000:200-600");
    EXPECT_EQ(rec.pointCount, 600);

    // A gap in the ordinals loses what stands behind it.
    rec.fileDesc.rawSegments = {Segment(1, 1000, 100), Segment(3, 1000, 300)};
    rec.Validate();
    EXPECT_EQ(SegmentText(rec.segments), "1000:0-100");
    EXPECT_EQ(rec.pointCount, 100);

    rec.fileDesc.rawSegments = {Segment(2, 1000, 100)};
    EXPECT_NE(rec.Validate() & CCmtd99File::BadSegments, 0);
    EXPECT_EQ(SegmentText(rec.segments), "");
    EXPECT_EQ(rec.pointCount, 0);
}

TEST_F(CfgReader, LineFrequencyAndTimeMultiplierOfZero)
{
    const Lines segment = {"1", "1000,100", "01/01/2020,00:00:00.0", "01/01/2020,00:00:00.0", "ASCII"};
    Lines lines = OneChannel({"// no frequency given", "0"});
    lines.insert(lines.end(), segment.begin(), segment.end());
    lines.push_back("1");
    CCmtd99File noFreq;
    EXPECT_TRUE(noFreq.LoadFile(dir.write("lf.cfg", lines).c_str()));
    EXPECT_EQ(MessageLines(noFreq.cfgMessages), Messages{"5: Invalid [Line Freq.]! [0]"});
    EXPECT_EQ(noFreq.fileDesc.flags & CmtdFileDescription::LineFreqGiven, 0u);
    EXPECT_EQ(noFreq.fileDesc.lineFreq, 50.0f);
    EXPECT_EQ(noFreq.analogChannels[0]->ratedFreq, 50.0f);

    lines = OneChannel({"50"});
    lines.insert(lines.end(), segment.begin(), segment.end());
    lines.push_back("0");
    CCmtd99File noMult;
    EXPECT_FALSE(noMult.LoadFile(dir.write("mult.cfg", lines).c_str()));
    EXPECT_EQ(MessageLines(noMult.cfgMessages), Messages{"10: Invalid [time multiplication factor]! [0]"});
    EXPECT_EQ(noMult.validationMask, CCmtd99File::BadTimeMult);
    EXPECT_EQ(MessageLines(noMult.datMessages), Messages{"1: Invalid time-multiplication! [0.000]"});
}

TEST(TimeStamps, ParsersReadBothOrdersAndRefuseBadStamps)
{
    RecordTime t;
    // The fraction counts microseconds: ".5" is 5 us, not half a second.
    ASSERT_TRUE(ParseTime1999("30/06/2021,23:59:58.5", t));
    EXPECT_EQ(Stamp(t), "2021-06-30 23:59:58.000005");
    ASSERT_TRUE(ParseTime1991("06/30/21,23:59:58.000001", t));
    EXPECT_EQ(Stamp(t), "2021-06-30 23:59:58.000001");

    // Two-digit years pivot between 37 and 38.
    ASSERT_TRUE(ParseTime1999("01/01/37,00:00:00.0", t));
    EXPECT_EQ(t.year, 2037);
    ASSERT_TRUE(ParseTime1999("01/01/38,00:00:00.0", t));
    EXPECT_EQ(t.year, 1938);
    // The calendar normalises an impossible date instead of refusing it.
    ASSERT_TRUE(ParseTime1999("30/02/2021,00:00:00.0", t));
    EXPECT_EQ(Stamp(t), "2021-03-02 00:00:00.000000");

    ASSERT_TRUE(ParseTime1999("01/01/1970,00:00:01.000002", t));
    EXPECT_EQ(t.ToMicroseconds(), 1000002);

    // Refused stamps read as the fixed reset date, never as zero. One second before the epoch
    // is refused too: the calendar gives it as -1, which means failure.
    for (const char *bad : {"15/03/2021,10:20:30.123456789", "15/03/2021 10:20:30.0", "15/03/2021,10:20:30",
                            "15-03-2021,10:20:30.0", "15/03/2021,10:20:30.-1", "31/12/1969,23:59:59.0"}) {
        SCOPED_TRACE(bad);
        ASSERT_TRUE(ParseTime1999("15/03/2021,10:20:30.0", t));
        EXPECT_FALSE(ParseTime1999(bad, t));
        EXPECT_EQ(Stamp(t), "2006-02-15 16:30:00.000000");
    }
}

TEST_F(CfgReader, RefusedStampAndUnknownFileType)
{
    CCmtd99File rec;
    EXPECT_TRUE(rec.LoadFile(
        dir.write("stamp.cfg", OneChannel({"50", "1", "1000,100", "15/03/2021,10:20:30.123456789",
                                           "15/03/2021,10:20:30.0", "float32", "1"}))
            .c_str()));
    EXPECT_EQ(MessageLines(rec.cfgMessages),
              Messages{"7: Invalid [start time of Recording]! [15/03/2021,10:20:30.123456789]"});
    const CmtdFileDescription &d = rec.fileDesc;
    EXPECT_EQ(Stamp(d.startTime), "2006-02-15 16:30:00.000000");
    EXPECT_EQ(Stamp(d.triggerTime), "2021-03-15 10:20:30.000000");
    EXPECT_EQ(d.flags & (CmtdFileDescription::StartTimeGiven | CmtdFileDescription::TriggerTimeGiven |
                         CmtdFileDescription::FileTypeGiven),
              CmtdFileDescription::TriggerTimeGiven);
    EXPECT_STREQ(d.fileType.constData(), "float32");
}

TEST_F(CfgWriter, WritesEveryFieldAndReadsBack)
{
    CCmtd99File rec;
    ASSERT_TRUE(rec.LoadFile(dir.write("feeder.cfg", kFeeder).c_str()));
    ASSERT_TRUE(rec.SaveCfg(dir.path("copy.cfg").c_str()));
    EXPECT_EQ(dir.read("copy.cfg"),
              "Substation A,Relay 7,1999\n"
              "4,2A,2D\n"
              "1,IA,A,Feeder 1,A,0.2500000000,0.5000000000,2.000000,-32767,32767,600.000000,1.000000,S\n"
              "3,VA,B,,kV,0.1250000000,0.0000000000,0.000000,-1000000000,1000000000,110.000000,0.100000,p\n"
              "1,Trip,,,1\n"
              "2,CB open,,,1\n"
              "60.000\n"
              "2\n"
              "1000.000000,200\n"
              "2000.000000,600\n"
              "15/03/2021,10:20:30.000123\n"
              "15/03/2021,10:20:30.100123\n"
              "ascii\n"
              "1.500000\n");

    CCmtd99File copy;
    ASSERT_TRUE(copy.LoadFile(dir.path("copy.cfg").c_str()));
    EXPECT_EQ(copy.fileDesc.flags, rec.fileDesc.flags);
}

TEST_F(CfgLookups, ByIndexByNameAndByAliasOfRealChannels)
{
    CCmtd99File rec;
    ASSERT_TRUE(rec.LoadFile(dir.write("feeder.cfg", kFeeder).c_str()));
    EXPECT_EQ(rec.FindAnalogChannel(3), rec.analogChannels[1].get());
    EXPECT_EQ(rec.FindAnalogChannel(2), nullptr);
    EXPECT_EQ(rec.FindStatusChannel(2), rec.statusChannels[1].get());
    EXPECT_EQ(rec.FindStatusChannel(3), nullptr);
    EXPECT_EQ(rec.FindAnalogChannelByName("va"), rec.analogChannels[1].get());

    // A derived channel (index at or above the first free one) stands behind the real ones;
    // its alias is not searched, its name is.
    rec.analogChannels[1]->alias = "Ua";
    auto derived = std::make_unique<CmtdChn_Analog>();
    derived->Reset(rec.firstFreeChannelIndex);
    derived->ch_id = "3I0";
    derived->alias = "Residual";
    rec.analogChannels.push_back(std::move(derived));
    EXPECT_EQ(rec.FindAnalogChannelByName("UA"), rec.analogChannels[1].get());
    EXPECT_EQ(rec.FindAnalogChannelByName("3i0"), rec.analogChannels[2].get());
    EXPECT_EQ(rec.FindAnalogChannelByName("Residual"), nullptr);
    EXPECT_EQ(rec.FindAnalogChannelByName(nullptr), nullptr);
}

TEST_F(CfgPaths, BasePathAndUpperCaseSibling)
{
    EXPECT_STREQ(CmtdBasePath("/data/bay.3/rec.cfg").constData(), "/data/bay.3/rec");
    EXPECT_STREQ(CmtdBasePath("/data/bay.3/rec").constData(), "/data/bay.3/rec");
    EXPECT_STREQ(CmtdBasePath("rec.2021.dat").constData(), "rec.2021");

    // Recorders on case-blind systems write ".CFG".
    dir.write("FAULT.CFG", kFeeder);
    const QByteArray base = QByteArray::fromStdString(dir.path("FAULT"));
    EXPECT_EQ(CmtdSiblingPath(base, ".cfg"), base + ".CFG");
    EXPECT_EQ(CmtdSiblingPath(base, ".inf"), base + ".inf");
    CCmtd99File rec;
    EXPECT_TRUE(rec.LoadFile((base + ".dat").constData()));
}

TEST_F(CfgReader, ExtensionFileVersionDecidesWhetherABrokenCfgEndsTheLoad)
{
    const std::string cfg = dir.write("rec.cfg", {"S,R,1999", "5,3A,3D"});
    CCmtd99File rec;
    EXPECT_FALSE(rec.LoadFile(cfg.c_str()));
    EXPECT_EQ(rec.infVersion, 0);
    EXPECT_TRUE(rec.datMessages.isEmpty()) << "a refused count line ends the load before validation";

    auto version = [&](const Lines &inf) {
        dir.write("rec.inf", inf);
        return rec.ReadInfVersion(cfg.c_str());
    };
    EXPECT_EQ(version({"[Public Record_Information]", "Location=Bay 3", "Source=Relay 7, trwkinf_v2 "}), 2);
    EXPECT_EQ(version({"[public record_information]", "Source=Relay 7,KSGLINF_V3"}), 3);
    EXPECT_EQ(version({"[Public Record_Information]", "Source=Relay 7,MY TRWKINF_V2"}), 0);
    EXPECT_EQ(
        version({"[Public Record_Information]", "[Public File_Description]", "Source=Relay 7,TRWKINF_V2"}),
        0);

    // From version 2 on the ".inf" repeats the whole ".cfg", so a broken ".cfg" no longer stops
    // the load: validation decides.
    dir.write("rec.inf", {"[Public Record_Information]", "Source=Relay 7,TRWKINF_V2"});
    rec.LoadFile(cfg.c_str());
    EXPECT_EQ(rec.infVersion, 2);
    EXPECT_FALSE(rec.datMessages.isEmpty());
}

TEST_F(CfgReader, NumbersAtTheEdgesOfTheirRangeReadWithoutOverflow)
{
    // Found by fuzzing: index 65537 is held as 1, so it duplicates channel 1 like any other repeat.
    // (The index of INT_MAX and the month of INT_MIN are kept inputs of the fuzz regressions.)
    const std::string wrapped =
        dir.write("wrap.cfg",
                  {"S,R,1999", "2,2A,0D", "1,IA,,,A,1,0,0,-1,1,1,1,S", "65537,IB,,,A,1,0,0,-1,1,1,1,S", "50",
                   "1", "1000,10", "01/01/2020,00:00:00.000000", "01/01/2020,00:00:00.000000", "ASCII", "1"});
    CCmtd99File file;
    EXPECT_TRUE(file.LoadFile(wrapped.c_str()));
    ASSERT_EQ(file.analogChannels.size(), 2u);
    EXPECT_EQ(file.analogChannels[1]->index, 10001);
}
