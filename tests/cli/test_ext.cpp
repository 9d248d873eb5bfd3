// The older ".ext" and the settings path map as `info` reports them.

#include "clirun.h"

#include <QDir>
#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(CliExt, ExtUnitsAndThePathMapEntryThatApplied)
{
    QTemporaryDir dir;
    const QString cfg = writeRecording(dir.path());
    // One line "Feeder" on the currents' channel 2 with its busbar on channel 1; a short busbar
    // record before it gives a message.
    put(dir.filePath("rec.ext"), "COMTRADE_EXT,x,R1\nNO\n0,0,0,0\n0,0,0,0\n2,1\n5,short\n"
                                 "1,Bus,1,0,0,0,110,kV,100,V\n"
                                 "7,Feeder,2,0,0,0,600,A,1,A,1,20,0.4,1.2,0.05,0.3,0,0,0,0,0,0,"
                                 "600,1,600,1,600,1,600,1,1,0\n1\n7,1:25\n[CHANNELS_INFO_BEGIN]\n1\n"
                                 "1,1,1000,V,100,V,1,0,V\n");
    const CliRun plain = cli({"info", "--json", cfg});
    ASSERT_EQ(plain.code, 0) << plain.err.constData();
    const QJsonObject json = plain.json();
    const QJsonArray messages = json.value("extMessages").toArray();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].toObject().value("line").toInt(), 6);
    EXPECT_EQ(messages[0].toObject().value("text").toString(), "Lossing parameter of basbar (<10)!");
    EXPECT_EQ(json.value("extUnits").toArray(), QJsonArray({"Feeder"}));
    EXPECT_FALSE(json.contains("pathMapEntry"));

    // A map whose root is the recording's folder in lower case, and one entry that matches not.
    put(dir.filePath("site.tcgp"), "[TRWK Channels_Group_#1]\nDEV_ID=1,Site group\nOTH_ACHNS=1,2\n");
    put(dir.filePath("map.ini"),
        "[TRWK_CFG_MAP]\nROOT_PATH=/nowhere/else\nTCFG_FILE=x.tcfg\n\n[TRWK_CFG_MAP]\nROOT_PATH=" +
            QDir(dir.path()).absolutePath().toLower().toLocal8Bit() +
            "\nTCGP_FILE=" + dir.filePath("site.tcgp").toLocal8Bit() + "\n");
    const CliRun mapped = cli({"info", "--json", "--settings-map", dir.filePath("map.ini"), cfg});
    ASSERT_EQ(mapped.code, 0) << mapped.err.constData();
    const QJsonObject entry = mapped.json().value("pathMapEntry").toObject();
    EXPECT_EQ(entry.value("rootPath").toString(), QDir(dir.path()).absolutePath().toUpper());
    EXPECT_EQ(entry.value("groupFile").toString(), dir.filePath("site.tcgp"));
    const QJsonObject group = mapped.json().value("units")["groups"][0].toObject();
    EXPECT_EQ(group.value("name").toString(), "Site group");

    put(dir.filePath("map.ini"), "[TRWK_CFG_MAP]\nROOT_PATH=/nowhere/else\nTCFG_FILE=x.tcfg\n");
    const CliRun unmatched = cli({"info", "--json", "--settings-map", dir.filePath("map.ini"), cfg});
    EXPECT_TRUE(unmatched.json().value("pathMapEntry").isNull());
}
