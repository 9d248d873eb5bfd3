#pragma once

#include "complexd.h"

#include <cstdint>

class CCmtd99File;
class CChnMapAnalog;

// The numeric primitives of all analysis: the one-cycle Fourier transform over a window of
// samples, where that window lies for a sample, the effective values, and the phase
// compensation of instrument transformers. Nothing keeps state between calls: every phasor is
// computed on demand from the channel's samples. Options (dftMethod, dftWin, PhComp) are read
// at each call.

// A stretch of the recording at one sampling rate.
struct RateSegment
{
    float rate = 0.0f; // Hz
    int32_t first = 0; // first sample
    int32_t end = 0;   // one past the last sample
};

// Result codes of the value functions.
enum PhasorCode
{
    NoValue = 0,
    PhasorValue = 1,
    EffectiveValue = 2,
    MeanValue = 4
};

// The channel's rated frequency, 50 where it is below 1 Hz (or not a number).
float RatedFreq(const CChnMapAnalog &chn);
// Points per cycle: trunc(rate / freq + 0.5) in 64-bit floats.
int PointsPerCycle(float rate, float freq);
// Points of a 50 Hz cycle, whatever the rated frequency: trunc(rate × 0.02 + 0.5), the 20 ms in
// a 32-bit float.
int Cycle50Points(float rate);
// Decimation: every sample up to 399 points per cycle, every second from 400, and so on.
inline int DecimationStep(int n)
{
    return n / 200 > 1 ? n / 200 : 1;
}

// One-cycle transform of `count` samples from `samples`, harmonic `harmonic`, every `step`th
// sample, by the kernel that the option dftMethod names.
ComplexD DftPhasor(const float *samples, int count, int harmonic, int step);
// The same with the kernel given (0 rectSin, 1 rectCos, 2 trapSin, 3 trapCos; others 0).
ComplexD DftPhasorMethod(int method, const float *samples, int count, int harmonic, int step);
// The phasors of `channels` channels (at most kDftBatch) over windows of the same length:
// out[c] is exactly what DftPhasor(samples[c], count, harmonic, step) gives. The sums of the
// channels run side by side in one pass over the window, which is several times faster than
// one channel after the other when three voltages and three currents are taken at every sample.
constexpr int kDftBatch = 12;
void DftPhasors(const float *const *samples, int channels, int count, int harmonic, int step, ComplexD *out);
// The effective value of a phasor: sqrt((re² + im²) / 2).
double Effective(const ComplexD &phasor);

int DftWindowShift(int n);
int DftWindowStart(int index, int n, const RateSegment &segment, int total);
bool SegmentUsable(const RateSegment &segment);

// The segment that holds `index` (the first whose end lies beyond it); false when none.
bool FindRateSegment(const CCmtd99File &file, int index, RateSegment &segment);
// Finds the segment of `index` and moves `index` to its window start. `n` and `step` stay 0
// where the segment is not usable; false when there is no segment at all.
bool SegmentWindow(const CCmtd99File &file, float freq, int &index, int &n, int &step, RateSegment &segment);
// SegmentWindow on the channel's rated frequency; an index of a channel that is not AC stays.
bool ChnSegmentWindow(const CCmtd99File &file, const CChnMapAnalog &chn, int &index, int &n, int &step,
                      RateSegment &segment);
int ChnWindowStart(const CCmtd99File &file, float freq, int index);

// The fundamental at the window starting at `index` (moved to the start used). Returns 1 for a
// phasor, 4 where the rate is too low and a mean stands in, 0 for no value.
int BasePhasorAt(const CCmtd99File &file, const RateSegment *segment, const CChnMapAnalog *chn, int &index,
                 ComplexD &out);
// BasePhasorAt for `count` channels at one cursor window: out[c] and codes[c] are exactly what
// BasePhasorAt gives channel c (a null channel has no value). Channels that share a window are
// transformed side by side in one pass. `gapFree` (optional, per channel) marks channels known
// to hold no missing sample, whose windows need no scan for one: a job over every sample finds
// that out once (HoldsNoGap) instead of once per window.
void BasePhasorsAt(const CCmtd99File &file, const RateSegment *segment, const CChnMapAnalog *const *chns,
                   int count, int index, ComplexD *out, int *codes, const bool *gapFree = nullptr);
// No sample of the channel is missing (not a number).
bool HoldsNoGap(const CChnMapAnalog &chn);
// The true (all-harmonics) effective value of one cycle; 2, or 0 for no value.
int RealEffectiveAt(const CCmtd99File &file, const RateSegment *segment, const CChnMapAnalog *chn, int index,
                    double &out);
// The mean over 20 ms; 4, or 0 for no value.
int LowRateMeanAt(const CCmtd99File &file, const RateSegment &segment, const CChnMapAnalog *chn, int index,
                  double &out);

double CycleEffective(const float *samples, int n);
// Reads with a stride of step² and divides by n / step: the DC part of long cycles behaves so.
double StridedMean(const float *samples, int n, int step);
// The compensation angle (radians) for an effective value, from the channel's angle table.
double PhaseCompAngle(const CChnMapAnalog &chn, double effective);
// Turns a phasor by `angle` radians.
ComplexD RotatePhasor(const ComplexD &phasor, double angle);
// Zero, positive and negative sequence of three phase phasors.
void SymmetricalParts(const ComplexD &a, const ComplexD &b, const ComplexD &c, ComplexD &zero,
                      ComplexD &positive, ComplexD &negative);
