#pragma once

// The loss-of-excitation characteristics of a generator: on the stator side the terminal
// impedance against a reactive-power line and four circles (steady-state stability, active
// power, asynchronous boundary and one of the engineer's own), on the rotor side the field
// voltage against active power. Settings are 32-bit floats as the setup dialog shows them; the
// geometry is worked out in per unit of the machine's rating and voltage.

#include "genmachine.h"

#include <QString>
#include <QStringList>

#include <cstdint>

struct GenCircle
{
    double r = 0.0; // centre, R
    double x = 0.0; // centre, X
    float fRadius = 0.0f;
};

struct ExciBounds
{
    enum Bound : uint32_t
    {
        LineQ = 0x1,
        CirQe = 0x2,
        CirPe = 0x4,
        CirAsyn = 0x8,
        CirUser = 0x10,
        AllBounds = 0x1F
    };
    uint32_t nBounds = LineQ | CirQe | CirPe | CirAsyn;
    float fPs = 0.0f;     // MW before the loss; 0 takes the rated output
    float fBeta = 15.0f;  // degrees of the reactive-power line beyond the -X axis
    float fFai = 0.0f;    // degrees the stability circle of a salient machine leans
    float fUfset = 0.0f;  // primary V: the field voltage below which the rotor criterion acts
    float fKf = 1.0f;     // slope of the Uf-P criterion in per unit
    float fAlfa = 0.0f;   // degrees the engineer's own circle leans
    float fXM = 0.1f;     // upper reach of that circle on the X axis, per unit
    float fXN = 1.0f;     // lower reach, per unit below the origin
    float fZLimit = 3.0f; // per unit: the least half-width of the stator diagram
    // Derived.
    float fUfsetPu = 0.0f;
    float fPtPu = 0.0f;
    float fSalient = 0.0f;
    GenCircle cirQe;
    GenCircle cirPe;
    GenCircle cirAsyn;
    GenCircle cirUser;
    float fRmin = 0.0f;
    float fRmax = 0.0f;
    float fXmin = 0.0f;
    float fXmax = 0.0f;
    float fPmax = 0.0f;
    float fUfmax = 0.0f;
};

// What the recording adds to the geometry: the transformer ratios (primary over secondary, 1
// without a channel) and the full-scale values of the derived series and of the field voltage.
struct ExciScales
{
    double ratioU = 1.0;
    double ratioI = 1.0;
    bool hasRx = false;
    double rFull = 0.0; // secondary ohm
    double xFull = 0.0;
    bool hasP = false;
    double pFull = 0.0;  // secondary W
    double ufFull = 0.0; // primary V of the field channel
};

// Angles in degrees to radians, as every generator diagram converts them.
constexpr double kGenDegToRad = 0.017453292519943295;
constexpr double kGenPi = 3.141592653589793;

// Circles, rotor characteristic and ranges from the settings, the machine and the recording.
// A `fPs` of 0 takes the rated output (and keeps it). The engineer's circle is worked out only
// while it is switched on.
void ExciRecalc(ExciBounds &b, const GenMachine &m, const ExciScales &s);

// The setup dialog's edits in its order: Ps, Beta, Fai, Alfa, XM, XN, ZLimit, Ufset, Kf. On
// success the values go into `b`; else `error` holds the first complaint and `b` is unchanged.
constexpr int kExciEdits = 9;
bool ExciStoreBounds(const QString edits[kExciEdits], ExciBounds &b, QString &error);
// Every complaint the dialog would raise, one per press, for the values of `b`.
QStringList ExciBoundsProblems(const ExciBounds &b);
