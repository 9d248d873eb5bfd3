// The extension file reader: the section walk, the precedence of what was given first, both
// dialects, the stand-in for a missing ".cfg", and the private records.

#include "cfgfixture.h"
#include "cmtd99file.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

bool HasMessage(const LoadMessageList &messages, const std::string &text)
{
    for (const LoadMessage &message : messages) {
        if (message.text.toStdString() == text)
            return true;
    }
    return false;
}

using InfReader = InfPairTest;

TEST_F(InfReader, WalkSortsSectionsByFamilyAndTheCfgWinsFieldByField)
{
    ASSERT_TRUE(Load({
        "[Public Record_Information]",
        "Source=Recorder X, ksglinf_v1",
        "Location=",                // no value: ignored and not kept
        "max_current=12.5 // peak", // behind "//" does not count
        "Vendor_Key=v1",
        "[Public File_Description]",
        "Station_Name=Other Station", // the ".cfg" gave it
        "Line_Frequency=60",          // the ".cfg" gave it too
        "Extra=e",
        "[Public  Analog_Channel_#1]", // two blanks between the words still make two words
        "Channel_ID=other",
        "Monitored_Component=Feeder 9",
        "Channel_Skew=0.5",
        "Bay=7",
        "[Public Analog_Channel_#3]",
        "Channel_ID=ghost",
        "[ksgl LINE_#1]",
        "Name=L1",
        "[Public Strange]",
        "a=1",
        "[TRWK Unknown_Thing]",
        "b=2",
        "[xyz abc]",
        "c=3",
        "c=4",
        "[one]",
        "[TRWK Too Many Words]",
        "d=5",
    }));
    EXPECT_EQ(rec.infVersion, 1);
    EXPECT_EQ(rec.recordInfo.source, "Recorder X");
    EXPECT_EQ(rec.recordInfo.versionTag, "ksglinf_v1");
    EXPECT_EQ(rec.recordInfo.flags, 0x1u | 0x2u | 0x10u);
    EXPECT_FLOAT_EQ(rec.recordInfo.maxCurrent, 12.5f);
    ASSERT_EQ(rec.recordInfo.otherKeys.size(), 1);
    EXPECT_EQ(rec.recordInfo.otherKeys[0].key, "Vendor_Key");

    EXPECT_EQ(rec.fileDesc.stationName, "Substation A");
    EXPECT_EQ(rec.fileDesc.lineFreq, 50.0f);
    ASSERT_EQ(rec.fileDesc.otherKeys.size(), 1);
    EXPECT_EQ(rec.fileDesc.otherKeys[0].value, "e");

    // Version 1: the section fills what the ".cfg" left open and nothing else.
    const CmtdChn_Analog &ia = *rec.analogChannels[0];
    EXPECT_EQ(ia.ch_id, "IA");
    EXPECT_EQ(ia.ccbm, "Feeder 9");
    EXPECT_EQ(ia.skew, 0.5f);
    EXPECT_TRUE(ia.flags & CmtdChn_Analog::CcbmGiven);
    ASSERT_EQ(ia.otherKeys.size(), 1);
    EXPECT_EQ(ia.otherKeys[0].key, "Bay");
    // Channel 3 is not in the ".cfg" of a version-1 file: a message at its head, no channel.
    EXPECT_EQ(rec.analogChannels.size(), 2u);
    ASSERT_EQ(rec.infMessages.size(), 1);
    EXPECT_EQ(rec.infMessages[0].line, 15);
    EXPECT_EQ(rec.infMessages[0].text, "No [idx_cfg=3] of the analog channel in [.cfg] file!");

    EXPECT_EQ(rec.infSectionsSeen,
              InfRecordInformation | InfFileDescription | InfAnalogChannel | InfLine | InfOtherPrivate);
    ASSERT_EQ(rec.publicExtraSections.size(), 1);
    EXPECT_EQ(rec.publicExtraSections[0].head, "Public Strange");
    ASSERT_EQ(rec.privateExtraSections.size(), 1);
    EXPECT_EQ(rec.privateExtraSections[0].head, "TRWK Unknown_Thing");
    // Foreign: another family, a head of one word, a head of three; a repeated key replaces
    // the value of the first.
    ASSERT_EQ(rec.foreignSections.size(), 3);
    EXPECT_EQ(rec.foreignSections[0].head, "xyz abc");
    ASSERT_EQ(rec.foreignSections[0].keys.size(), 1);
    EXPECT_EQ(rec.foreignSections[0].keys[0].value, "4");
    EXPECT_EQ(rec.foreignSections[1].head, "one");
    EXPECT_EQ(rec.foreignSections[2].head, "TRWK Too Many Words");
}

