// The power verb: totals of a three-phase recording on both sides, no value where the rate is
// too low for a window, and its usage errors.

#include "clirun.h"
#include "tolerance.h"

#include <QJsonArray>
#include <QTemporaryDir>

namespace {

// 200 samples at 1 kHz, then 100 at 400 Hz: voltages of 60 V peak through 1000 V / 100 V and
// currents of 5 A peak lagging by 60 degrees through 100 A / 1 A.
QString writeFeeder(const QString &folder)
{
    const QString base = folder + "/feeder";
    QByteArray cfg = "Station,Device,1999\n6,6A,0D\n";
    const char *names[] = {"UA", "UB", "UC", "IA", "IB", "IC"};
    for (int c = 0; c < 6; ++c)
        cfg += QByteArray::number(c + 1) + ',' + names[c] + ",,," + (c < 3 ? "V,0.01" : "A,0.001") +
               ",0,0,-32767,32767," + (c < 3 ? "1000,100" : "100,1") + ",S\n";
    put(base + ".cfg", cfg + "50\n2\n1000,200\n400,300\n01/02/2024,10:00:00.000000\n"
                             "01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < 300; ++n) {
        const double t = n < 200 ? n / 1000.0 : 0.2 + (n - 200) / 400.0;
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(std::llround(t * 1.0e6));
        for (int c = 0; c < 6; ++c) {
            const double phase = 2 * M_PI * (50.0 * t - (c % 3) / 3.0) - (c < 3 ? 0.0 : M_PI / 3);
            dat += ',' + QByteArray::number(std::lround((c < 3 ? 6000 : 5000) * std::sin(phase)));
        }
        dat += '\n';
    }
    put(base + ".dat", dat);
    return base + ".cfg";
}

} // namespace

TEST(CliPower, TotalsBothSidesAndNoValue)
{
    QTemporaryDir dir;
    const QString path = writeFeeder(dir.path());
    // 3 · (60 / √2) · (5 / √2) = 450 VA at 60 degrees lagging.
    const CliRun run =
        cli({"power", "--json", path, "--u", "A1,A2,A3", "--i", "A4,A5,A6", "--from", "100", "--to", "249"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonObject json = run.json();
    const QJsonArray p = json["p"].toArray();
    ASSERT_EQ(p.size(), 150);
    EXPECT_EQ(json["from"].toInt(), 100);
    EXPECT_TRUE(NearRelative(p[0].toDouble(), 225.0, 1e-3));
    EXPECT_TRUE(NearRelative(json["q"].toArray()[50].toDouble(), 450.0 * std::sin(M_PI / 3), 1e-3));
    EXPECT_TRUE(NearRelative(json["s"].toArray()[99].toDouble(), 450.0, 1e-3));
    EXPECT_TRUE(p[110].isNull()); // sample 210, at 400 Hz

    const CliRun primary = cli({"power", "--json", path, "--u", "A1,A2,A3", "--i", "A4,A5,A6", "--primary",
                                "--from", "150", "--to", "150"});
    ASSERT_EQ(primary.code, 0) << primary.err.constData();
    EXPECT_TRUE(NearRelative(primary.json()["p"].toArray()[0].toDouble(), 225.0 * 10 * 100, 1e-3));

    EXPECT_EQ(cli({"power", "--json", path, "--u", "A1,A2", "--i", "A4,A5,A6"}).code, 2);
    EXPECT_EQ(cli({"power", "--json", path, "--u", "A1,A2,A3", "--i", "A4,A5,A9"}).code, 2);
    EXPECT_EQ(cli({"power", "--json", path, "--u", "A1,A2,A3", "--i", "A4,A5,A6", "--to", "300"}).code, 2);
}
