#pragma once

#include "complexd.h"

#include <cstdint>

class CCmtd99File;
class CChnMapAnalog;

// What the name column shows of a channel at a cursor, and what the analysis forms read from
// its cache: the fundamental phasor (turned to the cursor's own sample), the true effective
// value and, where the rate is too low for a phasor, the mean. All zero is a blank read-out.
struct ChnCursorValue
{
    enum : uint32_t
    {
        HasPhasor = 0x1,
        HasValue = 0x2,
        HasMean = 0x4
    };
    uint32_t flags = 0;
    double effective = 0.0;
    ComplexD phasor;
    // Diagnostics of the window the value was taken from.
    int32_t windowStart = 0;
    int32_t n = 0;
    int32_t step = 0;
    int32_t code = 0; // result code of the phasor
};

// The value of an analog channel at sample `cursor`.
ChnCursorValue ChnCursorValueAt(const CCmtd99File &file, const CChnMapAnalog &chn, int cursor);
