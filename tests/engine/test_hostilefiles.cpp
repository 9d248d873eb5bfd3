// Files that lie about themselves or are no files at all: headers that promise more than the
// data holds or more than a count can hold, ".cff" names on pipes and devices, sections shorter
// than their heads, missing-value markers of 2013 recordings, numbers no float can hold. The
// file decides what is read; none of it may crash, hang or wrap.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "phasor.h"

#include <QDir>

#include "tolerance.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define VELDRIX_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELDRIX_ASAN 1
#endif
#endif

namespace {

using Lines = std::vector<std::string>;

// Two analog channels and one status channel, one segment at 1000 Hz ending at `endsamp`.
Lines Config(const char *revision, const char *counts, const char *nrates, const char *endsamp,
             const char *ft = "BINARY", const char *rate = "1000")
{
    Lines lines = {std::string("S,R,") + revision,
                   counts,
                   "1,IA,A,,A,0.5,1,0,-32767,32767,1,1,S",
                   "2,UA,A,,kV,0.001,0,0,-32767,32767,1,1,S",
                   "1,Trip,,,0",
                   "50",
                   nrates,
                   std::string(rate) + "," + endsamp,
                   "01/02/2024,10:00:00.000000",
                   "01/02/2024,10:00:00.000000",
                   ft,
                   "1"};
    if (std::strcmp(revision, "2013") == 0)
        lines.insert(lines.end(), {"0,0", "0,0"});
    return lines;
}

// `count` records of 14 bytes: number, stamp (1 ms apart), IA = n, UA = -n, status bit n >= 3.
std::string BinaryRecords(int count)
{
    std::string out;
    for (int n = 0; n < count; ++n) {
        PutLE(out, int32_t(n + 1));
        PutLE(out, int32_t(n * 1000));
        PutLE(out, int16_t(n));
        PutLE(out, int16_t(-n));
        PutLE(out, uint16_t(n >= 3 ? 1 : 0));
    }
    return out;
}

std::string Joined(const Lines &lines)
{
    std::string text;
    for (const std::string &line : lines)
        text += line + "\r\n";
    return text;
}

// Runs `body` in a child process that is killed after `seconds`; true when the child ended by
// itself with status 0. A reader that hangs fails the test instead of stopping the suite.
template <typename Body> bool InChild(int seconds, Body body)
{
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(static_cast<unsigned>(seconds));
        _exit(body() ? 0 : 1);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool HasMessage(const LoadMessageList &messages, const char *text)
{
    for (const LoadMessage &message : messages) {
        if (message.text.contains(text))
            return true;
    }
    return false;
}

// Base64 as mail and some writers put it: a line break after every 76 characters.
std::string Base64(const std::string &bytes)
{
    const std::string plain = QByteArray::fromStdString(bytes).toBase64().toStdString();
    std::string out;
    for (size_t i = 0; i < plain.size(); i += 76)
        out += (i ? "\r\n" : "") + plain.substr(i, 76);
    return out;
}

using HostileFiles = RecordingTest;

} // namespace

TEST_F(HostileFiles, HeaderCountsBeyondWhatTheReaderHoldsAreRefusedWithTheirLine)
{
    struct Case
    {
        const char *counts;
        const char *nrates;
        const char *message;
    };
    const Case cases[] = {
        {"4294967299,2A,1D", "1", "line 2: 4294967299 channels is out of range"},
        {"3,4294967298A,1D", "1", "line 2: 4294967298 analog channels is out of range"},
        {"3,1D,4294967298A", "1", "line 2: 4294967298 analog channels is out of range"},
        {"3,2A,65537D", "1", "line 2: 65537 status channels is out of range"},
        {"3,2A,1D", "2000000000", "line 7: 2000000000 sampling rates is out of range"},
        {"3,2A,1D", "65537", "line 7: 65537 sampling rates is out of range"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.message);
        const std::string cfg = dir.write("w.cfg", Config("1999", c.counts, c.nrates, "20"));
        dir.writeBytes("w.dat", BinaryRecords(20));
        CCmtd99File file;
        EXPECT_FALSE(file.LoadFile(cfg.c_str()));
        ASSERT_FALSE(file.cfgMessages.isEmpty());
        EXPECT_EQ(file.cfgMessages.back().text.toStdString(), c.message);
    }
}

TEST_F(HostileFiles, AnEndSampleBeyondAnyCountLoadsTheSamplesThatAreThere)
{
    // 4294967316 is 2^32 + 20: wrapped, it would read as exactly the 20 samples of the file.
    const std::string cfg = dir.write("e.cfg", Config("1999", "3,2A,1D", "1", "4294967316"));
    dir.writeBytes("e.dat", BinaryRecords(25));
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    EXPECT_EQ(file.pointCount, INT32_MAX);
    EXPECT_TRUE(HasMessage(file.cfgMessages, "line 8: end sample 4294967316 is beyond"));
    ASSERT_TRUE(file.LoadDat(cfg.c_str(), nullptr, nullptr));
    EXPECT_EQ(file.loadedPoints, 25);
    EXPECT_EQ(file.analogMaps[0]->Value(24), 24 * 0.5f + 1);
    ASSERT_EQ(file.segments.size(), 1u);
    EXPECT_EQ(file.segments[0].end, 25);
}

TEST_F(HostileFiles, APromiseOfTwoThousandMillionSamplesCostsOnlyTheFile)
{
    const std::string cfg = dir.write("p.cfg", Config("1999", "3,2A,1D", "1", "2147483647"));
    dir.writeBytes("p.dat", BinaryRecords(20)); // 280 bytes
    {
        CCmtd99File file;
        ASSERT_TRUE(LoadRecording(file, cfg));
        EXPECT_EQ(file.loadedPoints, 20);
        // The stores are as large as the file, not as the promise.
        EXPECT_LE(file.analogMaps[0]->sampleCount, 20);
        EXPECT_LE(file.statusMaps[0]->sampleCount, 20);
        EXPECT_EQ(file.analogMaps[1]->Value(19), -19.0f);
    }
    // In a child with 1 GB of address space, where storage for the promise (over 16 GB) cannot
    // be had; ten seconds is ten times the longest this may take.
    const auto started = std::chrono::steady_clock::now();
    const bool loaded = InChild(10, [&] {
#if !defined(VELDRIX_ASAN) // the sanitizer's shadow memory alone needs more than 1 GB of addresses
        const rlimit limit{rlim_t(1) << 30, rlim_t(1) << 30};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            return false;
#endif
        CCmtd99File file;
        return file.LoadFile(cfg.c_str()) && file.LoadDat(cfg.c_str(), nullptr, nullptr) &&
               file.loadedPoints == 20;
    });
    EXPECT_TRUE(loaded);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));

    // ASCII: the store is sized from the bytes too.
    const std::string ascii = dir.write("a.cfg", Config("1999", "3,2A,1D", "1", "2147483647", "ASCII"));
    std::string text;
    for (int n = 0; n < 20; ++n)
        text += std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," + std::to_string(n) + ",-" +
                std::to_string(n) + ",0\n";
    dir.writeBytes("a.dat", text);
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, ascii));
    EXPECT_EQ(file.loadedPoints, 20);
    EXPECT_LE(file.analogMaps[0]->sampleCount, int(text.size()));
}

