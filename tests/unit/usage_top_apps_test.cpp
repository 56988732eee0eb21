#include "usage/top_apps.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

class TopApps : public world_test {};

void add(int32_t app_id, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_global_app_stat_add(app_id, minutes), 0);
}

std::string ranking() {
    int32_t count = 77;
    const heap_ptr<config_app_minutes_t> apps(utm_app_get_top_apps(&count));
    return world::render(apps.get(), count);
}

TEST_F(TopApps, AddUpPerApplicationAndRankByMinutes) {
    add(7, 5);
    add(9, 3);
    add(7, 4);
    EXPECT_EQ(ranking(), "2: 7=9 9=3");
    EXPECT_EQ(world::brief(world::render_router()), "router: apps 2\n"
                                                    "  app 9: used 3/0/0\n"
                                                    "  app 7: used 9/0/0\n");
}

TEST_F(TopApps, CountTheDayTheWeekAndTheMonthAndSaturate) {
    add(1, int32_max);
    add(2, int32_min);
    add(3, 1);
    add(4, 2);
    {
        const mutex_guard lock(utm_app_config_mutex);
        const int32_t weeks[] = {5, -5, 20, 10};
        const int32_t months[] = {1, -1, 300, 300};
        for (config_app_usage_t &app : global_apps()) {
            app.weekly_used = weeks[app.app_id - 1];
            app.monthly_used = months[app.app_id - 1];
        }
    }
    EXPECT_EQ(ranking(), "4: 1=2147483647 3=321 4=312 2=-2147483648");
}

TEST_F(TopApps, CutNoneOff) {
    std::string expected;
    for (int32_t app_id = 1; app_id <= 500; ++app_id) {
        add(app_id, app_id);
        const std::string id = std::to_string(app_id);
        expected = " " + id + "=" + id + expected;
    }
    EXPECT_EQ(ranking(), "500:" + expected);
}

TEST_F(TopApps, LoseANewApplicationOrTheRankingWithoutMemory) {
    add(7, 5);
    world::fail_allocation(1);
    add(9, 3);
    EXPECT_EQ(world::brief(world::render_router()), "router: apps 1\n  app 7: used 5/0/0\n");
    EXPECT_EQ(world::trace(), "");
    world::fail_allocation(1);
    EXPECT_EQ(ranking(), "none, 1");
    EXPECT_EQ(world::trace(), "log Get top apps failed because malloc failed\n");
}

TEST_F(TopApps, StartFromScratchAfterAReset) {
    EXPECT_EQ(ranking(), "none, 0");
    add(7, 5);
    add(9, 3);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_clear_global_app_stat();
    }
    EXPECT_EQ(ranking(), "none, 0");
    EXPECT_EQ(world::trace(), "");
    add(7, 1);
    EXPECT_EQ(ranking(), "1: 7=1");
    utm_app_reset_top_apps();
    EXPECT_EQ(ranking(), "none, 0");
    EXPECT_EQ(world::trace(), "log Reset top apps success\n");
}

TEST_F(TopApps, OrderPairsByMinutesFromLargestToSmallest) {
    const int32_t cases[][3] = {
        {10, 30, 1},
        {30, 10, -1},
        {20, 20, 0},
        {-1, 1, 1},
        {int32_min, int32_max, 1},
        {int32_max, int32_min, -1},
    };
    for (const auto &[minutes, other, order] : cases) {
        const config_app_minutes_t a = {1, minutes};
        const config_app_minutes_t b = {2, other};
        EXPECT_EQ(compare_config_app_usage_t_assending(&a, &b), order) << minutes << " " << other;
    }
    const config_app_minutes_t pair = {1, 1};
    EXPECT_EQ(compare_config_app_usage_t_assending(nullptr, &pair), 0);
    EXPECT_EQ(compare_config_app_usage_t_assending(&pair, nullptr), 0);
}

} // namespace
