// Primary device units: reading their sections key by key (first value wins, messages, the
// generator's branch compaction, names unique across kinds), writing them back, and which
// channels they use.

#include "cmtd99file.h"
#include "safewrite.h"
#include "units.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Key lines as a section walk hands them over, numbered from 2 (the head is line 1).
InfKeyLines keys(const std::vector<std::string> &lines)
{
    InfKeyLines out;
    int number = 2;
    for (const std::string &line : lines) {
        const size_t eq = line.find('=');
        out.push_back(InfKeyLine{QByteArray::fromStdString(line.substr(0, eq)),
                                 QByteArray::fromStdString(line.substr(eq + 1)), number++});
    }
    return out;
}

// The sections a writer produced, read back through the same readers.
void readBack(const QByteArray &text, CCmtd99File &file)
{
    const QList<QByteArray> lines = text.split('\n');
    QByteArray head;
    std::vector<std::string> body;
    auto flush = [&] {
        if (head.isEmpty())
            return;
        const InfUnitSection kind = head.contains("Line")          ? InfUnitSection::Line
                                    : head.contains("Transformer") ? InfUnitSection::Transformer
                                    : head.contains("Power")       ? InfUnitSection::Power
                                    : head.contains("Excitation")  ? InfUnitSection::Excitation
                                                                   : InfUnitSection::ChannelsGroup;
        ReadInfUnitSection(file, kind, head, keys(body));
        body.clear();
    };
    for (const QByteArray &line : lines) {
        if (line.startsWith('[')) {
            flush();
            head = line.mid(1, line.indexOf(']') - 1);
        } else if (line.contains('=')) {
            body.push_back(line.toStdString());
        }
    }
    flush();
}

std::vector<std::string> messages(const CCmtd99File &file)
{
    std::vector<std::string> out;
    for (const LoadMessage &m : file.infMessages)
        out.push_back(std::to_string(m.line) + ": " + m.text.toStdString());
    return out;
}

} // namespace

TEST(Units, LineKeysFirstValueWinsAndNamesStayUnique)
{
    CCmtd99File file;
    ReadInfUnitSection(file, InfUnitSection::Line, "trwk line_#1",
                       keys({"DEV_ID=7,Line A", "LENGTH=12.5(km)", "LENGTH=99", "RX=0.1(Ω/km), 0.4, 0, 1.2",
                             "REACTOR=12.5(Ω)", "TA_CHNS=4,5,6,7,0", "TV_CHNS=1,2,3,0", "TV_CHNS=9,10,11,12",
                             "OTH_ACHNS=20, 0, 21", "STATUS_CHNS=3", "VENDOR_KEY=x"}));
    ASSERT_EQ(file.lineUnits.size(), 1u);
    const CmtdInfTrwk_UnitLine &line = *file.lineUnits[0];
    EXPECT_EQ(line.devId, 7);
    EXPECT_EQ(line.name, QByteArray("Line A"));
    EXPECT_EQ(line.length, 12.5f); // the second LENGTH is left alone
    EXPECT_EQ(line.r1, 0.1f);
    EXPECT_EQ(line.x0, 1.2f);
    EXPECT_FALSE(line.flags & CmtdInfTrwk_UnitLine::HasR0); // 0 is no value
    EXPECT_EQ(line.reactor, 12.5f);
    EXPECT_EQ(line.taPolarity, -1); // a fifth field below 1
    EXPECT_EQ(line.tvCount, 2);
    EXPECT_EQ(line.otherAnalog, (std::vector<uint16_t>{20, 21}));
    EXPECT_EQ(line.otherKeys.size(), 1);
    EXPECT_EQ(file.maxDeviceId, 7);
    EXPECT_EQ(file.infSectionsSeen, uint32_t(InfLine));
    // Every member of a line's sets counts as used, the neutral too.
    EXPECT_TRUE(line.UsesAnalogChannel(7));
    EXPECT_TRUE(line.UsesAnalogChannel(12));
    EXPECT_TRUE(line.UsesAnalogChannel(21));
    EXPECT_FALSE(line.UsesAnalogChannel(8));
    EXPECT_TRUE(line.UsesStatusChannel(3));

    // A second line and then a transformer of the same name are dropped without a word; nine
    // TV sets keep eight; a DEV_ID without a name is a message.
    ReadInfUnitSection(file, InfUnitSection::Line, "trwk line_#2", keys({"DEV_ID=8,line a"}));
    ReadInfUnitSection(file, InfUnitSection::Transformer, "trwk transformer_#1", keys({"DEV_ID=9,LINE A"}));
    EXPECT_EQ(file.lineUnits.size(), 1u);
    EXPECT_TRUE(file.transformerUnits.empty());
    std::vector<std::string> nine;
    for (int i = 0; i < 9; ++i)
        nine.push_back("TV_CHNS=" + std::to_string(i + 1) + ",0,0,0");
    nine.insert(nine.begin(), "DEV_ID=10,Line B");
    ReadInfUnitSection(file, InfUnitSection::Line, "trwk line_#3", keys(nine));
    ASSERT_EQ(file.lineUnits.size(), 2u);
    EXPECT_EQ(file.lineUnits[1]->tvCount, 8);
    EXPECT_EQ(file.lineUnits[1]->tvChns[7][0], 8);
    ReadInfUnitSection(file, InfUnitSection::ChannelsGroup, "trwk channels_group_#1", keys({"DEV_ID=11"}));
    EXPECT_EQ(messages(file), (std::vector<std::string>{"2: Lossing Parameters (<2)! [DEV_ID=11]"}));
    // Look-ups by id and name, removal.
    EXPECT_EQ(file.FindUnitById(10), file.lineUnits[1].get());
    EXPECT_EQ(file.FindUnitByName("line b"), file.lineUnits[1].get());
    EXPECT_EQ(file.FindUnitById(0), nullptr);
    EXPECT_EQ(file.FindUnitByName(""), nullptr);
    CmtdInfTrwk_Unit *b = file.lineUnits[1].get();
    EXPECT_TRUE(file.HasUnit(b));
    EXPECT_TRUE(file.RemoveUnit(b));
    EXPECT_FALSE(file.RemoveUnit(b));
    EXPECT_EQ(file.lineUnits.size(), 1u);
}

