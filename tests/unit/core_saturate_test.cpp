#include "core/saturate.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

TEST(Minutes, StayWithinTheirRange) {
    const int32_t table[][3] = {
        {0, 0, 0},
        {1440, 360, 1800},
        {-5, 3, -2},
        {INT32_MAX, 0, INT32_MAX},
        {INT32_MAX - 1, 1, INT32_MAX},
        {INT32_MAX, 1, INT32_MAX},
        {INT32_MAX, INT32_MAX, INT32_MAX},
        {INT32_MIN, -1, INT32_MIN},
        {INT32_MIN, INT32_MIN, INT32_MIN},
        {INT32_MIN, INT32_MAX, -1},
    };
    for (const auto &[a, b, sum] : table)
        EXPECT_EQ(saturating_sum(a, b), sum) << a << " + " << b;
}

TEST(Minutes, AreMovedIntoTheirRange) {
    for (const int32_t minutes : {0, -7, INT32_MAX, INT32_MIN})
        EXPECT_EQ(saturate(minutes), minutes);
    for (const int64_t value : {int64_t{INT32_MAX} + 1, INT64_MAX})
        EXPECT_EQ(saturate(value), INT32_MAX);
    for (const int64_t value : {int64_t{INT32_MIN} - 1, INT64_MIN})
        EXPECT_EQ(saturate(value), INT32_MIN);
}

} // namespace
