#include "cfgfixture.h"
#include "diskfile.h"
#include "linereader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using Fields = std::vector<std::string>;

// The line functions cut the text in place: run a splitter on a writable copy and collect the
// fields that it points to.
Fields Split(int (*splitter)(char *, char *[], int, char), std::string text, int capacity)
{
    char *fields[16];
    const int count = splitter(text.data(), fields, capacity, ',');
    return Fields(fields, fields + count);
}

// "kind key=value" of a parsed key line; the kind alone when the line was refused.
std::string KeyText(int kind, const char *key, const char *value)
{
    if (kind == 0 || !key)
        return std::to_string(kind);
    return std::to_string(kind) + " " + key + (value ? "=" + std::string(value) : "");
}

using DiskFile = RecordingTest;
using LineReaders = RecordingTest;

} // namespace

TEST(LineFields, SplitTrimAndFold)
{
    EXPECT_EQ(Split(SplitFields, "a,,b", 4), (Fields{"a", "", "b"}));
    // A full list drops the rest of the line; the last field ends at its own separator.
    EXPECT_EQ(Split(SplitFields, "1,IA,A,Feeder 1,A", 3), (Fields{"1", "IA", "A"}));
    EXPECT_EQ(Split(SplitFields, "x,y", 2), (Fields{"x", "y"}));
    // Fewer separators than room: the last field runs to the end, blanks and all.
    EXPECT_EQ(Split(SplitFields, "50 , 60 ", 4), (Fields{"50 ", " 60 "}));
    EXPECT_EQ(Split(SplitFields, "x", 0), Fields{});
    char *fields[2];
    EXPECT_EQ(SplitFields(nullptr, fields, 2, ','), 0);

    EXPECT_EQ(Split(SplitTrimmed, "a, b ,c", 4), (Fields{"a", "b", "c"}));
    EXPECT_EQ(Split(SplitTrimmed, " 1 , \t\r\n", 4), (Fields{"1", ""}));
    std::string text = " \t\r\nFeeder 1  bay\t\r\n";
    EXPECT_STREQ(TrimSpace(text.data()), "Feeder 1  bay");

    // Station names arrive in the recorder's local code page; bytes above 0x7F must survive.
    text = "ia \xB5\xE7\xC1\xF7 phase_b 1";
    ToUpperAscii(text.data());
    EXPECT_EQ(text, "IA \xB5\xE7\xC1\xF7 PHASE_B 1");
}

TEST(LineFields, ParseKeyLineSectionsKeysAndRefusedLines)
{
    auto parse = [](std::string text) {
        char *key = nullptr;
        char *value = nullptr;
        const int kind = ParseKeyLine(text.data(), key, value);
        return KeyText(kind, key, value);
    };
    EXPECT_EQ(parse("  [Public Record_Information]  "), "1 Public Record_Information");
    EXPECT_EQ(parse("[Head"), "1 Head");
    EXPECT_EQ(parse("[  ]  "), "0");
    EXPECT_EQ(parse(" Location = Bay 3 = spare "), "2 Location=Bay 3 = spare");
    // A key without a value does not exist: the reader keeps its default.
    EXPECT_EQ(parse("Key="), "0");
    EXPECT_EQ(parse("=Value"), "0");
    EXPECT_EQ(parse(" ab "), "0");
    EXPECT_EQ(parse("no equal sign"), "0");
}

TEST_F(LineReaders, ReadDataLineSkipsBlankAndCommentLinesButCountsThem)
{
    const std::string path = dir.write(
        "data.txt", {"// written by the recorder", "", "  Station A , 1 // bay", " \t", "a//b", "last line"},
        "\n", false);
    CDiskFile file;
    ASSERT_TRUE(file.Open(path.c_str(), "r"));
    char buffer[256];
    int size = sizeof buffer;
    int counter = 0;
    // "length text @line counter" of the next line, or "0 @counter" at the end.
    auto next = [&] {
        char *line = nullptr;
        const int length = ReadDataLine(file, counter, buffer, size, line);
        return std::to_string(length) + (length ? " " + std::string(line) : "") + " @" +
               std::to_string(counter);
    };
    EXPECT_EQ(next(), "13 Station A , 1 @3");
    // No way to quote "//": a value holding it is cut there.
    EXPECT_EQ(next(), "1 a @5");
    EXPECT_EQ(next(), "9 last line @6");
    EXPECT_EQ(next(), "0 @6");
    EXPECT_EQ(next(), "0 @6");

    // A line longer than the buffer arrives in pieces, each read as a line of its own.
    ASSERT_TRUE(file.Open(dir.write("long.txt", {"0123456789"}).c_str(), "r"));
    size = 8;
    counter = 0;
    EXPECT_EQ(next(), "7 0123456 @1");
    EXPECT_EQ(next(), "3 789 @2");
}

