#pragma once

// Relative tolerance for comparing computed floating-point values with values worked by hand.
// An absolute epsilon is wrong for a workstation whose values run from millivolts to hundreds of
// kilovolts: it is either too loose for the small ones or too tight for the large ones. A
// relative bound scales with the value; an expected value of exactly 0 is compared with the
// bound itself as an absolute limit, since no relative error exists there.

#include <cmath>
#include <sstream>

namespace veldrix_test {

// True when `actual` lies within `rel` × |expected| of `expected` (within `rel` when expected
// is 0). For QVERIFY in the widget tests.
inline bool IsNearRelative(double actual, double expected, double rel)
{
    if (std::isnan(actual) || std::isnan(expected))
        return false;
    if (actual == expected)
        return true;
    const double bound = expected == 0.0 ? rel : rel * std::fabs(expected);
    return std::fabs(actual - expected) <= bound;
}

} // namespace veldrix_test

#if __has_include(<gtest/gtest.h>)
#include <gtest/gtest.h>

// The same rule for GoogleTest: EXPECT_TRUE(NearRelative(v, 230.0, 1e-6)) prints both values
// and the relative error when it fails.
inline ::testing::AssertionResult NearRelative(double actual, double expected, double rel)
{
    if (veldrix_test::IsNearRelative(actual, expected, rel))
        return ::testing::AssertionSuccess();
    std::ostringstream text;
    text.precision(17);
    text << actual << " is not within " << rel << " (relative) of " << expected;
    if (expected != 0.0)
        text << " (relative error " << std::fabs(actual - expected) / std::fabs(expected) << ")";
    return ::testing::AssertionFailure() << text.str();
}
#endif
