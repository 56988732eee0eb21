#include "core/owners.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

/// What the store does when memory runs out.
class StoreMemory : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;

/// An operation on the state that `make_state` leaves, and what the failure of its nth allocation
/// comes to.
struct memory_case {
    const char *name;
    std::function<int32_t()> act;
    int nth;
    int32_t result;
    const char *trace;
    bool is_undone; ///< the store is as if nothing had been asked
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

const memory_case cases[] = {
    {"create profile", [] { return utm_app_create_profile(2); }, 1, -1,
     "log Create profile 2 failed because malloc failed\n", true},
    {"create a profile that exists", [] { return utm_app_create_profile(1); }, 1, -1,
     "log Create profile 1 failed because malloc failed\n", true},
    {"create profile, Sunday", [] { return utm_app_create_profile(2); }, 2, 0,
     "log Add weekday to profile 2 failed because malloc failed\n"
     "log Create profile 2 success\n",
     false},
    {"create profile, Saturday", [] { return utm_app_create_profile(2); }, 8, 0,
     "log Add weekday to profile 2 failed because malloc failed\n"
     "log Create profile 2 success\n",
     false},
    {"add device", [] { return utm_app_add_device(1, world::phone.data()); }, 1, -1,
     "log Add dev to profile 1 failed because malloc failed\n", true},
    {"add device, text", [] { return utm_app_add_device(1, world::phone.data()); }, 2, 0,
     "log Update device list string failed because malloc failed\n"
     "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
     "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n",
     false},
    {"get devices", count_devices, 1, -1,
     "log Get devices of profile 1 failed because malloc failed\n", true},
    {"create policy", [] { return utm_app_create_policy(5); }, 1, -1,
     "log Create policy 5 failed because malloc failed\n", true},
    {"create a policy that exists", [] { return utm_app_create_policy(4); }, 1, -1,
     "log Create policy 4 failed because malloc failed\n", true},
    {"add apps, first", add_rules, 1, -1,
     "log Policy 4 add app 20 action 2 limit 0 failed\n"
     "log Policy 4 update app 12 action 1 limit 9 success\n"
     "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
     "log Policy 4 add app 30 action 1 limit 5 success\n"
     "log Add apps to policy 4 failed\n",
     false},
    {"add apps, last", add_rules, 2, -1,
     "log Policy 4 add app 20 action 2 limit 0 success\n"
     "run lcsh apg acl set 00:11:22:33:44:55 20 0 18\n"
     "log Policy 4 update app 12 action 1 limit 9 success\n"
     "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
     "log Policy 4 add app 30 action 1 limit 5 failed\n"
     "log Add apps to policy 4 failed\n",
     false},
    {"update app", update_rule, 1, -1,
     "log Policy 4 add app 20 action 2 limit 0 failed\n"
     "log Update app to policy 4 failed\n",
     true},
    {"get apps", count_apps, 1, -1, "log Get apps of policy 4 failed because malloc failed\n",
     true},
};

/// Profile 1 with a device and, bound to it, policy 4 with a rule; the feature is active.
void make_state() {
    world::reset();
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, {world::tablet}));
    world::set_active(true);
}

TEST_F(StoreMemory, SaysWhatFailed) {
    for (const memory_case &row : cases) {
        make_state();
        const std::string before = world::render_lists();
        world::fail_allocation(row.nth);
        EXPECT_EQ(row.act(), row.result) << row.name;
        EXPECT_GE(world::allocations(), row.nth) << row.name;
        world::fail_allocation(0);
        EXPECT_EQ(world::trace(), row.trace) << row.name;
        if (row.is_undone) {
            EXPECT_EQ(world::render_lists(), before) << row.name;
        }
    }
}

/// @return the store after an operation for which there was memory
std::string store_after(const std::function<int32_t()> &act) {
    make_state();
    act();
    return world::render_lists();
}

