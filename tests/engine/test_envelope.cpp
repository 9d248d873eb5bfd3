// The min/max summary behind envelope drawing: any range of samples gives the same least and
// largest value as a look at every sample, while a load is still growing, and gaps stay out.

#include "envelope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

// The extremes of values[first..last] by looking at each finite sample: the reference.
bool directRange(const std::vector<float> &values, int first, int last, float &low, float &high)
{
    bool any = false;
    for (int i = first; i <= last; ++i) {
        if (!std::isfinite(values[i]))
            continue;
        low = any ? std::min(low, values[i]) : values[i];
        high = any ? std::max(high, values[i]) : values[i];
        any = true;
    }
    return any;
}

} // namespace

TEST(SampleEnvelope, EveryRangeMatchesTheSamplesAsTheLoadGrows)
{
    // 1000 samples of a pseudo-random walk with gaps (NaN, infinities) scattered in it, and one
    // whole run of gaps.
    std::vector<float> values(1000);
    unsigned seed = 12345;
    float level = 0.0f;
    for (size_t i = 0; i < values.size(); ++i) {
        seed = seed * 1103515245u + 12345u;
        level += float(int(seed >> 16) % 201 - 100) * 0.25f;
        values[i] = level;
    }
    values[37] = std::numeric_limits<float>::quiet_NaN();
    values[38] = std::numeric_limits<float>::infinity();
    values[500] = -std::numeric_limits<float>::infinity();
    for (int i = 320; i < 336; ++i) // run 20 is all gaps
        values[i] = std::numeric_limits<float>::quiet_NaN();

    CSampleEnvelope envelope;
    ASSERT_TRUE(envelope.Reserve(int(values.size())));
    EXPECT_EQ(envelope.Runs(), 0);
    for (const int loaded : {40, 47, 400, 1000}) {
        envelope.Extend(values.data(), loaded);
        EXPECT_EQ(envelope.Runs(), loaded / CSampleEnvelope::kRun);
        for (int first = 0; first < loaded; first += 7) {
            for (int last = first; last < loaded; last += 13) {
                float low = 0, high = 0, refLow = 0, refHigh = 0;
                const bool any = envelope.Range(values.data(), first, last, low, high);
                ASSERT_EQ(any, directRange(values, first, last, refLow, refHigh)) << first << ".." << last;
                if (any) {
                    ASSERT_EQ(low, refLow) << first << ".." << last;
                    ASSERT_EQ(high, refHigh) << first << ".." << last;
                }
            }
        }
    }
    // A range inside the run of gaps has no value, nor one of a NaN and an infinity.
    float low, high;
    EXPECT_FALSE(envelope.Range(values.data(), 320, 335, low, high));
    EXPECT_FALSE(SampleRange(values.data(), 37, 38, low, high));
    // Extending beyond what was reserved stops at the reservation.
    envelope.Extend(values.data(), 5000);
    EXPECT_EQ(envelope.Runs(), 1000 / CSampleEnvelope::kRun);
}
