// The harmonic content at a sample: magnitudes, THD and DC share of a signal of known content,
// and the orders a sampling rate can tell apart.

#include "harmonics.h"
#include "memoryrecording.h"

#include <cmath>
#include <numbers>

namespace {

// DC 10 + 100·sin(ωt + 20°) + 5·sin(3ωt + 40°) + 3·sin(5ωt − 30°) at 50 Hz.
std::vector<float> distorted(double rate, int points)
{
    std::vector<float> x(static_cast<size_t>(points), 0.0f);
    const double w = 2 * std::numbers::pi * 50.0 / rate;
    const double deg = std::numbers::pi / 180;
    for (int i = 0; i < points; ++i)
        x[size_t(i)] = float(10.0 + 100.0 * std::sin(w * i + 20 * deg) +
                             5.0 * std::sin(3 * w * i + 40 * deg) + 3.0 * std::sin(5 * w * i - 30 * deg));
    return x;
}

} // namespace

using Harmonics = PhasorSwitchesRestored;

TEST_F(Harmonics, KnownContentAndTheOrdersARateAllows)
{
    MemoryRecording r({{5000.0f, 2000}});
    const CChnMapAnalog &chn = r.add(distorted(5000.0, 2000));
    const HarmonicSpectrum s = HarmonicSpectrumAt(r.file, chn, 1000);
    ASSERT_TRUE(s.valid);
    EXPECT_EQ(s.n, 100);
    EXPECT_DOUBLE_EQ(s.fundamentalHz, 50.0);
    ASSERT_EQ(s.orders.size(), size_t(50)); // orders 0 to 49: below half of 100 samples
    const double base = 100.0 / std::sqrt(2.0);
    // The samples are 32-bit floats: the magnitudes hold to their precision.
    EXPECT_NEAR(s.orders[1].effective, base, 1e-5 * base);
    EXPECT_NEAR(s.orders[3].percent, 5.0, 1e-4);
    EXPECT_NEAR(s.orders[5].percent, 3.0, 1e-4);
    EXPECT_NEAR(s.orders[2].percent, 0.0, 1e-4);
    EXPECT_NEAR(s.thdPercent, std::sqrt(5.0 * 5.0 + 3.0 * 3.0), 1e-4);
    EXPECT_NEAR(s.orders[0].effective, 10.0, 1e-4);
    EXPECT_NEAR(s.dcPercent, 10.0 / base * 100.0, 1e-4);
    // Orders keep their angles against each other wherever the window stands: the 3rd leads the
    // fundamental's tripled angle by 40° − 3·20°.
    const double relative = s.orders[3].angleDeg - 3 * s.orders[1].angleDeg;
    EXPECT_NEAR(std::remainder(relative, 360.0), -20.0, 1e-3);

    // At 1 kHz a cycle has 20 samples: orders up to the 9th, and at most as many as asked.
    MemoryRecording slow({{1000.0f, 400}});
    const CChnMapAnalog &low = slow.add(distorted(1000.0, 400));
    EXPECT_EQ(HarmonicSpectrumAt(slow.file, low, 200).orders.size(), size_t(10));
    EXPECT_EQ(HarmonicSpectrumAt(slow.file, low, 200, 4).orders.size(), size_t(5));
    EXPECT_EQ(HighestHarmonic(400), 50);
}
