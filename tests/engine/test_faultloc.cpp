// Fault location: the line model and the search worked by hand, the data-window rules, the
// checks and codes, and faults on a long line computed from its hyperbolic equations that the
// search has to find again.

#include "faultend.h"
#include "faultsolver.h"
#include "linefault.h"
#include "memoryrecording.h"
#include "singleended.h"

#include "tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

constexpr double kRate = 10000.0;
constexpr int kPoints = 2000;
constexpr int kFaultAt = 1000;

// One end's recording: three voltages and three currents (secondary) around a fault.
struct EndRecording
{
    explicit EndRecording(const char *title, float rate = float(kRate), int points = kPoints)
        : rec({{rate, points}})
    {
        end.title = QString::fromLatin1(title);
        end.fileName = end.title + QStringLiteral(".cfg");
        end.file = &rec.file;
        end.tvPrimary = 220000.0f;
        end.tvSecondary = 100.0f;
        end.taPrimary = 1250.0f;
        end.taSecondary = 5.0f;
    }
    void fill(const linefault::End &e)
    {
        for (int p = 0; p < 3; ++p)
            end.voltage[p] = &rec.add(linefault::Wave(e.preU[p], e.u[p], 2200, kRate, kPoints, kFaultAt));
        for (int p = 0; p < 3; ++p)
            end.current[0][p] =
                &rec.add(linefault::Wave(e.preI[p], e.i[p], 250, kRate, kPoints, kFaultAt), "A");
    }
    MemoryRecording rec;
    FaultEnd end;
};

FaultLine LineOf(const linefault::Line &l)
{
    return FaultLine{double(l.length), double(l.r1), double(l.x1), double(l.c1), 0,
                     double(l.r0),     double(l.x0)};
}

// Both ends of a computed fault, with the data windows half a cycle after the inception.
struct FaultPair
{
    explicit FaultPair(const linefault::Case &c)
    {
        linefault::End em, en;
        linefault::Solve(c, em, en);
        m.fill(em);
        n.fill(en);
        EXPECT_TRUE(CheckWindow(m.end, kFaultAt + 100, true));
        EXPECT_TRUE(CheckWindow(n.end, kFaultAt + 100, true));
        line = LineOf(c.line);
    }
    EndRecording m{"End M"};
    EndRecording n{"End N"};
    FaultLine line;
};

} // namespace

TEST(FaultLoc, LineModelAtBothEndsOfTheLine)
{
    FaultSolver s;
    s.line = FaultLine{300, 0.03, 0.3, 0.012};
    s.SetLinePoint(0);
    EXPECT_EQ(s.Z.re, 0.0);
    EXPECT_EQ(s.Z.im, 0.0);
    EXPECT_EQ(s.Ysh.im, 0.0);
    EXPECT_EQ(s.PointVoltage(ComplexD{3, 4}, ComplexD{0.5, -0.2}), 5.0);

    s.SetLinePoint(300);
    // The PI equivalent's terms worked from the long line's series, in long double.
    const long double b = 0.012L * 0.0003141592653589793L, t = 300.0L * 300 * b, v = t * 0.3L;
    EXPECT_TRUE(NearRelative(s.Z.re, double((1 - v / 3) * 0.03L * 300), 1e-14));
    EXPECT_TRUE(NearRelative(s.Z.im, double((0.03L * 0.03L * t / 1.8L + 1 - v / 6) * 0.3L * 300), 1e-14));
    EXPECT_TRUE(NearRelative(s.Ysh.im, double((v / 12 + 1) * 300 * b / 2), 1e-14));
    // ... and close to the exact hyperbolic PI of 300 km.
    const linefault::TwoPort exact = linefault::Section(0.03L, 0.3L, 0.012L, 300);
    const linefault::Cx halfShunt = (exact.a - 1.0L) / exact.b;
    EXPECT_TRUE(NearRelative(s.Z.re, double(exact.b.real()), 2e-3));
    EXPECT_TRUE(NearRelative(s.Z.im, double(exact.b.imag()), 1e-4));
    EXPECT_TRUE(NearRelative(s.Ysh.im, double(halfShunt.imag()), 1e-4));
}

