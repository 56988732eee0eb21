#include "usage/rollover.h"

#include "core/list.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"
#include "usage/collector.h"
#include "usage/top_apps.h"

#include <gtest/gtest.h>

namespace {

using world::local;
using world::make_policy;
using world::make_profile;
using world::make_usage;

/// Wednesday to Thursday in UTC.
const time_t wednesday = 1'772'668'799; // 4 March 2026, 23:59:59
const time_t thursday = wednesday + 1;

class Rollover : public world_test {
protected:
    /// Rolls a profile over at an instant that is also the clock's.
    static void roll(config_user_profile_t *profile, time_t last = wednesday,
                     time_t now = thursday) {
        profile->last_collect_ts = last;
        world::set_now(now);
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_profile_rollover(profile, now);
        profile->last_collect_ts = world::default_now;
    }

    /// Rolls the router's figures over.
    static void roll_router(time_t last, time_t now) {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_last_ts = last;
        utm_app_global_rollover(now);
        utm_app_config_global_app_stat_last_ts = world::default_now;
    }
};

/// The figures of a profile or an application: "0/65/700".
template <typename Record>
std::string used_of(const Record &record) {
    return std::to_string(record.daily_used) + "/" + std::to_string(record.weekly_used) + "/" +
           std::to_string(record.monthly_used);
}

/// @param used  today, in the week and in the month before
template <typename Record>
void set_used(Record *record, const int32_t (&used)[3]) {
    record->daily_used = used[0];
    record->weekly_used = used[1];
    record->monthly_used = used[2];
}

/// Gives the router's list an application in front.
void add_router_app(int32_t app_id, const int32_t (&used)[3]) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_global_app_stat_add(app_id, 0);
    set_used(&*global_apps().begin(), used);
}

TEST_F(Rollover, LeavesAllAloneUntilTheDayHasChanged) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    set_used(profile, {5, 6, 7});
    profile->daily_extend = 30;
    profile->blocked = 1;
    make_usage(profile, {{10, 4}});
    add_router_app(10, {4, 50, 600});
    const std::string before = world::render_store();
    // A month to the day counts as the same day.
    for (const auto &[last, now] :
         {std::pair(wednesday - 3600, wednesday), {local(2026, 3, 5, 10), local(2026, 4, 5, 10)}}) {
        roll(profile, last, now);
        roll_router(last, now);
    }
    EXPECT_EQ(world::render_store(), before);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Rollover, MovesADayIntoTheWeekAndTheRing) {
    config_user_profile_t *profile = make_profile(3);
    set_used(profile, {5, 60, 700});
    profile->daily_extend = 30;
    make_usage(profile, {{10, 4}, {20, 0}});
    add_router_app(10, {4, 50, 600});
    add_router_app(20, {5, 0, 0});
    roll(profile);
    roll_router(wednesday, thursday);
    EXPECT_EQ(world::brief(world::render_store()),
              "profile 3: devices 0 [], used 0/65/700, apps 2\n"
              "  app 10: used 0/4/0, days [0:4] next 1\n"
              "  app 20: used 0/0/0, days [] next 1\n"
              "router: apps 2\n"
              "  app 20: used 0/5/0, days [0:5] next 1\n"
              "  app 10: used 0/54/600, days [0:4] next 1\n");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Rollover, ClosesWeeksAndMonthsWhereTheyEndTogether) {
    struct {
        const char *name;
        time_t last, now;
        const char *profile; ///< starts from 5/60/700
        const char *app;     ///< starts from 4/50/600
    } const calendar[] = {
        {"a day", local(2026, 3, 4), local(2026, 3, 5), "0/65/700", "0/54/600"},
        {"a week", local(2026, 3, 7), local(2026, 3, 8), "0/0/765", "0/0/654"},
        {"a month in mid-week", local(2026, 3, 31), local(2026, 4, 1), "0/65/700", "0/54/600"},
        {"a week and a month", local(2026, 2, 28), local(2026, 3, 1), "0/0/0", "0/0/0"},
        {"a year in mid-week", local(2025, 12, 31), local(2026, 1, 1), "0/65/700", "0/54/600"},
        {"a week and a year", local(2022, 12, 31), local(2023, 1, 1), "0/0/0", "0/0/0"},
        {"out of 29 February", local(2024, 2, 29), local(2024, 3, 1), "0/65/700", "0/54/600"},
        {"back over midnight", local(2026, 3, 5), local(2026, 3, 4), "0/0/765", "0/0/654"},
        {"back over a Sunday", local(2026, 3, 8), local(2026, 3, 7), "0/65/700", "0/54/600"},
        {"back over a month's start", local(2026, 4, 1), local(2026, 3, 31), "0/0/0", "0/0/0"},
        {"three days", local(2026, 3, 2), local(2026, 3, 5), "0/65/700", "0/54/600"},
        {"six days", local(2026, 3, 4), local(2026, 3, 10), "0/0/765", "0/0/654"},
        {"a week to the day", local(2026, 3, 4), local(2026, 3, 11), "0/65/700", "0/54/600"},
        {"three months", local(2026, 3, 4), local(2026, 6, 9), "0/0/0", "0/0/0"},
        {"to a later weekday", local(2026, 3, 4), local(2026, 6, 6), "0/65/700", "0/54/600"},
    };
    for (const auto &c : calendar) {
        SCOPED_TRACE(c.name);
        world::reset();
        config_user_profile_t *profile = make_profile(3);
        set_used(profile, {5, 60, 700});
        make_usage(profile, {{10, 0}});
        config_app_usage_t *app = world::usage_of(profile, 10);
        set_used(app, {4, 50, 600});
        app->next_day_idx = 29;
        add_router_app(10, {4, 50, 600});
        roll(profile, c.last, c.now);
        roll_router(c.last, c.now);
        EXPECT_EQ(used_of(*profile), c.profile);
        EXPECT_EQ(used_of(*app), c.app);
        const mutex_guard lock(utm_app_config_mutex);
        EXPECT_EQ(used_of(*global_apps().begin()), c.app);
        EXPECT_EQ(app->prev_30_days[29], 4);
        EXPECT_EQ(app->next_day_idx, 0);
    }
}