TEST_F(InfReader, SourceTagsAndVersion)
{
    struct Case
    {
        const char *source;
        const char *expectSource;
        uint32_t flags;
        int version;
    };
    // "contains" finds a tag with text before it, but the number is read at the tag's length
    // from the start of the field: "XTRWKINF_V3" gives "V3", read as 0.
    const Case cases[] = {{"abc", "abc", 0x1, 0},
                          {"abc, trwkinf_v2", "abc", 0x3, 2},
                          {"abc,KSGLINF_V7,serial", "abc", 0x3, 7},
                          {"abc, xTRWKINF_V3", "abc", 0x3, 0},
                          {"abc, other_v2", "abc, other_v2", 0x1, 0}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.source);
        CCmtd99File file;
        dir.write("s.inf", {"[Public Record_Information]", std::string("Source=") + c.source});
        EXPECT_EQ(file.LoadInf(dir.path("s.inf").c_str()), 3);
        EXPECT_EQ(file.recordInfo.source, c.expectSource);
        EXPECT_EQ(file.recordInfo.flags, c.flags);
        EXPECT_EQ(file.infVersion, c.version);
    }
    // The version probe reads numbers of two digits.
    CCmtd99File probe;
    dir.write("q.inf", {"[public record_information]", "Source=abc, ksglinf_v12"});
    EXPECT_EQ(probe.ReadInfVersion(dir.path("q.inf").c_str()), 12);
    EXPECT_EQ(probe.LoadInf(dir.path("missing.inf").c_str()), 3);
}

TEST_F(InfReader, VersionTwoStandsInForAMissingCfgAndOverlapsOtherwise)
{
    const Lines inf = {
        "[Public Record_Information]",
        "Source=Here,TRWKINF_V2",
        "[Public File_Description]",
        "Station_Name=From Inf",
        "Recording_Device_ID=Dev",
        "Revision_Year=1999",
        "Total_Channel_Count=2",
        "Analog_Channel_Count=1",
        "Status_Channel_Count=1",
        "Line_Frequency=60.000",
        "Sample_Rate_Count=2",
        "End_Sample_Rate_#2=300", // before its rate and before segment 1
        "Sample_Rate_#1=1000.000",
        "End_Sample_Rate_#1=200",
        "Sample_Rate_#2=2000.000",
        "File_Start_Time=15/03/2021,10:20:30.000000",
        "Trigger_Time=99/99/2021,xx",
        "File_Type=ASCII",
        "Time_Multiplier=1.000000",
        "[Public Analog_Channel_#1]",
        "Channel_ID=VA",
        "Channel_Units=kV",
        "Channel_Multiplier=0.5",
        "Data_Primary_Secondary=x",
        "[Public Status_Channel_#1]",
        "Channel_ID=Trip",
        "Normal_State=1",
    };
    ASSERT_TRUE(Load(inf, {}));
    EXPECT_EQ(rec.fileDesc.stationName, "From Inf");
    EXPECT_EQ(rec.fileDesc.lineFreq, 60.0f);
    ASSERT_EQ(rec.fileDesc.rawSegments.size(), 2u);
    EXPECT_EQ(rec.fileDesc.rawSegments[0].index, 2);
    EXPECT_EQ(rec.fileDesc.rawSegments[0].rate, 2000.0f);
    EXPECT_EQ(rec.fileDesc.rawSegments[0].end, 300);
    EXPECT_EQ(rec.fileDesc.rawSegments[1].index, 1);
    EXPECT_EQ(rec.pointCount, 300);
    ASSERT_EQ(rec.analogChannels.size(), 1u);
    EXPECT_EQ(rec.analogChannels[0]->index, 1);
    EXPECT_EQ(rec.analogChannels[0]->uu, "kV");
    EXPECT_EQ(rec.analogChannels[0]->ps, 'x'); // first character, unchecked
    EXPECT_EQ(rec.firstFreeChannelIndex, 2);
    ASSERT_EQ(rec.statusChannels.size(), 1u);
    EXPECT_EQ(rec.statusChannels[0]->normalState, 1);
    ASSERT_EQ(rec.infMessages.size(), 1);
    EXPECT_EQ(rec.infMessages[0].text, "Time format error [Trigger_Time=99/99/2021,xx]!");
    EXPECT_EQ(rec.infMessages[0].line, 17);

    // With the ".cfg" present, its channels are overlaps, each with its message.
    CCmtd99File both;
    dir.write("rec.cfg", kInfPairCfg, "\r\n");
    ASSERT_TRUE(both.LoadFile(dir.path("rec.cfg").c_str()));
    EXPECT_EQ(both.analogChannels[0]->ch_id, "IA");
    EXPECT_TRUE(HasMessage(both.infMessages, "The index [idx_cfg=1] of analog channel overlaped!"));
    EXPECT_TRUE(HasMessage(both.infMessages, "The index [idx_cfg=1] of status channel overlaped!"));
    EXPECT_EQ(both.fileDesc.stationName, "Substation A");
}

