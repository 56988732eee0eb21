/// Signals that arrive at bad moments.

#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"

#include <csignal>
#include <unistd.h>

using testing::ElementsAre;

namespace {

class DaemonSignals : public daemon_test {
protected:
    /// Sends the signal `count` times. Signals that arrive together count as one, so each waits
    /// for the line of the one before.
    void send_pipe_signals(size_t count) {
        for (size_t i = 1; i <= count; ++i) {
            ASSERT_TRUE(sim_daemon_signal(daemon, SIGPIPE));
            ASSERT_TRUE(wait_for_log("Receive SIGPIPE", i)) << "after " << i << " signals";
        }
    }
};

utm_app_config_cmd switch_the_feature(std::mt19937 &random) {
    return utm_app_config_cmd{.type = UTM_APP_CONFIG_SET_ACTIVATE,
                              .arg0 = static_cast<int32_t>(random() % 2)};
}

/// @return whether the socket takes no more connections
bool nobody_may_connect() {
    const int fd = sim_connect();
    if (fd >= 0)
        close(fd);
    return fd < 0;
}

} // namespace

TEST_F(DaemonSignals, PipeSignalsDuringCommandsAndLogLinesAreAllLogged) {
    start_with_log();
    busy_clients clients(2, switch_the_feature);

    send_pipe_signals(300);
    clients.stop();

    EXPECT_GT(clients.answered(), 0u);
    EXPECT_EQ(clients.left_waiting(), 0u);
    EXPECT_EQ(log_count("Receive SIGPIPE"), 300u);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonSignals, PipeSignalsDuringTicksAreAllLogged) {
    start_with_log();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), 0);
    sim_clock_grant(&clock, 60 * 50);

    send_pipe_signals(100);

    ASSERT_TRUE(sim_clock_wait_asleep(clock));
    EXPECT_EQ(log_count("Receive SIGPIPE"), 100u);
    EXPECT_EQ(journal().size(), 100u) << "two queries in each of fifty ticks";
}

TEST_F(DaemonSignals, AClientThatHasGoneCostsALineAndNothingElse) {
    start();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
    const int busy = occupy_the_socket_thread();
    // Seven entries and the end, of which the first ends the list.
    EXPECT_EQ(close(send_request({.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = 1})), 0);
    EXPECT_EQ(close(send_request({.type = UTM_APP_CONFIG_PING})), 0);
    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(busy)), UTM_APP_CONFIG_STATUS_OK);
    ASSERT_TRUE(wait_for_log("Receive SIGPIPE", 2));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_THAT(log_lines(), ElementsAre("Receive SIGPIPE", "Receive SIGPIPE"))
        << "with the debug log off too";
    close(busy);
}

TEST_F(DaemonSignals, AnInterruptInTheMiddleOfManyCommandsEndsItWithStatus0) {
    for (size_t round = 1; round <= (IS_SANITIZED ? 8u : 25u); ++round) {
        start();
        busy_clients clients(3, random_command);
        ASSERT_TRUE(sim_wait_for([&] { return clients.answered() >= 10; }));

        stop();
        clients.stop();

        EXPECT_EQ(clients.left_waiting(), 0u) << "round " << round;
        EXPECT_EQ(log_count("Config handler exit"), round);
    }
}

TEST_F(DaemonSignals, AnInterruptWhileASignatureLoadsLetsTheCommandFinish) {
    start();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), 0);
    const int busy = occupy_the_socket_thread();
    const size_t before = journal().size();

    ASSERT_TRUE(sim_daemon_signal(daemon, SIGINT));
    sim_clock_grant(&clock, 1);
    ASSERT_TRUE(sim_wait_for(nobody_may_connect));
    EXPECT_EQ(journal().size(), before) << "a profile is gone while a command runs";
    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(busy)), UTM_APP_CONFIG_STATUS_OK);
    const sim_exit how = sim_daemon_wait_exit(&daemon);
    EXPECT_TRUE(how.ended);
    EXPECT_EQ(how.status, 0);
    EXPECT_EQ(journal().back(), "lcsh apg acl reset 02:00:00:00:00:00");
    close(busy);
}
