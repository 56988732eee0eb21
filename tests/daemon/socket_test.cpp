/// The control socket: what is served, what is not, and in which order.

#include "tests/daemon/support/fixture.h"
#include "tests/daemon/support/processes.h"
#include "tests/lib/needs.h"

#include <sys/socket.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DaemonSocket : public daemon_test {};

} // namespace

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
