#pragma once

// Recordings that the benchmarks build in memory, too large to write and read for each run: one
// sampling rate over the whole length, and analog channels filled from a function of the sample.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"

#include <cstdint>
#include <functional>
#include <memory>

// `points` samples at `rate`, as a load leaves them; with sample times in microseconds from
// `firstUs` when asked.
inline void setOneRate(CCmtd99File &file, int points, float rate, bool withTimes = false, int64_t firstUs = 0)
{
    SampleSegment segment;
    segment.index = 1;
    segment.rate = rate;
    segment.end = points;
    file.segments.push_back(segment);
    file.pointCount = file.loadedPoints = points;
    if (!withTimes)
        return;
    file.sampleTimes = static_cast<int64_t *>(AllocateSamples(size_t(points), sizeof(int64_t)));
    const double stepUs = 1.0e6 / double(rate);
    for (int n = 0; n < points; ++n)
        file.sampleTimes[n] = firstUs + int64_t(double(n) * stepUs);
}

// Appends an analog channel `name` in `unit` (and of `phase`, "A", "B", "C", when given) whose
// sample n is value(n), over the recording's length.
inline CChnMapAnalog &addMemoryChannel(CCmtd99File &file, const QByteArray &name, const char *unit,
                                       const std::function<float(int)> &value, const char *phase = nullptr)
{
    auto record = std::make_unique<CmtdChn_Analog>();
    record->Reset(int(file.analogChannels.size()) + 1);
    file.firstFreeChannelIndex = int16_t(record->index + 1); // a channel of the file, not a derived one
    record->ch_id = name;
    record->uu = unit;
    if (phase) {
        record->ph = phase;
        record->flags |= CmtdChn_Analog::PhaseGiven;
    }
    file.analogChannels.push_back(std::move(record));
    auto map = std::make_unique<CChnMapAnalog>(file.analogChannels.back().get());
    map->allocate(file.loadedPoints);
    float *v = map->Values();
    for (int n = 0; n < file.loadedPoints; ++n)
        v[n] = value(n);
    map->RecalcExtremes();
    file.analogMaps.push_back(std::move(map));
    return *file.analogMaps.back();
}
