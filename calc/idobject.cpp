#include "idobject.h"

#include "chnmap.h"
#include "seriesframe.h"
#include "units.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int kPhases = 3;
constexpr double kPi = 3.141592653589793;
constexpr const char *kContext = "CAnaFormUnitId0Base";

QString tr(const char *text)
{
    return QCoreApplication::translate(kContext, text);
}

double modulus(const ComplexD &z)
{
    return std::sqrt(z.re * z.re + z.im * z.im);
}

ComplexD minus(const ComplexD &a, const ComplexD &b)
{
    return ComplexD{a.re - b.re, a.im - b.im};
}

int16_t reverseOf(const IdObject &o, const IdBranch &b)
{
    return b.nReverse ? b.nReverse : o.nReverse;
}

const CChnMapAnalog *mapOf(const CCmtd99File &file, int16_t index)
{
    return index > 0 ? file.FindAnalogMap(index) : nullptr;
}

// A branch of the phase channels of a current set; the flag byte tells which exist.
IdBranch branchOf(const CCmtd99File &file, const ChannelSet &set)
{
    IdBranch b;
    for (int p = 0; p < kPhases; ++p) {
        b.chn[p] = mapOf(file, set[size_t(p)]);
        if (b.chn[p])
            b.nFlag |= uint8_t(1u << p);
    }
    return b;
}

bool needsAllPhases(int32_t kind)
{
    return kind != IdKindGenIncomplete && kind != IdKindTrmZeroSeq && kind != IdKindBusbar;
}

// Adds the branch of a set unless it is empty, or lacks a phase where the kind needs all.
void addGroup(IdObject &o, IdBranch b)
{
    if (!b.nFlag)
        return;
    if (needsAllPhases(o.nKind) && b.nFlag != IdBranch::AllPhases)
        return;
    IdAddBranch(o, b);
}

bool isDifference(const int16_t m[3])
{
    return (m[0] != 0) + (m[1] != 0) + (m[2] != 0) == 2;
}

// The balance factor of a transformer branch: the primary current of its side scaled by the
// side's voltage to the reference side, over the reference side's ratio, so that through
// current gives equal secondary amperes on both sides. A star-delta difference carries √3.
double balanceFactor(const IdBranch &b, float kv, float refKv, float refRatio)
{
    const CChnMapAnalog *chn = b.chn[0] ? b.chn[0] : b.chn[1] ? b.chn[1] : b.chn[2];
    double k = chn ? double(chn->PrimaryFactor()) : 1.0;
    if (kv > 0.0f && refKv > 0.0f)
        k *= double(kv) / double(refKv);
    if (refRatio > 0.0f)
        k /= double(refRatio);
    if (isDifference(b.nMatrix))
        k /= std::sqrt(3.0);
    return k;
}

// Which side each of the "TA_Id" sets belongs to: the high side's branches first, then the
// middle and the low side's; without branch counts, set 1 is the high side, set 2 the middle
// (the low of a two-winding unit) and the rest the low side.
const TrmSide *sideOfSet(const CmtdInfTrwk_UnitTrm &u, int set)
{
    const TrmSide *sides[3] = {&u.sideH, &u.sideM, &u.sideL};
    int counted = 0;
    for (const TrmSide *s : sides)
        counted += std::max<int>(0, s->branchNum);
    if (counted > 0) {
        int first = 0;
        for (const TrmSide *s : sides) {
            if (set < first + s->branchNum)
                return s;
            first += std::max<int>(0, s->branchNum);
        }
        return &u.sideL;
    }
    if (set == 0)
        return &u.sideH;
    if (set == 1 && u.windingNum != 2)
        return &u.sideM;
    return &u.sideL;
}

void buildLongitudinal(IdObject &o, const CmtdInfTrwk_UnitTrm &u, const CCmtd99File &file)
{
    float refKv = 0.0f;
    float refRatio = 0.0f;
    for (int s = 0; s < CmtdInfTrwk_UnitTrm::kTaIdSets; ++s) {
        IdBranch b = branchOf(file, u.taId[size_t(s)]);
        if (!b.nFlag)
            continue;
        const TrmSide *side = sideOfSet(u, s);
        IdWindingMatrix(side->windingMode, b.nMatrix);
        if (o.nBranches == 0) {
            refKv = side->ratedKv;
            const CChnMapAnalog *chn = b.chn[0] ? b.chn[0] : b.chn[1] ? b.chn[1] : b.chn[2];
            refRatio = chn ? chn->PrimaryFactor() / std::max(chn->SecondaryFactor(), 1e-30f) : 1.0f;
        }
        b.fK = balanceFactor(b, side->ratedKv, refKv, refRatio);
        addGroup(o, b);
    }
}

