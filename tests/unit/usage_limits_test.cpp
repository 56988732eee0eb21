#include "usage/limits.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

using world::make_profile;

// The clock stands on a Wednesday, day 3.
class Limits : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

/// A profile's state before a setter is called.
struct start_t {
    bool active;
    int32_t enabled;
    int32_t blocked;
    int32_t limit;
    int32_t extend;
    int32_t used;
};

config_user_profile_t *start(const start_t &from) {
    world::reset();
    config_user_profile_t *profile = make_profile(5, {world::phone});
    world::set_active(from.active);
    profile->daily_limit_enable = from.enabled;
    profile->blocked = from.blocked;
    profile->daily_limit = from.limit;
    profile->daily_extend = from.extend;
    profile->daily_used = from.used;
    return profile;
}

/// What the setters may change: "enabled 1, limit 60 + 0, blocked 0, days 60 60 60 60 60 60 60".
std::string state_of(config_user_profile_t *profile) {
    std::string text = "enabled " + std::to_string(profile->daily_limit_enable) + ", limit " +
                       std::to_string(profile->daily_limit) + " + " +
                       std::to_string(profile->daily_extend) + ", blocked " +
                       std::to_string(profile->blocked) + ", days";
    for (const config_weekday_limit_t &day : weekdays_of(profile))
        text += " " + std::to_string(day.limit);
    return text;
}

const std::string block_event = "event block profile 5\n"
                                "log send event: block profile 5 to use network\n";
const std::string unblock_event = "event unblock profile 5\n"
                                  "log send event: unblock profile 5 to use network\n";
const std::string all_day = ", days 1440 1440 1440 1440 1440 1440 1440";

struct enable_case_t {
    const char *name;
    start_t from;
    int32_t enable;
    const char *state;
    std::string event;
};

TEST_F(Limits, EnablingBlocksAndDisablingUnblocks) {
    const enable_case_t cases[] = {
        {"on, below", {true, 0, 0, 60, 0, 59}, 1, "enabled 1, limit 60 + 0, blocked 0", ""},
        {"on, equal",
         {true, 0, 0, 60, 0, 60},
         1,
         "enabled 1, limit 60 + 0, blocked 1",
         block_event},
        {"on, above",
         {true, 0, 0, 60, 30, 91},
         1,
         "enabled 1, limit 60 + 30, blocked 1",
         block_event},
        {"on, below with bonus",
         {true, 0, 0, 60, 30, 89},
         1,
         "enabled 1, limit 60 + 30, blocked 0",
         ""},
        {"on, blocked", {true, 0, 1, 60, 0, 60}, 1, "enabled 1, limit 60 + 0, blocked 1", ""},
        {"on, blocked but below",
         {true, 0, 1, 60, 0, 5},
         1,
         "enabled 1, limit 60 + 0, blocked 1",
         ""},
        {"on, feature off", {false, 0, 0, 60, 0, 60}, 1, "enabled 1, limit 60 + 0, blocked 0", ""},
        {"on again", {true, 1, 0, 60, 0, 60}, 1, "enabled 1, limit 60 + 0, blocked 0", ""},
        {"off, blocked",
         {true, 1, 1, 60, 0, 60},
         0,
         "enabled 0, limit 60 + 0, blocked 0",
         unblock_event},
        {"off, not blocked", {true, 1, 0, 60, 0, 5}, 0, "enabled 0, limit 60 + 0, blocked 0", ""},
        {"off, feature off", {false, 1, 1, 60, 0, 60}, 0, "enabled 0, limit 60 + 0, blocked 1", ""},
        {"off again", {true, 0, 1, 60, 0, 60}, 0, "enabled 0, limit 60 + 0, blocked 1", ""},
    };
    for (const enable_case_t &c : cases) {
        config_user_profile_t *profile = start(c.from);
        EXPECT_EQ(utm_app_set_daily_limit_enable(5, c.enable), 0) << c.name;
        EXPECT_EQ(state_of(profile), c.state + all_day) << c.name;
        EXPECT_EQ(world::trace(), c.event + "log Set daily limit enable " +
                                      std::to_string(c.enable) + " for profile 5 success\n")
            << c.name;
    }
}

struct limit_case_t {
    const char *name;
    start_t from;
    int32_t minutes;
    const char *state;
    std::string event;
};

