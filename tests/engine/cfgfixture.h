#pragma once

#include "cmtdtypes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

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
    // The whole file as bytes, for comparing what a writer produced.
    std::string read(const char *name) const;

private:
    QTemporaryDir dir;
};

// A message list as "line: text" strings, so that a failing comparison prints readably.
std::vector<std::string> MessageLines(const LoadMessageList &messages);

// Base of the tests that read and write files: each test gets its own scratch folder.
class RecordingTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    TempRecording dir;
};
