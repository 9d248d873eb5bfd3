// The extension file writer: number formats, section order, the round trip of sections it does
// not know, the ".bak" of the first save, and a failed save that leaves the old file.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "safewrite.h"

#include "../tinyfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

const Lines kInf = {
    "[Public Record_Information]",
    "Source=Recorder X,KSGLINF_V1",
    "max_current=12.5",
    "Vendor_Key=v1",
    "[xyz abc]", // foreign, first in the file: written back behind all others
    "k2=b",
    "k1=a",
    "[Public Strange]",
    "p=1",
    "[ksgl Settings]",
    "CUSTOM_T0=42",
    "[TRWK REPORT_1]",
    "Fault=1",
    "[TRWK Unknown_Thing]",
    "u=1",
    "[TRWK Analog_Channels_Parameter]",
    "CHNL_INFO_#1=1, 4, Ia feeder, TA, 50, 1.2, kA, 5, A, 2, 0.5, A, 30, 0.00005, -120",
    "[TRWK STATUS_Event_#7]",
    "CHNL_ID=1, Trip",
    "STATUS=1",
    "Trip_Point=120",
    "Trip_Time=20.5ms",
    "[TRWK Commentary_#3]",
    "CHN_ID=A,1,IA",
    "SMP_IDX=10",
    "DESCR=peak here",
    "Position=3,4",
    "[TRWK Expression]",
    "F1 = IA * 2",
};

// The section heads of a written file, in order.
std::vector<std::string> Heads(const QByteArray &text)
{
    std::vector<std::string> heads;
    for (const QByteArray &line : text.split('\n')) {
        if (line.startsWith('['))
            heads.push_back(line.trimmed().toStdString());
    }
    return heads;
}

bool HasLine(const QByteArray &text, const char *line)
{
    return text.contains(QByteArray("\r\n") + line + "\r\n");
}

class InfWriter : public InfPairTest
{
protected:
    void SetUp() override
    {
        InfPairTest::SetUp();
        ASSERT_TRUE(Load(kInf));
    }
};

