// veldrix-cli derive: the curve of a virtual channel with its name, unit and rated frequency, and
// the refusals of bad arguments.

#include "clirun.h"

#include <QJsonArray>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Derives a curve of A1 (UA: a 50 Hz sine of 100 V peak at 1 kHz, 400 samples).
CliRun derive(const QString &path, const QStringList &job)
{
    return cli(QStringList{"derive", "--json", path, "--channel", "A1"} + job);
}

} // namespace

TEST(CliDerive, CurvesWithNameUnitAndRatedFrequency)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const CliRun delta = derive(path, {"--job", "delta", "--mode", "0"});
    ASSERT_EQ(delta.code, 0) << delta.err.constData();
    const QJsonObject d = delta.json();
    EXPECT_EQ(d.value("name").toString(), "UA Delta (MN)");
    EXPECT_EQ(d.value("unit").toString(), "V");
    EXPECT_EQ(d.value("ratedFreq").toDouble(), 50.0);
    const QJsonArray values = d.value("values").toArray();
    ASSERT_EQ(values.size(), 400);
    for (int i = 0; i < 400; ++i) // a periodic wave has no change from cycle to cycle
        ASSERT_EQ(values[i].toDouble(), 0.0) << i;

    const CliRun harm = derive(path, {"--job", "harm", "--order", "1", "--part", "0"});
    ASSERT_EQ(harm.code, 0) << harm.err.constData();
    EXPECT_EQ(harm.json().value("name").toString(), "UA Base-Part Eff-Value Curve");
    EXPECT_NEAR(harm.json().value("values").toArray()[200].toDouble(), 100.0 / std::sqrt(2.0), 0.01);
    const CliRun third = derive(path, {"--job", "harm", "--order", "3", "--part", "2"});
    EXPECT_EQ(third.json().value("ratedFreq").toDouble(), 150.0);
    const CliRun freq = derive(path, {"--job", "freq-x0"});
    EXPECT_EQ(freq.json().value("name").toString(), "UA Signal Freq.");
    EXPECT_NEAR(freq.json().value("values").toArray()[399].toDouble(), 50.0, 0.01);
}

TEST(CliDerive, BadArgumentsAreRefusedWithAReason)
{
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const struct
    {
        QStringList args;
        const char *reason;
    } cases[] = {
        {{"--job", "delta"}, "needs more options"},
        {{"--job", "delta", "--mode", "3"}, "--mode must lie between 0 and 2"},
        {{"--job", "avg", "--order", "2"}, "does not take"},
        {{"--job", "fft"}, "no such job"},
        {{"--job", "hamming", "--end-freq", "x", "--length", "8"}, "--end-freq expects"},
        {{"--job", "hamming", "--end-freq", "50", "--length", "0"}, "--length must lie between 1 and 1024"},
    };
    for (const auto &c : cases) {
        const CliRun run = derive(path, c.args);
        EXPECT_EQ(run.code, 2) << c.reason;
        EXPECT_TRUE(run.err.contains(c.reason)) << run.err.constData();
        EXPECT_TRUE(run.out.isEmpty());
    }
    const CliRun missing = cli({"derive", "--json", path, "--channel", "A7", "--job", "avg"});
    EXPECT_EQ(missing.code, 2);
    EXPECT_TRUE(missing.err.contains("no channel A7"));
}
