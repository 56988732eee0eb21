#include "control/feature_switch.h"
#include "core/debug_log.h"
#include "core/owners.h"
#include "store/blocking.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "usage/accounting.h"
#include "usage/limits.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

/// What holds across operations: no dangling link whatever goes first, room for many, the lock.
class StoreLifetimes : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

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
void make_family() {
    world::reset();
    config_user_profile_t *profile = world::make_profile(1, {world::tablet, world::phone});
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 90}});
    world::make_policy(4, {{12, 2, 0}, {13, 1, 60}}, profile);
    config_user_profile_t *other = world::make_profile(2, {world::tablet});
    world::make_usage(other, {{12, 7}});
    world::make_policy(5, {{12, 1, 30}}, other);
    world::set_active(true);
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
    make_family();
    const std::string second = world::render_profile(2) + world::render_policy(5);
    std::vector<size_t> order = {0, 1, 2, 3, 4};
    do {
        make_family();
        for (const size_t step : order) {
            deletions[step]();
            EXPECT_EQ(world::render_lists().find("ASTRAY"), std::string::npos)
                << world::render_lists();
        }
        EXPECT_EQ(world::render_lists(), second);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(StoreLifetimes, LeaveAUsableRestAfterAnyTwoDeletions) {
    for (const auto &first : deletions)
        for (const auto &second : deletions) {
            make_family();
            const std::string other = world::render_profile(2) + world::render_policy(5);
            first();
            second();
            use_what_is_left();
            EXPECT_EQ(world::render_lists().find("ASTRAY"), std::string::npos)
                << world::render_lists();
            EXPECT_EQ(world::render_profile(2) + world::render_policy(5), other);
        }
}

TEST_F(StoreLifetimes, LeaveAPolicyToItsOnlyOwner) {
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1));
    world::make_profile(2, {world::tablet});
    EXPECT_EQ(utm_app_add_policy_to_profile(2, 4), -1);
    utm_app_delete_profile(1);
    world::trace();
    EXPECT_EQ(utm_app_add_device(2, world::phone.data()), 0);
    utm_app_delete_profile(2);
    EXPECT_EQ(world::trace(), "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 2 success\n" +
                                  world::reset_lines({world::tablet, world::phone}) +
                                  "log Delete user profile 2 and unblock all success\n"
                                  "log Delete profile 2 success\n");
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
    char piece[16];
    for (int number = 0; number < many; ++number) {
        ASSERT_EQ(utm_app_add_device(1, mac_of(number).data()), 0);
        snprintf(piece, sizeof(piece), "02000000%04X ", static_cast<unsigned>(number));
        text += piece;
    }
    EXPECT_EQ(profile->device_count, many);
    EXPECT_EQ(profile->device_list_string, text);
    int32_t count = 0;
    const heap_ptr<uint8_t> macs(utm_app_get_devices(1, &count));
    ASSERT_EQ(count, many);
    for (int number = 0; number < many; ++number)
        EXPECT_EQ(memcmp(mac_of(number).data(), macs.get() + number * mac_bytes, mac_bytes), 0);
    for (int number = 0; number < many; number += 2)
        ASSERT_EQ(utm_app_delete_device(1, mac_of(number).data()), 0);
    EXPECT_EQ(profile->device_count, many / 2);
    EXPECT_EQ(strlen(profile->device_list_string), 13U * many / 2);
}

TEST_F(StoreLifetimes, HoldHundredsOfRules) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    config_user_profile_t *profile = world::make_profile(1);
    world::make_policy(4, {}, profile);
    std::vector<config_policy_rule_t> rules;
    std::vector<config_app_minutes_t> usage;
    for (int number = 0; number < many; ++number) {
        rules.push_back({number, 1 + number % 2, number});
        usage.push_back({number, 0});
    }
    world::make_usage(profile, usage);
    ASSERT_EQ(utm_app_add_apps_to_policy(4, rules.data(), many), 0);
    int32_t count = 0;
    const heap_ptr<config_policy_rule_t> read(utm_app_get_apps_of_policy(4, &count));
    ASSERT_EQ(count, many);
    for (int number = 0; number < many; ++number) {
        const config_policy_rule_t &rule = read.get()[many - 1 - number];
        EXPECT_EQ(rule.app_id, number);
        EXPECT_EQ(rule.action, 1 + number % 2);
        EXPECT_EQ(rule.daily_limit, number);
    }
    const std::string text = world::render_lists();
    EXPECT_EQ(text.find("ASTRAY"), std::string::npos);
    EXPECT_EQ(utm_app_delete_policy(4), 0);
    EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 500, rules\n");
}

