#pragma once

// The inrush-blocking quantities of a transformer differential relay, taken from the
// differential current at the cursor:
//
// - The second-harmonic ratio: the second harmonic over the fundamental of Id. "By phase" each
//   phase is judged by its own ratio; "max-phase" every phase by the largest of the three
//   ratios (cross blocking); "composite" every phase by the largest second harmonic of the
//   three over the largest fundamental of the three.
// - The intermittent (dead) angle: magnetising inrush is a train of one-sided pulses with long
//   gaps. Over one cycle of instantaneous id, the dead angle is the longest run (taken round the
//   cycle) of samples where |id| stays at or below the floating coefficient times the cycle's
//   peak |id|, in degrees. A fault current, a sine, has dead angles of 2·asin(coef) only; the
//   relay blocks when the dead angle reaches the fixed threshold (65 degrees is usual).
// - The derivative wave width: over one cycle the longest run where the derivative of id keeps
//   one sign and its modulus stays at or above the floating coefficient times the cycle's peak
//   derivative, in degrees. A sine gives 180 - 2·asin(coef) degrees; the narrow pulses of
//   inrush give much less, and the relay blocks when the width falls below the fixed
//   threshold (140 degrees is usual). With "differenced datas" the derivative is the first
//   difference of the samples; without, the width is taken on the samples themselves.

#include <cstdint>

struct IdBounds;

enum IdHarmonicMode : int32_t
{
    IdHarmByPhase = 0,
    IdHarmMaxPhase = 1,
    IdHarmComposite = 2
};

// The ratio (not in percent) that applies to each phase in `mask` under the mode, from the
// fundamental and second harmonic moduli of Id per phase. A phase without fundamental has ratio 0.
void IdHarmonicRatios(int32_t mode, uint32_t mask, const double id1[3], const double id2[3], double ratio[3]);

// The dead angle of one cycle of `n` samples, degrees; 0 for fewer than 2 samples or no current.
double IdDeadAngle(const float *id, int n, double coef);

// The wave width of one cycle of `n` samples, degrees; 0 for fewer than 3 samples or a flat wave.
double IdWaveWidth(const float *id, int n, double coef, bool differenced);

// The decisions of the two wave checks with the boundary's thresholds: blocked when the dead
// angle reaches fa[0], or the wave width falls below fb[0].
bool IdBlockedByDeadAngle(const IdBounds &bounds, double deadAngle);
bool IdBlockedByWaveWidth(const IdBounds &bounds, double waveWidth);
