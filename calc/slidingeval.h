#pragma once

class CCmtd99File;
struct ComplexD;

// The frame in which a whole curve is made from one-cycle windows: segment by segment, each
// sample gets the value of the window that belongs to it; stretches too slow for a window,
// and the tail that no window reaches, are filled by a hold rule. Derived series (frequency,
// filters, power, impedance) and the expression functions all run in this frame.

enum class HoldRule
{
    Zero,
    Last
};

// The value of one window: `samples` points at the window's first sample.
using WindowValueFn = float (*)(void *context, const float *samples, int n, int step);

// Fills `out` (one value per loaded sample of `file`) from the samples of one channel, with
// windows of one cycle of `freq`.
void SlidingEvaluate(const CCmtd99File &file, float freq, const float *samples, int sampleCount, float *out,
                     HoldRule hold, WindowValueFn fn, void *context);

// The fundamental phasor at every sample: `out` receives one phasor per loaded sample, the
// phasor of the window that the sample's cursor would use (zero where none).
void PhasorSeries(const CCmtd99File &file, float freq, const float *samples, int sampleCount, ComplexD *out);
