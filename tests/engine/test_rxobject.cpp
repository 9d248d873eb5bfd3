// Apparent impedance of the phase loops from steady sines whose phasors are known by hand:
// each kind, a reversed current group, no current at all, and the traces with a stop.

#include "memoryrecording.h"
#include "rxobject.h"
#include "tolerance.h"

#include <cmath>
#include <complex>

using Cplx = std::complex<long double>;

namespace {

Cplx polar(long double amp, long double deg)
{
    return std::polar(amp, deg * 3.14159265358979323846L / 180.0L);
}

// The rotation of the window cancels in a ratio of phasors; the float two pi of the transform
// leaves a few parts in ten million.
void expectZ(const ComplexD &z, const Cplx &expected)
{
    EXPECT_TRUE(NearRelative(std::hypot(z.re, z.im), double(std::abs(expected)), 1e-5));
    EXPECT_NEAR(std::atan2(z.im, z.re), double(std::arg(expected)), 1e-5);
}

class RxRows : public PhasorSwitchesRestored
{
protected:
    // Phase voltages of 60, group 1 currents of 5, group 2 currents of 2, 1 and 0.5 (peaks).
    static constexpr double kU[3] = {0, -120, 120}, kI1[3] = {-60, 160, 80}, kI2[3] = {-30, -150, 90};
    static constexpr double kM2[3] = {2.0, 1.0, 0.5};
    RxRows() : rec({{1000.0f, 200}})
    {
        for (int p = 0; p < 3; ++p) {
            object.chnU[p] = &rec.add(Sine(200, 1000.0, 60.0, kU[p]));
            object.chnI[0][p] = &rec.add(Sine(200, 1000.0, 5.0, kI1[p]), "A");
            object.chnI[1][p] = &rec.add(Sine(200, 1000.0, kM2[p], kI2[p]), "A");
        }
        object.pRecording = &rec.file;
        object.nMask = RxObject::AllRows;
    }
    Cplx U(int p) const { return polar(60, kU[p]); }
    Cplx I1(int p) const { return polar(5, kI1[p]); }
    Cplx I2(int p) const { return polar(kM2[p], kI2[p]); }

    MemoryRecording rec;
    RxObject object;
};

} // namespace

TEST_F(RxRows, EachKind)
{
    ComplexD z;
    object.nKind = RxObject::KindUxIx;
    for (int row = 0; row < 3; ++row) {
        ASSERT_TRUE(RxComputeRow(object, row, 100, nullptr, z));
        expectZ(z, U(row) / (I1(row) + I2(row)));
    }

    object.nKind = RxObject::KindUxyIxy;
    for (int row = 0; row < 3; ++row) {
        const int o = (row + 1) % 3;
        ASSERT_TRUE(RxComputeRow(object, row, 100, nullptr, z));
        expectZ(z, (U(row) - U(o)) / (I1(row) + I2(row) - I1(o) - I2(o)));
    }

    // Line 0.1 + j0.4, zero sequence 0.3 + j1.2: k = 2. Group 2 is wired the other way round:
    // its phase current turns, its share of the zero sequence does not.
    object.nKind = RxObject::KindUxIxK;
    object.fR1 = 0.1, object.fX1 = 0.4, object.fR0 = 0.3, object.fX0 = 1.2;
    object.nCoef[1] = -1;
    RxFinishObject(object);
    EXPECT_TRUE(NearRelative(object.kRe, 2.0, 1e-12));
    EXPECT_NEAR(object.kIm, 0.0, 1e-12);
    const Cplx i0 = (I1(0) + I1(1) + I1(2) + I2(0) + I2(1) + I2(2)) / 3.0L;
    ASSERT_TRUE(RxComputeRow(object, 0, 100, nullptr, z));
    expectZ(z, U(0) / (I1(0) - I2(0) + 2.0L * i0));

    object.nKind = RxObject::KindRxChn;
    object.chnR = object.chnU[0];
    object.chnX = &rec.add({1.0f, 2.0f}); // shorter than the sample index
    object.nMask = RxObject::Row0;
    ASSERT_TRUE(RxComputeRow(object, 1, 1, nullptr, z) == false);
    ASSERT_TRUE(RxComputeRow(object, 0, 1, nullptr, z));
    EXPECT_EQ(z.re, double(object.chnR->Values()[1]));
    EXPECT_EQ(z.im, 2.0);
    ASSERT_TRUE(RxComputeRow(object, 0, 150, nullptr, z));
    EXPECT_EQ(z.im, 0.0);
}

