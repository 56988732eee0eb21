#include "store/policies.h"

#include "core/owners.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Policies : public world_test {};

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

TEST_F(Policies, ReturnTheIdOfANewPolicyAndStandInTheOrderOfTheirCreation) {
    for (const int32_t id : {4, 1, INT32_MAX}) {
        EXPECT_EQ(utm_app_create_policy(id), id);
        EXPECT_EQ(world::trace(), "log Create policy " + std::to_string(id) + " success\n");
    }
    EXPECT_EQ(world::render_lists(), "policy 4: profile none, count 0, rules\n"
                                     "policy 1: profile none, count 0, rules\n"
                                     "policy 2147483647: profile none, count 0, rules\n");
}

TEST_F(Policies, RefuseIdsBelowOneAndIdsThatAreTaken) {
    world::make_policy(4, {{12, 1, 30}});
    const std::string before = world::render_lists();
    const std::pair<int32_t, const char *> table[] = {
        {0, "log Create policy 0 failed because id <= 0\n"},
        {-1, "log Create policy -1 failed because id <= 0\n"},
        {INT32_MIN, "log Create policy -2147483648 failed because id <= 0\n"},
        {4, "log Create policy 4 failed because policy already exist\n"},
    };
    for (const auto &[id, line] : table) {
        EXPECT_EQ(utm_app_create_policy(id), -1);
        EXPECT_EQ(world::trace(), line);
    }
    EXPECT_EQ(world::render_lists(), before);
}

// ---- Rules ---------------------------------------------------------------------------------

TEST_F(Policies, AddAndUpdateRulesInTheOrderGiven) {
    world::make_policy(4, {});
    EXPECT_EQ(add_apps(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, -5}, {10, 2, 7}, {10, 1, 8}}), 0);
    EXPECT_EQ(world::trace(), "log Policy 4 add app 10 action 1 limit 30 success\n"
                              "log Policy 4 add app 20 action 2 limit 0 success\n"
                              "log Policy 4 add app 30 action 1 limit -5 success\n"
                              "log Policy 4 update app 10 action 2 limit 7 success\n"
                              "log Policy 4 update app 10 action 1 limit 8 success\n"
                              "log Add apps to policy 4 success\n");
    EXPECT_EQ(apps_of_policy(4), "3: 30/1/-5 20/2/0 10/1/8");
}

TEST_F(Policies, StoreTheValidRulesAroundARejectedOne) {
    for (const int32_t action : {3, -1, 255, 256, INT32_MAX, INT32_MIN}) {
        world::reset();
        world::make_policy(4, {{40, 1, 30}});
        EXPECT_EQ(add_apps(4, {{10, 1, 30}, {20, action, 0}, {40, action, 5}, {30, 2, 0}}), -1);
        EXPECT_EQ(world::trace(), "log Policy 4 add app 10 action 1 limit 30 success\n"
                                  "log Policy 4 add app 30 action 2 limit 0 success\n"
                                  "log Add apps to policy 4 failed\n");
        EXPECT_EQ(apps_of_policy(4), "3: 30/2/0 10/1/30 40/1/30") << action;
    }
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

TEST_F(Policies, RefuseRulesForAMissingPolicyAndNoRule) {
    config_app_policy_t *policy = world::make_policy(4, {});
    const config_policy_rule_t rule = {20, 2, 0};
    EXPECT_EQ(utm_app_add_apps_to_policy(5, &rule, 1), -1);
    EXPECT_EQ(utm_app_add_apps_to_policy(5, &rule, 0), -1);
    EXPECT_EQ(utm_app_update_app_in_policy(5, &rule), -1);
    EXPECT_EQ(utm_app_update_app_in_policy(5, nullptr), -1);
    EXPECT_EQ(utm_app_update_app_in_policy(4, nullptr), -1);
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_set_rule(nullptr, &rule), -1);
    EXPECT_EQ(utm_app_set_rule(policy, nullptr), -1);
    EXPECT_EQ(world::trace(), "log Add apps to policy 5 failed\n"
                              "log Add apps to policy 5 failed\n"
                              "log Update app to policy 5 failed\n");
}

