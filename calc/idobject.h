#pragma once

// The differential current a transformer, generator or busbar relay computes: the current
// branches of the protected object brought to one common side through their winding matrices
// and balance factors, per phase the differential current Id (the modulus of their sum) and
// the braking current Ir by one of four restraint laws. The differential form keeps one
// IdObject by value; the worker fills its per-sample series once, and the curve job copies the
// Ir-Id points between two samples.

#include "cmtd99file.h"
#include "complexd.h"
#include "phasor.h"

#include <QString>

#include <cstdint>
#include <vector>

class CChnMapAnalog;
class CmtdInfTrwk_UnitPwr;
class CmtdInfTrwk_UnitTrm;

// Job numbers of the worker.
enum IdJobKind
{
    IdJobValues = 14,
    IdJobCurve = 15
};

// One current branch: the three phase channels of a set of current transformers, brought to
// the common side as I'a = K · (m1·Ib + m2·Ic + m0·Ia) and cyclically for B and C.
struct IdBranch
{
    enum PhaseBit : uint8_t
    {
        PhaseA = 0x1,
        PhaseB = 0x2,
        PhaseC = 0x4,
        AllPhases = 0x7
    };
    uint8_t nFlag = 0;    // PhaseBit: the phases whose channel is chosen
    int16_t nReverse = 0; // 1, -1, or 0 to take the object's direction
    const CChnMapAnalog *chn[3] = {};
    double fK = 1.0;                // balance factor to the common side
    int16_t nMatrix[3] = {1, 0, 0}; // m0 (own phase), m1 (next), m2 (the one after)
};

// Braking (restraint) laws.
enum IdBrakingMode : int32_t
{
    IdModSum = 1, // half the sum of the moduli
    IdMaxVal = 2, // the largest modulus
    IdSumSub = 3, // half the modulus of the largest branch less the rest
    IdProduct = 4 // the square root of the product, only for opposing currents
};

// What is protected, and so which branch groups the object dialog offers.
enum IdKind : int32_t
{
    IdKindNone = 0,
    IdKindGenSplitPhase = 1,   // split-phase transverse: the branch groups of a split winding
    IdKindGenIncomplete = 2,   // longitudinal over the terminal and part of the neutral branches
    IdKindGenComplete = 3,     // longitudinal over the terminal and the whole neutral group
    IdKindTrmLongitudinal = 4, // the transformer's windings, all sides
    IdKindTrmPartial = 5,      // the series and common windings of an autotransformer
    IdKindTrmZeroSeq = 6,      // the zero sequence of an autotransformer: 3I0 of the sides and the neutral
    IdKindBusbar = 7           // the feeders of a busbar
};

constexpr int kIdMaxBranches = 32;

struct IdObject
{
    enum RowBit : uint32_t
    {
        Row0 = 0x1,
        Row1 = 0x2,
        Row2 = 0x4,
        AllRows = 0x7
    };

    const CCmtd99File *pRecording = nullptr;
    QString name;
    const CmtdInfTrwk_Unit *pUnit = nullptr;
    int32_t nKind = IdKindNone;
    int32_t nMode = IdModSum;
    int16_t nReverse = 1; // the unit's direction for branches without their own
    int32_t nBranches = 0;
    IdBranch branch[kIdMaxBranches];
    uint32_t nBranchMask = 0;
    uint32_t nPhases = 0;
    uint32_t nMask = 0;
    uint32_t nShown = AllRows;
    // One value per sample and phase: the differential current, the braking current, the
    // second harmonic of the differential current and the angle of its fundamental (degrees).
    std::vector<float> fId[3];
    std::vector<float> fIr[3];
    std::vector<float> fId2[3];
    std::vector<float> fAngle[3];
    int32_t nFrom = -1;
    int32_t nTo = -1;
    std::vector<float> traceIr[3];
    std::vector<float> traceId[3];
};

// The matrix triple (m0, m1, m2) of a winding connection code: unity for star and delta
// references, the star-to-delta difference that turns a star side onto a delta one for the
// clock numbers 1, 5, 7, 11 and the matching turn of a delta side onto a star one, the
// inversion for clock 6, and 3I0 (1, 1, 1) for the zero-sequence branches.
void IdWindingMatrix(int16_t windingMode, int16_t matrix[3]);

// A branch's phase currents on the common side from its own phasors (missing phases as 0).
void IdTransformBranch(const IdBranch &branch, int16_t reverse, const ComplexD in[3], ComplexD out[3]);

// Id and Ir of one phase from the transformed branch phasors `in[0..count)`. Ties for the
// largest go to the first branch in order.
void IdBraking(int32_t mode, const ComplexD *in, int count, double &id, double &ir);

// Clears the branches, series and traces, keeping the recording, kind and mode.
void IdClearObject(IdObject &object);

// Appends a branch; false when the object holds kIdMaxBranches already.
bool IdAddBranch(IdObject &object, const IdBranch &branch);

// The branch groups of a unit for a kind: a transformer for kinds 4 to 6, a generator for 1 to
// 3. Groups lacking a phase are dropped where the kind needs all three. Sets the object's unit,
// kind and branches and finishes it; false with the dialog's message when nothing is left.
bool IdBuildFromTrm(IdObject &object, const CmtdInfTrwk_UnitTrm &unit, int32_t kind, QString &message);
bool IdBuildFromPwr(IdObject &object, const CmtdInfTrwk_UnitPwr &unit, int32_t kind, QString &message);

// The closing step of every object dialog: the branch mask (all branches), the phases present
// in all of them and the rows that exist (one for the zero sequence). False with the message
// when fewer than two branches or no phase is left.
bool IdFinishObject(IdObject &object, QString &message);

// The frequency of the phasors: that of the first branch's first channel, 50 Hz for none.
float IdObjectFreq(const IdObject &object);

// Job 14: Id, Ir, the second harmonic and the angle per phase and sample, with the worker's
// progress and stop rule. The series have one point per loaded sample; samples without a
// whole window hold the value before. False when stopped.
bool IdComputeSeries(IdObject &object, ProgressFn report, void *owner);

// The values of the rows at one window start (the window sample of a cursor), computed
// directly: id, ir and the second harmonic per phase. False where there is no segment.
bool IdComputeAt(const IdObject &object, int windowStart, double id[3], double ir[3], double id2[3]);

// The instantaneous differential current of phase `phase` for `count` samples from `first`:
// the branches' samples combined like their phasors. Samples beyond a channel give 0.
void IdInstantSamples(const IdObject &object, int phase, int first, int count, float *out);

// Job 15: the Ir-Id traces of the rows in the mask between lo and hi from the series of job 14.
// `nFrom`/`nTo` are (lo, hi) after, also after a stop. False when stopped.
bool IdComputeTraces(IdObject &object, int lo, int hi, ProgressFn report, void *owner);

// "Mod-Sum Braking" and the others; empty for an unknown mode.
QString IdBrakingName(int32_t mode);
// "Ph. A", "Ph. B", "Ph. C", or "Ido" for the zero sequence; empty outside the mask.
QString IdRowName(const IdObject &object, int row);