void buildAutoSets(IdObject &o, const CmtdInfTrwk_UnitTrm &u, const CCmtd99File &file)
{
    for (const ChannelSet &set : u.taIdcw) {
        IdBranch b = branchOf(file, set);
        if (o.nKind == IdKindTrmZeroSeq && b.nFlag) {
            IdWindingMatrix(0, b.nMatrix);
            b.nMatrix[0] = b.nMatrix[1] = b.nMatrix[2] = 1;
        }
        addGroup(o, b);
        // The neutral current of a set is a zero-sequence branch of its own.
        if (o.nKind == IdKindTrmZeroSeq && set[3] > 0) {
            IdBranch n;
            n.chn[0] = mapOf(file, set[3]);
            n.nFlag = n.chn[0] ? IdBranch::PhaseA : 0;
            addGroup(o, n);
        }
    }
}

// The phasors of the branches' channels at one window, in slot 3·b + p.
struct IdPhasors
{
    ComplexD value[kIdMaxBranches * kPhases];
    int code[kIdMaxBranches * kPhases];
    const CChnMapAnalog *chns[kIdMaxBranches * kPhases];
};

void gatherChannels(const IdObject &o, IdPhasors &ph)
{
    for (int b = 0; b < kIdMaxBranches; ++b) {
        const bool used = b < o.nBranches && (o.nBranchMask & (1u << b));
        for (int p = 0; p < kPhases; ++p)
            ph.chns[3 * b + p] = used && (o.branch[b].nFlag & (1u << p)) ? o.branch[b].chn[p] : nullptr;
    }
}

// The second harmonic of a channel over the window that its fundamental used.
ComplexD secondHarmonic(const CChnMapAnalog *chn, int start, int n)
{
    if (!chn || n < 2 || start < 0 || int64_t(start) + n > chn->sampleCount)
        return ComplexD();
    return DftPhasor(chn->Values() + start, n, 2, DecimationStep(n));
}

// Id, Ir, angle and second harmonic of the rows at one window start.
struct IdRowValues
{
    double id[kPhases] = {};
    double ir[kPhases] = {};
    double id2[kPhases] = {};
    double angle[kPhases] = {};
};

void combineRows(const IdObject &o, const IdPhasors &ph, const IdPhasors *second, IdRowValues &out)
{
    ComplexD trans[kIdMaxBranches][kPhases];
    ComplexD trans2[kIdMaxBranches][kPhases];
    int count = 0;
    for (int b = 0; b < o.nBranches; ++b) {
        if (!(o.nBranchMask & (1u << b)))
            continue;
        ComplexD in[kPhases];
        ComplexD in2[kPhases];
        for (int p = 0; p < kPhases; ++p) {
            const int slot = 3 * b + p;
            in[p] = ph.code[slot] == PhasorValue ? ph.value[slot] : ComplexD();
            in2[p] = second ? second->value[slot] : ComplexD();
        }
        IdTransformBranch(o.branch[b], reverseOf(o, o.branch[b]), in, trans[count]);
        IdTransformBranch(o.branch[b], reverseOf(o, o.branch[b]), in2, trans2[count]);
        ++count;
    }
    for (int p = 0; p < kPhases; ++p) {
        if (!(o.nMask & (1u << p)))
            continue;
        ComplexD column[kIdMaxBranches];
        ComplexD sum2;
        for (int b = 0; b < count; ++b) {
            column[b] = trans[b][p];
            sum2 = sum2 + trans2[b][p];
        }
        IdBraking(o.nMode, column, count, out.id[p], out.ir[p]);
        ComplexD sum;
        for (int b = 0; b < count; ++b)
            sum = sum + column[b];
        out.angle[p] = std::atan2(sum.im, sum.re) * 57.29577951308232;
        out.id2[p] = modulus(sum2);
    }
}

// The values at a window start within `segment` of `n` points per cycle.
void valuesAt(const IdObject &o, IdPhasors &ph, IdPhasors &second, int start, int n,
              const RateSegment &segment, IdRowValues &out)
{
    BasePhasorsAt(*o.pRecording, &segment, ph.chns, kIdMaxBranches * kPhases, start, ph.value, ph.code);
    for (int s = 0; s < kIdMaxBranches * kPhases; ++s)
        second.value[s] = ph.chns[s] ? secondHarmonic(ph.chns[s], start, n) : ComplexD();
    combineRows(o, ph, &second, out);
}

