// `veldrix-cli convert` as a script meets it: names it refuses, outputs that are its own input,
// a full disk, two runs at once, and values the target form cannot hold.

#include "../tinyfolder.h"
#include "clirun.h"
#include "tolerance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

QByteArray checksum(const QString &path)
{
    const QByteArray bytes = fileBytes(path);
    return bytes == "<missing>" ? bytes : QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

QJsonObject samplesOf(const QString &path)
{
    return cli({"samples", "--json", path}).json();
}

} // namespace

TEST(Convert, RefusesNamesThatAreNoRecordingsAndOutputsThatAreItsInput)
{
    QTemporaryDir dir;
    const QString input = writeRecording(dir.path());
    const QString dat = dir.filePath("rec.dat");
    const QByteArray cfgSum = checksum(input);
    const QByteArray datSum = checksum(dat);
    ASSERT_TRUE(QFile::link(input, dir.filePath("link.cfg")));
    ASSERT_TRUE(QDir(dir.path()).mkdir("sub"));
    const QStringList before = namesIn(dir.path());

    for (const QString &out : {input, dir.filePath("link.cfg"), dir.filePath("sub/../rec.cfg")}) {
        const CliRun run = cli({"convert", input, out, "--binary"});
        EXPECT_EQ(run.code, 2) << out.toStdString();
        EXPECT_TRUE(run.err.contains("recording being read")) << run.err.constData();
    }
    // Names that are no recording's create nothing.
    for (const char *name : {"z.txt", "z", "z.dat"}) {
        const CliRun run = cli({"convert", input, dir.filePath(QLatin1String(name))});
        EXPECT_EQ(run.code, 2) << name;
        EXPECT_TRUE(run.err.contains(".cfg or .cff")) << run.err.constData();
    }
    EXPECT_EQ(cli({"convert", input, dir.filePath("y.cfg"), "--revision", "1998"}).code, 2);
    EXPECT_EQ(namesIn(dir.path()), before);
    EXPECT_EQ(checksum(input), cfgSum);
    EXPECT_EQ(checksum(dat), datSum);

    // The single-file form onto itself.
    const QString cff = dir.filePath("one.cff");
    ASSERT_EQ(cli({"convert", input, cff}).code, 0);
    const QByteArray cffSum = checksum(cff);
    EXPECT_EQ(cli({"convert", cff, cff, "--ascii"}).code, 2);
    EXPECT_EQ(checksum(cff), cffSum);
    EXPECT_EQ(samplesOf(cff), samplesOf(input));
}

TEST(Convert, FullDiskFailsWithTheReasonAndLeavesTheEarlierFiles)
{
    QTemporaryDir dir;
    const QString input = writeRecording(dir.path(), "big", 8000, 20000);
    auto expectSentinelsKept = [](const QString &folder, const CliRun &run, const char *reason) {
        EXPECT_NE(run.code, 0);
        EXPECT_TRUE(run.err.contains(reason)) << run.err.constData();
        EXPECT_TRUE(run.err.contains("out.")) << run.err.constData();
        EXPECT_EQ(fileBytes(folder + "/out.cfg"), "old config");
        EXPECT_EQ(fileBytes(folder + "/out.dat"), "old data");
        EXPECT_EQ(namesIn(folder), (QStringList{"out.cfg", "out.dat"}));
    };
    auto putSentinels = [](const QString &folder) {
        put(folder + "/out.cfg", "old config");
        put(folder + "/out.dat", "old data");
    };

    TinyFolder tiny(64);
    if (tiny.isMounted()) {
        putSentinels(tiny.path());
        const CliRun run = cli({"convert", input, tiny.filePath("out.cfg"), "--ascii"});
        expectSentinelsKept(tiny.path(), run, "No space left on device");
    }
    QTemporaryDir target;
    putSentinels(target.path());
    const CliRun run = cli({"convert", input, target.filePath("out.cfg")}, [] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = 16 * 1024;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    });
    expectSentinelsKept(target.path(), run, "File too large");
}

