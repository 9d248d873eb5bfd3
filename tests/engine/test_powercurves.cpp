// Curves of a plant unit in operation: power of known phasors (lagging, leading, reverse,
// unbalanced), primary values and unit sizes of the power channels, U/f at rated and 110 %
// voltage, and the load angle of a generator at a worked operating point.

#include "chntext.h"
#include "chnvocabulary.h"
#include "memoryrecording.h"
#include "plantjobs.h"
#include "tolerance.h"
#include "units.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr long double kPi = 3.141592653589793238L;

// Three voltages of `u` V peak and three currents of the given peaks, lagging their voltages by
// `lagDeg` (negative: leading), phases 120 degrees apart; 400 samples at 1 kHz (20 per cycle).
struct ThreePhase
{
    ThreePhase(double u, const double (&i)[3], const double (&lagDeg)[3],
               std::vector<std::pair<float, int>> rates = {{1000.0f, 400}})
        : r(std::move(rates))
    {
        const int count = r.file.loadedPoints;
        for (int p = 0; p < 3; ++p)
            in.u[p] = SourceOf(r.add(Sine(count, 1000.0, u, -120.0 * p)));
        for (int p = 0; p < 3; ++p)
            in.i[0][p] = SourceOf(r.add(Sine(count, 1000.0, i[p], -120.0 * p - lagDeg[p]), "A"));
    }
    // Every curve of sample `at`.
    void run(int at)
    {
        std::vector<float> *arrays[] = {p, q, s};
        PowerOutputs out;
        for (int place = 0; place < kPowerPlaces; ++place) {
            for (int k = 0; k < 3; ++k)
                arrays[k][place].assign(size_t(r.file.loadedPoints), -1.0f);
            out.p[place] = p[place].data();
            out.q[place] = q[place].data();
            out.s[place] = s[place].data();
        }
        ASSERT_TRUE(PowerCurves(r.file, in, out, kNone));
        for (int place = 0; place < kPowerPlaces; ++place) {
            pAt[place] = p[place][size_t(at)];
            qAt[place] = q[place][size_t(at)];
            sAt[place] = s[place][size_t(at)];
        }
    }
    MemoryRecording r;
    PowerInputs in;
    std::vector<float> p[kPowerPlaces], q[kPowerPlaces], s[kPowerPlaces];
    double pAt[kPowerPlaces] = {}, qAt[kPowerPlaces] = {}, sAt[kPowerPlaces] = {};
};

// U·I·cos φ and U·I·sin φ of effective values, worked in long double.
long double activeOf(double uPeak, double iPeak, double lagDeg)
{
    return (uPeak / std::sqrt(2.0L)) * (iPeak / std::sqrt(2.0L)) * std::cos(lagDeg * kPi / 180);
}
long double reactiveOf(double uPeak, double iPeak, double lagDeg)
{
    return (uPeak / std::sqrt(2.0L)) * (iPeak / std::sqrt(2.0L)) * std::sin(lagDeg * kPi / 180);
}

void giveRatio(CChnMapAnalog &chn, float primary, float secondary)
{
    chn.config->primary = primary;
    chn.config->secondary = secondary;
    chn.config->ps = 'S';
    chn.config->flags |=
        CmtdChn_Analog::PrimaryGiven | CmtdChn_Analog::SecondaryGiven | CmtdChn_Analog::PsGiven;
    chn.RecalcExtremes();
}

} // namespace