TEST_F(Limits, ADailyLimitHoldsForEveryDayAndAtOnce) {
    const limit_case_t cases[] = {
        {"raised",
         {true, 1, 1, 60, 0, 60},
         61,
         "enabled 1, limit 61 + 0, blocked 0, days 61 61 61 61 61 61 61",
         unblock_event},
        {"raised, not blocked",
         {true, 1, 0, 60, 0, 5},
         1440,
         "enabled 1, limit 1440 + 0, blocked 0, days 1440 1440 1440 1440 1440 1440 1440",
         ""},
        {"raised too little",
         {true, 1, 1, 60, 0, 80},
         80,
         "enabled 1, limit 80 + 0, blocked 1, days 80 80 80 80 80 80 80",
         ""},
        {"lowered",
         {true, 1, 0, 60, 0, 50},
         50,
         "enabled 1, limit 50 + 0, blocked 1, days 50 50 50 50 50 50 50",
         block_event},
        {"lowered, above with bonus",
         {true, 1, 0, 60, 5, 50},
         46,
         "enabled 1, limit 46 + 5, blocked 0, days 46 46 46 46 46 46 46",
         ""},
        {"lowered to 1",
         {true, 1, 0, 60, 0, 1},
         1,
         "enabled 1, limit 1 + 0, blocked 1, days 1 1 1 1 1 1 1",
         block_event},
        {"not enabled",
         {true, 0, 0, 60, 0, 50},
         50,
         "enabled 0, limit 50 + 0, blocked 0, days 50 50 50 50 50 50 50",
         ""},
        {"feature off",
         {false, 1, 0, 60, 0, 50},
         50,
         "enabled 1, limit 50 + 0, blocked 0, days 50 50 50 50 50 50 50",
         ""},
        // The same limit again decides nothing, but it is every weekday's now.
        {"unchanged",
         {true, 1, 0, 60, 0, 60},
         60,
         "enabled 1, limit 60 + 0, blocked 0, days 60 60 60 60 60 60 60",
         ""},
    };
    for (const limit_case_t &c : cases) {
        config_user_profile_t *profile = start(c.from);
        EXPECT_EQ(utm_app_set_daily_limit(5, c.minutes), 0) << c.name;
        EXPECT_EQ(state_of(profile), c.state) << c.name;
        EXPECT_EQ(world::trace(), c.event + "log Set daily limit to " + std::to_string(c.minutes) +
                                      " for profile 5 success\n")
            << c.name;
    }
}

struct weekday_case_t {
    const char *name;
    start_t from;
    int32_t weekday;
    int32_t minutes;
    const char *state;
    std::string event;
};

TEST_F(Limits, AWeekdaysLimitHoldsAtOnceOnItsOwnDay) {
    const weekday_case_t cases[] = {
        {"another day",
         {true, 1, 0, 60, 0, 50},
         2,
         30,
         "enabled 1, limit 60 + 0, blocked 0, days 1440 1440 30 1440 1440 1440 1440",
         ""},
        {"Sunday",
         {true, 1, 0, 60, 0, 50},
         0,
         1,
         "enabled 1, limit 60 + 0, blocked 0, days 1 1440 1440 1440 1440 1440 1440",
         ""},
        {"Saturday",
         {true, 1, 0, 60, 0, 50},
         6,
         1,
         "enabled 1, limit 60 + 0, blocked 0, days 1440 1440 1440 1440 1440 1440 1",
         ""},
        {"today, lowered",
         {true, 1, 0, 60, 0, 50},
         3,
         50,
         "enabled 1, limit 50 + 0, blocked 1, days 1440 1440 1440 50 1440 1440 1440",
         block_event},
        {"today, raised",
         {true, 1, 1, 60, 0, 60},
         3,
         61,
         "enabled 1, limit 61 + 0, blocked 0, days 1440 1440 1440 61 1440 1440 1440",
         unblock_event},
        {"today, bonus",
         {true, 1, 0, 60, 30, 50},
         3,
         21,
         "enabled 1, limit 21 + 30, blocked 0, days 1440 1440 1440 21 1440 1440 1440",
         ""},
        {"today, not enabled",
         {true, 0, 0, 60, 0, 50},
         3,
         50,
         "enabled 0, limit 50 + 0, blocked 0, days 1440 1440 1440 50 1440 1440 1440",
         ""},
        {"today, feature off",
         {false, 1, 0, 60, 0, 50},
         3,
         50,
         "enabled 1, limit 50 + 0, blocked 0, days 1440 1440 1440 50 1440 1440 1440",
         ""},
        // The entry has that limit already, so today's stays what it was set to.
        {"today, unchanged",
         {true, 1, 0, 60, 0, 60},
         3,
         1440,
         "enabled 1, limit 60 + 0, blocked 0, days 1440 1440 1440 1440 1440 1440 1440",
         ""},
    };
    for (const weekday_case_t &c : cases) {
        config_user_profile_t *profile = start(c.from);
        EXPECT_EQ(utm_app_set_weekday_daily_limit(5, c.weekday, c.minutes), 0) << c.name;
        EXPECT_EQ(state_of(profile), c.state) << c.name;
        EXPECT_EQ(world::trace(), c.event + "log Set weekday daily limit to " +
                                      std::to_string(c.minutes) + " for profile 5 success\n")
            << c.name;
    }
}

TEST_F(Limits, TodayIsTheLocalDay) {
    config_user_profile_t *profile = make_profile(5);
    world::set_now(world::local(2026, 3, 4, 23, 30));
    world::set_zone("Europe/Berlin"); // where it is Thursday already
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 3, 30), 0);
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 4, 40), 0);
    EXPECT_EQ(state_of(profile),
              "enabled 0, limit 40 + 0, blocked 0, days 1440 1440 1440 30 40 1440 1440");
}

