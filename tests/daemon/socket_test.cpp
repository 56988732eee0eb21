/// The control socket: what is served, what is not, and in which order.

#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"
#include "tests/lib/needs.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DaemonSocket : public daemon_test {};

/// Leaves a socket file behind as a daemon does that was killed.
void leave_a_stale_socket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, UTM_APP_CONFIG_SOCKET_PATH, sizeof UTM_APP_CONFIG_SOCKET_PATH);
    EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    close(fd);
}

} // namespace

TEST_F(DaemonSocket, EveryLocalUserMayConnect) {
    start();

    struct stat status = {};
    ASSERT_EQ(stat(UTM_APP_CONFIG_SOCKET_PATH, &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | 0777));
}

TEST_F(DaemonSocket, AStaleSocketFileIsReplaced) {
    leave_a_stale_socket();
    ASSERT_EQ(sim_connect(), -1);

    start();

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonSocket, AFileInTheWayIsReplaced) {
    ASSERT_TRUE(sim_write_file(UTM_APP_CONFIG_SOCKET_PATH, "not a socket"));

    start();

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonSocket, ARequestOf136BytesGetsOneReplyOf832) {
    start();

    const sim_answer answer = sim_ask_bytes(PING);

    EXPECT_EQ(answer.bytes.size(), UTM_APP_CONFIG_REPLY_SIZE);
    EXPECT_TRUE(answer.closed);
}

TEST_F(DaemonSocket, ARequestThatIsNotWholeGetsNoReply) {
    start_with_log();

    for (const size_t size : {1u, 68u, 135u}) {
        const sim_answer answer = sim_ask_bytes(PING.substr(0, size));
        EXPECT_EQ(answer.bytes, "") << size;
        EXPECT_TRUE(answer.closed) << size;
    }

    EXPECT_THAT(log_lines(), IsEmpty());
}

TEST_F(DaemonSocket, WhatFollowsARequestIsLost) {
    start_with_log();

    for (const size_t extra : {1u, 136u, 5000u}) {
        const sim_answer answer = sim_ask_bytes(PING + std::string(extra, '\0'));
        EXPECT_EQ(answer.replies.size(), 1u) << extra;
        EXPECT_TRUE(answer.closed) << extra;
    }

    EXPECT_THAT(log_lines(),
                ElementsAre("[socket] Receive cmd type=0", "[socket] Receive cmd type=0",
                            "[socket] Receive cmd type=0"));
}

TEST_F(DaemonSocket, ARequestWhosePiecesArriveApartGetsNoReply) {
    start_with_log();
    const int fd = sim_connect();
    ASSERT_TRUE(sim_send(fd, PING.substr(0, 100)));
    ASSERT_TRUE(sim_wait_for([fd] { return is_readable(fd); })) << "the first piece is not read";

    EXPECT_FALSE(sim_send(fd, PING.substr(100))) << "it waits for the second";

    const sim_answer answer = sim_read_answer(fd);
    EXPECT_EQ(answer.bytes, "");
    EXPECT_TRUE(answer.closed);
    EXPECT_THAT(log_lines(), IsEmpty());
    close(fd);
}

TEST_F(DaemonSocket, ARequestWhosePiecesWaitTogetherIsServed) {
    start();
    const int busy = occupy_the_socket_thread();
    const int fd = sim_connect();
    ASSERT_TRUE(sim_send(fd, PING.substr(0, 100)));
    ASSERT_TRUE(sim_send(fd, PING.substr(100)));
    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(fd)), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_EQ(sim_status(sim_read_answer(busy)), UTM_APP_CONFIG_STATUS_OK);
    close(fd);
    close(busy);
}

TEST_F(DaemonSocket, TypesThatAreNotServedCloseTheConnectionUnanswered) {
    start_with_log();
    const std::set<int> served = {0,  1,  2,  3,  4,  26, 27, 28, 29, 30, 31, 32, 33, 34, 35,
                                  36, 37, 39, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51};
    text_lines expected;
    for (int type = 0; type <= 255; ++type) {
        if (served.count(type) != 0)
            continue;
        const sim_answer answer = sim_ask({.type = static_cast<uint8_t>(type), .arg0 = 1});
        EXPECT_EQ(answer.bytes, "") << type;
        EXPECT_TRUE(answer.closed) << type;
        expected.push_back("[socket] Receive cmd type=" + std::to_string(type));
    }

    EXPECT_EQ(log_lines(), expected);
}

TEST_F(DaemonSocket, AClientThatSaysNothingDelaysNobody) {
    start();
    std::vector<int> silent;
    for (int i = 0; i < 20; ++i)
        silent.push_back(sim_connect());
    ASSERT_TRUE(wait_for_descriptors(24)) << "each of them has a slot";

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);

    ASSERT_TRUE(sim_send(silent.back(), PING));
    EXPECT_EQ(sim_status(sim_read_answer(silent.back())), UTM_APP_CONFIG_STATUS_OK)
        << "it may still make up its mind";
    for (const int fd : silent)
        close(fd);
    EXPECT_TRUE(wait_for_descriptors(4)) << "a slot is free again when its client has gone";
}

TEST_F(DaemonSocket, ALoneOutOfBandByteDelaysNobody) {
    start();
    const int rude = sim_connect();
    UTM_NEEDS("out-of-band-local-sockets", send(rude, "!", 1, MSG_OOB | MSG_NOSIGNAL) == 1);
    // Either it is hung up on or it keeps its slot; nobody else notices.
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);
    close(rude);
}

TEST_F(DaemonSocket, ClientsThatAreReadyTogetherAreServedInSlotOrderEachInFull) {
    start_with_log();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
    const int first = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(5));
    const int second = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(6));
    const int busy = occupy_the_socket_thread();
    unlink(LOG_PATH);
    const std::string list = sim_bytes({.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = 1});
    ASSERT_TRUE(sim_send(second, PING));
    ASSERT_TRUE(sim_send(first, list));
    open_gates();

    const sim_answer answer_to_first = sim_read_answer(first);
    const sim_answer answer_to_second = sim_read_answer(second);

    EXPECT_EQ(answer_to_first.replies.size(), 8u);
    EXPECT_TRUE(answer_to_first.closed);
    EXPECT_EQ(answer_to_second.replies.size(), 1u);
    EXPECT_TRUE(answer_to_second.closed);
    EXPECT_THAT(log_lines(),
                ElementsAre("[socket] Receive cmd type=31", "[socket] Receive cmd type=0"));
    for (const int fd : {first, second, busy})
        close(fd);
}

TEST_F(DaemonSocket, ClosingTheHighestDescriptorLeavesTheOthersServed) {
    start();
    const int low = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(5));
    const int high = sim_connect();
    ASSERT_TRUE(wait_for_descriptors(6));

    ASSERT_TRUE(sim_send(high, PING));
    EXPECT_EQ(sim_status(sim_read_answer(high)), UTM_APP_CONFIG_STATUS_OK);
    ASSERT_TRUE(sim_send(low, PING));
    EXPECT_EQ(sim_status(sim_read_answer(low)), UTM_APP_CONFIG_STATUS_OK);
    close(low);
    close(high);
}
