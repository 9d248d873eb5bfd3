// The function library of the expression language: the table, the compile-time argument
// checks, constants and complex numbers, the order and bound rules of the harmonic functions,
// the test waves' ranges, the time shift by each interpolation, and the description each row
// gives its result. Expected values are worked by hand or computed here directly from the
// stated formulas.

#include "expfunctions.h"
#include "exprfixture.h"

#include <QString>

#include <algorithm>
#include <cmath>

namespace {

using ExprFunctions = ExprTest;

QString fixed(double v)
{
    return QString::asprintf("%.6f", v);
}

} // namespace

TEST_F(ExprFunctions, TableOfTwelveGroups)
{
    FillExpFunctionTable();
    const std::vector<ExpFuncGroup> &groups = ExpFunctionGroups();
    const QStringList titles = {"Math",  "complex number", "Harmonious", "Single Channel",
                                "DFT",   "Frequency",      "Filter",     "Sequence",
                                "Power", "Impedance",      "Make Wave",  "Other"};
    const int counts[] = {13, 5, 5, 11, 4, 2, 2, 5, 3, 8, 4, 1};
    ASSERT_EQ(groups.size(), 12u);
    for (size_t g = 0; g < groups.size(); ++g) {
        EXPECT_EQ(groups[g].title, titles[int(g)]);
        EXPECT_EQ(groups[g].count, counts[g]);
    }
    const ExpFunc *row = FindExpFunc("RXK_A");
    ASSERT_NE(row, nullptr);
    EXPECT_STREQ(row->name, "rxk_a");
    EXPECT_STREQ(row->args, "rxk_a(Io,K,U,I1,I2,...)");
    EXPECT_EQ(row->title, "Ph-angle of Grounding-Impedance");
    EXPECT_EQ(row->help, "Zx=Ux/(Ix+K*Io),K=(Zo-Z1)/Z1. return angle curve.");
    EXPECT_EQ(FindExpFunc("seq_a")->help,
              "[a,b,c] are Ph. A/Ph. B and Ph. C Channels, [s] is one of (0,1,2), "
              "means Zero,Positive and Negative. return angle curve.");
    EXPECT_EQ(FindExpFunc("mkwave_f")->title, "Combin Curves");
    EXPECT_EQ(FindExpFunc("sinh"), nullptr);
    EXPECT_EQ(messages("sinh(1)"), QStringList{"Error: Unknown func. name [sinh]!"});
}

TEST_F(ExprFunctions, ArgumentCountsAndTypes)
{
    EXPECT_EQ(messages("sin()"), QStringList{"Error: sin() parameter is too few!"});
    EXPECT_EQ(messages("sin(1,2)"), QStringList{"Error: sin() parameter is too more!"});
    EXPECT_EQ(messages("sin(1,)"), QStringList{}); // a last empty piece adds no argument
    program.Compile(r.file, "sin(complex(1,1))");
    ASSERT_EQ(ExpMessages.size(), 1u);
    EXPECT_EQ(ExpMessages[0], std::make_pair(4, QString("Error: sin() parameter 1 type error!")));
    EXPECT_EQ(messages("power_p(\"UA\")"), QStringList{"Error: power_p() parameter is too few!"});
    EXPECT_EQ(messages("power_p(\"UA\", 1)"), QStringList{"Error: power_p() parameter 2 type error!"});
    EXPECT_EQ(messages("rxk_m(\"IA\", 1, \"UA\", \"IA\")"),
              QStringList{"Error: rxk_m() parameter 2 type error!"});
    EXPECT_EQ(messages("rxk_m(\"IA\", complex(1,0), \"UA\", \"IA\", 3)"),
              QStringList{"Error: rxk_m() parameter 5 type error!"});
    EXPECT_EQ(messages("dtms(\"UA\")"), QStringList{"Error: dtms() parameter is too few!"});
    EXPECT_EQ(messages("dtms(\"UA\",1,2,3)"), QStringList{"Error: dtms() parameter is too more!"});
    EXPECT_EQ(messages("atan2(1, \"UA\")"), QStringList{"Error: atan2() parameter 2 type error!"});
    EXPECT_EQ(messages("complex_r(1)"), QStringList{"Error: complex_r() parameter 1 type error!"});
    EXPECT_EQ(messages("mkwave_f(\"IA\", 1, 2, 3, 4)"),
              QStringList{"Error: mkwave_f() parameter 4 type error!"});
    // Too few goes before any type check.
    EXPECT_EQ(messages("seq_e(1, 2)"), QStringList{"Error: seq_e() parameter is too few!"});
    // A function of a channel gives a channel, which a complex operand may not follow.
    EXPECT_EQ(messages("sin(\"UA\") / complex(1,0)"),
              QStringList{"Error: Channel datas can not [/] with complex number!"});
}

