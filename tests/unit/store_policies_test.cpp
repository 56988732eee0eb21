#include "store/policies.h"

#include "core/owners.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Policies : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;

/// Reads a policy's rules: the count, then each rule.
std::string apps_of_policy(int32_t policy_id) {
    int32_t count = 99;
    const heap_ptr<config_policy_rule_t> rules(utm_app_get_apps_of_policy(policy_id, &count));
    std::string text = std::to_string(count) + (rules == nullptr ? " none" : ":");
    for (int32_t i = 0; rules != nullptr && i < count; ++i) {
        const config_policy_rule_t &rule = rules.get()[i];
        text += " " + std::to_string(rule.app_id) + "/" + std::to_string(rule.action) + "/" +
                std::to_string(rule.daily_limit);
    }
    return text;
}

int32_t add_apps(int32_t policy_id, const std::vector<config_policy_rule_t> &rules) {
    return utm_app_add_apps_to_policy(policy_id, rules.data(), static_cast<int32_t>(rules.size()));
}

// ---- Creating ------------------------------------------------------------------------------

TEST_F(Policies, ReturnTheIdOfANewPolicy) {
    for (const int32_t id : {4, 1, INT32_MAX}) {
        EXPECT_EQ(utm_app_create_policy(id), id);
        EXPECT_EQ(world::trace(), "log Create policy " + std::to_string(id) + " success\n");
        EXPECT_EQ(world::render_policy(id),
                  "policy " + std::to_string(id) + ": profile none, count 0, rules\n");
    }
}

TEST_F(Policies, RefuseIdsBelowOne) {
    for (const int32_t id : {0, -1, INT32_MIN}) {
        EXPECT_EQ(utm_app_create_policy(id), -1);
        EXPECT_EQ(world::trace(),
                  "log Create policy " + std::to_string(id) + " failed because id <= 0\n");
    }
    EXPECT_EQ(world::render_lists(), "");
}

TEST_F(Policies, RefuseAnIdThatIsTaken) {
    world::make_policy(4, {{12, 1, 30}});
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_create_policy(4), -1);
    EXPECT_EQ(world::trace(), "log Create policy 4 failed because policy already exist\n");
    EXPECT_EQ(world::render_lists(), before);
}

// ---- Adding and updating rules -------------------------------------------------------------

TEST_F(Policies, AddRulesInTheOrderGiven) {
    world::make_policy(4, {});
    EXPECT_EQ(add_apps(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, -5}}), 0);
    EXPECT_EQ(world::trace(), "log Policy 4 add app 10 action 1 limit 30 success\n"
                              "log Policy 4 add app 20 action 2 limit 0 success\n"
                              "log Policy 4 add app 30 action 1 limit -5 success\n"
                              "log Add apps to policy 4 success\n");
    EXPECT_EQ(apps_of_policy(4), "3: 30/1/-5 20/2/0 10/1/30");
}

TEST_F(Policies, UpdateARuleThatIsThereAlreadyInsteadOfDoublingIt) {
    world::make_policy(4, {{10, 1, 30}, {20, 2, 0}});
    EXPECT_EQ(add_apps(4, {{10, 2, 7}, {10, 1, 8}}), 0);
    EXPECT_EQ(world::trace(), "log Policy 4 update app 10 action 2 limit 7 success\n"
                              "log Policy 4 update app 10 action 1 limit 8 success\n"
                              "log Add apps to policy 4 success\n");
    EXPECT_EQ(apps_of_policy(4), "2: 20/2/0 10/1/8");
}