TEST_F(HostileFiles, PipesDevicesAndFoldersNamedAsRecordingsAreRefusedAtOnce)
{
    const std::string fifo = dir.path("pipe.cff");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::string zero = dir.path("zero.cff");
    ASSERT_EQ(symlink("/dev/zero", zero.c_str()), 0);
    const std::string folder = dir.path("folder.cff");
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder)));
    // A pipe under the data file's name, beside a good description.
    const std::string cfg = dir.write("d.cfg", Config("1999", "3,2A,1D", "1", "20"));
    ASSERT_EQ(mkfifo(dir.path("d.dat").c_str(), 0600), 0);

    for (const std::string &path : {fifo, zero, folder}) {
        SCOPED_TRACE(path);
        const auto started = std::chrono::steady_clock::now();
        const bool refused = InChild(10, [&] {
            const rlimit limit{rlim_t(100) << 20, rlim_t(100) << 20};
#if !defined(VELDRIX_ASAN)
            setrlimit(RLIMIT_AS, &limit);
#endif
            (void)limit;
            CCmtd99File file;
            return !file.LoadFile(path.c_str()) && HasMessage(file.cfgMessages, "is not a regular file");
        });
        EXPECT_TRUE(refused);
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    }
    EXPECT_TRUE(InChild(10, [&] {
        CCmtd99File file;
        return file.LoadFile(cfg.c_str()) && !file.LoadDat(cfg.c_str(), nullptr, nullptr);
    }));
}

