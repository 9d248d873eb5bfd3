#pragma once

// The status event list of a recording: every change of state of every status channel, in the
// order the engineer reads a sequence of events (relay trips, breaker openings, reclosing), with
// its time against a chosen base point. The list form and the command-line tool build it from
// the change lists that the status stores hold after a load, so contact bounces shorter than two
// samples are already gone from it.

#include "cmtd99file.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

// One change of state of one status channel.
struct StatusEvent
{
    int32_t sample = 0;
    int64_t timeUs = 0;  // from the first sample of the recording
    int32_t channel = 0; // position among the recording's status stores
    int32_t index = 0;   // the channel's own number (Dn)
    QByteArray name;     // the name shown, in the recording's 8-bit text
    uint8_t state = 0;   // the new state, 0 or 1
};

// The base point of the delta times; the values are those of the options' `statusTimeBase`.
enum StatusTimeBase : int32_t
{
    StatusBaseCustomT0 = 0, // T0', the engineer's own zero
    StatusBaseTripT0 = 1,   // T0, the trigger of the recording
    StatusBaseT1 = 2,       // a sample: the T1 cursor, followed as it moves
    StatusBaseT1Fixed = 3   // a sample: the T1 cursor where it stood when the base was chosen
};

// The form of the delta times; the values are those of the options' `statusTimeFormat`.
enum StatusTimeFormat : int32_t
{
    StatusTimeMsUs = 0,    // "ms.us"
    StatusTimeMinSecUs = 1 // "mm:ss.us"
};

// The time of `sample` in microseconds from the first sample. The recording's own sample times
// are used, so the rate segments of a multi-rate recording and any stamps the recorder wrote
// count as loaded. 0 outside the loaded samples.
int64_t SampleTimeFromStart(const CCmtd99File &file, int sample);

// All changes of state in time order; equal times by sample, then by channel order.
std::vector<StatusEvent> CollectStatusEvents(const CCmtd99File &file);

// The time of a base point in microseconds from the first sample: the trigger for T0, the
// sample `customT0` for T0', `sample` for the cursor bases. False when the recording has no
// such point (no T0' set, a sample outside the loaded ones, no samples at all).
bool StatusBaseTime(const CCmtd99File &file, StatusTimeBase base, int sample, int64_t &timeUs);

// The delta text of the list: the shortest "mm:ss.us" or the "ms.us" form.
QByteArray StatusDeltaText(int64_t deltaUs, StatusTimeFormat format);
