/// The usage file where a transcript cannot go: on a machine that has just started, and for
/// requests that utm_appctl does not send. tests/cram/commands has the rest.

#include "tests/daemon/support/fixture.h"
#include "tests/lib/needs.h"

#include <filesystem>
#include <sys/sysinfo.h>

using testing::ElementsAre;

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

/// Right after boot the daemon saves nothing by itself.
bool machine_runs_for_a_minute() {
    struct sysinfo machine = {};
    return sysinfo(&machine) == 0 && machine.uptime >= 60;
}

} // namespace

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

TEST_F(DaemonUsageFile, ARequestWithoutAPathFails) {
    turn_on();

    EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, "")), FAIL);
    EXPECT_EQ(ask(sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, "")), FAIL);

    EXPECT_THAT(log_lines(), ElementsAre("export to  failed", "import from  failed"));
}
