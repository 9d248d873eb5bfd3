#pragma once

// A short circuit on a two-source line from the long-line equations, for the fault-location suites:
// per sequence, the exact hyperbolic two-ports on both sides of the fault with a source behind
// each end, joined at the fault. Gives both ends' phase voltages and currents (primary, peak, into
// the line) before and during the fault, and writes them as 50 Hz samples.

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace linefault {

using Cx = std::complex<long double>;

struct Line
{
    long double length = 100, r1 = 0.03, x1 = 0.3, c1 = 0.012; // km, ohm/km, microfarad/km
    long double r0 = 0.25, x0 = 1.0, c0 = 0.008;
};

struct Source
{
    Cx e;      // positive-sequence source voltage, peak, phase A
    Cx z1, z0; // source impedances
};

enum class Kind
{
    AG,
    BC,
    BCG,
    CG
};

struct Case
{
    Line line;
    Source m{std::polar<long double>(220e3L * std::sqrt(2.0L / 3.0L), 0.35L), {1.0L, 12.0L}, {2.0L, 20.0L}};
    Source n{std::polar<long double>(215e3L * std::sqrt(2.0L / 3.0L), 0.0L), {2.0L, 18.0L}, {3.0L, 30.0L}};
    long double x = 50; // km from End M
    Kind kind = Kind::AG;
    long double rf = 0; // fault resistance, ohm
};

// Phase phasors of one end: voltages and currents before and during the fault.
struct End
{
    Cx u[3], i[3], preU[3], preI[3];
};

struct TwoPort
{
    Cx a, b, c;
};

inline TwoPort Section(long double r, long double x, long double cMicro, long double length)
{
    const Cx z{r, x};
    const Cx y{0, 2 * 3.14159265358979323846L * 50 * cMicro * 1e-6L};
    const Cx gamma = std::sqrt(z * y);
    const Cx zc = std::sqrt(z / y);
    return TwoPort{std::cosh(gamma * length), zc * std::sinh(gamma * length), std::sinh(gamma * length) / zc};
}

inline void ToPhases(const Cx seq[3], Cx out[3])
{
    const Cx a = std::polar<long double>(1, 2 * 3.14159265358979323846L / 3);
    out[0] = seq[0] + seq[1] + seq[2];
    out[1] = seq[0] + a * a * seq[1] + a * seq[2];
    out[2] = seq[0] + a * seq[1] + a * a * seq[2];
}

// Both ends of the faulted line; sequence index 0 zero, 1 positive, 2 negative.
inline void Solve(const Case &f, End &m, End &n)
{
    const Line &l = f.line;
    TwoPort sec[2][3];
    Cx y[2][3], isc[2][3];
    for (int k = 0; k < 3; ++k) {
        const bool zero = k == 0;
        sec[0][k] = Section(zero ? l.r0 : l.r1, zero ? l.x0 : l.x1, zero ? l.c0 : l.c1, f.x);
        sec[1][k] = Section(zero ? l.r0 : l.r1, zero ? l.x0 : l.x1, zero ? l.c0 : l.c1, l.length - f.x);
        const Source *src[2] = {&f.m, &f.n};
        for (int side = 0; side < 2; ++side) {
            const Cx zs = zero ? src[side]->z0 : src[side]->z1;
            const TwoPort &t = sec[side][k];
            y[side][k] = (t.a + zs * t.c) / (t.b + zs * t.a);
            isc[side][k] = k == 1 ? src[side]->e / (t.b + zs * t.a) : Cx{};
        }
    }
    const Cx z0 = 1.0L / (y[0][0] + y[1][0]), z1 = 1.0L / (y[0][1] + y[1][1]),
             z2 = 1.0L / (y[0][2] + y[1][2]);
    const Cx vth = (isc[0][1] + isc[1][1]) * z1;
    Cx fault[3]; // sequence currents into the fault
    const Cx rf = f.rf;
    if (f.kind == Kind::AG || f.kind == Kind::CG) {
        fault[0] = fault[1] = fault[2] = vth / (z0 + z1 + z2 + 3.0L * rf);
    } else if (f.kind == Kind::BC) {
        fault[1] = vth / (z1 + z2 + rf);
        fault[2] = -fault[1];
    } else {
        const Cx zg = z0 + 3.0L * rf;
        fault[1] = vth / (z1 + z2 * zg / (z2 + zg));
        fault[2] = -fault[1] * zg / (z2 + zg);
        fault[0] = -fault[1] * z2 / (z2 + zg);
    }
    const Cx vf[3] = {-z0 * fault[0], vth - z1 * fault[1], -z2 * fault[2]};
    End *ends[2] = {&m, &n};
    for (int side = 0; side < 2; ++side) {
        Cx u[3], i[3], preU[3] = {}, preI[3] = {};
        for (int k = 0; k < 3; ++k) {
            const TwoPort &t = sec[side][k];
            const Cx into = isc[side][k] - vf[k] * y[side][k];
            u[k] = t.a * vf[k] + t.b * into;
            i[k] = t.c * vf[k] + t.a * into;
        }
        const TwoPort &t = sec[side][1];
        const Cx preInto = isc[side][1] - vth * y[side][1];
        preU[1] = t.a * vth + t.b * preInto;
        preI[1] = t.c * vth + t.a * preInto;
        ToPhases(u, ends[side]->u);
        ToPhases(i, ends[side]->i);
        ToPhases(preU, ends[side]->preU);
        ToPhases(preI, ends[side]->preI);
        if (f.kind == Kind::CG) // the same fault with the phases named one on: A's fault falls on C
            for (Cx *p : {ends[side]->u, ends[side]->i, ends[side]->preU, ends[side]->preI})
                std::rotate(p, p + 1, p + 3);
    }
}

// Samples of a 50 Hz phasor (peak) divided by `ratio`: the pre-fault phasor before `faultAt`,
// the fault phasor from there on.
inline std::vector<float> Wave(Cx pre, Cx fault, long double ratio, double rate, int count, int faultAt)
{
    std::vector<float> x(static_cast<size_t>(count));
    for (int k = 0; k < count; ++k) {
        const long double w = 2 * 3.14159265358979323846L * 50 * k / rate;
        const Cx p = k < faultAt ? pre : fault;
        x[size_t(k)] = static_cast<float>((p * std::polar<long double>(1, w)).imag() / ratio);
    }
    return x;
}

} // namespace linefault