TEST_F(Policies, UpdateOneRuleUnderItsOwnLines) {
    struct {
        config_policy_rule_t rule;
        int32_t result;
        const char *change, *apps;
    } const table[] = {
        {{10, 2, 7}, 0, "log Policy 4 update app 10 action 2 limit 7 success\n", "1: 10/2/7"},
        {{20, 1, 9}, 0, "log Policy 4 add app 20 action 1 limit 9 success\n", "2: 20/1/9 10/1/30"},
        {{10, 0, 0}, 0, "log Policy 4 update app 10 action 0 limit 0 success\n", "-1 none"},
        {{20, 0, 0}, 0, "", "1: 10/1/30"},
        {{10, 3, 7}, -1, "", "1: 10/1/30"},
    };
    for (const auto &row : table) {
        world::reset();
        world::make_policy(4, {{10, 1, 30}});
        EXPECT_EQ(utm_app_update_app_in_policy(4, &row.rule), row.result);
        EXPECT_EQ(world::trace(),
                  row.change + std::string(row.result == 0
                                               ? "log Update app to policy 4 success\n"
                                               : "log Update app to policy 4 failed\n"));
        EXPECT_EQ(apps_of_policy(4), row.apps);
    }
}

TEST_F(Policies, HaveNoRulesToReadWhenMissingOrEmpty) {
    world::make_policy(4, {});
    world::make_policy(5, {{10, 1, 30}, {10, 0, 0}});
    for (const int32_t id : {4, 5, 6})
        EXPECT_EQ(apps_of_policy(id), "-1 none");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Policies, KeepThePolicyAndItsCountWhenTheRulesAreDeleted) {
    world::make_policy(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, 5}});
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(utm_app_delete_policy(5), -1);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_policy(4), "policy 4: profile none, count 3, rules\n");
    EXPECT_EQ(apps_of_policy(4), "3: 0/0/0 0/0/0 0/0/0");
    ASSERT_EQ(add_apps(4, {{40, 1, 9}}), 0);
    EXPECT_EQ(apps_of_policy(4), "4: 40/1/9 0/0/0 0/0/0 0/0/0");
    ASSERT_EQ(add_apps(4, {{40, 0, 0}}), 0);
    EXPECT_EQ(apps_of_policy(4), "3: 0/0/0 0/0/0 0/0/0");
}

TEST_F(Policies, CountNoFurtherThanTheirIntegerGoes) {
    config_app_policy_t *policy = world::make_policy(4, {});
    policy->app_count = INT32_MAX - 1;
    ASSERT_EQ(add_apps(4, {{10, 1, 9}, {20, 1, 9}, {30, 1, 9}}), 0);
    EXPECT_EQ(policy->app_count, INT32_MAX);
}

// ---- The policy of a profile ---------------------------------------------------------------

TEST_F(Policies, AreRefusedToAProfileWithoutAChange) {
    struct {
        const char *name;
        int32_t profile_id, policy_id;
        const char *trace;
    } const table[] = {
        {"no profile", 9, 4, "log Add policy 4 to profile 9 failed because profile not exist\n"},
        {"neither", 9, 8, "log Add policy 8 to profile 9 failed because profile not exist\n"},
        {"second", 1, 5, "log Add policy 5 to profile 1 failed because already has policy\n"},
        {"same", 1, 4, "log Add policy 4 to profile 1 failed because already has policy\n"},
        {"missing", 1, 8, "log Add policy 8 to profile 1 failed because already has policy\n"},
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

TEST_F(Policies, LeaveTheirProfileWhenTheyAreDestroyed) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{12, 5}});
    config_app_policy_t *policy = world::make_policy(4, {{12, 1, 60}}, profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_destroy_policy(policy);
    }
    EXPECT_EQ(world::brief(world::render_lists()),
              "profile 1: devices 0 [], apps 1\n  app 12: used 5/0/0\n");
    EXPECT_EQ(world::trace(), "");
}

} // namespace
