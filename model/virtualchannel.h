#pragma once

// Channels that exist only in the program: an analog record and store like a file's channel,
// computed from another channel rather than read. They stand behind the file's channels in the
// recording's lists, their indexes at or above `firstFreeChannelIndex`, and no writer puts them
// on disk.

#include "cmtd99file.h"

#include <QByteArray>
#include <QString>

struct SeriesJobParams;

// The virtual channel `name`: an existing virtual channel of that name is taken again as it
// stands; a name of a file's channel gets " Virtual Channel" (translated) appended; otherwise a
// new record (index: the next free virtual index) and map with a zeroed array of the recording's
// length, appended to the recording's lists. Null with "Memory is not enough to create virtual
// channel!" in `message` when the array cannot be had. Not while the samples are being read:
// the loader walks the lists this appends to.
CChnMapAnalog *MakeVirtualChannel(CCmtd99File &file, const QByteArray &name, QString &message);

// The description the new channel takes from its source when the dialog is accepted (flags word,
// kind texts, unit text, coefficients and range fields, primary/secondary mark, phase, rated
// frequency), then what the job changes (SeriesJobResultTraits), with the map's derived fields
// (class, unit, phase, periodic/direct) made anew; `deviceIndex` = the source's real channel.
void DescribeVirtualChannel(CChnMapAnalog &target, const CChnMapAnalog &source,
                            const SeriesJobParams &params);

// Takes a virtual channel out of the recording (record and map, and the notes pinned to it);
// false for a file's channel or one that is not there. Not while a job runs.
bool RemoveVirtualChannel(CCmtd99File &file, CChnMapAnalog *map);

// Takes every virtual channel out: they do not outlive the samples they were computed from.
void RemoveAllVirtualChannels(CCmtd99File &file);

// The outer form of jobs 3 to 9 on the worker: the target's extent reset, the curve of `source`
// written into the target's own array with the report rule (report/owner as LoadDat gets them),
// then the extent recomputed and the flag bits from 0x80 upward cleared. A recording without
// samples does only the closing steps. False when stopped (the samples computed so far stay).
// The recording's channel ordering (its scale groups) is redone by the caller when the job has
// ended, on the interface thread: the views read the groups while a job runs.
bool RunVirtualChannelJob(CCmtd99File &file, CChnMapAnalog &target, const CChnMapAnalog &source,
                          const SeriesJobParams &params, ProgressFn report, void *owner);
