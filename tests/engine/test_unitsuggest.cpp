// Suggested plant units: which channel lands in which place of which proposed unit, for the
// ways recorders name their channels (English and Chinese), and what is left alone.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "unitsuggest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include <string>
#include <vector>

namespace {

class UnitSuggest : public RecordingTest
{
protected:
    // Writes a 1999 ".cfg" with these channels and reads it (no samples needed). An analog
    // channel is "name|unit|component|phase", the last two optional.
    void load(const std::vector<std::string> &analog, const std::vector<std::string> &status = {},
              const std::vector<std::string> &statusCcbm = {})
    {
        std::vector<std::string> lines = {"S,R,1999", std::to_string(analog.size() + status.size()) + "," +
                                                          std::to_string(analog.size()) + "A," +
                                                          std::to_string(status.size()) + "D"};
        for (size_t i = 0; i < analog.size(); ++i) {
            const QList<QByteArray> f = QByteArray::fromStdString(analog[i] + "|||").split('|');
            lines.push_back(std::to_string(i + 1) + "," +
                            (f[0] + "," + f[3] + "," + f[2] + "," + f[1]).toStdString() +
                            ",1,0,0,-32767,32767,1,1,S");
        }
        for (size_t i = 0; i < status.size(); ++i)
            lines.push_back(std::to_string(i + 1) + "," + status[i] + ",," +
                            (i < statusCcbm.size() ? statusCcbm[i] : std::string()) + ",0");
        for (const char *tail :
             {"50", "1", "1000,10", "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.005000", "ASCII", "1"})
            lines.push_back(tail);
        const std::string path = dir.write("rec.cfg", lines, "\r\n");
        file = std::make_unique<CCmtd99File>();
        ASSERT_EQ(file->LoadCfg(path.c_str()), CCmtd99File::ReadDone) << path;
    }

    std::unique_ptr<CCmtd99File> file;
};

const CmtdInfTrwk_UnitLine &line(const UnitSuggestion &s)
{
    EXPECT_EQ(s.kind, CmtdInfTrwk_Unit::KindLine);
    return static_cast<const CmtdInfTrwk_UnitLine &>(*s.unit);
}

std::vector<uint16_t> u16(std::initializer_list<int> values)
{
    std::vector<uint16_t> out;
    for (int v : values)
        out.push_back(uint16_t(v));
    return out;
}

} // namespace

TEST_F(UnitSuggest, ChineseBusVoltagesGoToEveryLineOfCurrents)
{
    load({"母线电压 Ua|V", "母线电压 Ub|V", "母线电压 Uc|V", "母线电压 3U0|V", "线路1 Ia|A", "线路1 Ib|A",
          "线路1 Ic|A", "线路1 3I0|A", "线路2 Ia|A", "线路2 Ib|A", "线路2 Ic|A", "线路2 零序电流|A",
          "频率|Hz"},
         {"线路2 跳闸", "线路1 A相跳闸", "录波启动"});
    const std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 2u);
    const CmtdInfTrwk_UnitLine &l1 = line(s[0]);
    EXPECT_EQ(QString::fromUtf8(l1.name), QStringLiteral("线路1"));
    EXPECT_EQ(l1.tvCount, 1);
    EXPECT_EQ(l1.tvChns[0], (ChannelSet{1, 2, 3, 4}));
    EXPECT_EQ(l1.taChns, (ChannelSet{5, 6, 7, 8}));
    EXPECT_EQ(l1.statusChannels, u16({2}));
    EXPECT_EQ(l1.objectType, QByteArray("LINE"));
    const uint32_t wanted = CmtdInfTrwk_Unit::HasName | CmtdInfTrwk_Unit::HasObjectType |
                            CmtdInfTrwk_UnitLine::HasTvChns | CmtdInfTrwk_UnitLine::HasTaChns |
                            CmtdInfTrwk_UnitLine::HasStatusChannels;
    EXPECT_EQ(l1.flags, wanted);
    const CmtdInfTrwk_UnitLine &l2 = line(s[1]);
    EXPECT_EQ(QString::fromUtf8(l2.name), QStringLiteral("线路2"));
    EXPECT_EQ(l2.tvChns[0], (ChannelSet{1, 2, 3, 4}));
    EXPECT_EQ(l2.taChns, (ChannelSet{9, 10, 11, 12}));
    EXPECT_EQ(l2.statusChannels, u16({1}));
    EXPECT_TRUE(s[1].reason.contains(QStringLiteral("母线")));
}