TEST_F(Policies, RejectActionsOutsideOfTheirRange) {
    world::make_policy(4, {{10, 1, 30}});
    const std::string before = world::render_lists();
    for (const int32_t action : {3, -1, 255, 256, INT32_MAX, INT32_MIN})
        for (const int32_t app_id : {10, 20}) {
            EXPECT_EQ(add_apps(4, {{app_id, action, 5}}), -1) << action;
            EXPECT_EQ(world::trace(), "log Add apps to policy 4 failed\n");
        }
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Policies, StoreTheValidRulesAroundARejectedOne) {
    world::make_policy(4, {});
    EXPECT_EQ(add_apps(4, {{10, 1, 30}, {20, 3, 0}, {25, -1, 0}, {30, 2, 0}}), -1);
    EXPECT_EQ(world::trace(), "log Policy 4 add app 10 action 1 limit 30 success\n"
                              "log Policy 4 add app 30 action 2 limit 0 success\n"
                              "log Add apps to policy 4 failed\n");
    EXPECT_EQ(apps_of_policy(4), "2: 30/2/0 10/1/30");
}

TEST_F(Policies, AddNoRulesWithSuccess) {
    world::make_policy(4, {{10, 1, 30}});
    const std::string before = world::render_lists();
    const config_policy_rule_t rule = {20, 2, 0};
    for (const int32_t count : {0, -1, INT32_MIN}) {
        EXPECT_EQ(utm_app_add_apps_to_policy(4, &rule, count), 0);
        EXPECT_EQ(world::trace(), "log Add apps to policy 4 success\n");
    }
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Policies, RefuseRulesForAMissingPolicy) {
    const config_policy_rule_t rule = {20, 2, 0};
    EXPECT_EQ(utm_app_add_apps_to_policy(4, &rule, 1), -1);
    EXPECT_EQ(utm_app_add_apps_to_policy(4, &rule, 0), -1);
    EXPECT_EQ(utm_app_update_app_in_policy(4, &rule), -1);
    EXPECT_EQ(world::trace(), "log Add apps to policy 4 failed\n"
                              "log Add apps to policy 4 failed\n"
                              "log Update app to policy 4 failed\n");
}

TEST_F(Policies, UpdateOneRuleUnderItsOwnLines) {
    struct {
        config_policy_rule_t rule;
        int32_t result;
        const char *trace, *apps;
    } const table[] = {
        {{10, 2, 7},
         0,
         "log Policy 4 update app 10 action 2 limit 7 success\n"
         "log Update app to policy 4 success\n",
         "1: 10/2/7"},
        {{20, 1, 9},
         0,
         "log Policy 4 add app 20 action 1 limit 9 success\n"
         "log Update app to policy 4 success\n",
         "2: 20/1/9 10/1/30"},
        {{10, 0, 0},
         0,
         "log Policy 4 update app 10 action 0 limit 0 success\n"
         "log Update app to policy 4 success\n",
         "-1 none"},
        {{20, 0, 0}, 0, "log Update app to policy 4 success\n", "1: 10/1/30"},
        {{10, 3, 7}, -1, "log Update app to policy 4 failed\n", "1: 10/1/30"},
    };
    for (const auto &row : table) {
        SetUp();
        world::make_policy(4, {{10, 1, 30}});
        EXPECT_EQ(utm_app_update_app_in_policy(4, &row.rule), row.result);
        EXPECT_EQ(world::trace(), row.trace);
        EXPECT_EQ(apps_of_policy(4), row.apps);
    }
}

TEST_F(Policies, FailWithoutALineWhenNoRuleIsGiven) {
    world::make_policy(4, {});
    EXPECT_EQ(utm_app_update_app_in_policy(4, nullptr), -1);
    EXPECT_EQ(utm_app_update_app_in_policy(5, nullptr), -1);
    EXPECT_EQ(world::trace(), "");
}

// ---- Reading rules -------------------------------------------------------------------------

TEST_F(Policies, HaveNoRulesToReadWhenMissingOrEmpty) {
    world::make_policy(4, {});
    world::make_policy(5, {{10, 1, 30}, {10, 0, 0}});
    EXPECT_EQ(apps_of_policy(4), "-1 none");
    EXPECT_EQ(apps_of_policy(5), "-1 none");
    EXPECT_EQ(apps_of_policy(6), "-1 none");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Policies, ReadTheRulesNewestFirst) {
    world::make_policy(4, {{10, 1, 1}, {20, 2, 2}, {30, 1, 3}});
    EXPECT_EQ(apps_of_policy(4), "3: 30/1/3 20/2/2 10/1/1");
    EXPECT_EQ(world::trace(), "");
}

