// Writes that never lose data: a failed write leaves the earlier file and nothing under the final
// name; a recording's pair is replaced whole or not at all.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "safewrite.h"

#include "../tinyfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>

#include <gtest/gtest.h>

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// Two analog channels and one status channel, 20 samples in ASCII.
std::string writeSmallRecording(const TempRecording &dir)
{
    std::vector<std::string> dat;
    for (int n = 0; n < 20; ++n)
        dat.push_back(std::to_string(n + 1) + "," + std::to_string(n * 1000 - 5000) + "," +
                      std::to_string(n % 5 * 7) + "," + std::to_string(-n) + "," + (n > 9 ? "1" : "0"));
    dir.write("src.dat", dat);
    return dir.write("src.cfg", {"S,R,1999", "3,2A,1D", "1,UA,,,V,0.5,0,0,-32767,32767,1,1,S",
                                 "2,IA,,,A,0.25,0,0,-32767,32767,1,1,S", "1,Trip,,,0", "50", "1", "1000,20",
                                 "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.005000", "ASCII", "1"});
}

} // namespace

TEST(SafeWrite, FailedWriteLeavesTheEarlierFileAndNoPartialFile)
{
    const QByteArray big(256 * 1024, 'x');
    // A disk that runs full: a real tmpfs where one can be mounted, and a file size limit in any
    // case. Either way the sentinel keeps its bytes, the reason is given with the file's name,
    // and no temporary is left behind.
    TinyFolder tiny(64);
    if (tiny.isMounted()) {
        const QString target = tiny.filePath(QStringLiteral("rec.cff"));
        put(target, "sentinel");
        QString error;
        EXPECT_FALSE(WriteFileSafely(target, big, &error));
        EXPECT_TRUE(error.contains(QStringLiteral("No space left on device"))) << error.toStdString();
        EXPECT_TRUE(error.contains(QStringLiteral("rec.cff"))) << error.toStdString();
        EXPECT_EQ(contents(target), QByteArray("sentinel"));
        EXPECT_EQ(namesIn(tiny.path()), QStringList{QStringLiteral("rec.cff")});
    }
    TempRecording dir;
    const QString target = QString::fromStdString(dir.path("rec.cff"));
    put(target, "sentinel");
    {
        const FileSizeLimit limit(64 * 1024);
        QString error;
        EXPECT_FALSE(WriteFileSafely(target, big, &error));
        EXPECT_TRUE(error.contains(QStringLiteral("File too large"))) << error.toStdString();
        EXPECT_TRUE(error.contains(QStringLiteral("rec.cff"))) << error.toStdString();
    }
    EXPECT_EQ(contents(target), QByteArray("sentinel"));
    EXPECT_EQ(namesIn(QFileInfo(target).path()), QStringList{QStringLiteral("rec.cff")});

    // The same write with room succeeds and replaces the file whole.
    QString error;
    EXPECT_TRUE(WriteFileSafely(target, big, &error)) << error.toStdString();
    EXPECT_EQ(contents(target), big);

    // A device under the name is never replaced, nor written into.
    EXPECT_FALSE(WriteFileSafely(QStringLiteral("/dev/full"), "x", &error));
    EXPECT_TRUE(error.contains(QStringLiteral("/dev/full"))) << error.toStdString();
    EXPECT_FALSE(QFileInfo(QStringLiteral("/dev/full")).isFile());
    // A folder that does not exist: the system's reason.
    EXPECT_FALSE(WriteFileSafely(QString::fromStdString(dir.path("none/x.cfg")), "x", &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST(SafeWrite, SetRenamesNothingUnlessEveryFileIsComplete)
{
    TempRecording dir;
    const QString first = QString::fromStdString(dir.path("a.dat"));
    const QString second = QString::fromStdString(dir.path("a.cfg"));
    put(first, "old data");
    put(second, "old config");
    {
        const FileSizeLimit limit(64 * 1024);
        CSafeWriteSet set;
        QIODevice *a = set.Begin(first);
        QIODevice *b = set.Begin(second);
        ASSERT_TRUE(a && b);
        a->write("new data");
        b->write(QByteArray(200 * 1024, 'c')); // the second cannot be completed
        EXPECT_FALSE(set.Commit());
        EXPECT_TRUE(set.ErrorText().contains(QStringLiteral("a.cfg"))) << set.ErrorText().toStdString();
    }
    EXPECT_EQ(contents(first), QByteArray("old data"));
    EXPECT_EQ(contents(second), QByteArray("old config"));
    EXPECT_EQ(namesIn(QFileInfo(first).path()),
              (QStringList{QStringLiteral("a.cfg"), QStringLiteral("a.dat")}));

    // Aborted or dropped sets leave nothing either.
    {
        CSafeWriteSet set;
        set.Begin(first)->write("dropped");
    }
    EXPECT_EQ(contents(first), QByteArray("old data"));
    CSafeWriteSet set;
    set.Begin(first)->write("new data");
    set.Begin(second)->write("new config");
    EXPECT_TRUE(set.Commit()) << set.ErrorText().toStdString();
    EXPECT_EQ(contents(first), QByteArray("new data"));
    EXPECT_EQ(contents(second), QByteArray("new config"));
}

TEST(SafeWrite, SaveOfThePairLeavesTheOldPairWhenEitherCannotBeWritten)
{
    TempRecording dir;
    CCmtd99File file;
    const std::string source = writeSmallRecording(dir);
    ASSERT_TRUE(LoadRecording(file, source));

    // A read-only ".cfg" beside a writable ".dat": neither changes.
    const QString cfg = QString::fromStdString(dir.path("tgt.cfg"));
    const QString dat = QString::fromStdString(dir.path("tgt.dat"));
    put(cfg, "old config");
    put(dat, "old data");
    QFile::setPermissions(cfg, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    EXPECT_FALSE(file.SaveFile(dir.path("tgt.cfg").c_str()));
    EXPECT_TRUE(file.saveError.contains(QStringLiteral("tgt.cfg"))) << file.saveError.toStdString();
    EXPECT_EQ(contents(cfg), QByteArray("old config"));
    EXPECT_EQ(contents(dat), QByteArray("old data"));

    // A folder where the ".dat" would go: the ".cfg" is not replaced either.
    QFile::setPermissions(cfg, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    ASSERT_TRUE(QDir(QString::fromStdString(dir.path(""))).mkdir(QStringLiteral("dir.dat")));
    put(QString::fromStdString(dir.path("dir.cfg")), "old config");
    EXPECT_FALSE(file.SaveFile(dir.path("dir.cfg").c_str()));
    EXPECT_EQ(contents(QString::fromStdString(dir.path("dir.cfg"))), QByteArray("old config"));

    // A full disk while the data is written: the old pair, and the reason.
    {
        const FileSizeLimit limit(64);
        EXPECT_FALSE(file.SaveFile(dir.path("tgt.cfg").c_str()));
        EXPECT_TRUE(file.saveError.contains(QStringLiteral("File too large")))
            << file.saveError.toStdString();
        EXPECT_FALSE(file.SaveDat(dir.path("tgt.dat").c_str()));
    }
    EXPECT_EQ(contents(cfg), QByteArray("old config"));
    EXPECT_EQ(contents(dat), QByteArray("old data"));
}

TEST(SafeWrite, JoiningNumberedPartsOnAFullDiskLeavesNoShortDat)
{
    TempRecording dir;
    // Two parts of 4000 binary records each (10 bytes: number, stamp, one value).
    for (int part = 0; part < 2; ++part) {
        QByteArray bytes;
        for (int n = part * 4000; n < (part + 1) * 4000; ++n) {
            const int32_t head[2] = {n + 1, n * 1000};
            const int16_t value = static_cast<int16_t>(n % 1000);
            bytes.append(reinterpret_cast<const char *>(head), 8);
            bytes.append(reinterpret_cast<const char *>(&value), 2);
        }
        put(QString::fromStdString(dir.path(part ? "parts.d01" : "parts.d00")), bytes);
    }
    const std::string cfg = dir.write(
        "parts.cfg", {"S,R,1999", "1,1A,0D", "1,UA,,,V,1,0,0,-32767,32767,1,1,S", "50", "1", "1000,8000",
                      "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.000000", "BINARY", "1"});
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    {
        const FileSizeLimit limit(64 * 1024);
        EXPECT_FALSE(file.LoadDat(cfg.c_str(), nullptr, nullptr));
    }
    EXPECT_FALSE(QFile::exists(QString::fromStdString(dir.path("parts.dat"))));
    EXPECT_EQ(
        namesIn(QFileInfo(QString::fromStdString(cfg)).path()),
        (QStringList{QStringLiteral("parts.cfg"), QStringLiteral("parts.d00"), QStringLiteral("parts.d01")}));
    // With room the parts are joined and read whole.
    ASSERT_TRUE(file.LoadDat(cfg.c_str(), nullptr, nullptr));
    EXPECT_EQ(file.loadedPoints, 8000);
    EXPECT_EQ(file.analogMaps[0]->Value(7999), 999.0f);
}
