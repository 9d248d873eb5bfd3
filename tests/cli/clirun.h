#pragma once

// veldrix-cli run as a script runs it, for the command-line suites.

#include <QByteArray>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

struct CliRun
{
    int code = -1;
    QByteArray out;
    QByteArray err;
    QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

inline CliRun cli(const QStringList &arguments)
{
    QProcess process;
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
