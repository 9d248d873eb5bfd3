#pragma once

// veldrix-cli run as a script runs it, and the small recordings the command-line suites write.

#include <QByteArray>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

struct CliRun
{
    int code = -1;
    QByteArray out;
    QByteArray err;
    QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

// `inChild` runs in the child before the tool starts (limits a test puts on it).
inline CliRun cli(const QStringList &arguments, const std::function<void()> &inChild = {})
{
    QProcess process;
    if (inChild)
        process.setChildProcessModifier(inChild);
    process.start(QStringLiteral(VELDRIX_CLI), arguments);
    process.waitForFinished(60000);
    return CliRun{process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

// Writes a small file of the test's own.
inline void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// The bytes of a file a verb wrote, "<missing>" when there is none.
inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// An ASCII recording `name` in `folder`, `points` long at 1 kHz with the trigger at sample 100:
// UA a 50 Hz sine of `amplitude` steps of 0.1 V secondary through a 1000 V / 100 V transformer,
// UB a ramp in kV through 110 kV / 100 V given as primary values, and a status channel that
// changes every 50 samples. `count` is the channel count line.
inline QString writeRecording(const QString &folder, const char *name = "rec", int points = 400,
                              int amplitude = 1000, const char *count = "3,2A,1D")
{
    const QString base = folder + QLatin1Char('/') + QLatin1String(name);
    put(base + ".cfg", QByteArray("Station,Device,1999\n") + count +
                           "\n1,UA,A,Bay 1,V,0.1,0,0,-32767,32767,1000,100,S\n"
                           "2,UB,B,Bay 1,kV,0.001,0,0,-32767,32767,110,0.1,P\n1,Trip,,,0\n50\n1\n1000," +
                           QByteArray::number(points) +
                           "\n01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.100000\nASCII\n1\n");
    QByteArray dat;
    for (int n = 0; n < points; ++n) {
        const int ua = int(std::lround(amplitude * std::sin(2 * M_PI * 50.0 * n / 1000.0)));
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(n * 1000) + ',' + QByteArray::number(ua) +
               ',' + QByteArray::number(n % 2 ? n % 3000 : -(n % 3000)) + ',' + (n % 100 < 50 ? "1" : "0") +
               '\n';
    }
    put(base + ".dat", dat);
    return base + ".cfg";
}
