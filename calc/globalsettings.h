#pragma once

#include <cstdint>

// The settings that computing and drawing code reads on every call. They are free variables
// beside the options object so that the worker threads read them without a lock: each is a
// single aligned word, changed only from a modal dialog on the user-interface thread.
extern int16_t colorScheme;    // 0..2, the wave view's colour scheme
extern int32_t dftWin;         // 0 previous cycle, 1 centred, 2 next cycle
extern int32_t dftMethod;      // 0 rectangle sine, 1 rectangle cosine, 2 trapezoid
extern bool PhComp;            // apply the channels' phase compensation angles
extern int32_t statusMinWidth; // narrowest drawn status pulse, pixels
