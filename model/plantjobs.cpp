#include "plantjobs.h"

#include "chnmap.h"
#include "chnvocabulary.h"
#include "cmtdchannel.h"
#include "textcodec.h"
#include "units.h"
#include "virtualchannel.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

constexpr double kSqrt3 = 1.7320508075688772;

QString tr(const char *text)
{
    return QCoreApplication::translate("PlantJobs", text);
}

const CChnMapAnalog *channelOf(const CCmtd99File &file, int16_t index)
{
    return index > 0 ? file.FindAnalogMap(index) : nullptr;
}

// Phases A, B, C of a channel set.
void takeSet(const CCmtd99File &file, const ChannelSet &set, const CChnMapAnalog *out[3])
{
    for (size_t p = 0; p < 3; ++p)
        out[p] = channelOf(file, set[p]);
}

// The first phase of a set that is there: U/f needs one voltage.
const CChnMapAnalog *firstOf(const CCmtd99File &file, const ChannelSet &set)
{
    for (size_t p = 0; p < 3; ++p) {
        if (const CChnMapAnalog *chn = channelOf(file, set[p]))
            return chn;
    }
    return nullptr;
}

SeriesSource sourceOf(const CChnMapAnalog *chn)
{
    return chn ? SourceOf(*chn) : SeriesSource{};
}

double ratioOf(const CChnMapAnalog *chn)
{
    return chn ? double(chn->TransformRatio()) : 1.0;
}

const CmtdInfTrwk_UnitTrm *transformer(const CmtdInfTrwk_Unit &unit)
{
    return unit.kind == CmtdInfTrwk_Unit::KindTransformer ? dynamic_cast<const CmtdInfTrwk_UnitTrm *>(&unit)
                                                          : nullptr;
}

// A transformer side's voltage set and rating; the side's current set is the differential set
// of the same number (H, M, L in the first three), as units are set up from channel names.
const ChannelSet *sideVoltages(const CmtdInfTrwk_UnitTrm &t, int side, float &ratedKv)
{
    const TrmSide *sides[] = {&t.sideH, &t.sideM, &t.sideL};
    const ChannelSet *sets[] = {&t.hTv, &t.mTv, &t.lTv};
    if (side < 0 || side > 2)
        return nullptr;
    ratedKv = sides[side]->ratedKv;
    return sets[side];
}

bool hasPhase(const PowerJobParams &params)
{
    for (int p = 0; p < 3; ++p) {
        if (params.u[p] && params.i[p])
            return true;
    }
    return false;
}

QString prefixed(const QString &prefix, const QString &name)
{
    return prefix.isEmpty() ? name : prefix + QLatin1Char(' ') + name;
}

// A virtual channel of the recording's encoding of `name`, refused where it would be one of
// the job's inputs (a curve read while it is written).
CChnMapAnalog *makeChannel(CCmtd99File &file, const QString &name, const CChnMapAnalog *const *inputs[],
                           int setCount, int perSet, QString &message)
{
    CChnMapAnalog *map = MakeVirtualChannel(file, EncodeText(name, file.codecName), message);
    if (!map)
        return nullptr;
    for (int s = 0; s < setCount; ++s) {
        for (int k = 0; k < perSet; ++k) {
            if (inputs[s][k] == map) {
                message =
                    tr("The curve \"%1\" cannot be written into a channel it is computed from!").arg(name);
                return nullptr;
            }
        }
    }
    return map;
}

// The description of a curve channel: its unit, class and phase, the rated frequency and real
// channel of its first input, no ratio (the samples already are on the side they show) and the
// side's mark. The name, index and alias stay the channel's own.
void describeCurve(CChnMapAnalog &target, const CChnMapAnalog *input, const char *unit, int16_t chnClass,
                   const char *phase, bool primary)
{
    if (!target.config)
        return;
    CmtdChn_Analog &to = *target.config;
    constexpr uint32_t own =
        CmtdChn_Analog::IdGiven | CmtdChn_Analog::IndexGiven | CmtdChn_Analog::AliasGiven;
    CmtdChn_Analog fresh;
    fresh.flags = to.flags & own;
    fresh.ch_id = to.ch_id;
    fresh.alias = to.alias;
    fresh.index = to.index;
    to = fresh;
    to.uu = unit;
    to.typeCode = ClassCode(chnClass);
    to.ps = primary ? 'P' : 'S';
    to.flags |= CmtdChn_Analog::UnitGiven | CmtdChn_Analog::TypeCodeGiven;
    if (phase && *phase) {
        to.ph = phase;
        to.flags |= CmtdChn_Analog::PhaseGiven;
    }
    if (input && input->config) {
        to.ratedFreq = input->config->ratedFreq;
        to.flags |= CmtdChn_Analog::RatedFreqGiven;
        to.deviceIndex = input->isVirtual ? input->config->deviceIndex : input->config->index;
        if (to.deviceIndex >= 0)
            to.flags |= CmtdChn_Analog::DeviceIndexGiven;
    }
    const CChnMapAnalog made(&to, true);
    target.chnClass = made.chnClass;
    target.kindCode = made.kindCode;
    target.phase = made.phase;
    target.unit = made.unit;
    target.colour = made.colour;
    target.gain = made.gain;
    target.offset = made.offset;
    target.rangeMin = made.rangeMin;
    target.rangeMax = made.rangeMax;
    target.periodic = false;
    target.direct = true;
    target.isVirtual = true;
}