TEST_F(HostileFiles, SingleFileRecordingIsReadInPlaceAndSaysWhatItLacks)
{
    const std::string head = "--- file type: CFG ---\r\n" + Joined(Config("2013", "3,2A,1D", "1", "6")) +
                             "--- file type: INF ---\r\n--- file type: HDR ---\r\n";
    const std::string records = BinaryRecords(6);

    // Nothing is copied into the temporary folder: point it at an empty one for the load.
    const QString scratch = QString::fromStdString(dir.path("tmp"));
    ASSERT_TRUE(QDir().mkpath(scratch));
    const QByteArray oldTmp = qgetenv("TMPDIR");
    qputenv("TMPDIR", scratch.toLocal8Bit());

    // The byte count says 1000, the file holds 84: both numbers are named, the 6 records load.
    const std::string shortPath =
        dir.writeBytes("short.cff", head + "--- file type: DAT BINARY: 1000 ---\r\n" + records);
    CCmtd99File shortFile;
    ASSERT_TRUE(shortFile.LoadFile(shortPath.c_str()));
    EXPECT_TRUE(HasMessage(shortFile.cfgMessages, "shorter than its byte count: 84 bytes, not 1000"));
    ASSERT_TRUE(shortFile.LoadDat(shortPath.c_str(), nullptr, nullptr));
    EXPECT_EQ(shortFile.loadedPoints, 6);

    // The binary twin and the base64 one (in quotes, as some writers put it) read alike; a
    // section behind the data is not taken as data.
    const std::string binaryPath = dir.writeBytes("twin.cff", head + "--- file type: DAT BINARY: 84 ---\r\n" +
                                                                  records + "--- file type: XYZ ---\r\n");
    const std::string textPath = dir.writeBytes(
        "text.cff", head + "--- file type: DAT BINARY: base64 ---\r\n\"" + Base64(records) + "\"\r\n");
    CCmtd99File binary;
    CCmtd99File text;
    ASSERT_TRUE(LoadRecording(binary, binaryPath));
    ASSERT_TRUE(LoadRecording(text, textPath));
    ASSERT_EQ(binary.loadedPoints, 6);
    ASSERT_EQ(text.loadedPoints, 6);
    for (int n = 0; n < 6; ++n) {
        EXPECT_EQ(text.sampleTimes[n], binary.sampleTimes[n]);
        EXPECT_EQ(text.analogMaps[0]->Value(n), n * 0.5f + 1);
        EXPECT_EQ(text.analogMaps[1]->Value(n), binary.analogMaps[1]->Value(n));
        EXPECT_EQ(text.statusMaps[0]->Bit(n), n >= 3 ? 1 : 0);
    }

    // No data section at all: said so, rather than that a ".dat" is missing.
    const std::string bare = dir.writeBytes("bare.cff", head);
    CCmtd99File none;
    ASSERT_TRUE(none.LoadFile(bare.c_str()));
    EXPECT_FALSE(none.LoadDat(bare.c_str(), nullptr, nullptr));
    EXPECT_TRUE(HasMessage(none.datMessages, "no data section"));

    EXPECT_TRUE(QDir(scratch).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
    if (oldTmp.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", oldTmp);
}

TEST_F(HostileFiles, MissingValuesOf2013AreGapsAndOlderRecordingsKeepEveryReading)
{
    // 100 samples of a 50 Hz sine at 1 kHz (20 per cycle); sample 80 is missing on IA.
    auto records = [](int16_t marker) {
        std::string out;
        for (int n = 0; n < 100; ++n) {
            PutLE(out, int32_t(n + 1));
            PutLE(out, int32_t(n * 1000));
            PutLE(out, n == 80 ? marker : int16_t(std::lround(1000.0 * std::sin(2 * M_PI * n / 20.0))));
            PutLE(out, int16_t(n));
            PutLE(out, int16_t(0));
        }
        return out;
    };
    const std::string cfg13 = dir.write("g.cfg", Config("2013", "3,2A,1D", "1", "100"));
    dir.writeBytes("g.dat", records(INT16_MIN));
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, cfg13));
    const CChnMapAnalog &ia = *file.analogMaps[0];
    EXPECT_TRUE(std::isnan(ia.Value(80)));
    // Extremes from the readings only: 1000 × 0.5 + 1 and -1000 × 0.5 + 1.
    EXPECT_EQ(ia.maxValue, 501.0f);
    EXPECT_EQ(ia.minValue, -499.0f);
    ComplexD phasor;
    int before = 30;
    EXPECT_EQ(BasePhasorAt(file, nullptr, &ia, before, phasor), PhasorValue);
    EXPECT_TRUE(NearRelative(Effective(phasor), 500.0 / std::sqrt(2.0), 3e-3));
    int touching = 70;
    EXPECT_EQ(BasePhasorAt(file, nullptr, &ia, touching, phasor), NoValue);
    double effective = 0.0;
    EXPECT_EQ(RealEffectiveAt(file, nullptr, &ia, 70, effective), NoValue);
    EXPECT_EQ(RealEffectiveAt(file, nullptr, &ia, 20, effective), EffectiveValue);

    // The same bytes in a 1999 recording: -32768 is a reading like any other.
    const std::string cfg99 = dir.write("o.cfg", Config("1999", "3,2A,1D", "1", "100"));
    dir.writeBytes("o.dat", records(INT16_MIN));
    CCmtd99File old;
    ASSERT_TRUE(LoadRecording(old, cfg99));
    EXPECT_EQ(old.analogMaps[0]->Value(80), -32768 * 0.5f + 1);
    EXPECT_EQ(old.analogMaps[0]->minValue, -32768 * 0.5f + 1);
}

