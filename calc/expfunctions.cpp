#include "expfunctions.h"

#include "derivedseries.h"
#include "expanamulti.h"
#include "expfuncrows.h"
#include "exprseries.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#define EXP_TR(text) QT_TRANSLATE_NOOP("ExpFunc", text)

namespace {

const char *const kGroupTitles[] = {
    EXP_TR("Math"),  EXP_TR("complex number"), EXP_TR("Harmonious"), EXP_TR("Single Channel"),
    EXP_TR("DFT"),   EXP_TR("Frequency"),      EXP_TR("Filter"),     EXP_TR("Sequence"),
    EXP_TR("Power"), EXP_TR("Impedance"),      EXP_TR("Make Wave"),  EXP_TR("Other")};

// Help texts that several rows share.
const char *const kHelpTrig =
    EXP_TR("[x] is a constant or an expression that return a constant, unit is Radian.");
const char *const kHelpConst = EXP_TR("[x] is a constant or an expression that return a constant.");
const char *const kHelpComplexPart =
    EXP_TR("[c] is a complex number or an expression that return a complex number.");
const char *const kHelpHarm = EXP_TR("[x] is any AC channel, [n] is Harm-times(1~99).");
const char *const kHelpAc = EXP_TR("[x] is any AC channel.");
const char *const kHelpAnalog = EXP_TR("[x] is any analog channel.");
const char *const kHelpAngleCurve = EXP_TR("[x] is any analog channel,return angle curve.");
const char *const kHelpSeq =
    EXP_TR("[a,b,c] are Ph. A/Ph. B and Ph. C Channels, [s] is one of (0,1,2), means "
           "Zero,Positive and Negative.");
const char *const kHelpPower = EXP_TR("[U,Ix] are ACV and ACC channels, allow multi ACC branch channels.");
const char *const kHelpGround = EXP_TR("Zx=Ux/(Ix+K*Io),K=(Zo-Z1)/Z1");

constexpr int kEff = int(PhasorPart::Effective);
constexpr int kMod = int(PhasorPart::Modulus);
constexpr int kAng = int(PhasorPart::Angle);
constexpr int kRe = int(PhasorPart::Real);
constexpr int kIm = int(PhasorPart::Imaginary);

using R = ExpResult;
using F = ExpFamily;

// clang-format off
const ExpRowSpec kRows[] = {
    {"sin", "sin(x)", EXP_TR("Sine"), kHelpTrig, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathSin},
    {"cos", "cos(x)", EXP_TR("Cosine"), kHelpTrig, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathCos},
    {"tan", "tan(x)", EXP_TR("Tangent"), kHelpTrig, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathTan},
    {"ctg", "ctg(x)", EXP_TR("Cotangent"), kHelpTrig, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathCtg},
    {"atan", "atan(x)", EXP_TR("Tangent Reverse"),
     EXP_TR("[x] is a constant or an expression that return a constant, return Radian."), 0, 1, 1, "a",
     R::SameAsFirst, F::Math, MathAtan},
    {"atan2", "atan2(x,y)", EXP_TR("Tangent Reverse"),
     EXP_TR("[x and y] is a constant or an expression that return a constant, return Radian."), 0, 2, 2, "nn",
     R::SameAsFirst, F::Atan2, 0},
    {"sqrt", "sqrt(x)", EXP_TR("Square-root"),
     EXP_TR("[x] is a constant or an expression that return a constant, must >=0."), 0, 1, 1, "a",
     R::SameAsFirst, F::Math, MathSqrt},
    {"abs", "abs(x)", EXP_TR("Absolute value"), kHelpConst, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathAbs},
    {"exp", "exp(x)", EXP_TR("Calculates the exponential"), kHelpConst, 0, 1, 1, "n", R::SameAsFirst, F::Math, MathExp},
    {"log", "log(x)", EXP_TR("Calculates the natural logarithm"), kHelpConst, 0, 1, 1, "n", R::SameAsFirst, F::Math,
     MathLog},
    {"log10", "log10(x)", EXP_TR("Calculates the common logarithm"), kHelpConst, 0, 1, 1, "n", R::SameAsFirst,
     F::Math, MathLog10},
    {"toArc", "toArc(x)", EXP_TR("Angle to Radian"),
     EXP_TR("[x] is a constant or an expression that return a constant, unit is angle."), 0, 1, 1, "n",
     R::SameAsFirst, F::Math, MathToArc},
    {"toAng", "toAng(x)", EXP_TR("Radian to Angle"),
     EXP_TR("[x] is a constant or an expression that return a constant,unit is Radian."), 0, 1, 1, "n",
     R::SameAsFirst, F::Math, MathToAng},

    {"complex", "complex(r,x)", EXP_TR("Construct a complex number"),
     EXP_TR("[r] is real-part, [x] is virtual-part, [r] and [x] are both constant."), 1, 2, 2, "kk", R::Complex,
     F::Complex, 0},
    {"complex_r", "complex_r(c)", EXP_TR("Return R-part of the complex number"), kHelpComplexPart, 1, 1, 1, "x",
     R::Constant, F::ComplexPart, 0},
    {"complex_x", "complex_x(c)", EXP_TR("Return X-part of the complex number"), kHelpComplexPart, 1, 1, 1, "x",
     R::Constant, F::ComplexPart, 1},
    {"complex_m", "complex_m(c)", EXP_TR("Return mod. of the complex number"), kHelpComplexPart, 1, 1, 1, "x",
     R::Constant, F::ComplexPart, 2},
    {"complex_a", "complex_a(c)", EXP_TR("Return angle of the complex number"), kHelpComplexPart, 1, 1, 1, "x",
     R::Constant, F::ComplexPart, 3},

    {"harm_e", "harm_e(x,n)", EXP_TR("Return eff-value of the harm."), kHelpHarm, 2, 2, 2, "ck", R::Channel,
     F::Harmonic, kEff},
    {"harm_m", "harm_m(x,n)", EXP_TR("Return mod. of the harm."), kHelpHarm, 2, 2, 2, "ck", R::Channel, F::Harmonic,
     kMod},
    {"harm_a", "harm_a(x,n)", EXP_TR("Return Ph-angle of the harm."),
     EXP_TR("[x] is any AC channel, [n] is Harm-times(1~99), return angle."), 2, 2, 2, "ck", R::Channel,
     F::Harmonic, kAng},
    {"harm_r", "harm_r(x,n)", EXP_TR("Return R-part of the harm."), kHelpHarm, 2, 2, 2, "ck", R::Channel,
     F::Harmonic, kRe},
    {"harm_x", "harm_x(x,n)", EXP_TR("Return X-part of the harm."), kHelpHarm, 2, 2, 2, "ck", R::Channel,
     F::Harmonic, kIm},

    {"dpart", "dpart(x)", EXP_TR("DC Part"), kHelpAc, 3, 1, 1, "c", R::Channel, F::Curve, int(ChannelCurve::DPart)},
    {"rms", "rms(x)", EXP_TR("Average of Square-root"), kHelpAc, 3, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::Rms)},
    {"eff", "eff(x)", EXP_TR("Eff-value of base-wave"), kHelpAc, 3, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::Eff)},
    {"mod", "mod(x)", EXP_TR("mod. of base-wave"), kHelpAc, 3, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::Mod)},
    {"phs", "phs(x)", EXP_TR("Ph-angle of base-wave"), kHelpAngleCurve, 3, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::Phs)},
    {"delta_mn", "delta_mn(x)", EXP_TR("Mutation"),
     EXP_TR("[x] is any analog channel,Next Cycle subtract Current Cycle."), 3, 1, 1, "c", R::Channel, F::Delta,
     DeltaNextMinusCurrent},
    {"delta_0n", "delta_0n(x)", EXP_TR("Mutation"),
     EXP_TR("[x] is any analog channel,All Cycles subtract First Cycle."), 3, 1, 1, "c", R::Channel, F::Delta,
     DeltaAllMinusFirst},
    {"delta_nn", "delta_nn(x)", EXP_TR("Mutation"),
     EXP_TR("[x] is any analog channel,First-half Cycle and Second-half Cycle Sum."), 3, 1, 1, "c", R::Channel,
     F::Delta, DeltaHalfCycleSum},
    {"dist", "dist(x,n)", EXP_TR("Signal aberrance ratio"),
     EXP_TR("[x] is any analog channel, [n] is cutoff-harm-times(2~31), return (sum of 2~n harm mod.)/(base wave "
            "mod.)."), 3, 2, 2, "ck", R::Channel, F::Dist, 0},
    {"avg", "avg(x,n)", EXP_TR("Average"),
     EXP_TR("[x] is any analog channel, [n] is points per cycle, return average curve."), 3, 2, 2, "ck",
     R::Channel, F::Avg, 0},
    {"dtms", "dtms(x,t,<m>)", EXP_TR("time distance"),
     EXP_TR("[x] is any analog channel, [t] is time(ms) to distance, [<m>] is method, return new curve."), 3, 2, 3,
     "ckk", R::Channel, F::Dtms, 0},

    {"dft_m", "dft_m(x)", EXP_TR("DFT(Mod. Curve)"), kHelpAnalog, 4, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::DftM)},
    {"dft_a", "dft_a(x)", EXP_TR("DFT(Ph-angle Curve)"), kHelpAngleCurve, 4, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::DftA)},
    {"dft_r", "dft_r(x)", EXP_TR("DFT(R-part Curve)"), kHelpAnalog, 4, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::DftR)},
    {"dft_x", "dft_x(x)", EXP_TR("DFT(X-part Curve)"), kHelpAnalog, 4, 1, 1, "c", R::Channel, F::Curve,
     int(ChannelCurve::DftX)},

    {"freq_x0", "freq_x0(x)", EXP_TR("Signal Freq.(Cross 0 Method)"), kHelpAnalog, 5, 1, 1, "c", R::Channel, F::Freq,
     0},
    {"freq_dft", "freq_dft(x)", EXP_TR("Base Freq.(DFT Insert Method)"), kHelpAnalog, 5, 1, 1, "c", R::Channel,
     F::Freq, 1},

    {"flt_hamm", "flt_hamm(x,fs,fl)", EXP_TR("Hamming-Window Filter"),
     EXP_TR("[x] is a channel or an expression that return a channel, [fs] is end-freq.(0.1~1000Hz), [fl] is "
            "filter length(1~1000)."), 6, 3, 3, "ckk", R::Channel, F::Hamming, 0},
    {"flt_diff", "flt_diff(x)", EXP_TR("One-Point-Diff. Filter"),
     EXP_TR("[x] is a channel or an expression that return a channel."), 6, 1, 1, "c", R::Channel, F::Diff, 0},

    {"seq_e", "seq_e(a,b,c,s)", EXP_TR("Eff-value of the Sequence-part"), kHelpSeq, 7, 4, 4, "ccck", R::Channel,
     F::Sequence, kEff},
    {"seq_m", "seq_m(a,b,c,s)", EXP_TR("Mod. of the Sequence-part"), kHelpSeq, 7, 4, 4, "ccck", R::Channel,
     F::Sequence, kMod},
    {"seq_a", "seq_a(a,b,c,s)", EXP_TR("Ph-angle of the Sequence-part"),
     EXP_TR("[a,b,c] are Ph. A/Ph. B and Ph. C Channels, [s] is one of (0,1,2), means Zero,Positive and Negative. "
            "return angle curve."), 7, 4, 4, "ccck", R::Channel, F::Sequence, kAng},
    {"seq_r", "seq_r(a,b,c,s)", EXP_TR("R-part of the Sequence-part"), kHelpSeq, 7, 4, 4, "ccck", R::Channel,
     F::Sequence, kRe},
    {"seq_x", "seq_x(a,b,c,s)", EXP_TR("X-part of the Sequence-part"), kHelpSeq, 7, 4, 4, "ccck", R::Channel,
     F::Sequence, kIm},

    {"power_p", "power_p(U,I1,I2,...)", EXP_TR("Active Power"), kHelpPower, 8, 2, -1, "c", R::Channel, F::Power,
     int(PowerPart::Active)},
    {"power_q", "power_q(U,I1,I2,...)", EXP_TR("Reactive Power"), kHelpPower, 8, 2, -1, "c", R::Channel, F::Power,
     int(PowerPart::Reactive)},
    {"power_s", "power_s(U,I1,I2,...)", EXP_TR("Apparent Power"), kHelpPower, 8, 2, -1, "c", R::Channel, F::Power,
     int(PowerPart::Apparent)},

    {"rx_m", "rx_m(U,I1,I2,...)", EXP_TR("Mod. of Impedance"), kHelpPower, 9, 2, -1, "c", R::Channel, F::Impedance,
     kMod},
    {"rx_a", "rx_a(U,I1,I2,...)", EXP_TR("Ph-angle of Impedance"),
     EXP_TR("[U,Ix] are ACV and ACC channels, allow multi ACC branch channels. return angle curve."), 9, 2, -1, "c",
     R::Channel, F::Impedance, kAng},
    {"rx_r", "rx_r(U,I1,I2,...)", EXP_TR("R-part of Impedance"), kHelpPower, 9, 2, -1, "c", R::Channel, F::Impedance,
     kRe},
    {"rx_x", "rx_x(U,I1,I2,...)", EXP_TR("X-part of Impedance"), kHelpPower, 9, 2, -1, "c", R::Channel, F::Impedance,
     kIm},
    {"rxk_m", "rxk_m(Io,K,U,I1,I2,...)", EXP_TR("Mod. of Grounding-Impedance"), kHelpGround, 9, 4, -1, "cxcc",
     R::Channel, F::GroundImpedance, kMod},
    {"rxk_a", "rxk_a(Io,K,U,I1,I2,...)", EXP_TR("Ph-angle of Grounding-Impedance"),
     EXP_TR("Zx=Ux/(Ix+K*Io),K=(Zo-Z1)/Z1. return angle curve."), 9, 4, -1, "cxcc", R::Channel,
     F::GroundImpedance, kAng},
    {"rxk_r", "rxk_r(Io,K,U,I1,I2,...)", EXP_TR("R-part of Grounding-Impedance"), kHelpGround, 9, 4, -1, "cxcc",
     R::Channel, F::GroundImpedance, kRe},
    {"rxk_x", "rxk_x(Io,K,U,I1,I2,...)", EXP_TR("X-part of Grounding-Impedance"), kHelpGround, 9, 4, -1, "cxcc",
     R::Channel, F::GroundImpedance, kIm},

    {"mkwave_c", "mkwave_c(s,e,a,f)", EXP_TR("Make unitage-cycle curve"),
     EXP_TR("[s] is start point index, [e] is end point index, [a] start angle(0~360度), [f] is freq.(0~5000Hz); "
            "w=sin(2*PI*f*dt+a)"), 10, 4, 4, "kkkk", R::Channel, F::SineWave, 0},
    {"mkwave_d", "mkwave_d(s,e)", EXP_TR("Make unitage-constant curve"),
     EXP_TR("[s] is start point index, [e] is end point index."), 10, 2, 2, "kk", R::Channel, F::StepWave, 0},
    {"mkwave_dt", "mkwave_dt(s,e,t)", EXP_TR("Make unitage-attenuation curve"),
     EXP_TR("[s] is start point index, [e] is end point index,[t] is constant of Attenuation Time(>=1ms);"
            "w=exp(0-dt/t)"), 10, 3, 3, "kkk", R::Channel, F::DecayWave, 0},
    {"mkwave_f", "mkwave_f(C1,s,e,C2,i)", EXP_TR("Combin Curves"),
     EXP_TR("Over-insert datas between [s] and [e] of channel [C1] to channel [C2] after point [i]. return a new "
            "channel."), 10, 5, 5, "ckkck", R::Channel, F::Splice, 0},

    {"phsd", "phsd(c1,c2)", EXP_TR("Difference of Ph."),
     EXP_TR("[c1,c2] are tow channels, return ([Ph. of channel 1]-[Ph. of channel 2]) angle curve."), 11, 2, 2,
     "cc", R::Channel, F::PhaseDiff, 0},
};
// clang-format on

