#include "store/policies.h"

#include "store/blocking.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

class PolicyBinding : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;

TEST_F(PolicyBinding, BlocksEveryDeviceEvenWhileTheFeatureIsOff) {
    for (const bool active : {false, true}) {
        SetUp();
        world::make_profile(1, both);
        world::make_policy(4, {{12, 2, 0}});
        world::set_active(active);
        EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
        EXPECT_EQ(world::trace(), "log block device to use 12\n"
                                  "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                                  "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                                  "log Add policy 4 to profile 1 success\n");
        EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 1, rules 12/2/0 (unused)\n");
    }
}

TEST_F(PolicyBinding, BlocksRuleByRuleInListOrderAndChangesNoFlag) {
    config_user_profile_t *profile = world::make_profile(1, {world::tablet});
    world::make_usage(profile, {{10, 59}, {20, 60}, {30, 61}, {40, 5}});
    world::make_policy(4, {{10, 1, 60}, {20, 1, 60}, {30, 1, 60}, {40, 2, 0}, {50, 1, 0}});
    EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
    EXPECT_EQ(world::trace(), "log block device to use 40\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 40 0 18\n"
                              "log block device to use 30 because exceed limit\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 30 0 18\n"
                              "log block device to use 20 because exceed limit\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 20 0 18\n"
                              "log Add policy 4 to profile 1 success\n");
    EXPECT_EQ(
        world::render_lists(),
        "profile 1: devices 1 [001122334455 ], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
        "collected +0, apps 4, policy 4\n"
        "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
        "  app 10: used 59/0/0, blocked 0, days [] next 0, rule 1/60\n"
        "  app 20: used 60/0/0, blocked 0, days [] next 0, rule 1/60\n"
        "  app 30: used 61/0/0, blocked 0, days [] next 0, rule 1/60\n"
        "  app 40: used 5/0/0, blocked 0, days [] next 0, rule 2/0\n"
        "policy 4: profile 1, count 5, rules 50/1/0 (unused) 40/2/0 30/1/60 20/1/60 10/1/60\n");
}

TEST_F(PolicyBinding, WritesItsLinesForAProfileWithoutDevicesToo) {
    world::make_usage(world::make_profile(1), {{20, 60}});
    world::make_policy(4, {{20, 1, 60}, {40, 2, 0}});
    EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
    EXPECT_EQ(world::trace(), "log block device to use 40\n"
                              "log block device to use 20 because exceed limit\n"
                              "log Add policy 4 to profile 1 success\n");
}

TEST_F(PolicyBinding, IsRefusedWithoutAChange) {
    struct {
        const char *name;
        int32_t profile_id, policy_id;
        const char *trace;
    } const table[] = {
        {"no profile", 9, 4, "log Add policy 4 to profile 9 failed because profile not exist\n"},
        {"neither", 9, 8, "log Add policy 8 to profile 9 failed because profile not exist\n"},
        {"second policy", 1, 5,
         "log Add policy 5 to profile 1 failed because already has policy\n"},
        {"same policy", 1, 4, "log Add policy 4 to profile 1 failed because already has policy\n"},
        {"second and missing", 1, 8,
         "log Add policy 8 to profile 1 failed because already has policy\n"},
        {"no policy", 2, 8, ""},
        {"another profile's policy", 2, 4, ""},
    };
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, both));
    world::make_policy(5, {{13, 2, 0}});
    world::make_profile(2, both);
    const std::string before = world::render_lists();
    for (const auto &row : table) {
        EXPECT_EQ(utm_app_add_policy_to_profile(row.profile_id, row.policy_id), -1) << row.name;
        EXPECT_EQ(world::trace(), row.trace) << row.name;
        EXPECT_EQ(world::render_lists(), before) << row.name;
    }
}

TEST_F(PolicyBinding, ReleasesTheStoreOnEveryPath) {
    world::make_policy(4, {}, world::make_profile(1));
    world::make_profile(2);
    world::make_policy(5, {});
    for (const int32_t profile_id : {9, 1, 2})
        for (const int32_t policy_id : {9, 4, 5}) {
            (void)!utm_app_add_policy_to_profile(profile_id, policy_id);
            ASSERT_EQ(pthread_mutex_trylock(&utm_app_config_mutex.native), 0);
            pthread_mutex_unlock(&utm_app_config_mutex.native);
        }
    EXPECT_EQ(world::render_policy(5), "policy 5: profile 2, count 0, rules\n");
}

TEST_F(PolicyBinding, IsStillInForceAfterTheRulesWereDeletedAndRefilled) {
    config_user_profile_t *profile = world::make_profile(1, {world::tablet});
    world::make_usage(profile, {{12, 5}});
    world::make_policy(4, {{12, 2, 0}}, profile);
    world::set_active(true);
    ASSERT_EQ(utm_app_delete_policy(4), 0);
    const config_policy_rule_t rule = {12, 1, 5};
    ASSERT_EQ(utm_app_add_apps_to_policy(4, &rule, 1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "log Policy 4 add app 12 action 1 limit 5 success\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "log Add apps to policy 4 success\n");
    EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 2, rules 12/1/5\n");
}

TEST_F(PolicyBinding, EndsWhereThePolicyIsDestroyed) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}});
    config_app_policy_t *policy = world::make_policy(4, {{12, 1, 60}}, profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_destroy_policy(policy);
    }
    EXPECT_EQ(profile->app_policy, nullptr);
    EXPECT_EQ(world::usage_of(profile, 12)->policy_app, nullptr);
    EXPECT_EQ(world::render_policy(4), "no policy 4\n");
    EXPECT_EQ(world::trace(), "");
}

// ---- After an import -----------------------------------------------------------------------

void relink_and_enforce(config_user_profile_t *profile) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_link_policy_to_usage(profile);
    utm_app_enforce_imported_use(profile);
}

TEST_F(PolicyBinding, BlocksWhatIsOverItsLimitAfterAnImportWhateverTheAction) {
    for (const bool active : {false, true}) {
        SetUp();
        config_user_profile_t *profile = world::make_profile(1, both);
        world::make_policy(
            4, {{10, 1, 60}, {20, 1, 60}, {30, 2, 60}, {40, 2, 60}, {50, 2, 0}, {60, 1, 0}},
            profile);
        world::make_usage(profile, {{10, 59}, {20, 60}, {30, 61}, {40, 59}, {60, 0}});
        world::set_active(active);
        const std::string before = world::render_lists();
        relink_and_enforce(profile);
        EXPECT_EQ(
            world::trace(),
            "log block device to use 60 because exceed limit\n" + world::block_lines(both, 60) +
                "log block device to use 30 because exceed limit\n" + world::block_lines(both, 30) +
                "log block device to use 20 because exceed limit\n" + world::block_lines(both, 20));
        EXPECT_EQ(world::render_lists(), before);
    }
}

TEST_F(PolicyBinding, LinksAnewAfterAnImport) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_policy(4, {{10, 1, 60}, {20, 1, 60}}, profile);
    world::make_usage(profile, {{20, 5}, {10, 5}});
    for (config_app_usage_t &usage : apps_of(profile))
        usage.policy_app = nullptr;
    relink_and_enforce(profile);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_apps(1),
              "apps 2\n  app 20: used 5/0/0, blocked 0, days [] next 0, rule 1/60\n"
              "  app 10: used 5/0/0, blocked 0, days [] next 0, rule 1/60\n");
}

TEST_F(PolicyBinding, DoesNothingAfterAnImportWithoutAPolicy) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{10, 500}});
    const std::string before = world::render_lists();
    relink_and_enforce(profile);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_lists(), before);
}

} // namespace