TEST(FaultLoc, SearchNarrowsAndRefusesRatiosApartByAFifth)
{
    linefault::Case c;
    c.x = 37.3L;
    FaultPair pair(c);
    FaultSolver s;
    ASSERT_EQ(LocateFault(pair.m.end, pair.n.end, pair.line, s), 0);
    // 100 km in 128 steps, then the best point ± one step in 128, then the metre floor.
    ASSERT_EQ(s.passes.size(), 3u);
    EXPECT_EQ(s.passes[0].lo, 0.0);
    EXPECT_EQ(s.passes[0].hi, 100.0);
    EXPECT_EQ(s.passes[0].step, 0.78125);
    EXPECT_EQ(s.passes[1].lo, s.passes[0].best - 0.78125);
    EXPECT_EQ(s.passes[1].step, 0.01220703125);
    EXPECT_EQ(s.passes[2].step, 0.001);
    EXPECT_NEAR(s.position, 37.3, 0.01);

    // No current and no capacitance: every trial point compares the measured voltages themselves.
    FaultSolver flat;
    flat.line = FaultLine{10, 0.1, 0.4, 0.0};
    flat.U1[0] = flat.U2[0] = flat.U1[1] = ComplexD{1, 0};
    flat.U2[1] = ComplexD{0.8, 0};
    EXPECT_EQ(flat.Search(), FaultNoSolution); // |1 - 0.8| rounds to 0.2f
    EXPECT_EQ(flat.fDelta, 0.2f);
    flat.U2[1] = ComplexD{0.8000001, 0};
    EXPECT_EQ(flat.Search(), 0);
    EXPECT_EQ(flat.quality, 199);
}

TEST(FaultLoc, DataWindowRules)
{
    QStringList messages;
    EndRecording slow("End M", 599.0f, 200);
    slow.end.voltage[0] = &slow.rec.add(std::vector<float>(200, 1.0f));
    EXPECT_FALSE(CheckWindow(slow.end, 10, false, &messages));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0], QStringLiteral("End M: SampleRate too low! (StartPoint=11, SampleRate=599.0Hz)"));

    EndRecording two("End N", 1000.0f, 100);
    two.rec.file.segments.push_back(two.rec.file.segments[0]);
    two.rec.file.segments[1].end = 400;
    two.rec.file.pointCount = two.rec.file.loadedPoints = 400;
    EXPECT_TRUE(CheckWindow(two.end, 0, true));
    EXPECT_EQ(two.end.StartPoint, 1); // the first difference needs the sample before
    EXPECT_TRUE(CheckWindow(two.end, 100, true));
    EXPECT_EQ(two.end.StartPoint, 101);
    EXPECT_EQ(two.end.segment.first, 100);
    EXPECT_TRUE(CheckWindow(two.end, 378, false, &messages)); // 400 - 378 > 20 + 1
    EXPECT_FALSE(CheckWindow(two.end, 379, false, &messages));
    EXPECT_EQ(messages.last(),
              QStringLiteral("End N: Points Not enough! (StartPoint=380, EndPoint=400, PPW=20)"));
    EXPECT_EQ(two.end.StartPoint, 378);

    // A jump of 10 at sample 100 of a 1 kHz channel (20 points a cycle): three samples in a row
    // from 100 on differ from the cycle before, so the jump is the sample before them.
    EndRecording step("End M", 1000.0f, 400);
    std::vector<float> jump(400, 0.0f);
    std::fill(jump.begin() + 100, jump.end(), 10.0f);
    const CChnMapAnalog &x = step.rec.add(jump);
    const RateSegment segment{1000.0f, 0, 400};
    EXPECT_EQ(FirstJump(x, segment, 0.75f, 3, -1), 99);
    EXPECT_EQ(FirstJump(x, segment, 0.75f, 3, 117), 116);
    EXPECT_EQ(FirstJump(x, segment, 0.75f, 3, 118), -1); // two samples of the jump are left
    EXPECT_EQ(FirstJump(x, RateSegment{1000.0f, 0, 39}, 0.75f, 3, -1), -1);
}

TEST(FaultLoc, AutomaticWindowFollowsTheFaultCurrent)
{
    linefault::Case c;
    FaultPair pair(c);
    const int start = AutoDataWindow(pair.m.end);
    EXPECT_EQ(pair.m.end.StartPoint, start);
    EXPECT_NEAR(start, kFaultAt, 5); // a cycle before the current settles, a cycle after the inception
    // Without any change of current the window stays at the trigger point, at least sample 1.
    EndRecording quiet("End N");
    for (int k = 0; k < 3; ++k)
        quiet.end.current[0][k] = quiet.end.voltage[k] = &quiet.rec.add(std::vector<float>(kPoints, 1.0f));
    quiet.rec.file.triggerIndex = 700;
    EXPECT_EQ(AutoDataWindow(quiet.end), 700);
    quiet.rec.file.triggerIndex = -1;
    EXPECT_EQ(AutoDataWindow(quiet.end), 1);
}

