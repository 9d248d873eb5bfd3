// Plant units made by hand: the same as units read from an extension file with the same keys,
// the channel pickers' filters, and the checks that keep a bad unit out of the recording.

#include "cfgfixture.h"
#include "chnmap.h"
#include "cmtd99file.h"
#include "safewrite.h"
#include "unitedit.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

class UnitEdit : public RecordingTest
{
protected:
    // Voltages of a bay (phase given, or only in the name), currents, a line-to-line voltage,
    // a zero-sequence current and a channel of no class; two status channels.
    std::string write(const std::vector<std::string> &inf = {})
    {
        dir.write("r.dat", {"1,0,1,2,3,4,5,6,7,8,9,0,1", "2,1000,1,2,3,4,5,6,7,8,9,1,0",
                            "3,2000,1,2,3,4,5,6,7,8,9,1,0", "4,3000,1,2,3,4,5,6,7,8,9,1,0",
                            "5,4000,1,2,3,4,5,6,7,8,9,1,0"});
        if (!inf.empty())
            dir.write("r.inf", inf);
        else
            std::remove(dir.path("r.inf").c_str());
        return dir.write("r.cfg", {"S,R,1999",
                                   "11,9A,2D",
                                   "1,Ua,A,L1,V,1,0,0,-32767,32767,1,1,S",
                                   "2,Ub,B,L1,V,1,0,0,-32767,32767,1,1,S",
                                   "3,UC,,L1,V,1,0,0,-32767,32767,1,1,S",
                                   "4,3U0,N,L1,V,1,0,0,-32767,32767,1,1,S",
                                   "5,Ia,A,L1,A,1,0,0,-32767,32767,1,1,S",
                                   "6,Ib,B,L1,A,1,0,0,-32767,32767,1,1,S",
                                   "7,Ic,C,L1,A,1,0,0,-32767,32767,1,1,S",
                                   "8,Uab,,L1,V,1,0,0,-32767,32767,1,1,S",
                                   "9,Temp,,,degC,1,0,0,-32767,32767,1,1,S",
                                   "1,Trip,,,0",
                                   "2,CB open,,,0",
                                   "50",
                                   "1",
                                   "1000,5",
                                   "01/01/2024,10:00:00.000000",
                                   "01/01/2024,10:00:00.000000",
                                   "ASCII",
                                   "1"});
    }
    bool load(CCmtd99File &file, const std::string &cfg)
    {
        const bool ok = file.LoadFile(cfg.c_str()) && file.LoadDat(cfg.c_str(), nullptr, nullptr);
        for (const std::string &m : MessageLines(file.cfgMessages))
            ADD_FAILURE() << m;
        return ok;
    }
    static QByteArray written(const CCmtd99File &file)
    {
        CTextOutput out;
        WriteInfUnitSections(out, file,
                             InfLine | InfTransformer | InfPower | InfExcitation | InfChannelsGroup);
        return out.bytes();
    }
};

} // namespace