TEST_F(InfReader, ChannelParameters)
{
    ASSERT_TRUE(Load({
        "[TRWK Analog_Channels_Parameter]",
        "CHNL_INFO_#1=1, 4, Ia feeder, TA, 0, 1.2, kA, 5, A, 2, 0.5, A, 30.0\xc2\xb0, 0.00005\xc2\xb0, -120",
        "CHNL_INFO_#5=5, 5, x, TV, 50, 1, kV, 100",
        "INFO_#1=1, 4, x, TA, 50, 1, kA, 5, A, 1, 0, A",
        "CHNL_INFO_#9=9, 4, x, TA, 50, 1, kA, 5, A, 1, 0, A",
        "[TRWK Status_Channels_Parameter]",
        "CHNL_INFO_#1=1, -1, , BRK, Jump_A, F",
        "CHNL_INFO_#2=2, 1",
    }));
    const CmtdChn_Analog &ia = *rec.analogChannels[0];
    EXPECT_EQ(ia.deviceIndex, 4);
    EXPECT_EQ(ia.alias, "Ia feeder");
    EXPECT_FALSE(ia.flags & CmtdChn_Analog::RatedFreqGiven); // 0 is no frequency
    EXPECT_FLOAT_EQ(ia.primaryRating, 1.2f);
    EXPECT_EQ(ia.primaryUnit, "kA");
    EXPECT_FLOAT_EQ(ia.distanceB, 0.5f);
    // Three angles counted; the near-zero one leaves its slot as it was.
    EXPECT_EQ(ia.angleCount, 3);
    EXPECT_NEAR(ia.compAngle[0], 30.0 * M_PI / 180.0, 1e-6);
    EXPECT_EQ(ia.compAngle[1], 0.0f);
    EXPECT_NEAR(ia.compAngle[2], -120.0 * M_PI / 180.0, 1e-5);
    const CmtdChn_Status &trip = *rec.statusChannels[0];
    EXPECT_FALSE(trip.flags & CmtdChn_Status::DeviceIndexGiven);
    EXPECT_FALSE(trip.flags & CmtdChn_Status::AliasGiven);
    EXPECT_EQ(trip.signalClass, "BRK");
    EXPECT_EQ(trip.typeCode, "Jump_A");
    EXPECT_EQ(trip.channelFlag, "F");

    const std::vector<std::string> expected = {
        "3: Lossing Parameters (<12)! [CHNL_INFO_#5=5, 5, x, TV, 50, 1, kV, 100]",
        "4: Format error (INFO_#1)!",
        "5: No this analog channel in public segment(idx_cfg=9)!",
        "8: Lossing Parameters (<6)! [CHNL_INFO_#2=2, 1]",
    };
    EXPECT_EQ(MessageLines(rec.infMessages), expected);
}