TEST_F(HostileFiles, WideAndFloatMarkersAndValuesNoFloatHolds)
{
    // BINARY32 with 0x80000000, FLOAT32 with NaN, infinity and 3.4e38 on a kV channel (which
    // scaled to V is beyond any float), ASCII 2013 with an empty field.
    auto wide = [](bool floats) {
        std::string out;
        for (int n = 0; n < 6; ++n) {
            PutLE(out, int32_t(n + 1));
            PutLE(out, int32_t(n * 1000));
            const float ia[6] = {1.0f, std::nanf(""), HUGE_VALF, 2.0f, -3.0f, 4.0f};
            const float ua[6] = {1.0f, 3.4e38f, -3.4e38f, 2.0f, 5.0f, 6.0f};
            if (floats) {
                PutLE(out, ia[n]);
                PutLE(out, ua[n]);
            } else {
                PutLE(out, n == 2 ? 0x80000000u : uint32_t(n * 10));
                PutLE(out, uint32_t(n));
            }
            PutLE(out, int16_t(0));
        }
        return out;
    };
    for (const bool floats : {false, true}) {
        SCOPED_TRACE(floats ? "FLOAT32" : "BINARY32");
        Lines lines = Config("2013", "3,2A,1D", "1", "6", floats ? "FLOAT32" : "BINARY32");
        lines[3] = "2,UA,A,,kV,1,0,0,-32767,32767,1,1,S"; // x1000 to V
        const std::string cfg = dir.write("w.cfg", lines);
        dir.writeBytes("w.dat", wide(floats));
        CCmtd99File file;
        ASSERT_TRUE(LoadRecording(file, cfg));
        const CChnMapAnalog &ia = *file.analogMaps[0];
        const CChnMapAnalog &ua = *file.analogMaps[1];
        if (!floats) {
            EXPECT_TRUE(std::isnan(ia.Value(2)));
            EXPECT_EQ(ia.Value(3), 30 * 0.5f + 1);
            EXPECT_EQ(ia.maxValue, 50 * 0.5f + 1);
            continue;
        }
        EXPECT_TRUE(std::isnan(ia.Value(1)));
        EXPECT_TRUE(std::isinf(ia.Value(2)));
        EXPECT_TRUE(std::isinf(ua.Value(1)) && ua.Value(1) > 0);
        EXPECT_TRUE(std::isinf(ua.Value(2)) && ua.Value(2) < 0);
        // Extremes and scale groups only from values a float holds.
        EXPECT_EQ(ia.maxValue, 4 * 0.5f + 1);
        EXPECT_EQ(ia.minValue, -3 * 0.5f + 1);
        EXPECT_EQ(ua.maxValue, 6000.0f);
        for (const ScaleGroup &group : file.scaleGroups)
            EXPECT_TRUE(std::isfinite(group.peak));
    }

    const std::string cfg = dir.write("t.cfg", Config("2013", "3,2A,1D", "1", "6", "ASCII"));
    dir.writeBytes("t.dat",
                   "1,0,2,1,0\n2,1000,,1,0\n3,2000,4,1,0\n4,3000,99999,1,0\n5,4000,8,1,0\n6,5000,9,1,0\n");
    CCmtd99File ascii;
    ASSERT_TRUE(LoadRecording(ascii, cfg));
    // An empty field and the ASCII marker 99999 are gaps, left out of the extremes.
    EXPECT_TRUE(std::isnan(ascii.analogMaps[0]->Value(1)));
    EXPECT_EQ(ascii.analogMaps[0]->Value(2), 4 * 0.5f + 1);
    EXPECT_TRUE(std::isnan(ascii.analogMaps[0]->Value(3)));
    EXPECT_EQ(ascii.analogMaps[0]->maxValue, 9 * 0.5f + 1);
}

