/// More clients than the daemon has room for, and fewer descriptors than it needs.

#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"

#include <chrono>
#include <thread>
#include <unistd.h>

using std::chrono::milliseconds;

namespace {

/// Descriptors from this number on are not served.
constexpr int FIRST_REFUSED = 128;

class DaemonOverload : public daemon_test {
protected:
    void TearDown() override {
        for (const int fd : clients)
            close(fd);
        EXPECT_TRUE(sim_wait_for([this] { return next_descriptor(daemon.pid) < FIRST_REFUSED; }));
        daemon_test::TearDown();
    }
    /// Connects, one after the other, so that the n-th client has the n-th free descriptor.
    void connect_clients(int count) {
        const size_t before = open_descriptors(daemon.pid).size();
        for (int i = 0; i < count; ++i)
            clients.push_back(sim_connect());
        ASSERT_TRUE(wait_for_descriptors(before + static_cast<size_t>(count)));
    }
    /// Takes every descriptor away that the daemon could still get.
    void exhaust_descriptors() {
        ASSERT_TRUE(limit_descriptors(daemon.pid, next_descriptor(daemon.pid)));
    }
    std::vector<int> clients;
};

} // namespace

TEST_F(DaemonOverload, ConnectionsPastTheTableAreNeitherServedNorClosed) {
    start_with_log();
    const int room = FIRST_REFUSED - next_descriptor(daemon.pid);
    connect_clients(room + 6);

    text_lines expected;
    for (int fd = FIRST_REFUSED; fd < FIRST_REFUSED + 6; ++fd)
        expected.push_back("Add fd failed: " + std::to_string(fd));
    ASSERT_TRUE(wait_for_log(expected.back()));
    const int refused = clients.back();
    const int served = clients[static_cast<size_t>(room) - 1];
    ASSERT_TRUE(sim_send(refused, PING));
    ASSERT_TRUE(sim_send(served, PING));

    EXPECT_EQ(sim_status(sim_read_answer(served)), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK) << "a slot is free";
    EXPECT_FALSE(is_readable(refused));
    expected.push_back("[socket] Receive cmd type=0");
    expected.push_back("[socket] Receive cmd type=0");
    EXPECT_EQ(log_lines(), expected);
    EXPECT_EQ(descriptor_target(daemon.pid, FIRST_REFUSED + 5).rfind("socket:", 0), 0u);
}

TEST_F(DaemonOverload, AFullTableIsServedAgainWhenItsClientsGo) {
    start();
    const int room = FIRST_REFUSED - next_descriptor(daemon.pid);
    connect_clients(room + 2);
    for (const int fd : clients)
        close(fd);
    clients.clear();
    ASSERT_TRUE(wait_for_descriptors(4 + 2)) << "the two that were refused stay open";

    connect_clients(room);
    for (const int fd : clients) {
        ASSERT_TRUE(sim_send(fd, PING));
        EXPECT_EQ(sim_status(sim_read_answer(fd)), UTM_APP_CONFIG_STATUS_OK);
    }
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonOverload, WithoutADescriptorTheDaemonWaitsAndDoesNotSpin) {
    start();
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
    exhaust_descriptors();
    const milliseconds before = side_threads_time(daemon.pid);
    const int waiting = send_request({.type = UTM_APP_CONFIG_PING});

    // There is no event to wait for: the time itself is what is measured.
    std::this_thread::sleep_for(milliseconds(1200));

    EXPECT_LT(side_threads_time(daemon.pid) - before, milliseconds(300)) << "it spins";
    EXPECT_FALSE(is_readable(waiting));
    ASSERT_TRUE(limit_descriptors(daemon.pid, 256));
    EXPECT_EQ(sim_status(sim_read_answer(waiting)), UTM_APP_CONFIG_STATUS_OK);
    close(waiting);
}

TEST_F(DaemonOverload, AWaitingClientIsServedWhenAnotherOneGoes) {
    start();
    ASSERT_TRUE(limit_descriptors(daemon.pid, next_descriptor(daemon.pid) + 1));
    connect_clients(1);
    const int waiting = send_request({.type = UTM_APP_CONFIG_PING});

    close(clients.back());
    clients.clear();

    EXPECT_EQ(sim_status(sim_read_answer(waiting)), UTM_APP_CONFIG_STATUS_OK);
    close(waiting);
}

TEST_F(DaemonOverload, WithoutADescriptorTheClientsInsideAreStillServed) {
    start();
    connect_clients(3);
    exhaust_descriptors();
    const int waiting = send_request({.type = UTM_APP_CONFIG_PING});

    for (const int fd : clients) {
        ASSERT_TRUE(sim_send(fd, PING));
        EXPECT_EQ(sim_status(sim_read_answer(fd)), UTM_APP_CONFIG_STATUS_OK);
    }
    EXPECT_EQ(sim_status(sim_read_answer(waiting)), UTM_APP_CONFIG_STATUS_OK);
    close(waiting);
}