TEST_F(Rollover, TakesTheWeekdayLimitOfTheClocksDay) {
    config_user_profile_t *profile = make_profile(3);
    const mutex_guard lock(utm_app_config_mutex);
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.limit = 100 + entry.day;
    for (int day = 1; day <= 7; ++day) { // 1 March 2026 is a Sunday
        profile->last_collect_ts = wednesday;
        world::set_now(local(2026, 3, day));
        utm_app_profile_rollover(profile, thursday); // when the tick started
        EXPECT_EQ(profile->daily_limit, 100 + day - 1);
    }
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.day = 9;
    utm_app_profile_rollover(profile, thursday);
    EXPECT_EQ(profile->daily_limit, 106); // without an entry it stays
}

TEST_F(Rollover, UnblocksAProfileWithDevicesOnceAndABlockedOneTwice) {
    const std::string event = world::unblock_event(3);
    struct {
        std::vector<world::mac_t> devices;
        int32_t blocked;
        std::string trace;
    } const cases[] = {
        {{world::phone}, 0, event},
        {{world::phone}, 1, event + event},
        {{}, 1, ""},
    };
    for (const auto &c : cases) {
        world::reset();
        config_user_profile_t *profile = make_profile(3, c.devices);
        profile->blocked = c.blocked;
        roll(profile);
        EXPECT_EQ(profile->blocked, 0);
        EXPECT_EQ(world::trace(), c.trace);
    }
}

TEST_F(Rollover, ReleasesLimitedApplicationsAndKeepsBlockedOnes) {
    for (const std::vector<world::mac_t> &devices : {world::both, {}}) {
        world::reset();
        config_user_profile_t *profile = make_profile(3, devices);
        make_usage(profile, {{10, 4}, {20, 5}, {30, 6}, {40, 7}});
        make_policy(4, {{10, 1, 4}, {20, 2, 0}, {40, 1, 9}}, profile);
        for (const int32_t app_id : {10, 20, 30}) // 30 is blocked without a rule, 40 is not blocked
            world::usage_of(profile, app_id)->blocked = 1;
        roll(profile);
        EXPECT_EQ(world::brief(world::render_apps(3)),
                  "apps 4\n"
                  "  app 10: used 0/4/0, days [0:4] next 1, rule 1/4\n"
                  "  app 20: used 0/5/0, blocked 1, days [0:5] next 1, rule 2/0\n"
                  "  app 30: used 0/6/0, blocked 1, days [0:6] next 1\n"
                  "  app 40: used 0/7/0, days [0:7] next 1, rule 1/9\n");
        EXPECT_EQ(world::trace(), (devices.empty() ? "" : world::unblock_event(3)) +
                                      world::unblock_lines(devices, 10));
    }
}

