#include "genpq.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

const char *const kContext = "CAnaFormPwrPQGBoundDlg";
constexpr double kStep = 0.0017453292519943296; // a tenth of a degree
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kEleventh = 0.09090909090909091;
constexpr double kNoCrossing = 1e9;

// A reserve beyond a half of the corner power leaves no practical operating range.
const GenEditRule kRules[kPQGEdits] = {
    {1.0f, 2.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrPQGBoundDlg",
                       "[Max Cur. of Generator's Stator (p.u.)] Error!\nValid Range is [1.0~2.0].")},
    {1.0f, 2.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrPQGBoundDlg",
                       "[Max Output Torque of Generator (p.u.)] Error!\nValid Range is [1.0~2.0].")},
    {1.0f, 10.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrPQGBoundDlg",
                       "[Max Internal EMF of Generator (p.u.)] Error!\nValid Range is [1.0~10.0].")},
    {0.1f, 2.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrPQGBoundDlg",
                       "[Primary Operation Vol. of Generator (%)] Error!\nValid Range is [0.1~2.0].")},
    {0.0f, 50.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrPQGBoundDlg",
                       "[Stable Accumulation Percentage of Generator] Error!\nValid Range is [0~50].")},
};

// The field limit walked from d = 0 until it passes the output line or the stator arc, then
// kept as the crossing and ten points back towards d = 0, with d = 0 itself last.
void rotorLimit(PQGBounds &b, double xd, double xq)
{
    const double e = b.fEk;
    const double u = b.fUk;
    const double smax = b.fSmax;
    double pkCross = kNoCrossing;  // angle where P first exceeds the output
    double arcCross = kNoCrossing; // angle where the curve leaves the stator circle
    PQPoint last = PQGRotorPoint(e, u, xd, xq, 0.0);
    double lastD = 0.0;
    double dEnd = 0.0;
    PQPoint end = last;
    for (double d = kStep; d <= kHalfPi; d += kStep) {
        const PQPoint now = PQGRotorPoint(e, u, xd, xq, d);
        if (now.p > b.fPk && last.p <= b.fPk) {
            const double t = (b.fPk - last.p) / (now.p - last.p);
            pkCross = lastD + t * (d - lastD);
        }
        const double r0 = std::hypot(last.p, last.q);
        const double r1 = std::hypot(now.p, now.q);
        if (r0 <= smax && r1 > smax) {
            // |last + t·(now - last)| = smax, the root on the segment.
            const double dp = now.p - last.p, dq = now.q - last.q;
            const double qa = dp * dp + dq * dq;
            const double qb = 2.0 * (last.p * dp + last.q * dq);
            const double qc = r0 * r0 - smax * smax;
            const double t =
                qa > 0.0 ? (-qb + std::sqrt(std::max(0.0, qb * qb - 4.0 * qa * qc))) / (2.0 * qa) : 0.0;
            arcCross = lastD + std::clamp(t, 0.0, 1.0) * (d - lastD);
        }
        dEnd = d;
        end = now;
        if (pkCross < kNoCrossing || arcCross < kNoCrossing) {
            dEnd = std::min(pkCross, arcCross);
            end = PQGRotorPoint(e, u, xd, xq, dEnd);
            break;
        }
        last = now;
        lastD = d;
    }
    b.rotorLimit.clear();
    b.rotorLimit.push_back(end);
    for (int k = 1; k <= 10; ++k)
        b.rotorLimit.push_back(PQGRotorPoint(e, u, xd, xq, dEnd - k * dEnd * kEleventh));
    b.rotorLimit.push_back(PQGRotorPoint(e, u, xd, xq, 0.0));
}

void underExcitedSalient(PQGBounds &b, double xd, double xq)
{
    const double u = b.fUk;
    b.underExcited.clear();
    for (int k = 0; k <= 11; ++k) {
        const double p = k * b.fPc * kEleventh;
        double e = 0.0, d = 0.0;
        PQGStabilityAngle(100.0 / (100.0 - b.fGk) * p, u, xd, xq, e, d);
        b.underExcited.push_back(PQPoint{p, PQGRotorPoint(e, u, xd, xq, d).q});
    }
}

// The round machine's limit: a circle through (0, -U²/Xd) widened by the reserve g; its upper
// end joins the output line, or the stator arc where that comes first.
void underExcitedRound(PQGBounds &b, double xd)
{
    const double u2 = double(b.fUk) * b.fUk;
    const double g = b.fGk * b.fPc * 0.01;
    const double s = b.fPc * kEleventh;
    auto qAt = [&](double p) { return std::sqrt((p + g) * (p + g) - p * p) - u2 / xd; };
    b.underExcited.clear();
    b.underExcited.push_back(PQPoint{0.0, -u2 / xd});
    for (int k = 1; k <= 10; ++k)
        b.underExcited.push_back(PQPoint{k * s, qAt(k * s)});
    const double pc = b.fPc;
    const double q = qAt(pc);
    if (pc * pc + q * q <= double(b.fSmax) * b.fSmax)
        b.underExcited.push_back(PQPoint{pc, q});
    else
        b.underExcited.push_back(PQPoint{pc, -std::sqrt(std::max(0.0, double(b.fSmax) * b.fSmax - pc * pc))});
}