// A power curve holds its values in kW or MW as they are shown: its unit stays whole, with the
// factor and coefficients of a unit without prefix, so that nothing scales the values again.
void keepUnitWhole(CChnMapAnalog &target, const QByteArray &unit)
{
    target.unit = ChnUnit{};
    qstrncpy(target.unit.text, unit.constData(), sizeof target.unit.text);
    if (target.config) {
        target.gain = double(target.config->a);
        target.offset = double(target.config->b);
        target.rangeMin = static_cast<float>(double(target.config->min) * target.gain + target.offset);
        target.rangeMax = static_cast<float>(double(target.config->max) * target.gain + target.offset);
    }
}

// The outer form of a curve job around one or more targets: extents reset and the arrays zeroed
// (a channel taken again keeps nothing of its earlier curve, also where a stop leaves the new
// one short), then extents recomputed and the job's flag bits cleared, also for a stopped job.
template <typename Compute>
bool runCurveJob(CCmtd99File &file, std::initializer_list<CChnMapAnalog *> targets, int total,
                 Compute compute)
{
    for (CChnMapAnalog *t : targets) {
        if (!t)
            continue;
        t->maxValue = t->minValue = t->absMax = 0.0f;
        if (float *y = t->Values())
            std::fill(y, y + t->sampleCount, 0.0f);
    }
    bool finished = true;
    if (!file.segments.empty() && total > 0)
        finished = compute();
    for (CChnMapAnalog *t : targets) {
        if (!t)
            continue;
        t->RecalcExtremes();
        t->flags &= ~uint32_t(CChnMapBase::FlagJobMask);
    }
    return finished;
}

// A target's array, when it holds the whole curve.
float *arrayFor(CChnMapAnalog *target, int total)
{
    return target && target->sampleCount >= total ? target->Values() : nullptr;
}

} // namespace

bool PowerJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit, int side, PowerJobParams &params)
{
    params = PowerJobParams{};
    params.namePrefix = file.Text(unit.name);
    if (const auto *line = dynamic_cast<const CmtdInfTrwk_UnitLine *>(&unit)) {
        takeSet(file, line->tvChns[0], params.u);
        takeSet(file, line->taChns, params.i);
        takeSet(file, line->taChns2, params.i2);
        params.currentSign = line->taPolarity < 0 ? -1.0f : 1.0f;
        params.currentSign2 = line->taPolarity2 < 0 ? -1.0f : 1.0f;
    } else if (const CmtdInfTrwk_UnitTrm *trm = transformer(unit)) {
        float ratedKv = 0.0f;
        const ChannelSet *tv = sideVoltages(*trm, side, ratedKv);
        if (!tv)
            return false;
        takeSet(file, *tv, params.u);
        takeSet(file, trm->taId[size_t(side)], params.i);
    } else if (const auto *pwr = dynamic_cast<const CmtdInfTrwk_UnitPwr *>(&unit)) {
        takeSet(file, pwr->tvChns, params.u);
        takeSet(file, pwr->taChns, params.i);
        // Currents measured into the machine: a generator's output is export.
        params.currentSign = pwr->igtDir ? -1.0f : 1.0f;
    } else if (const auto *exci = dynamic_cast<const CmtdInfTrwk_UnitExci *>(&unit)) {
        takeSet(file, exci->tvChns, params.u);
        takeSet(file, exci->taChns, params.i);
    }
    params.primary = true;
    return hasPhase(params);
}

