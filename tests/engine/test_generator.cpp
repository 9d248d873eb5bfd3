// Generator diagrams: the loss-of-excitation circles and rotor line, the pole-slip lens, its
// regions and slip counter, the capability curve, the setup checks and the three settings files.
// Expected values are worked by hand from the machine data.

#include "cfgfixture.h"
#include "genboundfile.h"
#include "genseries.h"
#include "memoryrecording.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

GenMachine roundMachine()
{
    GenMachine m;
    m.ratedMw = 300.0;
    m.pf = 0.85;
    m.ratedKv = 20.0;
    m.uf0 = 150.0;
    m.xd = 1.8;
    m.xq = 1.7;
    m.xdT = 0.25;
    m.xs = 0.1;
    return m;
}

GenMachine salientMachine()
{
    GenMachine m = roundMachine();
    m.xd = 1.0;
    m.xq = 0.6;
    m.salient = true;
    return m;
}

void expectCircle(const GenCircle &c, double r, double x, double radius)
{
    EXPECT_NEAR(c.r, r, 1e-6);
    EXPECT_NEAR(c.x, x, 1e-6);
    EXPECT_NEAR(c.fRadius, radius, 1e-6);
}

GenMachine lensMachine()
{
    GenMachine m;
    m.xs = 0.5;
    m.xdT = 0.3;
    return m;
}

StepBounds lens(float fai)
{
    StepBounds b;
    b.fXt = 0.2f;
    b.fFai = fai;
    b.fAlfa = 120.0f;
    b.fZLimit = 1.0f;
    StepRecalc(b, lensMachine(), ExciScales());
    return b;
}

int slipsOf(std::initializer_list<int> regions, int &gt)
{
    StepSlipCounter counter;
    int system = 0;
    gt = 0;
    bool first = true;
    for (int region : regions) {
        if (first) {
            counter.start(region);
            first = false;
            continue;
        }
        const StepSlipCounter::Slip slip = counter.next(region);
        system += slip == StepSlipCounter::SlipSystem;
        gt += slip == StepSlipCounter::SlipGT;
    }
    return system;
}

} // namespace

TEST(GenExciGeometry, RoundRotorCirclesLinesAndRanges)
{
    ExciBounds b;
    b.nBounds = ExciBounds::AllBounds;
    b.fUfset = 60.0f;
    b.fZLimit = 1.0f;
    ExciScales s;
    s.ufFull = 300.0;
    ExciRecalc(b, roundMachine(), s);
    const double sn = 300.0 / 0.85;
    EXPECT_EQ(b.fPs, 300.0f); // 0 takes the rated output
    expectCircle(b.cirQe, 0.0, -0.85, 0.95);
    expectCircle(b.cirPe, sn / 600.0, 0.1, sn / 600.0);
    // The asynchronous circle spans -Xd'/2 .. -Xd on the X axis.
    EXPECT_NEAR(b.cirAsyn.x + b.cirAsyn.fRadius, -0.125, 1e-6);
    EXPECT_NEAR(b.cirAsyn.x - b.cirAsyn.fRadius, -1.8, 1e-6);
    EXPECT_EQ(b.cirAsyn.r, 0.0);
    // The engineer's circle without lean spans -XN .. XM.
    expectCircle(b.cirUser, 0.0, -0.45, 0.55);
    EXPECT_EQ(b.fSalient, 0.0f);
    EXPECT_NEAR(b.fUfsetPu, 0.4, 1e-7);
    EXPECT_NEAR(b.fPtPu, 1.0, 1e-7);
    EXPECT_NEAR(b.fUfmax, 2.0, 1e-7);
    EXPECT_NEAR(b.fPmax, 100e-6 / sn, 1e-12);
    EXPECT_NEAR(b.fRmax, 2.0 * sn / 600.0, 1e-6); // the active-power circle reaches furthest
    EXPECT_NEAR(b.fRmin, -1.0, 1e-6);
    EXPECT_NEAR(b.fXmin, -1.8, 1e-6);
    EXPECT_NEAR(b.fXmax, 1.0, 1e-6);

    // The derived series widen the range: 80 ohm secondary through 100/1 and 1/1 on Zb.
    ExciBounds w = b;
    ExciScales rx = s;
    rx.hasRx = true;
    rx.rFull = 80.0;
    rx.xFull = 1.0;
    rx.ratioU = 100.0;
    ExciRecalc(w, roundMachine(), rx);
    const double zb = 400.0 / sn;
    EXPECT_NEAR(w.fRmin, -80.0 * 100.0 / zb, 1e-2);

    // A field voltage setting above the channel's full scale holds the rotor range; Kf 0 puts
    // the knee at infinity; the engineer's circle stays as it was while switched off.
    ExciBounds k;
    k.nBounds = ExciBounds::LineQ;
    k.fUfset = 600.0f;
    k.fKf = 0.0f;
    k.fXM = 5.0f;
    ExciRecalc(k, roundMachine(), s);
    EXPECT_NEAR(k.fUfmax, 4.0, 1e-6);
    EXPECT_TRUE(std::isinf(k.fPtPu));
    expectCircle(k.cirUser, 0.0, 0.0, 0.0);

    // A leaning engineer's circle: centre moved left by tan(alfa)·(XM + XN)/2.
    ExciBounds a;
    a.nBounds = ExciBounds::CirUser;
    a.fAlfa = 45.0f;
    a.fXM = 1.0f;
    a.fXN = 1.0f;
    ExciRecalc(a, roundMachine(), s);
    expectCircle(a.cirUser, -1.0, 0.0, std::sqrt(2.0));
}

