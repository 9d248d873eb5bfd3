#pragma once

// The worker's side of a virtual channel derived from one channel (jobs 3 to 9): the dialog's
// parameters, the default name the dialog proposes, what the new channel's description becomes
// beyond the copy of its source's, and the curve itself with the worker's progress and stop.

#include <QString>

#include <cstdint>

class CCmtd99File;
class CChnMapAnalog;
class SeriesProgress;

// Job numbers of the worker.
enum SeriesJobKind
{
    SeriesJobDelta = 3,
    SeriesJobAverage = 4,
    SeriesJobHarmonic = 5,
    SeriesJobHamming = 6,
    SeriesJobOnePointDiff = 7,
    SeriesJobFreqZeroCross = 8,
    SeriesJobFreqDft = 9
};

// What a dialog hands to the worker; each kind reads its own fields.
struct SeriesJobParams
{
    int32_t kind = SeriesJobDelta;
    int32_t mode = 0;     // delta: 0 (MN), 1 (0N), 2 (NN)
    int32_t part = 0;     // harmonic: 0 effective, 1 real, 2 imaginary
    int32_t order = 1;    // harmonic: 0 for the DC part
    float endFreq = 5.0f; // Hamming filter, Hz
    int32_t length = 32;  // Hamming filter, points
};

// The new channel's description where it differs from its source's.
struct SeriesJobTraits
{
    float ratedFreq = 0.0f; // the rated-frequency field
    int16_t chnClass = 0;
    bool ac = false;     // periodic: has phasors
    bool direct = false; // the samples are the values shown
};

SeriesJobTraits SeriesJobResultTraits(const CChnMapAnalog &source, const SeriesJobParams &params);
// The name the dialog proposes while "Rename Channel" is off.
QString SeriesJobDefaultName(const QString &sourceName, const SeriesJobParams &params);
// Writes the curve of `source` into `y` (SeriesLength values, zeros where the job writes
// nothing). False when it was stopped or could not have its work array; `y` keeps what was
// written.
bool RunSeriesJob(const CCmtd99File &file, const CChnMapAnalog &source, const SeriesJobParams &params,
                  float *y, SeriesProgress *progress = nullptr);
