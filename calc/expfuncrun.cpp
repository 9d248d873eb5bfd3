// Run mode of the function library: the arguments are evaluated into values of their own, and
// the result is built into `out`. A channel result starts as a copy of the first channel
// argument (a test wave as a fresh channel), takes its curve, and gets the description that
// tells how to read it (kind, unit, ratios). Nothing is reported here: a curve gives zeros or
// holds where the data give nothing, and only a refused allocation stops the script.

#include "chnmap.h"
#include "cmtd99file.h"
#include "cmtdchannel.h"
#include "derivedseries.h"
#include "expanamulti.h"
#include "expcurves.h"
#include "expfuncrows.h"
#include "exprseries.h"
#include "freqseries.h"

#include <cmath>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr double kDegrees = 57.29577957855229;

// The arguments of a call, one value each, destroyed when the handler ends.
struct Args
{
    std::unique_ptr<ExpValue[]> values;
    int count = 0;

    const ExpValue &operator[](int i) const { return values[size_t(i)]; }
    double number(int i) const
    {
        return i < count && values[size_t(i)].isConstant() ? values[size_t(i)].value : 0.0;
    }
    const CChnMapAnalog *channel(int i) const
    {
        return i < count && values[size_t(i)].isChannel() ? values[size_t(i)].channel : nullptr;
    }
};

bool evaluateArgs(CCmtd99File &file, ExpNode &node, Args &args)
{
    args.count = int(node.args.size());
    args.values.reset(new (std::nothrow) ExpValue[size_t(args.count) + 1]);
    if (!args.values) {
        ExpSetMemoryFault();
        return false;
    }
    for (int i = 0; i < args.count; ++i) {
        if (!node.args[size_t(i)] || !EvalNode(file, *node.args[size_t(i)], args.values[size_t(i)]))
            return false;
    }
    return true;
}

// A whole number from a script's value, truncated and kept within int.
int wholeOf(double v)
{
    if (!(v > -1.0e9 && v < 1.0e9))
        return v > 0 ? 1000000000 : -1000000000;
    return static_cast<int>(std::trunc(v));
}

int samplesOf(const CCmtd99File &file, const CChnMapAnalog &chn)
{
    return std::min(std::max(file.loadedPoints, 0), chn.Values() ? chn.sampleCount : 0);
}

// The class, kind, unit, phase and scale of a result made anew from its record; a curve of
// values rather than of a wave drops the periodic flag and is shown as it stands.
void renew(CChnMapAnalog &map, bool direct)
{
    const CChnMapAnalog fresh(map.config, true);
    map.chnClass = fresh.chnClass;
    map.kindCode = fresh.kindCode;
    map.phase = fresh.phase;
    map.unit = fresh.unit;
    map.gain = fresh.gain;
    map.offset = fresh.offset;
    map.rangeMin = fresh.rangeMin;
    map.rangeMax = fresh.rangeMax;
    if (direct) {
        map.periodic = false;
        map.direct = true;
    }
}

void setKind(CmtdChn_Analog &rec, const char *code)
{
    rec.typeCode = code;
    rec.flags |= CmtdChn_Analog::TypeCodeGiven;
}

void setUnit(CmtdChn_Analog &rec, const char *unit)
{
    rec.uu = unit;
    rec.flags |= CmtdChn_Analog::UnitGiven;
}

void ratiosOne(CmtdChn_Analog &rec)
{
    rec.primary = rec.secondary = 1.0f;
    rec.primaryRating = rec.secondaryRating = 1.0f;
}

void scaleRatios(CmtdChn_Analog &rec, const CmtdChn_Analog &by, bool divide)
{
    if (divide) {
        rec.primary /= by.primary;
        rec.secondary /= by.secondary;
        rec.primaryRating /= by.primaryRating;
        rec.secondaryRating /= by.secondaryRating;
    } else {
        rec.primary *= by.primary;
        rec.secondary *= by.secondary;
        rec.primaryRating *= by.primaryRating;
        rec.secondaryRating *= by.secondaryRating;
    }
}

