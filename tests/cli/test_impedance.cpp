// The impedance and zones verbs: phase loops of a small three-phase recording at a sample and
// over a range, and a boundary file with the zones that hold a point.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

namespace {

// 200 samples at 1 kHz: voltages of 60 V peak, currents of 5 A lagging by 60 degrees, and a
// seventh channel of no current.
QString writeThreePhase(const QString &folder)
{
    const QString base = folder + "/line";
    QByteArray cfg = "Station,Device,1999\n7,7A,0D\n";
    const char *names[] = {"UA", "UB", "UC", "IA", "IB", "IC", "IZ"};
    for (int c = 0; c < 7; ++c)
        cfg += QByteArray::number(c + 1) + ',' + names[c] + ",,," + (c < 3 ? "V" : "A") +
               ",0.01,0,0,-32767,32767,1,1,S\n";
    put(base + ".cfg",
        cfg + "50\n1\n1000,200\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < 200; ++n) {
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(n * 1000);
        for (int c = 0; c < 6; ++c) {
            const double phase = 2 * M_PI * (50.0 * n / 1000.0 - (c % 3) / 3.0) - (c < 3 ? 0.0 : M_PI / 3);
            dat += ',' + QByteArray::number(std::lround((c < 3 ? 6000 : 500) * std::sin(phase)));
        }
        dat += ",0\n";
    }
    put(base + ".dat", dat);
    return base + ".cfg";
}

} // namespace

TEST(CliImpedance, RowsAtASampleAndTraces)
{
    QTemporaryDir dir;
    const QString path = writeThreePhase(dir.path());
    const CliRun at = cli(
        {"impedance", "--json", path, "--kind", "1", "--u", "A1,A2,A3", "--i", "A4,A5,A6", "--at", "100"});
    ASSERT_EQ(at.code, 0) << at.err.constData();
    const QJsonArray rows = at.json()["rows"].toArray();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows[1].toObject()["name"].toString(), "Zb");
    for (const auto &row : rows) {
        EXPECT_NEAR(row.toObject()["z"].toDouble(), 12.0, 0.03); // currents of 500 steps
        EXPECT_NEAR(row.toObject()["angleDeg"].toDouble(), 60.0, 0.05);
        EXPECT_NEAR(row.toObject()["r"].toDouble(), 6.0, 0.03);
    }

    // No current in phase A: its loop has no finite impedance.
    const CliRun zero =
        cli({"impedance", "--json", path, "--kind", "1", "--u", "A1,,", "--i", "A7,A5,A6", "--at", "100"});
    ASSERT_EQ(zero.code, 0) << zero.err.constData();
    EXPECT_TRUE(zero.json()["rows"].toArray()[0].toObject()["x"].isNull());

    const CliRun range = cli({"impedance", "--json", path, "--kind", "2", "--u", "A1,A2,A3", "--i",
                              "A4,A5,A6", "--from", "50", "--to", "60"});
    ASSERT_EQ(range.code, 0) << range.err.constData();
    const QJsonArray loops = range.json()["rows"].toArray();
    ASSERT_EQ(loops.size(), 3);
    EXPECT_EQ(loops[2].toObject()["name"].toString(), "Zca");
    ASSERT_EQ(loops[2].toObject()["x"].toArray().size(), 10);
    EXPECT_NEAR(loops[2].toObject()["x"].toArray()[3].toDouble(), 12.0 * std::sin(M_PI / 3), 0.05);

    const CliRun refused = cli(
        {"impedance", "--json", path, "--kind", "0", "--u", "A1,A2,A3", "--i", "A4,A5,A6", "--at", "100"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(refused.err.contains("[R1] must great than 0!"));
}

TEST(CliZones, BoundsAndInside)
{
    QTemporaryDir dir;
    const QString path = dir.path() + "/zones.tzb";
    put(path, "[common]\nBounds=Poly,Circle,line\n[circle]\nAlfa=2\n");
    const CliRun run = cli({"zones", "--json", path, "--inside", "10,-2"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonObject json = run.json();
    EXPECT_EQ(json["bounds"].toArray(), QJsonArray({"Poly", "Circle"}));
    EXPECT_EQ(json["messages"].toArray(), QJsonArray({"[Alfa(-0.5~1.0)] Setting Error"}));
    // Alfa 2 puts the diameter from (20, 20) to (-40, -40): (10, -2) lies inside it and, below
    // the R axis by less than the lower side's 15 degrees, inside the polygon.
    EXPECT_EQ(json["inside"].toArray(), QJsonArray({"Poly", "Circle"}));
    EXPECT_EQ(json["poly"].toObject()["outline"].toArray().size(), 6);

    const CliRun outside = cli({"zones", "--json", path, "--inside", "30,30"});
    EXPECT_EQ(outside.json()["inside"].toArray(), QJsonArray());
    EXPECT_EQ(cli({"zones", "--json", dir.path() + "/none.tzb"}).code, 2);
}
