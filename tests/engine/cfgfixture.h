#pragma once

#include "cmtd99file.h"
#include "cmtdtypes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

// A scratch folder in which a test writes the small recordings it reads, so that each test
// shows exactly the text that it feeds to the reader. The folder goes away with the object.
class TempRecording
{
public:
    bool isValid() const { return dir.isValid(); }
    // Full path of `name` inside the folder.
    std::string path(const char *name) const;
    // Writes `lines`, each ended by `eol` (the last one too unless `lastLineEnded` is false), and
    // returns the full path. Recorders on Windows end their lines with "\r\n".
    std::string write(const char *name, const std::vector<std::string> &lines, const char *eol = "\n",
                      bool lastLineEnded = true) const;
    // Writes `bytes` as they are (a binary data file, a single-file recording); the full path.
    std::string writeBytes(const char *name, const std::string &bytes) const;
    // The whole file as bytes, for comparing what a writer produced; empty when there is none.
    std::string read(const char *name) const;

private:
    QTemporaryDir dir;
};

// Appends `value` as the little-endian bytes that binary data files hold (number, stamp, samples).
template <typename T> void PutLE(std::string &out, T value)
{
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.append(bytes, sizeof value);
}

// Reads the description and then the samples of the recording at `path`; true when both load.
inline bool LoadRecording(CCmtd99File &file, const std::string &path)
{
    return file.LoadFile(path.c_str()) && file.LoadDat(path.c_str(), nullptr, nullptr);
}

// A 1999 ".cfg" of the given analog lines, `statuses` status channels "D1", "D2" ... and rate
// lines, its start 100 ms before the trigger.
std::vector<std::string> RecordingConfig(const std::vector<std::string> &analogLines, int statuses,
                                         const std::vector<std::string> &rates, const char *ft = "BINARY",
                                         const char *timeMult = "1");

// A message list as "line: text" strings, so that a failing comparison prints readably.
std::vector<std::string> MessageLines(const LoadMessageList &messages);

// Base of the tests that read and write files: each test gets its own scratch folder.
class RecordingTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    TempRecording dir;
};

// The ".cfg" of the extension-file suites: two analog channels (a current with ratio 600 / 1, no
// ccbm, no skew, and a frequency channel) and one status channel, 1999 revision.
extern const std::vector<std::string> kInfPairCfg;

// Base of the extension-file suites: writes a recording's ".cfg" and ".inf" and loads it.
class InfPairTest : public RecordingTest
{
protected:
    // Writes `inf` beside `cfg` (none when empty, for an ".inf" that stands in for it) and loads.
    bool Load(const std::vector<std::string> &inf, const std::vector<std::string> &cfg = kInfPairCfg);
    CCmtd99File rec;
};
