#include "rxobject.h"

#include "chnmap.h"
#include "cmtd99file.h"
#include "seriesframe.h"

#include <QCoreApplication>

#include <algorithm>
#include <climits>

namespace {

constexpr int kRows = 3;
constexpr int kGroups = 3;

// The phasors one sample needs, each computed once however many rows share it: slot p is the
// voltage of phase p, slot 3 + 3g + p the current of group g, phase p.
struct RxPhasors
{
    enum : int
    {
        Slots = 12
    };
    ComplexD value[Slots];
    bool ok[Slots] = {};
};

int currentSlot(int group, int phase)
{
    return 3 + 3 * group + phase;
}

const CChnMapAnalog *slotChannel(const RxObject &o, int slot)
{
    return slot < 3 ? o.chnU[slot] : o.chnI[(slot - 3) / 3][(slot - 3) % 3];
}

// Bits of the slots whose phasors the rows in the mask read. The zero sequence of a group
// takes all three of its phases, whichever rows exist.
uint32_t neededSlots(const RxObject &o)
{
    uint32_t phases = 0;
    bool allCurrents = false;
    for (int row = 0; row < kRows; ++row) {
        if (!(o.nMask & (1u << row)))
            continue;
        phases |= 1u << row;
        if (o.nKind == RxObject::KindUxyIxy)
            phases |= 1u << ((row + 1) % 3);
    }
    if (o.nKind == RxObject::KindUxIxK)
        allCurrents = true;
    uint32_t slots = 0;
    for (int p = 0; p < 3; ++p) {
        if (phases & (1u << p))
            slots |= 1u << p;
        for (int g = 0; g < kGroups; ++g) {
            if (allCurrents || (phases & (1u << p)))
                slots |= 1u << currentSlot(g, p);
        }
    }
    return slots;
}

void fetchPhasors(const RxObject &o, uint32_t slots, int sample, const RateSegment &segment, RxPhasors &out,
                  const bool *gapFree)
{
    const CChnMapAnalog *chns[RxPhasors::Slots];
    int codes[RxPhasors::Slots];
    for (int s = 0; s < RxPhasors::Slots; ++s)
        chns[s] = (slots & (1u << s)) ? slotChannel(o, s) : nullptr;
    // The voltages and currents of a sample share their window: one pass for all of them.
    BasePhasorsAt(*o.pRecording, &segment, chns, RxPhasors::Slots, sample, out.value, codes, gapFree);
    for (int s = 0; s < RxPhasors::Slots; ++s)
        out.ok[s] = codes[s] == PhasorValue;
}

// The sum of the groups' currents of one phase; a current without a phasor adds nothing.
ComplexD phaseCurrent(const RxPhasors &ph, int phase)
{
    ComplexD sum;
    for (int g = 0; g < kGroups; ++g) {
        if (ph.ok[currentSlot(g, phase)])
            sum = sum + ph.value[currentSlot(g, phase)];
    }
    return sum;
}

// Ux / (Ix + k·I0): the group factor turns the phase current of a reversed group, while the
// zero sequence is summed as the channels give it.
ComplexD compensatedLoop(const RxObject &o, const RxPhasors &ph, int row)
{
    ComplexD s;
    ComplexD i;
    for (int g = 0; g < kGroups; ++g) {
        for (int p = 0; p < 3; ++p) {
            if (ph.ok[currentSlot(g, p)])
                s = s + ph.value[currentSlot(g, p)];
        }
        if (ph.ok[currentSlot(g, row)])
            i = i + ph.value[currentSlot(g, row)].scaled(double(o.nCoef[g]));
    }
    const ComplexD i0 = s.scaled(0.3333333333333333);
    const ComplexD k{o.kRe, o.kIm};
    ComplexD z = ph.value[row];
    return z.divide(i + k * i0);
}

bool rowFromPhasors(const RxObject &o, const RxPhasors &ph, int row, ComplexD &z)
{
    switch (o.nKind) {
    case RxObject::KindUxIxK:
        if (!ph.ok[row])
            return false;
        z = compensatedLoop(o, ph, row);
        return true;
    case RxObject::KindUxIx:
        if (!ph.ok[row])
            return false;
        z = ph.value[row];
        z.divide(phaseCurrent(ph, row));
        return true;
    case RxObject::KindUxyIxy: {
        const int other = (row + 1) % 3;
        if (!ph.ok[row] || !ph.ok[other])
            return false;
        const ComplexD i1 = phaseCurrent(ph, row);
        const ComplexD i2 = phaseCurrent(ph, other);
        z = ph.value[row] + ph.value[other].scaled(-1.0);
        z.divide(i1 + i2.scaled(-1.0));
        return true;
    }
    default:
        return false;
    }
}

float sampleOf(const CChnMapAnalog *chn, int sample)
{
    const float *x = chn ? chn->Values() : nullptr;
    return x && sample >= 0 && sample < chn->sampleCount ? x[sample] : 0.0f;
}

// Computes the rows in the mask at one window sample from phasors fetched once.
class RowEvaluator
{
public:
    // `manySamples`: the evaluator walks a range, so the channels are looked over for missing
    // samples once here rather than in every window.
    RowEvaluator(const RxObject &o, bool manySamples) : m_o(o), m_slots(neededSlots(o))
    {
        for (int s = 0; s < RxPhasors::Slots && manySamples; ++s) {
            const CChnMapAnalog *chn = slotChannel(o, s);
            m_gapFree[s] = (m_slots & (1u << s)) && chn && HoldsNoGap(*chn);
        }
    }

