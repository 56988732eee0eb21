#include "usage/reports.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using world::local;
using world::make_profile;
using world::make_usage;

class Reports : public world_test {
protected:
    void SetUp() override {
        world::reset();
        profile = make_profile(5);
    }

    /// Profile 5, and its first usage record.
    config_user_profile_t *profile = nullptr;
    config_app_usage_t &app() { return *apps_of(profile).begin(); }
};

/// A record's minutes so many days ago: every sum of days is a number of its own.
int32_t minutes_of(int days_ago) {
    return days_ago == 30 ? 3 : 1 << days_ago;
}

int32_t minutes_of_days(int first, int last) {
    int32_t sum = 0;
    for (int days_ago = first; days_ago <= last; ++days_ago)
        sum += minutes_of(days_ago);
    return sum;
}

void fill_ring(config_app_usage_t *usage, int32_t next) {
    usage->next_day_idx = next;
    for (int32_t days_ago = 1; days_ago <= 30; ++days_ago)
        usage->prev_30_days[(next + 30 - days_ago) % 30] = minutes_of(days_ago);
}

std::string app_usage(int32_t profile_id, int32_t period) {
    int32_t count = 77;
    const heap_ptr<config_app_minutes_t> pairs(utm_app_get_app_usage(profile_id, period, &count));
    return world::render(pairs.get(), count);
}

/// The rows, each "app: minutes | minutes ..." without the zeros at its end.
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
        while (text.ends_with(" 0"))
            text.erase(text.size() - 2);
        text += "\n";
    }
    return text;
}

TEST_F(Reports, ReadTheCountersOfAProfileThatIsThere) {
    profile->daily_used = 1;
    profile->weekly_used = 2;
    profile->monthly_used = 3;
    int32_t used[] = {7, 8, 9};
    EXPECT_EQ(utm_app_get_usage(6, &used[0], &used[1], &used[2]), -1);
    EXPECT_EQ(std::vector(used, used + 3), (std::vector{7, 8, 9}));
    EXPECT_EQ(utm_app_get_usage(5, &used[0], &used[1], &used[2]), 0);
    EXPECT_EQ(std::vector(used, used + 3), (std::vector{1, 2, 3}));
    EXPECT_EQ(world::trace(),
              "log Get usage for profile 6 failed because profile is not existed\n");
}

// ---- A period ------------------------------------------------------------------------------

TEST_F(Reports, KnowEachPeriodOnEachWeekday) {
    make_usage(profile, {{10, 1}});
    app().weekly_used = 20;
    app().monthly_used = 300;
    for (const int32_t next : {0, 1, 13, 29}) {
        fill_ring(&app(), next);
        for (int weekday = 0; weekday < 7; ++weekday) {
            world::set_now(local(2026, 3, 1 + weekday));
            const auto expect = [&](int32_t period, int32_t minutes) {
                EXPECT_EQ(app_usage(5, period), "1: 10=" + std::to_string(minutes))
                    << "period " << period << ", weekday " << weekday << ", next " << next;
            };
            expect(0, 1);
            for (int32_t days_ago = 1; days_ago <= 30; ++days_ago)
                expect(days_ago, minutes_of(days_ago));
            expect(1000, 21);
            expect(1001, minutes_of_days(weekday + 1, weekday + 7));
            expect(1002, minutes_of_days(weekday + 8, weekday + 14));
            expect(1003, minutes_of_days(weekday + 15, weekday + 21));
            expect(2000, 321);
        }
    }
}

TEST_F(Reports, KnowNoOtherPeriod) {
    make_usage(profile, {{10, 1}});
    for (const int32_t period :
         {-1, 31, 32, 999, 1004, 1005, 1999, 2001, 3000, int32_min, int32_max})
        EXPECT_EQ(app_usage(5, period), "none, -1") << period;
    for (const int32_t period : {0, 30, 1000, 2000})
        EXPECT_EQ(app_usage(6, period), "none, -1") << period;
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Reports, RankApplicationsByMinutes) {
    make_usage(profile, {{10, 5}, {20, 300}, {30, -2}, {40, int32_max}, {50, 0}});
    EXPECT_EQ(app_usage(5, 0), "5: 40=2147483647 20=300 10=5 50=0 30=-2");
}