TEST(Convert, TwoRunsAtOnceLeaveOneWholeRecording)
{
    QTemporaryDir dir;
    const QString first = writeRecording(dir.path(), "p", 30000);
    const QString second = writeRecording(dir.path(), "q", 20000, 3000);
    const QJsonObject expectFirst = samplesOf(first);
    const QJsonObject expectSecond = samplesOf(second);
    ASSERT_NE(expectFirst, expectSecond);
    const QString out = dir.filePath("out.cfg");
    for (int round = 0; round < 4; ++round) {
        QProcess a;
        QProcess b;
        a.start(QStringLiteral(VELDRIX_CLI), {"convert", first, out, "--binary"});
        b.start(QStringLiteral(VELDRIX_CLI), {"convert", second, out, "--binary"});
        ASSERT_TRUE(a.waitForFinished(60000) && b.waitForFinished(60000));
        EXPECT_EQ(a.exitCode(), 0) << a.readAllStandardError().constData();
        EXPECT_EQ(b.exitCode(), 0) << b.readAllStandardError().constData();
        const QJsonObject result = samplesOf(out);
        EXPECT_TRUE(result == expectFirst || result == expectSecond) << "round " << round;
    }
    EXPECT_EQ(namesIn(dir.path()), (QStringList{"out.cfg", "out.dat", "p.cfg", "p.dat", "q.cfg", "q.dat"}));
}