TEST_F(InfReader, EventsCommentariesExpressionsAndSettings)
{
    ASSERT_TRUE(Load({
        "[TRWK STATUS_Event_#1]",
        "CHNL_ID=1, Trip",
        "STATUS=1",
        "Trip_Point=120",
        "Trip_Time=20.500ms",
        "[TRWK STATUS_Event_#2]", // line 6: same channel and point
        "CHNL_ID=1, Trip again",
        "Trip_Point=120",
        "[TRWK STATUS_Event_#3]",
        "CHNL_ID=1",
        "Trip_Point=7",
        "[TRWK Commentary_#1]",
        "CHN_ID=a,1,IA",
        "SMP_IDX=10",
        "DESCR=peak here",
        "Position=3,4",
        "[TRWK Commentary_#2]", // empty text: dropped
        "CHN_ID=A,1,IA",
        "SMP_IDX=10",
        "[TRWK Commentary_#3]", // sample 0 in the file is -1 in memory: dropped
        "CHN_ID=A,1,IA",
        "SMP_IDX=0",
        "DESCR=x",
        "[TRWK Commentary_#4]", // no analog channel 3: dropped
        "CHN_ID=A,3,IB",
        "SMP_IDX=3",
        "DESCR=x",
        "[TRWK Commentary_#5]",
        "CHN_ID=x,1,Trip",
        "SMP_IDX=1",
        "DESCR=status note",
        "Position=9",
        "[TRWK Expression]",
        "F1 = IA * 2",
        "   // only a comment",
        "F2=abs(IA)",
        "[TRWK Settings]",
        "CUSTOM_T0=42",
        "Zoom=3",
    }));
    ASSERT_EQ(rec.statusEvents.size(), 2u);
    const InfStatusEvent &e = rec.statusEvents[0];
    EXPECT_EQ(e.channelName, "Trip");
    EXPECT_EQ(e.tripTimeMs, 20);
    EXPECT_EQ(e.tripTimeFrac, 500);
    EXPECT_EQ(e.flags, 0x3Fu);
    EXPECT_EQ(rec.statusEvents[1].tripPoint, 7);
    EXPECT_EQ(rec.statusEvents[1].flags, 0x8u); // CHNL_ID with one field is refused
    const std::vector<std::string> expected = {
        "6: Status event overlaped [1-Trip again = 120]!",
        "10: Lossing Parameters (<2)! [CHNL_ID=1]",
    };
    EXPECT_EQ(MessageLines(rec.infMessages), expected);

    ASSERT_EQ(rec.commentaries.size(), 2u);
    EXPECT_EQ(rec.commentaries[0].channelType, 'A');
    EXPECT_EQ(rec.commentaries[0].sampleIndex, 9);
    EXPECT_EQ(rec.commentaries[0].posY, 4);
    EXPECT_EQ(rec.commentaries[1].channelType, 'D');
    EXPECT_EQ(rec.commentaries[1].sampleIndex, 0);
    EXPECT_FALSE(rec.commentaries[1].flags & 0x10u);

    EXPECT_EQ(rec.expressionLines, QList<QByteArray>({"F1 = IA * 2", "F2=abs(IA)"}));
    EXPECT_EQ(rec.customT0, 42);
    ASSERT_EQ(rec.settingsKeys.size(), 1);
    EXPECT_EQ(rec.settingsKeys[0].key, "Zoom");
    EXPECT_EQ(rec.infSectionsSeen, InfStatusEvents | InfCommentaries | InfExpression | InfSettings);
}

