#pragma once

// The two-ended fault location: the line as a long-line PI equivalent, and the search along it
// for the point where the positive- and negative-sequence voltages computed from End M and from
// End N stand in the same ratio. Only magnitudes of computed fault-point voltages are compared,
// so the two recordings need no common time reference.

#include "complexd.h"
#include "faultend.h"

#include <QStringList>

#include <cstdint>
#include <vector>

// Codes of the line check and the search (the stage `FaultStageAnalysis`).
enum FaultAnalysisCode
{
    FaultR1Invalid = 1,
    FaultX1Invalid = 2,
    FaultC1Invalid = 3,
    FaultG1Invalid = 4,
    FaultR0Invalid = 5,
    FaultX0Invalid = 6,
    FaultC0Invalid = 7,
    FaultG0Invalid = 8,
    FaultLengthInvalid = 9,
    FaultTvInvalid = 10,
    FaultTaInvalid = 11,
    FaultNoSolution = 100
};

// The top four bits of a location's code name the stage that failed; the rest is the stage's
// own code (a FaultEndCode for an end, a FaultAnalysisCode for the analysis).
enum FaultStage : uint32_t
{
    FaultStageEndM = 1u << 28,
    FaultStageEndN = 2u << 28,
    FaultStageAnalysis = 3u << 28,
    FaultStageMask = 0xF0000000u
};

// One pass of the search: the stretch searched, its step, and the best point found.
struct FaultSearchPass
{
    double lo = 0.0;
    double hi = 0.0;
    double step = 0.0;
    double best = -1.0;
    float fDelta = 0.0f;
};

// The working record of one location: the line, both ends' transformer ratios and phasors, their
// sequence parts in primary values, and the series impedance and half shunt admittance of the
// piece of line under trial. LocateFault fills it; the wizard's report and the tests read it.
class FaultSolver
{
public:
    enum EndIndex
    {
        M = 0,
        N = 1
    };

    // The line check: 0, or the FaultAnalysisCode of the first value refused.
    int CheckParameters() const;
    // Positive and negative sequence of both ends in primary values, and their admittances I/U.
    void ComputeSequenceParts();
    // The PI equivalent of `l` km of line: series impedance Z and half shunt admittance Ysh,
    // from the first terms of the hyperbolic functions of the long line at 50 Hz.
    void SetLinePoint(double l);
    // |U·(1 + (Ysh − Y)·Z)|: the voltage at the far end of the piece, from the voltage U and the
    // admittance Y = I/U measured at its near end.
    double PointVoltage(const ComplexD &U, const ComplexD &Y) const;
    // The passes of the search over the whole line; 0 with `position`, `fDelta` and `quality`,
    // or FaultNoSolution.
    int Search();

    FaultLine line;
    float tvRatio[2] = {1.0f, 1.0f}; // primary over secondary
    float taRatio[2] = {1.0f, 1.0f};
    ComplexD U[2][3]; // secondary phasors, phases A, B, C
    ComplexD I[2][3];
    ComplexD U1[2], U2[2], I1[2], I2[2]; // primary sequence parts
    ComplexD Y1[2], Y2[2];
    ComplexD Z;   // series impedance of the current point
    ComplexD Ysh; // half shunt admittance of the current point

    double position = -1.0;
    float fDelta = 3.4028235e38f;
    int quality = 0;
    std::vector<FaultSearchPass> passes;
};

// Locates the fault from the two ends' data windows: the phasors of End M, of End N, the line
// check and the search. 0 for success, else a code with its FaultStage. The solver keeps the
// intermediate values.
int LocateFault(const FaultEnd &endM, const FaultEnd &endN, const FaultLine &line, FaultSolver &out);

// The description of a location code (with its stage).
QString FaultErrorText(int code);
// The report page: both ends' file, station and line, then the position from End M; or the stage
// that failed with its code and description.
QStringList FaultReport(int code, const FaultEnd &endM, const FaultEnd &endN, const FaultSolver &solver);
