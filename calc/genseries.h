#pragma once

// The per-sample series of the generator diagrams, computed on the worker: the terminal
// impedance of one phase pair (R and X), the three-phase active and reactive power, and the
// slip count over a stretch of the impedance. Each sample takes the one-cycle phasors of its
// own window; samples whose window runs out at the end of a stretch hold the value before them.

#include "cmtd99file.h"
#include "genstep.h"

#include <QString>

#include <cstdint>

class CChnMapAnalog;

// Phase pair of the terminal impedance as a mask of the phases A = 1, B = 2, C = 4.
enum GenZKind : int32_t
{
    GenZab = 3,
    GenZca = 5,
    GenZbc = 6
};

struct GenTerminal
{
    const CChnMapAnalog *chnU[3] = {};
    const CChnMapAnalog *chnI[3] = {};
    int32_t nZKind = GenZab;
    float freq = 50.0f; // rated frequency of the first present voltage
};

// Output arrays of `count` samples each; a null array is not written.
struct GenSeriesOut
{
    float *r = nullptr; // ohm of the stored values
    float *x = nullptr;
    float *p = nullptr; // sum of the phases' Re(U)·Re(I) + Im(U)·Im(I), scaled as the power channel
    float *q = nullptr; // sum of the phases' Im(U)·Re(I) - Re(U)·Im(I), scaled alike
    int32_t count = 0;
};

// Names of the derived channels of a unit: "<unit> Terminal Impedance Zab" with " R-Part" and
// " X-Part" (unit "omh"), and "<unit> Terminal Power" (W, or MW for primary values).
struct GenSeriesNames
{
    QString r;
    QString x;
    QString p;
};
GenSeriesNames GenSeriesNamesOf(const QString &unitName, int32_t nZKind);

// The rated frequency of the first present voltage channel (50 below 1 Hz).
float GenTerminalFreq(const GenTerminal &t);

// The impedance, power and reactive power series of the terminal. With the worker's report
// and stop rule; false when stopped (the samples so far are kept).
bool GenTerminalSeries(const CCmtd99File &file, const GenTerminal &t, const GenSeriesOut &out,
                       ProgressFn report, void *owner);

// Slip counts over samples lo to hi of the impedance series, each point first brought to per
// unit by `scale` (ratioU / ratioI / Zb). Counts so far are kept when stopped.
struct GenSlipCounts
{
    int32_t nSlipSystem = 0;
    int32_t nSlipGT = 0;
};
bool GenCountSlips(const StepBounds &b, const float *r, const float *x, int lo, int hi, double scale,
                   GenSlipCounts &counts, ProgressFn report, void *owner);