TEST_F(UnitEdit, AUnitMadeByHandIsTheUnitReadWithTheSameKeys)
{
    const std::string cfg = write({"[Public Record_Information]",
                                   "Source=x,TRWKINF_V2.00",
                                   "[TRWK Line_#1]",
                                   "DEV_ID=7,Feeder 7",
                                   "LENGTH=42.5(km)",
                                   "RX=0.02, 0.31, 0.15, 0.95",
                                   "TA_CHNS=5,6,7,0,1",
                                   "TV_CHNS=1,2,3,4",
                                   "STATUS_CHNS=1",
                                   "[TRWK Transformer_#1]",
                                   "DEV_ID=8,T1",
                                   "CAPACITY=180",
                                   "WINDING_NUM=2",
                                   "H_PARAM=Yn, 220, 1",
                                   "L_PARAM=D11, 10.5, 2",
                                   "TA_Id_#1=5,6,7",
                                   "H_TV_CHNS=1,2,3",
                                   "[TRWK Power_#1]",
                                   "DEV_ID=9,G1",
                                   "CAPACITY=200",
                                   "FREQ=50",
                                   "V1=15.75",
                                   "BRANCH_NUM=0, 2, 1",
                                   "TA_Z2_CHNS=5,6,7"});
    CCmtd99File read;
    ASSERT_TRUE(load(read, cfg));
    ASSERT_EQ(read.lineUnits.size(), 1u);

    CCmtd99File made;
    ASSERT_TRUE(load(made, write()));
    ASSERT_TRUE(made.lineUnits.empty());
    auto line = MakeUnit(CmtdInfTrwk_Unit::KindLine);
    auto &l = static_cast<CmtdInfTrwk_UnitLine &>(*line);
    l.devId = 7;
    l.name = " Feeder 7 "; // the name is taken trimmed
    l.length = 42.5f;
    l.r1 = 0.02f, l.x1 = 0.31f, l.r0 = 0.15f, l.x0 = 0.95f;
    l.taChns = {5, 6, 7, 0};
    l.tvChns[0] = {1, 2, 3, 4};
    l.statusChannels = {1};
    auto trm = MakeUnit(CmtdInfTrwk_Unit::KindTransformer);
    auto &t = static_cast<CmtdInfTrwk_UnitTrm &>(*trm);
    t.devId = 8, t.name = "T1", t.capacity = 180.0f, t.windingNum = 2;
    t.sideH.windingText = "Yn", t.sideH.ratedKv = 220.0f, t.sideH.branchNum = 1;
    t.sideL.windingText = "D11", t.sideL.ratedKv = 10.5f, t.sideL.branchNum = 2;
    t.taId[0] = {5, 6, 7, 0};
    t.hTv = {1, 2, 3, 0};
    auto gen = MakeUnit(CmtdInfTrwk_Unit::KindPower);
    auto &g = static_cast<CmtdInfTrwk_UnitPwr &>(*gen);
    g.devId = 9, g.name = "G1", g.capacity = 200.0f, g.freq = 50.0f, g.v1 = 15.75f;
    g.branchNum = {0, 2, 1};
    g.taZ[1] = {5, 6, 7, 0};
    for (auto *unit : {line.get(), trm.get(), gen.get()})
        EXPECT_EQ(CheckUnit(made, *unit, nullptr), QStringList()) << unit->name.constData();
    InstallUnit(made, std::move(line), nullptr);
    InstallUnit(made, std::move(trm), nullptr);
    InstallUnit(made, std::move(gen), nullptr);

    EXPECT_EQ(written(made).toStdString(), written(read).toStdString());
    EXPECT_EQ(made.lineUnits[0]->flags, read.lineUnits[0]->flags);
    EXPECT_EQ(made.lineUnits[0]->tvCount, 1);
    EXPECT_EQ(made.transformerUnits[0]->flags, read.transformerUnits[0]->flags);
    EXPECT_EQ(made.transformerUnits[0]->sideL.windingMode, 115); // D11
    EXPECT_EQ(made.powerUnits[0]->branchCount, 2);               // packed: 2, 1
    EXPECT_EQ(made.powerUnits[0]->taZ[0], (ChannelSet{5, 6, 7, 0}));
    EXPECT_EQ(made.maxDeviceId, 9);

    // Edited in place, a unit keeps its place in its list; a copy gets a name of its own; a
    // snapshot gives the earlier state back.
    const UnitSnapshot before = TakeUnitSnapshot(made);
    auto changed = CloneUnit(*made.lineUnits[0]);
    static_cast<CmtdInfTrwk_UnitLine &>(*changed).length = 50.0f;
    const CmtdInfTrwk_Unit *old = made.lineUnits[0].get();
    EXPECT_EQ(CheckUnit(made, *changed, old), QStringList());
    InstallUnit(made, std::move(changed), old);
    ASSERT_EQ(made.lineUnits.size(), 1u);
    EXPECT_EQ(made.lineUnits[0]->length, 50.0f);
    EXPECT_EQ(UniqueUnitName(made, "Feeder 7"), QByteArray("Feeder 7 (2)"));
    RestoreUnitSnapshot(made, before);
    EXPECT_EQ(made.lineUnits[0]->length, 42.5f);
    EXPECT_EQ(written(made).toStdString(), written(read).toStdString());
}