TEST_F(InfWriter, SectionOrderAndNumberFormats)
{
    CTextOutput out;
    rec.WriteInf(out);
    const QByteArray text = out.bytes();
    const std::vector<std::string> expected = {
        "[Public Record_Information]",
        "[Public File_Description]",
        "[Public Analog_Channel_#1]",
        "[Public Analog_Channel_#2]",
        "[Public Status_Channel_#1]",
        "[Public Strange]",
        "[TRWK Analog_Channels_Parameter]",
        "[TRWK Status_Channels_Parameter]",
        "[TRWK STATUS_Event_#1]",
        "[TRWK Commentary_#1]",
        "[TRWK Expression]",
        "[TRWK Settings]",
        "[TRWK Unknown_Thing]",
        "[xyz abc]",
    };
    EXPECT_EQ(Heads(text), expected);
    // Every line ends with CR LF.
    EXPECT_EQ(text.count('\n'), text.count("\r\n"));
    EXPECT_TRUE(text.startsWith("[Public Record_Information]\r\nSource=Recorder X,TRWKINF_V2\r\n"));
    for (const char *line : {"max_current=12.500000",
                             "EventNoteCount=0",
                             "Vendor_Key=v1",
                             "Revision_Year=1999",
                             "Line_Frequency=50.000",
                             "Sample_Rate_Count=1",
                             "Sample_Rate_#1=1000.000",
                             "End_Sample_Rate_#1=200",
                             "File_Start_Time=15/03/2021,10:20:30.000123",
                             "File_Type=ascii",
                             "Time_Multiplier=1.000000",
                             "Channel_Multiplier=0.2500000000",
                             "Channel_Offset=0.5000000000",
                             "Range_Minimum_Limit_Value=-32767",
                             "Channel_Ratio_Primary=1200.0000000000",
                             "Channel_Ratio_Secondary=5.0000000000",
                             "Data_Primary_Secondary=S",
                             "Normal_State=1",
                             "CHNL_INFO_#1=1, -1, , , , ",
                             "CHNL_ID=1, Trip",
                             "Trip_Point=120",
                             "Trip_Time=20.005ms",
                             "CHN_ID=A,1,IA",
                             "SMP_IDX=10",
                             "Position=3,4",
                             "F1 = IA * 2",
                             "CUSTOM_T0=42",
                             "k2=b"}) {
        EXPECT_TRUE(HasLine(text, line)) << line;
    }
    // A current channel with all four ratings is written with them, whatever its ".cfg" ratio.
    EXPECT_EQ(rec.analogChannels[0]->primary, 1200.0f);
    // The analog parameters, with the angles back in degrees; the near-zero one stays zero.
    EXPECT_TRUE(
        text.contains("\r\nCHNL_INFO_#1=1, 4, Ia feeder, TA, 50.000, 1.200, kA, 5.000, A, 2.00000000, "
                      "0.50000000, A, 30.00000000\xc2\xb0, 0.00000000\xc2\xb0, -120.00000000\xc2\xb0\r\n"))
        << text.constData();
    // A channel of another class without ratings: slope 1, offset 0, its own unit; an empty type
    // code gets its class's code.
    EXPECT_TRUE(
        text.contains("\r\nCHNL_INFO_#2=2, -1, , FQ, 50.000, 1.000, , 1.000, , 1.00000000, 0.00000000, "
                      "Hz\r\n"))
        << text.constData();
    // Numbered families end with one further empty line; raw sections with one.
    EXPECT_TRUE(text.contains("DESCR=peak here\r\nPosition=3,4\r\n\r\n\r\n[TRWK Expression]"));
    EXPECT_TRUE(text.endsWith("[xyz abc]\r\nk2=b\r\nk1=a\r\n\r\n"));

    // Only the private sections of the mask, as a settings export writes them.
    CTextOutput settings;
    EXPECT_TRUE(rec.WriteInfSections(settings, InfSettings | InfExpression));
    EXPECT_EQ(Heads(settings.bytes()), std::vector<std::string>({"[TRWK Expression]", "[TRWK Settings]"}));
}

TEST_F(InfWriter, ReadWriteReadKeepsEverySection)
{
    ASSERT_TRUE(rec.SaveInf(dir.path("copy.inf").c_str()));
    dir.write("copy.cfg", kInfPairCfg, "\r\n");
    CCmtd99File again;
    ASSERT_TRUE(again.LoadFile(dir.path("copy.cfg").c_str()));
    EXPECT_EQ(again.infVersion, 2);
    EXPECT_EQ(again.recordInfo.source, "Recorder X");
    ASSERT_EQ(again.foreignSections.size(), 1);
    ASSERT_EQ(again.foreignSections[0].keys.size(), 2);
    EXPECT_EQ(again.foreignSections[0].keys[0].key, "k2");
    EXPECT_EQ(again.foreignSections[0].keys[1].value, "a");
    EXPECT_EQ(again.publicExtraSections.size(), 1);
    EXPECT_EQ(again.privateExtraSections.size(), 1);
    // The report is read, never written.
    EXPECT_FALSE(again.infSectionsSeen & InfReport);
    EXPECT_EQ(again.customT0, 42);
    ASSERT_EQ(again.statusEvents.size(), 1u);
    EXPECT_EQ(again.statusEvents[0].tripTimeFrac, 5);
    ASSERT_EQ(again.commentaries.size(), 1u);
    EXPECT_EQ(again.commentaries[0].sampleIndex, 9);
    EXPECT_EQ(again.expressionLines, rec.expressionLines);
    const CmtdChn_Analog &ia = *again.analogChannels[0];
    EXPECT_EQ(ia.alias, "Ia feeder");
    EXPECT_NEAR(ia.compAngle[2], rec.analogChannels[0]->compAngle[2], 1e-6);
    // Version 2 now: each public channel of the ".cfg" is an overlap, with its message.
    EXPECT_EQ(again.infMessages.size(), 3);

    // The second save of what was read is the same text.
    ASSERT_TRUE(again.SaveInf(dir.path("copy2.inf").c_str()));
    EXPECT_EQ(dir.read("copy2.inf"), dir.read("copy.inf"));
}

