#include "usage/top_apps.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

class TopApps : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

void add(int32_t app_id, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_global_app_stat_add(app_id, minutes), 0);
}

/// "count: app=minutes ...", or "none, count".
std::string ranking() {
    int32_t count = 77;
    const heap_ptr<config_app_minutes_t> apps(utm_app_get_top_apps(&count));
    if (apps == nullptr)
        return "none, " + std::to_string(count);
    std::string text = std::to_string(count) + ":";
    for (int32_t i = 0; i < count; ++i)
        text += " " + std::to_string(apps.get()[i].app_id) + "=" +
                std::to_string(apps.get()[i].minutes);
    return text;
}

TEST_F(TopApps, AddUpPerApplicationAndRankByMinutes) {
    add(7, 5);
    add(9, 3);
    add(7, 4);
    EXPECT_EQ(world::render_router(), "router: apps 2, collected +0\n"
                                      "  app 9: used 3/0/0, blocked 0, days [] next 0\n"
                                      "  app 7: used 9/0/0, blocked 0, days [] next 0\n");
    EXPECT_EQ(ranking(), "2: 7=9 9=3");
    EXPECT_EQ(world::render_router(), "router: apps 2, collected +0\n"
                                      "  app 9: used 3/0/0, blocked 0, days [] next 0\n"
                                      "  app 7: used 9/0/0, blocked 0, days [] next 0\n");
}

TEST_F(TopApps, AreNoneWithoutAnApplication) {
    EXPECT_EQ(ranking(), "none, 0");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(TopApps, CountTheDayTheWeekAndTheMonth) {
    add(1, 1);
    add(2, 2);
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_app_usage_t &app : global_apps()) {
            app.weekly_used = app.app_id == 1 ? 20 : 10;
            app.monthly_used = 300;
        }
    }
    EXPECT_EQ(ranking(), "2: 1=321 2=312");
}

TEST_F(TopApps, Saturate) {
    add(1, int32_max);
    add(1, 1);
    add(2, int32_min);
    add(2, -1);
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_app_usage_t &app : global_apps())
            app.weekly_used = app.monthly_used = app.app_id == 1 ? 5 : -5;
    }
    EXPECT_EQ(ranking(), "2: 1=2147483647 2=-2147483648");
}

TEST_F(TopApps, CutNoneOff) {
    for (int32_t app_id = 1; app_id <= 500; ++app_id)
        add(app_id, app_id);
    int32_t count = 0;
    const heap_ptr<config_app_minutes_t> apps(utm_app_get_top_apps(&count));
    ASSERT_EQ(count, 500);
    for (int32_t i = 0; i < count; ++i)
        EXPECT_EQ(apps.get()[i].app_id, 500 - i);
}

TEST_F(TopApps, LoseANewApplicationWithoutMemory) {
    add(7, 5);
    world::fail_allocation(1);
    add(9, 3);
    EXPECT_EQ(world::render_router(), "router: apps 1, collected +0\n"
                                      "  app 7: used 5/0/0, blocked 0, days [] next 0\n");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(TopApps, KeepTheCountWithoutMemoryForARanking) {
    add(7, 5);
    add(9, 3);
    world::fail_allocation(1);
    EXPECT_EQ(ranking(), "none, 2");
    EXPECT_EQ(world::trace(), "log Get top apps failed because malloc failed\n");
}

TEST_F(TopApps, StartFromScratchAfterAReset) {
    add(7, 5);
    add(9, 3);
    utm_app_reset_top_apps();
    EXPECT_EQ(ranking(), "none, 0");
    add(7, 1);
    EXPECT_EQ(world::render_router(), "router: apps 1, collected +0\n"
                                      "  app 7: used 1/0/0, blocked 0, days [] next 0\n");
    EXPECT_EQ(world::trace(), "log Reset top apps success\n");
}

TEST_F(TopApps, AreClearedInSilence) {
    add(7, 5);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_clear_global_app_stat();
        utm_app_clear_global_app_stat();
    }
    EXPECT_EQ(world::render_router(), "router: apps 0, collected +0\n");
    EXPECT_EQ(world::trace(), "");
}

struct order_case_t {
    int32_t a;
    int32_t b;
    int order;
};

TEST_F(TopApps, OrderPairsByMinutesFromLargestToSmallest) {
    const order_case_t cases[] = {
        {10, 30, 1},
        {30, 10, -1},
        {20, 20, 0},
        {-1, 1, 1},
        {1, -1, -1},
        {int32_min, int32_max, 1},
        {int32_max, int32_min, -1},
        {int32_min, int32_min, 0},
    };
    for (const order_case_t &c : cases) {
        const config_app_minutes_t a = {1, c.a};
        const config_app_minutes_t b = {2, c.b};
        EXPECT_EQ(compare_config_app_usage_t_assending(&a, &b), c.order) << c.a << " " << c.b;
    }
    const config_app_minutes_t pair = {1, 1};
    EXPECT_EQ(compare_config_app_usage_t_assending(nullptr, &pair), 0);
    EXPECT_EQ(compare_config_app_usage_t_assending(&pair, nullptr), 0);
    EXPECT_EQ(compare_config_app_usage_t_assending(nullptr, nullptr), 0);
}

TEST_F(TopApps, SortThreePairs) {
    config_app_minutes_t pairs[] = {{1, 10}, {2, 30}, {3, 20}};
    qsort(pairs, 3, sizeof(pairs[0]), compare_config_app_usage_t_assending);
    std::string text;
    for (const config_app_minutes_t &pair : pairs)
        text += std::to_string(pair.app_id) + "=" + std::to_string(pair.minutes) + " ";
    EXPECT_EQ(text, "2=30 3=20 1=10 ");
}

} // namespace