TEST_F(ExprFunctions, ConstantsMathAndComplexNumbers)
{
    const QStringList log = run("sin(PI/2); ctg(1); toArc(180); toAng(1); sqrt(-4); abs(-2.5); log10(1000);"
                                "complex_m(complex(3,4)); complex_a(complex(0,-1)); atan(complex(1,1));"
                                "sqrt(complex(-4,0)); SQRT3*Sqrt3; lagrange1 + NEWTON2");
    const QStringList expected = {"No Error!",
                                  "[sin(PI/2)] Result = " + fixed(std::sin(3.1415926535898 / 2)),
                                  "[ctg(1)] Result = " + fixed(1.0 / std::tan(1.0)),
                                  "[toArc(180)] Result = 3.141593",
                                  "[toAng(1)] Result = 57.295780",
                                  "[sqrt(-4)] Result = 2.000000",
                                  "[abs(-2.5)] Result = 2.500000",
                                  "[log10(1000)] Result = 3.000000",
                                  "[complex_m(complex(3,4))] Result = 5.000000",
                                  "[complex_a(complex(0,-1))] Result = -90.000000",
                                  "[atan(complex(1,1))] Result = 0.785398",
                                  "[sqrt(complex(-4,0))] Result = 0.000000+j2.000000",
                                  "[SQRT3*Sqrt3] Result = 3.000000",
                                  "[lagrange1 + NEWTON2] Result = 5.000000"};
    EXPECT_EQ(log, expected);

    // On a channel: sample by sample; toAng turns with the 32-bit factor and reads in degrees.
    const std::vector<float> a = curve("toAng(\"UA\")");
    EXPECT_EQ(a[7], ua->Values()[7] * 57.295776f);
    EXPECT_EQ(channel("R")->config->uu, "Deg");
    EXPECT_EQ(curve("cos(\"UA\")")[7], float(std::cos(double(ua->Values()[7]))));
    EXPECT_EQ(curve("atan2(\"UA\", \"IA\")")[7],
              float(std::atan2(double(ua->Values()[7]), double(ia->Values()[7]))));
}

TEST_F(ExprFunctions, HarmonicOrderAndDistortionBounds)
{
    // A base wave of 100 V peak with 20 V of second harmonic, 20 points per cycle.
    std::vector<float> x(400);
    for (int i = 0; i < 400; ++i)
        x[size_t(i)] = float(100.0 * std::sin(2 * M_PI * i / 20) + 20.0 * std::sin(4 * M_PI * i / 20));
    std::copy(x.begin(), x.end(), ua->Values());

    const std::vector<float> second = curve("harm_e(\"UA\", 2)");
    EXPECT_EQ(curve("harm_e(\"UA\", 2.6)"), second);
    EXPECT_NEAR(second[200], 20.0 / std::sqrt(2.0), 0.05);
    EXPECT_EQ(curve("harm_e(\"UA\", 0)"), curve("harm_e(\"UA\", 1)"));
    EXPECT_NEAR(curve("harm_m(\"UA\", 1)")[200], 100.0, 0.2);
    // Order 10 is half the points of a cycle: no value anywhere.
    const std::vector<float> tenth = curve("harm_e(\"UA\", 10)");
    EXPECT_EQ(*std::max_element(tenth.begin(), tenth.end()), 0.0f);

    const std::vector<float> dist = curve("dist(\"UA\", 2)");
    EXPECT_EQ(curve("dist(\"UA\", 1)"), dist);
    EXPECT_EQ(curve("dist(\"UA\", 40)"), curve("dist(\"UA\", 31)"));
    EXPECT_NEAR(dist[200], 0.2, 0.002); // (20 / √2) / (100 / √2)
    EXPECT_EQ(channel("R")->config->uu, "");
    EXPECT_TRUE(channel("R")->direct);
}

