#include "usage/rollover.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include "core/list.h"
#include "store/store.h"

#include <gtest/gtest.h>

namespace {

using world::local;
using world::make_policy;
using world::make_profile;
using world::make_usage;

class Rollover : public testing::Test {
protected:
    void SetUp() override { world::reset(); }

    /// Rolls a profile over at an instant that is also the clock's.
    static void roll(config_user_profile_t *profile, time_t last, time_t now) {
        profile->last_collect_ts = last;
        world::set_now(now);
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_profile_rollover(profile, now);
        profile->last_collect_ts = world::default_now;
    }
};

/// Wednesday to Thursday in UTC, and the two nights that end a week.
const time_t wednesday = 1'772'668'799; // 4 March 2026, 23:59:59
const time_t thursday = wednesday + 1;

config_app_usage_t *app_of(config_user_profile_t *profile, int32_t app_id) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_find_app_usage(&profile->app_stat_list, app_id);
}

void set_used(config_user_profile_t *profile, int32_t daily, int32_t weekly, int32_t monthly) {
    profile->daily_used = daily;
    profile->weekly_used = weekly;
    profile->monthly_used = monthly;
}

TEST_F(Rollover, LeavesAProfileAloneUntilTheDayHasChanged) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    set_used(profile, 5, 6, 7);
    profile->daily_extend = 30;
    profile->blocked = 1;
    make_usage(profile, {{10, 4}});
    const std::string before = world::render(*profile);
    roll(profile, wednesday - 3600, wednesday);
    EXPECT_EQ(world::render(*profile), before);
    // A month to the day counts as the same day.
    roll(profile, local(2026, 3, 5, 10), local(2026, 4, 5, 10));
    EXPECT_EQ(world::render(*profile), before);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Rollover, MovesADayIntoTheWeekAndTheRing) {
    config_user_profile_t *profile = make_profile(3);
    set_used(profile, 5, 60, 700);
    profile->daily_extend = 30;
    make_usage(profile, {{10, 4}, {20, 0}});
    roll(profile, wednesday, thursday);
    EXPECT_EQ(world::render(*profile),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 0/65/700, blocked 0, "
              "collected +0, apps 2, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 0/4/0, blocked 0, days [0:4] next 1\n"
              "  app 20: used 0/0/0, blocked 0, days [] next 1\n");
    EXPECT_EQ(world::trace(), "");
}

struct calendar_case_t {
    const char *name;
    int last[6];
    int now[6];
    const char *profile; ///< starts from 5/60/700
    const char *app;     ///< starts from 4/50/600, ring index 29
};

const calendar_case_t calendar[] = {
    {"a day", {2026, 3, 4, 23, 59, 0}, {2026, 3, 5, 0, 0, 0}, "0/65/700", "0/54/600"},
    {"a week", {2026, 3, 7, 23, 59, 0}, {2026, 3, 8, 0, 0, 0}, "0/0/765", "0/0/654"},
    {"a month in mid-week",
     {2026, 3, 31, 23, 59, 0},
     {2026, 4, 1, 0, 0, 0},
     "0/65/700",
     "0/54/600"},
    {"a week and a month", {2026, 2, 28, 23, 59, 0}, {2026, 3, 1, 0, 0, 0}, "0/0/0", "0/0/0"},
    {"a year in mid-week",
     {2025, 12, 31, 23, 59, 0},
     {2026, 1, 1, 0, 0, 0},
     "0/65/700",
     "0/54/600"},
    {"a week and a year", {2022, 12, 31, 23, 59, 0}, {2023, 1, 1, 0, 0, 0}, "0/0/0", "0/0/0"},
    {"into 29 February", {2024, 2, 28, 23, 59, 0}, {2024, 2, 29, 0, 0, 0}, "0/65/700", "0/54/600"},
    {"out of 29 February", {2024, 2, 29, 23, 59, 0}, {2024, 3, 1, 0, 0, 0}, "0/65/700", "0/54/600"},
    {"out of 28 February", {2025, 2, 28, 23, 59, 0}, {2025, 3, 1, 0, 0, 0}, "0/65/700", "0/54/600"},
    {"back over midnight", {2026, 3, 5, 0, 1, 0}, {2026, 3, 4, 23, 58, 0}, "0/0/765", "0/0/654"},
    {"back over a Sunday's start",
     {2026, 3, 8, 0, 1, 0},
     {2026, 3, 7, 23, 58, 0},
     "0/65/700",
     "0/54/600"},
    {"back over a month's start",
     {2026, 4, 1, 0, 1, 0},
     {2026, 3, 31, 23, 58, 0},
     "0/0/0",
     "0/0/0"},
    {"three days within a week",
     {2026, 3, 2, 10, 0, 0},
     {2026, 3, 5, 10, 0, 0},
     "0/65/700",
     "0/54/600"},
    {"six days", {2026, 3, 4, 10, 0, 0}, {2026, 3, 10, 10, 0, 0}, "0/0/765", "0/0/654"},
    {"a week to the weekday",
     {2026, 3, 4, 10, 0, 0},
     {2026, 3, 11, 10, 0, 0},
     "0/65/700",
     "0/54/600"},
    {"three months", {2026, 3, 4, 10, 0, 0}, {2026, 6, 9, 10, 0, 0}, "0/0/0", "0/0/0"},
    {"three months to a later weekday",
     {2026, 3, 4, 10, 0, 0},
     {2026, 6, 6, 10, 0, 0},
     "0/65/700",
     "0/54/600"},
};