void storeRow(IdObject &o, int i, const IdRowValues &v)
{
    for (int p = 0; p < kPhases; ++p) {
        if (!(o.nMask & (1u << p)))
            continue;
        o.fId[p][size_t(i)] = float(v.id[p]);
        o.fIr[p][size_t(i)] = float(v.ir[p]);
        o.fId2[p][size_t(i)] = float(v.id2[p]);
        o.fAngle[p][size_t(i)] = float(v.angle[p]);
    }
}

void holdRow(IdObject &o, int i)
{
    for (int p = 0; p < kPhases; ++p) {
        if (!(o.nMask & (1u << p)))
            continue;
        HoldSample(o.fId[p].data(), i);
        HoldSample(o.fIr[p].data(), i);
        HoldSample(o.fId2[p].data(), i);
        HoldSample(o.fAngle[p].data(), i);
    }
}

// One usable segment: every sample whose window lies within the recording gets its values,
// the others hold.
bool computeSegment(IdObject &o, const RateSegment &segment, float freq, IdPhasors &ph, IdPhasors &second,
                    SeriesProgress &progress)
{
    const int total = o.pRecording->loadedPoints;
    const int n = PointsPerCycle(segment.rate, freq);
    for (int i = segment.first; i < segment.end; ++i) {
        const int start = DftWindowStart(i, n, segment, total);
        if (n >= 1 && start >= segment.first && int64_t(start) + n <= segment.end) {
            IdRowValues v;
            valuesAt(o, ph, second, start, n, segment, v);
            storeRow(o, i, v);
        } else {
            holdRow(o, i);
        }
        if (!progress.at(i))
            return false;
    }
    return true;
}

} // namespace

void IdWindingMatrix(int16_t mode, int16_t m[3])
{
    // m0 multiplies the own phase, m1 the next (B for A), m2 the one after (C for A).
    static const struct
    {
        int16_t code;
        int16_t m[3];
    } table[] = {
        {111, {-1, 0, 0}}, // Y6
        {112, {1, -1, 0}}, // D1: Ia - Ib leads by 30 degrees, undoing the delta's lag
        {113, {-1, 0, 1}}, // D5
        {114, {-1, 1, 0}}, // D7
        {115, {1, 0, -1}}, // D11: Ia - Ic lags by 30 degrees, undoing the delta's lead
        {130, {1, 0, -1}}, // Y1: the star side turned onto a delta lagging by 30 degrees
        {131, {-1, 1, 0}}, // Y5
        {132, {-1, 0, 1}}, // Y7
        {133, {1, -1, 0}}, // Y11: the star side turned onto a delta leading by 30 degrees
        {135, {-1, 0, 0}}, // D6
    };
    m[0] = 1;
    m[1] = 0;
    m[2] = 0;
    for (const auto &row : table) {
        if (row.code == mode) {
            std::copy(row.m, row.m + 3, m);
            return;
        }
    }
}

void IdTransformBranch(const IdBranch &b, int16_t reverse, const ComplexD in[3], ComplexD out[3])
{
    const double k = b.fK * (reverse < 0 ? -1.0 : 1.0);
    for (int p = 0; p < kPhases; ++p) {
        const ComplexD sum = in[(p + 1) % 3].scaled(b.nMatrix[1]) + in[(p + 2) % 3].scaled(b.nMatrix[2]) +
                             in[p].scaled(b.nMatrix[0]);
        out[p] = sum.scaled(k);
    }
}

void IdBraking(int32_t mode, const ComplexD *in, int count, double &id, double &ir)
{
    ComplexD sum;
    double moduli = 0.0;
    int largest = 0;
    double largestModulus = -1.0;
    for (int b = 0; b < count; ++b) {
        sum = sum + in[b];
        const double m = modulus(in[b]);
        moduli += m;
        if (m > largestModulus) {
            largestModulus = m;
            largest = b;
        }
    }
    id = modulus(sum);
    ir = 0.0;
    if (count < 1)
        return;
    const ComplexD rest = minus(sum, in[largest]);
    switch (mode) {
    case IdModSum:
        ir = 0.5 * moduli;
        break;
    case IdMaxVal:
        ir = largestModulus;
        break;
    case IdSumSub:
        ir = 0.5 * modulus(minus(in[largest], rest));
        break;
    case IdProduct: {
        const double a = std::atan2(in[largest].im, in[largest].re) - std::atan2(rest.im, rest.re) + kPi;
        const double c = std::cos(a);
        ir = c < 0.0 ? 0.0 : std::sqrt(largestModulus * modulus(rest) * c);
        break;
    }
    default:
        break;
    }
}

