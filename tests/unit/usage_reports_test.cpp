#include "usage/reports.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using world::local;
using world::make_profile;
using world::make_usage;

class Reports : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

/// The first record's minutes k days ago become 2 to the power of k modulo 30: every sum of days
/// is a number of its own.
void fill_ring(config_user_profile_t *profile, int32_t next) {
    for (config_app_usage_t &usage : apps_of(profile)) {
        usage.next_day_idx = next;
        for (int32_t days_ago = 1; days_ago <= 30; ++days_ago)
            usage.prev_30_days[(next + 30 - days_ago) % 30] = days_ago == 30 ? 3 : 1 << days_ago;
    }
}

/// What `fill_ring` put down for the days first to last.
int32_t minutes_of_days(int first, int last) {
    int32_t sum = 0;
    for (int days_ago = first; days_ago <= last; ++days_ago)
        sum += days_ago == 30 ? 3 : 1 << days_ago;
    return sum;
}

/// "count: app=minutes ...", or "none, count".
std::string app_usage(int32_t profile_id, int32_t period) {
    int32_t count = 77;
    const heap_ptr<config_app_minutes_t> pairs(utm_app_get_app_usage(profile_id, period, &count));
    if (pairs == nullptr)
        return "none, " + std::to_string(count);
    std::string text = std::to_string(count) + ":";
    for (int32_t i = 0; i < count; ++i)
        text += " " + std::to_string(pairs.get()[i].app_id) + "=" +
                std::to_string(pairs.get()[i].minutes);
    return text;
}

std::string prev_day(int32_t profile_id, int32_t mode) {
    int32_t count = 77;
    const heap_ptr<config_prev_day_row_t> rows(
        utm_app_get_prev_day_usage(profile_id, mode, &count));
    if (rows == nullptr)
        return "none, " + std::to_string(count);
    std::string text = std::to_string(count) + "\n";
    for (int32_t i = 0; i < count; ++i) {
        const config_prev_day_row_t &row = rows.get()[i];
        text += std::to_string(row.app_id) + ": " + std::to_string(row.current) + " |";
        for (const int32_t minutes : row.previous)
            text += " " + std::to_string(minutes);
        text += "\n";
    }
    return text;
}

TEST_F(Reports, ReadAProfilesCounters) {
    config_user_profile_t *profile = make_profile(5);
    profile->daily_used = 1;
    profile->weekly_used = 2;
    profile->monthly_used = 3;
    int32_t daily = 0, weekly = 0, monthly = 0;
    EXPECT_EQ(utm_app_get_usage(5, &daily, &weekly, &monthly), 0);
    EXPECT_EQ(daily * 100 + weekly * 10 + monthly, 123);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Reports, LeaveTheCountersAloneWithoutTheProfile) {
    int32_t daily = 7, weekly = 8, monthly = 9;
    EXPECT_EQ(utm_app_get_usage(5, &daily, &weekly, &monthly), -1);
    EXPECT_EQ(daily * 100 + weekly * 10 + monthly, 789);
    EXPECT_EQ(world::trace(),
              "log Get usage for profile 5 failed because profile is not existed\n");
}

TEST_F(Reports, KnowEachPeriodOnEachWeekday) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 1}});
    config_app_usage_t &app = *apps_of(profile).begin();
    app.weekly_used = 20;
    app.monthly_used = 300;
    for (const int32_t next : {0, 1, 13, 29}) {
        fill_ring(profile, next);
        for (int weekday = 0; weekday < 7; ++weekday) {
            world::set_now(local(2026, 3, 1 + weekday));
            const auto expect = [&](int32_t period, int32_t minutes) {
                EXPECT_EQ(app_usage(5, period), "1: 10=" + std::to_string(minutes))
                    << "period " << period << ", weekday " << weekday << ", next " << next;
            };
            expect(0, 1);
            for (int32_t days_ago = 1; days_ago <= 30; ++days_ago)
                expect(days_ago, minutes_of_days(days_ago, days_ago));
            expect(1000, 21);
            expect(1001, minutes_of_days(weekday + 1, weekday + 7));
            expect(1002, minutes_of_days(weekday + 8, weekday + 14));
            expect(1003, minutes_of_days(weekday + 15, weekday + 21));
            expect(2000, 321);
        }
    }
}

TEST_F(Reports, KnowNoOtherPeriod) {
    make_usage(make_profile(5), {{10, 1}});
    for (const int32_t period :
         {-1, 31, 32, 999, 1004, 1005, 1999, 2001, 3000, int32_min, int32_max})
        EXPECT_EQ(app_usage(5, period), "none, -1") << period;
    for (const int32_t period : {0, 30, 1000, 2000})
        EXPECT_EQ(app_usage(6, period), "none, -1") << period;
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Reports, RankApplicationsByMinutes) {
    make_usage(make_profile(5), {{10, 5}, {20, 300}, {30, -2}, {40, int32_max}, {50, 0}});
    EXPECT_EQ(app_usage(5, 0), "5: 40=2147483647 20=300 10=5 50=0 30=-2");
}

