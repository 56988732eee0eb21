#include "store/blocking.h"

#include "store/policies.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

class PolicyRules : public world_test {};
class PolicyBinding : public world_test {};
class AllBlocks : public world_test {};

using world::both;
using world::phone;
using world::tablet;

constexpr int no_record = -1;

enum feature_t { off, on };
enum bound_t { unbound, bound };
enum acl_lines_t { nothing, blocks, unblocks };

// ---- A rule --------------------------------------------------------------------------------

/// A rule set for application 12 of policy 4, and what comes of it.
struct rule_case {
    feature_t feature;
    bound_t binding;
    int used, blocked; ///< of the profile's usage record; `no_record` for none
    int action, limit; ///< of the rule that is set
    acl_lines_t lines; ///< what is run on each device of the profile
    int blocked_after; ///< where there is a record
};

std::string lines_of(acl_lines_t lines) {
    return lines == blocks     ? world::block_lines(both, 12)
           : lines == unblocks ? world::unblock_lines(both, 12)
                               : "";
}

/// The profile's usage record and the policy as they should be. An action of 0 leaves no rule.
std::string expected_state(const rule_case &row) {
    const bool is_bound = row.binding == bound;
    const bool is_linked = is_bound && row.used != no_record && row.action != 0;
    const std::string rule = std::to_string(row.action) + "/" + std::to_string(row.limit);
    std::string text = "apps 0\n";
    if (row.used != no_record)
        text = "apps 1\n  app 12: used " + std::to_string(row.used) + "/0/0" +
               (row.blocked_after ? ", blocked 1" : "") + (is_linked ? ", rule " + rule : "") +
               "\n";
    text += std::string("policy 4: profile ") + (is_bound ? "1" : "none");
    if (row.action == 0)
        return text + ", count 0, rules\n";
    return text + ", count 1, rules 12/" + rule + (is_linked ? "\n" : " (unused)\n");
}

/// Sets the rule for a profile with two devices and, bound to it or not, a policy.
/// @param before  the policy's rules
/// @param logged  "add", "update" or nothing for no line
void expect_set(const rule_case &row, const std::vector<config_policy_rule_t> &before,
                const std::string &logged) {
    const config_policy_rule_t rule = {12, row.action, row.limit};
    const std::string what =
        " action " + std::to_string(row.action) + " limit " + std::to_string(row.limit);
    SCOPED_TRACE((row.feature == on ? "on, used " : "off, used ") + std::to_string(row.used) +
                 what);
    world::reset();
    config_user_profile_t *profile = world::make_profile(1, both);
    config_app_policy_t *policy =
        world::make_policy(4, before, row.binding == bound ? profile : nullptr);
    if (row.used != no_record) {
        world::make_usage(profile, {{12, row.used}});
        world::usage_of(profile, 12)->blocked = row.blocked;
    }
    world::set_active(row.feature == on);
    {
        const mutex_guard lock(utm_app_config_mutex);
        EXPECT_EQ(utm_app_set_rule(policy, &rule), 0);
    }
    const std::string line = "log Policy 4 " + logged + " app 12" + what + " success\n";
    EXPECT_EQ(world::trace(), (logged.empty() ? "" : line) + lines_of(row.lines));
    EXPECT_EQ(world::brief(world::render_apps(1) + world::render_policy(4)), expected_state(row));
}

TEST_F(PolicyRules, ThatAreNewBlockWhatTheyBlockNow) {
    const rule_case table[] = {
        // Blocked for good: the lines need the feature, the flag only needs the record.
        {off, unbound, no_record, 0, 2, 0, nothing, 0},
        {on, unbound, no_record, 0, 2, 0, nothing, 0},
        {on, unbound, 50, 0, 2, 0, nothing, 0},
        {off, bound, no_record, 0, 2, 0, nothing, 0},
        {on, bound, no_record, 0, 2, 0, blocks, 0},
        {off, bound, 50, 0, 2, 60, nothing, 1},
        {on, bound, 50, 0, 2, 60, blocks, 1},
        {on, bound, 50, 1, 2, 60, blocks, 1},
        // Limited: blocked from the minute on that reaches the limit.
        {on, unbound, 50, 0, 1, 50, nothing, 0},
        {on, bound, no_record, 0, 1, 0, nothing, 0},
        {on, bound, 49, 0, 1, 50, nothing, 0},
        {on, bound, 50, 0, 1, 50, blocks, 1},
        {on, bound, 51, 0, 1, 50, blocks, 1},
        {on, bound, 0, 0, 1, 0, blocks, 1},
        {on, bound, 0, 0, 1, -1, blocks, 1},
        {on, bound, 50, 1, 1, 50, blocks, 1},
        {on, bound, 49, 1, 1, 50, nothing, 1},
        {off, bound, 50, 0, 1, 50, nothing, 0},
    };
    for (const rule_case &row : table)
        expect_set(row, {}, "add");
}

