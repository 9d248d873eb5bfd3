// Differential currents: the four braking laws on phasors worked by hand, the winding
// matrices, the branch groups a unit gives, the per-sample job on a small recording, the
// inrush-blocking wave checks, the characteristic and its ".tdb" file.

#include "cfgfixture.h"
#include "idblocking.h"
#include "idboundfile.h"
#include "idobject.h"
#include "memoryrecording.h"
#include "units.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

ComplexD polar(double modulus, double degrees)
{
    const long double r = degrees * 3.14159265358979323846L / 180.0L;
    return ComplexD{double(modulus * std::cos(r)), double(modulus * std::sin(r))};
}

double modulusOf(const ComplexD &z)
{
    return std::hypot(z.re, z.im);
}

} // namespace

TEST(IdBrakingLaws, ThroughInPhaseAndTies)
{
    double id = -1.0;
    double ir = -1.0;
    // Through current: 5 A in, 5 A out.
    const ComplexD through[2] = {polar(5, 0), polar(5, 180)};
    const double throughIr[4] = {5.0, 5.0, 5.0, 5.0};
    for (int mode = 1; mode <= 4; ++mode) {
        IdBraking(mode, through, 2, id, ir);
        EXPECT_NEAR(id, 0.0, 1e-12) << mode;
        EXPECT_NEAR(ir, throughIr[mode - 1], 1e-12) << mode;
    }
    // Currents in phase (an internal fault fed from both sides): the product law gives 0.
    const ComplexD inPhase[2] = {polar(3, 30), polar(3, 30)};
    IdBraking(IdProduct, inPhase, 2, id, ir);
    EXPECT_NEAR(id, 6.0, 1e-12);
    EXPECT_EQ(ir, 0.0);
    IdBraking(IdSumSub, inPhase, 2, id, ir);
    EXPECT_NEAR(ir, 0.0, 1e-12);

    // Equal moduli of branches 1 and 2: branch 1 is Imax. Irest = 1 + 4j, Imax - Irest = 3 - 4j.
    const ComplexD tie[3] = {polar(4, 0), polar(4, 90), polar(1, 0)};
    IdBraking(IdSumSub, tie, 3, id, ir);
    EXPECT_NEAR(ir, 2.5, 1e-12);
    EXPECT_NEAR(id, std::sqrt(41.0), 1e-12);
    IdBraking(IdModSum, tie, 3, id, ir);
    EXPECT_NEAR(ir, 4.5, 1e-12);
    IdBraking(IdMaxVal, tie, 3, id, ir);
    EXPECT_NEAR(ir, 4.0, 1e-12);
    // Product law with Irest 120 degrees off the reverse of Imax: a = 60 degrees.
    const ComplexD partial[2] = {polar(4, 0), polar(1, 60)};
    IdBraking(IdProduct, partial, 2, id, ir);
    EXPECT_NEAR(ir, 0.0, 1e-12); // a = 120 degrees, cos(a) < 0
    const ComplexD skew[2] = {polar(4, 0), polar(1, 120)};
    IdBraking(IdProduct, skew, 2, id, ir);
    EXPECT_NEAR(ir, std::sqrt(4.0 * 0.5), 1e-12);
}

TEST(IdWinding, MatricesTurnTheBalancedSet)
{
    const ComplexD abc[3] = {polar(1, 0), polar(1, -120), polar(1, 120)};
    struct Case
    {
        const char *winding;
        double modulus;
        double degrees;
    };
    const Case cases[] = {{"Yn11", std::sqrt(3.0), 30},
                          {"y1", std::sqrt(3.0), -30},
                          {"D11", std::sqrt(3.0), -30},
                          {"d1", std::sqrt(3.0), 30},
                          {"Y5", std::sqrt(3.0), -150},
                          {"Yg7", std::sqrt(3.0), 150},
                          {"D5", std::sqrt(3.0), 150},
                          {"D7", std::sqrt(3.0), -150},
                          {"Yn12", 1.0, 0},
                          {"Y6", 1.0, 180},
                          {"D", 1.0, 0},
                          {"Zz3", 1.0, 0}};
    for (const Case &c : cases) {
        IdBranch b;
        IdWindingMatrix(WindingModeCode(c.winding), b.nMatrix);
        ComplexD out[3];
        IdTransformBranch(b, 1, abc, out);
        EXPECT_NEAR(modulusOf(out[0]), c.modulus, 1e-12) << c.winding;
        const ComplexD want = polar(c.modulus, c.degrees);
        EXPECT_NEAR(out[0].re, want.re, 1e-12) << c.winding;
        EXPECT_NEAR(out[0].im, want.im, 1e-12) << c.winding;
        // Phase B turns the same way, 120 degrees behind.
        const ComplexD wantB = polar(c.modulus, c.degrees - 120);
        EXPECT_NEAR(out[1].re, wantB.re, 1e-12) << c.winding;
        EXPECT_NEAR(out[1].im, wantB.im, 1e-12) << c.winding;
    }
    // Balance factor and reversal.
    IdBranch k;
    k.fK = 2.0;
    ComplexD out[3];
    IdTransformBranch(k, -1, abc, out);
    EXPECT_NEAR(out[2].re, -2.0 * abc[2].re, 1e-12);
    EXPECT_NEAR(out[2].im, -2.0 * abc[2].im, 1e-12);
}

