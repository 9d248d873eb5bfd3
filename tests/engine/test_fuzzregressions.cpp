// The inputs that fuzzing once found faults with, read again on every test run by the readers
// they were found in, so that the fixes stay; no fuzzing build is needed for it.

#include "cfgfixture.h"
#include "cmtd99file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <iterator>

namespace {

// Copies the bytes of `input` to `path`, under the name the reader goes by; false when unreadable.
bool CopyInput(const QString &input, const QString &path)
{
    QFile in(input);
    QFile out(path);
    return in.open(QIODevice::ReadOnly) && out.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           out.write(in.readAll()) >= 0;
}

} // namespace

TEST(FuzzRegressions, EverySeedOfTheDescriptionReadersReadsWithoutFault)
{
    // The seeds of the ".cfg", ".cff" and ".inf" harnesses are the corpus every fuzzing run starts from;
    // under the sanitizers this run shows them clean without a fuzzing build.
    const QDir seeds(QStringLiteral(VELDRIX_FUZZ_REGRESSIONS "/../seeds"));
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    int read = 0;
    for (const QString &kind : {QStringLiteral("cfg"), QStringLiteral("cff"), QStringLiteral("inf")}) {
        const QDir folder(seeds.filePath(kind));
        for (const QString &name : folder.entryList(QDir::Files)) {
            // With no limit on what the header promises: the loader sizes its stores from the data.
            const QString path = scratch.filePath(QStringLiteral("r.") + kind);
            ASSERT_TRUE(CopyInput(folder.filePath(name), path));
            CCmtd99File file;
            LoadRecording(file, path.toStdString());
            ++read;
        }
    }
    EXPECT_GT(read, 20);
}

// What each kept input reads as, worked out from its bytes:
// - cff-bytecount-overflow: one loose section head, a binary data section of form "R" whose byte
//   count is the largest 64-bit number, with nothing behind it and no configuration section.
// - cff-rates-segment-ends-before-first-sample: a 2013 description of 2 analog and 1 status
//   channels whose line-frequency line is a repeated identity line, then three rate lines "50",
//   "1" (one field each, no end) and "1000,8", a start time cut short and binary data for 8
//   samples.
// - cfg-analog-index-int-max: a 1991 description of one analog channel whose line carries the
//   index 2147483647 and nothing else, and no rate lines: no samples.
// - cfg-stamp-month-int-min: one analog channel promised but its line holds one field, line
//   frequency 5, one rate line "0" with no end, and a start time with month -2147483648.
struct KeptOutcome
{
    const char *name;
    bool usable;        // what LoadFile answers
    int validationMask; // the description's faults
    int loadedPoints;   // samples read when usable
    int analogChannels; // channel lines that made a channel
    int cfgMessageCount;
    const char *firstMessage; // of the configuration reader, else of the checks after it
};

const KeptOutcome kKeptOutcomes[] = {
    {"cff-bytecount-overflow", false, 0, 0, 0, 3,
     "The binary data section is shorter than its byte count: 0 bytes, not 9223372036854775807"},
    {"cff-rates-segment-ends-before-first-sample", true, 0, 8, 2, 6,
     "Invalid [Line Freq.]! [Fuz/ Substitaon,Recorder 7,2013]"},
    {"cfg-analog-index-int-max", false, CCmtd99File::BadSegments, 0, 1, 0,
     "Invalid sampling segment! [npt=0][nrate=0]"},
    {"cfg-stamp-month-int-min", false, CCmtd99File::BadAnalog | CCmtd99File::BadSegments, 0, 0, 4,
     "Lossing parameters of analog channel! (<10)"},
};

TEST(FuzzRegressions, EveryKeptInputReadsAsItsBytesSay)
{
    const QDir folder(QStringLiteral(VELDRIX_FUZZ_REGRESSIONS));
    const QStringList names = folder.entryList(QDir::Files);
    ASSERT_EQ(names.size(), int(std::size(kKeptOutcomes))) << "a kept input without an expected outcome";
    QTemporaryDir scratch;
    ASSERT_TRUE(scratch.isValid());
    for (const KeptOutcome &expected : kKeptOutcomes) {
        SCOPED_TRACE(expected.name);
        const QString name = QLatin1String(expected.name);
        ASSERT_TRUE(names.contains(name));
        // The harness's name leads the file name: cfg-..., cff-..., dat-...
        const bool cff = name.startsWith(QLatin1String("cff-"));
        const QString path = scratch.filePath(cff ? QStringLiteral("r.cff") : QStringLiteral("r.cfg"));
        ASSERT_TRUE(CopyInput(folder.filePath(name), path));

        CCmtd99File file;
        const QByteArray local = path.toLocal8Bit();
        EXPECT_EQ(file.LoadFile(local.constData()), expected.usable);
        EXPECT_EQ(file.validationMask, expected.validationMask);
        EXPECT_EQ(int(file.analogChannels.size()), expected.analogChannels);
        EXPECT_EQ(int(file.cfgMessages.size()), expected.cfgMessageCount);
        const LoadMessageList &messages = file.cfgMessages.isEmpty() ? file.datMessages : file.cfgMessages;
        ASSERT_FALSE(messages.isEmpty());
        EXPECT_EQ(messages.first().text, QByteArray(expected.firstMessage));
        if (expected.usable) {
            EXPECT_TRUE(file.LoadDat(local.constData(), nullptr, nullptr));
            EXPECT_EQ(file.loadedPoints, expected.loadedPoints);
        }
    }
}

TEST(FuzzRegressions, RateLinesWithoutEndsLeaveTheLastSegmentTheWholeRecording)
{
    // The kept input whose first two segments end before the first sample: only "1000,8" gives
    // an end, so the samples 0 to 8 all belong to the third segment at 1000 per second.
    QTemporaryDir scratch;
    const QString path = scratch.filePath(QStringLiteral("r.cff"));
    ASSERT_TRUE(CopyInput(
        QStringLiteral(VELDRIX_FUZZ_REGRESSIONS "/cff-rates-segment-ends-before-first-sample"), path));
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(path.toLocal8Bit().constData()));
    ASSERT_EQ(file.segments.size(), 3u);
    EXPECT_EQ(file.segments[0].end, 0);
    EXPECT_EQ(file.segments[1].end, 0);
    EXPECT_EQ(file.segments[2].rate, 1000.0f);
    EXPECT_EQ(file.segments[2].end, 8);
    EXPECT_EQ(file.pointCount, 8);
}
