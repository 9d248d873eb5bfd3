// The extension file through the command-line tool: what info --json shows of it, and save-inf.

#include <QJsonArray>
#include <QTemporaryDir>

#include "clirun.h"

#include <gtest/gtest.h>

TEST(CliSaveInf, InfoShowsTheExtensionFileAndSaveInfWritesItBack)
{
    QTemporaryDir dir;
    put(dir.filePath("rec.cfg"), "S,R,1999\r\n2,1A,1D\r\n1,IA,A,,A,1,0,0,-32767,32767,1,1,S\r\n1,Trip,,,0\r\n"
                                 "50\r\n1\r\n1000,10\r\n01/02/2024,10:00:00.000000\r\n"
                                 "01/02/2024,10:00:00.005000\r\nASCII\r\n1\r\n");
    QByteArray dat;
    for (int n = 0; n < 10; ++n)
        dat += QByteArray::number(n + 1) + "," + QByteArray::number(n * 1000) + "," + QByteArray::number(n) +
               ",0\r\n";
    put(dir.filePath("rec.dat"), dat);
    put(dir.filePath("rec.inf"), "[Public Record_Information]\r\nSource=Lab,TRWKINF_V1\r\nLocation=Bay 4\r\n"
                                 "[Public Analog_Channel_#5]\r\nChannel_ID=ghost\r\n"
                                 "[TRWK STATUS_Event_#1]\r\nCHNL_ID=1, Trip\r\nTrip_Point=4\r\n"
                                 "[TRWK Expression]\r\nF=IA*2\r\n[TRWK Settings]\r\nCUSTOM_T0=3\r\n"
                                 "[xyz abc]\r\nk=v\r\n");
    const CliRun info = cli({"info", "--json", dir.filePath("rec.cfg")});
    ASSERT_EQ(info.code, 0) << info.err.constData();
    const QJsonObject json = info.json();
    EXPECT_EQ(json.value("infVersion").toInt(), 1);
    const QJsonObject record = json.value("recordInfo").toObject();
    EXPECT_EQ(record.value("source").toString(), "Lab");
    EXPECT_EQ(record.value("location").toString(), "Bay 4");
    EXPECT_EQ(json.value("statusEvents").toArray()[0].toObject().value("tripPoint").toInt(), 4);
    EXPECT_TRUE(json.value("commentaries").toArray().isEmpty());
    EXPECT_EQ(json.value("expressionLines").toArray()[0].toString(), "F=IA*2");
    EXPECT_EQ(json.value("customT0").toInt(), 3);
    EXPECT_EQ(json.value("rawSections").toArray(), QJsonArray({"xyz abc"}));
    const QJsonArray messages = json.value("messages").toObject().value("inf").toArray();
    ASSERT_EQ(messages.size(), 1);
    const QJsonObject message = messages[0].toObject();
    EXPECT_TRUE(message.value("file").toString().endsWith("rec.inf"));
    EXPECT_EQ(message.value("line").toInt(), 4);
    EXPECT_EQ(message.value("text").toString(), "No [idx_cfg=5] of the analog channel in [.cfg] file!");

    const QString out = dir.filePath("out.inf");
    const CliRun saved = cli({"save-inf", dir.filePath("rec.cfg"), out});
    ASSERT_EQ(saved.code, 0) << saved.err.constData();
    const QByteArray text = fileBytes(out);
    EXPECT_TRUE(text.startsWith("[Public Record_Information]\r\nSource=Lab,TRWKINF_V2\r\n"));
    EXPECT_TRUE(text.endsWith("[xyz abc]\r\nk=v\r\n\r\n"));
    // Only the file named is written: the recording's own extension file is as it was.
    EXPECT_FALSE(QFile::exists(dir.filePath("rec.inf.bak")));

    EXPECT_EQ(cli({"save-inf", dir.filePath("rec.cfg")}).code, 2);
    const CliRun failed = cli({"save-inf", dir.filePath("rec.cfg"), dir.filePath("no/such/out.inf")});
    EXPECT_EQ(failed.code, 1);
    EXPECT_TRUE(failed.err.contains("out.inf")) << failed.err.constData();
}
