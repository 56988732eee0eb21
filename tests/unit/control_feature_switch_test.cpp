/// Turning the feature switch: what it does to the network, and the usage file that it leaves.

#include "control/feature_switch.h"

#include "core/debug_log.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "store/policies.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

using world::block_lines;
using world::both;

const std::string on = "run lcsh apg on\n"
                       "status_changed 1 1\n";
const std::string off = "run lcsh apg off\n"
                        "status_changed 1 0\n";
const std::string turned_on = "log Set activate from 0 to 1\n";
const std::string turned_off = "log Set activate from 1 to 0\n";

/// The switch is off, and there is a usage file, so that switching on does not write one.
class FeatureSwitch : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        world::set_active(false);
        std::filesystem::create_directory("/tmp/ApplicationData");
        write_file(usage_file_path, "of before");
    }

    /// Profile 1 is cut off, with applications 12 and 14 blocked.
    static config_user_profile_t *make_blocked_profile() {
        config_user_profile_t *profile = world::make_profile(1, both);
        profile->daily_limit_enable = 1;
        profile->blocked = 1;
        world::make_usage(profile, {{12, 5}, {13, 6}, {14, 7}});
        world::usage_of(profile, 12)->blocked = 1;
        world::usage_of(profile, 14)->blocked = 1;
        return profile;
    }
};

TEST_F(FeatureSwitch, AppliesEveryRecordedBlockAndThenWritesAMissingFile) {
    make_blocked_profile();
    std::filesystem::remove(usage_file_path);
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), on +
                                  "event block profile 1\n"
                                  "log send event: block profile 1 to use network\n" +
                                  block_lines(both, 12) + block_lines(both, 14) + turned_on +
                                  "log export to /tmp/ApplicationData/app_usage.json success\n");
    EXPECT_EQ(utm_app_get_activate(), 1);
    EXPECT_EQ(world::render_lists(), before);
    const std::string written = read_file(usage_file_path);
    EXPECT_EQ(written, export_text());
}

TEST_F(FeatureSwitch, LiftsEveryBlockAndKeepsTheFlags) {
    config_user_profile_t *profile = make_blocked_profile();
    world::make_policy(4, {{13, 1, 60}}, profile);
    world::make_policy(5, {{12, 2, 0}}, world::make_profile(2, {world::phone}));
    world::set_active(true);
    std::filesystem::remove(usage_file_path);
    const std::string before = world::render_lists();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), off +
                                  "event unblock profile 1\n"
                                  "log send event: unblock profile 1 to use network\n" +
                                  world::unblock_lines(both, 12) + world::unblock_lines(both, 14) +
                                  world::reset_lines(both) + world::reset_lines({world::phone}) +
                                  turned_off);
    EXPECT_EQ(utm_app_get_activate(), 0);
    EXPECT_EQ(world::render_lists(), before);
    EXPECT_FALSE(std::filesystem::exists(usage_file_path));
}

/// A block rule is brought back where a record holds its flag. Lifting releases the others, too,
/// and they stay released: applications 13, which nobody has used, and 14, blocked by a binding.
TEST_F(FeatureSwitch, BringsBackABlockRuleOnlyWhereARecordHoldsIt) {
    config_user_profile_t *profile = world::make_profile(1, both);
    world::make_usage(profile, {{12, 5}, {14, 7}});
    world::make_policy(4, {{14, 2, 0}}, profile);
    world::set_active(true);
    const config_policy_rule_t rules[] = {{12, 2, 0}, {13, 2, 0}};
    world::quietly([&] { ASSERT_EQ(utm_app_add_apps_to_policy(4, rules, 2), 0); });
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(utm_app_set_activate(0), 0);
        EXPECT_EQ(world::trace(),
                  off + world::unblock_lines(both, 12) + world::reset_lines(both) + turned_off);
        EXPECT_EQ(utm_app_set_activate(1), 0);
        EXPECT_EQ(world::trace(), on + block_lines(both, 12) + turned_on);
    }
}

TEST_F(FeatureSwitch, LeavesAnExistingFileAsItIs) {
    for (const char *text : {"old", ""}) {
        world::set_active(false);
        write_file(usage_file_path, text);
        set_last_export(5);
        EXPECT_EQ(utm_app_set_activate(1), 0);
        EXPECT_EQ(world::trace(), on + turned_on);
        EXPECT_EQ(read_file(usage_file_path), text);
        EXPECT_EQ(last_export_statistics_ts, 5);
    }
}

TEST_F(FeatureSwitch, LooksForTheFileAfterTheBlocksAreAppliedWhateverTheirLinesSay) {
    std::filesystem::remove(usage_file_path);
    // Whoever answers the guard's command line may still put the file in place.
    world::on_system([](const std::string &line) {
        if (line == "lcsh apg on")
            write_file(usage_file_path, "from the shell");
        return 32512;
    });
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), on + turned_on);
    EXPECT_EQ(read_file(usage_file_path), "from the shell");
}

TEST_F(FeatureSwitch, TurnsAlthoughTheFileCannotBeWritten) {
    std::filesystem::remove_all("/tmp/ApplicationData");
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(),
              on + turned_on + "log export to /tmp/ApplicationData/app_usage.json failed\n");
    EXPECT_EQ(utm_app_get_activate(), 1);
}

TEST_F(FeatureSwitch, OnlyWritesItsLineWhenItStandsThereAlready) {
    make_blocked_profile();
    std::filesystem::remove(usage_file_path);
    EXPECT_EQ(utm_app_set_activate(0), 0);
    world::set_active(true);
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "log Set activate from 0 to 0\n"
                              "log Set activate from 1 to 1\n");
    EXPECT_FALSE(std::filesystem::exists(usage_file_path));
}

TEST_F(FeatureSwitch, KnowsOnlyOnAndOff) {
    make_blocked_profile();
    for (const bool active : {false, true})
        for (const uint32_t value : {2U, 255U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
            world::set_active(active);
            EXPECT_EQ(utm_app_set_activate(value), -1) << value;
            EXPECT_EQ(world::trace(), "") << value;
            EXPECT_EQ(utm_app_get_activate(), active ? 1 : 0) << value;
        }
}

TEST_F(FeatureSwitch, ActsInSilenceWhileLoggingIsOff) {
    std::filesystem::remove(usage_file_path);
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), on);
    EXPECT_TRUE(std::filesystem::exists(usage_file_path));
}

} // namespace