TEST(Units, TransformerSidesWindingsAndTheirMessages)
{
    CCmtd99File file;
    ReadInfUnitSection(file, InfUnitSection::Transformer, "trwk transformer_#1",
                       keys({"DEV_ID=3,T1", "WINDING_NUM=4", "H_PARAM=Yn11, 220, 3", "H_PARAM=D1, 110, 1",
                             "L_PARAM=D11, 0, 1", "M_PARAM=Yn12", "TA_Id_#2=0,0,0,14", "TA_Id_#8=1,2,3",
                             "H_TV_CHNS=1,2,3,4", "H_STATUS_CHNS=5,6"}));
    ASSERT_EQ(file.transformerUnits.size(), 1u);
    const CmtdInfTrwk_UnitTrm &t = *file.transformerUnits[0];
    EXPECT_EQ(t.windingNum, 4);
    EXPECT_FALSE(t.flags & CmtdInfTrwk_UnitTrm::HasWindingNum);
    // The branch count fails alone; mode and voltage stay, and the later H_PARAM is skipped.
    EXPECT_EQ(t.sideH.windingMode, 133);
    EXPECT_EQ(t.sideH.ratedKv, 220.0f);
    EXPECT_EQ(t.sideH.flags & (TrmSide::HasMode | TrmSide::HasVoltage | TrmSide::HasBranch),
              TrmSide::HasMode | TrmSide::HasVoltage);
    EXPECT_EQ(
        messages(file),
        (std::vector<std::string>{
            "3: Invalid winding num. of the trans.(WindingNum=4)!",
            "4: Invalid [Branch nmu.] of the upper-side of the trans. [Branch=3]",
            "6: Invalid [primary rating vol.] of the lower-side of the trans! [v=0.000kV]",
            "7: Lossing Parameters (<3)! [M_PARAM=Yn12]", "9: Index error(<1 or >7)! [TA_Id_#8=1,2,3]"}));
    // A current set with only its neutral is no use of the channel, and is not written.
    EXPECT_FALSE(t.UsesAnalogChannel(14));
    EXPECT_TRUE(t.UsesAnalogChannel(4)); // a voltage set counts whole
    EXPECT_TRUE(t.UsesStatusChannel(6));
    CTextOutput out;
    WriteInfUnitSections(out, file, InfTransformer);
    EXPECT_EQ(out.bytes().indexOf("TA_Id_#2"), -1) << out.bytes().toStdString();
    EXPECT_NE(out.bytes().indexOf("H_PARAM=Yn11, 220.000(KV), 3\n"), -1) << out.bytes().toStdString();

    EXPECT_EQ(WindingModeCode("yg12"), 110);
    EXPECT_EQ(WindingModeCode("D0"), 134);
    EXPECT_EQ(WindingModeCode("Dn6"), 135);
    EXPECT_EQ(WindingModeCode("Z5"), 100);
}