TEST_F(RxRows, NoCurrentOrNoVoltage)
{
    object.nKind = RxObject::KindUxIx;
    object.chnI[0][1] = &rec.add(std::vector<float>(200, 0.0f), "A");
    object.chnI[1][1] = nullptr;
    ComplexD z;
    ASSERT_TRUE(RxComputeRow(object, 1, 100, nullptr, z));
    EXPECT_FALSE(std::isfinite(z.re) && std::isfinite(z.im));

    // A voltage too short for its window has no phasor: the row has no value at all.
    object.chnU[2] = &rec.add(std::vector<float>(50, 1.0f));
    EXPECT_FALSE(RxComputeRow(object, 2, 100, nullptr, z));
    EXPECT_EQ(z.re, 0.0);
    EXPECT_EQ(z.im, 0.0);
    // Beyond the recording there is no stretch of samples.
    EXPECT_FALSE(RxComputeRow(object, 0, 500, nullptr, z));
}

TEST_F(RxRows, ChoiceAndShownRows)
{
    RxObject chosen = object;
    chosen.nKind = RxObject::KindUxyIxy;
    chosen.chnU[1] = nullptr;
    QString message;
    ASSERT_TRUE(RxApplyChoice(chosen, message));
    EXPECT_EQ(chosen.nMask, RxObject::Row2); // only C and A remain as a loop
    chosen.chnU[2] = nullptr;
    EXPECT_FALSE(RxApplyChoice(chosen, message));
    EXPECT_EQ(message, "Please Choose NOT Less Then Tow Related Ph. ACV and ACC Channels!");

    chosen.nKind = RxObject::KindUxIxK;
    chosen.fR1 = 1, chosen.fX1 = 1, chosen.fR0 = 0, chosen.fX0 = 1;
    EXPECT_FALSE(RxApplyChoice(chosen, message));
    EXPECT_EQ(message, "[R0] must great than 0!");

    chosen.nShown = RxObject::Row1 | RxObject::Row2;
    chosen.nMask = RxObject::Row0;
    RxFinishObject(chosen);
    EXPECT_EQ(chosen.nShown, RxObject::Row0);
    chosen.nShown = RxObject::AllRows;
    chosen.nMask = RxObject::Row0 | RxObject::Row2;
    RxFinishObject(chosen);
    EXPECT_EQ(chosen.nShown, RxObject::Row0 | RxObject::Row2);

    chosen.trace[0].resize(4);
    chosen.nFrom = 3;
    RxClearObject(chosen);
    EXPECT_EQ(chosen.nKind, RxObject::KindUxIxK);
    EXPECT_EQ(chosen.pRecording, &rec.file);
    EXPECT_EQ(chosen.nFrom, -1);
    EXPECT_EQ(chosen.nShown, RxObject::AllRows);
    EXPECT_EQ(chosen.nCoef[1], 1);
    EXPECT_TRUE(chosen.trace[0].empty());
}

TEST_F(RxRows, TracesAndStop)
{
    object.nKind = RxObject::KindUxIx;
    object.nMask = RxObject::Row0 | RxObject::Row2;
    object.trace[1].resize(7);
    // The last cycle has no window of its own; with the window before the cursor the trace
    // still reaches the end of the recording.
    ASSERT_TRUE(RxComputeTraces(object, 30, 199, nullptr, nullptr));
    EXPECT_EQ(object.nFrom, 30);
    EXPECT_EQ(object.nTo, 199);
    ASSERT_EQ(object.trace[0].size(), 170u);
    EXPECT_TRUE(object.trace[1].empty());
    const Cplx za = U(0) / (I1(0) + I2(0));
    for (const RxPoint &p : object.trace[0]) {
        ASSERT_NEAR(p.r, double(za.real()), 1e-4);
        ASSERT_NEAR(p.x, double(za.imag()), 1e-4);
    }
    // A range that stops short of the end leaves out its last sample.
    ASSERT_TRUE(RxComputeTraces(object, 10, 150, nullptr, nullptr));
    EXPECT_EQ(object.trace[2].size(), 140u);

    // Stopped at the first poll: the samples before it are kept, the range is set.
    struct Polls
    {
        static int report(void *, int code, int, int) { return code == 8 ? 10 : code == 0 ? -1 : 0; }
    };
    EXPECT_FALSE(RxComputeTraces(object, 0, 150, &Polls::report, nullptr));
    EXPECT_EQ(object.trace[0].size(), 9u);
    EXPECT_EQ(object.nFrom, 0);
    EXPECT_EQ(object.nTo, 150);
}
