/// Clients that mean harm, signals by the thousand, and clocks that are far off.

#include "sim/harness/sandbox_redirection.h"
#include "tests/daemon/support/clients.h"
#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

using std::chrono::seconds;
using std::chrono::steady_clock;

namespace {

const utm_app_config_cmd WEEK = {.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = 1};

class DaemonHostile : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        start();
        ASSERT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        ASSERT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), 0);
    }

    /// Whatever happened before, a client that behaves gets all it asks for.
    void expect_service() {
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
        const sim_answer week = sim_ask(WEEK);
        EXPECT_EQ(week.replies.size(), 8u);
        EXPECT_EQ(sim_status(week), UTM_APP_CONFIG_STATUS_OK);
    }
};

/// What a client does with its connection, by number. The daemon closes some of them.
void misbehave(int fd, unsigned kind) {
    const std::string request = sim_bytes(WEEK);
    switch (kind % 8) {
    case 0: // never says a word
        break;
    case 1:
        sim_send(fd, request.substr(0, 1));
        break;
    case 2:
        sim_send(fd, request.substr(0, request.size() - 1));
        break;
    case 3: // where the system has no such thing for local sockets, nothing is sent
        send(fd, "!", 1, MSG_OOB | MSG_NOSIGNAL);
        break;
    case 4: // asks and never reads
        sim_send(fd, request);
        break;
    case 5: // a type that is not served, and more behind it
        sim_send(fd, std::string(4000, '\xFF'));
        break;
    case 6: // asks and can be told nothing
        sim_send(fd, request);
        shutdown(fd, SHUT_RD);
        break;
    case 7: // can say nothing any more
        shutdown(fd, SHUT_WR);
        break;
    }
}

} // namespace

TEST_F(DaemonHostile, AHundredAndFortyConnectionsOfEveryKindLeaveNothingBehind) {
    std::vector<int> clients;
    for (unsigned i = 0; i < 140; ++i) {
        clients.push_back(sim_connect());
        ASSERT_GE(clients.back(), 0) << i;
        misbehave(clients.back(), i);
    }

    expect_service();

    for (const int fd : clients)
        close(fd);
    EXPECT_TRUE(wait_for_descriptors(4));
    expect_service();
}

TEST_F(DaemonHostile, AReaderThatDripsIsNotWaitedForLongerThanOneThatNeverReads) {
    std::vector<std::pair<int, int>> apps;
    for (int app = 1; app <= 700; ++app)
        apps.push_back({app, 1});
    prescribe("reply.profile", usage_reply(apps));
    tick();
    const int fd = send_request({.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = 1});
    ASSERT_TRUE(sim_wait_for([fd] { return is_readable(fd); }));
    std::atomic<bool> is_over{false};
    std::thread drip([&] {
        for (char byte; !is_over && recv(fd, &byte, 1, 0) == 1;)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    });
    const auto asked = steady_clock::now();

    expect_service();

    EXPECT_LT(steady_clock::now() - asked, seconds(5)) << "a reply may wait for three";
    is_over = true;
    drip.join();
    EXPECT_LT(sim_read_answer(fd).bytes.size(), 700u * UTM_APP_CONFIG_REPLY_SIZE);
    close(fd);
}

/// Beside a sanitizer or an emulator it is them that a test measures, so there are fewer.
/// UTM_CONNECTIONS says how many there are, where it is set.
TEST_F(DaemonHostile, AHundredThousandConnectionsTakeNoMemoryAndNoDescriptor) {
    const bool is_plain = !IS_SANITIZED && !IS_EMULATED && !sim_is_redirected();
    const size_t count = as_many_as("UTM_CONNECTIONS", is_plain ? 100'000 : 5'000);
    const auto connect_and_go = [](unsigned kind) {
        const int fd = sim_connect();
        ASSERT_GE(fd, 0);
        misbehave(fd, kind);
        close(fd);
    };
    for (unsigned i = 0; i < 2000; ++i)
        connect_and_go(i);
    ASSERT_TRUE(wait_for_descriptors(4));
    const long before = resident_kib(daemon.pid);
    const auto began = steady_clock::now();

    for (size_t i = 0; i < count && !HasFatalFailure(); ++i)
        connect_and_go(static_cast<unsigned>(i));

    expect_service();
    EXPECT_TRUE(wait_for_descriptors(4));
    const long grown = resident_kib(daemon.pid) - before;
    const std::chrono::duration<double> taken = steady_clock::now() - began;
    printf("%zu connections in %.1f s; resident memory has grown by %ld KiB\n", count,
           taken.count(), grown);
    if (!IS_SANITIZED) {
        EXPECT_LE(grown, 64) << "of " << before << " KiB";
    }
}

TEST_F(DaemonHostile, AStormOfSignalsDisturbsNoTickAndNoClient) {
    prescribe("reply", usage_reply({{301, 7}}));
    const size_t before = journal().size();
    busy_clients clients(2, [](std::mt19937 &) { return WEEK; });
    constexpr int ticks = 10;
    sim_clock_grant(&clock, 60 * ticks);

    constexpr int signals[] = {SIGPIPE, SIGCHLD, SIGURG,  SIGWINCH, SIGTSTP,   SIGCONT, SIGSTOP,
                               SIGCONT, SIGHUP,  SIGUSR1, SIGUSR2,  SIGVTALRM, SIGPROF, SIGALRM};
    for (int round = 0; round < 500; ++round)
        for (const int signal_number : signals)
            ASSERT_TRUE(sim_daemon_signal(daemon, signal_number));

    ASSERT_TRUE(sim_clock_wait_asleep(clock));
    ASSERT_TRUE(sim_wait_for([&] { return clients.answered() > 0; }));
    clients.stop();
    EXPECT_EQ(clients.left_waiting(), 0u);
    // A sleep that a signal ends counts as a second, so there may be more ticks.
    const size_t queries = journal().size() - before;
    EXPECT_GE(queries, 2u * ticks);
    EXPECT_EQ(queries % 2, 0u) << "two queries a tick";
    expect_service();
}

TEST_F(DaemonHostile, AClockIsBelievedFromTheBeginningOfTimeToItsEnd) {
    ASSERT_EQ(mkdir("/tmp/ApplicationData", 0755), 0);
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), 0);
    prescribe("reply", usage_reply({{301, 7}, {0, 3}}));
    std::vector<time_t> times;
    for (int bits = 55; bits >= 31; bits -= 4)
        for (const time_t sign : {-1, 1})
            times.push_back(sign * (time_t{1} << bits));
    for (const time_t time : times) {
        SCOPED_TRACE(time);
        const time_t last = sim_clock_now(clock);
        sim_clock_jump(&clock, time - 60 - last);
        tick();
        EXPECT_EQ(journal().back(), router_query(last, time));
        // What is from the future is refused, and answered.
        for (const uint8_t type :
             {UTM_APP_CONFIG_EXPORT_STATISTICS, UTM_APP_CONFIG_IMPORT_STATISTICS})
            EXPECT_GE(ask(sim_path_command(type, "/tmp/ApplicationData/saved.json")), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 1, .arg1 = 2000}), 0);
        expect_service();
    }
}
