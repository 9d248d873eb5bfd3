// `veldrix-cli sequences`: the symmetrical parts of three phases, from the phasors that
// `phasors` prints for the same sample.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <complex>
#include <numbers>

namespace {

// Ua, Ub, Uc at 1 kHz: 50 Hz sines of the given peaks and angles, in steps of 0.01 V.
QString writeThreePhases(const QString &folder, const double peak[3], const double degrees[3])
{
    const QString base = folder + QStringLiteral("/three");
    QByteArray cfg = "Station,Device,1999\n3,3A,0D\n";
    for (int c = 0; c < 3; ++c)
        cfg += QByteArray::number(c + 1) + ",U" + char('a' + c) + ',' + char('A' + c) +
               ",,V,0.01,0,0,-99999,99999,1,1,S\n";
    put(base + ".cfg",
        cfg + "50\n1\n1000,400\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < 400; ++n) {
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(n * 1000);
        for (int c = 0; c < 3; ++c) {
            const double x = peak[c] * std::sin(2 * std::numbers::pi * 50.0 * n / 1000.0 +
                                                degrees[c] * std::numbers::pi / 180);
            dat += ',' + QByteArray::number(qlonglong(std::lround(x / 0.01)));
        }
        dat += '\n';
    }
    put(base + ".dat", dat);
    return base + ".cfg";
}

std::complex<double> partOf(const QJsonObject &json, const char *key)
{
    const QJsonObject part = json.value(QLatin1String(key)).toObject();
    return {part.value("re").toDouble(), part.value("im").toDouble()};
}

} // namespace

TEST(CliSequences, PartsOfAnUnbalancedSetFromTheShownPhasors)
{
    QTemporaryDir dir;
    const double peak[3] = {100.0, 80.0, 120.0};
    const double degrees[3] = {30.0, -100.0, 140.0};
    const QString path = writeThreePhases(dir.path(), peak, degrees);
    const CliRun run = cli({"sequences", "--json", path, "--channels", "A1,A2,A3", "--at", "200"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonObject json = run.json();

    const QJsonArray channels =
        cli({"phasors", "--json", path, "--at", "200"}).json().value("channels").toArray();
    ASSERT_EQ(channels.size(), 3);
    std::complex<double> phase[3];
    for (int c = 0; c < 3; ++c)
        phase[c] = {channels[c].toObject().value("re").toDouble(),
                    channels[c].toObject().value("im").toDouble()};
    const std::complex<double> a = std::polar(1.0, 2 * std::numbers::pi / 3);
    const std::complex<double> expected[3] = {(phase[0] + a * phase[1] + a * a * phase[2]) / 3.0,
                                              (phase[0] + a * a * phase[1] + a * phase[2]) / 3.0,
                                              (phase[0] + phase[1] + phase[2]) / 3.0};
    const char *keys[3] = {"positive", "negative", "zero"};
    for (int i = 0; i < 3; ++i) {
        const std::complex<double> part = partOf(json, keys[i]);
        EXPECT_NEAR(std::abs(part), std::abs(expected[i]), 1e-6 * std::abs(expected[i])) << keys[i];
        EXPECT_NEAR(std::arg(part), std::arg(expected[i]), 1e-6) << keys[i];
        const QJsonObject shown = json.value(QLatin1String(keys[i])).toObject();
        EXPECT_NEAR(shown.value("effective").toDouble(), std::abs(expected[i]) / std::sqrt(2.0), 1e-6)
            << keys[i];
        EXPECT_NEAR(shown.value("angleDeg").toDouble(), std::arg(expected[i]) * 180 / std::numbers::pi, 1e-4)
            << keys[i];
    }
    // And the set as designed, to the precision of the samples.
    std::complex<double> designed[3];
    for (int c = 0; c < 3; ++c)
        designed[c] = std::polar(peak[c], degrees[c] * std::numbers::pi / 180);
    EXPECT_LT(std::abs(partOf(json, "zero") - (designed[0] + designed[1] + designed[2]) / 3.0), 1e-2);

    // Two channels, a channel that is not there, a sample beyond the end: refused with a reason.
    for (const QStringList &bad : {QStringList{"--channels", "A1,A2", "--at", "200"},
                                   QStringList{"--channels", "A1,A2,A9", "--at", "200"},
                                   QStringList{"--channels", "A1,A2,A3", "--at", "400"}}) {
        const CliRun refused = cli(QStringList{"sequences", "--json", path} + bad);
        EXPECT_EQ(refused.code, 2) << bad.join(' ').toStdString();
        EXPECT_FALSE(refused.err.isEmpty());
    }
}

TEST(CliHarmonics, OrdersOfAChannelAndRefusals)
{
    QTemporaryDir dir;
    const double peak[3] = {100.0, 80.0, 120.0};
    const double degrees[3] = {0.0, -120.0, 120.0};
    const QString path = writeThreePhases(dir.path(), peak, degrees);
    const CliRun run =
        cli({"harmonics", "--json", path, "--channel", "A1", "--at", "200", "--max-order", "7"});
    ASSERT_EQ(run.code, 0) << run.err.constData();
    const QJsonObject json = run.json();
    const QJsonArray orders = json.value("orders").toArray();
    ASSERT_EQ(orders.size(), 8); // 0 to 7; 1 kHz would allow up to the 9th
    EXPECT_NEAR(orders[1].toObject().value("effective").toDouble(), 100.0 / std::sqrt(2.0), 1e-3);
    EXPECT_NEAR(orders[1].toObject().value("percent").toDouble(), 100.0, 1e-9);
    EXPECT_LT(json.value("thdPercent").toDouble(), 0.01);
    EXPECT_EQ(cli({"harmonics", "--json", path, "--channel", "B1", "--at", "200"}).code, 2);
    EXPECT_EQ(cli({"harmonics", "--json", path, "--channel", "A1", "--at", "200", "--max-order", "60"}).code,
              2);
}