TEST_F(UnitSuggest, CompactAndNumberedEnglishNames)
{
    // "Uo" and "3I0" are the neutral places; "UA1"/"IA2" number the bay behind the phase.
    load({"Ua|kV", "Ub|kV", "Uc|kV", "Uo|kV", "Ia|A", "Ib|A", "Ic|A", "3I0|A"});
    std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(line(s[0]).name, QByteArray("Line"));
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{1, 2, 3, 4}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{5, 6, 7, 8}));

    load(
        {"UA1|V", "UB1|V", "UC1|V", "IA1|A", "IB1|A", "IC1|A", "IA2|A", "IB2|A", "IC2|A", "I02|A", "UAB1|V"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(line(s[0]).name, QByteArray("Line 1"));
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(line(s[1]).name, QByteArray("Line 2"));
    EXPECT_EQ(line(s[1]).tvCount, 0); // bay 1 has currents too, so it is no bus
    EXPECT_EQ(line(s[1]).taChns, (ChannelSet{7, 8, 9, 10}));
    EXPECT_FALSE(line(s[0]).UsesAnalogChannel(11)); // line to line has no place
}

TEST_F(UnitSuggest, WordsForPhasesAndQuantities)
{
    load({"275 StationA 1 Red Ph Volts|kV", "275 StationA 1 White Ph Volts|kV",
          "275 StationA 1 Blue Ph Volts|kV", "275 StationA 1 Red Ph Amps|A", "275 StationA 1 White Ph Amps|A",
          "275 StationA 1 Blue Ph Amps|A", "275 StationA 1 Neutral Amps|A"});
    std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(line(s[0]).name, QByteArray("275 StationA 1"));
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{4, 5, 6, 7}));

    // R/Y/B: "B" is the third phase; R/S/T likewise.
    load({"VR|V", "VY|V", "VB|V", "IR|A", "IY|A", "IB|A"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{4, 5, 6, 0}));
    load({"IT|A", "IS|A", "IR|A", "UR|V", "US|V", "UT|V"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{3, 2, 1, 0}));

    // "Line 1 IN": the neutral, although "LINE" holds "IN" too.
    load({"Line 1 VA|V", "Line 1 VB|V", "Line 1 VC|V", "Line 1 IA|A", "Line 1 IB|A", "Line 1 IC|A",
          "Line 1 IN|A", "Line 2 IA|A"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(line(s[0]).name, QByteArray("Line 1"));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{4, 5, 6, 7}));
    EXPECT_EQ(line(s[1]).name, QByteArray("Line 2"));
    EXPECT_EQ(line(s[1]).taChns, (ChannelSet{8, 0, 0, 0}));
}