TEST(GenExciGeometry, SalientRotorStabilityCircle)
{
    ExciBounds b;
    b.fUfset = 30.0f;
    b.fKf = 2.0f;
    ExciRecalc(b, salientMachine(), ExciScales());
    // Fai 0: the circle over 0 .. -(Xd + Xq)/2 on the X axis.
    expectCircle(b.cirQe, 0.0, -0.4, 0.4);
    const double salient = 0.4 / (2.0 * 0.7 * 1.1);
    EXPECT_NEAR(b.fSalient, salient, 1e-7);
    EXPECT_NEAR(b.fPtPu, 0.5 + salient, 1e-6);
    // The rotor line meets the Ufset line at the knee: (Pt - salient)·Kf = 1.
    EXPECT_NEAR((b.fPtPu - b.fSalient) * b.fKf, 1.0, 1e-6);

    b.fFai = 30.0f;
    ExciRecalc(b, salientMachine(), ExciScales());
    const double t30 = std::tan(3.14159265358979323846L / 6.0L);
    expectCircle(b.cirQe, -t30 * 0.4, -0.4, 1.6 / (4.0 * std::sqrt(3.0) / 2.0));
}

TEST(GenStepGeometry, LensPointsRegionsAndLimits)
{
    // Fai 90: the lens stands on the X axis between B = -Xd' and A = Xs.
    StepBounds up = lens(90.0f);
    EXPECT_NEAR(up.ptA[1], 0.5, 1e-12);
    EXPECT_NEAR(up.ptB[1], -0.3, 1e-12);
    EXPECT_NEAR(up.ptT[1], 0.18, 1e-7);
    const double radius = 0.8 / std::sqrt(3.0);
    EXPECT_NEAR(up.fRadius, radius, 1e-6);
    EXPECT_NEAR(up.ptC1[0], radius / 2.0, 1e-6);
    EXPECT_NEAR(up.ptC1[1], 0.1, 1e-6);
    EXPECT_NEAR(up.ptC2[0], -radius / 2.0, 1e-6);
    EXPECT_NEAR(up.ptC2[1], 0.1, 1e-6);
    const int regions90[8][3] = {{-100, 100, 1}, {-5, 30, 2}, {5, 30, 3}, {100, 100, 4},
                                 {100, 0, 5},    {5, 0, 6},   {-5, 0, 7}, {-100, 0, 8}};
    for (const auto &p : regions90)
        EXPECT_EQ(StepRegion(up, p[0] * 0.01, p[1] * 0.01), p[2]) << p[0] << "," << p[1];
    EXPECT_EQ(up.fXmax, 1.0f); // everything lies within the limit

    // Fai 0: the lens lies along R; "right" of the axis is below it.
    StepBounds flat = lens(0.0f);
    EXPECT_NEAR(flat.ptC1[0], 0.1, 1e-6);
    EXPECT_NEAR(flat.ptC1[1], -radius / 2.0, 1e-6);
    EXPECT_EQ(StepRegion(flat, 0.3, 0.05), 2);
    EXPECT_EQ(StepRegion(flat, 0.3, -0.05), 3);
    EXPECT_EQ(StepRegion(flat, 1.0, -1.0), 4);
    EXPECT_EQ(StepRegion(flat, -1.0, 1.0), 8);

    // A leaning lens goes by the angles from B and T.
    StepBounds lean = lens(45.0f);
    EXPECT_EQ(StepRegion(lean, 1.0, -1.0), 5);
    EXPECT_EQ(StepRegion(lean, 2.0, 1.0), 4);
    EXPECT_EQ(StepRegion(lean, -1.0, 0.5), 8);
    // The power angle at the lens' far side: Z on the axis between B and A gives 180 degrees.
    EXPECT_NEAR(std::fabs(StepPowerAngle(up, 0.0, 0.1)), 180.0, 1e-9);
    EXPECT_NEAR(StepPowerAngle(up, 0.4, 0.1),
                std::atan2(0.4, 0.4) * 57.29577951308232 - std::atan2(-0.4, 0.4) * 57.29577951308232 - 0.0,
                1e-9);

    // Inner angle 180: straight arcs, an unbounded radius, nothing inside the lens.
    StepBounds open = lens(90.0f);
    open.fAlfa = 180.0f;
    StepRecalc(open, lensMachine(), ExciScales());
    EXPECT_TRUE(std::isinf(open.fRadius) || open.fRadius > 1e15f);
    EXPECT_EQ(StepCode(open, 0.0, 0.0) & StepInsideLens, 0);
}

