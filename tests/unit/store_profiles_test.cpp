#include "store/profiles.h"

#include "store/policies.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

class Profiles : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

using world::both;

/// What a new profile looks like.
std::string new_profile_text(int32_t id) {
    return "profile " + std::to_string(id) +
           ": devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, collected +0, apps "
           "0, "
           "policy none\n"
           "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n";
}

// ---- Creating ------------------------------------------------------------------------------

TEST_F(Profiles, StartWithoutALimitInForce) {
    EXPECT_EQ(utm_app_create_profile(7), 0);
    EXPECT_EQ(world::trace(), "log Create profile 7 success\n");
    EXPECT_EQ(world::render_lists(), new_profile_text(7));
}

TEST_F(Profiles, TakeAnyId) {
    std::string all;
    for (const int32_t id : {0, -3, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(utm_app_create_profile(id), 0);
        EXPECT_EQ(world::trace(), "log Create profile " + std::to_string(id) + " success\n");
        all += new_profile_text(id);
    }
    EXPECT_EQ(world::render_lists(), all);
}

TEST_F(Profiles, StartTheirFirstIntervalAtTheirCreation) {
    world::set_now(4'102'444'800);
    EXPECT_EQ(utm_app_create_profile(7), 0);
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_find_profile(7)->last_collect_ts, 4'102'444'800);
}

TEST_F(Profiles, AreLeftAloneWhenTheyAreCreatedAgain) {
    EXPECT_EQ(utm_app_create_profile(7), 0);
    world::set_now(world::default_now + 60);
    EXPECT_EQ(utm_app_create_profile(7), 0);
    EXPECT_EQ(world::trace(), "log Create profile 7 success\n"
                              "log Create profile 7 success\n");
    EXPECT_EQ(world::render_lists(), new_profile_text(7));
}

TEST_F(Profiles, KeepEverythingTheyOwnWhenTheyAreCreatedAgain) {
    config_user_profile_t *profile = world::make_profile(7, both);
    profile->daily_used = 30;
    world::make_usage(profile, {{12, 5}});
    world::make_policy(4, {{12, 2, 0}}, profile);
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_create_profile(7), 0);
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(Profiles, CanBeMadeOutsideOfAnyList) {
    config_user_profile_t *profile = utm_app_new_profile(7, 42);
    ASSERT_NE(profile, nullptr);
    EXPECT_EQ(profile->user_profile_id, 7);
    EXPECT_EQ(profile->last_collect_ts, 42);
    EXPECT_EQ(profile->daily_limit, 1440);
    for (const config_list_node_t *head :
         {&profile->weekday_list, &profile->device_list, &profile->app_stat_list})
        EXPECT_TRUE(list_is_empty(head));
    EXPECT_EQ(world::render_lists() + world::trace(), "");
    free(profile);
}

TEST_F(Profiles, GetNoWeekdaysWhenMissing) {
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_add_weekday_limits(7), -1);
    EXPECT_EQ(world::trace(), "log Add weekday to profile 7 failed because profile not exist\n");
}

TEST_F(Profiles, GetTheirSevenWeekdaysAppended) {
    config_user_profile_t *profile = world::make_profile(7);
    list_record<config_weekday_limit_t>(profile->weekday_list.next)->limit = 60;
    {
        const mutex_guard lock(utm_app_config_mutex);
        EXPECT_EQ(utm_app_add_weekday_limits(7), 0);
    }
    EXPECT_EQ(world::trace(), "");
    EXPECT_NE(
        world::render_profile(7).find("  weekdays 0:60 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440 "
                                      "0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"),
        std::string::npos)
        << world::render_profile(7);
}

// ---- Deleting ------------------------------------------------------------------------------

TEST_F(Profiles, AreDeletedWithSuccessWhenMissing) {
    world::make_profile(1);
    EXPECT_EQ(utm_app_delete_profile(9), 0);
    EXPECT_EQ(world::trace(), "log Delete profile 9 success\n");
    EXPECT_EQ(world::render_lists(), new_profile_text(1));
}

TEST_F(Profiles, LeaveNothingBehind) {
    world::make_profile(1);
    config_user_profile_t *profile = world::make_profile(2, both);
    world::make_usage(profile, {{12, 5}, {13, 6}});
    world::make_policy(4, {{12, 2, 0}, {14, 1, 60}}, profile);
    world::make_policy(5, {});
    world::make_profile(3);
    EXPECT_EQ(utm_app_delete_profile(2), 0);
    EXPECT_EQ(world::trace(), world::reset_lines(both) +
                                  "log Delete user profile 2 and unblock all success\n"
                                  "log Delete profile 2 success\n");
    EXPECT_EQ(world::render_lists(), new_profile_text(1) + new_profile_text(3) +
                                         "policy 5: profile none, count 0, rules\n");
}

TEST_F(Profiles, ReleaseTheirDevicesWhetherOrNotTheFeatureIsActive) {
    struct {
        const char *name;
        bool has_devices;
        int32_t enable, blocked;
        std::string released;
    } const table[] = {
        {"without devices", false, 0, 0, ""},
        {"without devices, blocked", false, 1, 1, ""},
        {"free", true, 1, 0, world::reset_lines(both)},
        {"blocked", true, 1, 1,
         world::reset_lines(both) + "event unblock profile 1\n"
                                    "log send event: unblock profile 1 to use network\n"},
        {"blocked, limit disabled", true, 0, 1,
         world::reset_lines(both) + "event unblock profile 1\n"
                                    "log send event: unblock profile 1 to use network\n"},
    };
    for (const auto &row : table)
        for (const bool active : {false, true}) {
            SetUp();
            config_user_profile_t *profile =
                world::make_profile(1, row.has_devices ? both : std::vector<world::mac_t>());
            profile->daily_limit_enable = row.enable;
            profile->blocked = row.blocked;
            world::set_active(active);
            EXPECT_EQ(utm_app_delete_profile(1), 0);
            EXPECT_EQ(world::trace(), row.released +
                                          "log Delete user profile 1 and unblock all success\n"
                                          "log Delete profile 1 success\n")
                << row.name << active;
        }
}

TEST_F(Profiles, AreDeletedAlthoughTheirLinesFail) {
    world::make_profile(1, {world::tablet});
    world::on_system([](const std::string &) { return 256; });
    EXPECT_EQ(utm_app_delete_profile(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "log Command lcsh apg acl reset 00:11:22:33:44:55 return 256 != 0\n"
                              "log Delete user profile 1 and unblock all success\n"
                              "log Delete profile 1 success\n");
    EXPECT_EQ(world::render_lists(), "");
}

TEST_F(Profiles, TakeTheirPolicyWithThem) {
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1));
    EXPECT_EQ(utm_app_delete_profile(1), 0);
    EXPECT_EQ(world::render_policy(4), "no policy 4\n");
    EXPECT_EQ(utm_app_create_policy(4), 4);
    EXPECT_EQ(utm_app_create_profile(1), 0);
    EXPECT_EQ(utm_app_add_policy_to_profile(1, 4), 0);
    EXPECT_EQ(world::render_policy(4), "policy 4: profile 1, count 0, rules\n");
}

TEST_F(Profiles, AreFlushedInListOrder) {
    config_user_profile_t *first = world::make_profile(5, {world::phone});
    first->blocked = 1;
    world::make_profile(3);
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(9, {world::tablet}));
    world::make_policy(6, {});
    EXPECT_EQ(utm_app_flush_profiles(), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg acl reset AA:BB:CC:DD:EE:0F\n"
                              "event unblock profile 5\n"
                              "log send event: unblock profile 5 to use network\n"
                              "log Delete user profile 5 and unblock all success\n"
                              "log Delete user profile 3 and unblock all success\n"
                              "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "log Delete user profile 9 and unblock all success\n"
                              "log Flush all profiles success\n");
    EXPECT_EQ(world::render_lists(), "policy 6: profile none, count 0, rules\n");
}

TEST_F(Profiles, AreFlushedWithSuccessWhenThereAreNone) {
    EXPECT_EQ(utm_app_flush_profiles(), 0);
    EXPECT_EQ(world::trace(), "log Flush all profiles success\n");
}

} // namespace