std::string used(int32_t daily, int32_t weekly, int32_t monthly) {
    return std::to_string(daily) + "/" + std::to_string(weekly) + "/" + std::to_string(monthly);
}

TEST_F(Rollover, ClosesWeeksAndMonthsWhereTheyEndTogether) {
    for (const char *zone : {"UTC", "Europe/Berlin", "America/Santiago"}) {
        world::set_zone(zone);
        for (const calendar_case_t &c : calendar) {
            SCOPED_TRACE(std::string(c.name) + " in " + zone);
            config_user_profile_t *profile = make_profile(3);
            set_used(profile, 5, 60, 700);
            make_usage(profile, {{10, 4}});
            config_app_usage_t *app = app_of(profile, 10);
            app->weekly_used = 50;
            app->monthly_used = 600;
            app->next_day_idx = 29;
            roll(profile, local(c.last), local(c.now));
            EXPECT_EQ(used(profile->daily_used, profile->weekly_used, profile->monthly_used),
                      c.profile);
            EXPECT_EQ(world::render(*app),
                      std::string("app 10: used ") + c.app + ", blocked 0, days [29:4] next 0");
            world::reset();
            world::set_zone(zone);
        }
    }
}

TEST_F(Rollover, TakesTheNewDaysWeekdayLimit) {
    config_user_profile_t *profile = make_profile(3);
    const mutex_guard lock(utm_app_config_mutex);
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.limit = 100 + entry.day;
    for (int day = 1; day <= 7; ++day) { // 1 March 2026 is a Sunday
        profile->last_collect_ts = local(2026, 3, day) - 1;
        world::set_now(local(2026, 3, day));
        utm_app_profile_rollover(profile, local(2026, 3, day));
        EXPECT_EQ(profile->daily_limit, 100 + day - 1);
    }
}

TEST_F(Rollover, ReadsTheWeekdayFromTheClockAndNotFromTheTick) {
    config_user_profile_t *profile = make_profile(3);
    const mutex_guard lock(utm_app_config_mutex);
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.limit = 100 + entry.day;
    profile->last_collect_ts = wednesday;
    world::set_now(thursday + 24 * 60 * 60); // the tick started a day ago
    utm_app_profile_rollover(profile, thursday);
    EXPECT_EQ(profile->daily_limit, 105);
}

TEST_F(Rollover, KeepsTheLimitWhenTheWeekdayHasNoEntry) {
    config_user_profile_t *profile = make_profile(3);
    profile->daily_limit = 77;
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_weekday_limit_t &entry : weekdays_of(profile))
            if (entry.day == 4)
                entry.day = 9;
    }
    roll(profile, wednesday, thursday);
    EXPECT_EQ(profile->daily_limit, 77);
}

TEST_F(Rollover, UnblocksAProfileWithDevicesEvenWhenItIsNotBlocked) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    roll(profile, wednesday, thursday);
    EXPECT_EQ(world::trace(), "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n");
}