// An angle curve in degrees: a 16-bit sample at 0.012 covers 360 degrees.
void describeAngle(CmtdChn_Analog &rec)
{
    setKind(rec, "AG");
    setUnit(rec, "Deg");
    ratiosOne(rec);
    rec.a = 0.012f;
    rec.b = 0.0f;
}

void describeFrequency(CmtdChn_Analog &rec)
{
    setKind(rec, "FQ");
    setUnit(rec, "Hz");
    ratiosOne(rec);
    rec.a = 0.033333335f;
    rec.b = 0.0f;
}

// The result frame of a channel row: a copy of `source` whose array the curve overwrites.
CChnMapAnalog *copyOf(const CChnMapAnalog *source, ExpValue &out)
{
    if (!source || !CopyChannelValue(*source, out))
        return nullptr;
    return out.channel;
}

template <typename Fn> void forSamples(float *x, int total, Fn fn)
{
    for (int i = 0; i < total; ++i)
        x[i] = static_cast<float>(fn(double(x[i])));
}

double mathValue(int fn, double v)
{
    switch (fn) {
    case MathSin:
        return std::sin(v);
    case MathCos:
        return std::cos(v);
    case MathTan:
        return std::tan(v);
    case MathCtg:
        return 1.0 / std::tan(v);
    case MathAtan:
        return std::atan(v);
    case MathSqrt:
        return std::sqrt(std::fabs(v));
    case MathAbs:
        return std::fabs(v);
    case MathExp:
        return std::exp(v);
    case MathLog:
        return std::log(v);
    case MathLog10:
        return std::log10(v);
    case MathToArc:
        return v * 0.017453292500000002;
    default:
        return v * 57.29577957855229;
    }
}

// The principal square root of a complex number.
ComplexD complexSqrt(const ComplexD &c)
{
    const double m = std::sqrt(c.re * c.re + c.im * c.im);
    const double re = std::sqrt((m + c.re) / 2.0);
    const double im = std::sqrt((m - c.re) / 2.0);
    return ComplexD{re, c.im < 0.0 ? -im : im};
}

void runMath(const CCmtd99File &file, int fn, const ExpValue &arg, ExpValue &out)
{
    if (arg.type == ExpTypeComplex) {
        if (fn == MathSqrt)
            out.setComplex(complexSqrt(arg.complex));
        else if (fn == MathAtan)
            out.setConstant(std::atan2(arg.complex.im, arg.complex.re));
        return;
    }
    if (!arg.isChannel()) {
        out.setConstant(mathValue(fn, arg.isConstant() ? arg.value : 0.0));
        return;
    }
    CChnMapAnalog *chn = copyOf(arg.channel, out);
    if (!chn)
        return;
    float *x = chn->Values();
    const int total = samplesOf(file, *chn);
    if (fn == MathToAng) {
        // A channel turns with the 32-bit factor, and reads in degrees.
        for (int i = 0; i < total; ++i)
            x[i] = x[i] * 57.295776f;
        setUnit(*chn->config, "Deg");
        renew(*chn, false);
        return;
    }
    forSamples(x, total, [fn](double v) { return mathValue(fn, v); });
}

void runAtan2(const CCmtd99File &file, const Args &args, ExpValue &out)
{
    const CChnMapAnalog *x = args.channel(0);
    const CChnMapAnalog *y = args.channel(1);
    if (!x || !y) {
        out.setConstant(std::atan2(args.number(0), args.number(1)));
        return;
    }
    CChnMapAnalog *chn = copyOf(x, out);
    if (!chn)
        return;
    float *v = chn->Values();
    const float *w = y->Values();
    const int total = std::min(samplesOf(file, *chn), samplesOf(file, *y));
    for (int i = 0; i < total; ++i)
        v[i] = static_cast<float>(std::atan2(double(v[i]), double(w[i])));
}

void runComplexPart(int part, const ExpValue &arg, ExpValue &out)
{
    const ComplexD c = arg.type == ExpTypeComplex ? arg.complex : ComplexD{};
    switch (part) {
    case 0:
        out.setConstant(c.re);
        break;
    case 1:
        out.setConstant(c.im);
        break;
    case 2:
        out.setConstant(std::sqrt(c.re * c.re + c.im * c.im));
        break;
    default:
        out.setConstant(std::atan2(c.im, c.re) * kDegrees); // degrees, unlike atan
        break;
    }
}

