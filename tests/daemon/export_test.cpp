/// Exports that are killed, and a disk that fills up: there is a whole usage file at any moment.

#include "sim/harness/sandbox_redirection.h"
#include "tests/daemon/support/fixture.h"
#include "tests/lib/needs.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <sys/mount.h>
#include <unistd.h>

using testing::AnyOf;
using testing::IsSubsetOf;

namespace {

namespace fs = std::filesystem;

constexpr char HOUSEHOLD_PATH[] = "/tmp/household.json";
const int KILLS = static_cast<int>(as_many_as("UTM_KILLS", IS_SANITIZED ? 20 : 100));

/// @return a usage file of some hundred kilobytes
std::string large_household() {
    std::string profiles;
    for (int profile = 1; profile <= 8; ++profile) {
        std::string apps;
        for (int app = 1; app <= 300; ++app)
            apps += std::string(apps.empty() ? "" : ",") + "{\"app_id\":" + std::to_string(app) +
                    ",\"daily_used\":1,\"weekly_used\":2,\"monthly_used\":3,\"next_day_idx\":4}";
        profiles += std::string(profiles.empty() ? "" : ",") +
                    "{\"user_profile_id\":" + std::to_string(profile) + ",\"app_stat_list\":[" +
                    apps + "]}";
    }
    return "{\"user_profile_list\":[" + profiles + "],\"timestamp\":" + std::to_string(NOON) +
           ",\"global_stat\":[]}";
}

std::set<std::string> names_in(const std::string &folder) {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

int import_file(const std::string &path) {
    return ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, path));
}

int export_file(const std::string &path) {
    return ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, path));
}

class DaemonExport : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        fs::create_directory("/tmp/ApplicationData");
        ASSERT_TRUE(sim_write_file(HOUSEHOLD_PATH, large_household()));
        ASSERT_TRUE(sim_write_file(USAGE_PATH, old_));
    }
    void TearDown() override {
        daemon_test::TearDown();
        fs::remove(HOUSEHOLD_PATH);
    }

    void start_with_household() {
        ASSERT_NO_FATAL_FAILURE(start());
        ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK);
        ASSERT_EQ(import_file(HOUSEHOLD_PATH), OK);
    }

    const std::string old_ =
        "{\"user_profile_list\":[],\"timestamp\":" + std::to_string(NOON) + ",\"global_stat\":[]}";
};

} // namespace

TEST_F(DaemonExport, AKillLeavesTheOldFileOrTheNewOne) {
    start_with_household();
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_EQ(export_file("/tmp/whole.json"), OK);
    // How long an export takes, microseconds: nearer with every kill that came too late.
    double taken =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begun).count();
    const std::string whole = sim_read_file("/tmp/whole.json");
    ASSERT_GT(whole.size(), 300'000u);
    int replaced = 0;
    for (int round = 0; round < KILLS; ++round) {
        const int fd = send_request(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, USAGE_PATH));
        const double delay = taken * (round % 8 + 1) / 8;
        usleep(static_cast<useconds_t>(delay));
        sim_daemon_kill(&daemon);
        close(fd);

        const std::string found = sim_read_file(USAGE_PATH);
        ASSERT_THAT(found, AnyOf(old_, whole)) << "torn at kill " << round;
        EXPECT_THAT(names_in("/tmp/ApplicationData"),
                    IsSubsetOf({"app_usage.json", ".utm_appd.new"}));
        replaced += found == whole;
        taken = found == whole ? std::min(taken, delay) : taken * 1.02;
        ASSERT_TRUE(sim_write_file(USAGE_PATH, old_));
        ASSERT_NO_FATAL_FAILURE(start_with_household());
    }
    RecordProperty("replaced", replaced);
    printf("%d kills, %d of them when the new file was in place; none left a torn one\n", KILLS,
           replaced);

    EXPECT_EQ(export_file(USAGE_PATH), OK);
    EXPECT_EQ(sim_read_file(USAGE_PATH), whole);
    EXPECT_THAT(names_in("/tmp/ApplicationData"), testing::ElementsAre("app_usage.json"));
    fs::remove("/tmp/whole.json");
}

TEST_F(DaemonExport, AFullDiskLeavesTheOldFile) {
    UTM_NEEDS("mount-namespaces", !sim_is_redirected());
    ASSERT_EQ(mount("tmpfs", "/tmp/ApplicationData", "tmpfs", 0, "size=64k,mode=0755"), 0);
    ASSERT_TRUE(sim_write_file(USAGE_PATH, old_));
    start_with_household();

    EXPECT_EQ(export_file(USAGE_PATH), FAIL);

    EXPECT_EQ(sim_read_file(USAGE_PATH), old_);
    EXPECT_THAT(names_in("/tmp/ApplicationData"), testing::ElementsAre("app_usage.json"));
    EXPECT_EQ(log_count(std::string("export to ") + USAGE_PATH + " failed"), 1u);
    EXPECT_EQ(umount("/tmp/ApplicationData"), 0);
}