void widen(PQGBounds &b, const PQPoint &pt)
{
    b.fPmin = std::min(b.fPmin, float(pt.p));
    b.fPmax = std::max(b.fPmax, float(pt.p));
    b.fQmin = std::min(b.fQmin, float(pt.q));
    b.fQmax = std::max(b.fQmax, float(pt.q));
}

} // namespace

PQPoint PQGRotorPoint(double e, double u, double xd, double xq, double d)
{
    PQPoint pt;
    pt.p = e * u / xd * std::sin(d) + std::sin(2.0 * d) * (xd - xq) * u * u / (2.0 * xq * xd);
    pt.q =
        e * u / xd * std::cos(d) - (std::sin(d) * std::sin(d) / xq + std::cos(d) * std::cos(d) / xd) * u * u;
    return pt;
}

int PQGStabilityAngle(double p, double u, double xd, double xq, double &e, double &d)
{
    // At the edge of stability dP/dd = 0: E·U/Xd·cos d + k·cos 2d = 0 with k the reluctance
    // term U²(Xd - Xq)/(Xd·Xq). The EMF that carries p at that angle is fed back until it
    // settles, starting from the round machine's Xd·p/U.
    const double k = u * u * (xd - xq) / (xd * xq);
    double x = xd * p / u;
    d = kHalfPi;
    int rounds = 0;
    while (rounds < 10000) {
        ++rounds;
        const double a = x * u / xd;
        if (std::fabs(k) > 1e-12) {
            const double c = (-a + std::sqrt(a * a + 8.0 * k * k)) / (4.0 * k);
            d = std::acos(std::clamp(c, -1.0, 1.0));
        } else {
            d = kHalfPi;
        }
        const double sd = std::sin(d);
        const double next = sd > 0.0 ? std::max(0.0, xd / (u * sd) * (p - k * 0.5 * std::sin(2.0 * d))) : x;
        const bool settled = std::fabs(next - x) < 0.0001;
        x = next;
        if (settled)
            break;
    }
    e = x;
    return rounds;
}

void PQGRecalc(PQGBounds &b, const GenMachine &m)
{
    b.fSmax = b.fIk * b.fUk;
    b.fSn = float(GenRatedMva(m));
    const double pf = m.pf > 0.0 ? m.pf : 1.0;
    b.rated = PQPoint{1.0, std::sqrt(1.0 / pf * 1.0 / pf - 1.0)};
    if (!(b.fSmax > b.fPk)) {
        b.fPc = b.fSmax;
        b.fQc = 0.0f;
    } else {
        b.fPc = b.fPk;
        b.fQc = std::sqrt(b.fSmax * b.fSmax - b.fPk * b.fPk);
    }
    const double xq = m.salient ? m.xq : m.xd;
    rotorLimit(b, m.xd, xq);
    if (m.salient)
        underExcitedSalient(b, m.xd, m.xq);
    else
        underExcitedRound(b, m.xd);

    b.fPmin = b.fPmax = b.fQmin = b.fQmax = 0.0f;
    for (const PQPoint &pt : b.rotorLimit)
        widen(b, pt);
    for (const PQPoint &pt : b.underExcited)
        widen(b, pt);
    widen(b, PQPoint{b.fPc, b.fQc});
    widen(b, PQPoint{0.0, b.fSmax});
    widen(b, b.rated);
}

std::vector<PQPoint> PQGLimitPath(const PQGBounds &b)
{
    std::vector<PQPoint> path(b.underExcited);
    const PQPoint corner{b.fPc, b.fQc};
    path.push_back(corner);
    if (!b.rotorLimit.empty()) {
        // Along the arc only where the field limit ends on it; one ending on the output line
        // joins the corner straight.
        const PQPoint &cross = b.rotorLimit.front();
        const double smax = b.fSmax;
        if (std::fabs(std::hypot(cross.p, cross.q) - smax) < 1e-3 * std::max(1.0, smax)) {
            const double from = std::atan2(corner.p, corner.q);
            const double to = std::atan2(cross.p, cross.q);
            const int steps = int(std::fabs(to - from) / 0.017453292519943295);
            for (int k = 1; k <= steps && k < 360; ++k) {
                const double a = from + (to - from) * k / (steps + 1);
                path.push_back(PQPoint{smax * std::sin(a), smax * std::cos(a)});
            }
        }
        path.insert(path.end(), b.rotorLimit.begin(), b.rotorLimit.end());
    }
    return path;
}

bool PQGStoreBounds(const QString edits[kPQGEdits], PQGBounds &b, QString &error)
{
    float *const fields[kPQGEdits] = {&b.fIk, &b.fPk, &b.fEk, &b.fUk, &b.fGk};
    return GenStoreEdits(kContext, kRules, fields, kPQGEdits, edits, error);
}

QStringList PQGBoundsProblems(const PQGBounds &b)
{
    const float *const fields[kPQGEdits] = {&b.fIk, &b.fPk, &b.fEk, &b.fUk, &b.fGk};
    return GenEditProblems(kContext, kRules, fields, kPQGEdits);
}