void IdClearObject(IdObject &object)
{
    IdObject fresh;
    fresh.pRecording = object.pRecording;
    fresh.nKind = object.nKind;
    fresh.nMode = object.nMode;
    object = std::move(fresh);
}

bool IdAddBranch(IdObject &o, const IdBranch &branch)
{
    if (o.nBranches >= kIdMaxBranches)
        return false;
    o.branch[o.nBranches++] = branch;
    return true;
}

bool IdBuildFromTrm(IdObject &o, const CmtdInfTrwk_UnitTrm &unit, int32_t kind, QString &message)
{
    IdClearObject(o);
    o.nKind = kind;
    o.pUnit = &unit;
    o.name = QString::fromLocal8Bit(unit.name);
    if (!o.pRecording || kind < IdKindTrmLongitudinal || kind > IdKindTrmZeroSeq) {
        message = tr("No ACC Channel Choosed!");
        return false;
    }
    if (kind == IdKindTrmLongitudinal)
        buildLongitudinal(o, unit, *o.pRecording);
    else
        buildAutoSets(o, unit, *o.pRecording);
    return IdFinishObject(o, message);
}

bool IdBuildFromPwr(IdObject &o, const CmtdInfTrwk_UnitPwr &unit, int32_t kind, QString &message)
{
    IdClearObject(o);
    o.nKind = kind;
    o.pUnit = &unit;
    o.name = QString::fromLocal8Bit(unit.name);
    if (!o.pRecording || kind < IdKindGenSplitPhase || kind > IdKindGenComplete) {
        message = tr("Please Choose Generator!");
        return false;
    }
    const CCmtd99File &file = *o.pRecording;
    if (kind != IdKindGenSplitPhase) {
        // The terminal current counts out of the machine unless the unit says it is measured
        // into it; the neutral side is measured into the winding.
        IdBranch terminal = branchOf(file, unit.taChns);
        terminal.nReverse = unit.igtDir == 1 ? 1 : -1;
        addGroup(o, terminal);
    }
    const int groups = kind == IdKindGenComplete ? 0 : std::max<int>(unit.branchCount, 0);
    for (int g = 0; g < groups && g < 3; ++g)
        addGroup(o, branchOf(file, unit.taZ[size_t(g)]));
    if (kind == IdKindGenComplete) {
        if (!branchOf(file, unit.taZm).nFlag) {
            message = tr("Please Choose [Neutral Branch] of Generator!");
            return false;
        }
        addGroup(o, branchOf(file, unit.taZm));
    }
    return IdFinishObject(o, message);
}

bool IdFinishObject(IdObject &o, QString &message)
{
    message.clear();
    if (o.nBranches < 1) {
        message = tr("No ACC Channel Choosed!");
        return false;
    }
    if (o.nBranches < 2) {
        message = tr("The Current Branchs Can NOT less than 2!");
        return false;
    }
    o.nBranchMask = o.nBranches >= 32 ? 0xFFFFFFFFu : (1u << o.nBranches) - 1u;
    uint32_t phases = IdBranch::AllPhases;
    for (int b = 0; b < o.nBranches; ++b)
        phases &= o.branch[b].nFlag;
    o.nPhases = phases;
    // The zero sequence has one row: its branches' 3I0, or the neutral's own channel.
    o.nMask = o.nKind == IdKindTrmZeroSeq ? (phases & IdObject::Row0) : phases;
    if (!o.nMask) {
        message = tr("No relating phase to calculate diff. cur.!");
        return false;
    }
    o.nShown &= o.nMask;
    if (!o.nShown)
        o.nShown = o.nMask;
    return true;
}

float IdObjectFreq(const IdObject &o)
{
    for (int b = 0; b < o.nBranches; ++b) {
        for (int p = 0; p < kPhases; ++p) {
            if (o.branch[b].chn[p])
                return RatedFreq(*o.branch[b].chn[p]);
        }
    }
    return 50.0f;
}