TEST(GenStepSlips, AutomatonSequences)
{
    int gt = 0;
    EXPECT_EQ(slipsOf({1, 2, 3, 4}, gt), 1);
    EXPECT_EQ(slipsOf({1, 2, 2, 3, 4}, gt), 1);
    EXPECT_EQ(slipsOf({1, 2, 1, 2, 3, 4}, gt), 1);
    EXPECT_EQ(slipsOf({4, 3, 2, 1}, gt), 0);
    EXPECT_EQ(slipsOf({1, 3, 4}, gt), 0);
    EXPECT_EQ(slipsOf({1, 2, 3, 4, 4, 1, 1, 2, 3, 3, 4}, gt), 2);
    EXPECT_EQ(slipsOf({2, 3, 4}, gt), 1); // a run may start inside the chain
    EXPECT_EQ(slipsOf({5, 6, 6, 7, 8, 8}, gt), 0);
    EXPECT_EQ(gt, 1);
    EXPECT_EQ(slipsOf({8, 7, 6, 5}, gt), 0);
    EXPECT_EQ(gt, 0);
    EXPECT_EQ(slipsOf({1, 2, 6, 7, 8}, gt), 0);
    EXPECT_EQ(gt, 0);

    // Over samples: the system-zone passage twice at a scale of one half.
    const StepBounds up = lens(90.0f);
    const float r[] = {-2.0f, -0.1f, 0.1f, 2.0f, -2.0f, -0.1f, -0.1f, 0.1f, 2.0f, 2.0f, 0.1f, -0.1f, -2.0f};
    const float x[] = {2.0f, 0.6f, 0.6f, 2.0f, 2.0f, 0.6f, 0.6f, 0.6f, 2.0f, 0.0f, 0.0f, 0.0f, 0.0f};
    GenSlipCounts counts;
    ASSERT_TRUE(GenCountSlips(up, r, x, 0, 12, 0.5, counts, nullptr, nullptr));
    EXPECT_EQ(counts.nSlipSystem, 2);
    EXPECT_EQ(counts.nSlipGT, 1);
    ASSERT_TRUE(GenCountSlips(up, r, x, 4, 9, 0.5, counts, nullptr, nullptr));
    EXPECT_EQ(counts.nSlipSystem, 1);
    EXPECT_EQ(counts.nSlipGT, 0);
}

