#pragma once

// The P/Q capability diagram of a generator: the stator-current arc, the prime mover's output
// line, the field (internal EMF) limit and the under-excited stability limit with a reserve,
// all in per unit of the rated apparent power. Points are (P, Q) with Q positive for an
// over-excited machine delivering reactive power; the view puts Q across and P up.

#include "genmachine.h"

#include <QString>
#include <QStringList>

#include <vector>

struct PQPoint
{
    double p = 0.0;
    double q = 0.0;
};

struct PQGBounds
{
    float fIk = 1.05f; // maximum stator current
    float fPk = 1.0f;  // prime mover output
    float fEk = 2.5f;  // maximum internal EMF (field current limit)
    float fUk = 1.0f;  // terminal voltage
    float fGk = 10.0f; // stability reserve, percent of the corner power
    // Derived.
    float fSmax = 0.0f;
    float fSn = 0.0f; // MVA
    PQPoint rated;
    float fPc = 0.0f;
    float fQc = 0.0f;
    std::vector<PQPoint> rotorLimit;   // from the crossing with arc or output line back to d = 0
    std::vector<PQPoint> underExcited; // from P = 0 upward
    float fPmin = 0.0f;
    float fPmax = 0.0f;
    float fQmin = 0.0f;
    float fQmax = 0.0f;
};

// Whole curve and ranges. A round rotor takes the salient machine's formulas with Xq = Xd,
// where the field limit is the circle of radius E·U/Xd about (0, -U²/Xd).
void PQGRecalc(PQGBounds &b, const GenMachine &m);

// The whole limit as one path: the under-excited limit from P = 0 upward, the output line to the
// corner, the stator arc in steps of a degree to where the field limit leaves it, and the field
// limit back to the Q axis. Uses the derived polylines.
std::vector<PQPoint> PQGLimitPath(const PQGBounds &b);

// The rotor (field) limit of a machine, P and Q at load angle d in radians.
PQPoint PQGRotorPoint(double e, double u, double xd, double xq, double d);

// The fixed-point solution of the stability limit: the internal EMF at the edge of steady-state
// stability that carries `p` (already raised by the reserve), and its load angle; the last value
// after 10000 rounds when it does not settle. Returns the rounds taken.
int PQGStabilityAngle(double p, double u, double xd, double xq, double &e, double &d);

constexpr int kPQGEdits = 5;
// The dialog's edits: Ik, Pk, Ek, Uk, Gk. The reserve is taken from 0 to 50 %.
bool PQGStoreBounds(const QString edits[kPQGEdits], PQGBounds &b, QString &error);
QStringList PQGBoundsProblems(const PQGBounds &b);