TEST_F(Reports, GiveAPairOfZerosWithoutApplications) {
    config_user_profile_t *profile = make_profile(5);
    EXPECT_EQ(app_usage(5, 0), "1: 0=0");
    EXPECT_EQ(app_usage(5, 2000), "1: 0=0");
    profile->app_count = 3; // an import of which no record was usable
    EXPECT_EQ(app_usage(5, 0), "1: 0=0");
}

TEST_F(Reports, PadARankingToTheApplicationCount) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 5}, {20, -6}});
    profile->app_count = 4;
    EXPECT_EQ(app_usage(5, 0), "4: 10=5 0=0 0=0 20=-6");
    EXPECT_EQ(prev_day(5, 7).substr(0, 2), "2\n");
}

TEST_F(Reports, CutARankingAtTheApplicationCount) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 5}, {20, 6}});
    profile->app_count = 1;
    EXPECT_EQ(app_usage(5, 0), "1: 10=5");
}

TEST_F(Reports, SaturateThePeriodsThatAddUp) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, int32_max}});
    config_app_usage_t &app = *apps_of(profile).begin();
    app.weekly_used = 1;
    app.monthly_used = 1;
    std::fill_n(app.prev_30_days, 30, int32_max);
    for (const int32_t period : {1000, 1001, 1002, 1003, 2000})
        EXPECT_EQ(app_usage(5, period), "1: 10=2147483647") << period;
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_WEEK).substr(0, 58),
              "1\n10: 2147483647 | 2147483647 2147483647 2147483647 0 0 0 ");
    std::fill_n(app.prev_30_days, 30, int32_min);
    app.daily_used = int32_min;
    app.weekly_used = app.monthly_used = -1;
    for (const int32_t period : {1000, 1001, 1002, 1003, 2000})
        EXPECT_EQ(app_usage(5, period), "1: 10=-2147483648") << period;
    // Only the end counts: a month that cancels itself out does not saturate on the way.
    app.weekly_used = int32_min;
    app.monthly_used = int32_max;
    app.daily_used = int32_max;
    EXPECT_EQ(app_usage(5, 2000), "1: 10=2147483646");
}

TEST_F(Reports, NeedMemory) {
    make_usage(make_profile(5), {{10, 5}});
    const std::string before = world::render_store();
    world::fail_allocation(1);
    EXPECT_EQ(app_usage(5, 0), "none, -1");
    world::fail_allocation(1);
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY), "none, 1");
    EXPECT_EQ(world::trace(),
              "log Get app usage of profile 5 failed because malloc failed\n"
              "log Get prev day usage for profile 5 failed because malloc failed\n");
    EXPECT_EQ(world::render_store(), before);
}

TEST_F(Reports, GiveTodayAndThirtyDaysInListOrder) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{20, 7}, {10, 9}});
    (*apps_of(profile).begin()).prev_30_days[28] = 5;
    for (config_app_usage_t &app : apps_of(profile)) {
        app.prev_30_days[29] = app.app_id + 1;
        app.prev_30_days[0] = app.app_id + 2;
    }
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY),
              "2\n"
              "20: 7 | 21 5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 22\n"
              "10: 9 | 11 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 12\n");
    for (config_app_usage_t &app : apps_of(profile))
        app.next_day_idx = 29;
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY),
              "2\n"
              "20: 7 | 5 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 22 21\n"
              "10: 9 | 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 12 11\n");
}

TEST_F(Reports, GiveThisWeekAndThreeWeeksBefore) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 1}});
    fill_ring(profile, 17);
    for (int weekday = 0; weekday < 7; ++weekday) {
        world::set_now(local(2026, 3, 1 + weekday));
        std::string expected = "1\n10: " + std::to_string(1 + minutes_of_days(1, weekday)) + " |";
        for (int week = 0; week < 3; ++week)
            expected += " " + std::to_string(
                                  minutes_of_days(weekday + 7 * week + 1, weekday + 7 * week + 7));
        for (int i = 3; i < 30; ++i)
            expected += " 0";
        EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_WEEK), expected + "\n") << weekday;
    }
}

TEST_F(Reports, GiveTodayAloneInAnyOtherMode) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 9}});
    fill_ring(profile, 0);
    for (const int32_t mode : {2, -1, int32_min, int32_max})
        EXPECT_EQ(prev_day(5, mode),
                  "1\n10: 9 | 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST_F(Reports, GiveNoRowsWithoutApplicationsOrTheProfile) {
    make_profile(5)->app_count = 3;
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY), "none, 0");
    EXPECT_EQ(prev_day(6, UTM_APP_CONFIG_PREV_BY_DAY), "none, 77");
    EXPECT_EQ(world::trace(), "");
}

} // namespace