// The sources of the channel arguments from `first` on; false when one is no channel.
bool sourcesFrom(const Args &args, int first, std::vector<SeriesSource> &sources)
{
    for (int i = first; i < args.count; ++i) {
        const CChnMapAnalog *chn = args.channel(i);
        if (!chn)
            return false;
        sources.push_back(SourceOf(*chn));
    }
    return true;
}

// The rows of one source channel and one number at most.
bool runSingleCurve(const ExpRowSpec &row, const CCmtd99File &file, const Args &args, CChnMapAnalog &result)
{
    const SeriesSource source = SourceOf(*args.channel(0));
    float *y = result.Values();
    CmtdChn_Analog &rec = *result.config;
    switch (row.family) {
    case ExpFamily::Harmonic:
        HarmonicFunctionSeries(file, source, PhasorPart(row.variant), wholeOf(args.number(1)), y);
        if (PhasorPart(row.variant) == PhasorPart::Angle)
            describeAngle(rec);
        return true;
    case ExpFamily::Curve: {
        const auto curve = ChannelCurve(row.variant);
        ChannelCurveSeries(file, source, curve, y);
        if (curve == ChannelCurve::Phs || curve == ChannelCurve::DftA)
            describeAngle(rec);
        if (curve == ChannelCurve::DPart && (source.chnClass == ClassACV || source.chnClass == ClassACC))
            setKind(rec, source.chnClass == ClassACV ? "DV" : "DA");
        return curve != ChannelCurve::DftR && curve != ChannelCurve::DftX;
    }
    case ExpFamily::Delta:
        DeltaSeries(file, source, row.variant, y);
        return false;
    case ExpFamily::Dist:
        DistortionSeries(file, source, wholeOf(args.number(1)), y);
        setUnit(rec, "");
        ratiosOne(rec);
        return true;
    case ExpFamily::Avg:
        AverageWindowSeries(file, source, args.number(1), y);
        return true;
    case ExpFamily::Dtms:
        TimeShiftSeries(file, source, args.number(1), args.count > 2 ? wholeOf(args.number(2) + 0.5) : 1, y);
        return false;
    case ExpFamily::Freq:
        if (!(row.variant == 0 ? ZeroCrossFreqSeries(file, source, y) : DftInsertFreqSeries(file, source, y)))
            ExpSetMemoryFault();
        describeFrequency(rec);
        return true;
    case ExpFamily::Hamming:
        if (!HammingFunctionSeries(file, source, args.number(1), args.number(2), y))
            ExpSetMemoryFault();
        return false;
    case ExpFamily::Diff:
        OnePointDiffSeries(file, source, false, y);
        return false;
    default: // phase difference
        if (const CChnMapAnalog *other = args.channel(1))
            PhaseDifferenceSeries(file, source, SourceOf(*other), y);
        describeAngle(rec);
        return true;
    }
}

