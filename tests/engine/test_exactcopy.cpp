// The exact copy: what the engineer sees is what the copy reads back as, in every form; values a
// form cannot hold are never changed silently; and the check that warns before the plain Save As.

#include "cfgfixture.h"
#include "cmtd99file.h"
#include "exactcopy.h"

#include <QFile>
#include <QFileInfo>

#include "tolerance.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

// Stored value per file unit of the quirk recording's channels, worked by hand: UA in V, UB
// in kV (x1000), IP given as primary amperes through 600 A / 1 A (x1/600), RAMP in V.
const double kStoredPerFileUnit[] = {1.0, 1000.0, 1.0 / 600.0, 1.0};

// A 1999 ASCII recording at 1 kHz: a clean sine (UA), a channel in kV (UB), a primary current
// (IP, P/S "P"), a steadily rising channel (RAMP) and a status channel; stamps counted from
// the start, `trigger` behind it.
std::string writeQuirkRecording(const TempRecording &dir, const char *start = "01/02/2024,10:00:00.000000",
                                const char *trigger = "01/02/2024,10:00:00.100000", bool onlyClean = false)
{
    Lines dat;
    for (int n = 0; n < 400; ++n) {
        const int ua = int(std::lround(1000.0 * std::sin(2 * M_PI * 50.0 * n / 1000.0)));
        std::string line = std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," + std::to_string(ua);
        if (!onlyClean)
            line += "," + std::to_string((n % 50) * 40 - 1000) + "," +
                    std::to_string(n % 2 ? n * 50 : -n * 50) + "," + std::to_string(n + 10);
        dat.push_back(line + "," + (n >= 200 ? "1" : "0"));
    }
    dir.write("quirk.dat", dat);
    Lines cfg = {"Station,Device,1999", onlyClean ? "2,1A,1D" : "5,4A,1D",
                 "1,UA,A,Bay 1,V,0.1,0,0,-32767,32767,1,1,S"};
    if (!onlyClean) {
        cfg.push_back("2,UB,B,Bay 1,kV,0.001,0,0,-32767,32767,1,1,S");
        cfg.push_back("3,IP,C,Bay 1,A,0.01,0,0,-32767,32767,600,1,P");
        cfg.push_back("4,RAMP,,Bay 1,V,1,0,0,-32767,32767,1,1,S");
    }
    for (const char *line : {"1,Trip,,Bay 1,0", "50", "1", "1000,400"})
        cfg.push_back(line);
    for (const char *line : {start, trigger, "ASCII", "1"})
        cfg.push_back(line);
    return dir.write("quirk.cfg", cfg);
}

// A 2013 FLOAT32 recording of one channel "Ifault" holding `values`, 1 kHz, no status channel.
std::string writeFloatRecording(const TempRecording &dir, const std::vector<float> &values)
{
    std::string bytes;
    for (size_t n = 0; n < values.size(); ++n) {
        PutLE(bytes, int32_t(n + 1));
        PutLE(bytes, int32_t(n * 1000));
        PutLE(bytes, values[n]);
    }
    dir.writeBytes("float.dat", bytes);
    return dir.write("float.cfg", {"S,R,2013", "1,1A,0D", "1,Ifault,A,,A,1,0,0,-1,1,1,1,S", "50", "1",
                                   "1000," + std::to_string(values.size()), "01/02/2024,10:00:00.000000",
                                   "01/02/2024,10:00:00.000000", "FLOAT32", "1", "0,0", "0,0"});
}