TEST_F(StoreMemory, LetsTheSameBeAskedAgain) {
    for (const memory_case &row : cases) {
        if (!row.is_undone)
            continue;
        const std::string expected = store_after(row.act);
        make_state();
        world::fail_allocation(row.nth);
        row.act();
        world::fail_allocation(0);
        row.act();
        EXPECT_EQ(world::render_lists(), expected) << row.name;
    }
}

TEST_F(StoreMemory, LetsTheMissingRulesBeAddedLater) {
    for (const int nth : {1, 2}) {
        make_state();
        world::fail_allocation(nth);
        EXPECT_EQ(add_rules(), -1);
        world::fail_allocation(0);
        EXPECT_EQ(add_rules(), 0);
        EXPECT_EQ(world::render_policy(4), nth == 1 ? "policy 4: profile 1, count 3, rules 20/2/0 "
                                                      "(unused) 30/1/5 (unused) 12/1/9 (unused)\n"
                                                    : "policy 4: profile 1, count 3, rules 30/1/5 "
                                                      "(unused) 20/2/0 (unused) 12/1/9 (unused)\n");
    }
}

TEST_F(StoreMemory, LeavesOutTheWeekdayThatFailedAndNoOther) {
    const char *const weeks[] = {
        "  weekdays 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n",
        "  weekdays 0:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n",
        "  weekdays 0:1440 1:1440 3:1440 4:1440 5:1440 6:1440\n",
        "  weekdays 0:1440 1:1440 2:1440 4:1440 5:1440 6:1440\n",
        "  weekdays 0:1440 1:1440 2:1440 3:1440 5:1440 6:1440\n",
        "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 6:1440\n",
        "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440\n",
    };
    for (int day = 0; day < days_per_week; ++day) {
        SetUp();
        world::fail_allocation(day + 2);
        EXPECT_EQ(utm_app_create_profile(1), 0);
        const std::string text = world::render_profile(1);
        EXPECT_EQ(text.substr(text.find("  weekdays"), strlen(weeks[day])), weeks[day]);
    }
}

TEST_F(StoreMemory, ReportsEveryMissingWeekday) {
    world::fail_allocations_from(2);
    EXPECT_EQ(utm_app_create_profile(1), 0);
    std::string expected;
    for (int day = 0; day < days_per_week; ++day)
        expected += "log Add weekday to profile 1 failed because malloc failed\n";
    EXPECT_EQ(world::trace(), expected + "log Create profile 1 success\n");
    EXPECT_NE(world::render_profile(1).find("  weekdays\n"), std::string::npos);
    world::fail_allocations_from(1);
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_add_weekday_limits(1), -1);
    EXPECT_EQ(world::trace(), expected);
}

TEST_F(StoreMemory, KeepsThePreviousTextOfTheDevices) {
    config_user_profile_t *profile = world::make_profile(1, {world::tablet});
    world::fail_allocation(2);
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_STREQ(profile->device_list_string, "001122334455 ");
    EXPECT_EQ(profile->device_count, 2);
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_delete_device(1, world::tablet.data()), 0);
    EXPECT_STREQ(profile->device_list_string, "001122334455 ");
    EXPECT_EQ(world::trace(), "log Update device list string failed because malloc failed\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 1 success\n"
                              "log Update device list string failed because malloc failed\n"
                              "log Del dev 00:11:22:33:44:55 from profile 1 success\n");
    world::fail_allocation(0);
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_rebuild_device_list_string(profile);
    EXPECT_STREQ(profile->device_list_string, "AABBCCDDEE0F ");
}

TEST_F(StoreMemory, LeavesTheFirstDeviceWithoutAText) {
    config_user_profile_t *profile = world::make_profile(1);
    world::fail_allocation(2);
    EXPECT_EQ(utm_app_add_device(1, world::phone.data()), 0);
    EXPECT_EQ(profile->device_list_string, nullptr);
    EXPECT_EQ(profile->device_count, 1);
}

TEST_F(StoreMemory, NeedsNoneToBindReleaseOrDelete) {
    world::make_profile(1, both);
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
