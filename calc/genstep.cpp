#include "genstep.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <complex>

namespace {

const char *const kContext = "CAnaFormPwrLossStepBoundDlg";
constexpr double kRadToDeg = 57.29577951308232;

const GenEditRule kRules[kStepEdits] = {
    {0.0f, 100.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossStepBoundDlg",
                       "[Short Circuit reactance of Trans.] Error!\nValid Range is[0~100].")},
    {0.0f, 90.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossStepBoundDlg",
                       "[Lean Angle of Lens] Error!\nValid Range is[0~90(Deg)].")},
    {0.0f, 180.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossStepBoundDlg",
                       "[Inner Angle of Lens Circle] Error!\nValid Range is[0~180(Deg)].")},
    {1.0f, 100.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossStepBoundDlg", "[Impedance Limit] Error!\nValid Range is [1~100].")},
};

void widenPoint(StepBounds &b, double r, double x)
{
    b.fRmin = std::min(b.fRmin, float(r));
    b.fRmax = std::max(b.fRmax, float(r));
    b.fXmin = std::min(b.fXmin, float(x));
    b.fXmax = std::max(b.fXmax, float(x));
}

void widenCircle(StepBounds &b, const double c[2])
{
    widenPoint(b, c[0] - b.fRadius, c[1] - b.fRadius);
    widenPoint(b, c[0] + b.fRadius, c[1] + b.fRadius);
}

void startRanges(StepBounds &b, const GenMachine &m, const ExciScales &s)
{
    const float limit = b.fZLimit;
    b.fRmin = b.fXmin = -limit;
    b.fRmax = b.fXmax = limit;
    const double zb = GenBaseOhms(m);
    if (!s.hasRx || !(zb > 0.0))
        return;
    const double k = s.ratioU / s.ratioI / zb;
    b.fRmin = std::min(-limit, float(-std::fabs(s.rFull) * k));
    b.fRmax = std::max(limit, float(std::fabs(s.rFull) * k));
    b.fXmin = std::min(-limit, float(-std::fabs(s.xFull) * k));
    b.fXmax = std::max(limit, float(std::fabs(s.xFull) * k));
}

bool rightOfAxis(const StepBounds &b, double r, double x)
{
    if (b.fFai == 0.0f)
        return x < b.ptB[1];
    if (b.fFai == 90.0f)
        return r > b.ptB[0];
    const double a1 = std::atan2(x - b.ptB[1], r - b.ptB[0]) * kRadToDeg;
    return a1 > b.fFai - 180.0f && a1 <= b.fFai;
}

bool beyondT(const StepBounds &b, double r, double x)
{
    if (b.fFai == 0.0f)
        return r > b.ptT[0];
    if (b.fFai == 90.0f)
        return x > b.ptT[1];
    const double a2 = std::atan2(x - b.ptT[1], r - b.ptT[0]) * kRadToDeg;
    return a2 > b.fFai + 90.0f - 180.0f && a2 <= b.fFai + 90.0f;
}

} // namespace

void StepRecalc(StepBounds &b, const GenMachine &m, const ExciScales &s)
{
    const double f = b.fFai * kGenDegToRad;
    b.ptA[0] = std::cos(f) * m.xs;
    b.ptA[1] = std::sin(f) * m.xs;
    b.ptB[0] = -std::cos(f) * m.xdT;
    b.ptB[1] = -std::sin(f) * m.xdT;
    b.ptT[0] = std::cos(f) * b.fXt * 0.9;
    b.ptT[1] = std::sin(f) * b.fXt * 0.9;

    const double d = std::hypot(b.ptA[0] - b.ptB[0], b.ptA[1] - b.ptB[1]);
    const double a = kGenPi - b.fAlfa * kGenDegToRad;
    b.fRadius = float(d * 0.5 / std::sin(a));
    const double beta = 1.5707963267948966 - a;
    b.ptC1[0] = b.ptB[0] + b.fRadius * std::cos(f - beta);
    b.ptC1[1] = b.ptB[1] + b.fRadius * std::sin(f - beta);
    b.ptC2[0] = b.ptB[0] + b.fRadius * std::cos(f + beta);
    b.ptC2[1] = b.ptB[1] + b.fRadius * std::sin(f + beta);

    startRanges(b, m, s);
    widenPoint(b, b.ptA[0], b.ptA[1]);
    widenPoint(b, b.ptB[0], b.ptB[1]);
    widenPoint(b, b.ptT[0], b.ptT[1]);
    widenCircle(b, b.ptC1);
    widenCircle(b, b.ptC2);
}

int StepCode(const StepBounds &b, double r, double x)
{
    int code = 0;
    const double d1 = std::hypot(r - b.ptC1[0], x - b.ptC1[1]);
    const double d2 = std::hypot(r - b.ptC2[0], x - b.ptC2[1]);
    if (d1 < b.fRadius && d2 < b.fRadius)
        code |= StepInsideLens;
    if (rightOfAxis(b, r, x))
        code |= StepRightOfAxis;
    if (beyondT(b, r, x))
        code |= StepBeyondT;
    return code;
}

int StepRegionOfCode(int code)
{
    switch (code) {
    case 256:
        return 1;
    case 257:
        return 2;
    case 273:
        return 3;
    case 272:
        return 4;
    case 16:
        return 5;
    case 17:
        return 6;
    case 1:
        return 7;
    case 0:
        return 8;
    default:
        return 0;
    }
}

StepSlipCounter::Slip StepSlipCounter::next(int region)
{
    if (region == m_state)
        return NoSlip;
    const bool system = m_state >= 1 && m_state <= 3;
    const bool gt = m_state >= 5 && m_state <= 7;
    if (system || gt) {
        if (region != m_state + 1) {
            // A broken chain starts again at once when the point is back at a chain's first
            // region: a swing that returns before slipping and then slips counts once.
            m_state = region == 1 || region == 5 ? region : 0;
            return NoSlip;
        }
        m_state = region;
        if (region == 4)
            return SlipSystem;
        if (region == 8)
            return SlipGT;
        return NoSlip;
    }
    m_state = region == 1 || region == 5 ? region : 0;
    return NoSlip;
}

double StepPowerAngle(const StepBounds &b, double r, double x)
{
    const std::complex<double> z(r, x);
    const std::complex<double> q =
        (z - std::complex<double>(b.ptB[0], b.ptB[1])) / (z - std::complex<double>(b.ptA[0], b.ptA[1]));
    return std::arg(q) * kRadToDeg;
}

bool StepStoreBounds(const QString edits[kStepEdits], StepBounds &b, QString &error)
{
    float *const fields[kStepEdits] = {&b.fXt, &b.fFai, &b.fAlfa, &b.fZLimit};
    return GenStoreEdits(kContext, kRules, fields, kStepEdits, edits, error);
}

QStringList StepBoundsProblems(const StepBounds &b)
{
    const float *const fields[kStepEdits] = {&b.fXt, &b.fFai, &b.fAlfa, &b.fZLimit};
    return GenEditProblems(kContext, kRules, fields, kStepEdits);
}