// Checks a copy against the recording it came from: the description, the times, the status
// bits exactly, and each analog sample within half a step of the copy's multiplier.
void expectSameRecording(const CCmtd99File &original, const CCmtd99File &copy, const char *label)
{
    SCOPED_TRACE(label);
    ASSERT_EQ(copy.loadedPoints, original.loadedPoints);
    EXPECT_EQ(copy.fileDesc.stationName, original.fileDesc.stationName);
    EXPECT_EQ(copy.fileDesc.recDevId, original.fileDesc.recDevId);
    EXPECT_EQ(copy.fileDesc.startTime.ToMicroseconds(), original.fileDesc.startTime.ToMicroseconds());
    EXPECT_EQ(copy.fileDesc.triggerTime.ToMicroseconds(), original.fileDesc.triggerTime.ToMicroseconds());
    ASSERT_EQ(copy.segments.size(), original.segments.size());
    for (size_t i = 0; i < copy.segments.size(); ++i) {
        EXPECT_EQ(copy.segments[i].rate, original.segments[i].rate);
        EXPECT_EQ(copy.segments[i].end, original.segments[i].end);
    }
    for (int n = 0; n < copy.loadedPoints; ++n)
        ASSERT_EQ(copy.sampleTimes[n], original.sampleTimes[n]) << "sample " << n;
    ASSERT_EQ(copy.analogMaps.size(), original.analogMaps.size());
    for (size_t c = 0; c < copy.analogMaps.size(); ++c) {
        const CmtdChn_Analog &was = *original.analogMaps[c]->config;
        const CmtdChn_Analog &is = *copy.analogMaps[c]->config;
        EXPECT_EQ(is.ch_id, was.ch_id);
        EXPECT_EQ(is.ph, was.ph);
        EXPECT_EQ(is.ccbm, was.ccbm);
        EXPECT_EQ(is.uu, was.uu);
        EXPECT_EQ(is.primary, was.primary);
        EXPECT_EQ(is.secondary, was.secondary);
        EXPECT_EQ(is.ps, was.ps);
        const double halfStep = 0.5 * std::fabs(double(is.a)) * kStoredPerFileUnit[c];
        for (int n = 0; n < copy.loadedPoints; ++n) {
            const double v = original.analogMaps[c]->Value(n);
            const double slack = halfStep + 2.0 * FLT_EPSILON * std::fabs(v);
            ASSERT_NEAR(copy.analogMaps[c]->Value(n), v, slack) << was.ch_id.constData() << " sample " << n;
        }
    }
    ASSERT_EQ(copy.statusMaps.size(), original.statusMaps.size());
    for (size_t c = 0; c < copy.statusMaps.size(); ++c) {
        EXPECT_EQ(copy.statusMaps[c]->config->ch_id, original.statusMaps[c]->config->ch_id);
        for (int n = 0; n < copy.loadedPoints; ++n)
            ASSERT_EQ(copy.statusMaps[c]->Bit(n), original.statusMaps[c]->Bit(n)) << "status sample " << n;
    }
}

} // namespace

TEST(ExactCopy, EveryFormReadsBackWithinHalfAStep)
{
    struct Target
    {
        int revision;
        const char *type;
        const char *name;
    };
    const Target targets[] = {
        {1991, "ASCII", "a91.cfg"},    {1991, "BINARY", "b91.cfg"},  {1999, "ASCII", "a99.cfg"},
        {1999, "BINARY", "b99.CFG"},   {2013, "ASCII", "a13.cfg"},   {2013, "BINARY", "b13.cfg"},
        {2013, "BINARY32", "w13.cfg"}, {2013, "FLOAT32", "f13.cfg"}, {1999, "BINARY", "one.cff"}};
    // Stamps from the start with the trigger behind it, and with the trigger before the start.
    const char *heads[][2] = {{"01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.100000"},
                              {"01/02/2024,10:00:00.100000", "01/02/2024,10:00:00.000000"}};
    for (const auto &head : heads) {
        TempRecording dir;
        CCmtd99File original;
        ASSERT_TRUE(LoadRecording(original, writeQuirkRecording(dir, head[0], head[1])));
        const float aBefore = original.analogChannels[1]->a;
        for (const Target &target : targets) {
            QString error;
            const std::string out = dir.path(target.name);
            ASSERT_EQ(
                SaveExactCopy(original, QString::fromStdString(out), {target.type, target.revision}, &error),
                ExactCopyResult::Written)
                << error.toStdString();
            CCmtd99File copy;
            ASSERT_TRUE(LoadRecording(copy, out)) << target.name;
            EXPECT_EQ(copy.fileDesc.is2013(), target.revision == 2013);
            expectSameRecording(original, copy, target.name);
            // UA fits every integer form with its own multiplier: kept as it was.
            EXPECT_EQ(copy.analogChannels[0]->a, 0.1f) << target.name;
        }
        EXPECT_TRUE(QFile::exists(QString::fromStdString(dir.path("b99.DAT"))));
        // The recording itself is not changed by a copy.
        EXPECT_EQ(original.analogChannels[1]->a, aBefore);
    }
}