TEST(GenCapability, CornersRotorAndStabilityLimits)
{
    PQGBounds b;
    b.fIk = 1.0f;
    b.fPk = 1.0f;
    GenMachine m = roundMachine();
    m.pf = 1.0;
    PQGRecalc(b, m);
    EXPECT_EQ(b.fPc, 1.0f); // the corner lies on the P axis
    EXPECT_EQ(b.fQc, 0.0f);
    EXPECT_EQ(b.rated.q, 0.0);

    // Round rotor: the field limit is the circle about (0, -U²/Xd) of radius E·U/Xd; with
    // Smax 1.1 it reaches the output line P = 1 before the stator arc (there P = 1.036).
    b.fIk = 1.1f;
    m.pf = 0.8;
    PQGRecalc(b, m);
    EXPECT_NEAR(b.fQc, std::sqrt(1.1 * 1.1 - 1.0), 1e-6);
    EXPECT_NEAR(b.rated.q, 0.75, 1e-12);
    ASSERT_EQ(b.rotorLimit.size(), 12u);
    const double centre = -1.0 / 1.8, radius = 2.5 / 1.8;
    EXPECT_NEAR(b.rotorLimit.front().p, 1.0, 1e-4);
    EXPECT_NEAR(b.rotorLimit.front().q, centre + std::sqrt(radius * radius - 1.0), 1e-4);
    for (const PQPoint &pt : b.rotorLimit)
        EXPECT_NEAR(std::hypot(pt.p, pt.q - centre), radius, 1e-9);
    EXPECT_NEAR(b.rotorLimit.back().q, centre + radius, 1e-12);
    EXPECT_EQ(b.rotorLimit.back().p, 0.0);
    // Under-excited: 10 % of the corner power widens the circle through (0, -U²/Xd).
    ASSERT_EQ(b.underExcited.size(), 12u);
    EXPECT_NEAR(b.underExcited[0].q, centre, 1e-12);
    const double p5 = 5.0 / 11.0;
    EXPECT_NEAR(b.underExcited[5].p, p5, 1e-9);
    EXPECT_NEAR(b.underExcited[5].q, std::sqrt((p5 + 0.1) * (p5 + 0.1) - p5 * p5) + centre, 1e-9);

    // A small EMF reaches the stator arc first at Smax 1.0 ... with E 1.0 the walk ends at 90
    // degrees: the crossing is then the end of the walk.
    PQGBounds lowE;
    lowE.fEk = 1.0f;
    lowE.fIk = 2.0f;
    lowE.fPk = 2.0f;
    PQGRecalc(lowE, m);
    EXPECT_LT(lowE.rotorLimit.front().p, 2.0);

    // The path: under-excited limit, corner, arc at Smax, field limit down to the Q axis.
    PQGBounds arc;
    arc.fIk = 1.1f;
    arc.fPk = 1.1f;
    PQGRecalc(arc, m);
    const std::vector<PQPoint> path = PQGLimitPath(arc);
    EXPECT_EQ(path.front().p, 0.0);
    EXPECT_EQ(path.back().q, centre + radius);
    const size_t corner = arc.underExcited.size();
    ASSERT_GT(path.size(), corner + arc.rotorLimit.size() + 1);
    EXPECT_NEAR(path[corner].p, 1.1, 1e-6); // Smax = Pk: the corner on the P axis
    EXPECT_EQ(path[corner].q, 0.0);
    for (size_t k = corner + 1; k < path.size() - arc.rotorLimit.size(); ++k)
        EXPECT_NEAR(std::hypot(path[k].p, path[k].q), 1.1, 1e-6);

    // Salient: the stability edge carries the raised power at dP/dd = 0.
    const long double xd = 1.0L, xq = 0.6L, u = 1.0L, k = u * u * (xd - xq) / (xd * xq);
    double e = 0.0, d = 0.0;
    const int rounds = PQGStabilityAngle(0.5, 1.0, 1.0, 0.6, e, d);
    EXPECT_LT(rounds, 10000);
    EXPECT_NEAR(double(e * u / xd * std::cos((long double)d) + k * std::cos(2.0L * d)), 0.0, 1e-3);
    EXPECT_NEAR(double(e * u / xd * std::sin((long double)d) + k / 2.0L * std::sin(2.0L * d)), 0.5, 1e-3);
    PQGBounds sal;
    PQGRecalc(sal, salientMachine());
    ASSERT_EQ(sal.underExcited.size(), 12u);
    EXPECT_NEAR(sal.underExcited[11].p, sal.fPc, 1e-6);
    EXPECT_LT(sal.underExcited[11].q, 0.0);
}