TEST_F(UnitEdit, PickersOfferOnlyChannelsOfTheRolesClassAndPhase)
{
    CCmtd99File file;
    ASSERT_TRUE(load(file, write()));
    CmtdInfTrwk_UnitLine line;
    const std::vector<ChannelRole> roles = ChannelRolesOf(line);
    ASSERT_EQ(roles.size(), 10u); // TA, TA #2, TV #1 ... TV #8
    EXPECT_EQ(roles[0].places, line.taChns.data());
    EXPECT_EQ(roles[9].places, line.tvChns[7].data());
    auto offered = [&file](const ChannelRole &role, int place) {
        std::string names;
        for (const auto &map : file.analogMaps) {
            if (ChannelFitsRole(*map, role, place))
                names += std::string(names.empty() ? "" : " ") + map->Name();
        }
        return names;
    };
    const ChannelRole &ta = roles[0];
    const ChannelRole &tv = roles[2];
    EXPECT_EQ(offered(ta, 0), "Ia");
    EXPECT_EQ(offered(ta, 2), "Ic");
    EXPECT_EQ(offered(tv, 0), "Ua");
    EXPECT_EQ(offered(tv, 2), "UC"); // phase read from the name
    EXPECT_EQ(offered(tv, 3), "3U0");
    // Exciter voltage and rotor current of a generator take any analog channel.
    CmtdInfTrwk_UnitPwr gen;
    const std::vector<ChannelRole> genRoles = ChannelRolesOf(gen);
    const auto ufe = std::find_if(genRoles.begin(), genRoles.end(),
                                  [](const ChannelRole &r) { return std::string(r.label) == "Ufe"; });
    ASSERT_NE(ufe, genRoles.end());
    EXPECT_EQ(offered(*ufe, 0), "Ua Ub UC 3U0 Ia Ib Ic Uab Temp");
    CmtdInfTrwk_Unit group;
    EXPECT_TRUE(ChannelRolesOf(group).empty());
}

TEST_F(UnitEdit, ChecksKeepABadUnitOut)
{
    CCmtd99File file;
    ASSERT_TRUE(load(file, write({"[Public Record_Information]", "Source=x,TRWKINF_V2.00", "[TRWK Line_#1]",
                                  "DEV_ID=3,L1", "LENGTH=10"})));
    CmtdInfTrwk_UnitLine line;
    line.name = "l1"; // names are compared without regard to case
    line.devId = 3;
    line.taChns = {5, 6, 12, 0};
    line.r1 = -0.1f;
    line.length = -1.0f;
    EXPECT_EQ(CheckUnit(file, line, nullptr),
              QStringList({"Another unit is named l1", "Device number 3 belongs to L1",
                           "TA: there is no analog channel 12", "Length must be a number of 0 or more",
                           "R1 must be a number of 0 or more"}));
    // The unit it replaces may keep its name and number.
    line.name = "L1", line.length = 10.0f, line.r1 = 0.1f, line.taChns = {5, 6, 7, 0};
    EXPECT_EQ(CheckUnit(file, line, file.lineUnits[0].get()), QStringList());

    CmtdInfTrwk_UnitTrm trm;
    trm.name = "T,1";
    trm.windingNum = 3;
    trm.sideH = {0, "Yn", 110, 220.0f, 3};
    trm.sideL = {0, "D11", 115, 0.0f, 0};
    EXPECT_EQ(CheckUnit(file, trm, nullptr),
              QStringList({"A unit name holds no comma", "The upper side has 0 to 2 branches",
                           "The winding of the middle side is missing (Y, Yn11, D11, ...)",
                           "The rated voltage of the middle side must be above 0 kV",
                           "The rated voltage of the lower side must be above 0 kV"}));
    trm.windingNum = 4;
    trm.name = "T1";
    EXPECT_EQ(CheckUnit(file, trm, nullptr), QStringList({"A transformer has 1 to 3 windings"}));

    CmtdInfTrwk_Unit group;
    group.name = "G";
    group.statusChannels = {3};
    EXPECT_EQ(CheckUnit(file, group, nullptr), QStringList({"There is no status channel 3"}));
    group.statusChannels.clear();
    EXPECT_EQ(CheckUnit(file, group, nullptr), QStringList({"A channel group needs at least one channel"}));
}