bool IdComputeSeries(IdObject &o, ProgressFn report, void *owner)
{
    const int total = o.pRecording ? o.pRecording->loadedPoints : 0;
    for (int p = 0; p < kPhases; ++p) {
        const size_t length = (o.nMask & (1u << p)) ? size_t(std::max(total, 0)) : 0;
        for (std::vector<float> *series : {o.fId, o.fIr, o.fId2, o.fAngle})
            series[p].assign(length, 0.0f);
    }
    if (!o.pRecording || total <= 0 || !o.nMask)
        return true;
    const float freq = IdObjectFreq(o);
    SeriesProgress progress(report, owner, total);
    // Kept off the stack of the worker: two sets of 96 phasors and channel pointers.
    auto ph = std::make_unique<IdPhasors>();
    auto second = std::make_unique<IdPhasors>();
    gatherChannels(o, *ph);
    return ForEachRateSegment(*o.pRecording, total, [&](const RateSegment &segment) {
        if (SegmentUsable(segment)) {
            if (!computeSegment(o, segment, freq, *ph, *second, progress))
                return false;
        } else {
            for (int i = segment.first; i < segment.end; ++i) {
                holdRow(o, i);
                if (!progress.at(i))
                    return false;
            }
        }
        return progress.segmentDone();
    });
}

bool IdComputeAt(const IdObject &o, int windowStart, double id[3], double ir[3], double id2[3])
{
    for (int p = 0; p < kPhases; ++p)
        id[p] = ir[p] = id2[p] = 0.0;
    RateSegment segment;
    if (!o.pRecording || !FindRateSegment(*o.pRecording, windowStart, segment) || !SegmentUsable(segment))
        return false;
    auto ph = std::make_unique<IdPhasors>();
    auto second = std::make_unique<IdPhasors>();
    gatherChannels(o, *ph);
    IdRowValues v;
    valuesAt(o, *ph, *second, windowStart, PointsPerCycle(segment.rate, IdObjectFreq(o)), segment, v);
    for (int p = 0; p < kPhases; ++p) {
        id[p] = v.id[p];
        ir[p] = v.ir[p];
        id2[p] = v.id2[p];
    }
    return true;
}

void IdInstantSamples(const IdObject &o, int phase, int first, int count, float *out)
{
    for (int k = 0; k < count; ++k) {
        double sum = 0.0;
        for (int b = 0; b < o.nBranches; ++b) {
            if (!(o.nBranchMask & (1u << b)))
                continue;
            const IdBranch &br = o.branch[b];
            ComplexD in[kPhases];
            for (int p = 0; p < kPhases; ++p) {
                const CChnMapAnalog *chn = br.chn[p];
                const int i = first + k;
                in[p].re = chn && i >= 0 && i < chn->sampleCount ? double(chn->Values()[i]) : 0.0;
            }
            ComplexD t[kPhases];
            IdTransformBranch(br, reverseOf(o, br), in, t);
            sum += t[phase].re;
        }
        out[k] = float(sum);
    }
}

bool IdComputeTraces(IdObject &o, int lo, int hi, ProgressFn report, void *owner)
{
    SeriesProgress progress(report, owner, std::max(0, hi - lo + 1));
    o.nFrom = -1;
    o.nTo = -1;
    for (int p = 0; p < kPhases; ++p) {
        o.traceIr[p].clear();
        o.traceId[p].clear();
    }
    bool stopped = false;
    for (int i = std::max(lo, 0); i <= hi && !stopped; ++i) {
        for (int p = 0; p < kPhases; ++p) {
            if (!(o.nMask & (1u << p)) || size_t(i) >= o.fId[p].size())
                continue;
            o.traceIr[p].push_back(o.fIr[p][size_t(i)]);
            o.traceId[p].push_back(o.fId[p][size_t(i)]);
        }
        stopped = !progress.at(i - lo);
    }
    o.nFrom = lo;
    o.nTo = hi;
    return !stopped;
}

QString IdBrakingName(int32_t mode)
{
    static const char *const names[] = {QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Mod-Sum Braking"),
                                        QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Max-Val Braking"),
                                        QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Sum-Sub Braking"),
                                        QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Product Braking")};
    return mode >= 1 && mode <= 4 ? tr(names[mode - 1]) : QString();
}

QString IdRowName(const IdObject &o, int row)
{
    if (row < 0 || row >= kPhases || !(o.nMask & (1u << row)))
        return QString();
    if (o.nKind == IdKindTrmZeroSeq)
        return QStringLiteral("Ido");
    static const char *const names[] = {QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Ph. A"),
                                        QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Ph. B"),
                                        QT_TRANSLATE_NOOP("CAnaFormUnitId0Base", "Ph. C")};
    return tr(names[row]);
}