TEST(FaultLoc, ChecksAndCodes)
{
    QStringList messages;
    FaultEnd none;
    none.title = QStringLiteral("End M");
    EXPECT_FALSE(CheckFaultEnd(none, messages));
    EXPECT_EQ(messages.last(), QStringLiteral("End M: Choose COMTRADE file!"));
    FaultPair pair{linefault::Case{}};
    pair.n.end.current[1][0] = pair.n.end.current[0][0];
    EXPECT_FALSE(CheckFaultEnd(pair.n.end, messages));
    EXPECT_EQ(messages.last(), QStringLiteral("End N: ACC2 Channels Not Completed!"));
    pair.m.end.Kf = 1.0f;
    EXPECT_FALSE(CheckFaultEnd(pair.m.end, messages));
    EXPECT_EQ(messages.last(), QStringLiteral("End M: Kf=1.000, Invalid!"));
    pair.m.end.Kf = 0.15f;
    EXPECT_FALSE(CheckFaultLine(FaultLine{10, 0.1, 0.4, 0.0}, messages));
    EXPECT_EQ(messages.last(), QStringLiteral("[C1 = 0.0000] Invalid!"));

    FaultSolver s;
    int code = LocateFault(pair.m.end, pair.n.end, FaultLine{0.2, 0.03, 0.3, 0.01}, s);
    EXPECT_EQ(code, int(0x30000009u));
    EXPECT_EQ(FaultReport(code, pair.m.end, pair.n.end, s),
              (QStringList{QStringLiteral("Analising failed:"), QStringLiteral("\tERROR CODE = 9"),
                           QStringLiteral("\tERROE DESCR: Line Length Invalid!")}));
    EXPECT_EQ(LocateFault(pair.m.end, pair.n.end, FaultLine{100, 0.0, 0.3, 0.01}, s), int(0x30000001u));
    EXPECT_EQ(LocateFault(pair.m.end, pair.n.end, FaultLine{100, 0.03, 1e-7, 0.01}, s), int(0x30000002u));
    EXPECT_EQ(LocateFault(pair.m.end, pair.n.end, FaultLine{100, 0.03, 0.3, -1}, s), int(0x30000003u));
    EXPECT_EQ(FaultErrorText(0x30000003), QStringLiteral("C1 Invalid!"));
    pair.n.end.taSecondary = 0.0f; // 0 over 0: no ratio
    pair.n.end.taPrimary = 0.0f;
    EXPECT_EQ(LocateFault(pair.m.end, pair.n.end, pair.line, s), int(0x3000000Bu));
    pair.n.end.StartPoint = 0;
    code = LocateFault(pair.m.end, pair.n.end, pair.line, s);
    EXPECT_EQ(code, int(0x20000002u));
    EXPECT_EQ(
        FaultReport(code, pair.m.end, pair.n.end, s),
        (QStringList{QStringLiteral("Process datas of End N failed:"), QStringLiteral("\tERROR CODE = 2"),
                     QStringLiteral("\tERROE DESCR: Data Window is NOT Valid!")}));
}

TEST(FaultLoc, ComputedFaultsAreFoundAgain)
{
    using linefault::Kind;
    const struct
    {
        long double length, x;
        Kind kind;
        long double rf;
    } cases[] = {{100, 0.5, Kind::AG, 0},  {100, 99.2, Kind::BC, 0},   {100, 50, Kind::BCG, 10},
                 {100, 23.7, Kind::CG, 5}, {300, 212.4, Kind::AG, 25}, {100, 0, Kind::BC, 2}};
    for (const auto &f : cases) {
        linefault::Case c;
        c.line.length = f.length;
        c.x = f.x;
        c.kind = f.kind;
        c.rf = f.rf;
        FaultPair pair(c);
        FaultSolver s;
        ASSERT_EQ(LocateFault(pair.m.end, pair.n.end, pair.line, s), 0) << double(f.x);
        EXPECT_NEAR(s.position, double(f.x), 0.01) << int(f.kind);
        EXPECT_LT(s.fDelta, 0.01f);
    }
}

TEST(FaultLoc, SingleEndedEstimatesOfBoltedFaults)
{
    using linefault::Kind;
    const struct
    {
        long double x;
        Kind kind;
        FaultLoop loop;
    } cases[] = {
        {30, Kind::AG, LoopAG}, {70, Kind::BC, LoopBC}, {45, Kind::CG, LoopCG}, {20, Kind::BCG, LoopBC}};
    for (const auto &f : cases) {
        linefault::Case c;
        c.x = f.x;
        c.kind = f.kind;
        FaultPair pair(c);
        const SingleEndedEstimate m = EstimateEnd(pair.m.end, pair.line);
        const SingleEndedEstimate n = EstimateEnd(pair.n.end, pair.line);
        EXPECT_EQ(m.loop, f.loop);
        EXPECT_NEAR(m.reactanceKm, double(f.x), 2.0) << int(f.kind);
        EXPECT_NEAR(m.takagiKm, double(f.x), 2.0) << int(f.kind);
        EXPECT_NEAR(n.reactanceKm, double(100 - f.x), 2.0) << int(f.kind);
        EXPECT_NEAR(n.takagiKm, double(100 - f.x), 2.0) << int(f.kind);
    }
}
