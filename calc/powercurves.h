#pragma once

// Curves of a plant unit in operation, one value per sample from the one-cycle phasors of that
// sample's window: active, reactive and apparent power of each phase and of the three together,
// the voltage over frequency of a winding in per unit (overfluxing), and the load angle of a
// generator. They walk the recording rate segment by rate segment like the other derived curves,
// with the worker's progress report and stop check; a sample whose window runs out holds the
// value before it, and segments too slow for a window get `noValue`.

#include "seriesframe.h"

#include <cstdint>

// Which power curves to write: a kind and a place, the curves being their products.
enum PowerCurveBit : uint32_t
{
    PowerActive = 0x1,
    PowerReactive = 0x2,
    PowerApparent = 0x4,
    PowerKindMask = 0x7,
    PowerPhaseA = 0x10,
    PowerPhaseB = 0x20,
    PowerPhaseC = 0x40,
    PowerTotal = 0x80,
    PowerPlaceMask = 0xF0,
    PowerAllCurves = PowerKindMask | PowerPlaceMask
};

// Places of the output arrays: the phases A, B, C and the total.
constexpr int kPowerPlaces = 4;
constexpr int kPowerTotal = 3;

// Three voltages (phase to earth) and the currents of up to two branches whose phasors add up
// (a line breaker and a half, a generator's split windings), each turned into the side the
// curves are wanted in by its scale: 1 for secondary values, the transformer ratio for primary
// ones, negated for a current transformer that points into the plant. A phase counts when its
// voltage and its first current are there; a missing second branch is no current.
struct PowerInputs
{
    SeriesSource u[3];
    SeriesSource i[2][3];
    double uScale[3] = {1.0, 1.0, 1.0};
    double iScale[2][3] = {{1.0, 1.0, 1.0}, {1.0, 1.0, 1.0}};
};

// The curves written: W, var and VA of the scaled values, per phase and in total, divided by
// `unitSize` (1e3 writes kW, kvar, kVA). A null array is not written.
struct PowerOutputs
{
    float *p[kPowerPlaces] = {};
    float *q[kPowerPlaces] = {};
    float *s[kPowerPlaces] = {};
    double unitSize = 1.0;
};

// How many samples the curves have: the shortest channel's (0 without a whole phase).
int PowerCurveLength(const CCmtd99File &file, const PowerInputs &in);

// P = Re(U·I*), Q = Im(U·I*) and S = |P + jQ| of effective-value phasors, each output array
// filled for PowerCurveLength samples. Q is positive for a current lagging its voltage (an
// inductive load seen from the measuring point); P is negative where power flows against the
// direction of the current transformers. The totals add the phases' P and Q; their S is the
// magnitude of that sum. False when stopped.
bool PowerCurves(const CCmtd99File &file, const PowerInputs &in, const PowerOutputs &out, float noValue,
                 SeriesProgress *progress = nullptr);

// The voltage over frequency in per unit, (U / ratedVoltage) / (f / ratedFreq), with U the
// effective value of the base wave and f the zero-cross frequency curve of the same channel
// (held at the channel's rated frequency where it cannot be measured). `ratedVoltage` is in the
// channel's stored volts. SeriesLength(file, u) values; false when stopped. Rated values not
// above 0 give `noValue` everywhere.
bool VoltsPerHertzCurve(const CCmtd99File &file, const SeriesSource &u, double ratedVoltage, double ratedFreq,
                        float *y, float noValue, SeriesProgress *progress = nullptr);

// The load angle of a synchronous machine in degrees: with the terminal voltage U and the stator
// current I leaving the machine, the voltage behind the quadrature reactance is Eq = U + j·Xq·I,
// and the angle is that of Eq against U, positive when Eq leads (generating). With three phases
// the positive sequence is taken, with one phase (A alone) that phase. `xq` is the reactance in
// ohm of the stored values (see QuadratureOhms); `iScale` turns the currents out of the machine.
struct LoadAngleInputs
{
    SeriesSource u[3];
    SeriesSource i[3];
    double xq = 0.0;
    double iScale = 1.0;
};
int LoadAngleLength(const CCmtd99File &file, const LoadAngleInputs &in);
bool LoadAngleCurve(const CCmtd99File &file, const LoadAngleInputs &in, float *y, float noValue,
                    SeriesProgress *progress = nullptr);

// A reactance in per unit of the machine's rating as ohm of the values stored for its channels:
// the base impedance ratedKv² / ratedMva in primary ohm, seen through the voltage transformer
// (primary over secondary `ratioU`) and the current transformer (`ratioI`).
double QuadratureOhms(double xqPerUnit, double ratedKv, double ratedMva, double ratioU, double ratioI);
