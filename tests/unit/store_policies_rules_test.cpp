#include "store/policies.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <gtest/gtest.h>

namespace {

class PolicyRules : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;
constexpr int no_record = -1;

enum bound_t { unbound, bound };
enum feature_t { off, on };
enum acl_lines_t { nothing, blocks, unblocks };

/// A rule set for application 12 of policy 4, and what comes of it.
struct rule_case {
    feature_t feature;
    bound_t binding;
    int used, blocked; ///< of the profile's usage record; `no_record` for none
    int action, limit; ///< of the rule that is set
    acl_lines_t lines; ///< what is run on each device of the profile
    int blocked_after; ///< `no_record` where there is none
};

std::string name_of(const rule_case &row) {
    return std::string(row.feature == on ? "on" : "off") +
           (row.binding == bound ? ", bound" : ", unbound") + ", used " + std::to_string(row.used) +
           ", blocked " + std::to_string(row.blocked) + ", action " + std::to_string(row.action) +
           ", limit " + std::to_string(row.limit);
}

std::string lines_of(acl_lines_t lines) {
    return lines == blocks     ? world::block_lines(both, 12)
           : lines == unblocks ? world::unblock_lines(both, 12)
                               : "";
}

/// A profile with two devices and, bound to it or not, policy 4 with the rules given.
config_app_policy_t *make_state(const rule_case &row,
                                const std::vector<config_policy_rule_t> &rules) {
    world::reset();
    config_user_profile_t *profile = world::make_profile(1, both);
    config_app_policy_t *policy =
        world::make_policy(4, rules, row.binding == bound ? profile : nullptr);
    if (row.used != no_record) {
        world::make_usage(profile, {{12, row.used}});
        world::usage_of(profile, 12)->blocked = row.blocked;
    }
    world::set_active(row.feature == on);
    return policy;
}

int32_t set_rule(config_app_policy_t *policy, const rule_case &row) {
    const config_policy_rule_t rule = {12, row.action, row.limit};
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_set_rule(policy, &rule);
}

std::string rule_of(const rule_case &row) {
    return std::to_string(row.action) + "/" + std::to_string(row.limit);
}

/// The usage record as it should be, with its rule or without.
std::string expected_usage(const rule_case &row, bool ruled) {
    if (row.used == no_record)
        return "apps 0\n";
    return "apps 1\n  app 12: used " + std::to_string(row.used) + "/0/0, blocked " +
           std::to_string(row.blocked_after) + ", days [] next 0" +
           (ruled && row.binding == bound ? ", rule " + rule_of(row) : "") + "\n";
}

std::string expected_policy(const rule_case &row, bool ruled) {
    const std::string head =
        std::string("policy 4: profile ") + (row.binding == bound ? "1" : "none");
    if (!ruled)
        return head + ", count 0, rules\n";
    const bool is_used = row.binding == bound && row.used != no_record;
    return head + ", count 1, rules 12/" + rule_of(row) + (is_used ? "\n" : " (unused)\n");
}

std::string usage_and_policy() {
    return world::render_apps(1) + world::render_policy(4);
}

std::string log_line(const char *verb, const rule_case &row) {
    return std::string("log Policy 4 ") + verb + " app 12 action " + std::to_string(row.action) +
           " limit " + std::to_string(row.limit) + " success\n";
}

TEST_F(PolicyRules, ThatAreNewBlockWhatTheyBlockNow) {
    const rule_case table[] = {
        // Blocked for good: the lines need the feature, the flag only needs the record.
        {off, unbound, no_record, 0, 2, 0, nothing, no_record},
        {on, unbound, no_record, 0, 2, 0, nothing, no_record},
        {on, unbound, 50, 0, 2, 0, nothing, 0},
        {off, bound, no_record, 0, 2, 0, nothing, no_record},
        {on, bound, no_record, 0, 2, 0, blocks, no_record},
        {off, bound, 50, 0, 2, 60, nothing, 1},
        {on, bound, 50, 0, 2, 60, blocks, 1},
        {on, bound, 0, 0, 2, 60, blocks, 1},
        {on, bound, 50, 1, 2, 60, blocks, 1},
        {off, bound, 50, 1, 2, 60, nothing, 1},
        // Limited: blocked from the minute on that reaches the limit.
        {on, unbound, no_record, 0, 1, 0, nothing, no_record},
        {on, unbound, 50, 0, 1, 50, nothing, 0},
        {on, bound, no_record, 0, 1, 0, nothing, no_record},
        {on, bound, 49, 0, 1, 50, nothing, 0},
        {on, bound, 50, 0, 1, 50, blocks, 1},
        {on, bound, 51, 0, 1, 50, blocks, 1},
        {on, bound, 0, 0, 1, 0, blocks, 1},
        {on, bound, 0, 0, 1, -1, blocks, 1},
        {on, bound, 50, 1, 1, 50, blocks, 1},
        {on, bound, 49, 1, 1, 50, nothing, 1},
        {off, bound, 49, 0, 1, 50, nothing, 0},
        {off, bound, 50, 0, 1, 50, nothing, 0},
        {off, bound, no_record, 0, 1, 0, nothing, no_record},
    };
    for (const rule_case &row : table) {
        SCOPED_TRACE(name_of(row));
        config_app_policy_t *policy = make_state(row, {});
        EXPECT_EQ(set_rule(policy, row), 0);
        EXPECT_EQ(world::trace(), log_line("add", row) + lines_of(row.lines));
        EXPECT_EQ(usage_and_policy(), expected_usage(row, true) + expected_policy(row, true));
    }
}

TEST_F(PolicyRules, ThatAreUpdatedBringTheDevicesInLine) {
    const rule_case table[] = {
        // Blocked for good.
        {off, unbound, no_record, 0, 2, 5, nothing, no_record},
        {on, unbound, no_record, 0, 2, 5, nothing, no_record},
        {on, unbound, 50, 0, 2, 5, nothing, 0},
        {off, bound, no_record, 0, 2, 5, nothing, no_record},
        {on, bound, no_record, 0, 2, 5, blocks, no_record},
        {off, bound, 50, 0, 2, 60, nothing, 1},
        {on, bound, 50, 0, 2, 60, blocks, 1},
        {on, bound, 50, 1, 2, 60, blocks, 1},
        // Limited.
        {on, unbound, no_record, 0, 1, 50, nothing, no_record},
        {on, bound, no_record, 0, 1, 50, unblocks, no_record},
        {on, bound, no_record, 0, 1, 0, unblocks, no_record},
        {on, bound, 49, 1, 1, 50, unblocks, 0},
        {on, bound, 49, 0, 1, 50, nothing, 0},
        {on, bound, 50, 0, 1, 50, blocks, 1},
        {on, bound, 51, 0, 1, 50, blocks, 1},
        {on, bound, 50, 1, 1, 50, nothing, 1},
        {on, bound, 0, 0, 1, 0, blocks, 1},
        {off, bound, no_record, 0, 1, 50, nothing, no_record},
        {off, bound, 49, 1, 1, 50, nothing, 1},
        {off, bound, 50, 0, 1, 50, nothing, 0},
        {off, unbound, no_record, 0, 1, 50, nothing, no_record},
    };
    for (const rule_case &row : table)
        for (const int32_t action_before : {1, 2}) {
            SCOPED_TRACE(name_of(row) + ", before " + std::to_string(action_before));
            config_app_policy_t *policy = make_state(row, {{12, action_before, 77}});
            EXPECT_EQ(set_rule(policy, row), 0);
            EXPECT_EQ(world::trace(), log_line("update", row) + lines_of(row.lines));
            EXPECT_EQ(usage_and_policy(), expected_usage(row, true) + expected_policy(row, true));
        }
}

TEST_F(PolicyRules, ThatAreRemovedReleaseTheDevices) {
    const rule_case table[] = {
        {off, unbound, no_record, 0, 0, 0, nothing, no_record},
        {on, unbound, no_record, 0, 0, 0, nothing, no_record},
        {on, unbound, 50, 1, 0, 0, nothing, 1}, // another profile's business
        {on, bound, no_record, 0, 0, 0, unblocks, no_record},
        {on, bound, 50, 0, 0, 0, unblocks, 0},
        {on, bound, 50, 1, 0, 99, unblocks, 0},
        {off, bound, no_record, 0, 0, 0, nothing, no_record},
        {off, bound, 50, 0, 0, 0, nothing, 0},
        {off, bound, 50, 1, 0, 0, nothing, 0},
    };
    for (const rule_case &row : table)
        for (const int32_t action_before : {1, 2}) {
            SCOPED_TRACE(name_of(row) + ", before " + std::to_string(action_before));
            config_app_policy_t *policy = make_state(row, {{12, action_before, 77}});
            EXPECT_EQ(set_rule(policy, row), 0);
            EXPECT_EQ(world::trace(), log_line("update", row) + lines_of(row.lines));
            EXPECT_EQ(usage_and_policy(), expected_usage(row, false) + expected_policy(row, false));
        }
}

TEST_F(PolicyRules, ThatDoNotExistAreRemovedWithoutATrace) {
    const rule_case table[] = {
        {on, unbound, no_record, 0, 0, 5, nothing, no_record},
        {on, bound, no_record, 0, 0, 5, nothing, no_record},
        {on, bound, 50, 1, 0, 5, nothing, 1},
        {off, bound, 50, 1, 0, 5, nothing, 1},
    };
    for (const rule_case &row : table) {
        SCOPED_TRACE(name_of(row));
        config_app_policy_t *policy = make_state(row, {});
        EXPECT_EQ(set_rule(policy, row), 0);
        EXPECT_EQ(world::trace(), "");
        EXPECT_EQ(usage_and_policy(), expected_usage(row, false) + expected_policy(row, false));
    }
}

TEST_F(PolicyRules, AreRefusedWithoutPolicyOrRuleOrKnownAction) {
    config_app_policy_t *policy = world::make_policy(4, {{12, 1, 30}});
    const std::string before = world::render_lists();
    const config_policy_rule_t good = {12, 2, 0};
    const config_policy_rule_t odd[] = {{12, 3, 0}, {12, -1, 0}, {13, 3, 0}, {13, -1, 0}};
    {
        const mutex_guard lock(utm_app_config_mutex);
        EXPECT_EQ(utm_app_set_rule(nullptr, &good), -1);
        EXPECT_EQ(utm_app_set_rule(policy, nullptr), -1);
        EXPECT_EQ(utm_app_set_rule(nullptr, nullptr), -1);
        for (const config_policy_rule_t &rule : odd)
            EXPECT_EQ(utm_app_set_rule(policy, &rule), -1) << rule.action;
    }
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(PolicyRules, LeaveOtherRulesAndOtherApplicationsAlone) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{11, 90}, {12, 90}, {13, 90}});
    world::make_policy(4, {{11, 1, 60}, {13, 1, 60}}, profile);
    world::set_active(true);
    const config_policy_rule_t rule = {12, 2, 0};
    EXPECT_EQ(utm_app_update_app_in_policy(4, &rule), 0);
    EXPECT_EQ(usage_and_policy(), "apps 3\n"
                                  "  app 11: used 90/0/0, blocked 0, days [] next 0, rule 1/60\n"
                                  "  app 12: used 90/0/0, blocked 1, days [] next 0, rule 2/0\n"
                                  "  app 13: used 90/0/0, blocked 0, days [] next 0, rule 1/60\n"
                                  "policy 4: profile 1, count 3, rules 12/2/0 13/1/60 11/1/60\n");
}

