#include "usage/limits.h"

#include "core/owners.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

using world::make_profile;

// The clock stands on a Wednesday, day 3.
class Limits : public world_test {};

/// What the setters decide on and may change.
struct state_t {
    int32_t enabled, blocked, limit, extend;

    bool operator==(const state_t &) const = default;
};

std::ostream &operator<<(std::ostream &to, const state_t &state) {
    return to << "enabled " << state.enabled << ", blocked " << state.blocked << ", limit "
              << state.limit << " + " << state.extend;
}

struct setter_case_t {
    const char *name;
    bool active;
    state_t before;
    int32_t used;
    int32_t value; ///< that is set, or added
    state_t after;
};

std::vector<int32_t> days_of(config_user_profile_t *profile) {
    std::vector<int32_t> days;
    for (const config_weekday_limit_t &day : weekdays_of(profile))
        days.push_back(day.limit);
    return days;
}

config_user_profile_t *start(bool active, const state_t &state, int32_t used) {
    world::reset();
    config_user_profile_t *profile = make_profile(5, {world::phone});
    world::set_active(active);
    profile->daily_limit_enable = state.enabled;
    profile->blocked = state.blocked;
    profile->daily_limit = state.limit;
    profile->daily_extend = state.extend;
    profile->daily_used = used;
    return profile;
}

/// Expects what a setter makes of profile 5: the event where `blocked` changes, and then its line.
void expect_set(const setter_case_t &c, const std::function<int32_t()> &set,
                const std::string &line,
                const std::vector<int32_t> &days = std::vector<int32_t>(7, 1440)) {
    SCOPED_TRACE(c.name);
    config_user_profile_t *profile = start(c.active, c.before, c.used);
    EXPECT_EQ(set(), 0);
    EXPECT_EQ((state_t{profile->daily_limit_enable, profile->blocked, profile->daily_limit,
                       profile->daily_extend}),
              c.after);
    EXPECT_EQ(days_of(profile), days);
    const std::string event = c.after.blocked ? world::block_event(5) : world::unblock_event(5);
    EXPECT_EQ(world::trace(),
              (c.before.blocked == c.after.blocked ? "" : event) + "log " + line + "\n");
}

TEST_F(Limits, EnablingBlocksAndDisablingUnblocks) {
    const setter_case_t cases[] = {
        {"on, below", true, {0, 0, 60, 0}, 59, 1, {1, 0, 60, 0}},
        {"on, equal", true, {0, 0, 60, 0}, 60, 1, {1, 1, 60, 0}},
        {"on, above", true, {0, 0, 60, 30}, 91, 1, {1, 1, 60, 30}},
        {"on, below with bonus", true, {0, 0, 60, 30}, 89, 1, {1, 0, 60, 30}},
        {"on, blocked", true, {0, 1, 60, 0}, 60, 1, {1, 1, 60, 0}},
        {"on, blocked but below", true, {0, 1, 60, 0}, 5, 1, {1, 1, 60, 0}},
        {"on, feature off", false, {0, 0, 60, 0}, 60, 1, {1, 0, 60, 0}},
        {"on again", true, {1, 0, 60, 0}, 60, 1, {1, 0, 60, 0}},
        {"off, blocked", true, {1, 1, 60, 0}, 60, 0, {0, 0, 60, 0}},
        {"off, not blocked", true, {1, 0, 60, 0}, 5, 0, {0, 0, 60, 0}},
        {"off, feature off", false, {1, 1, 60, 0}, 60, 0, {0, 1, 60, 0}},
        {"off again", true, {0, 1, 60, 0}, 60, 0, {0, 1, 60, 0}},
    };
    for (const setter_case_t &c : cases)
        expect_set(
            c, [&] { return utm_app_set_daily_limit_enable(5, c.value); },
            "Set daily limit enable " + std::to_string(c.value) + " for profile 5 success");
}

TEST_F(Limits, ADailyLimitHoldsForEveryDayAndAtOnce) {
    const setter_case_t cases[] = {
        {"raised", true, {1, 1, 60, 0}, 60, 61, {1, 0, 61, 0}},
        {"raised, not blocked", true, {1, 0, 60, 0}, 5, 1440, {1, 0, 1440, 0}},
        {"raised too little", true, {1, 1, 60, 0}, 80, 80, {1, 1, 80, 0}},
        {"lowered", true, {1, 0, 60, 0}, 50, 50, {1, 1, 50, 0}},
        {"lowered, above with bonus", true, {1, 0, 60, 5}, 50, 46, {1, 0, 46, 5}},
        {"lowered to 1", true, {1, 0, 60, 0}, 1, 1, {1, 1, 1, 0}},
        {"not enabled", true, {0, 0, 60, 0}, 50, 50, {0, 0, 50, 0}},
        {"feature off", false, {1, 0, 60, 0}, 50, 50, {1, 0, 50, 0}},
        // The same limit again decides nothing, but it is every weekday's now.
        {"unchanged", true, {1, 0, 60, 0}, 60, 60, {1, 0, 60, 0}},
    };
    for (const setter_case_t &c : cases)
        expect_set(
            c, [&] { return utm_app_set_daily_limit(5, c.value); },
            "Set daily limit to " + std::to_string(c.value) + " for profile 5 success",
            std::vector<int32_t>(7, c.value));
}

