/// What the store does when memory runs out.

#include "core/owners.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <gtest/gtest.h>

namespace {

class StoreMemory : public world_test {};

/// An operation on the state that `make_state` leaves, and what the failure of its nth allocation
/// comes to.
struct memory_case {
    std::function<int32_t()> act;
    int nth;
    int32_t result;
    const char *trace;
};

int32_t add_rules() {
    const config_policy_rule_t rules[] = {{20, 2, 0}, {12, 1, 9}, {30, 1, 5}};
    return utm_app_add_apps_to_policy(4, rules, 3);
}

int32_t update_rule() {
    const config_policy_rule_t rule = {20, 2, 0};
    return utm_app_update_app_in_policy(4, &rule);
}

int32_t count_devices() {
    int32_t count = 99;
    const heap_ptr<uint8_t> macs(utm_app_get_devices(1, &count));
    return count;
}

int32_t count_apps() {
    int32_t count = 99;
    const heap_ptr<config_policy_rule_t> rules(utm_app_get_apps_of_policy(4, &count));
    return count;
}

int32_t create_profile() {
    return utm_app_create_profile(2);
}

int32_t add_phone() {
    return utm_app_add_device(1, world::phone.data());
}

/// Profile 1 with a device and, bound to it, policy 4 with a rule; the feature is active.
void make_state() {
    world::reset();
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, {world::tablet}));
    world::set_active(true);
}

/// Fails an allocation of an operation.
/// @return the store before and after
std::pair<std::string, std::string> run(const memory_case &row) {
    SCOPED_TRACE(row.trace);
    make_state();
    const std::string before = world::render_lists();
    world::fail_allocation(row.nth);
    EXPECT_EQ(row.act(), row.result);
    EXPECT_GE(world::allocations(), row.nth);
    world::fail_allocation(0);
    EXPECT_EQ(world::trace(), row.trace);
    return {before, world::render_lists()};
}

TEST_F(StoreMemory, LeavesTheStoreAsItWasAndLetsTheSameBeAskedAgain) {
    const memory_case cases[] = {
        {create_profile, 1, -1, "log Create profile 2 failed because malloc failed\n"},
        {[] { return utm_app_create_profile(1); }, 1, -1,
         "log Create profile 1 failed because malloc failed\n"},
        {add_phone, 1, -1, "log Add dev to profile 1 failed because malloc failed\n"},
        {count_devices, 1, -1, "log Get devices of profile 1 failed because malloc failed\n"},
        {[] { return utm_app_create_policy(5); }, 1, -1,
         "log Create policy 5 failed because malloc failed\n"},
        {[] { return utm_app_create_policy(4); }, 1, -1,
         "log Create policy 4 failed because malloc failed\n"},
        {update_rule, 1, -1,
         "log Policy 4 add app 20 action 2 limit 0 failed\n"
         "log Update app to policy 4 failed\n"},
        {count_apps, 1, -1, "log Get apps of policy 4 failed because malloc failed\n"},
    };
    for (const memory_case &row : cases) {
        const auto [before, after] = run(row);
        EXPECT_EQ(after, before) << row.trace;
        row.act();
        const std::string again = world::render_lists();
        make_state();
        row.act();
        EXPECT_EQ(again, world::render_lists()) << row.trace;
    }
}

TEST_F(StoreMemory, DoesWhatItCan) {
    const std::pair<memory_case, const char *> cases[] = {
        {{add_rules, 1, -1,
          "log Policy 4 add app 20 action 2 limit 0 failed\n"
          "log Policy 4 update app 12 action 1 limit 9 success\n"
          "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
          "log Policy 4 add app 30 action 1 limit 5 success\n"
          "log Add apps to policy 4 failed\n"},
         "count 2, rules 30/1/5 (unused) 12/1/9 (unused)\n"},
        {{add_rules, 2, -1,
          "log Policy 4 add app 20 action 2 limit 0 success\n"
          "run lcsh apg acl set 00:11:22:33:44:55 20 0 18\n"
          "log Policy 4 update app 12 action 1 limit 9 success\n"
          "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
          "log Policy 4 add app 30 action 1 limit 5 failed\n"
          "log Add apps to policy 4 failed\n"},
         "count 2, rules 20/2/0 (unused) 12/1/9 (unused)\n"},
        {{add_phone, 2, 0,
          "log Update device list string failed because malloc failed\n"
          "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
          "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n"},
         "devices 2 [001122334455 ] (really [001122334455 AABBCCDDEE0F ])"},
    };
    for (const auto &[row, left] : cases) {
        const std::string after = run(row).second;
        EXPECT_NE(after.find(left), std::string::npos) << after;
    }
}

TEST_F(StoreMemory, LeavesTheTextOfTheDevicesAloneWhenOneLeaves) {
    config_user_profile_t *profile = world::make_profile(1, world::both);
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_delete_device(1, world::tablet.data()), 0);
    EXPECT_EQ(world::trace(), "log Update device list string failed because malloc failed\n"
                              "log Del dev 00:11:22:33:44:55 from profile 1 success\n");
    EXPECT_STREQ(profile->device_list_string, "001122334455 AABBCCDDEE0F ");
    world::make_profile(2);
    world::fail_allocation(2);
    EXPECT_EQ(utm_app_add_device(2, world::phone.data()), 0);
    EXPECT_EQ(world::brief(world::render_profile(2)),
              "profile 2: devices 1 [] (really [AABBCCDDEE0F ])\n");
}

TEST_F(StoreMemory, LeavesOutTheWeekdaysThatFailedAndNoOther) {
    const std::string failed = "log Add weekday to profile 2 failed because malloc failed\n";
    for (int missing = 0; missing < 7; ++missing) {
        world::reset();
        world::fail_allocation(missing + 2);
        EXPECT_EQ(create_profile(), 0);
        std::string weekdays = "\n  weekdays";
        for (int day = 0; day < 7; ++day)
            weekdays += day == missing ? "" : " " + std::to_string(day) + ":1440";
        EXPECT_EQ(world::brief(world::render_profile(2)),
                  "profile 2: devices 0 []" + weekdays + "\n");
        EXPECT_EQ(world::trace(), failed + "log Create profile 2 success\n");
    }
    world::fail_allocations_from(6);
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_add_weekday_limits(2), -1);
    EXPECT_EQ(world::trace(), failed + failed);
}

TEST_F(StoreMemory, NeedsNoneToBindReleaseOrDelete) {
    world::make_profile(1, world::both);
    world::make_policy(4, {{12, 2, 0}});
    world::fail_allocations_from(1);
    EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(utm_app_delete_profile(1), 0);
    EXPECT_EQ(utm_app_flush_profiles(), 0);
    EXPECT_EQ(world::allocations(), 0);
    EXPECT_EQ(world::render_lists(), "");
}

} // namespace
