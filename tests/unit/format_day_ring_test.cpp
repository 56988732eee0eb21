#include "format/day_ring.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"

#include <gtest/gtest.h>

namespace {

/// A ring whose slot i holds 100 + i.
config_app_usage_t numbered(int32_t next) {
    config_app_usage_t usage = {};
    for (int32_t slot = 0; slot < day_ring_days; ++slot)
        usage.prev_30_days[slot] = 100 + slot;
    usage.next_day_idx = next;
    return usage;
}

TEST(DayRing, ReachesEverySlotOnceFromEveryIndex) {
    for (int32_t next = 0; next < day_ring_days; ++next) {
        int32_t slot = next;
        for (int32_t days_ago = day_ring_days; days_ago >= 1; --days_ago) {
            EXPECT_EQ(day_ring_at(numbered(next), days_ago), 100 + slot);
            slot = slot == 29 ? 0 : slot + 1;
        }
    }
}

TEST(DayRing, WritesAFinishedDayIntoTheNextSlotAndForgetsItAfterThirtyOthers) {
    config_app_usage_t usage = {};
    usage.next_day_idx = 28;
    for (const int32_t minutes : {7, 8, 9})
        day_ring_push(&usage, minutes);
    EXPECT_EQ(world::render(usage), "app 0: used 0/0/0, blocked 0, days [0:9 28:7 29:8] next 1");
    for (int32_t day = 1; day <= 29; ++day)
        day_ring_push(&usage, 100 + day);
    EXPECT_EQ(day_ring_at(usage, 1), 129);
    EXPECT_EQ(day_ring_at(usage, 30), 9);
}

TEST(DayRing, AddsUpASpanOfDays) {
    const config_app_usage_t usage = numbered(0);
    EXPECT_EQ(day_ring_sum(usage, 1, 1), 129);
    EXPECT_EQ(day_ring_sum(usage, 1, 3), 129 + 128 + 127);
    EXPECT_EQ(day_ring_sum(usage, 21, 27), 109 + 108 + 107 + 106 + 105 + 104 + 103);
    EXPECT_EQ(day_ring_sum(usage, 1, 0), 0);
}

TEST(DayRing, SaturatesASum) {
    config_app_usage_t usage = {};
    usage.prev_30_days[29] = int32_max;
    usage.prev_30_days[28] = 1;
    EXPECT_EQ(day_ring_sum(usage, 1, 1), int32_max);
    EXPECT_EQ(day_ring_sum(usage, 1, 2), int32_max);
    usage.prev_30_days[29] = int32_min;
    usage.prev_30_days[28] = -1;
    EXPECT_EQ(day_ring_sum(usage, 1, 2), int32_min);
    // Only the end counts: the way there may leave the range.
    usage.prev_30_days[28] = -1;
    usage.prev_30_days[27] = 11;
    EXPECT_EQ(day_ring_sum(usage, 1, 3), int32_min + 10);
}

} // namespace