TEST_F(Rollover, UnblocksABlockedProfileWithDevicesTwice) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    profile->blocked = 1;
    roll(profile, wednesday, thursday);
    EXPECT_EQ(profile->blocked, 0);
    EXPECT_EQ(world::trace(), "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n"
                              "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n");
}

TEST_F(Rollover, ClearsTheBlockOfAProfileWithoutDevicesInSilence) {
    config_user_profile_t *profile = make_profile(3);
    profile->blocked = 1;
    roll(profile, wednesday, thursday);
    EXPECT_EQ(profile->blocked, 0);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Rollover, ReleasesLimitedApplicationsAndKeepsBlockedOnes) {
    config_user_profile_t *profile = make_profile(3, {world::tablet, world::phone});
    make_usage(profile, {{10, 4}, {20, 5}, {30, 6}, {40, 7}});
    make_policy(
        4,
        {{10, POLICY_ACTION_LIMIT, 4}, {20, POLICY_ACTION_BLOCK, 0}, {40, POLICY_ACTION_LIMIT, 9}},
        profile);
    for (const int32_t app_id : {10, 20, 30}) // 30 is blocked without a rule, 40 is not blocked
        app_of(profile, app_id)->blocked = 1;
    roll(profile, wednesday, thursday);
    EXPECT_EQ(world::render(*profile),
              "profile 3: devices 2 [001122334455 AABBCCDDEE0F ], enabled 0, limit 1440 + 0, "
              "used 0/0/0, blocked 0, collected +0, apps 4, policy 4\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 0/4/0, blocked 0, days [0:4] next 1, rule 1/4\n"
              "  app 20: used 0/5/0, blocked 1, days [0:5] next 1, rule 2/0\n"
              "  app 30: used 0/6/0, blocked 1, days [0:6] next 1\n"
              "  app 40: used 0/7/0, blocked 0, days [0:7] next 1, rule 1/9\n");
    EXPECT_EQ(world::trace(), "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 10 0\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 10 0\n");
}

TEST_F(Rollover, ReleasesALimitedApplicationOfAProfileWithoutDevicesInSilence) {
    config_user_profile_t *profile = make_profile(3);
    make_usage(profile, {{10, 4}});
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 4}}, profile);
    app_of(profile, 10)->blocked = 1;
    roll(profile, wednesday, thursday);
    EXPECT_EQ(world::render(*app_of(profile, 10)),
              "app 10: used 0/4/0, blocked 0, days [0:4] next 1, rule 1/4");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Rollover, SaturatesEveryFigure) {
    struct {
        int32_t from[3];
        const char *day;  ///< after a day that ends no week
        const char *week; ///< after a day that ends one
    } const cases[] = {
        {{1, int32_max, 5}, "0/2147483647/5", "0/0/2147483647"},
        {{int32_max, 1, 5}, "0/2147483647/5", "0/0/2147483647"},
        {{int32_max, int32_max, int32_max}, "0/2147483647/2147483647", "0/0/2147483647"},
        {{-1, int32_min, 5}, "0/-2147483648/5", "0/0/-2147483643"},
        {{int32_min, int32_min, int32_min}, "0/-2147483648/-2147483648", "0/0/-2147483648"},
        {{2, 3, int32_max}, "0/5/2147483647", "0/0/2147483647"},
    };
    for (const auto &c : cases)
        for (const bool is_week : {false, true}) {
            config_user_profile_t *profile = make_profile(3);
            set_used(profile, c.from[0], c.from[1], c.from[2]);
            make_usage(profile, {{10, c.from[0]}});
            config_app_usage_t *app = app_of(profile, 10);
            app->weekly_used = c.from[1];
            app->monthly_used = c.from[2];
            const time_t now = is_week ? local(2026, 3, 8) : thursday;
            roll(profile, now - 1, now);
            const std::string expected = is_week ? c.week : c.day;
            EXPECT_EQ(used(profile->daily_used, profile->weekly_used, profile->monthly_used),
                      expected);
            EXPECT_EQ(used(app->daily_used, app->weekly_used, app->monthly_used), expected);
            EXPECT_EQ(app->prev_30_days[0], c.from[0]);
            world::reset();
        }
}

} // namespace
