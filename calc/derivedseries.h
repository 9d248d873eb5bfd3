#pragma once

// Whole curves derived from one channel, sample for sample: the delta (fault change) curves,
// the moving average, the harmonic curve, the Hamming-window and one-point-difference filters.
// They run on the frame's worker to make virtual channels, and the expression language calls
// the same functions. Each writes `SeriesLength(file, source)` values into `y` (zero where it
// writes nothing else), works rate segment by rate segment, and gives false only when the
// progress asked it to stop or a work array could not be had; the curve then keeps what was
// written.

#include "seriesframe.h"

// Delta modes, as the dialog offers them.
enum DeltaMode
{
    DeltaNextMinusCurrent = 0, // "(MN)": a cycle less the cycle before
    DeltaAllMinusFirst = 1,    // "(0N)": every cycle less the segment's first
    DeltaHalfCycleSum = 2      // "(NN)": a half cycle plus the half cycle before
};

// Parts of the harmonic curve.
enum HarmonicPart
{
    HarmonicEffective = 0,
    HarmonicReal = 1,
    HarmonicImaginary = 2
};

// The delta curve; the head of each segment (one cycle, half a cycle for mode 2) stays zero.
bool DeltaSeries(const CCmtd99File &file, const SeriesSource &source, int mode, float *y,
                 SeriesProgress *progress = nullptr);

// The mean over one cycle of the rated frequency at every sample; slow segments and the tail
// hold.
bool AverageSeries(const CCmtd99File &file, const SeriesSource &source, float *y,
                   SeriesProgress *progress = nullptr);

// The curve of harmonic `order` (0 for the DC part) on windows of 20 ms whatever the rated
// frequency: its effective value, or its real or imaginary part continued as a sine wave
// behind the last window of a segment.
bool HarmonicPartSeries(const CCmtd99File &file, const SeriesSource &source, int order, int part, float *y,
                        SeriesProgress *progress = nullptr);

// The low-pass taps of a Hamming-windowed sinc, `length` of them, normalised to a DC gain of
// one. A length of 1 gives not-a-number taps.
void HammingCoefficients(float rate, int length, float endFreq, float *h);

// The causal Hamming-window filter, its taps renewed for each segment's rate; the lead-in of
// a segment is the mean of its first `length` samples.
bool HammingFilterSeries(const CCmtd99File &file, const SeriesSource &source, float endFreq, int length,
                         float *y, SeriesProgress *progress = nullptr);
// The expression function's form: an end frequency outside 0.1 to 1000 Hz becomes 5 Hz, a
// length below 1 becomes 8 and one above 1000 becomes 32.
bool HammingFunctionSeries(const CCmtd99File &file, const SeriesSource &source, double endFreq, double length,
                           float *y);

// The one-point-difference filter scaled back to the amplitude of the base wave; below ten
// points per cycle it passes its input. `firstFromSecond` is the worker's form, whose very
// first sample repeats the second.
bool OnePointDiffSeries(const CCmtd99File &file, const SeriesSource &source, bool firstFromSecond, float *y,
                        SeriesProgress *progress = nullptr);