TEST_F(UnitSuggest, MonitoredComponentAndPhaseFieldDecide)
{
    // Names that say nothing; the phase field and the component do. Two current sets of one
    // component fill the line's first and second current sets. Status by component.
    load({"Ch1|V|Feeder 7|A", "Ch2|V|Feeder 7|B", "Ch3|V|Feeder 7|C", "IA|A|Feeder 7", "IB|A|Feeder 7",
          "IC|A|Feeder 7", "IA|A|Feeder 7", "Ch8|A|Feeder 8|N", "Ch9|A||B"},
         {"Trip", "Trip"}, {"Feeder 8", "Feeder 7"});
    const std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 3u);
    const CmtdInfTrwk_UnitLine &f7 = line(s[0]);
    EXPECT_EQ(f7.name, QByteArray("Feeder 7"));
    EXPECT_EQ(f7.tvChns[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(f7.taChns, (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(f7.taChns2, (ChannelSet{7, 0, 0, 0}));
    EXPECT_TRUE(f7.flags & CmtdInfTrwk_UnitLine::HasTaChns2);
    EXPECT_EQ(f7.statusChannels, u16({2}));
    EXPECT_EQ(line(s[1]).name, QByteArray("Feeder 8"));
    EXPECT_EQ(line(s[1]).taChns, (ChannelSet{0, 0, 0, 8}));
    EXPECT_EQ(line(s[1]).statusChannels, u16({1}));
    EXPECT_EQ(line(s[2]).name, QByteArray("Ch9"));
    EXPECT_EQ(line(s[2]).taChns, (ChannelSet{0, 9, 0, 0}));
    EXPECT_TRUE(s[0].reason.contains(QStringLiteral("monitored component")));
}

TEST_F(UnitSuggest, TwoWindingSidesMakeATransformer)
{
    load({"主变高压侧 Ua|kV", "主变高压侧 Ub|kV", "主变高压侧 Uc|kV", "主变高压侧 Ia|A", "主变高压侧 Ib|A",
          "主变高压侧 Ic|A", "主变低压侧 Ua|kV", "主变低压侧 Ub|kV", "主变低压侧 Uc|kV", "主变低压侧 Ia|A",
          "主变低压侧 Ib|A", "主变低压侧 Ic|A", "T2 HV IA|A", "T2 HV IB|A", "T2 HV IC|A", "T2 LV IA|A",
          "T2 LV IB|A", "T2 LV IC|A", "Feeder HV IA|A"});
    const std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 3u);
    ASSERT_EQ(s[0].kind, CmtdInfTrwk_Unit::KindTransformer);
    const auto &t1 = static_cast<const CmtdInfTrwk_UnitTrm &>(*s[0].unit);
    EXPECT_EQ(QString::fromUtf8(t1.name), QStringLiteral("主变"));
    EXPECT_EQ(t1.windingNum, 2);
    EXPECT_EQ(t1.hTv, (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(t1.taId[0], (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(t1.lTv, (ChannelSet{7, 8, 9, 0}));
    EXPECT_EQ(t1.taId[2], (ChannelSet{10, 11, 12, 0}));
    EXPECT_EQ(t1.mTv, (ChannelSet{}));
    EXPECT_TRUE(t1.sideH.flags & TrmSide::HasTv);
    EXPECT_TRUE(t1.flags & (CmtdInfTrwk_UnitTrm::HasTaId1 << 2));
    ASSERT_EQ(s[1].kind, CmtdInfTrwk_Unit::KindTransformer);
    const auto &t2 = static_cast<const CmtdInfTrwk_UnitTrm &>(*s[1].unit);
    EXPECT_EQ(t2.name, QByteArray("T2"));
    EXPECT_EQ(t2.taId[0], (ChannelSet{13, 14, 15, 0}));
    EXPECT_EQ(t2.taId[2], (ChannelSet{16, 17, 18, 0}));
    // One side alone is a bay like any other.
    EXPECT_EQ(line(s[2]).name, QByteArray("Feeder HV"));
    EXPECT_EQ(line(s[2]).taChns, (ChannelSet{19, 0, 0, 0}));
}

TEST_F(UnitSuggest, OtherNamingHabits)
{
    // IEC phase names L1, L2, L3; line voltages without currents are the bus of the line.
    load({"LINE_UL1|V", "LINE_UL2|V", "LINE_UL3|V", "LINE_A_IL1|A", "LINE_A_IL2|A", "LINE_A_IL3|A",
          "LINE_A_IN|A"});
    std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(line(s[0]).name, QByteArray("LINE A"));
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{4, 5, 6, 7}));

    // The phase field names the phase; "IA" inside the name goes, the rest ("W", "Y") is the
    // bay, and "Y", the one bay of three phase voltages alone, is the bus of "W". A unit in
    // brackets is no bay; direct-current channels belong to no line.
    load({"IAW|A||A", "IBW|A||B", "ICW|A||C", "VAY|kV||A", "VBY|kV||B", "VCY|kV||C", "VA(kV)|kV",
          "直流1+|V||A"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(line(s[0]).name, QByteArray("W"));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{4, 5, 6, 0}));
    EXPECT_EQ(line(s[1]).name, QByteArray("Line"));
    EXPECT_EQ(line(s[1]).tvChns[0], (ChannelSet{7, 0, 0, 0}));
    EXPECT_FALSE(line(s[0]).UsesAnalogChannel(8) || line(s[1]).UsesAnalogChannel(8));

    // A lone "Ux" is no bus.
    load({"Ux|V||N", "Ia2|A", "Ib2|A"});
    s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(line(s[0]).tvChns[0], (ChannelSet{0, 0, 0, 1}));
    EXPECT_EQ(line(s[1]).name, QByteArray("Line 2"));
    EXPECT_EQ(line(s[1]).tvCount, 0);
}

TEST_F(UnitSuggest, WindingSidesInTheMonitoredComponent)
{
    load({"Ia|A|1号主变高压侧电流", "Ib|A|1号主变高压侧电流", "Ic|A|1号主变高压侧电流",
          "Ia|A|1号主变低压侧电流", "Ib|A|1号主变低压侧电流", "Ic|A|1号主变低压侧电流"});
    const std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    ASSERT_EQ(s[0].kind, CmtdInfTrwk_Unit::KindTransformer);
    const auto &t = static_cast<const CmtdInfTrwk_UnitTrm &>(*s[0].unit);
    EXPECT_EQ(QString::fromUtf8(t.name), QStringLiteral("1号主变"));
    EXPECT_EQ(t.taId[0], (ChannelSet{1, 2, 3, 0}));
    EXPECT_EQ(t.taId[1], (ChannelSet{}));
    EXPECT_EQ(t.taId[2], (ChannelSet{4, 5, 6, 0}));
}

TEST_F(UnitSuggest, ChannelsOfExistingUnitsAreNotProposedAgain)
{
    load({"UA1|V", "UB1|V", "UC1|V", "IA1|A", "IA2|A", "IB2|A"}, {"Line 2 trip"});
    auto existing = std::make_unique<CmtdInfTrwk_UnitLine>();
    existing->name = "Line 1";
    existing->tvChns[0] = ChannelSet{1, 2, 3, 0};
    existing->tvCount = 1;
    file->lineUnits.push_back(std::move(existing));
    auto group = std::make_unique<CmtdInfTrwk_Unit>();
    group->name = "Line 2";
    group->otherAnalog = {4};
    group->statusChannels = {1};
    file->groupUnits.push_back(std::move(group));
    const std::vector<UnitSuggestion> s = SuggestUnits(*file);
    ASSERT_EQ(s.size(), 1u);
    // Channel 4 (IA1) is the group's, so bay 1 has nothing left; bay 2's name is taken.
    EXPECT_EQ(line(s[0]).name, QByteArray("Line 2 (2)"));
    EXPECT_EQ(line(s[0]).taChns, (ChannelSet{5, 6, 0, 0}));
    EXPECT_EQ(line(s[0]).tvCount, 0);
    EXPECT_TRUE(line(s[0]).statusChannels.empty());
}

// Every field recording: no crash, every proposal within the recording's channels, and for
// three of them what is proposed, printed for the user guide.
TEST(FieldRecordings, SuggestUnitsOnEveryRecording)
{
    const QString root = QStringLiteral(VELDRIX_SAMPLES_DIR);
    if (!QFileInfo(root).isDir())
        GTEST_SKIP() << "no field recordings at " << VELDRIX_SAMPLES_DIR;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    QStringList paths;
    while (it.hasNext()) {
        const QString path = it.next();
        const QString suffix = QFileInfo(path).suffix().toLower();
        if (suffix == QLatin1String("cfg") || suffix == QLatin1String("cff"))
            paths.append(path);
    }
    paths.sort();
    for (const QString &path : paths) {
        SCOPED_TRACE(path.toStdString());
        CCmtd99File rec;
        rec.LoadFile(QFile::encodeName(path).constData());
        const std::vector<UnitSuggestion> s = SuggestUnits(rec);
        std::set<int> indexes;
        for (const auto &channel : rec.analogChannels)
            indexes.insert(channel->index);
        for (const UnitSuggestion &one : s) {
            ASSERT_TRUE(one.unit);
            EXPECT_FALSE(one.unit->name.isEmpty());
            EXPECT_FALSE(one.reason.isEmpty());
            for (int index = 1; index < 2000; ++index) {
                if (!indexes.count(index)) {
                    EXPECT_FALSE(one.unit->UsesAnalogChannel(uint16_t(index))) << index;
                }
            }
        }
        std::printf("%s: %zu proposal(s)\n", qPrintable(QDir(root).relativeFilePath(path)), s.size());
        for (const UnitSuggestion &one : s)
            std::printf("    %s\n", one.reason.toUtf8().constData());
    }
}