    void at(int sample, const RateSegment &segment)
    {
        m_sample = sample;
        if (m_o.nKind != RxObject::KindRxChn)
            fetchPhasors(m_o, m_slots, sample, segment, m_phasors, m_gapFree);
    }

    bool row(int row, ComplexD &z) const
    {
        z = ComplexD();
        if (row < 0 || row >= kRows || !(m_o.nMask & (1u << row)))
            return false;
        if (m_o.nKind == RxObject::KindRxChn) {
            z.re = sampleOf(m_o.chnR, m_sample);
            z.im = sampleOf(m_o.chnX, m_sample);
            return true;
        }
        ComplexD value;
        if (!rowFromPhasors(m_o, m_phasors, row, value))
            return false;
        z = value;
        return true;
    }

private:
    const RxObject &m_o;
    uint32_t m_slots;
    int m_sample = 0;
    RxPhasors m_phasors;
    bool m_gapFree[RxPhasors::Slots] = {};
};

QString tr(const char *context, const char *text)
{
    return QCoreApplication::translate(context, text);
}

// Phases A, B, C chosen as bits 0 to 2.
uint32_t voltagePhases(const RxObject &o)
{
    uint32_t bits = 0;
    for (int p = 0; p < 3; ++p)
        bits |= o.chnU[p] ? 1u << p : 0u;
    return bits;
}

uint32_t currentPhases(const RxObject &o)
{
    uint32_t bits = 0;
    for (int g = 0; g < kGroups; ++g) {
        for (int p = 0; p < 3; ++p)
            bits |= o.chnI[g][p] ? 1u << p : 0u;
    }
    return bits;
}

bool checkLineValues(const RxObject &o, const char *context, QString &message)
{
    const double values[] = {o.fR1, o.fX1, o.fR0, o.fX0};
    static const char *const texts[] = {
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxDlgResetObjUxIxK", "[R1] must great than 0!"),
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxDlgResetObjUxIxK", "[X1] must great than 0!"),
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxDlgResetObjUxIxK", "[R0] must great than 0!"),
        QT_TRANSLATE_NOOP("CAnaFormChnGrpRxDlgResetObjUxIxK", "[X0] must great than 0!")};
    for (int i = 0; i < 4; ++i) {
        if (!(values[i] > 0.0)) {
            message = tr(context, texts[i]);
            return false;
        }
    }
    return true;
}

bool checkPhaseChannels(RxObject &o, const char *context, QString &message)
{
    const uint32_t u = voltagePhases(o);
    const uint32_t i = currentPhases(o);
    if (!u) {
        message = tr(context, "Please Choose Not Less One ACV Channel!");
        return false;
    }
    if (!i) {
        message = tr(context, "Please Choose Not Less One ACC Channel!");
        return false;
    }
    const uint32_t both = u & i;
    if (o.nKind == RxObject::KindUxyIxy) {
        const auto has = [both](int a, int b) { return (both & (1u << a)) && (both & (1u << b)); };
        o.nMask = (has(0, 1) ? RxObject::Row0 : 0u) | (has(1, 2) ? RxObject::Row1 : 0u) |
                  (has(0, 2) ? RxObject::Row2 : 0u);
        if (!o.nMask) {
            message = tr(context, "Please Choose NOT Less Then Tow Related Ph. ACV and ACC Channels!");
            return false;
        }
        return true;
    }
    o.nMask = both;
    if (!o.nMask) {
        message = tr(context, "Choose Not Less One Relatived ACV & ACC Channels!");
        return false;
    }
    return true;
}

bool checkRxChannels(RxObject &o, QString &message)
{
    const char *context = "CAnaFormChnGrpRxDlgResetObjChn";
    if (!o.chnR) {
        message = tr(context, "Please Choose Impedance R-Part Curve Channel!");
        return false;
    }
    if (!o.chnX) {
        message = tr(context, "Please Choose Impedance X-Part Curve Channel!");
        return false;
    }
    if (o.chnR == o.chnX) {
        message = tr(context, "The Impedance R and X Curve Channels Can NOT be The Same Channel!");
        return false;
    }
    o.nMask = RxObject::Row0;
    return true;
}

bool samePhase(const RxObject &a, const RxObject &b, int p)
{
    if (a.chnU[p] != b.chnU[p])
        return false;
    for (int g = 0; g < kGroups; ++g) {
        if (a.chnI[g][p] != b.chnI[g][p])
            return false;
    }
    return true;
}

} // namespace