TEST(GenBoundSetup, ChecksInDialogOrder)
{
    ExciBounds b;
    QString error;
    QString edits[kExciEdits] = {"1001", "61", "0", "0", "0", "0", "1", "0", "2"};
    EXPECT_FALSE(ExciStoreBounds(edits, b, error));
    EXPECT_EQ(error, "[Primary Active Power Before Exci-Lossing] Error!\nValid Range is [0~1000MW].");
    edits[0] = "1000";
    EXPECT_FALSE(ExciStoreBounds(edits, b, error));
    EXPECT_EQ(error, "[Angle of Reactive Power Over Phase] Error!\nValid Range is [0~60(Deg)].");
    edits[1] = "60";
    edits[6] = "0.5";
    EXPECT_FALSE(ExciStoreBounds(edits, b, error));
    EXPECT_EQ(error, "[Impedance Limit] Error!\nValid Range is [1~100].");
    edits[6] = "1";
    edits[8] = "x";
    EXPECT_FALSE(ExciStoreBounds(edits, b, error));
    EXPECT_EQ(error, "[Coef. of Uf-P (Kf)] Error!\nValid Range is [0~2].");
    EXPECT_EQ(b.fPs, 0.0f);
    edits[8] = "0";
    EXPECT_TRUE(ExciStoreBounds(edits, b, error));
    EXPECT_EQ(b.fPs, 1000.0f);
    EXPECT_EQ(b.fKf, 0.0f);
    b.fFai = 81.0f;
    b.fUfset = -1.0f;
    EXPECT_EQ(
        ExciBoundsProblems(b),
        QStringList({"[Deviation Angle of Static-Tranquilization Circle] Error!\nValid Range is [0~80(Deg)].",
                     "[Primary Lower Exci-Vol. Ufset] Error!\nValid Range is [0~600V]."}));

    StepBounds s;
    QString step[kStepEdits] = {"0", "90", "180.5", "100"};
    EXPECT_FALSE(StepStoreBounds(step, s, error));
    EXPECT_EQ(error, "[Inner Angle of Lens Circle] Error!\nValid Range is[0~180(Deg)].");
    step[2] = "180";
    EXPECT_TRUE(StepStoreBounds(step, s, error));
    EXPECT_EQ(s.fAlfa, 180.0f);
    EXPECT_TRUE(StepBoundsProblems(StepBounds()).isEmpty());

    PQGBounds g;
    QString pq[kPQGEdits] = {"2", "1", "10", "0.1", "50.5"};
    EXPECT_FALSE(PQGStoreBounds(pq, g, error));
    EXPECT_TRUE(error.startsWith("[Stable Accumulation Percentage of Generator] Error!"));
    pq[4] = "50";
    EXPECT_TRUE(PQGStoreBounds(pq, g, error));
    pq[3] = "0.09";
    EXPECT_FALSE(PQGStoreBounds(pq, g, error));
    EXPECT_EQ(error, "[Primary Operation Vol. of Generator (%)] Error!\nValid Range is [0.1~2.0].");
}

using GenBoundFile = RecordingTest;

