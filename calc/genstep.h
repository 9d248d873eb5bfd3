#pragma once

// The pole-slip (out-of-step) characteristic of a generator: a lens on the R-X plane between
// the system's reactance point A and the machine's transient reactance point B, leaning with
// the impedance angle, a blinder through B along the lens axis and a reactance line through the
// step-up transformer's point T across it. A slip is the passage of the terminal impedance
// through the regions these cut out, in order; the count is kept for the system zone (beyond T)
// and the zone of generator and transformer (short of T).

#include "genexci.h"

#include <QString>
#include <QStringList>

#include <cstdint>

struct StepBounds
{
    float fXt = 0.1f;     // step-up transformer short-circuit reactance, per unit
    float fFai = 85.0f;   // degrees the lens leans from the R axis
    float fAlfa = 120.0f; // degrees: the inner angle at which the lens' arcs meet A and B
    float fZLimit = 3.0f; // per unit: the least half-width of the diagram
    // Derived.
    double ptA[2] = {};
    double ptB[2] = {};
    double ptT[2] = {};
    double ptC1[2] = {};
    double ptC2[2] = {};
    float fRadius = 0.0f;
    float fRmin = 0.0f;
    float fRmax = 0.0f;
    float fXmin = 0.0f;
    float fXmax = 0.0f;
};

// Points, circles and range. Only the ratios and the derived series' full-scale values of
// `s` are read. An inner angle of 180 makes the arcs straight: the radius is unbounded.
void StepRecalc(StepBounds &b, const GenMachine &m, const ExciScales &s);

// The code of a per-unit point: 1 inside the lens, 16 on the generator's side of the lens axis
// through B, 256 beyond the line through T.
enum StepCodeBit : int
{
    StepInsideLens = 1,
    StepRightOfAxis = 16,
    StepBeyondT = 256
};
int StepCode(const StepBounds &b, double r, double x);
// The region 1 to 8 of a code (0 for a code that is none of them).
int StepRegionOfCode(int code);
inline int StepRegion(const StepBounds &b, double r, double x)
{
    return StepRegionOfCode(StepCode(b, r, x));
}

// The slip counter over the regions of consecutive samples. A slip is the passage 1, 2, 3, 4
// (system zone) or 5, 6, 7, 8 (generator and transformer zone) with any repeats of a region;
// any other step breaks the chain, and region 1 or 5 starts it anew.
class StepSlipCounter
{
public:
    enum Slip
    {
        NoSlip = 0,
        SlipSystem = 1,
        SlipGT = 2
    };
    // The first region of a run.
    void start(int region) { m_state = region; }
    // The next region; says which zone slipped, if any.
    Slip next(int region);
    int state() const { return m_state; }

private:
    int m_state = 0;
};

// The power angle of a per-unit impedance point: arg((Z - B) / (Z - A)) in degrees.
double StepPowerAngle(const StepBounds &b, double r, double x);

constexpr int kStepEdits = 4;
// The dialog's edits: Xt, Fai, Alfa, ZLimit. As for the excitation-loss dialog.
bool StepStoreBounds(const QString edits[kStepEdits], StepBounds &b, QString &error);
QStringList StepBoundsProblems(const StepBounds &b);
