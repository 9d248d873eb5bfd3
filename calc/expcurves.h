#pragma once

// The curves that only the expression language makes: the average over a window given in
// points, the time shift of a curve with interpolation, the phase difference of two channels,
// and the test waves (sine, step, decay) with the splice of one channel into another. Each
// writes into `y`, an array of the recording's length that begins as the result's copy of its
// source (zeros for the test waves); samples a curve does not reach keep what they hold.

#include "seriesframe.h"

// avg(x, n): the plain mean over a window of `points` samples at the fastest rate of the
// recording, the same time span in every segment; a segment whose window is below one sample
// keeps the source. The tail holds.
void AverageWindowSeries(const CCmtd99File &file, const SeriesSource &source, double points, float *y);

// dtms(x, t, m): the curve moved by `ms` milliseconds (later when positive), interpolated
// through three samples by the method numbered `method` (0 Hermite, 2 Newton, 3 line, other
// Lagrange parabola). The samples before the shifted start are zero.
void TimeShiftSeries(const CCmtd99File &file, const SeriesSource &source, double ms, int method, float *y);

// phsd(c1, c2): the angle of c1's base wave less that of c2's, in degrees from 0 to 360, on the
// windows of c1. Slow segments are zero, the tail holds.
void PhaseDifferenceSeries(const CCmtd99File &file, const SeriesSource &c1, const SeriesSource &c2, float *y);

// The sample range of the test waves from 1-based numbers: a start outside the recording is the
// first sample, an end outside it the last. False when the recording has no samples.
bool WaveRange(const CCmtd99File &file, double start, double end, int &first, int &last);
// sin(2π·f·dt + a) over the range, dt from its first sample; `f` outside 0 to 5000 Hz is 50.
// Returns the frequency used.
double SineWave(const CCmtd99File &file, double start, double end, double degrees, double f, float *y);
// 1 over the range.
void StepWave(const CCmtd99File &file, double start, double end, float *y);
// exp(-dt / τ) over the range, τ = `ms` milliseconds and at least 1 µs.
void DecayWave(const CCmtd99File &file, double start, double end, double ms, float *y);
// Samples start .. end of `c1` written over `y` from sample `after` on (1-based numbers; a start
// or insertion point outside is the first sample, an end outside the last), as far as `count`.
void SpliceWave(const SeriesSource &c1, double start, double end, double after, int count, float *y);
