/// The daemon's life: start, ticks, stop.

#include "sim/harness/preload.h"
#include "sim/harness/sandbox_redirection.h"
#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"
#include "tests/lib/needs.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DaemonLife : public daemon_test {
protected:
    /// Profile 1 has a device.
    static void add_a_device() {
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2, 0, 0, 0, 0, 1})), 0);
    }
};

} // namespace

TEST_F(DaemonLife, ItDetachesAndItsStarterEndsWithStatus0) {
    start();

    EXPECT_EQ(daemon.starter_status, 0);
    EXPECT_NE(getsid(daemon.pid), getsid(0)) << "it is not in a session of its own";
    // glibc's `daemon` stops there; musl's forks once more.
    EXPECT_EQ(getsid(daemon.pid) == daemon.pid, !IS_EMULATED);
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(daemon.pid) + "/cwd"), "/");
    for (int fd = 0; fd <= 2; ++fd)
        EXPECT_EQ(descriptor_target(daemon.pid, fd), "/dev/null") << fd;
    EXPECT_THAT(open_descriptors(daemon.pid), ElementsAre(0, 1, 2, 3)) << "3 is the socket";
}

TEST_F(DaemonLife, ItStartsWithWhateverStandardStreamsClosedAndInSilence) {
    for (int closed = 1; closed < 8; ++closed) {
        options.in_child = [closed] {
            for (int fd = 0; fd <= 2; ++fd)
                if ((closed >> fd) % 2 == 1)
                    close(fd);
        };

        start();

        EXPECT_THAT(open_descriptors(daemon.pid), ElementsAre(0, 1, 2, 3)) << closed;
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
        EXPECT_FALSE(std::filesystem::exists("/tmp/utm_log"));
        EXPECT_FALSE(std::filesystem::exists("/tmp/ApplicationData"));
        stop();
        std::filesystem::remove_all("/tmp/utm_log");
    }
}

TEST_F(DaemonLife, ASocketPathThatIsADirectoryEndsItWithStatus1) {
    ASSERT_EQ(mkdir(UTM_APP_CONFIG_SOCKET_PATH, 0777), 0);
    ASSERT_TRUE(sim_clock_create(&clock, std::string(ROUTER_DIR) + "/clock", NOON));
    options.clock = &clock;

    EXPECT_FALSE(sim_daemon_start(&daemon, options));

    EXPECT_EQ(daemon.starter_status, 1);
    EXPECT_THAT(log_lines(), ElementsAre("utm_app_config_socket_init_binding failed"));
    EXPECT_THAT(journal(), IsEmpty());
}

TEST_F(DaemonLife, ASocketDirectoryThatCannotBeWrittenEndsItWithStatus1) {
    // Nothing else keeps root from writing.
    UTM_NEEDS("mount-namespaces", !sim_is_redirected());
    ASSERT_EQ(mount(nullptr, "/dev", nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);

    EXPECT_FALSE(sim_daemon_start(&daemon, options));

    EXPECT_EQ(daemon.starter_status, 1);
    EXPECT_THAT(log_lines(), ElementsAre("utm_app_config_socket_init_binding failed"));
    EXPECT_EQ(mount(nullptr, "/dev", nullptr, MS_REMOUNT | MS_BIND, nullptr), 0);
}

TEST_F(DaemonLife, TheFirstTickComesAtOnceAndTheOthersEverySixtySeconds) {
    start();
    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON)));

    ASSERT_TRUE(sim_clock_advance(&clock, 59));
    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON)));
    ASSERT_TRUE(sim_clock_advance(&clock, 1));
    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON), router_query(NOON, NOON + 60)));
    ASSERT_TRUE(sim_clock_advance(&clock, 119));
    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON), router_query(NOON, NOON + 60),
                                       router_query(NOON + 60, NOON + 120)));
}

TEST_F(DaemonLife, AnInterruptDuringStartUpLeadsStraightToTheEnd) {
    UTM_NEEDS("directory-notifications", access("/proc/sys/fs/dir-notify-enable", F_OK) == 0);
    // The kernel interrupts the daemon the moment its socket appears.
    options.in_child = [] {
        const std::filesystem::path socket = sim_outside(UTM_APP_CONFIG_SOCKET_PATH);
        const int directory = open(socket.parent_path().c_str(), O_RDONLY | O_DIRECTORY);
        fcntl(directory, F_SETSIG, SIGINT);
        fcntl(directory, F_NOTIFY, DN_CREATE);
    };

    launch();

    const sim_exit how = sim_daemon_wait_exit(&daemon);
    EXPECT_TRUE(how.ended);
    EXPECT_EQ(how.status, 0);
    EXPECT_THAT(log_lines(), ElementsAre("Config handler exit"));
    EXPECT_THAT(journal(), IsEmpty()) << "it made a tick";
}

TEST_F(DaemonLife, AnInterruptDuringATickLetsTheTickFinish) {
    start_with_log();
    add_a_device();
    hold_up_a_tick();

    ASSERT_TRUE(sim_daemon_signal(daemon, SIGINT));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_EQ(log_count("Config handler exit"), 0u);
    open_gates();
    sim_clock_grant(&clock, 1);

    const sim_exit how = sim_daemon_wait_exit(&daemon);
    EXPECT_TRUE(how.ended);
    EXPECT_EQ(how.status, 0);
    EXPECT_THAT(journal(),
                ElementsAre(device_query(NOON, NOON + 60, "020000000001 "),
                            router_query(NOON, NOON + 60), "lcsh apg acl reset 02:00:00:00:00:01"));
}

TEST_F(DaemonLife, TheEndIsLoggedWithTheDebugLogOffToo) {
    start();

    stop();

    EXPECT_THAT(log_lines(), ElementsAre("Config handler exit"));
    EXPECT_FALSE(std::filesystem::exists("/tmp/ApplicationData")) << "the end saves nothing";
    EXPECT_FALSE(std::filesystem::exists(UTM_APP_CONFIG_SOCKET_PATH));
}

TEST_F(DaemonLife, TheEndLeavesThePathToWhoeverHasTakenIt) {
    start();
    ASSERT_EQ(rename(UTM_APP_CONFIG_SOCKET_PATH, "/dev/utm_moved"), 0);
    ASSERT_TRUE(sim_write_file(UTM_APP_CONFIG_SOCKET_PATH, "a successor's"));

    stop();

    EXPECT_EQ(sim_read_file(UTM_APP_CONFIG_SOCKET_PATH), "a successor's");
    EXPECT_EQ(unlink("/dev/utm_moved"), 0);
}

TEST_F(DaemonLife, ATerminationSignalEndsItWithoutTheClosingWork) {
    start_with_log();
    add_a_device();

    ASSERT_TRUE(sim_daemon_signal(daemon, SIGTERM));

    EXPECT_EQ(sim_daemon_wait_exit(&daemon).signal, SIGTERM);
    EXPECT_EQ(log_count("Config handler exit"), 0u);
    EXPECT_THAT(journal(), IsEmpty());
}