bool UfJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_Unit &unit, int side, UfJobParams &params)
{
    params = UfJobParams{};
    params.namePrefix = file.Text(unit.name);
    float unitFreq = 0.0f;
    if (const CmtdInfTrwk_UnitTrm *trm = transformer(unit)) {
        const ChannelSet *tv = sideVoltages(*trm, side, params.ratedKv);
        params.u = tv ? firstOf(file, *tv) : nullptr;
    } else if (const auto *pwr = dynamic_cast<const CmtdInfTrwk_UnitPwr *>(&unit)) {
        params.u = firstOf(file, pwr->tvChns);
        params.ratedKv = pwr->v1;
        unitFreq = pwr->freq;
    }
    if (!params.u)
        return false;
    // A transformer carries no frequency of its own: the system's, as the channel gives it.
    params.ratedFreq = unitFreq > 0.0f ? unitFreq : RatedFreq(*params.u);
    return true;
}

bool LoadAngleJobFromUnit(const CCmtd99File &file, const CmtdInfTrwk_UnitPwr &unit,
                          LoadAngleJobParams &params)
{
    params = LoadAngleJobParams{};
    params.namePrefix = file.Text(unit.name);
    takeSet(file, unit.tvChns, params.u);
    takeSet(file, unit.taChns, params.i);
    params.xq = unit.xq;
    params.ratedKv = unit.v1;
    params.ratedMva = unit.capacity;
    params.currentSign = unit.igtDir ? -1.0f : 1.0f;
    return params.u[0] && params.i[0];
}

PowerInputs PowerJobInputs(const PowerJobParams &params)
{
    PowerInputs in;
    const CChnMapAnalog *const *currents[2] = {params.i, params.i2};
    const double signs[2] = {params.currentSign < 0.0f ? -1.0 : 1.0, params.currentSign2 < 0.0f ? -1.0 : 1.0};
    for (int p = 0; p < 3; ++p) {
        in.u[p] = sourceOf(params.u[p]);
        in.uScale[p] = params.primary ? ratioOf(params.u[p]) : 1.0;
        for (int b = 0; b < 2; ++b) {
            in.i[b][p] = sourceOf(currents[b][p]);
            in.iScale[b][p] = signs[b] * (params.primary ? ratioOf(currents[b][p]) : 1.0);
        }
    }
    return in;
}

double UfRatedVoltage(const UfJobParams &params)
{
    if (params.ratedVolts > 0.0f)
        return params.ratedVolts;
    if (!params.u || !(params.ratedKv > 0.0f))
        return 0.0;
    const double lineVolts = double(params.ratedKv) * 1000.0;
    const double measured = params.u->Phase() == PhaseLine ? lineVolts : lineVolts / kSqrt3;
    return measured / ratioOf(params.u);
}

LoadAngleInputs LoadAngleJobInputs(const LoadAngleJobParams &params)
{
    LoadAngleInputs in;
    for (int p = 0; p < 3; ++p) {
        in.u[p] = sourceOf(params.u[p]);
        in.i[p] = sourceOf(params.i[p]);
    }
    in.xq = QuadratureOhms(params.xq, params.ratedKv, params.ratedMva, ratioOf(params.u[0]),
                           ratioOf(params.i[0]));
    in.iScale = params.currentSign < 0.0f ? -1.0 : 1.0;
    return in;
}

char PowerUnitPrefix(const PowerJobParams &params)
{
    const PowerInputs in = PowerJobInputs(params);
    const CChnMapAnalog *const *currents[2] = {params.i, params.i2};
    double size = 0.0;
    for (int p = 0; p < 3; ++p) {
        if (!params.u[p] || !params.i[p])
            continue;
        double amperes = 0.0;
        for (int b = 0; b < 2; ++b) {
            if (currents[b][p])
                amperes += double(currents[b][p]->absMax) * std::fabs(in.iScale[b][p]);
        }
        // Peak values: half their product is the effective power.
        size += 0.5 * double(params.u[p]->absMax) * in.uScale[p] * amperes;
    }
    return size >= 1.0e6 ? 'M' : 'k';
}

QByteArray PowerUnitText(uint32_t kind, char prefix)
{
    const char *text = kind & PowerActive ? "W" : kind & PowerReactive ? "var" : "VA";
    return QByteArray(1, prefix) + text;
}

QString PowerChannelName(const PowerJobParams &params, uint32_t kind, int place)
{
    static const char *const places[] = {" A", " B", " C", ""};
    const char *letter = kind & PowerActive ? "P" : kind & PowerReactive ? "Q" : "S";
    const int at = std::clamp(place, 0, kPowerTotal);
    return prefixed(params.namePrefix, QLatin1String(letter) + QLatin1String(places[at]));
}

QString UfChannelName(const UfJobParams &params)
{
    return prefixed(params.namePrefix, QStringLiteral("U/f"));
}

QString LoadAngleChannelName(const LoadAngleJobParams &params)
{
    return prefixed(params.namePrefix, QStringLiteral("Delta"));
}

