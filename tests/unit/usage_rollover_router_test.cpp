#include "usage/rollover.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "usage/collector.h"
#include "usage/top_apps.h"

#include "store/store.h"

#include <gtest/gtest.h>

namespace {

using world::local;

/// The router-wide statistics, and what the ticks around a boundary make of them.
class RouterRollover : public testing::Test {
protected:
    void SetUp() override { world::reset(); }

    static void add(int32_t app_id, int32_t daily, int32_t weekly, int32_t monthly) {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_global_app_stat_add(app_id, daily);
        config_app_usage_t *app =
            utm_app_find_app_usage(&utm_app_config_global_app_stat_list, app_id);
        app->weekly_used = weekly;
        app->monthly_used = monthly;
    }

    static void roll(time_t last, time_t now) {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_last_ts = last;
        utm_app_global_rollover(now);
        utm_app_config_global_app_stat_last_ts = world::default_now;
    }
};

TEST_F(RouterRollover, LeavesTheStatisticsAloneUntilTheDayHasChanged) {
    add(10, 4, 50, 600);
    roll(local(2026, 3, 4), local(2026, 3, 4, 23, 59, 59));
    roll(local(2026, 3, 4), local(2026, 4, 4));
    EXPECT_EQ(world::render_router(), "router: apps 1, collected +0\n"
                                      "  app 10: used 4/50/600, blocked 0, days [] next 0\n");
}

TEST_F(RouterRollover, RollsEveryRecordOverAndBlocksNothing) {
    add(10, 4, 50, 600);
    add(20, 5, 0, 0);
    roll(local(2026, 3, 4, 23, 59, 59), local(2026, 3, 5));
    EXPECT_EQ(world::render_router(), "router: apps 2, collected +0\n"
                                      "  app 20: used 0/5/0, blocked 0, days [0:5] next 1\n"
                                      "  app 10: used 0/54/600, blocked 0, days [0:4] next 1\n");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(RouterRollover, ClosesWeeksAndMonthsWhereTheyEndTogether) {
    struct {
        const char *name;
        time_t last;
        time_t now;
        const char *used;
    } const cases[] = {
        {"a week", local(2026, 3, 7), local(2026, 3, 8), "0/0/654"},
        {"a month in mid-week", local(2026, 3, 31), local(2026, 4, 1), "0/54/600"},
        {"a week and a month", local(2026, 2, 28), local(2026, 3, 1), "0/0/0"},
        {"a year in mid-week", local(2025, 12, 31), local(2026, 1, 1), "0/54/600"},
        {"a week and a year", local(2022, 12, 31), local(2023, 1, 1), "0/0/0"},
        {"back over midnight", local(2026, 3, 5), local(2026, 3, 4), "0/0/654"},
    };
    for (const auto &c : cases) {
        add(10, 4, 50, 600);
        roll(c.last, c.now);
        EXPECT_EQ(world::render_router(),
                  std::string("router: apps 1, collected +0\n  app 10: used ") + c.used +
                      ", blocked 0, days [0:4] next 1\n")
            << c.name;
        world::reset();
    }
}

/// The days that a profile's application has seen finish, tick by tick.
std::string ring_after(const std::vector<time_t> &ticks) {
    config_user_profile_t *profile = world::make_profile(3, {world::phone});
    profile->last_collect_ts = ticks.front();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_last_ts = ticks.front();
    }
    world::on_popen([](const std::string &) {
        return R"({"data":[{"type":"APP","app_id":7,"total_time_usage":1}]})";
    });
    for (const time_t tick : ticks) {
        world::set_now(tick);
        if (utm_app_update_app_status() != 0 || utm_app_update_global_app_status() != 0)
            return "failed";
    }
    const mutex_guard lock(utm_app_config_mutex);
    const std::string of_profile =
        world::render(*utm_app_find_app_usage(&profile->app_stat_list, 7));
    const std::string of_router =
        world::render(*utm_app_find_app_usage(&utm_app_config_global_app_stat_list, 7));
    return of_profile == of_router ? of_profile : of_profile + " but router " + of_router;
}

TEST_F(RouterRollover, FinishesADayOnceWhereClocksChangeAtNight) {
    world::set_zone("Europe/Berlin");
    // Hourly ticks from noon to noon: 11 and 13 of them fall into the second day's morning.
    struct {
        time_t start;
        int hours;
        const char *app;
    } const cases[] = {
        {local(2026, 3, 28, 12), 23, "app 7: used 12/0/12, blocked 0, days [0:12] next 1"},
        {local(2026, 10, 24, 12), 25, "app 7: used 14/0/12, blocked 0, days [0:12] next 1"},
        {local(2026, 3, 25, 12), 24, "app 7: used 13/12/0, blocked 0, days [0:12] next 1"},
    };
    for (const auto &c : cases) {
        std::vector<time_t> ticks;
        for (int hour = 0; hour <= c.hours; ++hour)
            ticks.push_back(c.start + hour * 3600);
        EXPECT_EQ(ring_after(ticks), c.app) << c.start;
        world::reset();
        world::set_zone("Europe/Berlin");
    }
}

TEST_F(RouterRollover, FinishesADayOnceWhereClocksChangeAtMidnight) {
    // Beirut: Sunday, 29 March 2026 starts at 01:00; Saturday, 24 October 2026 has 23:00 twice.
    world::set_zone("Asia/Beirut");
    struct {
        time_t start;
        const char *app;
    } const cases[] = {
        {local(2026, 3, 29, 1) - 7200, "app 7: used 3/0/2, blocked 0, days [0:2] next 1"},
        {local(2026, 10, 25) - 7200, "app 7: used 3/0/2, blocked 0, days [0:2] next 1"},
    };
    for (const auto &c : cases) {
        std::vector<time_t> ticks;
        for (int hour = 0; hour < 5; ++hour)
            ticks.push_back(c.start + hour * 3600);
        EXPECT_EQ(ring_after(ticks), c.app) << c.start;
        world::reset();
        world::set_zone("Asia/Beirut");
    }
}

TEST_F(RouterRollover, FinishesADayAgainWhenTheClockIsSetBackOverMidnight) {
    // Over midnight, set back before it, and over it again: three finished days, and going from
    // Thursday to Wednesday ends a week.
    EXPECT_EQ(ring_after({local(2026, 3, 4, 23, 59), local(2026, 3, 5), local(2026, 3, 4, 23, 58),
                          local(2026, 3, 5, 0, 1)}),
              "app 7: used 1/1/2, blocked 0, days [0:1 1:1 2:1] next 3");
}

TEST_F(RouterRollover, FinishesOneDayHoweverFarTheClockJumps) {
    EXPECT_EQ(ring_after({local(2026, 3, 4), local(2026, 5, 20), local(2026, 5, 20, 0, 1)}),
              "app 7: used 2/1/0, blocked 0, days [0:1] next 1");
}

TEST_F(RouterRollover, WrapsTheRingOverForTwoMonthsOfDays) {
    std::vector<time_t> ticks;
    for (int day = 0; day <= 60; ++day)
        ticks.push_back(local(2026, 3, 1 + day));
    const std::string app = ring_after(ticks);
    EXPECT_EQ(app.substr(app.rfind("next")), "next 0");
    // 30 April 2026 is a Thursday: four finished days. The months before it never started on a
    // Sunday, so "this month" still counts from 1 March.
    EXPECT_EQ(app.substr(0, app.find(", blocked")), "app 7: used 1/4/56");
}

} // namespace
