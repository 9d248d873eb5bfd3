#pragma once

// The harmonic content of a channel at a sample: the one-cycle window the name column uses for
// the fundamental, transformed for each order from the DC part up to the highest order the
// sampling rate can tell apart (at most 50), with the total harmonic distortion and the DC
// share against the fundamental. The harmonic charts and `veldrix-cli harmonics` show it.

#include "complexd.h"

#include <vector>

class CCmtd99File;
class CChnMapAnalog;

struct HarmonicOrder
{
    int order = 0;
    ComplexD phasor;      // peak units; for order 0 the mean, as a real number
    double effective = 0; // the order's effective value; for order 0 the mean's magnitude
    double percent = 0;   // of the fundamental's effective value (0 without a fundamental)
    double angleDeg = 0;  // of the phasor, degrees
};

struct HarmonicSpectrum
{
    bool valid = false;       // false where the rate gives no whole cycle at the sample
    double fundamentalHz = 0; // the frequency the window is one cycle of
    int windowStart = 0;
    int n = 0;                         // samples in the window
    std::vector<HarmonicOrder> orders; // 0, 1, 2, ... in order
    double thdPercent = 0;             // orders 2 to 40 over the fundamental
    double dcPercent = 0;              // the DC part over the fundamental
};

// The highest order told apart with `n` samples per cycle, within `limit` (at most 50).
int HighestHarmonic(int n, int limit = 50);
HarmonicSpectrum HarmonicSpectrumAt(const CCmtd99File &file, const CChnMapAnalog &chn, int cursor,
                                    int maxOrder = 50);