TEST(ExactCopy, ExtremeFloatsAndTheFullAsciiRangeSurvive)
{
    TempRecording dir;
    // FLOAT32 3.4e36 and small values: FLOAT32 keeps every bit; a 16-bit copy gets a
    // multiplier that holds 3.4e36 instead of clamping it to 32767 steps.
    const std::vector<float> values = {3.4e36f, -2.5f, 0.125f, 1e-3f, -3.0e36f, 7.0f};
    CCmtd99File floats;
    ASSERT_TRUE(LoadRecording(floats, writeFloatRecording(dir, values)));
    QString error;
    ASSERT_EQ(SaveExactCopy(floats, QString::fromStdString(dir.path("f.cfg")), {"FLOAT32", 0}, &error),
              ExactCopyResult::Written);
    CCmtd99File back;
    ASSERT_TRUE(LoadRecording(back, dir.path("f.cfg")));
    for (size_t n = 0; n < values.size(); ++n)
        EXPECT_EQ(back.analogMaps[0]->Value(int(n)), values[n]) << n;
    ASSERT_EQ(SaveExactCopy(floats, QString::fromStdString(dir.path("i.cfg")), {"BINARY", 1999}, &error),
              ExactCopyResult::Written);
    CCmtd99File narrow;
    ASSERT_TRUE(LoadRecording(narrow, dir.path("i.cfg")));
    const double step = narrow.analogChannels[0]->a;
    EXPECT_TRUE(NearRelative(step, 3.4e36 / 32767, 1e-3));
    EXPECT_NEAR(narrow.analogMaps[0]->Value(0), 3.4e36, step / 2);
    EXPECT_NEAR(narrow.analogMaps[0]->Value(4), -3.0e36, step / 2);

    // ASCII holds -99,999 to 99,999: an ASCII recording copied to ASCII keeps every integer and
    // its multiplier and offset.
    Lines dat;
    const int raws[] = {99999, -99999, 0, 12345, -32768, 32767, 5};
    for (int n = 0; n < 7; ++n)
        dat.push_back(std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," + std::to_string(raws[n]));
    dir.write("wide.dat", dat);
    const std::string wide = dir.write(
        "wide.cfg", {"S,R,1999", "1,1A,0D", "1,W,,,V,1.27,0.5,0,-99999,99999,1,1,S", "50", "1", "1000,7",
                     "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.000000", "ASCII", "1"});
    CCmtd99File ascii;
    ASSERT_TRUE(LoadRecording(ascii, wide));
    ASSERT_EQ(SaveExactCopy(ascii, QString::fromStdString(dir.path("w2.cfg")), {}, &error),
              ExactCopyResult::Written);
    const QList<QByteArray> lines = QByteArray::fromStdString(dir.read("w2.dat")).trimmed().split('\n');
    ASSERT_EQ(lines.size(), 7);
    for (int n = 0; n < 7; ++n)
        EXPECT_EQ(lines[n].split(',').value(2).toInt(), raws[n]) << n;
    CCmtd99File again;
    ASSERT_TRUE(LoadRecording(again, dir.path("w2.cfg")));
    EXPECT_EQ(again.analogChannels[0]->a, 1.27f);
    EXPECT_EQ(again.analogChannels[0]->b, 0.5f);
    // In a 2013 ASCII file 99,999 marks a missing value: the copy's multiplier keeps clear of it.
    ASSERT_EQ(SaveExactCopy(ascii, QString::fromStdString(dir.path("w13.cfg")), {"ASCII", 2013}, &error),
              ExactCopyResult::Written);
    CCmtd99File ascii2013;
    ASSERT_TRUE(LoadRecording(ascii2013, dir.path("w13.cfg")));
    const double halfStep = 0.5 * ascii2013.analogChannels[0]->a;
    EXPECT_GT(halfStep, 0.5 * 1.27f);
    for (int n = 0; n < 7; ++n)
        EXPECT_NEAR(ascii2013.analogMaps[0]->Value(n), ascii.analogMaps[0]->Value(n), halfStep * 1.0001) << n;
    // The plain Save As widens this multiplier (it fits 16 bits only), so it warns.
    ASSERT_EQ(FindChannelsChangedBySave(ascii, {}).size(), 1u);

    // A multiplier of 0 holds nothing but the offset: the copy gets one that holds it.
    dir.write("zero.dat", {"1,0,3", "2,1000,4", "3,2000,5", "4,3000,6", "5,4000,7"});
    const std::string zero =
        dir.write("zero.cfg", {"S,R,1999", "1,1A,0D", "1,Z,,,V,0,2.5,0,-1,1,1,1,S", "50", "1", "1000,5",
                               "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.000000", "ASCII", "1"});
    CCmtd99File flat;
    ASSERT_TRUE(LoadRecording(flat, zero));
    ASSERT_EQ(SaveExactCopy(flat, QString::fromStdString(dir.path("z2.cfg")), {}, &error),
              ExactCopyResult::Written);
    CCmtd99File flatBack;
    ASSERT_TRUE(LoadRecording(flatBack, dir.path("z2.cfg")));
    for (int n = 0; n < 5; ++n)
        EXPECT_EQ(flatBack.analogMaps[0]->Value(n), 2.5f) << n;
}

TEST(ExactCopy, ValuesThatAreNoNumbersBecomeMarkersOrRefuseTheCopy)
{
    TempRecording dir;
    std::vector<float> values(10, 1.5f);
    values[6] = std::nanf("");
    values[8] = INFINITY;
    CCmtd99File file;
    ASSERT_TRUE(LoadRecording(file, writeFloatRecording(dir, values)));

    // 1991 and 1999 have no marker: refused, naming the channel and the first such sample
    // (numbered from 1 as in the file), and nothing is written.
    QString error;
    for (const int revision : {1991, 1999}) {
        EXPECT_EQ(
            SaveExactCopy(file, QString::fromStdString(dir.path("old.cfg")), {"BINARY", revision}, &error),
            ExactCopyResult::Refused);
        EXPECT_TRUE(error.contains(QStringLiteral("Ifault"))) << error.toStdString();
        EXPECT_TRUE(error.contains(QStringLiteral("sample 7"))) << error.toStdString();
    }
    EXPECT_FALSE(QFile::exists(QString::fromStdString(dir.path("old.cfg"))));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(dir.path("old.dat"))));

    // 2013: the form's marker. Records are number, stamp and one value.
    auto valueAt = [&](const char *name, int width, int n) {
        const QByteArray bytes = QByteArray::fromStdString(dir.read(name));
        uint32_t v = 0;
        std::memcpy(&v, bytes.constData() + n * (8 + width) + 8, size_t(width));
        return v;
    };
    ASSERT_EQ(SaveExactCopy(file, QString::fromStdString(dir.path("m16.cfg")), {"BINARY", 2013}, &error),
              ExactCopyResult::Written)
        << error.toStdString();
    EXPECT_EQ(valueAt("m16.dat", 2, 6), 0x8000u);
    EXPECT_EQ(valueAt("m16.dat", 2, 8), 0x8000u);
    EXPECT_NE(valueAt("m16.dat", 2, 5), 0x8000u);
    ASSERT_EQ(SaveExactCopy(file, QString::fromStdString(dir.path("m32.cfg")), {"BINARY32", 2013}, &error),
              ExactCopyResult::Written);
    EXPECT_EQ(valueAt("m32.dat", 4, 6), 0x80000000u);
    ASSERT_EQ(SaveExactCopy(file, QString::fromStdString(dir.path("mf.cfg")), {"FLOAT32", 2013}, &error),
              ExactCopyResult::Written);
    float f;
    const uint32_t bits = valueAt("mf.dat", 4, 6);
    std::memcpy(&f, &bits, 4);
    EXPECT_TRUE(std::isnan(f));
    ASSERT_EQ(SaveExactCopy(file, QString::fromStdString(dir.path("ma.cfg")), {"ASCII", 2013}, &error),
              ExactCopyResult::Written);
    const QList<QByteArray> lines = QByteArray::fromStdString(dir.read("ma.dat")).split('\n');
    EXPECT_EQ(lines.value(6), QByteArray("7,6000,"));
    EXPECT_EQ(lines.value(5), QByteArray("6,5000,2")); // 1.5 with the kept multiplier 1
    // A 32-bit form in a 1999 recording does not exist.
    EXPECT_EQ(SaveExactCopy(file, QString::fromStdString(dir.path("x.cfg")), {"FLOAT32", 1999}, &error),
              ExactCopyResult::Refused);
}