TEST_F(StoreLifetimes, HoldHundredsOfProfilesAndPolicies) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    for (int32_t id = 1; id <= many; ++id) {
        world::make_profile(id);
        ASSERT_EQ(utm_app_create_policy(id), id);
        ASSERT_EQ(utm_app_add_policy_to_profile(id, many + 1 - id), id * 2 > many ? 0 : -1);
    }
    for (int32_t id = 2; id <= many; id += 2)
        utm_app_delete_profile(id);
    std::vector<int32_t> left;
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (const config_user_profile_t &profile : all_profiles())
            left.push_back(profile.user_profile_id);
    }
    ASSERT_EQ(left.size(), many / 2U);
    for (size_t i = 0; i < left.size(); ++i)
        EXPECT_EQ(left[i], static_cast<int32_t>(2 * i + 1));
    EXPECT_EQ(world::render_lists().find("ASTRAY"), std::string::npos);
}

// ---- The lock ------------------------------------------------------------------------------

/// An operation on the state that `make_bound_state` leaves, and for each of its lines whether
/// the store is held while the line is written or run.
struct lock_case {
    const char *name;
    std::function<void()> act;
    const char *lines;
};

/// Writes "held log", "free log" or "held run" for each line: with no log file in place, every log
/// line asks the shell for one.
std::function<int(const std::string &)> note_lock(std::string *lines) {
    return [lines](const std::string &line) {
        const bool is_free = pthread_mutex_trylock(&utm_app_config_mutex.native) == 0;
        if (is_free)
            pthread_mutex_unlock(&utm_app_config_mutex.native);
        *lines += std::string(is_free ? "free" : "held") +
                  (line.starts_with("/bin/touch") ? " log\n" : " run\n");
        return 0;
    };
}

/// Profile 1 with a device and, bound to it, policy 4 with a rule; policy 5 with one, unbound.
void make_bound_state() {
    world::reset();
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, {world::tablet}));
    world::make_profile(2, {world::phone});
    world::make_policy(5, {{13, 2, 0}});
    world::set_active(true);
}

const lock_case lock_cases[] = {
    {"create profile", [] { (void)!utm_app_create_profile(3); }, "free log\n"},
    {"delete profile", [] { utm_app_delete_profile(1); }, "held run\nheld log\nfree log\n"},
    {"flush", [] { utm_app_flush_profiles(); },
     "held run\nheld log\nheld run\nheld log\nfree log\n"},
    {"add device", [] { (void)!utm_app_add_device(1, world::phone.data()); },
     "held run\nheld log\n"},
    {"delete device", [] { (void)!utm_app_delete_device(1, world::tablet.data()); },
     "held run\nheld log\n"},
    {"add a bonus", [] { (void)!utm_app_add_extend(1, 30); }, "held log\n"},
    {"add a bonus to nobody", [] { (void)!utm_app_add_extend(9, 30); }, "held log\n"},
    {"reset the bonus of nobody", [] { (void)!utm_app_reset_extend(9); }, "held log\n"},
    {"get the bonus of nobody",
     [] {
         int32_t minutes = 0;
         (void)!utm_app_get_extend(9, &minutes);
     },
     "held log\n"},
    {"create policy", [] { (void)!utm_app_create_policy(6); }, "free log\n"},
    {"create a policy that exists", [] { (void)!utm_app_create_policy(4); }, "free log\n"},
    {"add apps",
     [] {
         const config_policy_rule_t rule = {14, 2, 0};
         (void)!utm_app_add_apps_to_policy(4, &rule, 1);
     },
     "held log\nheld run\nfree log\n"},
    {"delete policy", [] { (void)!utm_app_delete_policy(4); }, "held run\n"},
    {"bind policy", [] { (void)!utm_app_add_policy_to_profile(2, 5); },
     "held log\nheld run\nheld log\n"},
    {"switch off", [] { (void)!utm_app_set_activate(0); }, "held run\nheld run\nfree log\n"},
};

TEST_F(StoreLifetimes, HoldTheStoreForAsLongAsTheyWorkOnIt) {
    for (const lock_case &row : lock_cases) {
        make_bound_state();
        std::filesystem::remove(debug_log_path);
        world::intercept_log_commands();
        std::string lines;
        world::on_system(note_lock(&lines));
        row.act();
        EXPECT_EQ(lines, row.lines) << row.name;
    }
}

} // namespace