TEST(Units, GeneratorBranchesAreCompactedAndReportsAreReadOnly)
{
    CCmtd99File file;
    ReadInfUnitSection(file, InfUnitSection::Power, "trwk power_#1",
                       keys({"DEV_ID=4,G1", "BRANCH_NUM=0, 2, 1", "TA_Z1_CHNS=1,2,3", "TA_Z2_CHNS=4,5,6",
                             "TA_Z3_CHNS=7,8,9", "EXCITATION_MODE=5", "CAPACITY=300(MVA)", "FREQ=50"}));
    ASSERT_EQ(file.powerUnits.size(), 1u);
    const CmtdInfTrwk_UnitPwr &g = *file.powerUnits[0];
    EXPECT_EQ(g.branchCount, 2);
    EXPECT_EQ(g.branchNum, (std::array<int16_t, 3>{2, 1, 0}));
    EXPECT_EQ(g.taZ[0], (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(g.taZ[1], (ChannelSet{7, 8, 9, 0}));
    EXPECT_EQ(g.excitationMode, 0);
    EXPECT_FALSE(g.flags & CmtdInfTrwk_UnitPwr::HasExcitationMode);
    EXPECT_EQ(g.capacity, 300.0f);
    EXPECT_EQ(g.freq, 50.0f);

    ReadInfUnitSection(file, InfUnitSection::Report, "trwk report_1",
                       keys({"FAULT_POS=12.5", "FAULT_POS=13", "FAULT_PHASE=AN, BC",
                             "FAULT_TIME=35.250,15/03/2025,10:21:33.500000", "RELAY_ACT0=3, Trip, 20.5, 1"}));
    ASSERT_EQ(file.reportRecords.size(), 1u);
    const CmtdReport &report = file.reportRecords[0];
    EXPECT_EQ(report.faultPos, 13.0f); // reports take the last value
    EXPECT_EQ(report.faultPhase2, QByteArray("BC"));
    EXPECT_EQ(report.faultMs, 35);
    EXPECT_EQ(report.faultFrac, 250);
    EXPECT_EQ(report.faultTime.hour, 10);
    EXPECT_EQ(report.relayAct0.text, QByteArray("Trip"));
    EXPECT_EQ(report.relayAct0.frac, 5);
    EXPECT_EQ(file.infSectionsSeen, uint32_t(InfPower | InfReport));
    CTextOutput out;
    WriteInfUnitSections(out, file, 0xFFFFFFFFu);
    EXPECT_EQ(out.bytes().indexOf("REPORT"), -1);
    EXPECT_NE(out.bytes().indexOf("BRANCH_NUM=2, 1, 0\n"), -1);
}

TEST(Units, WrittenSectionsReadBackTheSame)
{
    CCmtd99File file;
    ReadInfUnitSection(file, InfUnitSection::Line, "trwk line_#1",
                       keys({"DEV_ID=1,L1", "SYS_ID=220kV", "OBJECT_TYPE=LINE", "LENGTH=42.125",
                             "RX=0.031, 0.402, 0.25, 1.21", "CG=0.0091, 0.0001, 0.0062, 0.0002",
                             "MRX=0.15, 0.6", "REACTOR=NO", "TA_CHNS=4,5,6,7,1", "TA_CHNS_#2=0,0,0,0,1",
                             "TV_CHNS=1,2,3,0", "OTH_ACHNS=20", "STATUS_CHNS=3,4", "VENDOR=kept"}));
    ReadInfUnitSection(file, InfUnitSection::Transformer, "trwk transformer_#1",
                       keys({"DEV_ID=2,T1", "CAPACITY=180", "WINDING_NUM=3", "H_PARAM=Yn12, 220, 1",
                             "M_PARAM=Yn12, 110, 1", "L_PARAM=D11, 10.5, 2", "TA_Id_#1=11,12,13,0",
                             "H_TA_ZS=14", "H_TV_CHNS=1,2,3,0", "Z_STATUS_CHNS=7"}));
    ReadInfUnitSection(file, InfUnitSection::Excitation, "trwk excitation_#1",
                       keys({"DEV_ID=5,E1", "PWR_ID=4, G1", "FREQ=150", "V1=0.4", "TV_CHNS=30,31,32,0"}));
    ReadInfUnitSection(file, InfUnitSection::ChannelsGroup, "trwk channels_group_#1",
                       keys({"DEV_ID=6,Spare", "OTH_ACHNS=40,41", "STATUS_CHNS=9"}));
    CTextOutput first;
    WriteInfUnitSections(first, file, InfLine | InfTransformer | InfExcitation | InfChannelsGroup);
    EXPECT_NE(first.bytes().indexOf(
                  "[TRWK Line_#1]\nDEV_ID=1,L1\nSYS_ID=220kV\nOBJECT_TYPE=LINE\nLENGTH=42.125(km)\n"),
              -1)
        << first.bytes().toStdString();
    EXPECT_NE(first.bytes().indexOf("REACTOR=NO\n"), -1);
    CCmtd99File again;
    readBack(first.bytes(), again);
    CTextOutput second;
    WriteInfUnitSections(second, again, InfLine | InfTransformer | InfExcitation | InfChannelsGroup);
    EXPECT_EQ(second.bytes().toStdString(), first.bytes().toStdString());
    ASSERT_EQ(again.lineUnits.size(), 1u);
    EXPECT_EQ(again.lineUnits[0]->x0, 1.21f);
    EXPECT_EQ(again.exciterUnits[0]->pwrName, QByteArray("G1"));
}
