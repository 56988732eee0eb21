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

struct slot_case_t {
    int32_t next;
    int32_t days_ago;
    int32_t slot;
};

TEST(DayRing, FindsADayBeforeTheNextSlotAndAroundTheEnd) {
    const slot_case_t cases[] = {
        {0, 1, 29},  {0, 2, 28},  {0, 30, 0},   {1, 1, 0},   {1, 2, 29},   {1, 30, 1},
        {29, 1, 28}, {29, 29, 0}, {29, 30, 29}, {15, 15, 0}, {15, 16, 29}, {15, 30, 15},
    };
    for (const slot_case_t &c : cases)
        EXPECT_EQ(day_ring_at(numbered(c.next), c.days_ago), 100 + c.slot)
            << c.days_ago << " days ago, next " << c.next;
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

TEST(DayRing, WritesAFinishedDayIntoTheNextSlotAndMovesOn) {
    config_app_usage_t usage = {};
    day_ring_push(&usage, 7);
    day_ring_push(&usage, 8);
    EXPECT_EQ(world::render(usage), "app 0: used 0/0/0, blocked 0, days [0:7 1:8] next 2");
}

TEST(DayRing, StartsAgainAfterSlot29) {
    config_app_usage_t usage = {};
    usage.next_day_idx = 29;
    day_ring_push(&usage, 7);
    EXPECT_EQ(world::render(usage), "app 0: used 0/0/0, blocked 0, days [29:7] next 0");
    day_ring_push(&usage, 8);
    EXPECT_EQ(world::render(usage), "app 0: used 0/0/0, blocked 0, days [0:8 29:7] next 1");
}

TEST(DayRing, ForgetsADayAfterThirtyOthers) {
    config_app_usage_t usage = {};
    for (int32_t i = 1; i <= 31; ++i)
        day_ring_push(&usage, i);
    EXPECT_EQ(day_ring_at(usage, 1), 31);
    EXPECT_EQ(day_ring_at(usage, 30), 2);
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
