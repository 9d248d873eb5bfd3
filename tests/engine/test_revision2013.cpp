// Recordings of the 2013 revision: 32-bit data types, nanosecond stamps, the time zone lines,
// and what real recorders add. (The 1999 rules for stamps are the ".cfg" reader suite's.)

#include "cfffile.h"
#include "cfgfixture.h"
#include "cmtd99file.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

Lines Config2013(const char *ft, const char *start = "01/02/2024,10:00:00.000000000",
                 const char *trigger = "01/02/2024,10:00:00.100000000")
{
    return {"S,R,2013",
            "3,2A,1D",
            "1,IA,A,,A,0.5,1,0,-2147483647,2147483647,1,1,S",
            "2,UA,A,,kV,0.001,0,0,-2147483647,2147483647,1,1,S",
            "1,Trip,,,0",
            "50",
            "1",
            "1000,6",
            start,
            trigger,
            ft,
            "1",
            "+5h30,+5h30",
            "B,3"};
}

// Six records of the two analog channels in 32-bit integers or floats, Trip set from sample 3.
std::string Wide(bool floats)
{
    std::string out;
    for (int n = 0; n < 6; ++n) {
        PutLE(out, int32_t(n + 1));
        PutLE(out, int32_t(n * 1000));
        if (floats) {
            PutLE(out, 1.5f * n);
            PutLE(out, -250.25f * n);
        } else {
            PutLE(out, int32_t(100000 * n));
            PutLE(out, int32_t(-70000000 * n));
        }
        PutLE(out, uint16_t(n >= 3 ? 1 : 0));
    }
    return out;
}

using Revision2013 = RecordingTest;

} // namespace

TEST_F(Revision2013, WideDataTypesReadAndWriteBack)
{
    for (const bool floats : {false, true}) {
        const std::string cfg = dir.write("w.cfg", Config2013(floats ? "float32" : "BINARY32"));
        dir.writeBytes("w.dat", Wide(floats));
        CCmtd99File file;
        ASSERT_TRUE(LoadRecording(file, cfg));
        ASSERT_EQ(file.loadedPoints, 6);
        // Multiplier and offset apply to the floats too; kV is held in V.
        const double ia = floats ? 1.5 * 5 * 0.5 + 1 : 100000.0 * 5 * 0.5 + 1;
        const double kilo = double(0.001f) * 1000.0; // the multiplier is a 32-bit float
        const double ua = floats ? double(-250.25f * 5) * kilo : -70000000.0 * 5 * kilo;
        EXPECT_EQ(file.analogMaps[0]->Value(5), static_cast<float>(ia));
        EXPECT_EQ(file.analogMaps[1]->Value(5), static_cast<float>(ua));
        EXPECT_EQ(file.statusMaps[0]->Bit(3), 1);

        ASSERT_TRUE(file.SaveFile(dir.path("back.cfg").c_str()));
        CCmtd99File back;
        const std::string saved = dir.path("back.cfg");
        ASSERT_TRUE(LoadRecording(back, saved));
        EXPECT_EQ(back.fileDesc.timeCode, "+5h30");
        EXPECT_EQ(back.fileDesc.leapSecond, "3");
        EXPECT_EQ(back.analogMaps[0]->Value(5), file.analogMaps[0]->Value(5));
    }
}

TEST_F(Revision2013, StampsToTheMicrosecondAndWhatRecordersWrite)
{
    CCmtd99File file;
    const std::string cfg =
        dir.write("s.cfg", Config2013("BINARY", "01/02/2024,10:00:00.123456789", "01/02/2024,10:00:00.931"));
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    EXPECT_EQ(file.fileDesc.startTime.microsecond, 123456);   // nanoseconds dropped
    EXPECT_EQ(file.fileDesc.triggerTime.microsecond, 931000); // three digits by place
    EXPECT_EQ(file.fileDesc.localCode, "+5h30");
    EXPECT_EQ(file.fileDesc.timeQuality, "B");
    EXPECT_TRUE(file.cfgMessages.isEmpty());

    const std::string odd =
        dir.write("o.cfg", Config2013("BINARY", "01/02/2024,10:00:00,5", "01/02/2024,10:00:01"));
    CCmtd99File tolerant;
    ASSERT_TRUE(tolerant.LoadFile(odd.c_str()));
    EXPECT_EQ(tolerant.fileDesc.startTime.microsecond, 500000);
    EXPECT_EQ(tolerant.fileDesc.triggerTime.second, 1);
    ASSERT_EQ(tolerant.cfgMessages.size(), 2);
    EXPECT_TRUE(tolerant.cfgMessages[0].text.startsWith("Decimal comma"));
    EXPECT_TRUE(tolerant.cfgMessages[1].text.startsWith("No fraction"));
}