constexpr size_t kRowCount = sizeof kRows / sizeof kRows[0];
static_assert(kRowCount == 63, "the library has 63 functions");

// A type that an argument letter accepts; a node of no deduced type (a power) counts as a
// constant.
bool accepts(char want, int type)
{
    const bool constant = type == 0 || type == 3 || type == ExpTypeConstant;
    switch (want) {
    case 'k':
        return constant;
    case 'c':
        return type == ExpTypeChannel;
    case 'x':
        return type == ExpTypeComplex;
    case 'n':
        return constant || type == ExpTypeChannel;
    default:
        return constant || type == ExpTypeChannel || type == ExpTypeComplex;
    }
}

// The compile-mode check of a row: too few, too many, then each argument from the first; the
// node's type is set only when all pass.
void checkRow(const ExpRowSpec &row, ExpNode &node)
{
    const int count = int(node.args.size());
    if (count < row.minArgs) {
        ExpReport(node.pos, QT_TRANSLATE_NOOP("CExpAnaMulti", "Error: %s() parameter is too few!"), row.name);
        return;
    }
    if (row.maxArgs >= 0 && count > row.maxArgs) {
        ExpReport(node.pos, QT_TRANSLATE_NOOP("CExpAnaMulti", "Error: %s() parameter is too more!"),
                  row.name);
        return;
    }
    const size_t letters = std::strlen(row.types);
    for (int i = 0; i < count; ++i) {
        const ExpNode *arg = node.args[size_t(i)].get();
        const int type = arg ? arg->type : 0;
        bool fits = accepts(row.types[std::min(size_t(i), letters - 1)], type);
        // atan2 takes two constants or two channels, not one of each.
        if (fits && row.family == ExpFamily::Atan2 && i == 1)
            fits = (type == ExpTypeChannel) == (node.args[0]->type == ExpTypeChannel);
        if (!fits) {
            ExpReport(arg ? arg->pos : node.pos,
                      QT_TRANSLATE_NOOP("CExpAnaMulti", "Error: %s() parameter %d type error!"), row.name,
                      i + 1);
            return;
        }
    }
    switch (row.result) {
    case ExpResult::SameAsFirst:
        node.type = node.args[0]->type;
        break;
    case ExpResult::Constant:
        node.type = ExpTypeConstant;
        break;
    case ExpResult::Complex:
        node.type = ExpTypeComplex;
        break;
    case ExpResult::Channel:
        node.type = ExpTypeChannel;
        break;
    }
}