TEST_F(ExprFunctions, ResultDescriptionsOfTheRows)
{
    struct Row
    {
        const char *expression;
        const char *kind;
        const char *unit;
        float a;
        bool direct;
    } rows[] = {
        {"phs(\"UA\")", "AG", "Deg", 0.012f, true},
        {"rx_a(\"UA\", \"IA\")", "AG", "Deg", 0.012f, true},
        {"freq_x0(\"UA\")", "FQ", "Hz", 0.033333335f, true},
        {"power_q(\"UA\", \"IA\")", "PW", "Var", 0.1f, true},
        {"rx_m(\"UA\", \"IA\")", "ZX", "omh", 0.1f, true},
        {"dft_r(\"UA\")", "", "V", 0.1f, false},
        {"delta_mn(\"UA\")", "", "V", 0.1f, false},
        {"dpart(\"UA\")", "DV", "V", 0.1f, true},
    };
    ua->config->a = 0.1f;
    ua->config->primary = 1000.0f;
    ua->config->secondary = 100.0f;
    ia->config->primary = 600.0f;
    ia->config->secondary = 5.0f;
    for (const Row &row : rows) {
        curve(row.expression);
        const CChnMapAnalog *chn = channel("R");
        ASSERT_NE(chn, nullptr) << row.expression;
        EXPECT_EQ(chn->config->typeCode, row.kind) << row.expression;
        EXPECT_EQ(chn->config->uu, row.unit) << row.expression;
        EXPECT_EQ(chn->config->a, row.a) << row.expression;
        EXPECT_EQ(chn->direct, row.direct) << row.expression;
    }
    // Impedance ratios: the voltage's over the current's.
    curve("rx_x(\"UA\", \"IA\")");
    EXPECT_EQ(channel("R")->config->primary, 1000.0f / 600.0f);
    EXPECT_EQ(channel("R")->config->secondary, 100.0f / 5.0f);
    // Out of its ranges the filter takes 5 Hz and 8 points.
    EXPECT_EQ(curve("flt_hamm(\"UA\", 0, 0)"), curve("flt_hamm(\"UA\", 5, 8)"));
    curve("seq_e(\"UA\", \"UA\", \"UA\", 5)");
    EXPECT_EQ(channel("R")->config->ph, "S0");
    EXPECT_NEAR(channel("R")->Values()[200], 100.0 / std::sqrt(2.0), 0.05); // zero sequence of three equals
    EXPECT_NEAR(curve("phsd(\"UA\", \"IA\")")[200], 30.0, 0.01);
    EXPECT_NEAR(curve("power_p(\"UA\", \"IA\", \"IA\")")[200], 2 * 100 * 5 / 2.0 * std::cos(M_PI / 6), 0.05);
}