TEST_F(Revision2013, DosEndOfFileAndAPaddedDataFileAreNamed)
{
    Lines lines = Config2013("BINARY");
    lines.resize(12); // no time zone lines
    lines.push_back("\x1a\x1a\x1a");
    const std::string cfg = dir.write("d.cfg", lines);
    std::string dat;
    for (int n = 0; n < 6; ++n) {
        PutLE(dat, int32_t(n + 1));
        PutLE(dat, int32_t(n * 1000));
        PutLE(dat, int16_t(n));
        PutLE(dat, int16_t(-n));
        PutLE(dat, uint16_t(0));
    }
    dir.writeBytes("d.dat", dat + "\x1a\x1a\x1a");
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cfg.c_str()));
    ASSERT_EQ(file.cfgMessages.size(), 1);
    EXPECT_TRUE(file.cfgMessages[0].text.startsWith("DOS end-of-file"));
    ASSERT_TRUE(file.LoadDat(cfg.c_str(), nullptr, nullptr));
    EXPECT_EQ(file.loadedPoints, 6);
    ASSERT_FALSE(file.datMessages.isEmpty());
    EXPECT_EQ(file.datMessages.back().text,
              "3 bytes behind the last whole record of the data file are ignored");
}

TEST_F(Revision2013, SingleFileFormReadsAndWritesItsParts)
{
    // An ASCII recording written as one ".cff" with its byte-order mark and CRLF lines.
    std::string text = "\xEF\xBB\xBF--- file type: CFG ---\r\n";
    for (const std::string &line : Config2013("ASCII"))
        text += line + "\r\n";
    text +=
        "--- file type: INF ---\r\n--- file type: HDR ---\r\nheader text\r\n--- file type: DAT ASCII ---\r\n";
    for (int n = 0; n < 6; ++n)
        text += std::to_string(n + 1) + "," + std::to_string(n * 1000) + "," +
                std::to_string(n % 2 ? 10 * n : -10 * n) + ",-" + std::to_string(n) + "," +
                std::to_string(n & 1) + "\r\n";
    const std::string cff = dir.writeBytes("one.cff", text);
    CCmtd99File file;
    ASSERT_TRUE(file.LoadFile(cff.c_str()));
    EXPECT_EQ(file.fileDesc.stationName, "S");
    ASSERT_TRUE(file.LoadDat(cff.c_str(), nullptr, nullptr));
    EXPECT_EQ(file.loadedPoints, 6);
    EXPECT_EQ(file.analogMaps[0]->Value(5), 50 * 0.5f + 1);
    EXPECT_EQ(file.analogMaps[0]->Value(4), -40 * 0.5f + 1);
    EXPECT_EQ(file.statusMaps[0]->Bit(5), 1);

    // Written back as parts and joined, binary, with its byte count in the head.
    file.fileDesc.fileType = "BINARY";
    const QByteArray base = QByteArray::fromStdString(dir.path("part"));
    ASSERT_TRUE(file.SaveFile(base.constData()));
    const QByteArray joined = QByteArray::fromStdString(dir.path("joined.cff"));
    ASSERT_TRUE(JoinCff(base, "BINARY", joined));
    CCmtd99File back;
    ASSERT_TRUE(LoadRecording(back, joined.toStdString()));
    EXPECT_EQ(back.loadedPoints, 6);
    EXPECT_EQ(back.analogMaps[0]->Value(5), file.analogMaps[0]->Value(5));
    EXPECT_NE(dir.read("joined.cff").find("--- file type: DAT BINARY: 84 ---"), std::string::npos);
}