TEST(ExactCopy, ChannelsThePlainSaveWouldChangeAreFound)
{
    TempRecording dir;
    CCmtd99File quirks;
    ASSERT_TRUE(LoadRecording(quirks, writeQuirkRecording(dir)));
    for (const char *type : {"ASCII", "BINARY"}) {
        const std::vector<ChangedChannel> changed = FindChannelsChangedBySave(quirks, {type, 0});
        ASSERT_EQ(changed.size(), 3u) << type;
        EXPECT_EQ(changed[0].name, QStringLiteral("UB"));   // kV
        EXPECT_EQ(changed[1].name, QStringLiteral("IP"));   // P/S "P"
        EXPECT_EQ(changed[2].name, QStringLiteral("RAMP")); // rising: its minimum never moved
        EXPECT_EQ(changed[2].position, 3);
    }
    // And it is right: the plain Save As does change them, and leaves UA alone.
    ASSERT_TRUE(quirks.SaveFile(dir.path("plain.cfg").c_str()));
    CCmtd99File plain;
    ASSERT_TRUE(LoadRecording(plain, dir.path("plain.cfg")));
    // RAMP's multiplier was stretched from 1 to about 305: 409 comes back as one step.
    EXPECT_TRUE(NearRelative(quirks.analogMaps[3]->Value(399), 409.0, 1e-12));
    EXPECT_GT(std::fabs(plain.analogMaps[3]->Value(399) - 409.0), 50.0);
    EXPECT_EQ(plain.analogMaps[0]->Value(5), quirks.analogMaps[0]->Value(5));

    TempRecording other;
    CCmtd99File clean;
    ASSERT_TRUE(LoadRecording(
        clean, writeQuirkRecording(other, "01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.100000", true)));
    EXPECT_TRUE(FindChannelsChangedBySave(clean, {}).empty());
    EXPECT_TRUE(FindChannelsChangedBySave(clean, {"BINARY", 0}).empty());
}

