#include "usage/accounting.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

using world::make_policy;
using world::make_profile;
using world::make_usage;

class Accounting : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        world::set_active(true);
    }
};

int32_t use(config_user_profile_t *profile, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_update_profile_usage(profile, minutes);
}

int32_t use_app(config_user_profile_t *profile, int32_t app_id, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_update_app_usage(profile, app_id, minutes);
}

/// The usage records of a profile, one line each.
std::string apps(config_user_profile_t *profile) {
    const std::string text = world::render(*profile);
    return text.substr(text.find('\n', text.find("weekdays")) + 1);
}

TEST_F(Accounting, FailsWithoutAProfile) {
    EXPECT_EQ(use(nullptr, 1), -1);
    EXPECT_EQ(use_app(nullptr, 10, 1), -1);
    EXPECT_EQ(world::trace(), "");
}

struct budget_case_t {
    const char *name;
    bool active;
    int32_t enabled;
    int32_t blocked;
    int32_t limit;
    int32_t extend;
    int32_t used;
    int32_t minutes;
    const char *state; ///< used, then blocked
    const char *trace;
};

TEST_F(Accounting, BlocksAProfileThatHasUsedUpItsBudget) {
    const char *blocking = "log Block profile 5 to use network because 60 exceed 60\n"
                           "event block profile 5\n"
                           "log send event: block profile 5 to use network\n";
    const char *extended = "log Block profile 5 to use network because 95 exceed 90\n"
                           "event block profile 5\n"
                           "log send event: block profile 5 to use network\n";
    const budget_case_t cases[] = {
        {"equal", true, 1, 0, 60, 0, 59, 1, "60 1", blocking},
        {"already there", true, 1, 0, 60, 0, 60, 0, "60 1", blocking},
        {"above, with a bonus", true, 1, 0, 60, 30, 80, 15, "95 1", extended},
        {"below", true, 1, 0, 60, 0, 58, 1, "59 0", ""},
        {"below, with a bonus", true, 1, 0, 60, 30, 88, 1, "89 0", ""},
        {"limit not enabled", true, 0, 0, 60, 0, 59, 1, "60 0", ""},
        {"feature off", false, 1, 0, 60, 0, 59, 1, "60 0", ""},
        {"blocked already", true, 1, 1, 60, 0, 59, 1, "60 1", ""},
        {"never unblocks", true, 1, 1, 60, 0, 5, -1, "4 1", ""},
    };
    for (const budget_case_t &c : cases) {
        SetUp();
        world::set_active(c.active);
        config_user_profile_t *profile = make_profile(5, {world::phone});
        profile->daily_limit_enable = c.enabled;
        profile->blocked = c.blocked;
        profile->daily_limit = c.limit;
        profile->daily_extend = c.extend;
        profile->daily_used = c.used;
        EXPECT_EQ(use(profile, c.minutes), 0) << c.name;
        EXPECT_EQ(std::to_string(profile->daily_used) + " " + std::to_string(profile->blocked),
                  c.state)
            << c.name;
        EXPECT_EQ(world::trace(), c.trace) << c.name;
    }
}

TEST_F(Accounting, BlocksAProfileWithoutDevicesToo) {
    config_user_profile_t *profile = make_profile(5);
    profile->daily_limit_enable = 1;
    EXPECT_EQ(use(profile, 1440), 0);
    EXPECT_EQ(world::trace(), "log Block profile 5 to use network because 1440 exceed 1440\n"
                              "event block profile 5\n"
                              "log send event: block profile 5 to use network\n");
}

TEST_F(Accounting, SaturatesAProfilesUseAndBudget) {
    config_user_profile_t *profile = make_profile(5);
    profile->daily_limit_enable = 1;
    profile->daily_extend = int32_max;
    profile->daily_used = int32_max - 1;
    EXPECT_EQ(use(profile, 0), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(use(profile, int32_max), 0);
    EXPECT_EQ(profile->daily_used, int32_max);
    EXPECT_EQ(world::trace(),
              "log Block profile 5 to use network because 2147483647 exceed 2147483647\n"
              "event block profile 5\n"
              "log send event: block profile 5 to use network\n");
    profile->daily_used = int32_min + 1;
    EXPECT_EQ(use(profile, -2), 0);
    EXPECT_EQ(profile->daily_used, int32_min);
}

TEST_F(Accounting, AddsToAnApplicationsRecordAndPushesNewOnesToTheFront) {
    config_user_profile_t *profile = make_profile(5);
    EXPECT_EQ(use_app(profile, 10, 4), 0);
    EXPECT_EQ(use_app(profile, 20, 0), 0);
    EXPECT_EQ(use_app(profile, 10, 3), 0);
    EXPECT_EQ(use_app(profile, -7, -2), 0);
    EXPECT_EQ(apps(profile), "  app -7: used -2/0/0, blocked 0, days [] next 0\n"
                             "  app 20: used 0/0/0, blocked 0, days [] next 0\n"
                             "  app 10: used 7/0/0, blocked 0, days [] next 0\n");
    EXPECT_EQ(profile->app_count, 3);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Accounting, SaturatesAnApplicationsUse) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, int32_max}, {20, int32_min}});
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(use_app(profile, 20, -1), 0);
    EXPECT_EQ(apps(profile), "  app 10: used 2147483647/0/0, blocked 0, days [] next 0\n"
                             "  app 20: used -2147483648/0/0, blocked 0, days [] next 0\n");
}

