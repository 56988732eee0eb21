#include "usage/limits.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

using world::make_profile;

/// Each call is refused: the profile stays as it was, and the log says why.
class LimitRefusals : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        world::set_active(true);
        profile = make_profile(5, {world::phone});
        profile->daily_limit_enable = 1;
        profile->daily_extend = 7;
    }

    config_user_profile_t *profile = nullptr;
};

TEST_F(LimitRefusals, AnEnableFlagIsZeroOrOne) {
    const std::string before = world::render(*profile);
    for (const int32_t enable : {2, -1, int32_min, int32_max})
        for (const int32_t id : {5, 6}) {
            EXPECT_EQ(utm_app_set_daily_limit_enable(id, enable), -1) << enable;
            EXPECT_EQ(world::trace(),
                      "log set daily limit for profile " + std::to_string(id) + " failed\n");
        }
    EXPECT_EQ(world::render(*profile), before);
}

TEST_F(LimitRefusals, ADailyLimitIsOneMinuteToOneDay) {
    const std::string before = world::render(*profile);
    for (const int32_t minutes : {0, 1441, -1, int32_min, int32_max})
        for (const int32_t id : {5, 6}) {
            EXPECT_EQ(utm_app_set_daily_limit(id, minutes), -1) << minutes;
            EXPECT_EQ(world::trace(), "log Set daily limit " + std::to_string(minutes) +
                                          " for profile " + std::to_string(id) +
                                          " failed because range error\n");
        }
    EXPECT_EQ(world::render(*profile), before);
}

struct refused_weekday_t {
    int32_t weekday;
    int32_t minutes;
    const char *line;
};

TEST_F(LimitRefusals, AWeekdaysMinutesAreCheckedBeforeTheDay) {
    const refused_weekday_t cases[] = {
        {3, 0, "Set weekday daily limit 0 for profile 5"},
        {3, 1441, "Set weekday daily limit 1441 for profile 5"},
        {3, int32_min, "Set weekday daily limit -2147483648 for profile 5"},
        {9, 0, "Set weekday daily limit 0 for profile 5"},
        {7, 60, "Set weekday 7 for profile 5"},
        {-1, 60, "Set weekday -1 for profile 5"},
        {int32_max, 60, "Set weekday 2147483647 for profile 5"},
        {int32_min, 60, "Set weekday -2147483648 for profile 5"},
    };
    const std::string before = world::render(*profile);
    for (const refused_weekday_t &c : cases) {
        EXPECT_EQ(utm_app_set_weekday_daily_limit(5, c.weekday, c.minutes), -1);
        EXPECT_EQ(world::trace(), std::string("log ") + c.line + " failed because range error\n");
    }
    EXPECT_EQ(world::render(*profile), before);
}

TEST_F(LimitRefusals, ABonusIsOneTo360Minutes) {
    const std::string before = world::render(*profile);
    for (const int32_t minutes : {0, 361, -1, int32_min, int32_max})
        for (const int32_t id : {5, 6}) {
            EXPECT_EQ(utm_app_add_extend(id, minutes), -1) << minutes;
            EXPECT_EQ(world::trace(), "log Add extend " + std::to_string(minutes) +
                                          " for profile " + std::to_string(id) +
                                          " failed because range error\n");
        }
    EXPECT_EQ(world::render(*profile), before);
}

TEST_F(LimitRefusals, AnUnknownProfileIsNamedByTheBonusAloneAmongTheSetters) {
    EXPECT_EQ(utm_app_set_daily_limit_enable(6, 1), -1);
    EXPECT_EQ(utm_app_set_daily_limit(6, 60), -1);
    EXPECT_EQ(utm_app_set_weekday_daily_limit(6, 3, 60), -1);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(utm_app_add_extend(6, 30), -1);
    EXPECT_EQ(utm_app_reset_extend(6), -1);
    EXPECT_EQ(world::trace(),
              "log Add extend 30 to profile 6 failed because profile is not existed\n"
              "log Reset profile 6 extend failed because profile is not existed\n");
}

TEST_F(LimitRefusals, AGetterLeavesItsResultAloneWithoutTheProfile) {
    int32_t value = 99;
    EXPECT_EQ(utm_app_get_daily_limit_enable(6, &value), -1);
    EXPECT_EQ(utm_app_get_daily_limit(6, &value), -1);
    EXPECT_EQ(utm_app_get_weekday_daily_limit(6), nullptr);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(utm_app_get_extend(6, &value), -1);
    EXPECT_EQ(world::trace(),
              "log Get extended for profile 6 failed because profile is not existed\n");
    EXPECT_EQ(value, 99);
}

TEST_F(LimitRefusals, TheEnableFlagNeedsAPlaceToGo) {
    EXPECT_EQ(utm_app_get_daily_limit_enable(5, nullptr), -1);
    EXPECT_EQ(utm_app_get_daily_limit_enable(6, nullptr), -1);
    EXPECT_EQ(world::trace(), "log get daily limit for profile 5 enable failed\n"
                              "log get daily limit for profile 6 enable failed\n");
}

TEST_F(LimitRefusals, TheWeekdaysNeedMemory) {
    const std::string before = world::render(*profile);
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_get_weekday_daily_limit(5), nullptr);
    EXPECT_EQ(world::trace(),
              "log Get weekday daily limit of profile 5 failed because malloc failed\n");
    EXPECT_EQ(world::render(*profile), before);
}

TEST_F(LimitRefusals, TheGettersReadAKnownProfile) {
    int32_t value = 99;
    profile->daily_limit = 60;
    EXPECT_EQ(utm_app_get_daily_limit_enable(5, &value), 0);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(utm_app_get_daily_limit(5, &value), 0);
    EXPECT_EQ(value, 60);
    EXPECT_EQ(utm_app_get_extend(5, &value), 0);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(world::trace(), "");
}

/// "0:1440 1:1440 ...", as the getter hands the pairs out.
std::string weekdays(int32_t profile_id) {
    const heap_ptr<config_weekday_pair_t> pairs(utm_app_get_weekday_daily_limit(profile_id));
    std::string text;
    for (int i = 0; i < 7; ++i)
        text += (i == 0 ? "" : " ") + std::to_string(pairs.get()[i].day) + ":" +
                std::to_string(pairs.get()[i].limit);
    return text;
}

TEST_F(LimitRefusals, WeekdaysComeInListOrderAndMissingOnesAsZero) {
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.limit = 100 + entry.day;
    EXPECT_EQ(weekdays(5), "0:100 1:101 2:102 3:103 4:104 5:105 6:106");
    world::fail_allocation(3); // the record, then Sunday, then Monday
    make_profile(6);
    EXPECT_EQ(weekdays(6), "0:1440 2:1440 3:1440 4:1440 5:1440 6:1440 0:0");
}

} // namespace