TEST_F(PolicyRules, ThatAreUpdatedOrRemovedBringTheDevicesInLine) {
    const rule_case table[] = {
        // Blocked for good.
        {on, unbound, no_record, 0, 2, 5, nothing, 0},
        {on, unbound, 50, 0, 2, 5, nothing, 0},
        {off, bound, no_record, 0, 2, 5, nothing, 0},
        {on, bound, no_record, 0, 2, 5, blocks, 0},
        {off, bound, 50, 0, 2, 60, nothing, 1},
        {on, bound, 50, 0, 2, 60, blocks, 1},
        {on, bound, 50, 1, 2, 60, blocks, 1},
        // Limited.
        {on, unbound, no_record, 0, 1, 50, nothing, 0},
        {on, bound, no_record, 0, 1, 0, unblocks, 0},
        {on, bound, 49, 1, 1, 50, unblocks, 0},
        {on, bound, 49, 0, 1, 50, nothing, 0},
        {on, bound, 50, 0, 1, 50, blocks, 1},
        {on, bound, 51, 0, 1, 50, blocks, 1},
        {on, bound, 50, 1, 1, 50, nothing, 1},
        {on, bound, 0, 0, 1, 0, blocks, 1},
        {off, bound, no_record, 0, 1, 50, nothing, 0},
        {off, bound, 49, 1, 1, 50, nothing, 1},
        {off, bound, 50, 0, 1, 50, nothing, 0},
        // Removed.
        {on, unbound, no_record, 0, 0, 0, nothing, 0},
        {on, unbound, 50, 1, 0, 0, nothing, 1}, // another profile's business
        {on, bound, no_record, 0, 0, 0, unblocks, 0},
        {on, bound, 50, 0, 0, 0, unblocks, 0},
        {on, bound, 50, 1, 0, 99, unblocks, 0},
        {off, bound, no_record, 0, 0, 0, nothing, 0},
        {off, bound, 50, 1, 0, 0, nothing, 0},
    };
    for (const rule_case &row : table)
        for (const int32_t action_before : {1, 2})
            expect_set(row, {{12, action_before, 77}}, "update");
}

TEST_F(PolicyRules, ThatDoNotExistAreRemovedWithoutATrace) {
    for (const feature_t feature : {on, off}) {
        expect_set({feature, unbound, no_record, 0, 0, 5, nothing, 0}, {}, "");
        expect_set({feature, bound, 50, 1, 0, 5, nothing, 1}, {}, "");
    }
}

TEST_F(PolicyRules, LeaveOtherRulesAndOtherApplicationsAlone) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{11, 90}, {12, 90}, {13, 90}});
    world::make_policy(4, {{11, 1, 60}, {13, 1, 60}}, profile);
    world::set_active(true);
    const config_policy_rule_t rule = {12, 2, 0};
    EXPECT_EQ(utm_app_update_app_in_policy(4, &rule), 0);
    EXPECT_EQ(world::brief(world::render_apps(1) + world::render_policy(4)),
              "apps 3\n"
              "  app 11: used 90/0/0, rule 1/60\n"
              "  app 12: used 90/0/0, blocked 1, rule 2/0\n"
              "  app 13: used 90/0/0, rule 1/60\n"
              "policy 4: profile 1, count 3, rules 12/2/0 13/1/60 11/1/60\n");
}

// ---- The whole policy ----------------------------------------------------------------------

TEST_F(PolicyBinding, BlocksRuleByRuleInListOrderEvenWhileTheFeatureIsOff) {
    for (const bool active : {false, true}) {
        world::reset();
        config_user_profile_t *profile = world::make_profile(1, both);
        world::make_usage(profile, {{10, 59}, {20, 60}, {30, 61}, {40, 5}});
        world::make_policy(4, {{10, 1, 60}, {20, 1, 60}, {30, 1, 60}, {40, 2, 9}, {50, 1, 0}});
        world::set_active(active);
        EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
        EXPECT_EQ(world::trace(), "log block device to use 40\n" + world::block_lines(both, 40) +
                                      "log block device to use 30 because exceed limit\n" +
                                      world::block_lines(both, 30) +
                                      "log block device to use 20 because exceed limit\n" +
                                      world::block_lines(both, 20) +
                                      "log Add policy 4 to profile 1 success\n");
        EXPECT_EQ(
            world::brief(world::render_lists()),
            "profile 1: devices 2 [001122334455 AABBCCDDEE0F ], apps 4, policy 4\n"
            "  app 10: used 59/0/0, rule 1/60\n"
            "  app 20: used 60/0/0, rule 1/60\n"
            "  app 30: used 61/0/0, rule 1/60\n"
            "  app 40: used 5/0/0, rule 2/9\n"
            "policy 4: profile 1, count 5, rules 50/1/0 (unused) 40/2/9 30/1/60 20/1/60 10/1/60\n");
    }
}

TEST_F(PolicyBinding, WritesItsLinesForAProfileWithoutDevicesToo) {
    world::make_usage(world::make_profile(1), {{20, 60}});
    world::make_policy(4, {{20, 1, 60}, {40, 2, 0}});
    EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
    EXPECT_EQ(world::trace(), "log block device to use 40\n"
                              "log block device to use 20 because exceed limit\n"
                              "log Add policy 4 to profile 1 success\n");
}

