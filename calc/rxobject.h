#pragma once

// The apparent impedance a distance relay sees, from the voltage and current phasors of a
// recording: per phase loop (phase to earth with or without the earth-return compensation,
// phase to phase) or from two channels that already hold R and X. The impedance form keeps
// one RxObject per kind and draws its vectors and traces on the R-X plane; this file holds the
// record, the row values at a sample and the trace over a sample range.

#include "cmtd99file.h"
#include "complexd.h"
#include "phasor.h"

#include <QString>

#include <cstdint>
#include <vector>

class CChnMapAnalog;
class CmtdInfTrwk_Unit;

// One point of an impedance trace, in secondary ohm.
struct RxPoint
{
    float r = 0.0f;
    float x = 0.0f;
};

// The choice of the impedance form for one kind, its values at cursor T1 and its traces. The
// worker's curve job writes the traces and their range only.
struct RxObject
{
    enum Kind : int32_t
    {
        KindUxIxK = 0,  // [Ux / (Ix+kIo)]
        KindUxIx = 1,   // [Ux / Ix]
        KindUxyIxy = 2, // [Uxy / Ixy]
        KindRxChn = 3   // [Choose RX Channels]
    };
    enum RowBit : uint32_t
    {
        Row0 = 0x1, // phase A, or loop A-B
        Row1 = 0x2, // phase B, or loop B-C
        Row2 = 0x4, // phase C, or loop C-A
        AllRows = 0x7
    };

    int32_t nKind = KindUxIxK;
    const CCmtd99File *pRecording = nullptr;
    const CmtdInfTrwk_Unit *pLine = nullptr;
    const CChnMapAnalog *chnU[3] = {};
    const CChnMapAnalog *chnI[3][3] = {}; // [group][phase]
    int16_t nCoef[3] = {1, 1, 1};         // -1 for a group wired in the opposite direction
    const CChnMapAnalog *chnR = nullptr;
    const CChnMapAnalog *chnX = nullptr;
    double fR0 = 0.0; // ohm per km
    double fX0 = 0.0;
    double fR1 = 0.0;
    double fX1 = 0.0;
    double kRe = 0.0; // earth-return compensation factor
    double kIm = 0.0;
    uint32_t nMask = 0;
    uint32_t nShown = AllRows;
    ComplexD z[3]; // R (re) and X (im) of each row at cursor T1
    int32_t nFrom = -1;
    int32_t nTo = -1;
    std::vector<RxPoint> trace[3];
};

// Back to no choice: everything but the kind and the recording.
void RxClearObject(RxObject &object);

// The closing step of every object dialog: the compensation factor
// k = ((R0 - R1) + j(X0 - X1)) / (R1 + jX1), applied to I0 and not to 3·I0, and the shown rows
// kept within the rows that exist (all of them when none would remain).
void RxFinishObject(RxObject &object);

// Checks the channel choice of an object dialog as its OK button does and sets `nMask`; false
// with the message when the choice is refused. Kind 0 first wants the four line values.
bool RxApplyChoice(RxObject &object, QString &message);

// True when `a` and `b` choose the same channels and rows, so that computed values stay valid.
bool RxSameChoice(const RxObject &a, const RxObject &b);

// "[Ux / (Ix+kIo)]" and the others; empty for an unknown kind.
QString RxObjectName(int32_t kind);
// "Za", "Zab", "Zx", ...; empty for a row outside the mask.
QString RxRowName(const RxObject &object, int row);

// The frequency of the phasors: the rated frequency of the first row's channel, 50 Hz when it
// has none below 1 Hz or there is no channel.
float RxObjectFreq(const RxObject &object);

// The window start that the phasors of cursor `sample` use at the object's frequency.
int RxWindowSample(const RxObject &object, int sample);

// The impedance of `row` from the phasors of the window starting at `sample` (the window sample
// of a cursor). `segment` may be null; it is then looked up. False, with z = 0, when the row
// does not exist, there is no segment or a voltage has no phasor. No current gives the
// infinities and not-a-numbers of the division.
bool RxComputeRow(const RxObject &object, int row, int sample, const RateSegment *segment, ComplexD &z);

// The traces of the rows in the mask between samples lo and hi, with the worker's progress and
// stop rule. `nFrom`/`nTo` are -1 while it runs and (lo, hi) after, also after a stop, when the
// traces hold what was computed. False when stopped.
bool RxComputeTraces(RxObject &object, int lo, int hi, ProgressFn report, void *owner);