TEST_F(Limits, ABonusFreesABlockedProfileAtOnce) {
    const limit_case_t cases[] = {
        {"enough",
         {true, 1, 1, 60, 0, 60},
         30,
         "enabled 1, limit 60 + 30, blocked 0",
         unblock_event},
        {"too little", {true, 1, 1, 60, 0, 61}, 1, "enabled 1, limit 60 + 1, blocked 1", ""},
        {"not blocked", {true, 1, 0, 60, 0, 5}, 360, "enabled 1, limit 60 + 360, blocked 0", ""},
        {"over, not blocked",
         {true, 1, 0, 60, 0, 70},
         10,
         "enabled 1, limit 60 + 10, blocked 1",
         block_event},
        {"not enabled", {true, 0, 1, 60, 0, 60}, 30, "enabled 0, limit 60 + 30, blocked 1", ""},
        {"feature off", {false, 1, 1, 60, 0, 60}, 30, "enabled 1, limit 60 + 30, blocked 1", ""},
    };
    for (const limit_case_t &c : cases) {
        config_user_profile_t *profile = start(c.from);
        EXPECT_EQ(utm_app_add_extend(5, c.minutes), 0) << c.name;
        EXPECT_EQ(state_of(profile), c.state + all_day) << c.name;
        const std::string minutes = std::to_string(c.minutes);
        EXPECT_EQ(world::trace(),
                  c.event + "log Add extend " + minutes + " to profile 5, now " + minutes + "\n")
            << c.name;
    }
}

TEST_F(Limits, BonusesAddUpWithoutABoundButInt32) {
    config_user_profile_t *profile = make_profile(5);
    EXPECT_EQ(utm_app_add_extend(5, 360), 0);
    EXPECT_EQ(utm_app_add_extend(5, 360), 0);
    profile->daily_extend = int32_max - 5;
    EXPECT_EQ(utm_app_add_extend(5, 360), 0);
    EXPECT_EQ(world::trace(), "log Add extend 360 to profile 5, now 360\n"
                              "log Add extend 360 to profile 5, now 720\n"
                              "log Add extend 360 to profile 5, now 2147483647\n");
}

TEST_F(Limits, ABudgetSaturates) {
    config_user_profile_t *profile = start({true, 1, 1, 1440, int32_max - 360, int32_max - 1});
    EXPECT_EQ(utm_app_add_extend(5, 360), 0);
    EXPECT_EQ(profile->blocked, 0);
    profile->daily_used = int32_max;
    EXPECT_EQ(utm_app_set_daily_limit(5, 1), 0);
    EXPECT_EQ(profile->blocked, 1);
    EXPECT_EQ(utm_app_set_daily_limit_enable(5, 0), 0);
    EXPECT_EQ(utm_app_set_daily_limit_enable(5, 1), 0);
    EXPECT_EQ(profile->blocked, 1);
}

TEST_F(Limits, TakingTheBonusBackMayBlock) {
    const limit_case_t cases[] = {
        {"used between",
         {true, 1, 0, 60, 30, 75},
         0,
         "enabled 1, limit 60 + 0, blocked 1",
         block_event},
        {"used up to the limit",
         {true, 1, 0, 60, 30, 60},
         0,
         "enabled 1, limit 60 + 0, blocked 1",
         block_event},
        {"used less", {true, 1, 0, 60, 30, 59}, 0, "enabled 1, limit 60 + 0, blocked 0", ""},
        {"blocked for nothing",
         {true, 1, 1, 60, 0, 59},
         0,
         "enabled 1, limit 60 + 0, blocked 0",
         unblock_event},
        {"blocked", {true, 1, 1, 60, 30, 95}, 0, "enabled 1, limit 60 + 0, blocked 1", ""},
        {"not enabled", {true, 0, 0, 60, 30, 75}, 0, "enabled 0, limit 60 + 0, blocked 0", ""},
        {"feature off", {false, 1, 0, 60, 30, 75}, 0, "enabled 1, limit 60 + 0, blocked 0", ""},
    };
    for (const limit_case_t &c : cases) {
        config_user_profile_t *profile = start(c.from);
        EXPECT_EQ(utm_app_reset_extend(5), 0) << c.name;
        EXPECT_EQ(state_of(profile), c.state + all_day) << c.name;
        EXPECT_EQ(world::trace(), c.event + "log Reset profile 5 , now 0\n") << c.name;
    }
}

TEST_F(Limits, ADayWithoutAnEntryTakesNoLimit) {
    config_user_profile_t *profile = make_profile(5);
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        if (entry.day == 3)
            entry.day = int32_min;
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 3, 30), 0);
    EXPECT_EQ(state_of(profile), "enabled 0, limit 1440 + 0, blocked 0" + all_day);
    EXPECT_EQ(world::trace(), "log Set weekday daily limit to 30 for profile 5 success\n");
}

} // namespace