void RxClearObject(RxObject &object)
{
    RxObject fresh;
    fresh.nKind = object.nKind;
    fresh.pRecording = object.pRecording;
    object = std::move(fresh);
}

void RxFinishObject(RxObject &o)
{
    ComplexD k{o.fR0 - o.fR1, o.fX0 - o.fX1};
    k.divide(ComplexD{o.fR1, o.fX1});
    o.kRe = k.re;
    o.kIm = k.im;
    o.nShown &= o.nMask;
    if (!o.nShown)
        o.nShown = o.nMask;
}

bool RxApplyChoice(RxObject &o, QString &message)
{
    message.clear();
    switch (o.nKind) {
    case RxObject::KindUxIxK:
        return checkLineValues(o, "CAnaFormChnGrpRxDlgResetObjUxIxK", message) &&
               checkPhaseChannels(o, "CAnaFormChnGrpRxDlgResetObjUxIxK", message);
    case RxObject::KindUxIx:
        return checkPhaseChannels(o, "CAnaFormChnGrpRxDlgResetObjUxIx", message);
    case RxObject::KindUxyIxy:
        return checkPhaseChannels(o, "CAnaFormChnGrpRxDlgResetObjUxyIxy", message);
    case RxObject::KindRxChn:
        return checkRxChannels(o, message);
    default:
        return false;
    }
}

bool RxSameChoice(const RxObject &a, const RxObject &b)
{
    if (a.nKind != b.nKind || a.pRecording != b.pRecording || a.nMask != b.nMask)
        return false;
    if (a.nKind == RxObject::KindRxChn)
        return a.chnR == b.chnR && a.chnX == b.chnX;
    if (a.nKind == RxObject::KindUxIxK &&
        (a.fR1 != b.fR1 || a.fX1 != b.fX1 || a.fR0 != b.fR0 || a.fX0 != b.fX0))
        return false;
    for (int row = 0; row < kRows; ++row) {
        if (!(a.nMask & (1u << row)))
            continue;
        if (!samePhase(a, b, row))
            return false;
        if (a.nKind == RxObject::KindUxyIxy && !samePhase(a, b, (row + 1) % 3))
            return false;
    }
    return true;
}

QString RxObjectName(int32_t kind)
{
    static const char *const names[] = {QT_TRANSLATE_NOOP("CAnaFormChnGrpRx", "[Ux / (Ix+kIo)]"),
                                        QT_TRANSLATE_NOOP("CAnaFormChnGrpRx", "[Ux / Ix]"),
                                        QT_TRANSLATE_NOOP("CAnaFormChnGrpRx", "[Uxy / Ixy]"),
                                        QT_TRANSLATE_NOOP("CAnaFormChnGrpRx", "[Choose RX Channels]")};
    return kind >= 0 && kind <= 3 ? tr("CAnaFormChnGrpRx", names[kind]) : QString();
}

