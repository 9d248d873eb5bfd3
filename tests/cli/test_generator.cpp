// The generator verb: the table rows of a steady generator in per unit and named values, the
// trajectory and slip counts over a range, a boundary file, and its usage errors.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

namespace {

// 400 samples at 1 kHz: 60 V peak phase voltages through 1000 V / 100 V, currents of 5 A peak
// lagging by 30 degrees through 100 A / 1 A, and a 100 MW, 10 kV generator at unity power
// factor (Zb = 1 ohm) on them. Zab = 12 ohm at 30 degrees secondary, 1.2 ohm primary.
QString writeGenerator(const QString &folder)
{
    const QString base = folder + "/gen";
    QByteArray cfg = "Station,Device,1999\n6,6A,0D\n";
    const char *names[] = {"UA", "UB", "UC", "IA", "IB", "IC"};
    for (int c = 0; c < 6; ++c)
        cfg += QByteArray::number(c + 1) + ',' + names[c] + ",,," + (c < 3 ? "V,0.01" : "A,0.001") +
               ",0,0,-32767,32767," + (c < 3 ? "1000,100" : "100,1") + ",S\n";
    put(base + ".cfg", cfg + "50\n1\n1000,400\n01/02/2024,10:00:00.000000\n"
                             "01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < 400; ++n) {
        const double t = n / 1000.0;
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(std::llround(t * 1.0e6));
        for (int c = 0; c < 6; ++c) {
            const double phase = 2 * M_PI * (50.0 * t - (c % 3) / 3.0) - (c < 3 ? 0.0 : M_PI / 6);
            dat += ',' + QByteArray::number(std::lround((c < 3 ? 6000 : 5000) * std::sin(phase)));
        }
        dat += '\n';
    }
    put(base + ".dat", dat);
    put(base + ".inf", "[TRWK Power_#1]\nDEV_ID=1,G1\nOBJECT_TYPE=STEAM_TURBINE\nCAPACITY=100\nFACTOR=1.0\n"
                       "V1=10\nFREQ=50\nUfe=300,100\nX=1.8,1.7,0.25,0.1\nTA_CHNS=4,5,6,0\nTV_CHNS=1,2,3,0\n");
    return base + ".cfg";
}

QString rowText(const QJsonObject &json, const char *row, const char *mode)
{
    for (const QJsonValue &value : json["rows"].toArray()) {
        if (value.toObject()["row"].toString() == QLatin1String(row))
            return value.toObject()[mode].toString();
    }
    return "<none>";
}

} // namespace

TEST(CliGenerator, RowsTrajectoryAndErrors)
{
    QTemporaryDir dir;
    const QString path = writeGenerator(dir.path());
    const CliRun at = cli({"generator", "--json", path, "--unit", "G1", "--analysis", "exci", "--at", "200"});
    ASSERT_EQ(at.code, 0) << at.err.constData();
    const QJsonObject json = at.json();
    EXPECT_EQ(rowText(json, "Z(Rm+jXm)", "pu"), "1.04+j0.60");
    EXPECT_EQ(rowText(json, "Z(Rm+jXm)", "named"), "1.04+j0.60(omh)");
    EXPECT_EQ(rowText(json, "Z(|Zm|(Ang)Fai)", "pu"), "1.20(Ang)30.00(Deg)");
    EXPECT_EQ(json["bounds"].toObject()["fPs"].toDouble(), 100.0);

    const CliRun range = cli(
        {"generator", "--json", path, "--unit", "G1", "--analysis", "step", "--from", "50", "--to", "99"});
    ASSERT_EQ(range.code, 0) << range.err.constData();
    const QJsonArray trajectory = range.json()["trajectory"].toArray();
    ASSERT_EQ(trajectory.size(), 50);
    EXPECT_NEAR(trajectory[10].toArray()[0].toDouble(), 1.2 * std::cos(M_PI / 6), 1e-3);
    EXPECT_NEAR(trajectory[10].toArray()[1].toDouble(), 0.6, 1e-3);
    EXPECT_EQ(range.json()["Slipping Times Inner System"].toInt(), 0);

    // A lens file: an inner angle of 90 degrees makes the lens the circle over A-B.
    put(dir.path() + "/lens.tsb", "[common]\nfAlfa=90//\n");
    const CliRun lens = cli({"generator", "--json", path, "--unit", "G1", "--analysis", "step", "--bounds",
                             dir.path() + "/lens.tsb", "--at", "0"});
    ASSERT_EQ(lens.code, 0) << lens.err.constData();
    EXPECT_NEAR(lens.json()["bounds"].toObject()["fRadius"].toDouble(), (0.1 + 0.25) / 2, 1e-6);

    EXPECT_EQ(cli({"generator", "--json", path, "--unit", "G2", "--analysis", "pq", "--at", "0"}).code, 2);
    EXPECT_EQ(cli({"generator", "--json", path, "--unit", "G1", "--analysis", "dq", "--at", "0"}).code, 2);
    EXPECT_EQ(cli({"generator", "--json", path, "--unit", "G1", "--analysis", "pq", "--at", "400"}).code, 2);
    EXPECT_EQ(cli({"generator", "--json", path, "--unit", "G1", "--analysis", "pq", "--at", "1", "--from",
                   "0", "--to", "5"})
                  .code,
              2);
    EXPECT_EQ(cli({"generator", "--json", path, "--unit", "G1", "--analysis", "pq", "--bounds",
                   dir.path() + "/none.tgb", "--at", "0"})
                  .code,
              2);
}
