// The inputs that fuzzing once found faults with, read again on every test run by the readers
// they were found in, so that the fixes stay; no fuzzing build is needed for it.

#include "cmtd99file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(bytes);
        out.close();
        CCmtd99File file;
        const QByteArray local = path.toLocal8Bit();
        if (file.LoadFile(local.constData()) && file.pointCount <= 200000)
            file.LoadDat(local.constData(), nullptr, nullptr);
        SUCCEED() << name.toStdString();
    }
}