QString RxRowName(const RxObject &o, int row)
{
    if (row < 0 || row >= kRows || !(o.nMask & (1u << row)))
        return QString();
    static const char *const phases[] = {"Za", "Zb", "Zc"};
    static const char *const loops[] = {"Zab", "Zbc", "Zca"};
    switch (o.nKind) {
    case RxObject::KindUxIxK:
    case RxObject::KindUxIx:
        return QString::fromLatin1(phases[row]);
    case RxObject::KindUxyIxy:
        return QString::fromLatin1(loops[row]);
    case RxObject::KindRxChn:
        return QStringLiteral("Zx");
    default:
        return QString();
    }
}

float RxObjectFreq(const RxObject &o)
{
    for (int row = 0; row < kRows; ++row) {
        if (!(o.nMask & (1u << row)))
            continue;
        const CChnMapAnalog *chn = o.nKind == RxObject::KindRxChn ? o.chnR : o.chnU[row];
        return chn ? RatedFreq(*chn) : 50.0f;
    }
    return 50.0f;
}

int RxWindowSample(const RxObject &o, int sample)
{
    return o.pRecording ? ChnWindowStart(*o.pRecording, RxObjectFreq(o), sample) : sample;
}

bool RxComputeRow(const RxObject &o, int row, int sample, const RateSegment *segment, ComplexD &z)
{
    z = ComplexD();
    if (row < 0 || row >= kRows || !(o.nMask & (1u << row)) || !o.pRecording)
        return false;
    RateSegment found;
    if (!segment) {
        if (!FindRateSegment(*o.pRecording, sample, found))
            return false;
        segment = &found;
    }
    RowEvaluator rows(o, false);
    rows.at(sample, *segment);
    return rows.row(row, z);
}

bool RxComputeTraces(RxObject &o, int lo, int hi, ProgressFn report, void *owner)
{
    const float freq = RxObjectFreq(o);
    SeriesProgress progress(report, owner, std::max(0, hi - lo + 1));
    o.nFrom = -1;
    o.nTo = -1;
    const size_t length = hi >= lo ? size_t(int64_t(hi) - lo + 1) : 0;
    for (int row = 0; row < kRows; ++row) {
        if (o.nMask & (1u << row))
            o.trace[row].resize(length);
        else
            o.trace[row].clear();
    }

    size_t count = 0;
    if (o.pRecording && length > 0) {
        const CCmtd99File &file = *o.pRecording;
        RowEvaluator rows(o, true);
        int i = lo;
        while (i <= hi && !progress.stopped()) {
            RateSegment segment;
            if (!FindRateSegment(file, i, segment))
                break;
            if (SegmentUsable(segment)) {
                // The last samples of a stretch have no whole cycle behind them: the traces end
                // where the last window of the stretch would start its cursor.
                int end = std::min(segment.end, hi);
                const int n = PointsPerCycle(segment.rate, freq);
                if (int64_t(end) > int64_t(segment.end) - n)
                    end = int(
                        std::clamp<int64_t>(int64_t(segment.end) - n + DftWindowShift(n), INT_MIN, INT_MAX));
                for (; i < end; ++i) {
                    if (!progress.at(i - lo))
                        break;
                    rows.at(DftWindowStart(i, n, segment, file.loadedPoints), segment);
                    for (int row = 0; row < kRows; ++row) {
                        ComplexD z;
                        if (rows.row(row, z))
                            o.trace[row][count] = RxPoint{float(z.re), float(z.im)};
                    }
                    ++count;
                }
            }
            if (progress.stopped())
                break;
            i = segment.end;
            if (!progress.segmentDone())
                break;
        }
    }

    for (int row = 0; row < kRows; ++row) {
        if (o.nMask & (1u << row))
            o.trace[row].resize(count);
    }
    o.nFrom = lo;
    o.nTo = hi;
    return !progress.stopped();
}