TEST_F(GenBoundFile, RoundTripsAndHandWritten)
{
    ExciBounds e;
    e.fPs = 250.5f;
    e.fKf = 0.0f;
    e.nBounds = ExciBounds::LineQ | ExciBounds::CirUser;
    const QString path = QString::fromStdString(dir.path("g.teb"));
    QString message;
    ASSERT_TRUE(saveExciBounds(e, path, message));
    EXPECT_EQ(
        dir.read("g.teb"),
        "//+++++++++++++++++++++++++++++++++++++++++\n"
        "// TRWK.VELDRIX\u53d1\u7535\u673a\u5931\u78c1\u5206\u6790\u8fb9\u754c\u53c2\u6570\u6587\u4ef6\n"
        "//+++++++++++++++++++++++++++++++++++++++++\n\n[common]\n"
        "fPs=250.5000//\u5931\u78c1\u524d\u7cfb\u7edf\u6709\u529f\u529f\u7387(MW,\u4e00\u6b21\u503c)\n"
        "fBeta=15.0000//\u65e0\u529f\u8fdb\u76f8\u89d2(\u03b2)(\u00b0)\n"
        "fFai=0.0000//\u9759\u7a33\u8fb9\u754c\u5706\u504f\u79fb\u89d2(\u03c6)(\u00b0)\n"
        "fUfset=0.0000//\u52b1\u78c1\u4f4e\u7535\u538b(V,\u4e00\u6b21\u503c)\n"
        "fKf=0.0000//Uf-P\u7cfb\u6570(Pt'=fUfset*fSb/fKf+fPt)\n"
        "fAlfa=0.0000//\u5b9a\u5236\u5706\u504f\u79fb\u89d2(\u03b1)(\u00b0)\n"
        "fXM=0.1000//\u5b9a\u5236\u5706XM(\u6807\u4e48\u503c)\n"
        "fXN=1.0000//\u5b9a\u5236\u5706XN(\u6807\u4e48\u503c)\n"
        "fZLimit=3.0000//\u963b\u6297\u9650\u5236(\u6807\u4e48\u503c)\n"
        "Bounds=LineQ,CirUser,\n");
    ExciBounds back;
    back.fKf = 1.5f;
    ASSERT_TRUE(loadExciBounds(back, path, message));
    EXPECT_EQ(back.fPs, 250.5f);
    EXPECT_EQ(back.fKf, 0.0f);
    EXPECT_EQ(back.nBounds, e.nBounds);
    EXPECT_EQ(ExciBoundsFileText(back), ExciBoundsFileText(e));

    // Any case of keys, other sections passed over, missing keys kept; names of the bounds
    // only with their capitals.
    dir.write("h.teb", {"[other]", "fPs=9", "[COMMON]", "FBETA=33.5//x", "bounds=lineq,CirAsyn"});
    ExciBounds hand;
    ASSERT_TRUE(loadExciBounds(hand, QString::fromStdString(dir.path("h.teb")), message));
    EXPECT_EQ(hand.fPs, 0.0f);
    EXPECT_EQ(hand.fBeta, 33.5f);
    EXPECT_EQ(hand.fXN, 1.0f);
    EXPECT_EQ(hand.nBounds, uint32_t(ExciBounds::CirAsyn));

    // Every characteristic off: an empty "Bounds=" clears them on reading too.
    e.nBounds = 0;
    ASSERT_TRUE(saveExciBounds(e, path, message));
    ASSERT_TRUE(loadExciBounds(hand, path, message));
    EXPECT_EQ(hand.nBounds, 0u);

    StepBounds s;
    s.fXt = 0.125f;
    s.fAlfa = 180.0f;
    ASSERT_TRUE(saveStepBounds(s, QString::fromStdString(dir.path("g.tsb")), message));
    const std::string step = dir.read("g.tsb");
    EXPECT_NE(step.find("[common]\nfXt=0.1250//"), std::string::npos);
    EXPECT_EQ(step.find("Bounds"), std::string::npos);
    StepBounds stepBack;
    stepBack.fFai = 10.0f;
    ASSERT_TRUE(loadStepBounds(stepBack, QString::fromStdString(dir.path("g.tsb")), message));
    EXPECT_EQ(stepBack.fXt, 0.125f);
    EXPECT_EQ(stepBack.fFai, 85.0f);
    EXPECT_EQ(stepBack.fAlfa, 180.0f);

    PQGBounds g;
    g.fGk = 12.5f;
    g.fUk = 0.95f;
    ASSERT_TRUE(savePQGBounds(g, QString::fromStdString(dir.path("g.tgb")), message));
    const std::string pq = dir.read("g.tgb");
    EXPECT_EQ(pq.rfind("//+++++++++++++++++++++++++++++++++++++++++++++++\n", 0), 0u);
    EXPECT_NE(pq.find("fGk=12.5000//"), std::string::npos);
    PQGBounds pqBack;
    ASSERT_TRUE(loadPQGBounds(pqBack, QString::fromStdString(dir.path("g.tgb")), message));
    EXPECT_EQ(pqBack.fGk, 12.5f);
    EXPECT_EQ(pqBack.fUk, 0.95f);

    const QString missing = QString::fromStdString(dir.path("none/g.tgb"));
    EXPECT_FALSE(loadPQGBounds(pqBack, missing, message));
    EXPECT_EQ(message, "Open [" + missing + "] Error When Loading it!");
    EXPECT_FALSE(saveStepBounds(s, missing, message));
    EXPECT_EQ(message, "Create [" + missing + "] Error When Save File!");
}