TEST(IdGroups, IncompleteGroupsDropped)
{
    MemoryRecording rec({{1000.0f, 40}});
    for (int c = 0; c < 8; ++c)
        rec.add(Sine(40, 1000, 1.0), "A");
    CmtdInfTrwk_UnitTrm trm;
    trm.name = "T1";
    trm.windingNum = 2;
    trm.sideH.windingMode = WindingModeCode("Yn11");
    trm.sideL.windingMode = WindingModeCode("D11");
    trm.taId[0] = {1, 2, 3, 0};
    trm.taId[1] = {4, 5, 0, 0};
    trm.taId[2] = {6, 7, 8, 0};
    auto o = std::make_unique<IdObject>();
    o->pRecording = &rec.file;
    QString message;
    ASSERT_TRUE(IdBuildFromTrm(*o, trm, IdKindTrmLongitudinal, message)) << message.toStdString();
    ASSERT_EQ(o->nBranches, 2);
    EXPECT_EQ(o->branch[1].chn[0], rec.file.FindAnalogMap(6));
    EXPECT_EQ(o->branch[0].nMatrix[1], -1); // the star side turned onto the delta
    EXPECT_EQ(o->branch[1].nMatrix[0], 1);  // set 3 of a two-winding unit is the low (delta) side
    EXPECT_EQ(o->branch[1].nMatrix[2], -1);
    EXPECT_EQ(o->nMask, 7u);

    trm.taId[2] = {6, 0, 8, 0};
    EXPECT_FALSE(IdBuildFromTrm(*o, trm, IdKindTrmLongitudinal, message));
    EXPECT_EQ(message, "The Current Branchs Can NOT less than 2!");

    // The incomplete longitudinal generator keeps groups of two phases; only A and C are common.
    CmtdInfTrwk_UnitPwr gen;
    gen.taChns = {1, 2, 3, 0};
    gen.branchCount = 1;
    gen.taZ[0] = {6, 0, 8, 0};
    ASSERT_TRUE(IdBuildFromPwr(*o, gen, IdKindGenIncomplete, message)) << message.toStdString();
    EXPECT_EQ(o->nBranches, 2);
    EXPECT_EQ(o->nMask, 5u);
    EXPECT_EQ(IdRowName(*o, 2), "Ph. C");
    EXPECT_FALSE(IdBuildFromPwr(*o, gen, IdKindGenComplete, message));
    EXPECT_EQ(message, "Please Choose [Neutral Branch] of Generator!");
}