TEST(PowerCurves, LaggingLeadingReverseAndUnbalanced)
{
    // Lagging by 30 degrees: 100 V and 5 A peak give 216.506 W and +125 var in each phase.
    ThreePhase lagging(100.0, {5.0, 5.0, 5.0}, {30.0, 30.0, 30.0});
    lagging.run(200);
    for (int place = 0; place < 3; ++place) {
        EXPECT_TRUE(NearRelative(lagging.pAt[place], double(activeOf(100, 5, 30)), 1e-5)) << place;
        EXPECT_TRUE(NearRelative(lagging.qAt[place], 125.0, 1e-5)) << place;
        EXPECT_TRUE(NearRelative(lagging.sAt[place], 250.0, 1e-5)) << place;
    }
    EXPECT_TRUE(NearRelative(lagging.pAt[kPowerTotal], double(3 * activeOf(100, 5, 30)), 1e-5));
    EXPECT_TRUE(NearRelative(lagging.qAt[kPowerTotal], 375.0, 1e-5));
    EXPECT_TRUE(NearRelative(lagging.sAt[kPowerTotal], 750.0, 1e-5));

    // Leading: the same P with negative Q (a capacitive load). Reverse: the current against its
    // voltage, power flowing back through the measuring point.
    ThreePhase leading(100.0, {5.0, 5.0, 5.0}, {-30.0, -30.0, -30.0});
    leading.run(300);
    EXPECT_TRUE(NearRelative(leading.pAt[kPowerTotal], double(3 * activeOf(100, 5, 30)), 1e-5));
    EXPECT_TRUE(NearRelative(leading.qAt[kPowerTotal], -375.0, 1e-5));
    ThreePhase reverse(100.0, {5.0, 5.0, 5.0}, {180.0, 180.0, 180.0});
    reverse.run(250);
    EXPECT_TRUE(NearRelative(reverse.pAt[kPowerTotal], -750.0, 1e-5));
    EXPECT_NEAR(reverse.qAt[kPowerTotal], 0.0, 1e-3);
    EXPECT_TRUE(NearRelative(reverse.sAt[kPowerTotal], 750.0, 1e-5));

    // Unbalanced: A lags by 60 degrees at 4 A, B is in phase at 2 A, C carries nothing. The
    // total S is the magnitude of the summed P and Q, not the sum of the phases' S.
    ThreePhase unbalanced(100.0, {4.0, 2.0, 0.0}, {60.0, 0.0, 0.0});
    unbalanced.run(100);
    const long double pTotal = activeOf(100, 4, 60) + activeOf(100, 2, 0);
    const long double qTotal = reactiveOf(100, 4, 60);
    EXPECT_TRUE(NearRelative(unbalanced.pAt[0], double(activeOf(100, 4, 60)), 1e-5));
    EXPECT_TRUE(NearRelative(unbalanced.pAt[1], 100.0, 1e-5));
    EXPECT_EQ(unbalanced.sAt[2], 0.0);
    EXPECT_TRUE(NearRelative(unbalanced.pAt[kPowerTotal], double(pTotal), 1e-5));
    EXPECT_TRUE(NearRelative(unbalanced.qAt[kPowerTotal], double(qTotal), 1e-5));
    EXPECT_TRUE(NearRelative(unbalanced.sAt[kPowerTotal],
                             double(std::sqrt(pTotal * pTotal + qTotal * qTotal)), 1e-5));
}

TEST(PowerCurves, SlowSegmentHasNoValueAndTheCurveHoldsAfter)
{
    // 200 samples at 1 kHz, then 100 at 400 Hz (too slow for a window), then 200 at 1 kHz again.
    ThreePhase rec(100.0, {5.0, 5.0, 5.0}, {0.0, 0.0, 0.0}, {{1000.0f, 200}, {400.0f, 300}, {1000.0f, 500}});
    rec.run(150);
    EXPECT_TRUE(NearRelative(rec.pAt[kPowerTotal], 750.0, 1e-5));
    EXPECT_TRUE(std::isnan(rec.p[kPowerTotal][250]));
    EXPECT_TRUE(std::isnan(rec.s[1][299]));
    // The last sample holds the value before it.
    EXPECT_EQ(rec.p[kPowerTotal][499], rec.p[kPowerTotal][498]);
    EXPECT_FALSE(std::isnan(rec.q[0][400]));
}