bool MakePowerChannels(CCmtd99File &file, const PowerJobParams &params, PowerJobChannels &out,
                       QString &message)
{
    out = PowerJobChannels{};
    const char prefix = PowerUnitPrefix(params);
    out.unitSize = prefix == 'M' ? 1.0e6 : 1.0e3;
    const CChnMapAnalog *const *inputs[] = {params.u, params.i, params.i2};
    static const char *const phases[] = {"A", "B", "C", ""};
    const uint32_t kinds[] = {PowerActive, PowerReactive, PowerApparent};
    CChnMapAnalog **targets[] = {out.p, out.q, out.s};
    const bool anyPhase = hasPhase(params);
    for (int place = 0; place < kPowerPlaces; ++place) {
        const bool present = place == kPowerTotal ? anyPhase : params.u[place] && params.i[place];
        if (!present || !(params.curves & (PowerPhaseA << place)))
            continue;
        const CChnMapAnalog *first = place == kPowerTotal ? nullptr : params.u[place];
        for (int p = 0; !first && p < 3; ++p)
            first = params.u[p] && params.i[p] ? params.u[p] : nullptr;
        for (int k = 0; k < 3; ++k) {
            if (!(params.curves & kinds[k]))
                continue;
            CChnMapAnalog *map =
                makeChannel(file, PowerChannelName(params, kinds[k], place), inputs, 3, 3, message);
            if (!map)
                return false;
            const QByteArray unit = PowerUnitText(kinds[k], prefix);
            describeCurve(*map, first, unit.constData(), ClassPower, phases[place], params.primary);
            keepUnitWhole(*map, unit);
            targets[k][place] = map;
        }
    }
    return true;
}

CChnMapAnalog *MakeUfChannel(CCmtd99File &file, const UfJobParams &params, QString &message)
{
    const CChnMapAnalog *const *inputs[] = {&params.u};
    CChnMapAnalog *map = makeChannel(file, UfChannelName(params), inputs, 1, 1, message);
    if (map)
        describeCurve(*map, params.u, "p.u.", ClassOther, "", false);
    return map;
}

CChnMapAnalog *MakeLoadAngleChannel(CCmtd99File &file, const LoadAngleJobParams &params, QString &message)
{
    const CChnMapAnalog *const *inputs[] = {params.u, params.i};
    CChnMapAnalog *map = makeChannel(file, LoadAngleChannelName(params), inputs, 2, 3, message);
    if (map)
        describeCurve(*map, params.u[0], "Deg", ClassAngle, "", false);
    return map;
}

bool RunPowerJob(CCmtd99File &file, const PowerJobParams &params, const PowerJobChannels &channels,
                 ProgressFn report, void *owner)
{
    const PowerInputs in = PowerJobInputs(params);
    const int total = PowerCurveLength(file, in);
    PowerOutputs out;
    out.unitSize = channels.unitSize;
    for (int place = 0; place < kPowerPlaces; ++place) {
        out.p[place] = arrayFor(channels.p[place], total);
        out.q[place] = arrayFor(channels.q[place], total);
        out.s[place] = arrayFor(channels.s[place], total);
    }
    const auto &c = channels;
    return runCurveJob(
        file,
        {c.p[0], c.p[1], c.p[2], c.p[3], c.q[0], c.q[1], c.q[2], c.q[3], c.s[0], c.s[1], c.s[2], c.s[3]},
        total, [&] {
            SeriesProgress progress(report, owner, total);
            return PowerCurves(file, in, out, 0.0f, &progress);
        });
}

bool RunUfJob(CCmtd99File &file, const UfJobParams &params, CChnMapAnalog &target, ProgressFn report,
              void *owner)
{
    const SeriesSource u = sourceOf(params.u);
    const int total = SeriesLength(file, u);
    float *y = arrayFor(&target, total);
    return runCurveJob(file, {&target}, y ? total : 0, [&] {
        SeriesProgress progress(report, owner, total);
        return VoltsPerHertzCurve(file, u, UfRatedVoltage(params), params.ratedFreq, y, 0.0f, &progress);
    });
}

bool RunLoadAngleJob(CCmtd99File &file, const LoadAngleJobParams &params, CChnMapAnalog &target,
                     ProgressFn report, void *owner)
{
    const LoadAngleInputs in = LoadAngleJobInputs(params);
    const int total = LoadAngleLength(file, in);
    float *y = arrayFor(&target, total);
    return runCurveJob(file, {&target}, y ? total : 0, [&] {
        SeriesProgress progress(report, owner, total);
        return LoadAngleCurve(file, in, y, 0.0f, &progress);
    });
}
