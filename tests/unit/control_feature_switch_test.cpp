#include "control/feature_switch.h"

#include "format/usage_file.h"
#include "store/policies.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

/// The switch with a usage file in place, so that switching on does not write one.
class FeatureSwitch : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        fs::create_directories(fs::path(usage_file_path).parent_path());
        std::ofstream(usage_file_path) << "of before";
    }
    void TearDown() override { fs::remove_all(fs::path(usage_file_path).parent_path()); }
};

using world::both;

int32_t switch_value() {
    const mutex_guard lock(utm_app_config_mutex);
    return activate;
}

/// A profile that is cut off, with applications 12 and 14 blocked.
config_user_profile_t *make_blocked_profile() {
    config_user_profile_t *profile = world::make_profile(1, both);
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}, {13, 6}, {14, 7}});
    world::usage_of(profile, 12)->blocked = 1;
    world::usage_of(profile, 14)->blocked = 1;
    return profile;
}

TEST_F(FeatureSwitch, AppliesEveryRecordedBlockWhenItGoesOn) {
    make_blocked_profile();
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "event block profile 1\n"
                              "log send event: block profile 1 to use network\n" +
                                  world::block_lines(both, 12) + world::block_lines(both, 14) +
                                  "log Set activate from 0 to 1\n");
    EXPECT_EQ(switch_value(), 1);
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(FeatureSwitch, LiftsEveryBlockWhenItGoesOff) {
    config_user_profile_t *profile = world::make_profile(1, both);
    profile->daily_limit_enable = 1;
    profile->blocked = 1;
    world::make_usage(profile, {{12, 5}});
    world::make_policy(4, {{12, 1, 5}}, profile);
    world::usage_of(profile, 12)->blocked = 1;
    world::set_active(true);
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg off\n"
                              "status_changed 1 0\n"
                              "event unblock profile 1\n"
                              "log send event: unblock profile 1 to use network\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 12 0\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 12 0\n"
                              "run lcsh apg acl reset 00:11:22:33:44:55\n"
                              "run lcsh apg acl reset AA:BB:CC:DD:EE:0F\n"
                              "log Set activate from 1 to 0\n");
    EXPECT_EQ(switch_value(), 0);
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(FeatureSwitch, BringsBackEveryBlockThatARecordHolds) {
    make_blocked_profile();
    ASSERT_EQ(utm_app_set_activate(1), 0);
    const std::string first = world::trace();
    ASSERT_EQ(utm_app_set_activate(0), 0);
    world::trace();
    ASSERT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), first);
}

/// A block rule is brought back where a record holds its flag. Lifting releases the others, too,
/// and they stay released: applications 13, which nobody has used, and 14, blocked by a binding.
TEST_F(FeatureSwitch, BringsBackABlockRuleOnlyWhereARecordHoldsIt) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}, {14, 7}});
    world::make_policy(4, {{14, 2, 0}}, profile);
    world::set_active(true);
    const config_policy_rule_t rules[] = {{12, 2, 0}, {13, 2, 0}};
    ASSERT_EQ(utm_app_add_apps_to_policy(4, rules, 2), 0);
    EXPECT_EQ(world::trace(),
              "log Policy 4 add app 12 action 2 limit 0 success\n" + world::block_lines(both, 12) +
                  "log Policy 4 add app 13 action 2 limit 0 success\n" +
                  world::block_lines(both, 13) + "log Add apps to policy 4 success\n");
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg off\n"
                              "status_changed 1 0\n" +
                                  world::unblock_lines(both, 12) + world::reset_lines(both) +
                                  "log Set activate from 1 to 0\n");
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n" +
                                  world::block_lines(both, 12) + "log Set activate from 0 to 1\n");
    EXPECT_EQ(world::render_lists(), before);
}

TEST_F(FeatureSwitch, OnlyWritesItsLineWhenItStandsThereAlready) {
    make_blocked_profile();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), "log Set activate from 0 to 0\n");
    world::set_active(true);
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "log Set activate from 1 to 1\n");
    EXPECT_EQ(switch_value(), 1);
}

TEST_F(FeatureSwitch, KnowsOnlyOnAndOff) {
    make_blocked_profile();
    for (const bool active : {false, true})
        for (const uint32_t value : {2U, 3U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
            world::set_active(active);
            EXPECT_EQ(utm_app_set_activate(value), -1) << value;
            EXPECT_EQ(world::trace(), "") << value;
            EXPECT_EQ(switch_value(), active ? 1 : 0) << value;
        }
}

TEST_F(FeatureSwitch, TurnsTheGuardOfAnEmptyStore) {
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "log Set activate from 0 to 1\n"
                              "run lcsh apg off\n"
                              "status_changed 1 0\n"
                              "log Set activate from 1 to 0\n");
}

TEST_F(FeatureSwitch, TurnsAlthoughItsLinesFail) {
    world::on_system([](const std::string &) { return 32512; });
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "log Set activate from 0 to 1\n");
    EXPECT_EQ(switch_value(), 1);
}

TEST_F(FeatureSwitch, LeavesRulesThatNobodyReachedYetAlone) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}});
    world::make_policy(4, {{12, 2, 0}, {13, 2, 0}}, profile);
    world::usage_of(profile, 12)->blocked = 0;
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "log Set activate from 0 to 1\n");
}

TEST_F(FeatureSwitch, DoesNotRewriteAUsageFileThatExists) {
    EXPECT_EQ(utm_app_set_activate(1), 0);
    std::ifstream file(usage_file_path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "of before");
}

} // namespace