TEST_F(Rollover, SaturatesEveryFigure) {
    struct {
        int32_t from[3];
        const char *day;  ///< after a day that ends no week
        const char *week; ///< after a day that ends one
    } const cases[] = {
        {{1, int32_max, 5}, "0/2147483647/5", "0/0/2147483647"},
        {{int32_max, int32_max, int32_max}, "0/2147483647/2147483647", "0/0/2147483647"},
        {{-1, int32_min, 5}, "0/-2147483648/5", "0/0/-2147483643"},
        {{int32_min, int32_min, int32_min}, "0/-2147483648/-2147483648", "0/0/-2147483648"},
        {{2, 3, int32_max}, "0/5/2147483647", "0/0/2147483647"},
    };
    config_user_profile_t *profile = make_profile(3);
    for (const auto &c : cases)
        for (const bool is_week : {false, true}) {
            set_used(profile, c.from);
            const time_t now = is_week ? local(2026, 3, 8) : thursday;
            roll(profile, now - 1, now);
            EXPECT_EQ(used_of(*profile), is_week ? c.week : c.day);
        }
}

// ---- Ticks ---------------------------------------------------------------------------------

/// What an application has gathered, a minute a tick, by its profile and by the router.
std::string app_after(const std::vector<time_t> &ticks) {
    world::empty_store();
    make_profile(3, {world::phone})->last_collect_ts = ticks.front();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_last_ts = ticks.front();
    }
    world::on_popen([](const std::string &) {
        return R"({"data":[{"type":"APP","app_id":7,"total_time_usage":1}]})";
    });
    for (const time_t tick : ticks) {
        world::set_now(tick);
        EXPECT_EQ(utm_app_update_app_status(), 0);
        EXPECT_EQ(utm_app_update_global_app_status(), 0);
    }
    const std::string of_profile = world::render_apps(3);
    const std::string of_router = world::render_router();
    const std::string app = of_profile.substr(of_profile.find("app 7"));
    EXPECT_EQ(of_router.substr(of_router.find("app 7")), app);
    return world::brief(app);
}

std::vector<time_t> hourly(time_t start, int hours) {
    std::vector<time_t> ticks;
    for (int hour = 0; hour <= hours; ++hour)
        ticks.push_back(start + hour * 3600);
    return ticks;
}

TEST_F(Rollover, FinishesADayOnceWhereClocksChangeAtNight) {
    world::set_zone("Europe/Berlin");
    // Hourly ticks from noon to noon: 11 and 13 of them fall into the second day's morning.
    EXPECT_EQ(app_after(hourly(local(2026, 3, 28, 12), 23)),
              "app 7: used 12/0/12, days [0:12] next 1\n");
    EXPECT_EQ(app_after(hourly(local(2026, 10, 24, 12), 25)),
              "app 7: used 14/0/12, days [0:12] next 1\n");
    // Beirut: Sunday, 29 March 2026 starts at 01:00; Saturday, 24 October 2026 has 23:00 twice.
    world::set_zone("Asia/Beirut");
    EXPECT_EQ(app_after(hourly(local(2026, 3, 29, 1) - 7200, 4)),
              "app 7: used 3/0/2, days [0:2] next 1\n");
    EXPECT_EQ(app_after(hourly(local(2026, 10, 25) - 7200, 4)),
              "app 7: used 3/0/2, days [0:2] next 1\n");
}

TEST_F(Rollover, FinishesADayAgainWhenTheClockIsSetBackOverMidnight) {
    // Over midnight, set back before it, and over it again: three finished days, and going from
    // Thursday to Wednesday ends a week.
    EXPECT_EQ(app_after({wednesday, thursday, wednesday - 60, thursday + 60}),
              "app 7: used 1/1/2, days [0:1 1:1 2:1] next 3\n");
}

TEST_F(Rollover, FinishesOneDayHoweverFarTheClockJumps) {
    EXPECT_EQ(app_after({local(2026, 3, 4), local(2026, 5, 20), local(2026, 5, 20, 0, 1)}),
              "app 7: used 2/1/0, days [0:1] next 1\n");
}

TEST_F(Rollover, WrapsTheRingOverForTwoMonthsOfDays) {
    std::vector<time_t> ticks;
    for (int day = 0; day <= 60; ++day)
        ticks.push_back(local(2026, 3, 1 + day));
    const std::string app = app_after(ticks);
    EXPECT_EQ(app.substr(app.rfind("next")), "next 0\n");
    // 30 April 2026 is a Thursday: four finished days. The months before it never started on a
    // Sunday, so "this month" still counts from 1 March.
    EXPECT_EQ(app.substr(0, app.find(", days")), "app 7: used 1/4/56");
}

} // namespace
