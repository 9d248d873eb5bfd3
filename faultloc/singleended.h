#pragma once

// Single-ended distance estimates: what one end's recording alone says about the distance to the
// fault, beside the two-ended search. Both methods measure the impedance of the faulted loop
// seen from the end and read the distance from its reactive part, with the line's positive
// sequence impedance per km (R1 + jX1) as the yardstick.
//
// The loop is chosen from the superimposed currents (fault minus pre-fault): a single phase to
// ground where the change between the two other phases is small against the largest change, a
// phase-to-phase loop (the pair with the largest change) otherwise, phases A-B when all three
// changes are alike. A ground loop takes the zero-sequence compensated current
// Iloop = Iph + k0·(Ia + Ib + Ic) with k0 = (Z0 − Z1) / (3·Z1) when R0 and X0 are given; without
// them k0 is 0 and a ground fault reads too far or too near by the zero-sequence part of the loop.
//
// Simple reactance: m = Im(Uloop / Iloop) / X1. It is exact for a fault without resistance. A
// fault resistance adds Rf·If/Iloop to the loop impedance; where the remote end feeds the fault
// too, If and Iloop differ in angle, so part of Rf shows as reactance: the estimate reads too far
// when the remote end exports load, too near when it imports. It is also unreliable for a high
// fault resistance on a lightly loaded line.
//
// Takagi: m = Im(Uloop · conj(ΔI)) / Im(Z1 · Iloop · conj(ΔI)), with ΔI the superimposed current
// of the loop. Taking the imaginary part against ΔI removes the fault-resistance term as long
// as the fault current is in phase with ΔI, which holds when both ends' source impedances have
// the same angle as the line (a homogeneous system). With strong remote infeed through a
// source of another angle, or without a pre-fault window (no ΔI: no estimate), it errs like the
// reactance method. Both ignore the line's shunt capacitance, which on long lines makes them read
// a little short.

#include "complexd.h"
#include "faultend.h"

enum FaultLoop
{
    LoopNone = 0,
    LoopAG,
    LoopBG,
    LoopCG,
    LoopAB,
    LoopBC,
    LoopCA
};

// Distances in km from the end; not a number where the method has no answer.
struct SingleEndedEstimate
{
    FaultLoop loop = LoopNone;
    double reactanceKm = 0.0;
    double takagiKm = 0.0;
};

// The faulted loop from the currents and, where known (else null), the pre-fault currents.
FaultLoop SelectFaultLoop(const ComplexD current[3], const ComplexD *prefault);
// The loop's voltage, compensated current and superimposed current (0 without pre-fault).
void LoopQuantities(FaultLoop loop, const ComplexD voltage[3], const ComplexD current[3],
                    const ComplexD *prefault, const FaultLine &line, ComplexD &u, ComplexD &i, ComplexD &di);
double ReactanceDistance(const ComplexD &u, const ComplexD &i, double X1);
double TakagiDistance(const ComplexD &u, const ComplexD &i, const ComplexD &di, double R1, double X1);

// Both estimates from primary phasors of one end; `prefault` may be null.
SingleEndedEstimate EstimateSingleEnded(const ComplexD voltage[3], const ComplexD current[3],
                                        const ComplexD *prefault, const FaultLine &line);

// The start of a pre-fault window: a whole number of cycles before the data window, so that its
// phasors share the data window's angle reference, and ending before the fault's current edge.
// -1 where the segment has no room for it.
int PrefaultStart(const FaultEnd &end);
// The estimates of one end from its data window and pre-fault window, in primary values.
SingleEndedEstimate EstimateEnd(const FaultEnd &end, const FaultLine &line);
