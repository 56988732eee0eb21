#include "store/store.h"

#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Store : public world_test {};

TEST_F(Store, FindsByIdOrFindsNothing) {
    config_user_profile_t *profile = world::make_profile(-7, world::both);
    config_app_policy_t *policy = world::make_policy(INT32_MAX, {{12, 1, 5}, {-12, 2, 0}});
    world::make_usage(profile, {{12, 5}, {-12, 6}, {12, 7}});
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_find_profile(-7), profile);
    EXPECT_EQ(utm_app_find_profile(7), nullptr);
    EXPECT_EQ(utm_app_find_policy(INT32_MAX), policy);
    EXPECT_EQ(utm_app_find_policy(-7), nullptr);
    EXPECT_EQ(utm_app_find_app_usage(&profile->app_stat_list, -12)->daily_used, 6);
    EXPECT_EQ(utm_app_find_app_usage(&profile->app_stat_list, 12)->daily_used, 5); // the first one
    EXPECT_EQ(utm_app_find_app_usage(&profile->app_stat_list, 13), nullptr);
    EXPECT_EQ(utm_app_find_app_usage(nullptr, 12), nullptr);
    EXPECT_EQ(utm_app_find_policy_app(policy, 12)->daily_limit, 5);
    EXPECT_EQ(utm_app_find_policy_app(policy, 13), nullptr);
}

TEST_F(Store, TellsAddressesApartByEveryByte) {
    config_user_profile_t *profile = world::make_profile(1, {world::phone, world::tablet});
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_find_device(profile, world::tablet.data()),
              list_record<config_device_t>(profile->device_list.prev));
    for (size_t byte = 0; byte < mac_bytes; ++byte) {
        world::mac_t other = world::tablet;
        other[byte] ^= 1;
        EXPECT_EQ(utm_app_find_device(profile, other.data()), nullptr) << byte;
    }
}

TEST_F(Store, StartsWithEmptyListsAndTheGivenTime) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_list_count = 3;
        utm_app_store_init(world::default_now + 42);
    }
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +42\n");
}

// ---- Cross-links ---------------------------------------------------------------------------

/// Links anew and reports both sides.
std::string relinked(config_user_profile_t *profile) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_link_policy_to_usage(profile);
    }
    return world::brief(world::render_apps(profile->user_profile_id) + world::render_policy(4));
}

TEST_F(Store, LinksARuleToTheFirstRecordOfItsApplication) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_policy(4, {{30, 1, 60}, {40, 2, 0}, {10, 2, 0}}, profile);
    world::make_usage(profile, {{10, 1}, {20, 2}, {30, 3}, {10, 4}});
    EXPECT_EQ(relinked(profile),
              "apps 4\n"
              "  app 10: used 1/0/0, rule 2/0\n"
              "  app 20: used 2/0/0\n"
              "  app 30: used 3/0/0, rule 1/60\n"
              "  app 10: used 4/0/0\n"
              "policy 4: profile 1, count 3, rules 10/2/0 40/2/0 (unused) 30/1/60\n");
}

TEST_F(Store, ReplacesStaleLinks) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}, {20, 2}});
    config_app_policy_t *policy = world::make_policy(4, {{30, 1, 60}, {20, 2, 0}}, profile);
    config_policy_app_t *first = list_record<config_policy_app_t>(policy->app_list.next);
    first->app_id = 10; // what was rule 20
    EXPECT_EQ(relinked(profile), "apps 2\n"
                                 "  app 10: used 1/0/0, rule 2/0\n"
                                 "  app 20: used 2/0/0\n"
                                 "policy 4: profile 1, count 2, rules 10/2/0 30/1/60 (unused)\n");
}

TEST_F(Store, LeavesAProfileWithoutPolicyUntouched) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}});
    config_policy_app_t rule = {};
    config_app_usage_t *usage = world::usage_of(profile, 10);
    usage->policy_app = &rule;
    relinked(profile);
    EXPECT_EQ(usage->policy_app, &rule);
    usage->policy_app = nullptr; // the rule ends before the record does
}

TEST_F(Store, LeavesNoRulePointingAtFreedUsage) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}, {20, 2}});
    world::make_policy(4, {{10, 1, 60}, {20, 2, 0}}, profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_free_app_usage(profile);
        profile->app_count = 0;
    }
    EXPECT_EQ(world::render_apps(1) + world::render_policy(4),
              "apps 0\n"
              "policy 4: profile 1, count 2, rules 20/2/0 (unused) 10/1/60 (unused)\n");
}

} // namespace