template <size_t Row> void rowHandler(CCmtd99File &file, ExpNode &node, ExpValue *out)
{
    if (out)
        RunExpRow(kRows[Row], file, node, *out);
    else
        checkRow(kRows[Row], node);
}

template <size_t... Rows> constexpr std::array<ExpHandler, kRowCount> handlers(std::index_sequence<Rows...>)
{
    return {&rowHandler<Rows>...};
}

std::vector<ExpFuncGroup> &table()
{
    static std::vector<ExpFuncGroup> groups;
    return groups;
}

QString translated(const char *text)
{
    return QCoreApplication::translate("ExpFunc", text);
}

} // namespace

void FillExpFunctionTable()
{
    static constexpr std::array<ExpHandler, kRowCount> rowHandlers =
        handlers(std::make_index_sequence<kRowCount>());
    std::vector<ExpFuncGroup> groups(std::size(kGroupTitles));
    for (size_t g = 0; g < groups.size(); ++g)
        groups[g].title = translated(kGroupTitles[g]);
    for (size_t i = 0; i < kRowCount; ++i) {
        const ExpRowSpec &row = kRows[i];
        groups[size_t(row.group)].rows.push_back(
            ExpFunc{rowHandlers[i], row.name, translated(row.title), row.args, translated(row.help)});
    }
    for (ExpFuncGroup &group : groups)
        group.count = int(group.rows.size());
    table() = std::move(groups);
}

const std::vector<ExpFuncGroup> &ExpFunctionGroups()
{
    if (table().empty())
        FillExpFunctionTable();
    return table();
}

const ExpFunc *FindExpFunc(std::string_view name)
{
    for (const ExpFuncGroup &group : ExpFunctionGroups()) {
        for (const ExpFunc &row : group.rows) {
            if (ExpSameName(name, row.name))
                return &row;
        }
    }
    return nullptr;
}
