#include "faultsolver.h"

#include "cmtd99file.h"
#include "units.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcFaultSearch, "veldrix.faultloc.search", QtWarningMsg)

namespace {

// Susceptance of one microfarad over one kilometre at 50 Hz, in siemens: 2π·50·1e-6.
constexpr double kSusceptancePerMicrofarad = 0.0003141592653589793;
// Each pass steps over a 128th of its stretch, never finer than a metre.
constexpr double kPassFraction = 0.0078125;
constexpr double kFinestStep = 0.001;
// A pass with a step of 10 m or less is the last.
constexpr double kLastStep = 0.01;
// Ratios that disagree by a fifth or more at the best point mean the ends do not see one fault.
constexpr double kNoSolution = 0.19999999;
// At most 129 trial points a pass: its two ends and 127 between.
constexpr int kMaxTrials = 129;

constexpr double kHalf = 0.5;
constexpr double kSqrt3Half = 0.8660254037844386;

// The positive-sequence part of three phasors; with `b` and `c` exchanged, the negative part.
ComplexD PositivePart(const ComplexD &A, const ComplexD &B, const ComplexD &C)
{
    ComplexD out;
    out.re = (A.re - (B.re + C.re) * kHalf + (C.im - B.im) * kSqrt3Half) / 3;
    out.im = ((B.re - C.re) * kSqrt3Half + A.im - (B.im + C.im) * kHalf) / 3;
    return out;
}

QString StageText(uint32_t stage)
{
    switch (stage) {
    case FaultStageEndM:
        return FaultText("Process datas of End M failed:");
    case FaultStageEndN:
        return FaultText("Process datas of End N failed:");
    default:
        return FaultText("Analising failed:");
    }
}

void AppendEnd(QStringList &lines, const FaultEnd &end)
{
    lines << FaultText("\tFile: %s", end.fileName.toUtf8().constData());
    const QString station = end.file ? end.file->Text(end.file->fileDesc.stationName) : QString();
    lines << FaultText("\tStation: %s", station.toUtf8().constData());
    if (end.line && end.file)
        lines << FaultText("\tLine: %s", end.file->Text(end.line->name).toUtf8().constData());
}

} // namespace

int FaultSolver::CheckParameters() const
{
    if (!(line.length >= 0.3) || !std::isfinite(line.length))
        return FaultLengthInvalid;
    if (!(line.R1 > 0.000001))
        return FaultR1Invalid;
    if (!(line.X1 > 0.000001))
        return FaultX1Invalid;
    if (line.C1 < 0)
        return FaultC1Invalid;
    for (int end = M; end <= N; ++end) {
        if (!(tvRatio[end] > 0.000001))
            return FaultTvInvalid;
    }
    for (int end = M; end <= N; ++end) {
        if (!(taRatio[end] > 0.000001))
            return FaultTaInvalid;
    }
    return 0;
}

void FaultSolver::ComputeSequenceParts()
{
    for (int end = M; end <= N; ++end) {
        const ComplexD *u = U[end];
        const ComplexD *i = I[end];
        U1[end] = PositivePart(u[0], u[1], u[2]).scaled(tvRatio[end]);
        U2[end] = PositivePart(u[0], u[2], u[1]).scaled(tvRatio[end]);
        I1[end] = PositivePart(i[0], i[1], i[2]).scaled(taRatio[end]);
        I2[end] = PositivePart(i[0], i[2], i[1]).scaled(taRatio[end]);
        Y1[end] = ComplexD(I1[end]).divide(U1[end]);
        Y2[end] = ComplexD(I2[end]).divide(U2[end]);
    }
}

void FaultSolver::SetLinePoint(double l)
{
    const double R1 = line.R1;
    const double X1 = line.X1;
    const double b = line.C1 * kSusceptancePerMicrofarad;
    const double t = l * l * b;
    const double v = t * X1;
    Z.re = (1 - v / 3) * R1 * l;
    Z.im = (R1 * R1 * t / (6 * X1) + (1 - v / 6)) * X1 * l;
    Ysh.re = 0;
    Ysh.im = (v / 12 + 1) * l * b * 0.5;
}

double FaultSolver::PointVoltage(const ComplexD &u, const ComplexD &y) const
{
    ComplexD w{Ysh.re - y.re, Ysh.im - y.im};
    w.multiply(Z);
    w.re += 1;
    const ComplexD v = ComplexD(u).multiply(w);
    return std::sqrt(v.re * v.re + v.im * v.im);
}

