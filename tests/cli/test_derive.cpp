// veldrix-cli derive: the curve of a virtual channel with its name, unit and rated frequency, and
// the refusals of bad arguments.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// One analog channel at 1 kHz, a 50 Hz sine of 100 V peak, 400 samples.
QString writeSine(const QTemporaryDir &dir)
{
    const QString base = dir.filePath(QStringLiteral("sine"));
    QByteArray cfg = "Station,Device,1999\n1,1A,0D\n1,UA,A,Bay 1,V,0.1,0,0,-32767,32767,1,1,S\n"
                     "50\n1\n1000,400\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n";
    put(base + QStringLiteral(".cfg"), cfg);
    QByteArray dat;
    for (int n = 0; n < 400; ++n) {
        const int ua = int(std::lround(1000.0 * std::sin(2 * M_PI * n / 20.0)));
        dat += QByteArray::number(n + 1) + "," + QByteArray::number(n * 1000) + "," + QByteArray::number(ua) +
               "\n";
    }
    put(base + QStringLiteral(".dat"), dat);
    return base + QStringLiteral(".cfg");
}

QStringList derive(const QString &path, const QStringList &job)
{
    return QStringList{QStringLiteral("derive"), QStringLiteral("--json"), path, QStringLiteral("--channel"),
                       QStringLiteral("A1")} +
           job;
}

} // namespace

TEST(CliDerive, CurvesWithNameUnitAndRatedFrequency)
{
    QTemporaryDir dir;
    const QString path = writeSine(dir);
    const CliRun delta = cli(derive(path, {QStringLiteral("--job"), QStringLiteral("delta"),
                                           QStringLiteral("--mode"), QStringLiteral("0")}));
    ASSERT_EQ(delta.code, 0) << delta.err.constData();
    const QJsonObject d = delta.json();
    EXPECT_EQ(d.value(QStringLiteral("name")).toString(), QStringLiteral("UA Delta (MN)"));
    EXPECT_EQ(d.value(QStringLiteral("unit")).toString(), QStringLiteral("V"));
    EXPECT_EQ(d.value(QStringLiteral("ratedFreq")).toDouble(), 50.0);
    const QJsonArray values = d.value(QStringLiteral("values")).toArray();
    ASSERT_EQ(values.size(), 400);
    for (int i = 0; i < 400; ++i) // a periodic wave has no change from cycle to cycle
        ASSERT_EQ(values[i].toDouble(), 0.0) << i;

    const CliRun harm =
        cli(derive(path, {QStringLiteral("--job"), QStringLiteral("harm"), QStringLiteral("--order"),
                          QStringLiteral("1"), QStringLiteral("--part"), QStringLiteral("0")}));
    ASSERT_EQ(harm.code, 0) << harm.err.constData();
    EXPECT_EQ(harm.json().value(QStringLiteral("name")).toString(),
              QStringLiteral("UA Base-Part Eff-Value Curve"));
    EXPECT_NEAR(harm.json().value(QStringLiteral("values")).toArray()[200].toDouble(), 100.0 / std::sqrt(2.0),
                0.01);
    const CliRun third =
        cli(derive(path, {QStringLiteral("--job"), QStringLiteral("harm"), QStringLiteral("--order"),
                          QStringLiteral("3"), QStringLiteral("--part"), QStringLiteral("2")}));
    EXPECT_EQ(third.json().value(QStringLiteral("ratedFreq")).toDouble(), 150.0);
    const CliRun freq = cli(derive(path, {QStringLiteral("--job"), QStringLiteral("freq-x0")}));
    EXPECT_EQ(freq.json().value(QStringLiteral("name")).toString(), QStringLiteral("UA Signal Freq."));
    EXPECT_NEAR(freq.json().value(QStringLiteral("values")).toArray()[399].toDouble(), 50.0, 0.01);
}

TEST(CliDerive, BadArgumentsAreRefusedWithAReason)
{
    QTemporaryDir dir;
    const QString path = writeSine(dir);
    const struct
    {
        QStringList args;
        const char *reason;
    } cases[] = {
        {{QStringLiteral("--job"), QStringLiteral("delta")}, "needs more options"},
        {{QStringLiteral("--job"), QStringLiteral("delta"), QStringLiteral("--mode"), QStringLiteral("3")},
         "--mode must lie between 0 and 2"},
        {{QStringLiteral("--job"), QStringLiteral("avg"), QStringLiteral("--order"), QStringLiteral("2")},
         "does not take"},
        {{QStringLiteral("--job"), QStringLiteral("fft")}, "no such job"},
        {{QStringLiteral("--job"), QStringLiteral("hamming"), QStringLiteral("--end-freq"),
          QStringLiteral("x"), QStringLiteral("--length"), QStringLiteral("8")},
         "--end-freq expects"},
        {{QStringLiteral("--job"), QStringLiteral("hamming"), QStringLiteral("--end-freq"),
          QStringLiteral("50"), QStringLiteral("--length"), QStringLiteral("0")},
         "--length must lie between 1 and 1024"},
    };
    for (const auto &c : cases) {
        const CliRun run = cli(derive(path, c.args));
        EXPECT_EQ(run.code, 2) << c.reason;
        EXPECT_TRUE(run.err.contains(c.reason)) << run.err.constData();
        EXPECT_TRUE(run.out.isEmpty());
    }
    const CliRun missing =
        cli({QStringLiteral("derive"), QStringLiteral("--json"), path, QStringLiteral("--channel"),
             QStringLiteral("A7"), QStringLiteral("--job"), QStringLiteral("avg")});
    EXPECT_EQ(missing.code, 2);
    EXPECT_TRUE(missing.err.contains("no channel A7"));
}