TEST_F(LineReaders, ReadKeyLineWalksSectionsAndSkipsUnusableLines)
{
    const std::string path =
        dir.write("rec.inf",
                  {"// exported settings", "ab", "[Public Record_Information", "Location=", "=Feeder 1",
                   "Source = Relay 7 // bay 3", "x", "a//=b", "[Private Notes]", "Last=1"},
                  "\r\n", false);
    CDiskFile file;
    ASSERT_TRUE(file.Open(path.c_str(), "r"));
    char buffer[256];
    int counter = 0;
    // "kind key=value @line counter" of the next usable line.
    auto next = [&] {
        char *key = nullptr;
        char *value = nullptr;
        const int kind = ReadKeyLine(file, counter, buffer, sizeof buffer, key, value);
        return std::to_string(kind) + (key ? " " + std::string(key) : "") +
               (value ? "=" + std::string(value) : "") + " @" + std::to_string(counter);
    };
    EXPECT_EQ(next(), "1 Public Record_Information @3");
    EXPECT_EQ(next(), "2 Source=Relay 7 @6");
    EXPECT_EQ(next(), "1 Private Notes @9");
    EXPECT_EQ(next(), "2 Last=1 @10");
    EXPECT_EQ(next(), "3 @10");
}

TEST_F(DiskFile, ClosedFileRefusesEverything)
{
    CDiskFile file;
    char buffer[8] = "stale";
    EXPECT_EQ(file.Close(), 0);
    EXPECT_FALSE(file.Read(buffer, 0));
    EXPECT_FALSE(file.Write(buffer, 0));
    EXPECT_EQ(file.ReadSome(buffer, 4), -1);
    EXPECT_EQ(file.WriteSome(buffer, 4), -1);
    EXPECT_EQ(file.Seek(0, SEEK_SET), -1);
    EXPECT_EQ(file.GetLength(), -1);
    EXPECT_EQ(file.Tell(), -1);
    EXPECT_TRUE(file.IsEof());
    EXPECT_EQ(file.Gets(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "");
    file.Printf("%d", 1);
    file.NewLine();
}

TEST_F(DiskFile, WritesReadsSeeksAndKeepsPositionOnGetLength)
{
    const std::string path = dir.path("rec.dat");
    CDiskFile file;
    ASSERT_TRUE(file.Open(path.c_str(), "wb"));
    EXPECT_TRUE(file.Write("hello", 5));
    EXPECT_TRUE(file.Write("", 0));
    EXPECT_FALSE(file.Write("x", -1));
    file.NewLine();
    file.Printf("%03d", 42);
    EXPECT_EQ(file.WriteSome("!", 1), 1);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(dir.read("rec.dat"), "hello\r\n042!");

    ASSERT_TRUE(file.Open(path.c_str(), "rb"));
    char buffer[64] = {};
    EXPECT_TRUE(file.Read(buffer, 0));
    EXPECT_FALSE(file.Read(buffer, -1));
    EXPECT_EQ(file.ReadSome(buffer, 0), 0);
    EXPECT_EQ(file.Seek(3, SEEK_SET), 0);
    EXPECT_EQ(file.Tell(), 3);
    EXPECT_EQ(file.GetLength(), 11);
    EXPECT_EQ(file.Tell(), 3);
    EXPECT_EQ(file.Seek(-1, SEEK_SET), -1);
    EXPECT_EQ(file.SeekToEnd(), 3);
    EXPECT_FALSE(file.IsEof()) << "the end flag is set by a read, not by a seek";
    EXPECT_EQ(file.SeekToBegin(), 11);
    EXPECT_EQ(file.Gets(buffer, sizeof buffer), 7);
    EXPECT_STREQ(buffer, "hello\r\n");
    EXPECT_FALSE(file.Read(buffer, 10)) << "only four bytes are left";
    EXPECT_TRUE(file.IsEof());
    EXPECT_EQ(file.Gets(buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "");

    // A long recording goes through in several pieces and must come back byte for byte.
    std::string big(5 * 1024 * 1024 / 2, 0);
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 7 + i / 4096);
    ASSERT_TRUE(file.Open(path.c_str(), "wb"));
    EXPECT_TRUE(file.Write(big.data(), static_cast<int>(big.size())));
    ASSERT_TRUE(file.Open(path.c_str(), "rb"));
    EXPECT_EQ(file.GetLength(), static_cast<int64_t>(big.size()));
    std::string back(big.size(), 0);
    EXPECT_TRUE(file.Read(back.data(), static_cast<int>(back.size())));
    EXPECT_TRUE(back == big);
    EXPECT_EQ(file.SeekToBegin(), static_cast<int64_t>(big.size()));
    EXPECT_EQ(file.ReadSome(back.data(), static_cast<int>(back.size()) + 10), static_cast<int>(big.size()))
        << "a short read stops and reports what it got";
}

TEST_F(DiskFile, OpenAndAttachCloseTheOldStreamDetachDoesNot)
{
    const std::string first = dir.path("first.cfg");
    const std::string second = dir.path("second.cfg");
    CDiskFile file;
    ASSERT_TRUE(file.Open(first.c_str(), "w"));
    file.Printf("first");
    // The text still sits in the stream's buffer; only a close gets it to the disk.
    ASSERT_TRUE(file.Open(second.c_str(), "w"));
    EXPECT_EQ(dir.read("first.cfg"), "first");

    file.Printf("second");
    ASSERT_TRUE(file.Attach(std::fopen(first.c_str(), "a")));
    EXPECT_EQ(dir.read("second.cfg"), "second");

    FILE *stream = file.Detach();
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_GT(std::fputs("+", stream), -1) << "a detached stream stays open";
    std::fclose(stream);
    EXPECT_EQ(dir.read("first.cfg"), "first+");
    EXPECT_FALSE(file.Open(dir.path("missing/x.cfg").c_str(), "r"));
    EXPECT_FALSE(file.IsOpen());
}
