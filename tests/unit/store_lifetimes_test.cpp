/// What holds across operations: no dangling link whatever goes first, and room for many.

#include "core/debug_log.h"
#include "core/owners.h"
#include "store/blocking.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"
#include "usage/accounting.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace {

class StoreLifetimes : public world_test {};

// ---- Deletions in any order ----------------------------------------------------------------

/// Everything that can go from profile 1, its devices and its policy.
const std::vector<std::function<void()>> deletions = {
    [] { utm_app_delete_profile(1); },
    [] { (void)!utm_app_delete_policy(4); },
    [] {
        const config_policy_rule_t rule = {12, 0, 0};
        (void)!utm_app_update_app_in_policy(4, &rule);
    },
    [] { (void)!utm_app_delete_device(1, world::tablet.data()); },
    [] {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(1);
        if (profile != nullptr) {
            utm_app_free_app_usage(profile);
            profile->app_count = 0;
        }
    },
};

/// Profile 1 as it is filled, and profile 2 beside it, which stays.
/// @return what profile 2 looks like
std::string make_family() {
    world::reset();
    config_user_profile_t *profile = world::make_profile(1, world::both);
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 90}});
    world::make_policy(4, {{12, 2, 0}, {13, 1, 60}}, profile);
    config_user_profile_t *other = world::make_profile(2, {world::tablet});
    world::make_usage(other, {{12, 7}});
    world::make_policy(5, {{12, 1, 30}}, other);
    world::set_active(true);
    return world::render_profile(2) + world::render_policy(5);
}

void expect_no_dangling_link() {
    const std::string lists = world::render_lists();
    EXPECT_EQ(lists.find("ASTRAY"), std::string::npos) << lists;
}

/// Uses whatever is left: new usage, new rules and every walk over the links.
void use_what_is_left() {
    const config_policy_rule_t rules[] = {{12, 1, 1}, {13, 2, 0}, {14, 2, 0}};
    (void)!utm_app_add_apps_to_policy(4, rules, 3);
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(1);
    for (const int32_t app_id : {12, 13, 14})
        EXPECT_EQ(utm_app_update_app_usage(profile, app_id, 3), profile == nullptr ? -1 : 0);
    utm_app_apply_all_blocks();
    utm_app_lift_all_blocks();
}

TEST_F(StoreLifetimes, LeaveNoDanglingLinkWhateverIsDeletedFirst) {
    std::vector<size_t> order = {0, 1, 2, 3, 4};
    do {
        const std::string other = make_family();
        for (const size_t step : order) {
            deletions[step]();
            expect_no_dangling_link();
        }
        EXPECT_EQ(world::render_lists(), other);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(StoreLifetimes, LeaveAUsableRestAfterAnyTwoDeletions) {
    for (const auto &first : deletions)
        for (const auto &second : deletions) {
            const std::string other = make_family();
            first();
            second();
            use_what_is_left();
            expect_no_dangling_link();
            EXPECT_EQ(world::render_profile(2) + world::render_policy(5), other);
        }
}

// ---- Many ----------------------------------------------------------------------------------

constexpr int many = 500;

world::mac_t mac_of(int number) {
    return {0x02, 0, 0, 0, static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}

TEST_F(StoreLifetimes, HoldHundredsOfDevices) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    config_user_profile_t *profile = world::make_profile(1);
    std::string text;
    for (int number = 0; number < many; ++number) {
        ASSERT_EQ(utm_app_add_device(1, mac_of(number).data()), 0);
        text += mac_digits(mac_of(number).data()).text + std::string(" ");
    }
    EXPECT_EQ(profile->device_list_string, text);
    int32_t count = 0;
    const heap_ptr<uint8_t> macs(utm_app_get_devices(1, &count));
    ASSERT_EQ(count, many);
    for (int number = 0; number < many; ++number)
        EXPECT_EQ(memcmp(mac_of(number).data(), macs.get() + number * mac_bytes, mac_bytes), 0);
    for (int number = 0; number < many; number += 2)
        ASSERT_EQ(utm_app_delete_device(1, mac_of(number).data()), 0);
    EXPECT_EQ(profile->device_count, many / 2);
    EXPECT_EQ(world::render_lists().find("really"), std::string::npos);
}

TEST_F(StoreLifetimes, HoldHundredsOfRules) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    std::vector<config_policy_rule_t> rules;
    std::vector<config_app_minutes_t> usage;
    for (int number = 0; number < many; ++number) {
        rules.push_back({number, 1 + number % 2, number});
        usage.push_back({number, 0});
    }
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, usage);
    world::make_policy(4, rules, profile);
    int32_t count = 0;
    const heap_ptr<config_policy_rule_t> read(utm_app_get_apps_of_policy(4, &count));
    ASSERT_EQ(count, many);
    std::reverse(rules.begin(), rules.end());
    EXPECT_EQ(memcmp(read.get(), rules.data(), sizeof(rules[0]) * many), 0);
    expect_no_dangling_link();
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 500, rules\n");
}

} // namespace