int FaultSolver::Search()
{
    passes.clear();
    double lo = 0;
    double hi = line.length;
    double best = -1;
    float delta = 3.4028235e38f;
    for (;;) {
        const double step = std::max((hi - lo) * kPassFraction, kFinestStep);
        qCDebug(lcFaultSearch, "DistPiU12: %.3f to %.3f, %.3f\n", lo, hi, step);
        best = -1;
        delta = 3.4028235e38f;
        int trials = 0;
        for (double l = lo; l <= hi && trials < kMaxTrials; l += step, ++trials) {
            SetLinePoint(l);
            const float a = float(PointVoltage(U1[M], Y1[M]));
            const double b = PointVoltage(U2[M], Y2[M]);
            SetLinePoint(line.length - l);
            const float c = float(PointVoltage(U1[N], Y1[N]));
            const double d = PointVoltage(U2[N], Y2[N]);
            const double e = std::fabs(1 - (d * a) / (c * b));
            if (e < delta) {
                delta = float(e);
                best = l;
            }
        }
        passes.push_back(FaultSearchPass{lo, hi, step, best, delta});
        if (step <= kLastStep)
            break;
        qCDebug(lcFaultSearch, "  fDelta=%.6f\n", double(delta));
        lo = std::max(lo, best - step);
        hi = std::min(hi, best + step);
    }
    fDelta = delta;
    if (delta >= kNoSolution) {
        position = -1;
        quality = 0;
        return FaultNoSolution;
    }
    position = best;
    quality = static_cast<int>(delta * 1000);
    return 0;
}

int LocateFault(const FaultEnd &endM, const FaultEnd &endN, const FaultLine &line, FaultSolver &out)
{
    out.line = line;
    if (const int code = EndPhasors(endM, endM.StartPoint, out.U[FaultSolver::M], out.I[FaultSolver::M]))
        return int(FaultStageEndM | uint32_t(code));
    if (const int code = EndPhasors(endN, endN.StartPoint, out.U[FaultSolver::N], out.I[FaultSolver::N]))
        return int(FaultStageEndN | uint32_t(code));
    const FaultEnd *ends[2] = {&endM, &endN};
    for (int end = FaultSolver::M; end <= FaultSolver::N; ++end) {
        out.tvRatio[end] = ends[end]->tvPrimary / ends[end]->tvSecondary;
        out.taRatio[end] = ends[end]->taPrimary / ends[end]->taSecondary;
    }
    if (const int code = out.CheckParameters())
        return int(FaultStageAnalysis | uint32_t(code));
    out.ComputeSequenceParts();
    if (const int code = out.Search())
        return int(FaultStageAnalysis | uint32_t(code));
    return 0;
}

QString FaultErrorText(int code)
{
    const uint32_t stage = uint32_t(code) & FaultStageMask;
    const int own = int(uint32_t(code) & ~FaultStageMask);
    if (stage == FaultStageEndM || stage == FaultStageEndN) {
        if (own == EndNoMemory)
            return FaultText("Memory is NOT enough!");
        if (own == EndWindowInvalid)
            return FaultText("Data Window is NOT Valid!");
        return QString();
    }
    static const char *const texts[] = {nullptr,
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "R1 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "X1 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "C1 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "G1 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "R0 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "X0 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "C0 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "G0 Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "Line Length Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "TV Invalid!"),
                                        QT_TRANSLATE_NOOP("CFaultFind2Wizard", "TA Invalid!")};
    if (own >= FaultR1Invalid && own <= FaultTaInvalid)
        return FaultText(texts[own]);
    if (own == FaultNoSolution)
        return FaultText("No Solution!");
    return QString();
}

QStringList FaultReport(int code, const FaultEnd &endM, const FaultEnd &endN, const FaultSolver &solver)
{
    QStringList lines;
    if (code == 0) {
        lines << FaultText("Parameters of End M:");
        AppendEnd(lines, endM);
        lines << FaultText("\nParameters of End N:");
        AppendEnd(lines, endN);
        lines << FaultText("\nResult:");
        lines << FaultText("\tPosition(from End M) = %.3fkm", solver.position);
        return lines;
    }
    lines << StageText(uint32_t(code) & FaultStageMask);
    lines << FaultText("\tERROR CODE = %d", int(uint32_t(code) & ~FaultStageMask));
    lines << FaultText("\tERROE DESCR: %s", FaultErrorText(code).toUtf8().constData());
    return lines;
}
