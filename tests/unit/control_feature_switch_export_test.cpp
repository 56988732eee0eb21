/// Turning the feature switch: what it does to the network, and the usage file that it leaves.

#include "control/feature_switch.h"

#include "core/debug_log.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

class FeatureSwitchExport : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        world::set_active(false);
        std::filesystem::create_directory("/tmp/ApplicationData");
    }

    /// Profile 3 is cut off and has a blocked application, profile 4 a policy and no blocks.
    static void make_blocks() {
        make(usage_file::profile_t{3,
                                   60,
                                   0,
                                   0,
                                   {{10, 5}, {11, 5}},
                                   std::vector<int32_t>(7, 60),
                                   0,
                                   1,
                                   {"00:11:22:33:44:55", "AA:BB:CC:DD:EE:0F"}});
        usage_file::profile_t second = {4};
        second.devices = {"00:00:00:00:00:04"};
        second.policy = usage_file::policy_t{7, {{12, 2, 0}}};
        make(second);
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(3);
        profile->daily_limit_enable = 1;
        utm_app_find_app_usage(&profile->app_stat_list, 11)->blocked = 1;
    }

    static std::string flags() {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(3);
        return std::to_string(profile->blocked) + " " +
               std::to_string(utm_app_find_app_usage(&profile->app_stat_list, 10)->blocked) + " " +
               std::to_string(utm_app_find_app_usage(&profile->app_stat_list, 11)->blocked);
    }
};

TEST_F(FeatureSwitchExport, SwitchedOnAppliesEveryRecordedBlockAndThenWritesAMissingFile) {
    make_blocks();
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "event block profile 3\n"
                              "log send event: block profile 3 to use network\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 11 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 11 0 18\n"
                              "log Set activate from 0 to 1\n"
                              "log export to /tmp/ApplicationData/app_usage.json success\n");
    EXPECT_EQ(flags(), "1 0 1");
    EXPECT_EQ(utm_app_get_activate(), 1);
    const std::string own = read_file(usage_file_path);
    EXPECT_EQ(own, export_text());
}

TEST_F(FeatureSwitchExport, SwitchedOffLiftsEveryBlockAndKeepsTheFlags) {
    make_blocks();
    world::set_active(true);
    EXPECT_EQ(utm_app_set_activate(0), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg off\n"
                              "status_changed 1 0\n"
                              "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n"
                              "run lcsh apg acl del 00:11:22:33:44:55 11 0\n"
                              "run lcsh apg acl del AA:BB:CC:DD:EE:0F 11 0\n"
                              "run lcsh apg acl reset 00:00:00:00:00:04\n"
                              "log Set activate from 1 to 0\n");
    EXPECT_EQ(flags(), "1 0 1");
    EXPECT_FALSE(std::filesystem::exists(usage_file_path));
}

TEST_F(FeatureSwitchExport, LeavesAnExistingFileAsItIs) {
    for (const char *text : {"old", ""}) {
        world::set_active(false);
        write_file(usage_file_path, text);
        set_last_export(5);
        EXPECT_EQ(utm_app_set_activate(1), 0);
        EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                                  "status_changed 1 1\n"
                                  "log Set activate from 0 to 1\n");
        EXPECT_EQ(read_file(usage_file_path), text);
        EXPECT_EQ(last_export_statistics_ts, 5);
    }
}

TEST_F(FeatureSwitchExport, LooksForTheFileAfterTheBlocksAreApplied) {
    // Whoever answers the guard's command line may still put the file in place.
    world::on_system([](const std::string &line) {
        if (line == "lcsh apg on")
            write_file(usage_file_path, "from the shell");
        return 0;
    });
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(read_file(usage_file_path), "from the shell");
}

TEST_F(FeatureSwitchExport, WritesTheFileWhenTheFolderIsMissingAsAFailure) {
    std::filesystem::remove_all("/tmp/ApplicationData");
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n"
                              "log Set activate from 0 to 1\n"
                              "log export to /tmp/ApplicationData/app_usage.json failed\n");
    EXPECT_EQ(utm_app_get_activate(), 1);
}

TEST_F(FeatureSwitchExport, OnlyLogsWhenNothingChanges) {
    make_blocks();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    world::set_active(true);
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "log Set activate from 0 to 0\n"
                              "log Set activate from 1 to 1\n");
    EXPECT_FALSE(std::filesystem::exists(usage_file_path));
}

TEST_F(FeatureSwitchExport, RefusesAnyOtherValueWithoutAWord) {
    for (const uint32_t value : {2U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(utm_app_set_activate(value), -1);
        EXPECT_EQ(utm_app_get_activate(), 0);
    }
    EXPECT_EQ(world::trace(), "");
}

TEST_F(FeatureSwitchExport, ActsInSilenceWhileLoggingIsOff) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), "run lcsh apg on\n"
                              "status_changed 1 1\n");
    EXPECT_TRUE(std::filesystem::exists(usage_file_path));
}

TEST_F(FeatureSwitchExport, BlocksAgainEachTimeItIsSwitchedOn) {
    make_blocks();
    write_file(usage_file_path, "");
    EXPECT_EQ(utm_app_set_activate(1), 0);
    const std::string first = world::trace();
    EXPECT_EQ(utm_app_set_activate(0), 0);
    world::trace();
    EXPECT_EQ(utm_app_set_activate(1), 0);
    EXPECT_EQ(world::trace(), first);
}

} // namespace
