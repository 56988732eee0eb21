/// The usage file: when the daemon writes it, and that it carries usage into another life.

#include "tests/daemon/support/fixture.h"
#include "tests/lib/needs.h"

#include <filesystem>
#include <sys/sysinfo.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DaemonUsageFile : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        std::filesystem::create_directory("/tmp/ApplicationData");
        start();
    }
    void turn_on() { ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK); }
};

int save(const std::string &path) {
    return ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, path));
}

int restore(const std::string &path) {
    return ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, path));
}

/// Right after boot the daemon saves nothing by itself.
bool machine_runs_for_a_minute() {
    struct sysinfo machine = {};
    return sysinfo(&machine) == 0 && machine.uptime >= 60;
}

/// Profile 1 with a device; application 305 may be used for ten minutes.
void set_up_a_profile() {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 1, .arg2 = 1}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 1, .arg3 = 30}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 1}), OK);
    EXPECT_EQ(ask(sim_rules_command(1, {{305, 1, 10}})), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 1, .arg1 = 1}), OK);
}

} // namespace

TEST_F(DaemonUsageFile, SwitchingOnWritesItWhereNoneIs) {
    turn_on();

    EXPECT_EQ(sim_read_file(USAGE_PATH), empty_document(NOON));
}

TEST_F(DaemonUsageFile, SwitchingOnLeavesOneThatIsThereAlone) {
    ASSERT_TRUE(sim_write_file(USAGE_PATH, "of an earlier life"));

    turn_on();

    EXPECT_EQ(sim_read_file(USAGE_PATH), "of an earlier life");
}

TEST_F(DaemonUsageFile, SwitchingOnWithoutItsDirectoryIsLoggedAndWorks) {
    std::filesystem::remove("/tmp/ApplicationData");

    turn_on();

    EXPECT_THAT(log_lines(), ElementsAre("export to /tmp/ApplicationData/app_usage.json failed"));
    EXPECT_FALSE(std::filesystem::exists("/tmp/ApplicationData"));
}

TEST_F(DaemonUsageFile, ItIsWrittenWhenMoreThanTheIntervalHasPassed) {
    UTM_NEEDS("uptime-of-a-minute", machine_runs_for_a_minute());
    turn_on();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = 1}), OK);
    ASSERT_TRUE(std::filesystem::remove(USAGE_PATH));

    tick();
    EXPECT_FALSE(std::filesystem::exists(USAGE_PATH)) << "a minute is not more than a minute";
    tick();
    EXPECT_EQ(sim_read_file(USAGE_PATH), empty_document(NOON + 120));
}

TEST_F(DaemonUsageFile, WhileTheFeatureIsOffItIsNeitherWrittenNorRead) {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = 1}), OK);
    ASSERT_TRUE(sim_write_file("/tmp/saved.json", empty_document(NOON)));

    tick(4);

    EXPECT_FALSE(std::filesystem::exists(USAGE_PATH));
    EXPECT_EQ(save("/tmp/other.json"), FAIL);
    EXPECT_EQ(restore("/tmp/saved.json"), FAIL);
    EXPECT_THAT(log_lines(), IsEmpty());
}

TEST_F(DaemonUsageFile, FailuresAreLoggedWithTheDebugLogOffAndSuccessesOfReadingToo) {
    turn_on();

    EXPECT_EQ(save("/tmp/saved.json"), OK);
    EXPECT_EQ(save("/tmp/none/saved.json"), FAIL);
    EXPECT_EQ(restore("/tmp/saved.json"), OK);
    EXPECT_EQ(restore("/tmp/none/saved.json"), FAIL);
    EXPECT_EQ(save(""), FAIL);
    EXPECT_EQ(restore(""), FAIL);
    sim_clock_jump(&clock, -24 * 60 * 60);
    EXPECT_EQ(restore("/tmp/saved.json"), FAIL);

    EXPECT_THAT(log_lines(), ElementsAre("export to /tmp/none/saved.json failed",
                                         "import from /tmp/saved.json success",
                                         "import from /tmp/none/saved.json failed",
                                         "export to  failed", "import from  failed",
                                         "Import statistic failed because it is from future",
                                         "import from /tmp/saved.json failed"));
}

TEST_F(DaemonUsageFile, TheDebugLogAlsoTellsOfWhatWasWritten) {
    turn_on();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), OK);

    EXPECT_EQ(save("/tmp/saved.json"), OK);

    EXPECT_THAT(log_lines(),
                ElementsAre("[socket] Receive cmd type=51", "export to /tmp/saved.json success"));
}

TEST_F(DaemonUsageFile, UsageAndItsBlocksSurviveAPowerCutWithinADay) {
    turn_on();
    set_up_a_profile();
    prescribe("reply", R"({"data":[{"type":"APP","app_id":305,"total_time_usage":10},
                                   {"type":"INTERNET","app_id":0,"total_time_usage":30}]})");
    tick();
    EXPECT_EQ(save(USAGE_PATH), OK);
    EXPECT_TRUE(sim_daemon_kill(&daemon).ended);
    prescribe("reply", usage_reply({}));
    ASSERT_TRUE(sim_daemon_start(&daemon, options));
    ASSERT_TRUE(sim_clock_wait_asleep(clock));
    turn_on();
    set_up_a_profile();
    const size_t before = journal().size();

    EXPECT_EQ(restore(USAGE_PATH), OK);

    const text_lines seen = journal();
    EXPECT_EQ(
        text_lines(seen.begin() + static_cast<long>(before), seen.end()),
        (text_lines{"lcsh apg acl set 02:00:00:00:00:00 305 0 18", "notify block profile 1"}));
    const sim_answer usage = sim_ask({.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = 1});
    ASSERT_EQ(usage.replies.size(), 1u);
    EXPECT_EQ(usage.replies[0].daily_used, 30);
}