TEST_F(ExprFunctions, TestWavesAndTheirRanges)
{
    // e - 1 below zero is the last sample; a start outside is the first.
    const std::vector<float> all = curve("mkwave_d(1,0)");
    EXPECT_EQ(std::count(all.begin(), all.end(), 1.0f), 400);
    EXPECT_EQ(curve("mkwave_d(-5, 100000)"), all);
    const std::vector<float> part = curve("mkwave_d(3.9, 5)");
    EXPECT_EQ(std::vector<float>(part.begin(), part.begin() + 6), std::vector<float>({0, 0, 1, 1, 1, 0}));

    // A frequency outside 0 to 5000 Hz is 50 Hz; times run from the range's first sample.
    const std::vector<float> sine = curve("mkwave_c(11, 100, 90, 6000)");
    for (int i = 10; i < 100; ++i)
        ASSERT_EQ(sine[size_t(i)],
                  float(std::sin(50.0 * 6.2831855 * ((i - 10) * 1000.0) * 0.000001 + 90 * 0.0174532925)))
            << i;
    EXPECT_EQ(sine[9], 0.0f);
    EXPECT_EQ(sine[100], 0.0f);
    EXPECT_EQ(channel("R")->config->ratedFreq, 50.0f);

    const std::vector<float> decay = curve("mkwave_dt(1, 0, 10)");
    EXPECT_EQ(decay[0], 1.0f);
    EXPECT_EQ(decay[30], float(std::exp(-30000.0 / 10000.0)));
    EXPECT_EQ(curve("mkwave_dt(1, 0, 0)")[1], 0.0f); // τ of at least 1 µs

    // Samples 1..3 of IA over UA from sample 5 on; an insertion point outside is the first.
    const std::vector<float> spliced = curve("mkwave_f(\"IA\", 1, 3, \"UA\", 5)");
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(spliced[size_t(i)], i >= 4 && i < 7 ? ia->Values()[i - 4] : ua->Values()[i]) << i;
    EXPECT_EQ(curve("mkwave_f(\"IA\", 398, 0, \"UA\", 0)")[2], ia->Values()[399]);
}

TEST_F(ExprFunctions, TimeShiftByEachMethod)
{
    // A parabola in samples: the parabolas through three points reproduce it.
    for (int i = 0; i < 400; ++i)
        ua->Values()[i] = float(i) * float(i) / 16.0f;
    const auto parabola = [](double s) { return float(s * s / 16.0); };
    for (const char *method : {"", ", Lagrange2", ", Newton2", ", 1.4", ", 2"}) {
        const std::vector<float> later = curve(QString("dtms(\"UA\", 0.5%1)").arg(method));
        EXPECT_EQ(later[0], 0.0f) << method;
        for (int d = 1; d < 398; ++d)
            ASSERT_NEAR(later[size_t(d)], parabola(d - 0.5), 1e-2) << method << d;
        EXPECT_EQ(later[399], ua->Values()[399]) << method;
        const std::vector<float> earlier = curve(QString("dtms(\"UA\", -1.5%1)").arg(method));
        for (int d = 0; d < 396; ++d)
            ASSERT_NEAR(earlier[size_t(d)], parabola(d + 1.5), 1e-2) << method << d;
        EXPECT_EQ(earlier[397], ua->Values()[397]) << method;
    }
    // The line through two points reaches the end of the recording.
    const std::vector<float> line = curve("dtms(\"UA\", 0.5, Lagrange1)");
    for (int d = 1; d < 400; ++d)
        ASSERT_NEAR(line[size_t(d)], (parabola(d - 1) + parabola(d)) / 2, 1e-2) << d;
    // The Hermite segment with chords as slopes, worked at the midpoint of (0, 1) ms.
    const std::vector<float> hermite = curve("dtms(\"UA\", 0.5, Hermite2)");
    for (int d : {1, 10, 200}) {
        const double y0 = parabola(d - 1), y1 = parabola(d), y2 = parabola(d + 1);
        // At the midpoint r = s = -1/2 and 1/2: the cubic reads (y0 + y1) / 2 + (m0 - m1) · h / 8.
        const double expected = (y0 + y1) / 2 + ((y1 - y0) - (y2 - y1)) / 8;
        EXPECT_NEAR(hermite[size_t(d)], expected, 1e-2) << d;
    }
    // No shift reproduces the curve, but for the last two samples, which stay the source's.
    const std::vector<float> same = curve("dtms(\"UA\", 0)");
    for (int d = 0; d < 400; ++d)
        ASSERT_NEAR(same[size_t(d)], ua->Values()[d], 1e-2) << d;
}

