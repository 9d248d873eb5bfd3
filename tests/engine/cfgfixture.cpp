#include "cfgfixture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>

namespace {

// Recorders stamp in their own local time and the reader hands the stamps to mktime. Pin the
// zone so that the expected instants do not depend on the machine that runs the suite.
class UtcZone : public ::testing::Environment
{
public:
    void SetUp() override
    {
        // VELDRIX_TEST_TZ runs the same tests in a zone with daylight saving instead.
        const char *zone = std::getenv("VELDRIX_TEST_TZ");
        setenv("TZ", zone && *zone ? zone : "UTC", 1);
        tzset();
    }
};
[[maybe_unused]] ::testing::Environment *const utcZone = ::testing::AddGlobalTestEnvironment(new UtcZone);

} // namespace

std::string TempRecording::path(const char *name) const
{
    return dir.filePath(QString::fromUtf8(name)).toStdString();
}

std::string TempRecording::write(const char *name, const std::vector<std::string> &lines, const char *eol,
                                 bool lastLineEnded) const
{
    const std::string full = path(name);
    std::ofstream out(full, std::ios::binary);
    for (size_t i = 0; i < lines.size(); ++i) {
        out << lines[i];
        if (lastLineEnded || i + 1 < lines.size())
            out << eol;
    }
    return full;
}

std::string TempRecording::writeBytes(const char *name, const std::string &bytes) const
{
    const std::string full = path(name);
    std::ofstream(full, std::ios::binary) << bytes;
    return full;
}

std::string TempRecording::read(const char *name) const
{
    std::ifstream in(path(name), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> RecordingConfig(const std::vector<std::string> &analogLines, int statuses,
                                         const std::vector<std::string> &rates, const char *ft,
                                         const char *timeMult)
{
    const int analogs = static_cast<int>(analogLines.size());
    std::vector<std::string> lines = {"S,R,1999", std::to_string(analogs + statuses) + "," +
                                                      std::to_string(analogs) + "A," +
                                                      std::to_string(statuses) + "D"};
    lines.insert(lines.end(), analogLines.begin(), analogLines.end());
    for (int d = 1; d <= statuses; ++d)
        lines.push_back(std::to_string(d) + ",D" + std::to_string(d) + ",,,0");
    lines.insert(lines.end(), {"50", std::to_string(rates.size())});
    lines.insert(lines.end(), rates.begin(), rates.end());
    lines.insert(lines.end(), {"01/02/2024,10:00:00.000000", "01/02/2024,10:00:00.100000", ft, timeMult});
    return lines;
}

std::vector<std::string> MessageLines(const LoadMessageList &messages)
{
    std::vector<std::string> lines;
    for (const LoadMessage &message : messages)
        lines.push_back(std::to_string(message.line) + ": " + message.text.toStdString());
    return lines;
}

const std::vector<std::string> kInfPairCfg = {
    "Substation A,Relay 7,1999",
    "3,2A,1D",
    "1,IA,A,,A,0.25,0.5,,-32767,32767,600,1,S",
    "2,UX,,,Hz,1,0,,-100,100,1,1,S",
    "1,Trip,,,1",
    "50",
    "1",
    "1000,200",
    "15/03/2021,10:20:30.000123",
    "15/03/2021,10:20:30.100123",
    "ascii",
    "1",
};

bool InfPairTest::Load(const std::vector<std::string> &inf, const std::vector<std::string> &cfg)
{
    if (!cfg.empty())
        dir.write("rec.cfg", cfg, "\r\n");
    dir.write("rec.inf", inf, "\r\n");
    return rec.LoadFile(dir.path("rec.cfg").c_str());
}
