#pragma once

// Frequency curves of one channel: the signal frequency measured between rising zero crossings
// and the base frequency from the phase step between two adjacent DFT cycles. Both hold the
// last accepted value where a measurement fails or jumps, so that a curve begins at the rated
// frequency and moves by at most 2% from one sample to the next.

#include "seriesframe.h"

#include <cstdint>

// The frequency of the cycle around sample `index` from its rising zero crossings, in Hz; 0
// where the segment is too short, the channel is no AC voltage or current, its level is below
// 5 V or 0.1 A, no crossings are found, or the result lies outside 0.1 to 10 times the rated
// frequency. `times` are the sample times in microseconds.
double ZeroCrossFreq(const int64_t *times, const RateSegment &segment, const SeriesSource &chn, int index,
                     int n);
// The measurement, or `held` where it fails or jumps by more than 2% of `held`.
float ZeroCrossFilter(const int64_t *times, const RateSegment &segment, const SeriesSource &chn, int index,
                      int n, float held);

// One estimate of the frequency from the phase step between the cycle at `x` and the one after
// it (rectangle-cosine kernel always), around `base`. Accurate only near the base frequency.
double TwoCycleFreq(const float *x, int n, int step, double base);
// The accepted base frequency of the two cycles from `index`: the estimate, or `held` where it
// fails, jumps by more than 2% or lies more than 10% off the rated frequency. An estimate more
// than 1% off runs a second pass over the two cycles resampled into `scratch`, which holds at
// least two cycles of this segment.
float DftInsertFreq(const int64_t *times, const RateSegment &segment, const SeriesSource &chn, int index,
                    int total, float held, float *scratch);

// The frequency curves. Each writes SeriesLength(file, source) values into `y`; false when the
// progress asked to stop (or the work array could not be had).
bool ZeroCrossFreqSeries(const CCmtd99File &file, const SeriesSource &source, float *y,
                         SeriesProgress *progress = nullptr);
bool DftInsertFreqSeries(const CCmtd99File &file, const SeriesSource &source, float *y,
                         SeriesProgress *progress = nullptr);
