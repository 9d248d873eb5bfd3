#include "genexci.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

const char *const kContext = "CAnaFormPwrLossExciBoundDlg";

// One complaint per edit, in the order of the dialog.
const GenEditRule kRules[kExciEdits] = {
    {0.0f, 1000.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Primary Active Power Before Exci-Lossing] Error!\nValid Range is [0~1000MW].")},
    {0.0f, 60.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Angle of Reactive Power Over Phase] Error!\nValid Range is [0~60(Deg)].")},
    {0.0f, 80.0f,
     QT_TRANSLATE_NOOP(
         "CAnaFormPwrLossExciBoundDlg",
         "[Deviation Angle of Static-Tranquilization Circle] Error!\nValid Range is [0~80(Deg)].")},
    {0.0f, 80.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Deviation Angle of Custom Circle] Error!\nValid Range is [0~80(Deg)].")},
    {0.0f, 100.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Parameter XM of Custom Circle] Error!\nValid Range is [0~100].")},
    {0.0f, 100.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Parameter XN of Custom Circle] Error!\nValid Range is [0~100].")},
    {1.0f, 100.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg", "[Impedance Limit] Error!\nValid Range is [1~100].")},
    {0.0f, 600.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg",
                       "[Primary Lower Exci-Vol. Ufset] Error!\nValid Range is [0~600V].")},
    {0.0f, 2.0f,
     QT_TRANSLATE_NOOP("CAnaFormPwrLossExciBoundDlg", "[Coef. of Uf-P (Kf)] Error!\nValid Range is [0~2].")},
};

void widenBy(ExciBounds &b, const GenCircle &c)
{
    b.fRmin = std::min(b.fRmin, float(c.r - c.fRadius));
    b.fRmax = std::max(b.fRmax, float(c.r + c.fRadius));
    b.fXmin = std::min(b.fXmin, float(c.x - c.fRadius));
    b.fXmax = std::max(b.fXmax, float(c.x + c.fRadius));
}

void stabilityCircle(ExciBounds &b, const GenMachine &m)
{
    if (m.salient) {
        const double fai = b.fFai * kGenDegToRad;
        const double s = m.xq + m.xd;
        b.cirQe.fRadius = float(s / (4.0 * std::cos(fai)));
        b.cirQe.r = std::tan(fai) * s * -0.25;
        b.cirQe.x = s * -0.25;
    } else {
        b.cirQe.fRadius = float((m.xd + m.xs) * 0.5);
        b.cirQe.r = 0.0;
        b.cirQe.x = (m.xs - m.xd) * 0.5;
    }
}

void statorRanges(ExciBounds &b, double zb, const ExciScales &s)
{
    const float limit = b.fZLimit;
    b.fRmin = b.fXmin = -limit;
    b.fRmax = b.fXmax = limit;
    if (!s.hasRx || !(zb > 0.0))
        return;
    const double k = s.ratioU / s.ratioI / zb;
    b.fRmin = std::min(-limit, float(-std::fabs(s.rFull) * k));
    b.fRmax = std::max(limit, float(std::fabs(s.rFull) * k));
    b.fXmin = std::min(-limit, float(-std::fabs(s.xFull) * k));
    b.fXmax = std::max(limit, float(std::fabs(s.xFull) * k));
}

} // namespace

void ExciRecalc(ExciBounds &b, const GenMachine &m, const ExciScales &s)
{
    b.fRmin = b.fRmax = b.fXmin = b.fXmax = b.fPmax = b.fUfmax = 0.0f;
    if (b.fPs == 0.0f)
        b.fPs = float(m.ratedMw);
    const double sn = GenRatedMva(m);
    const double zb = GenBaseOhms(m);

    b.fSalient = m.salient ? float((m.xd - m.xq) / (2.0 * (m.xq + m.xs) * (m.xd + m.xs))) : 0.0f;
    b.fUfsetPu = float(b.fUfset / m.uf0);
    // Kf of 0 puts the knee of the Uf-P criterion at infinity: the slope never acts.
    b.fPtPu = float(1.0 / b.fKf + b.fSalient);
    b.fPmax = float(s.ratioU * s.ratioI * (s.hasP ? s.pFull : 100.0) * 0.000001 / sn);
    b.fUfmax = std::max(float(s.ufFull / m.uf0), b.fUfsetPu);

    statorRanges(b, zb, s);
    stabilityCircle(b, m);
    widenBy(b, b.cirQe);

    // The active-power circle of the operating point before the loss: through the system's
    // reactance point, reaching from there to 1 / Ps per unit on the R axis.
    const double rPe = sn / (2.0 * b.fPs);
    b.cirPe.fRadius = float(rPe);
    b.cirPe.r = rPe;
    b.cirPe.x = m.xs;
    widenBy(b, b.cirPe);

    // The asynchronous (offset mho) circle between -Xd'/2 and -Xd on the X axis.
    b.cirAsyn.fRadius = float(m.xd * 0.5 - m.xdT * 0.25);
    b.cirAsyn.r = 0.0;
    b.cirAsyn.x = (m.xdT * -0.5 - m.xd) * 0.5;
    widenBy(b, b.cirAsyn);

    if (b.nBounds & ExciBounds::CirUser) {
        const double alfa = b.fAlfa * kGenDegToRad;
        const double sum = double(b.fXM) + b.fXN;
        b.cirUser.r = std::tan(alfa) * sum * -0.5;
        b.cirUser.x = (double(b.fXM) - b.fXN) * 0.5;
        b.cirUser.fRadius = float(sum * 0.5 / std::cos(alfa));
        widenBy(b, b.cirUser);
    }
}

bool ExciStoreBounds(const QString edits[kExciEdits], ExciBounds &b, QString &error)
{
    float *const fields[kExciEdits] = {&b.fPs, &b.fBeta,   &b.fFai,   &b.fAlfa, &b.fXM,
                                       &b.fXN, &b.fZLimit, &b.fUfset, &b.fKf};
    return GenStoreEdits(kContext, kRules, fields, kExciEdits, edits, error);
}

QStringList ExciBoundsProblems(const ExciBounds &b)
{
    const float *const fields[kExciEdits] = {&b.fPs, &b.fBeta,   &b.fFai,   &b.fAlfa, &b.fXM,
                                             &b.fXN, &b.fZLimit, &b.fUfset, &b.fKf};
    return GenEditProblems(kContext, kRules, fields, kExciEdits);
}