TEST_F(Limits, AWeekdaysLimitHoldsAtOnceOnItsOwnDay) {
    const std::pair<int32_t, setter_case_t> cases[] = {
        {2, {"another day", true, {1, 0, 60, 0}, 50, 30, {1, 0, 60, 0}}},
        {0, {"Sunday", true, {1, 0, 60, 0}, 50, 1, {1, 0, 60, 0}}},
        {6, {"Saturday", true, {1, 0, 60, 0}, 50, 1, {1, 0, 60, 0}}},
        {3, {"today, lowered", true, {1, 0, 60, 0}, 50, 50, {1, 1, 50, 0}}},
        {3, {"today, raised", true, {1, 1, 60, 0}, 60, 61, {1, 0, 61, 0}}},
        {3, {"today, bonus", true, {1, 0, 60, 30}, 50, 21, {1, 0, 21, 30}}},
        {3, {"today, not enabled", true, {0, 0, 60, 0}, 50, 50, {0, 0, 50, 0}}},
        {3, {"today, feature off", false, {1, 0, 60, 0}, 50, 50, {1, 0, 50, 0}}},
        // The entry has that limit already, so today's stays what it was set to.
        {3, {"today, unchanged", true, {1, 0, 60, 0}, 60, 1440, {1, 0, 60, 0}}},
    };
    for (const auto &row : cases) {
        const int32_t weekday = row.first;
        const setter_case_t &c = row.second;
        std::vector<int32_t> days(7, 1440);
        days[static_cast<size_t>(weekday)] = c.value;
        expect_set(
            c, [&] { return utm_app_set_weekday_daily_limit(5, weekday, c.value); },
            "Set weekday daily limit to " + std::to_string(c.value) + " for profile 5 success",
            days);
    }
}

TEST_F(Limits, ABonusFreesABlockedProfileAtOnce) {
    const setter_case_t cases[] = {
        {"enough", true, {1, 1, 60, 0}, 60, 30, {1, 0, 60, 30}},
        {"too little", true, {1, 1, 60, 0}, 61, 1, {1, 1, 60, 1}},
        {"not blocked", true, {1, 0, 60, 0}, 5, 360, {1, 0, 60, 360}},
        {"over, not blocked", true, {1, 0, 60, 0}, 70, 10, {1, 1, 60, 10}},
        {"not enabled", true, {0, 1, 60, 0}, 60, 30, {0, 1, 60, 30}},
        {"feature off", false, {1, 1, 60, 0}, 60, 30, {1, 1, 60, 30}},
    };
    for (const setter_case_t &c : cases) {
        const std::string minutes = std::to_string(c.value);
        expect_set(
            c, [&] { return utm_app_add_extend(5, c.value); },
            "Add extend " + minutes + " to profile 5, now " + minutes);
    }
}

TEST_F(Limits, TakingTheBonusBackMayBlock) {
    const setter_case_t cases[] = {
        {"used between", true, {1, 0, 60, 30}, 75, 0, {1, 1, 60, 0}},
        {"used up to the limit", true, {1, 0, 60, 30}, 60, 0, {1, 1, 60, 0}},
        {"used less", true, {1, 0, 60, 30}, 59, 0, {1, 0, 60, 0}},
        {"blocked for nothing", true, {1, 1, 60, 0}, 59, 0, {1, 0, 60, 0}},
        {"blocked", true, {1, 1, 60, 30}, 95, 0, {1, 1, 60, 0}},
        {"not enabled", true, {0, 0, 60, 30}, 75, 0, {0, 0, 60, 0}},
        {"feature off", false, {1, 0, 60, 30}, 75, 0, {1, 0, 60, 0}},
    };
    for (const setter_case_t &c : cases)
        expect_set(
            c, [] { return utm_app_reset_extend(5); }, "Reset profile 5 , now 0");
}

TEST_F(Limits, TodayIsTheLocalDay) {
    config_user_profile_t *profile = make_profile(5);
    world::set_now(world::local(2026, 3, 4, 23, 30));
    world::set_zone("Europe/Berlin"); // where it is Thursday already
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 3, 30), 0);
    EXPECT_EQ(profile->daily_limit, 1440);
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 4, 40), 0);
    EXPECT_EQ(profile->daily_limit, 40);
}