TEST_F(Accounting, LosesANewApplicationWithoutMemory) {
    config_user_profile_t *profile = make_profile(5);
    world::fail_allocation(1);
    EXPECT_EQ(use_app(profile, 10, 4), -1);
    EXPECT_EQ(apps(profile), "");
    EXPECT_EQ(profile->app_count, 0);
}

TEST_F(Accounting, IntroducesANewApplicationToItsRule) {
    config_user_profile_t *profile = make_profile(5, {world::tablet, world::phone});
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 5}}, profile);
    EXPECT_EQ(use_app(profile, 10, 4), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(apps(profile), "  app 10: used 5/0/0, blocked 1, days [] next 0, rule 1/5\n");
    EXPECT_EQ(world::trace(), "log Block app 10 for profile 5 because 5 exceed 5\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 10 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n");
    // Once is enough.
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(world::trace(), "");
}

struct rule_case_t {
    const char *name;
    bool active;
    int32_t app_id;
    int32_t minutes;
    std::vector<config_policy_rule_t> rules;
    const char *app;
};

TEST_F(Accounting, BlocksAnApplicationOnlyForALimitThatIsReached) {
    const rule_case_t cases[] = {
        {"feature off",
         false,
         10,
         9,
         {{10, POLICY_ACTION_LIMIT, 5}},
         "blocked 0, days [] next 0, rule 1/5"},
        {"application 0",
         true,
         0,
         9,
         {{0, POLICY_ACTION_LIMIT, 5}},
         "blocked 0, days [] next 0, rule 1/5"},
        {"no rule", true, 10, 9, {{20, POLICY_ACTION_LIMIT, 5}}, "blocked 0, days [] next 0"},
        {"a block rule",
         true,
         10,
         9,
         {{10, POLICY_ACTION_BLOCK, 5}},
         "blocked 0, days [] next 0, rule 2/5"},
        {"below",
         true,
         10,
         4,
         {{10, POLICY_ACTION_LIMIT, 5}},
         "blocked 0, days [] next 0, rule 1/5"},
    };
    for (const rule_case_t &c : cases) {
        SetUp();
        config_user_profile_t *profile = make_profile(5, {world::phone});
        make_policy(4, c.rules, profile);
        world::set_active(c.active);
        EXPECT_EQ(use_app(profile, c.app_id, c.minutes), 0) << c.name;
        EXPECT_EQ(apps(profile), "  app " + std::to_string(c.app_id) + ": used " +
                                     std::to_string(c.minutes) + "/0/0, " + c.app + "\n")
            << c.name;
        EXPECT_EQ(world::trace(), "") << c.name;
    }
}

TEST_F(Accounting, BlocksAnApplicationWhoseLimitIsZeroAtItsFirstReport) {
    config_user_profile_t *profile = make_profile(5, {world::phone});
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 0}}, profile);
    EXPECT_EQ(use_app(profile, 10, 0), 0);
    EXPECT_EQ(world::trace(), "log Block app 10 for profile 5 because 0 exceed 0\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n");
}

TEST_F(Accounting, MarksAnApplicationBlockedWithoutADeviceAndWhenTheLineFails) {
    config_user_profile_t *alone = make_profile(5);
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 5}}, alone);
    config_user_profile_t *failing = make_profile(6, {world::phone});
    make_policy(8, {{10, POLICY_ACTION_LIMIT, 5}}, failing);
    world::on_system([](const std::string &) { return 256; });
    EXPECT_EQ(use_app(alone, 10, 5), 0);
    EXPECT_EQ(use_app(failing, 10, 5), 0);
    EXPECT_EQ(apps(alone), "  app 10: used 5/0/0, blocked 1, days [] next 0, rule 1/5\n");
    EXPECT_EQ(apps(failing), "  app 10: used 5/0/0, blocked 1, days [] next 0, rule 1/5\n");
    EXPECT_EQ(world::trace(),
              "log Block app 10 for profile 5 because 5 exceed 5\n"
              "log Block app 10 for profile 6 because 5 exceed 5\n"
              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n"
              "log Command lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18 return 256\n");
}

} // namespace
