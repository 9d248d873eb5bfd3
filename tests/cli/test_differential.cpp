// The differential verb on a two-winding transformer recording: an internal fault fed from
// both sides at a sample, and the traces over a range.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

namespace {

// 200 samples at 1 kHz: both windings (star, clock 12) carry 5 A peak per phase into the
// transformer, in phase.
QString writeTransformer(const QString &folder)
{
    const QString base = folder + "/trm";
    QByteArray cfg = "Station,Device,1999\n6,6A,0D\n";
    const char *names[] = {"IHA", "IHB", "IHC", "ILA", "ILB", "ILC"};
    for (int c = 0; c < 6; ++c)
        cfg += QByteArray::number(c + 1) + ',' + names[c] + ",,,A,0.01,0,0,-32767,32767,1,1,S\n";
    put(base + ".cfg",
        cfg + "50\n1\n1000,200\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < 200; ++n) {
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(n * 1000);
        for (int c = 0; c < 6; ++c) {
            const double phase = 2 * M_PI * (50.0 * n / 1000.0 - (c % 3) / 3.0);
            dat += ',' + QByteArray::number(std::lround(500 * std::sin(phase)));
        }
        dat += '\n';
    }
    put(base + ".dat", dat);
    put(base + ".inf", "[TRWK Transformer_#1]\nDEV_ID=1,T1\nWINDING_NUM=2\nH_PARAM=Yn12, 110, 1\n"
                       "L_PARAM=Yn12, 110, 1\nTA_Id_#1=1,2,3,0\nTA_Id_#2=4,5,6,0\n");
    return base + ".cfg";
}

} // namespace

TEST(CliDifferential, InternalFaultAndTraces)
{
    QTemporaryDir dir;
    const QString path = writeTransformer(dir.path());
    const CliRun at = cli({"differential", "--json", path, "--unit", "t1", "--mode", "2", "--at", "100"});
    ASSERT_EQ(at.code, 0) << at.err.constData();
    EXPECT_EQ(at.json()["branches"].toInt(), 2);
    const QJsonArray phases = at.json()["phases"].toArray();
    ASSERT_EQ(phases.size(), 3);
    for (const auto &phase : phases) {
        const QJsonObject p = phase.toObject();
        EXPECT_NEAR(p["id"].toDouble(), 10.0, 0.02);
        EXPECT_NEAR(p["ir"].toDouble(), 5.0, 0.01);
        EXPECT_NEAR(p["harmByPhase"].toDouble(), 0.0, 0.1);
        EXPECT_TRUE(p["operate"].toBool());
        EXPECT_FALSE(p["blockedByDeadAngle"].toBool());
    }
    EXPECT_EQ(phases[1].toObject()["name"].toString(), "Ph. B");

    // A high-speed level and a trigger level above 10 A keep the point in the restraint area.
    put(dir.path() + "/high.tdb", "[common]\nfIcdsd=50\nfIocd=20\n");
    const CliRun held = cli({"differential", "--json", path, "--unit", "T1", "--bounds",
                             dir.path() + "/high.tdb", "--at", "100"});
    ASSERT_EQ(held.code, 0) << held.err.constData();
    EXPECT_FALSE(held.json()["phases"].toArray()[0].toObject()["operate"].toBool());

    const CliRun range = cli({"differential", "--json", path, "--unit", "T1", "--from", "50", "--to", "59"});
    ASSERT_EQ(range.code, 0) << range.err.constData();
    const QJsonArray traces = range.json()["phases"].toArray();
    ASSERT_EQ(traces.size(), 3);
    ASSERT_EQ(traces[0].toObject()["id"].toArray().size(), 10);
    EXPECT_NEAR(traces[0].toObject()["ir"].toArray()[4].toDouble(), 5.0, 0.01); // Mod-Sum

    EXPECT_EQ(cli({"differential", "--json", path, "--unit", "G9", "--at", "100"}).code, 2);
    EXPECT_EQ(cli({"differential", "--json", path, "--unit", "T1", "--mode", "5", "--at", "1"}).code, 2);
}