TEST(ExactCopy, OutputsThatAreFilesBeingReadAreFound)
{
    TempRecording dir;
    const QString input = QString::fromStdString(writeQuirkRecording(dir));
    const QString folder = QFileInfo(input).path();
    dir.write("quirk.inf", {"[Public Record]"});
    EXPECT_TRUE(OutputTouchesInput(input, input));
    EXPECT_FALSE(OutputTouchesInput(input, folder + QStringLiteral("/other.cfg")));
    // The same folder by another way, and a link to the input.
    EXPECT_TRUE(OutputTouchesInput(input, folder + QStringLiteral("/../") + QFileInfo(folder).fileName() +
                                              QStringLiteral("/quirk.cfg")));
    ASSERT_TRUE(QFile::link(input, folder + QStringLiteral("/link.cfg")));
    EXPECT_TRUE(OutputTouchesInput(input, folder + QStringLiteral("/link.cfg")));
    // A new ".cfg" whose ".dat" is the input's data by a link, or whose ".dat" is its ".inf".
    ASSERT_TRUE(QFile::link(folder + QStringLiteral("/quirk.dat"), folder + QStringLiteral("/x.dat")));
    EXPECT_TRUE(OutputTouchesInput(input, folder + QStringLiteral("/x.cfg")));
    ASSERT_TRUE(QFile::link(folder + QStringLiteral("/quirk.inf"), folder + QStringLiteral("/y.dat")));
    EXPECT_TRUE(OutputTouchesInput(input, folder + QStringLiteral("/y.cfg")));
    // A ".cff" onto itself.
    const QString cff = folder + QStringLiteral("/one.cff");
    QFile(cff).open(QIODevice::WriteOnly);
    EXPECT_TRUE(OutputTouchesInput(cff, cff));
    EXPECT_FALSE(OutputTouchesInput(cff, folder + QStringLiteral("/two.cff")));

    EXPECT_TRUE(IsRecordingOutputName(QStringLiteral("a/b.CFG")));
    EXPECT_TRUE(IsRecordingOutputName(QStringLiteral("b.cff")));
    EXPECT_FALSE(IsRecordingOutputName(QStringLiteral("z.txt")));
    EXPECT_FALSE(IsRecordingOutputName(QStringLiteral("cfg")));
}