// Sequence parts, power and impedance: rows of several channels.
void runPhaseCurve(const ExpRowSpec &row, const CCmtd99File &file, const Args &args, CChnMapAnalog &result)
{
    std::vector<SeriesSource> sources;
    float *y = result.Values();
    CmtdChn_Analog &rec = *result.config;
    const auto part = PhasorPart(row.variant);
    if (row.family == ExpFamily::Sequence) {
        const CChnMapAnalog *a = args.channel(0);
        const CChnMapAnalog *b = args.channel(1);
        const CChnMapAnalog *c = args.channel(2);
        if (!a || !b || !c)
            return;
        SequenceSeries(file, SourceOf(*a), SourceOf(*b), SourceOf(*c), args.number(3), part, y);
        if (part == PhasorPart::Effective) {
            const int s = wholeOf(args.number(3));
            rec.ph = s == 1 ? "S1" : s == 2 ? "S2" : "S0";
            rec.flags |= CmtdChn_Analog::PhaseGiven;
        }
    } else if (row.family == ExpFamily::Power) {
        if (!sourcesFrom(args, 0, sources))
            return;
        PowerSeries(file, sources[0], sources.data() + 1, int(sources.size()) - 1, PowerPart(row.variant), y);
        static const char *const units[][2] = {{"W", "MW"}, {"Var", "MVar"}, {"VA", "MVA"}};
        setKind(rec, "PW");
        setUnit(rec, units[row.variant][0]);
        rec.primaryUnit = units[row.variant][1];
        rec.secondaryUnit = units[row.variant][0];
        scaleRatios(rec, *args.channel(0)->config, false);
        return;
    } else if (row.family == ExpFamily::Impedance) {
        if (!sourcesFrom(args, 0, sources))
            return;
        ImpedanceSeries(file, sources[0], sources.data() + 1, int(sources.size()) - 1, part, y);
    } else {
        const ComplexD k = args.count > 1 && args[1].type == ExpTypeComplex ? args[1].complex : ComplexD{};
        if (!args.channel(0) || !sourcesFrom(args, 2, sources) || sources.empty())
            return;
        GroundImpedanceSeries(file, SourceOf(*args.channel(0)), k, sources[0], sources.data() + 1,
                              int(sources.size()) - 1, part, y);
    }
    if (part == PhasorPart::Angle) {
        describeAngle(rec);
    } else if (row.family != ExpFamily::Sequence) {
        setKind(rec, "ZX");
        setUnit(rec, "omh");
        const CChnMapAnalog *current = args.channel(row.family == ExpFamily::Impedance ? 1 : 3);
        if (current && current->config)
            scaleRatios(rec, *current->config, true);
    }
}

// The test waves on a fresh channel of the recording's length.
void runWave(const ExpRowSpec &row, const CCmtd99File &file, const Args &args, ExpValue &out)
{
    if (!NewChannelValue(file, out))
        return;
    CChnMapAnalog &chn = *out.channel;
    float *y = chn.Values();
    if (row.family == ExpFamily::SineWave) {
        const double f = SineWave(file, args.number(0), args.number(1), args.number(2), args.number(3), y);
        chn.config->ratedFreq = static_cast<float>(f);
        chn.config->flags |= CmtdChn_Analog::RatedFreqGiven;
        renew(chn, false);
        return;
    }
    if (row.family == ExpFamily::StepWave)
        StepWave(file, args.number(0), args.number(1), y);
    else
        DecayWave(file, args.number(0), args.number(1), args.number(2), y);
    renew(chn, true);
}

void runSplice(const CCmtd99File &file, const Args &args, ExpValue &out)
{
    const CChnMapAnalog *c1 = args.channel(0);
    CChnMapAnalog *chn = copyOf(args.channel(3), out);
    if (!c1 || !chn)
        return;
    SpliceWave(SourceOf(*c1), args.number(1), args.number(2), args.number(4), samplesOf(file, *chn),
               chn->Values());
    renew(*chn, false);
    if (c1->IsAC())
        chn->periodic = true;
}

} // namespace

void RunExpRow(const ExpRowSpec &row, CCmtd99File &file, ExpNode &node, ExpValue &out)
{
    out.clear();
    Args args;
    if (!evaluateArgs(file, node, args) || args.count < 1)
        return;
    switch (row.family) {
    case ExpFamily::Math:
        runMath(file, row.variant, args[0], out);
        return;
    case ExpFamily::Atan2:
        runAtan2(file, args, out);
        return;
    case ExpFamily::Complex:
        out.setComplex(ComplexD{args.number(0), args.number(1)});
        return;
    case ExpFamily::ComplexPart:
        runComplexPart(row.variant, args[0], out);
        return;
    case ExpFamily::SineWave:
    case ExpFamily::StepWave:
    case ExpFamily::DecayWave:
        runWave(row, file, args, out);
        return;
    case ExpFamily::Splice:
        runSplice(file, args, out);
        return;
    default:
        break;
    }
    CChnMapAnalog *result = copyOf(args.channel(0), out);
    if (!result)
        return;
    bool direct = true;
    if (row.family == ExpFamily::Sequence || row.family == ExpFamily::Power ||
        row.family == ExpFamily::Impedance || row.family == ExpFamily::GroundImpedance)
        runPhaseCurve(row, file, args, *result);
    else
        direct = runSingleCurve(row, file, args, *result);
    renew(*result, direct);
}