TEST_F(PolicyRules, UnblockEveryDeviceWhenABlockBecomesALimitNotYetReached) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 30}});
    world::make_policy(4, {}, profile);
    world::set_active(true);
    const config_policy_rule_t rules[] = {{12, 2, 0}, {12, 1, 31}};
    EXPECT_EQ(utm_app_add_apps_to_policy(4, rules, 2), 0);
    EXPECT_EQ(world::trace(), "log Policy 4 add app 12 action 2 limit 0 success\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "log Policy 4 update app 12 action 1 limit 31 success\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 12 0\n"
                              "log Add apps to policy 4 success\n");
    EXPECT_EQ(world::usage_of(profile, 12)->blocked, 0);
}

TEST_F(PolicyRules, SucceedAlthoughTheirLinesFail) {
    world::make_policy(4, {}, world::make_profile(1, {world::tablet}));
    world::set_active(true);
    world::on_system([](const std::string &) { return 256; });
    const config_policy_rule_t rules[] = {{12, 2, 0}, {12, 0, 0}};
    EXPECT_EQ(utm_app_add_apps_to_policy(4, rules, 2), 0);
    EXPECT_EQ(world::trace(),
              "log Policy 4 add app 12 action 2 limit 0 success\n"
              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
              "log Command lcsh apg acl set 00:11:22:33:44:55 12 0 18 return 256\n"
              "log Policy 4 update app 12 action 0 limit 0 success\n"
              "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
              "log Command lcsh apg acl del 00:11:22:33:44:55 12 0 return 256 != 0\n"
              "log Add apps to policy 4 success\n");
}

} // namespace