using GenTerminalSeriesTest = PhasorSwitchesRestored;

TEST_F(GenTerminalSeriesTest, ImpedanceAndPowerOfABalancedLoad)
{
    // 100 V peak phase voltages, 10 A currents lagging by 30 degrees: Zab = 10 ohm at 30.
    MemoryRecording rec({{1000.0f, 200}});
    GenTerminal t;
    const double phase[3] = {0.0, -120.0, 120.0};
    for (int k = 0; k < 3; ++k) {
        t.chnU[k] = &rec.add(Sine(200, 1000.0, 100.0, phase[k]));
        t.chnI[k] = &rec.add(Sine(200, 1000.0, 10.0, phase[k] - 30.0), "A");
    }
    std::vector<float> r(200, -1.0f), x(200, -1.0f), p(200), q(200);
    GenSeriesOut out{r.data(), x.data(), p.data(), q.data(), 200};
    ASSERT_TRUE(GenTerminalSeries(rec.file, t, out, nullptr, nullptr));
    for (int i : {0, 57, 179}) {
        EXPECT_NEAR(r[size_t(i)], 10.0 * std::cos(M_PI / 6.0), 1e-3) << i;
        EXPECT_NEAR(x[size_t(i)], 5.0, 1e-3) << i;
        EXPECT_NEAR(q[size_t(i)] / p[size_t(i)], std::tan(M_PI / 6.0), 1e-4) << i;
    }
    // Behind the last whole cycle the values hold.
    EXPECT_EQ(r[199], r[180]);

    // Zca takes C - A: the same impedance for a balanced load; a missing phase gives none.
    t.nZKind = GenZca;
    std::fill(r.begin(), r.end(), -1.0f);
    GenTerminalSeries(rec.file, t, out, nullptr, nullptr);
    EXPECT_NEAR(x[50], 5.0, 1e-3);
    t.chnI[2] = nullptr;
    std::fill(r.begin(), r.end(), -1.0f);
    GenTerminalSeries(rec.file, t, out, nullptr, nullptr);
    EXPECT_EQ(r[50], -1.0f);

    const GenSeriesNames names = GenSeriesNamesOf("G1", GenZbc);
    EXPECT_EQ(names.r, "G1 Terminal Impedance Zbc R-Part");
    EXPECT_EQ(names.x, "G1 Terminal Impedance Zbc X-Part");
    EXPECT_EQ(names.p, "G1 Terminal Power");

    // A stop asked for at the first check ends the job.
    const ProgressFn stop = [](void *, int code, int, int) { return code == 8 ? 1 : code == 0 ? -1 : 0; };
    EXPECT_FALSE(GenTerminalSeries(rec.file, t, out, stop, nullptr));
}
