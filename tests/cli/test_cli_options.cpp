// The options of the phasors verb as a script uses them: where the window stands for each
// --dft-win, and what --primary does to the text of a channel with a transformer ratio.

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace {

QJsonObject runJson(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(VELDRIX_CLI), arguments);
    process.waitForFinished(60000);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

// One 50 Hz sine of 100 V peak at 1 kHz, secondary values through a 1000 V / 100 V transformer
// (a ratio of exactly 10), 400 samples.
QString writeRatioRecording(const QTemporaryDir &dir)
{
    const QString base = dir.filePath(QStringLiteral("ratio"));
    QFile cfg(base + QStringLiteral(".cfg"));
    cfg.open(QIODevice::WriteOnly);
    cfg.write("Station,Device,1999\n1,1A,0D\n"
              "1,UA,A,Bay 1,V,0.1,0,0,-32767,32767,1000,100,S\n"
              "50\n1\n1000,400\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    cfg.close();
    QFile dat(base + QStringLiteral(".dat"));
    dat.open(QIODevice::WriteOnly);
    for (int n = 0; n < 400; ++n) {
        const int ua = int(std::lround(1000.0 * std::sin(2 * M_PI * 50.0 * n / 1000.0)));
        dat.write(QByteArray::number(n + 1) + "," + QByteArray::number(n * 1000) + "," +
                  QByteArray::number(ua) + "\n");
    }
    return base + QStringLiteral(".cfg");
}

QJsonObject firstChannel(const QJsonObject &phasors)
{
    return phasors.value(QStringLiteral("channels")).toArray()[0].toObject();
}

} // namespace

TEST(CliOptions, DftWinPutsTheWindowBeforeAroundOrAfterTheSample)
{
    // 20 points per cycle at sample 300: "prev" starts at 280, "cent" at 290, "next" at 300.
    QTemporaryDir dir;
    const QString path = writeRatioRecording(dir);
    const QStringList base = {QStringLiteral("phasors"), QStringLiteral("--json"), path,
                              QStringLiteral("--at"), QStringLiteral("300")};
    const QJsonObject prev = firstChannel(runJson(base));
    const QJsonObject cent =
        firstChannel(runJson(base + QStringList{QStringLiteral("--dft-win"), QStringLiteral("cent")}));
    const QJsonObject next =
        firstChannel(runJson(base + QStringList{QStringLiteral("--dft-win"), QStringLiteral("next")}));
    EXPECT_EQ(prev.value(QStringLiteral("windowStart")).toInt(), 280);
    EXPECT_EQ(cent.value(QStringLiteral("windowStart")).toInt(), 290);
    EXPECT_EQ(next.value(QStringLiteral("windowStart")).toInt(), 300);
    // Each window holds a whole cycle of the same sine: the same size, and the angle is turned
    // to the sample itself (300 ms of 50 Hz is 15 whole cycles: 0°).
    for (const QJsonObject &c : {prev, cent, next}) {
        EXPECT_TRUE(
            NearRelative(c.value(QStringLiteral("effective")).toDouble(), 100.0 / std::sqrt(2.0), 7e-4));
        EXPECT_NEAR(c.value(QStringLiteral("angleDeg")).toDouble(), 0.0, 0.1);
    }
    // Near the end "next" has no room and is pushed back: 399 - 20 = 379 would touch the last
    // sample, so 378.
    const QJsonObject late = firstChannel(
        runJson({QStringLiteral("phasors"), QStringLiteral("--json"), path, QStringLiteral("--at"),
                 QStringLiteral("395"), QStringLiteral("--dft-win"), QStringLiteral("next")}));
    EXPECT_EQ(late.value(QStringLiteral("windowStart")).toInt(), 379);
}

TEST(CliOptions, PrimaryTurnsTheTextThroughTheRatio)
{
    // Secondary 70.711 V through a ratio of 1000 / 100 reads 707.107 V primary.
    QTemporaryDir dir;
    const QString path = writeRatioRecording(dir);
    const QStringList base = {QStringLiteral("phasors"), QStringLiteral("--json"), path,
                              QStringLiteral("--at"), QStringLiteral("300")};
    const QJsonObject secondary = firstChannel(runJson(base));
    const QJsonObject primary = firstChannel(runJson(base + QStringList{QStringLiteral("--primary")}));
    const double effective = secondary.value(QStringLiteral("effective")).toDouble();
    EXPECT_TRUE(NearRelative(effective, 100.0 / std::sqrt(2.0), 7e-4));
    char text[64];
    std::snprintf(text, sizeof text, "%.3fV", effective);
    EXPECT_EQ(secondary.value(QStringLiteral("text")).toString(), QString::fromLatin1(text));
    std::snprintf(text, sizeof text, "%.3fV", effective * 10.0);
    EXPECT_EQ(primary.value(QStringLiteral("text")).toString(), QString::fromLatin1(text));
    // The numbers themselves stay secondary.
    EXPECT_EQ(primary.value(QStringLiteral("effective")).toDouble(), effective);
}
