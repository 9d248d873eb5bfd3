#include "singleended.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
// The change between the two healthy phases of a ground fault is below a quarter of the largest.
constexpr double kSinglePhase = 0.25;
// All three changes within a fifth of each other: a three-phase fault.
constexpr double kThreePhase = 0.8;

ComplexD Minus(const ComplexD &a, const ComplexD &b)
{
    return ComplexD{a.re - b.re, a.im - b.im};
}

ComplexD Conjugate(const ComplexD &a)
{
    return ComplexD{a.re, -a.im};
}

double Modulus(const ComplexD &a)
{
    return std::sqrt(a.re * a.re + a.im * a.im);
}

// k0 = (Z0 − Z1) / (3·Z1); 0 without zero-sequence data.
ComplexD ZeroSequenceFactor(const FaultLine &line)
{
    if (!(line.R0 > 0 && line.X0 > 0))
        return ComplexD{};
    const ComplexD z1{line.R1, line.X1};
    return Minus(ComplexD{line.R0, line.X0}, z1).divide(z1.scaled(3));
}

} // namespace

FaultLoop SelectFaultLoop(const ComplexD current[3], const ComplexD *prefault)
{
    ComplexD change[3];
    for (int p = 0; p < 3; ++p)
        change[p] = prefault ? Minus(current[p], prefault[p]) : current[p];
    // Changes between phases: AB, BC, CA.
    const double d[3] = {Modulus(Minus(change[0], change[1])), Modulus(Minus(change[1], change[2])),
                         Modulus(Minus(change[2], change[0]))};
    const int largest = int(std::max_element(d, d + 3) - d);
    const int smallest = int(std::min_element(d, d + 3) - d);
    if (!(d[largest] > 0))
        return LoopNone;
    const double spread = d[smallest] / d[largest];
    if (spread < kSinglePhase) {
        // The phase outside the quiet pair: quiet BC is a fault of A.
        static const FaultLoop opposite[3] = {LoopCG, LoopAG, LoopBG};
        return opposite[smallest];
    }
    if (spread > kThreePhase)
        return LoopAB;
    static const FaultLoop pairs[3] = {LoopAB, LoopBC, LoopCA};
    return pairs[largest];
}

void LoopQuantities(FaultLoop loop, const ComplexD voltage[3], const ComplexD current[3],
                    const ComplexD *prefault, const FaultLine &line, ComplexD &u, ComplexD &i, ComplexD &di)
{
    u = i = di = ComplexD{};
    auto changeOf = [&](int p) { return prefault ? Minus(current[p], prefault[p]) : ComplexD{}; };
    if (loop >= LoopAG && loop <= LoopCG) {
        const int p = loop - LoopAG;
        const ComplexD residual = current[0] + current[1] + current[2];
        u = voltage[p];
        i = current[p] + ZeroSequenceFactor(line) * residual;
        di = changeOf(p);
        return;
    }
    if (loop >= LoopAB && loop <= LoopCA) {
        const int p = loop - LoopAB;
        const int q = (p + 1) % 3;
        u = Minus(voltage[p], voltage[q]);
        i = Minus(current[p], current[q]);
        di = Minus(changeOf(p), changeOf(q));
    }
}

double ReactanceDistance(const ComplexD &u, const ComplexD &i, double X1)
{
    if (!(X1 > 0) || !(Modulus(i) > 0))
        return kNaN;
    return ComplexD(u).divide(i).im / X1;
}

double TakagiDistance(const ComplexD &u, const ComplexD &i, const ComplexD &di, double R1, double X1)
{
    const ComplexD reference = Conjugate(di);
    const double numerator = (u * reference).im;
    const double denominator = (ComplexD{R1, X1} * i * reference).im;
    if (!(std::fabs(denominator) > 0))
        return kNaN;
    return numerator / denominator;
}

SingleEndedEstimate EstimateSingleEnded(const ComplexD voltage[3], const ComplexD current[3],
                                        const ComplexD *prefault, const FaultLine &line)
{
    SingleEndedEstimate out;
    out.reactanceKm = out.takagiKm = kNaN;
    out.loop = SelectFaultLoop(current, prefault);
    if (out.loop == LoopNone)
        return out;
    ComplexD u, i, di;
    LoopQuantities(out.loop, voltage, current, prefault, line, u, i, di);
    out.reactanceKm = ReactanceDistance(u, i, line.X1);
    if (prefault)
        out.takagiKm = TakagiDistance(u, i, di, line.R1, line.X1);
    return out;
}

int PrefaultStart(const FaultEnd &end)
{
    const int n = PointsPerWindow(end);
    if (n < 1)
        return -1;
    int edge = -1;
    int settled = -1;
    if (!FaultEdgeOfEnd(end, end.segment, edge, settled))
        edge = end.StartPoint;
    // Whole cycles back until the window (and the sample before it) lies before the edge.
    const int64_t behind = std::max<int64_t>(int64_t(end.StartPoint) + n - edge, 1);
    const int64_t start = end.StartPoint - (behind + n - 1) / n * n;
    if (start <= end.segment.first)
        return -1;
    return static_cast<int>(start);
}

SingleEndedEstimate EstimateEnd(const FaultEnd &end, const FaultLine &line)
{
    SingleEndedEstimate out;
    out.reactanceKm = out.takagiKm = kNaN;
    ComplexD u[3], i[3], preU[3], preI[3];
    if (EndPhasors(end, end.StartPoint, u, i) != EndOk)
        return out;
    const double tv = double(end.tvPrimary / end.tvSecondary);
    const double ta = double(end.taPrimary / end.taSecondary);
    const int pre = PrefaultStart(end);
    const bool hasPrefault = pre >= 0 && EndPhasors(end, pre, preU, preI) == EndOk;
    for (int p = 0; p < 3; ++p) {
        u[p] = u[p].scaled(tv);
        i[p] = i[p].scaled(ta);
        preI[p] = preI[p].scaled(ta);
    }
    return EstimateSingleEnded(u, i, hasPrefault ? preI : nullptr, line);
}