TEST(PowerJob, PrimaryValuesUnitsDirectionAndStop)
{
    // 220 kV / 100 V and 1200 A / 1 A; 57.735 V and 1 A effective in phase: 57.735 W secondary
    // per phase, times 2200 · 1200 on the primary side (457.3 MW in all).
    const double uPeak = 100.0 / std::sqrt(3.0) * std::sqrt(2.0);
    ThreePhase rec(uPeak, {std::sqrt(2.0), std::sqrt(2.0), std::sqrt(2.0)}, {0.0, 0.0, 0.0});
    CCmtd99File &file = rec.r.file;
    PowerJobParams params;
    for (int p = 0; p < 3; ++p) {
        params.u[p] = file.analogMaps[size_t(p)].get();
        params.i[p] = file.analogMaps[size_t(p + 3)].get();
        giveRatio(*file.analogMaps[size_t(p)], 220000.0f, 100.0f);
        giveRatio(*file.analogMaps[size_t(p + 3)], 1200.0f, 1.0f);
    }
    EXPECT_EQ(PowerUnitPrefix(params), 'k');
    params.primary = true;
    EXPECT_EQ(PowerUnitPrefix(params), 'M');

    params.namePrefix = QStringLiteral("T1");
    params.curves = PowerActive | PowerApparent | PowerPhaseB | PowerTotal;
    PowerJobChannels made;
    QString message;
    ASSERT_TRUE(MakePowerChannels(file, params, made, message)) << message.toStdString();
    ASSERT_TRUE(made.p[1] && made.s[1] && made.p[kPowerTotal] && made.s[kPowerTotal]);
    EXPECT_FALSE(made.q[kPowerTotal] || made.p[0] || made.p[2]);
    EXPECT_STREQ(made.p[1]->Name(), "T1 P B");
    EXPECT_STREQ(made.s[kPowerTotal]->Name(), "T1 S");
    EXPECT_EQ(made.s[kPowerTotal]->config->uu, "MVA");
    // The values are held in MW as shown: the unit is not split into a prefix.
    EXPECT_STREQ(made.p[1]->unit.text, "MW");
    EXPECT_EQ(FormatChannelNumber(*made.p[1], 1.5, 0), "1.500MW");
    EXPECT_EQ(made.p[1]->Class(), ClassPower);
    EXPECT_EQ(made.p[1]->Phase(), PhaseB);
    EXPECT_TRUE(made.p[1]->direct && !made.p[1]->IsAC());

    made.p[kPowerTotal]->flags = 0x2 | 0x100;
    ASSERT_TRUE(RunPowerJob(file, params, made, nullptr, nullptr));
    const double phaseMw = 100.0 / std::sqrt(3.0) * 2200.0 * 1200.0 / 1e6;
    EXPECT_TRUE(NearRelative(made.p[1]->Value(200), phaseMw, 1e-5));
    EXPECT_TRUE(NearRelative(made.p[kPowerTotal]->Value(200), 3 * phaseMw, 1e-5));
    EXPECT_TRUE(NearRelative(made.p[kPowerTotal]->maxValue, 3 * phaseMw, 1e-4));
    EXPECT_EQ(made.p[kPowerTotal]->flags, 0x2u);

    // Current transformers pointing into the plant: the same flow reads as import, in the MW of
    // the channels made.
    params.currentSign = -1.0f;
    params.primary = false;
    ASSERT_TRUE(RunPowerJob(file, params, made, nullptr, nullptr));
    EXPECT_TRUE(NearRelative(made.p[kPowerTotal]->Value(200), -3 * 100.0 / std::sqrt(3.0) / 1e6, 1e-5));

    // Stopped at the first poll: the samples before it stay, nothing behind.
    const auto stopAtOnce = [](void *, int code, int, int) { return code == 8 ? 50 : code == 0 ? -1 : 0; };
    EXPECT_FALSE(RunPowerJob(file, params, made, stopAtOnce, nullptr));
    EXPECT_NE(made.s[1]->Value(49), 0.0f);
    EXPECT_EQ(made.s[1]->Value(50), 0.0f);
}