TEST_F(PolicyBinding, IsReleasedWhenTheRulesAreDeletedAndInForceWhenTheyAreRefilled) {
    for (const bool active : {false, true}) {
        world::reset();
        config_user_profile_t *profile = world::make_profile(1, both);
        profile->daily_limit_enable = profile->blocked = 1; // stays cut off
        world::make_usage(profile, {{10, 5}, {20, 6}, {50, 7}});
        world::make_policy(4, {{10, 1, 30}, {20, 2, 0}, {30, 1, 5}}, profile);
        world::usage_of(profile, 20)->blocked = 1;
        world::usage_of(profile, 50)->blocked = 1; // no rule, and released all the same
        world::set_active(active);
        EXPECT_EQ(utm_app_delete_policy(4), 0);
        EXPECT_EQ(world::trace(), world::reset_lines(both));
        EXPECT_EQ(world::brief(world::render_lists()),
                  "profile 1: devices 2 [001122334455 AABBCCDDEE0F ], enabled 1, blocked 1, "
                  "apps 3, policy 4\n"
                  "  app 10: used 5/0/0\n"
                  "  app 20: used 6/0/0\n"
                  "  app 50: used 7/0/0\n"
                  "policy 4: profile 1, count 3, rules\n");
        const config_policy_rule_t rule = {10, 1, 5};
        EXPECT_EQ(utm_app_add_apps_to_policy(4, &rule, 1), 0);
        EXPECT_EQ(world::trace(), "log Policy 4 add app 10 action 1 limit 5 success\n" +
                                      (active ? world::block_lines(both, 10) : "") +
                                      "log Add apps to policy 4 success\n");
        EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 4, rules 10/1/5\n");
    }
}

void relink_and_enforce(config_user_profile_t *profile) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_link_policy_to_usage(profile);
    utm_app_enforce_imported_use(profile);
}

TEST_F(PolicyBinding, BlocksWhatIsOverItsLimitAfterAnImportWhateverTheAction) {
    for (const bool active : {false, true}) {
        world::reset();
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

TEST_F(PolicyBinding, DoesNothingAfterAnImportWithoutAPolicy) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{10, 500}});
    const std::string before = world::render_lists();
    relink_and_enforce(profile);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_lists(), before);
}

// ---- All blocks at once --------------------------------------------------------------------

/// A profile that is cut off, with two applications of three blocked.
config_user_profile_t *make_blocked_profile(int32_t id, const std::vector<world::mac_t> &devices) {
    config_user_profile_t *profile = world::make_profile(id, devices);
    profile->daily_limit_enable = profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 6}, {14, 7}});
    world::usage_of(profile, 12)->blocked = 1;
    world::usage_of(profile, 14)->blocked = 1;
    return profile;
}

std::string trace_of(void (*act)()) {
    const mutex_guard lock(utm_app_config_mutex);
    act();
    return world::trace();
}

TEST_F(AllBlocks, AreAppliedAndLiftedProfileByProfileAndChangeNoFlag) {
    world::make_policy(4, {{12, 2, 0}}, make_blocked_profile(5, both));
    make_blocked_profile(3, {phone});
    make_blocked_profile(2, {}); // no device, no line
    world::make_policy(6, {}, world::make_profile(1, {tablet}));
    const std::string before = world::render_lists();
    EXPECT_EQ(trace_of(utm_app_apply_all_blocks),
              world::block_event(5) + world::block_lines(both, 12) + world::block_lines(both, 14) +
                  world::block_event(3) + world::block_lines({phone}, 12) +
                  world::block_lines({phone}, 14) + world::block_event(2));
    EXPECT_EQ(trace_of(utm_app_lift_all_blocks),
              world::unblock_event(5) + world::unblock_lines(both, 12) +
                  world::unblock_lines(both, 14) + world::reset_lines(both) +
                  world::unblock_event(3) + world::unblock_lines({phone}, 12) +
                  world::unblock_lines({phone}, 14) + world::unblock_event(2) +
                  world::reset_lines({tablet})); // for a policy without a rule, too
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(AllBlocks, AnnounceOnlyProfilesThatAreCutOff) {
    for (const auto &[enable, blocked] : {std::pair(0, 0), {0, 1}, {1, 0}}) {
        world::reset();
        config_user_profile_t *profile = world::make_profile(1, both);
        profile->daily_limit_enable = enable;
        profile->blocked = blocked;
        EXPECT_EQ(trace_of(utm_app_apply_all_blocks) + trace_of(utm_app_lift_all_blocks), "")
            << enable << blocked;
    }
}

TEST_F(AllBlocks, AreFlagsAndNotRules) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}, {13, 90}});
    world::make_policy(4, {{12, 2, 0}, {13, 1, 60}}, profile);
    EXPECT_EQ(trace_of(utm_app_apply_all_blocks), "");
}

} // namespace