TEST_F(InfReader, ASecondReadFillsGapsOnly)
{
    ASSERT_TRUE(Load({
        "[Public Record_Information]",
        "Source=First,TRWKINF_V1",
        "[Public Record_Information]", // a second section of the kind fills gaps only
        "Source=Second,TRWKINF_V2",
        "Location=Here",
        "[TRWK Settings]",
        "CUSTOM_T0=5",
    }));
    EXPECT_EQ(rec.recordInfo.source, "First");
    EXPECT_EQ(rec.infVersion, 1);
    EXPECT_EQ(rec.recordInfo.location, "Here");

    // A settings import into the loaded recording.
    dir.write("import.tcfg", {
                                 "[TRWK Analog_Channels_Parameter]",
                                 "CHNL_INFO_#1=1, 4, alias, TA, 50, 1, kA, 5, A, 1, 0, A",
                                 "[TRWK Settings]",
                                 "CUSTOM_T0=9",
                                 "[TRWK Expression]",
                                 "F=IA",
                                 "[Public Record_Information]",
                                 "Location=There",
                                 "Record_Information=R",
                             });
    EXPECT_EQ(rec.LoadInf(dir.path("import.tcfg").c_str()), 3);
    EXPECT_EQ(rec.analogChannels[0]->alias, "alias");
    EXPECT_EQ(rec.customT0, 5);
    EXPECT_EQ(rec.recordInfo.location, "Here");
    EXPECT_EQ(rec.recordInfo.recordInfo, "R");
    EXPECT_EQ(rec.expressionLines, QList<QByteArray>({"F=IA"}));

    dir.write("again.tcfg",
              {"[TRWK Analog_Channels_Parameter]", "CHNL_INFO_#1=1, 7, other, TV, 60, 2, kV, 100, V, 1, 0, V",
               "[TRWK Expression]", "G=IA"});
    rec.LoadInf(dir.path("again.tcfg").c_str());
    EXPECT_EQ(rec.analogChannels[0]->alias, "alias");
    EXPECT_EQ(rec.analogChannels[0]->deviceIndex, 4);
    EXPECT_EQ(rec.analogChannels[0]->primaryUnit, "kA");
    EXPECT_EQ(rec.expressionLines, QList<QByteArray>({"F=IA"}));
}

TEST(InfFieldSamples, RecorderInfAndANonKeyFile)
{
    const QDir samples(QStringLiteral(VELDRIX_SAMPLES_DIR));
    const QString xiao = samples.filePath("comtrade-xiao/ZH5X_RCD_2517_20240427_054924_244_S.CFG");
    const QString moreto = samples.filePath("pycomtrade-moreto/test3.cfg");
    if (!QFileInfo::exists(xiao) || !QFileInfo::exists(moreto))
        GTEST_SKIP() << "field samples not present";

    CCmtd99File rec;
    ASSERT_TRUE(rec.LoadFile(xiao.toLocal8Bit().constData()));
    // Another maker's tag: neither dialect, so version 0 and the whole value as the source.
    EXPECT_EQ(rec.infVersion, 0);
    EXPECT_TRUE(rec.recordInfo.flags & InfRecordInfo::SourceGiven);
    EXPECT_TRUE(rec.recordInfo.recordInfo.startsWith("V2.20,192.168.0.206"));
    EXPECT_EQ(rec.analogChannels.size(), 65u);
    EXPECT_TRUE(rec.infSectionsSeen & InfAnalogChannel);
    EXPECT_TRUE(rec.infSectionsSeen & InfStatusChannel);
    EXPECT_GE(rec.foreignSections.size(), 10);
    EXPECT_EQ(rec.foreignSections[0].head.left(5), "ZYHD ");

    CCmtd99File other;
    other.LoadFile(moreto.toLocal8Bit().constData());
    EXPECT_EQ(other.infSectionsSeen, 0u);
    EXPECT_TRUE(other.foreignSections.isEmpty());
}

} // namespace

TEST_F(InfReader, AFileWithoutSectionsIsNamedNotRead)
{
    // A recorder's own channel list under the ".inf" name: no head, no key; said in a message.
    ASSERT_TRUE(Load({"6", "GER 1,3", "Digitais,1,2,3,4,5,6,7,8", "Tensoes,4,5,6,0"}));
    ASSERT_EQ(rec.infMessages.size(), 1);
    EXPECT_EQ(rec.infMessages[0].text.toStdString(),
              "No section in the extension file: its 4 lines are not read");
    EXPECT_EQ(rec.infSectionsSeen, 0u);
}
