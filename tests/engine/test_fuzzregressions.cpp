// The inputs that fuzzing once found faults with, read again on every test run by the readers
// they were found in, so that the fixes stay; no fuzzing build is needed for it.

#include "cmtd99file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Reads one input as a whole recording (description and samples), with no limit on what its
// header promises: the loader sizes its stores from the data.
void readAsRecording(const QByteArray &bytes, const QString &path)
{
    QFile out(path);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(bytes);
    out.close();
    CCmtd99File file;
    const QByteArray local = path.toLocal8Bit();
    if (file.LoadFile(local.constData()))
        file.LoadDat(local.constData(), nullptr, nullptr);
}

} // namespace

TEST(FuzzRegressions, EverySeedOfTheDescriptionReadersReadsWithoutFault)
{
    // The seeds of the ".cfg" and ".cff" harnesses are the corpus every fuzzing run starts from;
    // under the sanitizers this run shows them clean without a fuzzing build.
    const QDir seeds(QStringLiteral(VELDRIX_FUZZ_REGRESSIONS "/../seeds"));
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    int read = 0;
    for (const QString &kind : {QStringLiteral("cfg"), QStringLiteral("cff")}) {
        const QDir folder(seeds.filePath(kind));
        for (const QString &name : folder.entryList(QDir::Files)) {
            QFile input(folder.filePath(name));
            ASSERT_TRUE(input.open(QIODevice::ReadOnly));
            readAsRecording(input.readAll(), scratch.filePath(QStringLiteral("r.") + kind));
            ++read;
        }
    }
    EXPECT_GT(read, 20);
}

TEST(FuzzRegressions, EveryKeptInputReadsWithoutFault)
{
    const QDir folder(QStringLiteral(VELDRIX_FUZZ_REGRESSIONS));
    const QStringList names = folder.entryList(QDir::Files);
    ASSERT_FALSE(names.isEmpty());
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    for (const QString &name : names) {
        QFile input(folder.filePath(name));
        ASSERT_TRUE(input.open(QIODevice::ReadOnly));
        const QByteArray bytes = input.readAll();
        // The harness's name leads the file name: cfg-..., cff-..., dat-...
        const QString kind = name.section(QLatin1Char('-'), 0, 0);
        const QString path = scratch.filePath(kind == QLatin1String("cff") ? QStringLiteral("r.cff")
                                                                           : QStringLiteral("r.cfg"));
        readAsRecording(bytes, path);
        SUCCEED() << name.toStdString();
    }
}
