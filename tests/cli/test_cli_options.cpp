// The options of the phasors verb as a script uses them: where the window stands for each
// --dft-win, and what --primary does to the text of a channel with a transformer ratio.

#include <QJsonArray>
#include <QTemporaryDir>

#include "clirun.h"
#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace {

// The phasor of UA (a 50 Hz sine of 100 V peak at 1 kHz through a ratio of 10) at `at`.
QJsonObject phasorOfUa(const QString &path, const char *at, const QStringList &options = {})
{
    const CliRun run = cli(QStringList{"phasors", "--json", path, "--at", at} + options);
    EXPECT_EQ(run.code, 0) << run.err.constData();
    return run.json().value("channels").toArray()[0].toObject();
}

} // namespace

TEST(CliOptions, DftWinPutsTheWindowBeforeAroundOrAfterTheSample)
{
    // 20 points per cycle at sample 300: "prev" starts at 280, "cent" at 290, "next" at 300.
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const QJsonObject prev = phasorOfUa(path, "300");
    const QJsonObject cent = phasorOfUa(path, "300", {"--dft-win", "cent"});
    const QJsonObject next = phasorOfUa(path, "300", {"--dft-win", "next"});
    EXPECT_EQ(prev.value("windowStart").toInt(), 280);
    EXPECT_EQ(cent.value("windowStart").toInt(), 290);
    EXPECT_EQ(next.value("windowStart").toInt(), 300);
    // Each window holds a whole cycle of the same sine: the same size, and the angle is turned
    // to the sample itself (300 ms of 50 Hz is 15 whole cycles: 0°).
    for (const QJsonObject &c : {prev, cent, next}) {
        EXPECT_TRUE(NearRelative(c.value("effective").toDouble(), 100.0 / std::sqrt(2.0), 7e-4));
        EXPECT_NEAR(c.value("angleDeg").toDouble(), 0.0, 0.1);
    }
    // Near the end "next" has no room and is pushed back so that it stays off the last sample.
    EXPECT_EQ(phasorOfUa(path, "395", {"--dft-win", "next"}).value("windowStart").toInt(), 379);
}

TEST(CliOptions, PrimaryTurnsTheTextThroughTheRatio)
{
    // Secondary 70.711 V through a ratio of 1000 / 100 reads 707.107 V primary.
    QTemporaryDir dir;
    const QString path = writeRecording(dir.path());
    const QJsonObject secondary = phasorOfUa(path, "300");
    const QJsonObject primary = phasorOfUa(path, "300", {"--primary"});
    const double effective = secondary.value("effective").toDouble();
    EXPECT_TRUE(NearRelative(effective, 100.0 / std::sqrt(2.0), 7e-4));
    char text[64];
    std::snprintf(text, sizeof text, "%.3fV", effective);
    EXPECT_EQ(secondary.value("text").toString(), QString::fromLatin1(text));
    std::snprintf(text, sizeof text, "%.3fV", effective * 10.0);
    EXPECT_EQ(primary.value("text").toString(), QString::fromLatin1(text));
    // The numbers themselves stay secondary.
    EXPECT_EQ(primary.value("effective").toDouble(), effective);
}