TEST_F(HostileFiles, RatesAndFactorsNoFloatHoldsReachNoIntegerConversion)
{
    // Under the undefined-behaviour sanitizer any float-to-int conversion of these would stop
    // the run; here each gives a result with no meaning, or no value.
    for (const char *rate : {"1e39", "inf", "nan", "3e38", "1e-30"}) {
        SCOPED_TRACE(rate);
        const std::string cfg = dir.write("r.cfg", Config("1999", "3,2A,1D", "1", "20", "BINARY", rate));
        dir.writeBytes("r.dat", BinaryRecords(20));
        CCmtd99File file;
        if (!file.LoadFile(cfg.c_str()) || !file.LoadDat(cfg.c_str(), nullptr, nullptr))
            continue;
        for (int n = 0; n < 20; ++n) {
            int index = n;
            ComplexD phasor;
            BasePhasorAt(file, nullptr, file.analogMaps[0].get(), index, phasor);
            double value = 0.0;
            RealEffectiveAt(file, nullptr, file.analogMaps[0].get(), n, value);
            EXPECT_TRUE(std::isfinite(phasor.re) && std::isfinite(value));
        }
    }
    EXPECT_EQ(PointsPerCycle(3e38f, 50.0f), INT32_MAX);
    EXPECT_EQ(PointsPerCycle(HUGE_VALF, 50.0f), INT32_MAX);
    EXPECT_EQ(PointsPerCycle(std::nanf(""), 50.0f), 0);
    EXPECT_EQ(PointsPerCycle(1000.0f, 50.0f), 20);

    // A multiplier or time factor given as 1e39 reads as rubbish does, never as infinity.
    Lines lines = Config("1999", "3,2A,1D", "1", "20");
    lines[2] = "1,IA,A,,A,1e39,0,0,-32767,32767,1,1,S";
    lines[11] = "1e39";
    CCmtd99File file;
    file.LoadFile(dir.write("f.cfg", lines).c_str());
    EXPECT_EQ(file.analogChannels[0]->a, 0.0f);
    EXPECT_EQ(file.fileDesc.timeMult, 0.0f);
}
