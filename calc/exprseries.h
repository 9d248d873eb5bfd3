#pragma once

// The curves behind the channel functions of the expression language: effective value, modulus,
// angle and parts of the base wave or a harmonic, true effective value, DC part, distortion,
// sequence parts, power and impedance, each at every sample from the window of that sample.
// They run in the sliding frame with `n` from the rated frequency of the first channel; each
// writes the curve's length of values (the shortest channel's) into `y`. Segments too slow
// for a window keep the source's samples, hold, or are zero, as each curve says.

#include "complexd.h"
#include "seriesframe.h"

// What a curve shows of a phasor.
enum class PhasorPart
{
    Effective, // sqrt((re² + im²) / 2)
    Modulus,   // sqrt(re² + im²)
    Angle,     // atan2(im, re) in degrees
    Real,
    Imaginary
};
float PhasorPartValue(const ComplexD &phasor, PhasorPart part);

// The single-channel curves: eff, mod, phs, rms, dpart and dft_m, dft_a, dft_r, dft_x.
enum class ChannelCurve
{
    Eff,
    Mod,
    Phs,
    Rms,
    DPart,
    DftM,
    DftA,
    DftR,
    DftX
};
bool ChannelCurveSeries(const CCmtd99File &file, const SeriesSource &source, ChannelCurve curve, float *y);

// harm_e, harm_m, harm_a, harm_r, harm_x: harmonic `order` (at least 1); a segment whose cycle
// has no more than 2·order points is all zero.
bool HarmonicFunctionSeries(const CCmtd99File &file, const SeriesSource &source, PhasorPart part, int order,
                            float *y);
// dist: the effective values of harmonics 2 .. maxOrder (limited to 2 .. 31) over that of the
// base wave; 0 where the base wave is 0.
bool DistortionSeries(const CCmtd99File &file, const SeriesSource &source, int maxOrder, float *y);

// seq_*: sequence `sequence` (0 zero, 1 positive, 2 negative; anything else zero) of three phases.
bool SequenceSeries(const CCmtd99File &file, const SeriesSource &a, const SeriesSource &b,
                    const SeriesSource &c, double sequence, PhasorPart part, float *y);

enum class PowerPart
{
    Active,
    Reactive, // positive for a current that lags the voltage
    Apparent
};
// power_p, power_q, power_s: one voltage and the branch currents whose powers add up.
bool PowerSeries(const CCmtd99File &file, const SeriesSource &voltage, const SeriesSource *currents,
                 int currentCount, PowerPart part, float *y);

// rx_*: the voltage over the sum of the branch currents. A zero current gives infinities and
// not-a-numbers, which stay in the curve. Parts: Modulus, Angle, Real, Imaginary.
bool ImpedanceSeries(const CCmtd99File &file, const SeriesSource &voltage, const SeriesSource *currents,
                     int currentCount, PhasorPart part, float *y);
// rxk_*: the same with `k` times the residual current `io` added to the branch sum,
// Zx = Ux / (Ix + K·Io) with K = (Z0 - Z1) / Z1.
bool GroundImpedanceSeries(const CCmtd99File &file, const SeriesSource &io, const ComplexD &k,
                           const SeriesSource &voltage, const SeriesSource *currents, int currentCount,
                           PhasorPart part, float *y);
