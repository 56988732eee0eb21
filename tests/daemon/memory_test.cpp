/// What the daemon keeps in memory, against a program of the same libraries that does nothing.

#include "sim/harness/program.h"
#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr long LIMIT_KIB = 512;
constexpr int PROFILES = 10;
constexpr int DEVICES = 5;
constexpr int APPS_OF_A_PROFILE = 50;

class DaemonMemory : public daemon_test {};

/// The empty program, killed with its owner.
struct empty_program {
    pid_t pid = -1;

    empty_program() {
        int said[2] = {-1, -1};
        EXPECT_EQ(pipe2(said, O_CLOEXEC), 0);
        pid = fork();
        if (pid == 0) {
            dup2(said[1], STDOUT_FILENO);
            sim_exec({UTM_EMPTY});
        }
        close(said[1]);
        char word = 0;
        EXPECT_EQ(read(said[0], &word, 1), 1) << "it did not start";
        close(said[0]);
    }
    ~empty_program() {
        kill(pid, SIGKILL);
        sim_reap(pid);
    }
};

void add_household() {
    for (int profile = 1; profile <= PROFILES; ++profile) {
        ASSERT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = profile}), 0);
        for (int device = 0; device < DEVICES; ++device) {
            const sim_mac mac = {
                2, 0, 0, 0, static_cast<uint8_t>(profile), static_cast<uint8_t>(device)};
            ASSERT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, profile, mac)), 0);
        }
    }
}

/// @return a minute of every application
std::string every_application() {
    std::vector<std::pair<int, int>> apps;
    for (int app = 1; app <= APPS_OF_A_PROFILE; ++app)
        apps.emplace_back(app, 1);
    return usage_reply(apps);
}

} // namespace

TEST_F(DaemonMemory, ALargeFamilyTakesHalfAMebibyteAtTheMost) {
    start();
    add_household();
    prescribe("reply", every_application());
    tick(3);
    // The whole is also written once: that takes the most memory at a time.
    ASSERT_EQ(mkdir("/tmp/ApplicationData", 0777), 0);
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), 0);

    const empty_program empty;
    const long taken = resident_kib(daemon.pid) - resident_kib(empty.pid);

    RecordProperty("taken_kib", static_cast<int>(taken));
    EXPECT_GT(taken, 0);
    EXPECT_LE(taken, LIMIT_KIB);
}