TEST(VoltsPerHertz, RatedAndOverfluxedWindings)
{
    // A 110 kV winding seen through 110 kV / 100 V: the phase voltage's rated value is 57.735 V.
    MemoryRecording r{{{1000.0f, 400}}};
    r.file.sampleTimes = static_cast<int64_t *>(AllocateSamples(400, sizeof(int64_t)));
    for (int n = 0; n < 400; ++n)
        r.file.sampleTimes[n] = int64_t(n) * 1000;
    const double ratedPeak = 100.0 / std::sqrt(3.0) * std::sqrt(2.0);
    CChnMapAnalog &rated = r.add(Sine(400, 1000.0, ratedPeak));
    CChnMapAnalog &over = r.add(Sine(400, 1000.0, 1.1 * ratedPeak));
    CChnMapAnalog &line = r.add(Sine(400, 1000.0, 1.1 * 100.0 * std::sqrt(2.0)));
    for (CChnMapAnalog *chn : {&rated, &over, &line})
        giveRatio(*chn, 110000.0f, 100.0f);
    line.phase = PhaseLine;

    UfJobParams params;
    params.ratedKv = 110.0f;
    params.ratedFreq = 50.0f;
    const std::pair<CChnMapAnalog *, double> cases[] = {{&rated, 1.0}, {&over, 1.1}, {&line, 1.1}};
    for (const auto &[chn, expected] : cases) {
        params.u = chn;
        std::vector<float> y(400, -1.0f);
        ASSERT_TRUE(
            VoltsPerHertzCurve(r.file, SourceOf(*chn), UfRatedVoltage(params), 50.0, y.data(), kNone));
        for (int n : {60, 200, 399})
            EXPECT_TRUE(NearRelative(y[size_t(n)], expected, 1e-4)) << n;
    }
    // The same overfluxing on a 60 Hz unit read at 50 Hz would be 1.1 · 60 / 50.
    params.u = &over;
    std::vector<float> y(400);
    ASSERT_TRUE(VoltsPerHertzCurve(r.file, SourceOf(over), UfRatedVoltage(params), 60.0, y.data(), kNone));
    EXPECT_TRUE(NearRelative(y[200], 1.32, 1e-4));
    std::free(r.file.sampleTimes);
    r.file.sampleTimes = nullptr;
}

TEST(LoadAngle, GeneratorAtRatedLoadAndPowerFactor)
{
    // 100 MVA, 10.5 kV, Xq = 1.8 p.u., at rated current and power factor 0.8 lagging:
    // Eq = 1 + j·1.8·(0.8 - j·0.6) = 2.08 + j·1.44, so delta = atan(1.44 / 2.08) = 34.695 degrees.
    const long double delta = std::atan2(1.44L, 2.08L) * 180 / kPi;
    // Through 10.5 kV / 100 V and 6000 A / 1 A: 57.735 V and 5498.6 A / 6000 effective.
    const double uEff = 100.0 / std::sqrt(3.0);
    const double iEff = 100.0e6 / (std::sqrt(3.0) * 10500.0) / 6000.0;
    const double lag = std::acos(0.8) * 180.0 / M_PI;
    for (const float sign : {1.0f, -1.0f}) {
        ThreePhase rec(
            uEff * std::sqrt(2.0),
            {iEff * std::sqrt(2.0) * sign, iEff * std::sqrt(2.0) * sign, iEff * std::sqrt(2.0) * sign},
            {lag, lag, lag});
        CCmtd99File &file = rec.r.file;
        CmtdInfTrwk_UnitPwr unit;
        unit.name = "G1";
        unit.xq = 1.8f;
        unit.v1 = 10.5f;
        unit.capacity = 100.0f;
        unit.igtDir = sign < 0.0f ? 1 : 0;
        unit.tvChns = {1, 2, 3, 0};
        unit.taChns = {4, 5, 6, 0};
        for (int p = 0; p < 3; ++p) {
            giveRatio(*file.analogMaps[size_t(p)], 10500.0f, 100.0f);
            giveRatio(*file.analogMaps[size_t(p + 3)], 6000.0f, 1.0f);
        }
        LoadAngleJobParams params;
        ASSERT_TRUE(LoadAngleJobFromUnit(file, unit, params));
        // Zb = 10.5² / 100 = 1.1025 ohm primary, 1.8 · 1.1025 · 6000 / 105 = 113.4 ohm secondary.
        const LoadAngleInputs in = LoadAngleJobInputs(params);
        EXPECT_TRUE(NearRelative(in.xq, 113.4, 1e-6));

        QString message;
        CChnMapAnalog *target = MakeLoadAngleChannel(file, params, message);
        ASSERT_TRUE(target) << message.toStdString();
        EXPECT_STREQ(target->Name(), "G1 Delta");
        EXPECT_EQ(target->Class(), ClassAngle);
        ASSERT_TRUE(RunLoadAngleJob(file, params, *target, nullptr, nullptr));
        EXPECT_TRUE(NearRelative(target->Value(200), double(delta), 1e-5)) << sign;

        // Phase A alone gives the same angle in a balanced machine.
        LoadAngleInputs single = in;
        single.u[1] = single.u[2] = single.i[1] = single.i[2] = SeriesSource{};
        std::vector<float> y(400);
        ASSERT_TRUE(LoadAngleCurve(file, single, y.data(), kNone));
        EXPECT_TRUE(NearRelative(y[300], double(delta), 1e-5));
    }
}