TEST(IdSeries, InternalFaultWithSecondHarmonic)
{
    // 1 kHz, 20 points a cycle: branch 1 carries 5 A (phase A with 1 A of second harmonic),
    // branch 2 carries 2 A in phase with it, as an internal fault fed from both ends.
    const int count = 200;
    MemoryRecording rec({{1000.0f, count}});
    auto o = std::make_unique<IdObject>();
    o->pRecording = &rec.file;
    o->nKind = IdKindBusbar;
    o->nMode = IdMaxVal;
    IdBranch b1;
    IdBranch b2;
    std::vector<float> withSecond = Sine(count, 1000, 5.0);
    const std::vector<float> second = Sine(count, 1000, 1.0, 0.0, 100.0);
    for (int i = 0; i < count; ++i)
        withSecond[size_t(i)] += second[size_t(i)];
    for (int p = 0; p < 3; ++p) {
        b1.chn[p] = &rec.add(p == 0 ? withSecond : Sine(count, 1000, 5.0, -120.0 * p), "A");
        b2.chn[p] = &rec.add(Sine(count, 1000, 2.0, -120.0 * p), "A");
    }
    b1.nFlag = b2.nFlag = IdBranch::AllPhases;
    IdAddBranch(*o, b1);
    IdAddBranch(*o, b2);
    QString message;
    ASSERT_TRUE(IdFinishObject(*o, message));
    ASSERT_TRUE(IdComputeSeries(*o, nullptr, nullptr));
    ASSERT_EQ(o->fId[0].size(), size_t(count));
    EXPECT_NEAR(o->fId[0][100], 7.0, 1e-4);
    EXPECT_NEAR(o->fIr[0][100], 5.0, 1e-4);
    EXPECT_NEAR(o->fId2[0][100], 1.0, 1e-4);
    EXPECT_NEAR(o->fId2[1][100], 0.0, 1e-4);
    double id1[3] = {7.0, 7.0, 7.0};
    double id2[3] = {1.0, 0.0, 0.0};
    double ratio[3];
    IdHarmonicRatios(IdHarmByPhase, 7, id1, id2, ratio);
    EXPECT_DOUBLE_EQ(ratio[1], 0.0);
    IdHarmonicRatios(IdHarmMaxPhase, 7, id1, id2, ratio);
    EXPECT_DOUBLE_EQ(ratio[2], 1.0 / 7.0);

    ASSERT_TRUE(IdComputeTraces(*o, 50, 59, nullptr, nullptr));
    ASSERT_EQ(o->traceId[2].size(), 10u);
    EXPECT_NEAR(o->traceId[2][5], 7.0, 1e-4);
    EXPECT_EQ(o->nFrom, 50);
}

TEST(IdBlocking, DeadAngleAndWaveWidth)
{
    // One cycle of 360 points: |sin| <= 0.25 from 166 to 194 degrees, 29 samples.
    std::vector<float> sine(360);
    std::vector<float> inrush(360);
    for (int k = 0; k < 360; ++k) {
        sine[size_t(k)] = float(std::sin(k * 3.14159265358979323846L / 180.0L));
        inrush[size_t(k)] = std::max(0.0f, sine[size_t(k)]);
    }
    EXPECT_DOUBLE_EQ(IdDeadAngle(sine.data(), 360, 0.25), 29.0);
    // One-sided pulses: the gap runs from 166 round to 14 degrees.
    EXPECT_DOUBLE_EQ(IdDeadAngle(inrush.data(), 360, 0.25), 209.0);
    IdBounds b;
    EXPECT_FALSE(IdBlockedByDeadAngle(b, 29.0));
    EXPECT_TRUE(IdBlockedByDeadAngle(b, 209.0));
    // The derivative of a sine stays above a quarter of its peak from -75 to 76 degrees.
    EXPECT_DOUBLE_EQ(IdWaveWidth(sine.data(), 360, 0.25, true), 152.0);
    EXPECT_FALSE(IdBlockedByWaveWidth(b, 152.0));
    EXPECT_LT(IdWaveWidth(inrush.data(), 360, 0.25, true), 140.0);
    EXPECT_EQ(IdDeadAngle(sine.data(), 1, 0.25), 0.0);
}

