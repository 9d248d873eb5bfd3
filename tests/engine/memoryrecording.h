#pragma once

// A recording built in memory for the phasor suites: rate segments and analog channels of
// given samples, and the program-wide phasor switches put back around each test.

#include "cmtd99file.h"
#include "globalsettings.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

// `count` samples at `rate` of dc + amplitude · sin(2π · freq · t + degrees).
inline std::vector<float> Sine(int count, double rate, double amplitude, double degrees = 0.0,
                               double freq = 50.0, double dc = 0.0)
{
    std::vector<float> x(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        x[size_t(i)] =
            static_cast<float>(dc + amplitude * std::sin(2 * M_PI * freq * i / rate + degrees * M_PI / 180));
    return x;
}

// A recording built in memory: one or more rate segments and analog channels of given samples.
class MemoryRecording
{
public:
    explicit MemoryRecording(std::vector<std::pair<float, int>> rates)
    {
        int start = 0;
        for (size_t i = 0; i < rates.size(); ++i) {
            SampleSegment s;
            s.index = static_cast<int16_t>(i + 1);
            s.rate = rates[i].first;
            s.start = start;
            s.end = rates[i].second;
            start = s.end;
            file.segments.push_back(s);
        }
        file.pointCount = file.loadedPoints = start;
        file.firstFreeChannelIndex = 100;
    }

    CChnMapAnalog &add(const std::vector<float> &values, const char *unit = "V", float ratedFreq = 50.0f)
    {
        auto record = std::make_unique<CmtdChn_Analog>();
        record->Reset(static_cast<int>(file.analogChannels.size()) + 1);
        record->ch_id = "UA";
        record->uu = unit;
        record->ratedFreq = ratedFreq;
        record->flags |= CmtdChn_Analog::RatedFreqGiven;
        file.analogChannels.push_back(std::move(record));
        auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
        map->allocate(static_cast<int>(values.size()));
        std::copy(values.begin(), values.end(), map->Values());
        file.analogMaps.push_back(std::move(map));
        return *file.analogMaps.back();
    }

    CCmtd99File file;
};

// Sample times in microseconds, one segment after the other.
inline void SetSampleTimes(CCmtd99File &file)
{
    file.sampleTimes = static_cast<int64_t *>(std::malloc(sizeof(int64_t) * size_t(file.loadedPoints)));
    double t = 0.0;
    int first = 0;
    for (const SampleSegment &s : file.segments) {
        for (int i = first; i < s.end; ++i, t += 1e6 / s.rate)
            file.sampleTimes[i] = static_cast<int64_t>(std::llround(t));
        first = s.end;
    }
}

// Every test starts and ends with the default method, window and no phase compensation.
class PhasorSwitchesRestored : public ::testing::Test
{
protected:
    void SetUp() override { Restore(); }
    void TearDown() override { Restore(); }
    static void Restore()
    {
        dftMethod = 0;
        dftWin = 0;
        PhComp = false;
    }
};
