#include "usage/accounting.h"

#include "tests/lib/int32_limits.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

using world::make_policy;
using world::make_profile;
using world::make_usage;

class Accounting : public world_test {
protected:
    void SetUp() override {
        world::reset();
        world::set_active(true);
    }
};

void use(config_user_profile_t *profile, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_update_profile_usage(profile, minutes), profile == nullptr ? -1 : 0);
}

int32_t use_app(config_user_profile_t *profile, int32_t app_id, int32_t minutes) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_update_app_usage(profile, app_id, minutes);
}

TEST_F(Accounting, FailsWithoutAProfile) {
    use(nullptr, 1);
    EXPECT_EQ(use_app(nullptr, 10, 1), -1);
    EXPECT_EQ(world::trace(), "");
}

struct budget_case_t {
    const char *name;
    bool active;
    int32_t enabled, blocked, limit, extend, used;
    int32_t minutes;     ///< added
    const char *exceeds; ///< "60 exceed 60" where the profile is blocked now
};

TEST_F(Accounting, BlocksAProfileThatHasUsedUpItsBudget) {
    const budget_case_t cases[] = {
        {"equal", true, 1, 0, 60, 0, 59, 1, "60 exceed 60"},
        {"already there", true, 1, 0, 60, 0, 60, 0, "60 exceed 60"},
        {"above, with a bonus", true, 1, 0, 60, 30, 80, 15, "95 exceed 90"},
        {"below", true, 1, 0, 60, 0, 58, 1, ""},
        {"below, with a bonus", true, 1, 0, 60, 30, 88, 1, ""},
        {"limit not enabled", true, 0, 0, 60, 0, 59, 1, ""},
        {"feature off", false, 1, 0, 60, 0, 59, 1, ""},
        {"blocked already", true, 1, 1, 60, 0, 59, 1, ""},
        {"never unblocks", true, 1, 1, 60, 0, 5, -1, ""},
        {"a budget that saturates, below", true, 1, 0, 60, int32_max, int32_max - 1, 0, ""},
        {"a budget that saturates", true, 1, 0, 60, int32_max, int32_max - 1, 1,
         "2147483647 exceed 2147483647"},
    };
    for (const budget_case_t &c : cases) {
        SCOPED_TRACE(c.name);
        world::reset();
        world::set_active(c.active);
        config_user_profile_t *profile = make_profile(5); // devices play no part
        profile->daily_limit_enable = c.enabled;
        profile->blocked = c.blocked;
        profile->daily_limit = c.limit;
        profile->daily_extend = c.extend;
        profile->daily_used = c.used;
        use(profile, c.minutes);
        const std::string exceeds = c.exceeds;
        EXPECT_EQ(profile->daily_used, c.used + c.minutes);
        EXPECT_EQ(profile->blocked, exceeds.empty() ? c.blocked : 1);
        EXPECT_EQ(world::trace(), exceeds.empty() ? ""
                                                  : "log Block profile 5 to use network because " +
                                                        exceeds + "\n" + world::block_event(5));
    }
}

TEST_F(Accounting, AddsToARecordAndPushesNewOnesToTheFront) {
    config_user_profile_t *profile = make_profile(5);
    EXPECT_EQ(use_app(profile, 10, 4), 0);
    EXPECT_EQ(use_app(profile, 20, 0), 0);
    EXPECT_EQ(use_app(profile, 10, 3), 0);
    EXPECT_EQ(use_app(profile, -7, -2), 0);
    EXPECT_EQ(world::brief(world::render_apps(5)), "apps 3\n"
                                                   "  app -7: used -2/0/0\n"
                                                   "  app 20: used 0/0/0\n"
                                                   "  app 10: used 7/0/0\n");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Accounting, Saturates) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, int32_max}, {20, int32_min}});
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(use_app(profile, 20, -1), 0);
    EXPECT_EQ(world::brief(world::render_apps(5)), "apps 2\n"
                                                   "  app 10: used 2147483647/0/0\n"
                                                   "  app 20: used -2147483648/0/0\n");
    profile->daily_used = int32_max - 1;
    use(profile, int32_max);
    EXPECT_EQ(profile->daily_used, int32_max);
    profile->daily_used = int32_min + 1;
    use(profile, -2);
    EXPECT_EQ(profile->daily_used, int32_min);
}

TEST_F(Accounting, LosesANewApplicationWithoutMemory) {
    config_user_profile_t *profile = make_profile(5);
    world::fail_allocation(1);
    EXPECT_EQ(use_app(profile, 10, 4), -1);
    EXPECT_EQ(world::render_apps(5), "apps 0\n");
}

TEST_F(Accounting, BlocksANewApplicationByItsRuleAndOnce) {
    config_user_profile_t *profile = make_profile(5, world::both);
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 5}}, profile);
    EXPECT_EQ(use_app(profile, 10, 4), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(world::trace(), "log Block app 10 for profile 5 because 5 exceed 5\n" +
                                  world::block_lines(world::both, 10));
    EXPECT_EQ(use_app(profile, 10, 1), 0);
    EXPECT_EQ(world::brief(world::render_apps(5)),
              "apps 1\n  app 10: used 6/0/0, blocked 1, rule 1/5\n");
    EXPECT_EQ(world::trace(), "");
}

struct rule_case_t {
    const char *name;
    bool active;
    int32_t app_id, minutes;
    config_policy_rule_t rule;
    const char *app;
    const char *trace;
};

TEST_F(Accounting, BlocksAnApplicationOnlyForALimitThatIsReached) {
    const rule_case_t cases[] = {
        {"feature off", false, 10, 9, {10, POLICY_ACTION_LIMIT, 5}, ", rule 1/5", ""},
        {"application 0", true, 0, 9, {0, POLICY_ACTION_LIMIT, 5}, ", rule 1/5", ""},
        {"no rule", true, 10, 9, {20, POLICY_ACTION_LIMIT, 5}, "", ""},
        {"a block rule", true, 10, 9, {10, POLICY_ACTION_BLOCK, 5}, ", rule 2/5", ""},
        {"below", true, 10, 4, {10, POLICY_ACTION_LIMIT, 5}, ", rule 1/5", ""},
        {"limit 0",
         true,
         10,
         0,
         {10, POLICY_ACTION_LIMIT, 0},
         ", blocked 1, rule 1/0",
         "log Block app 10 for profile 5 because 0 exceed 0\n"
         "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n"
         "log Command lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18 return 256\n"},
    };
    for (const rule_case_t &c : cases) {
        world::reset();
        config_user_profile_t *profile = make_profile(5, {world::phone});
        make_policy(4, {c.rule}, profile);
        world::set_active(c.active);
        world::on_system([](const std::string &) { return 256; });
        EXPECT_EQ(use_app(profile, c.app_id, c.minutes), 0) << c.name;
        EXPECT_EQ(world::brief(world::render_apps(5)), "apps 1\n  app " + std::to_string(c.app_id) +
                                                           ": used " + std::to_string(c.minutes) +
                                                           "/0/0" + c.app + "\n")
            << c.name;
        EXPECT_EQ(world::trace(), c.trace) << c.name;
    }
}

} // namespace