TEST_F(InfWriter, FirstSaveOfAnOlderVersionKeepsABackupOnce)
{
    const std::string original = dir.read("rec.inf");
    ASSERT_EQ(rec.infVersion, 1);
    ASSERT_TRUE(rec.SaveInf(dir.path("rec.inf").c_str()));
    EXPECT_EQ(dir.read("rec.inf.bak"), original);
    const std::string first = dir.read("rec.inf");
    rec.recordInfo.location = "changed";
    ASSERT_TRUE(rec.SaveInf(dir.path("rec.inf").c_str()));
    EXPECT_EQ(dir.read("rec.inf.bak"), original);
    EXPECT_NE(dir.read("rec.inf"), first);

    // A file of this system's version gets no copy.
    CCmtd99File current;
    ASSERT_TRUE(current.LoadFile(dir.path("rec.cfg").c_str()));
    ASSERT_EQ(current.infVersion, 2);
    QFile::remove(QString::fromStdString(dir.path("rec.inf.bak")));
    ASSERT_TRUE(current.SaveInf(dir.path("rec.inf").c_str()));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.path("rec.inf.bak"))));
}

TEST_F(InfWriter, FailedSaveLeavesTheOldFileAndNoBackup)
{
    const std::string original = dir.read("rec.inf");
    {
        // The old file is small; the new one cannot be written whole.
        const FileSizeLimit limit(256);
        EXPECT_FALSE(rec.SaveInf(dir.path("rec.inf").c_str()));
    }
    EXPECT_FALSE(rec.saveError.isEmpty());
    EXPECT_TRUE(rec.saveError.contains(QStringLiteral("rec.inf"))) << rec.saveError.toStdString();
    EXPECT_EQ(dir.read("rec.inf"), original);
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.path("rec.inf.bak"))));
    const QStringList names = QDir(QString::fromStdString(dir.path("")))
                                  .entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    EXPECT_EQ(names, QStringList({"rec.cfg", "rec.inf"}));

    // A folder that is gone cannot take the file either.
    EXPECT_FALSE(rec.SaveInf(dir.path("no/such/folder/rec.inf").c_str()));
    EXPECT_FALSE(rec.saveError.isEmpty());
}

TEST(InfFieldSamples, SaveInfWritesEveryForeignSectionBack)
{
    const QString xiao = QDir(QStringLiteral(VELDRIX_SAMPLES_DIR))
                             .filePath("comtrade-xiao/ZH5X_RCD_2517_20240427_054924_244_S.CFG");
    if (!QFileInfo::exists(xiao))
        GTEST_SKIP() << "field samples not present";
    CCmtd99File rec;
    ASSERT_TRUE(rec.LoadFile(xiao.toLocal8Bit().constData()));
    TempRecording dir;
    ASSERT_TRUE(rec.SaveInf(dir.path("out.inf").c_str()));

    CCmtd99File back;
    ASSERT_EQ(back.LoadInf(dir.path("out.inf").c_str()), 3);
    ASSERT_EQ(back.foreignSections.size(), rec.foreignSections.size());
    for (qsizetype i = 0; i < rec.foreignSections.size(); ++i) {
        const InfRawSection &a = rec.foreignSections[i];
        const InfRawSection &b = back.foreignSections[i];
        EXPECT_EQ(a.head, b.head);
        ASSERT_EQ(a.keys.size(), b.keys.size()) << a.head.constData();
        for (qsizetype k = 0; k < a.keys.size(); ++k) {
            EXPECT_EQ(a.keys[k].key, b.keys[k].key);
            EXPECT_EQ(a.keys[k].value, b.keys[k].value);
        }
    }
}

} // namespace