TEST(Convert, ValuesThatAreNoNumbersRefuseAnOlderForm)
{
    QTemporaryDir dir;
    // A 2013 FLOAT32 recording whose channel "Ifault" holds NaN at its seventh sample.
    QByteArray bytes;
    for (int n = 0; n < 10; ++n) {
        const int32_t head[2] = {n + 1, n * 1000};
        const float value = n == 6 ? std::nanf("") : 0.5f * float(n);
        bytes.append(reinterpret_cast<const char *>(head), 8);
        bytes.append(reinterpret_cast<const char *>(&value), 4);
    }
    put(dir.filePath("f.dat"), bytes);
    put(dir.filePath("f.cfg"),
        "S,R,2013\n1,1A,0D\n1,Ifault,A,,A,1,0,0,-1,1,1,1,S\n50\n1\n1000,10\n01/02/2024,10:00:00.000000\n"
        "01/02/2024,10:00:00.000000\nFLOAT32\n1\n0,0\n0,0\n");

    const CliRun refused =
        cli({"convert", dir.filePath("f.cfg"), dir.filePath("old.cfg"), "--binary", "--revision", "1999"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_TRUE(refused.err.contains("Ifault") && refused.err.contains("sample 7"))
        << refused.err.constData();
    EXPECT_FALSE(QFile::exists(dir.filePath("old.cfg")));
    EXPECT_FALSE(QFile::exists(dir.filePath("old.dat")));
    // The recording's own revision has a marker for it.
    EXPECT_EQ(cli({"convert", dir.filePath("f.cfg"), dir.filePath("new.cfg"), "--binary"}).code, 0);
}

TEST(Convert, RescansTheValuesForAMultiplierThatFitsAndMapsTheConfiguredRange)
{
    // Two channels whose values outgrow 16 bits with a multiplier of 1, and whose configured
    // range (-1000000..1000000) is far wider than anything in the data. "Rise" climbs steadily,
    // so a running extreme that only moves the minimum on a sample that did not raise the maximum
    // never sees its lowest value; "Swing" reaches farther below zero than above it.
    QTemporaryDir dir;
    put(dir.filePath("wide.cfg"), "S,D,1999\n2,2A,0D\n1,Rise,A,,V,1,0,0,-1000000,1000000,1,1,S\n"
                                  "2,Swing,B,,V,1,0,0,-1000000,1000000,1,1,S\n50\n1\n1000,6\n"
                                  "01/02/2024,10:00:00.000000\n01/02/2024,10:00:00.000000\nASCII\n1\n");
    const int rise[6] = {0, 20000, 40000, 60000, 80000, 90000};
    const int swing[6] = {100, -70000, 500, 30000, 0, -10};
    QByteArray dat;
    for (int n = 0; n < 6; ++n)
        dat += QByteArray::number(n + 1) + ',' + QByteArray::number(n * 1000) + ',' +
               QByteArray::number(rise[n]) + ',' + QByteArray::number(swing[n]) + '\n';
    put(dir.filePath("wide.dat"), dat);

    const QString out = dir.filePath("out.cfg");
    const CliRun run = cli({"convert", dir.filePath("wide.cfg"), out, "--binary"});
    ASSERT_EQ(run.code, 0) << run.err.constData();

    // The multiplier is the farthest value over the largest 16-bit magnitude: 90000 / 32767 for
    // "Rise", 70000 / 32767 for "Swing" (the negative side is the farther). The configured range
    // keeps its meaning: -1000000 and 1000000 over that multiplier lie beyond 16 bits and are
    // held at -32767 and 32767.
    const QList<QByteArray> lines = fileBytes(out).split('\n');
    ASSERT_GT(lines.size(), 4);
    const double expectedA[2] = {90000.0 / 32767.0, 70000.0 / 32767.0};
    for (int i = 0; i < 2; ++i) {
        const QList<QByteArray> fields = lines[2 + i].split(',');
        ASSERT_EQ(fields.size(), 13) << lines[2 + i].constData();
        const double a = fields[5].toDouble();
        EXPECT_GE(a, expectedA[i]) << lines[2 + i].constData();
        EXPECT_TRUE(NearRelative(a, expectedA[i], 1e-6)) << lines[2 + i].constData();
        EXPECT_EQ(fields[6].toDouble(), 0.0);
        EXPECT_EQ(fields[8], "-32767") << lines[2 + i].constData();
        EXPECT_EQ(fields[9], "32767") << lines[2 + i].constData();
    }

    // The raw samples, worked by hand as value × 32767 / reach rounded: the farthest value of each
    // channel takes the whole 16-bit range, and none is held at the limit short of its value.
    const QByteArray bytes = fileBytes(dir.filePath("out.dat"));
    ASSERT_EQ(bytes.size(), 6 * 12); // number, stamp, two 16-bit values
    auto rawAt = [&](int n, int channel) {
        const auto *p = reinterpret_cast<const unsigned char *>(bytes.constData()) + n * 12 + 8 + 2 * channel;
        return int(int16_t(uint16_t(p[0] | p[1] << 8)));
    };
    const int riseRaw[6] = {0, 7282, 14563, 21845, 29126, 32767}; // 20000 × 32767 / 90000 = 7281.6 …
    const int swingRaw[6] = {47, -32767, 234, 14043, 0, -5};      // 100 × 32767 / 70000 = 46.8 …
    for (int n = 0; n < 6; ++n) {
        EXPECT_EQ(rawAt(n, 0), riseRaw[n]) << "Rise, sample " << n + 1;
        EXPECT_EQ(rawAt(n, 1), swingRaw[n]) << "Swing, sample " << n + 1;
    }
}

TEST(Convert, TheExtensionFileGoesWithThePair)
{
    // A line unit in the input's extension file comes out beside the copy and reads back.
    QTemporaryDir dir;
    const QString input = writeRecording(dir.path());
    put(dir.filePath("rec.inf"), "[TRWK Line_#1]\nDEV_ID=1,Bay 1\nLENGTH=17.5(km)\nTA_CHNS=1,0,0,0,1\n");
    const QString out = dir.filePath("copy.cfg");
    ASSERT_EQ(cli({"convert", input, out}).code, 0);
    const QByteArray text = fileBytes(dir.filePath("copy.inf"));
    EXPECT_NE(text.indexOf("[TRWK Line_#1]"), -1);
    EXPECT_NE(text.indexOf("LENGTH=17.500(km)"), -1) << text.toStdString();
}