TEST(IdCharacteristicLines, PolylineOperateAndDialog)
{
    IdBounds b;
    b.fIocd = 0.5f;
    b.fIres[0] = 1.0f;
    b.fk[0] = 0.5f;
    IdPlanePoint pts[4];
    ASSERT_EQ(IdCharacteristic(b, 5.0, pts), 3);
    EXPECT_DOUBLE_EQ(pts[1].ir, 1.0);
    EXPECT_DOUBLE_EQ(pts[1].id, 0.5);
    EXPECT_DOUBLE_EQ(pts[2].id, 2.5);
    EXPECT_FALSE(IdInOperateArea(b, 2.0, 1.0)); // on the line
    EXPECT_TRUE(IdInOperateArea(b, 2.0, 1.01));
    EXPECT_TRUE(IdInOperateArea(b, 40.0, 6.5)); // above the high-speed level
    b.nRes = 3;
    b.fIocd = 0.4f;
    b.fk[0] = 0.25f;
    b.fk[1] = 0.5f;
    b.fk[2] = 0.75f;
    b.fIres[1] = 3.0f;
    ASSERT_EQ(IdCharacteristic(b, 4.0, pts), 4);
    EXPECT_NEAR(pts[1].id, 0.65, 1e-7);
    EXPECT_NEAR(pts[2].id, 1.65, 1e-7);
    EXPECT_NEAR(pts[3].id, 2.4, 1e-7);
    b.fIres[1] = 0.5f; // below the first: line 2 vanishes
    ASSERT_EQ(IdCharacteristic(b, 4.0, pts), 3);
    EXPECT_NEAR(pts[2].id, 0.65 + 0.75 * 3.0, 1e-7);

    QString edits[7] = {"6", "0.5", "1", "3", "0.5", "0.6", "0.7"};
    QString error;
    IdBounds set;
    EXPECT_TRUE(IdStoreBounds(edits, 3, 1, 1.0, set, error));
    EXPECT_EQ(set.fk[2], 0.7f);
    edits[0] = "41";
    EXPECT_FALSE(IdStoreBounds(edits, 3, 1, 1.0, set, error));
    EXPECT_EQ(error, "Invalid [Secondary high-speed diff. cur.] setting!");
    EXPECT_TRUE(IdStoreBounds(edits, 3, 1, 5.0, set, error)); // In = 5 A
    edits[6] = "x";
    EXPECT_FALSE(IdStoreBounds(edits, 3, 1, 5.0, set, error));
    EXPECT_EQ(error, "Invalid [Braking coef. 3] setting!");
    EXPECT_TRUE(IdStoreBounds(edits, 2, 1, 5.0, set, error)); // unused by two lines
    edits[0] = "0.5";
    EXPECT_FALSE(IdStoreBounds(edits, 2, 1, 5.0, set, error));
    EXPECT_EQ(error, "[Secondary high-speed diff. cur.] must great than [Secondary lowest trigger cur.]!");
    edits[0] = "6";
    EXPECT_FALSE(IdStoreBounds(edits, 2, 0, 5.0, set, error));
    EXPECT_EQ(error, "Please Choose [Braking Mode]!");
    EXPECT_FALSE(IdStoreBounds(edits, 0, 4, 5.0, set, error));
    EXPECT_EQ(error, "Please Choose [Line Number]!");
}

using IdBoundFile = RecordingTest;

TEST_F(IdBoundFile, RoundTripAndHandWritten)
{
    IdBounds b;
    b.nRes = 3;
    b.fIcdsd = 7.25f;
    b.fIres[1] = 2.5f;
    b.fk[2] = 0.8f;
    b.fb[0] = 120.0f;
    b.nColor = 0xFF102030u;
    const QString path = QString::fromStdString(dir.path("diff.tdb"));
    QString message;
    ASSERT_TRUE(saveIdBounds(b, path, message));
    EXPECT_EQ(dir.read("diff.tdb"),
              "//+++++++++++++++++++++++++++++++++++\n"
              "// TRWK.VELDRIX\u5dee\u52a8\u5206\u6790\u8fb9\u754c\u53c2\u6570\u6587\u4ef6\n"
              "//+++++++++++++++++++++++++++++++++++\n\n"
              "[common]\nRes=3\nfIcdsd=7.2500\nfIocd=0.5000\nfIres=1.0000,2.5000\n"
              "fk=0.5000,0.5000,0.8000\nfa=65.0000,0.2500\nfb=120.0000,0.2500\n"
              "Color=16,32,48\n");
    IdBounds back;
    back.nRes = 9;
    ASSERT_TRUE(loadIdBounds(back, path, message));
    EXPECT_EQ(back.nRes, 3);
    EXPECT_EQ(back.fIcdsd, 7.25f);
    EXPECT_EQ(back.fIres[1], 2.5f);
    EXPECT_EQ(back.fk[2], 0.8f);
    EXPECT_EQ(back.fb[0], 120.0f);
    EXPECT_EQ(back.nColor, 0xFF102030u);

    // Keys in any case; a list of too few values keeps the old ones; other sections ignored.
    dir.write("hand.tdb", {"[other]", "fIocd=9", "[COMMON]", "FIOCD=0.75", "fk=1,2", "fa=70,0.3,9", "res=2"});
    ASSERT_TRUE(loadIdBounds(back, QString::fromStdString(dir.path("hand.tdb")), message));
    EXPECT_EQ(back.fIocd, 0.75f);
    EXPECT_EQ(back.fk[0], 0.5f);
    EXPECT_EQ(back.fa[0], 70.0f);
    EXPECT_EQ(back.fa[1], 0.3f);
    EXPECT_EQ(back.nRes, 2);

    const QString missing = QString::fromStdString(dir.path("none/diff.tdb"));
    EXPECT_FALSE(loadIdBounds(back, missing, message));
    EXPECT_EQ(message, "Open [" + missing + "] Error When Loading it!");
    EXPECT_FALSE(saveIdBounds(b, missing, message));
    EXPECT_EQ(message, "Create [" + missing + "] Error When Save File!");
}
