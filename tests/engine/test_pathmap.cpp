// The settings path map: which site folder a recording lies under, and what applying its
// settings and channel groups does to the recording.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "pathmap.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class PathMap : public RecordingTest
{
protected:
    CCmtd99File rec;
};

TEST_F(PathMap, ReadsCompleteEntriesLongestRootWinsAndSavesBack)
{
    // A section without a file is dropped, another section's keys are not read, and the third
    // root is as long as the first.
    const std::string ini = dir.write(
        "map.ini", {"[TRWK_CFG_MAP]", "ROOT_PATH=/data/site", "TCFG_FILE=site.tcfg", "[trwk_cfg_map]",
                    "root_path=/data/site/bay1", "TCGP_FILE=bay1.tcgp", "[TRWK_CFG_MAP]",
                    "ROOT_PATH=/only/root", "[Other]", "ROOT_PATH=/other", "TCFG_FILE=o.tcfg",
                    "[TRWK_CFG_MAP]", "ROOT_PATH=/DATA/SITE", "TCFG_FILE=second.tcfg", "VENDOR=skipped"});
    ASSERT_EQ(LoadPathMapFrom(QByteArray::fromStdString(ini)), 3);
    const std::vector<PathMapEntry> &map = PathMapEntries();
    EXPECT_EQ(map[0].rootPath, "/DATA/SITE");
    EXPECT_EQ(map[1].rootPath, "/DATA/SITE/BAY1");
    EXPECT_EQ(map[1].groupFile, "bay1.tcgp");

    EXPECT_EQ(findPathMapEntry("/data/site/bay1/2021/rec.cfg"), &map[1]);  // the longer root
    EXPECT_EQ(findPathMapEntry("/data/site/bay2/rec.cfg"), &map[0]);       // equal length: the first
    EXPECT_EQ(findPathMapEntry("/mnt/backup/Data/Site/rec.cfg"), &map[0]); // anywhere, any case
    EXPECT_EQ(findPathMapEntry("/data/sit/rec.cfg"), nullptr);
    EXPECT_EQ(findPathMapEntry("/other/rec.cfg"), nullptr);
    // Only the first 511 bytes of a path are looked at.
    EXPECT_EQ(findPathMapEntry((std::string(511, 'x') + "/data/site").c_str()), nullptr);
    EXPECT_EQ(findPathMapEntry((std::string(501, 'x') + "/data/site").c_str()), &map[0]);

    EXPECT_EQ(LoadPathMapFrom(QByteArray::fromStdString(dir.path("missing.ini"))), 0);
    EXPECT_TRUE(PathMapEntries().empty());

    // What is saved reads back as written.
    PathMapEntries() = {{"/A/B", "s.tcfg", ""}, {"/C", "", "g.tcgp"}};
    const QByteArray saved = QByteArray::fromStdString(dir.path("TRWKCFGMAP.INI"));
    ASSERT_EQ(SavePathMapTo(saved), 2);
    EXPECT_EQ(dir.read("TRWKCFGMAP.INI"), "[TRWK_CFG_MAP]\nROOT_PATH=/A/B\nTCFG_FILE=s.tcfg\nTCGP_FILE=\n\n"
                                          "[TRWK_CFG_MAP]\nROOT_PATH=/C\nTCFG_FILE=\nTCGP_FILE=g.tcgp\n\n");
    EXPECT_EQ(LoadPathMapFrom(saved), 2);
    EXPECT_EQ(SavePathMapTo(QByteArray::fromStdString(dir.path("no/such/folder/map.ini"))), 0);
}

TEST_F(PathMap, ApplyingAnEntryFillsOnlyWhatTheRecordingLacks)
{
    ASSERT_TRUE(rec.LoadFile(dir.write("r.cfg", kInfPairCfg).c_str()));
    const std::string groups =
        dir.write("site.tcgp", {"[TRWK Channels_Group_#1]", "DEV_ID=1,Currents", "OTH_ACHNS=1"});
    // The settings file is missing: nothing of it, and the groups still come.
    const PathMapEntry entry{"/X", QByteArray::fromStdString(dir.path("gone.tcfg")),
                             QByteArray::fromStdString(groups)};
    EXPECT_EQ(ApplyPathMapEntry(rec, entry), CCmtd99File::ReadDone);
    ASSERT_EQ(rec.groupUnits.size(), 1u);
    EXPECT_EQ(rec.groupUnits[0]->name, "Currents");

    const std::string settings =
        dir.write("site.tcfg",
                  {"[TRWK Analog_Channels_Parameter]", "CHNL_INFO_#1=1, 3, Ia, TA, 50, 600, A, 1, A, 1, 0, A",
                   "[TRWK Channels_Group_#1]", "DEV_ID=1,Currents"});
    EXPECT_EQ(ApplyPathMapEntry(rec, PathMapEntry{"/X", QByteArray::fromStdString(settings), ""}),
              CCmtd99File::ReadDone);
    EXPECT_EQ(rec.FindAnalogChannel(1)->typeCode, "TA");
    EXPECT_EQ(rec.groupUnits.size(), 1u); // a group of a known name is not taken twice
}

} // namespace