TEST_F(ExprFunctions, AverageWindowAtTheFastestRate)
{
    // 2 kHz then 1 kHz: avg(x, 10) spans 10 points at 2 kHz and 5 at 1 kHz, the same 5 ms.
    MemoryRecording two({{2000.0f, 200}, {1000.0f, 300}});
    std::vector<float> ramp(300);
    for (int i = 0; i < 300; ++i)
        ramp[size_t(i)] = float(i % 7) * 3.0f;
    CChnMapAnalog &x = two.add(ramp);
    program.Compile(two.file, "\"R\" = avg(\"UA\", 10)");
    ASSERT_TRUE(ExpMessages.empty());
    program.Evaluate();
    program.TakeResults();
    const CChnMapAnalog *avg = dynamic_cast<CChnMapAnalog *>(two.file.FindMapByName("R"));
    ASSERT_NE(avg, nullptr);
    // The window of a sample starts one window before it (the default window position).
    const auto mean = [&](int start, int w) {
        long double sum = 0;
        for (int k = start; k < start + w; ++k)
            sum += x.Values()[k];
        return double(sum / w);
    };
    EXPECT_NEAR(avg->Values()[50], mean(40, 10), 1e-5);
    EXPECT_NEAR(avg->Values()[250], mean(245, 5), 1e-5);
}

TEST_F(ExprFunctions, PhaseCurvesTakeTheirArgumentsInOrder)
{
    CChnMapAnalog &ub = r.add(Sine(400, 1000.0, 100.0, -120.0));
    ub.config->ch_id = "UB";
    CChnMapAnalog &uc = r.add(Sine(400, 1000.0, 100.0, 120.0));
    uc.config->ch_id = "UC";
    // A balanced set of 100 V peak: all positive sequence.
    EXPECT_NEAR(curve("seq_m(\"UA\", \"UB\", \"UC\", 1)")[200], 100.0, 0.01);
    EXPECT_NEAR(curve("seq_m(\"UA\", \"UB\", \"UC\", 2)")[200], 0.0, 0.01);
    EXPECT_NEAR(curve("seq_m(\"UA\", \"UB\", \"UC\", 0)")[200], 0.0, 0.01);
    // 70.7 V and 3.54 A effective, the current lagging by 30 degrees: Q is positive.
    EXPECT_NEAR(curve("power_q(\"UA\", \"IA\")")[200], 250.0 * 0.5, 0.01);
    EXPECT_NEAR(curve("power_s(\"UA\", \"IA\")")[200], 250.0, 0.01);
    EXPECT_NEAR(curve("rx_a(\"UA\", \"IA\")")[200], 30.0, 0.01);
    // Io first, then K: K·Io adds to the branch current.
    EXPECT_NEAR(curve("rxk_m(\"IA\", complex(0,0), \"UA\", \"IA\")")[200], 20.0, 0.001);
    EXPECT_NEAR(curve("rxk_m(\"IA\", complex(1,0), \"UA\", \"IA\")")[200], 10.0, 0.001);
    EXPECT_NEAR(curve("rxk_m(\"IA\", complex(0,1), \"UA\", \"IA\")")[200], 20.0 / std::sqrt(2.0), 0.001);
    EXPECT_NEAR(curve("freq_dft(\"UA\")")[200], 50.0, 0.001);
    // A quoted name of a complex result stores a variable.
    EXPECT_EQ(run("\"K\" = complex(1,-2)"),
              QStringList({"No Error!", "[K] Result = 1.000000-j2.000000, Stored in [K]"}));
}