TEST_F(Reports, GiveAPairOfZerosWithoutApplications) {
    EXPECT_EQ(app_usage(5, 0), "1: 0=0");
    EXPECT_EQ(app_usage(5, 2000), "1: 0=0");
    profile->app_count = 3; // an import of which no record was usable
    EXPECT_EQ(app_usage(5, 0), "1: 0=0");
}

TEST_F(Reports, PadOrCutARankingToTheApplicationCount) {
    make_usage(profile, {{10, 5}, {20, -6}});
    profile->app_count = 4;
    EXPECT_EQ(app_usage(5, 0), "4: 10=5 0=0 0=0 20=-6");
    EXPECT_EQ(prev_day(5, 7), "2\n10: 5 |\n20: -6 |\n");
    profile->app_count = 1;
    EXPECT_EQ(app_usage(5, 0), "1: 10=5");
}

TEST_F(Reports, SaturateThePeriodsThatAddUp) {
    make_usage(profile, {{10, int32_max}});
    const auto expect_every_sum = [&](const std::string &minutes) {
        for (const int32_t period : {1000, 1001, 1002, 1003, 2000})
            EXPECT_EQ(app_usage(5, period), "1: 10=" + minutes) << period;
        EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_WEEK),
                  "1\n10: " + minutes + " | " + minutes + " " + minutes + " " + minutes + "\n");
    };
    app().weekly_used = app().monthly_used = 1;
    std::fill_n(app().prev_30_days, 30, int32_max);
    expect_every_sum("2147483647");
    app().daily_used = int32_min;
    app().weekly_used = app().monthly_used = -1;
    std::fill_n(app().prev_30_days, 30, int32_min);
    expect_every_sum("-2147483648");
    // Only the end counts: a month that cancels itself out does not saturate on the way.
    app().weekly_used = int32_min;
    app().daily_used = app().monthly_used = int32_max;
    EXPECT_EQ(app_usage(5, 2000), "1: 10=2147483646");
}

TEST_F(Reports, NeedMemory) {
    make_usage(profile, {{10, 5}});
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

// ---- The days and weeks before --------------------------------------------------------------

TEST_F(Reports, GiveTodayAndThirtyDaysInListOrder) {
    make_usage(profile, {{20, 7}, {10, 9}});
    for (config_app_usage_t &usage : apps_of(profile))
        fill_ring(&usage, usage.app_id);
    std::string days;
    for (int days_ago = 1; days_ago <= 30; ++days_ago)
        days += " " + std::to_string(minutes_of(days_ago));
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY),
              "2\n20: 7 |" + days + "\n10: 9 |" + days + "\n");
}

TEST_F(Reports, GiveThisWeekAndThreeWeeksBefore) {
    make_usage(profile, {{10, 1}});
    fill_ring(&app(), 17);
    for (int weekday = 0; weekday < 7; ++weekday) {
        world::set_now(local(2026, 3, 1 + weekday));
        std::string expected = "1\n10: " + std::to_string(1 + minutes_of_days(1, weekday)) + " |";
        for (int day = weekday + 1; day < weekday + 21; day += 7)
            expected += " " + std::to_string(minutes_of_days(day, day + 6));
        EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_WEEK), expected + "\n") << weekday;
    }
}

TEST_F(Reports, GiveTodayAloneInAnyOtherMode) {
    make_usage(profile, {{10, 9}});
    fill_ring(&app(), 0);
    for (const int32_t mode : {2, -1, int32_min, int32_max})
        EXPECT_EQ(prev_day(5, mode), "1\n10: 9 |\n");
}

TEST_F(Reports, GiveNoRowsWithoutApplicationsOrTheProfile) {
    profile->app_count = 3;
    EXPECT_EQ(prev_day(5, UTM_APP_CONFIG_PREV_BY_DAY), "none, 0");
    EXPECT_EQ(prev_day(6, UTM_APP_CONFIG_PREV_BY_DAY), "none, 77");
    EXPECT_EQ(world::trace(), "");
}

} // namespace