// ---- Deleting, which only removes the rules ------------------------------------------------

TEST_F(Policies, FailToDeleteAMissingPolicy) {
    EXPECT_EQ(utm_app_delete_policy(4), -1);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Policies, KeepThePolicyAndItsCountWhenTheRulesAreDeleted) {
    world::make_policy(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, 5}});
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_policy(4), "policy 4: profile none, count 3, rules\n");
    EXPECT_EQ(apps_of_policy(4), "3: 0/0/0 0/0/0 0/0/0");
}

TEST_F(Policies, CountOnFromTheOldValueAfterDeletion) {
    world::make_policy(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, 5}});
    ASSERT_EQ(utm_app_delete_policy(4), 0);
    ASSERT_EQ(add_apps(4, {{40, 1, 9}}), 0);
    EXPECT_EQ(apps_of_policy(4), "4: 40/1/9 0/0/0 0/0/0 0/0/0");
    ASSERT_EQ(add_apps(4, {{40, 0, 0}}), 0);
    EXPECT_EQ(apps_of_policy(4), "3: 0/0/0 0/0/0 0/0/0");
    ASSERT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(world::render_policy(4), "policy 4: profile none, count 3, rules\n");
}

TEST_F(Policies, CountNoFurtherThanTheirIntegerGoes) {
    config_app_policy_t *policy = world::make_policy(4, {});
    policy->app_count = INT32_MAX - 1;
    ASSERT_EQ(add_apps(4, {{10, 1, 9}, {20, 1, 9}, {30, 1, 9}}), 0);
    EXPECT_EQ(policy->app_count, INT32_MAX);
}

TEST_F(Policies, ReleaseTheBoundProfileWhenTheRulesAreDeleted) {
    for (const bool active : {false, true}) {
        SetUp();
        config_user_profile_t *profile = world::make_profile(1, both);
        world::make_usage(profile, {{10, 5}, {20, 6}, {50, 7}});
        world::make_policy(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, 5}}, profile);
        world::usage_of(profile, 20)->blocked = 1;
        world::usage_of(profile, 50)->blocked = 1; // no rule, and released all the same
        world::set_active(active);
        EXPECT_EQ(utm_app_delete_policy(4), 0);
        EXPECT_EQ(world::trace(), world::reset_lines(both));
        EXPECT_EQ(world::render_lists(),
                  "profile 1: devices 2 [001122334455 AABBCCDDEE0F ], enabled 0, limit 1440 + 0, "
                  "used 0/0/0, blocked 0, collected +0, apps 3, policy 4\n"
                  "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
                  "  app 10: used 5/0/0, blocked 0, days [] next 0\n"
                  "  app 20: used 6/0/0, blocked 0, days [] next 0\n"
                  "  app 50: used 7/0/0, blocked 0, days [] next 0\n"
                  "policy 4: profile 1, count 3, rules\n");
    }
}

TEST_F(Policies, KeepTheWholeProfileCutOffWhenTheRulesAreDeleted) {
    config_user_profile_t *profile = world::make_profile(1, both);
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::make_policy(4, {{10, 2, 0}}, profile);
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(world::trace(), world::reset_lines(both));
    EXPECT_EQ(profile->blocked, 1);
}

// ---- The policy of a profile ---------------------------------------------------------------

TEST_F(Policies, AreFoundThroughTheirProfile) {
    world::make_policy(4, {}, world::make_profile(1));
    world::make_profile(2);
    struct {
        int32_t profile_id, result, policy_id;
    } const table[] = {{1, 0, 4}, {2, -1, 99}, {3, -1, 99}};
    for (const auto &row : table) {
        int32_t policy_id = 99;
        EXPECT_EQ(utm_app_get_policy_of_profile(row.profile_id, &policy_id), row.result);
        EXPECT_EQ(policy_id, row.policy_id) << row.profile_id;
    }
    EXPECT_EQ(world::trace(), "");
}

} // namespace
