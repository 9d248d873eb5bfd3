#include "statusevents.h"

#include "timetext.h"

#include <algorithm>

namespace {

bool hasSample(const CCmtd99File &file, int sample)
{
    return file.sampleTimes && sample >= 0 && sample < file.loadedPoints;
}

} // namespace

int64_t SampleTimeFromStart(const CCmtd99File &file, int sample)
{
    if (!hasSample(file, sample))
        return 0;
    return file.sampleTimes[sample] - file.sampleTimes[0];
}

std::vector<StatusEvent> CollectStatusEvents(const CCmtd99File &file)
{
    std::vector<StatusEvent> events;
    if (!file.sampleTimes || file.loadedPoints < 1)
        return events;
    size_t total = 0;
    for (const auto &map : file.statusMaps)
        total += map->changes.size();
    events.reserve(total);
    for (size_t c = 0; c < file.statusMaps.size(); ++c) {
        const CChnMapStatus &map = *file.statusMaps[c];
        for (const StatusChange &change : map.changes) {
            if (!hasSample(file, change.sample))
                continue;
            StatusEvent event;
            event.sample = change.sample;
            event.timeUs = SampleTimeFromStart(file, change.sample);
            event.channel = static_cast<int32_t>(c);
            event.index = map.Index();
            event.name = map.Name();
            event.state = change.value ? 1 : 0;
            events.push_back(std::move(event));
        }
    }
    // Recorders with stamps that step back can put a later sample at an earlier time; the list
    // follows the times.
    std::sort(events.begin(), events.end(), [](const StatusEvent &a, const StatusEvent &b) {
        if (a.timeUs != b.timeUs)
            return a.timeUs < b.timeUs;
        if (a.sample != b.sample)
            return a.sample < b.sample;
        return a.channel < b.channel;
    });
    return events;
}

bool StatusBaseTime(const CCmtd99File &file, StatusTimeBase base, int sample, int64_t &timeUs)
{
    if (!hasSample(file, 0))
        return false;
    switch (base) {
    case StatusBaseTripT0:
        // Sample times count from the trigger, whether or not a sample falls on it.
        timeUs = -file.sampleTimes[0];
        return true;
    case StatusBaseCustomT0:
        sample = file.customT0;
        break;
    case StatusBaseT1:
    case StatusBaseT1Fixed:
        break;
    default:
        return false;
    }
    if (!hasSample(file, sample))
        return false;
    timeUs = SampleTimeFromStart(file, sample);
    return true;
}

QByteArray StatusDeltaText(int64_t deltaUs, StatusTimeFormat format)
{
    return format == StatusTimeMsUs ? TimeTextMs(deltaUs) : TimeText(deltaUs);
}