TEST_F(Limits, ADayWithoutAnEntryTakesNoLimit) {
    config_user_profile_t *profile = make_profile(5);
    config_weekday_limit_t *entry = &*++ ++ ++weekdays_of(profile).begin();
    list_unlink(&entry->link);
    free(entry);
    const std::string before = world::render(*profile);
    EXPECT_EQ(utm_app_set_weekday_daily_limit(5, 3, 30), 0);
    EXPECT_EQ(world::render(*profile), before);
    EXPECT_EQ(world::trace(), "log Set weekday daily limit to 30 for profile 5 success\n");
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
    config_user_profile_t *profile = start(true, {1, 1, 1440, int32_max - 360}, int32_max - 1);
    EXPECT_EQ(utm_app_add_extend(5, 360), 0);
    EXPECT_EQ(profile->blocked, 0);
    profile->daily_used = int32_max;
    EXPECT_EQ(utm_app_set_daily_limit(5, 1), 0);
    EXPECT_EQ(profile->blocked, 1);
    EXPECT_EQ(utm_app_set_daily_limit_enable(5, 0), 0);
    EXPECT_EQ(utm_app_set_daily_limit_enable(5, 1), 0);
    EXPECT_EQ(profile->blocked, 1);
}

// ---- Refusals ------------------------------------------------------------------------------

/// Each call is refused: the profile stays as it was, and the log says why.
class LimitRefusals : public world_test {
protected:
    void SetUp() override {
        profile = start(true, {1, 0, 60, 7}, 0);
        before = world::render(*profile);
    }

    void expect_refused(int32_t result, const std::string &line) {
        EXPECT_EQ(result, -1) << line;
        EXPECT_EQ(world::trace(), line.empty() ? "" : "log " + line + "\n");
        EXPECT_EQ(world::render(*profile), before);
    }

    config_user_profile_t *profile = nullptr;
    std::string before;
};

TEST_F(LimitRefusals, AFigureKeepsToItsRangeWhateverTheProfile) {
    for (const int32_t id : {5, 6}) {
        const std::string whose = " for profile " + std::to_string(id) + " failed";
        for (const int32_t enable : {2, -1, int32_min, int32_max})
            expect_refused(utm_app_set_daily_limit_enable(id, enable), "set daily limit" + whose);
        for (const int32_t minutes : {0, 1441, -1, int32_min, int32_max}) {
            const std::string text = std::to_string(minutes) + whose + " because range error";
            expect_refused(utm_app_set_daily_limit(id, minutes), "Set daily limit " + text);
            // The minutes are looked at before the day.
            for (const int32_t weekday : {3, 9})
                expect_refused(utm_app_set_weekday_daily_limit(id, weekday, minutes),
                               "Set weekday daily limit " + text);
        }
        for (const int32_t weekday : {7, -1, int32_min, int32_max})
            expect_refused(utm_app_set_weekday_daily_limit(id, weekday, 60),
                           "Set weekday " + std::to_string(weekday) + whose +
                               " because range error");
        for (const int32_t minutes : {0, 361, -1, int32_min, int32_max})
            expect_refused(utm_app_add_extend(id, minutes), "Add extend " +
                                                                std::to_string(minutes) + whose +
                                                                " because range error");
    }
}

TEST_F(LimitRefusals, AnUnknownProfileIsNamedByTheBonusAlone) {
    int32_t value = 99;
    expect_refused(utm_app_set_daily_limit_enable(6, 1), "");
    expect_refused(utm_app_set_daily_limit(6, 60), "");
    expect_refused(utm_app_set_weekday_daily_limit(6, 3, 60), "");
    expect_refused(utm_app_get_daily_limit_enable(6, &value), "");
    expect_refused(utm_app_get_daily_limit(6, &value), "");
    EXPECT_EQ(utm_app_get_weekday_daily_limit(6), nullptr);
    expect_refused(utm_app_add_extend(6, 30),
                   "Add extend 30 to profile 6 failed because profile is not existed");
    expect_refused(utm_app_reset_extend(6),
                   "Reset profile 6 extend failed because profile is not existed");
    expect_refused(utm_app_get_extend(6, &value),
                   "Get extended for profile 6 failed because profile is not existed");
    EXPECT_EQ(value, 99);
}

TEST_F(LimitRefusals, AGetterNeedsAPlaceOrMemory) {
    for (const int32_t id : {5, 6})
        expect_refused(utm_app_get_daily_limit_enable(id, nullptr),
                       "get daily limit for profile " + std::to_string(id) + " enable failed");
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_get_weekday_daily_limit(5), nullptr);
    expect_refused(-1, "Get weekday daily limit of profile 5 failed because malloc failed");
}

TEST_F(LimitRefusals, TheGettersReadAKnownProfile) {
    int32_t enabled = 99, limit = 99, extend = 99;
    EXPECT_EQ(utm_app_get_daily_limit_enable(5, &enabled), 0);
    EXPECT_EQ(utm_app_get_daily_limit(5, &limit), 0);
    EXPECT_EQ(utm_app_get_extend(5, &extend), 0);
    EXPECT_EQ((state_t{enabled, 0, limit, extend}), (state_t{1, 0, 60, 7}));
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
