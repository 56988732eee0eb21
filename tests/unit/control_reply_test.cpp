#include "control/reply.h"

#include "tests/lib/sockets.h"
#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// Both ends of a connection that keeps each write in one piece.
class Reply : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends_), 0);
        utm_app_reply_allow_waiting();
    }
    void TearDown() override {
        close(ends_[0]);
        close(ends_[1]);
        utm_app_reply_allow_waiting();
    }

    /// Writes a list of so many replies, numbered in their policy's place.
    void write_list(int32_t count) {
        reply_block_t block;
        utm_app_reply_begin(&block, ends_[1]);
        for (int32_t i = 0; i < count; ++i) {
            utm_app_config_reply *reply = utm_app_reply_next(&block);
            ASSERT_NE(reply, nullptr);
            reply->policy_id = i;
        }
        utm_app_reply_end(&block);
        shutdown(ends_[1], SHUT_WR);
    }

    /// What came: the numbers, a full stop behind those that came at once.
    std::string received() {
        std::string told;
        std::vector<utm_app_config_reply> replies(reply_block_size + 1);
        const size_t room = replies.size() * sizeof(replies[0]);
        for (ssize_t n; (n = recv(ends_[0], replies.data(), room, 0)) > 0; told += ".") {
            EXPECT_EQ(static_cast<size_t>(n) % sizeof(replies[0]), 0u);
            for (size_t i = 0; i < static_cast<size_t>(n) / sizeof(replies[0]); ++i)
                told += (replies[i].status == UTM_APP_CONFIG_STATUS_DATA ? " " : " end ") +
                        std::to_string(replies[i].policy_id);
        }
        return told;
    }

    int ends_[2];
};

std::string numbers(int32_t first, int32_t end) {
    std::string text;
    for (int32_t i = first; i < end; ++i)
        text += " " + std::to_string(i);
    return text;
}

/// The end of so many entries, which repeats the last one's figures.
std::string end_of(int32_t count) {
    return " end " + std::to_string(count - 1);
}

constexpr int32_t block = reply_block_size;

TEST_F(Reply, ComesAlone) {
    utm_app_config_reply reply = {};
    reply.policy_id = 7;
    EXPECT_TRUE(utm_app_reply_send(ends_[1], reply));
    shutdown(ends_[1], SHUT_WR);
    EXPECT_EQ(received(), " end 7.");
}

TEST_F(Reply, OfAListComesInBlocks) {
    struct {
        int32_t count;
        std::string received;
    } const table[] = {
        {0, " end 0."},
        {1, " 0 end 0."},
        {block - 1, numbers(0, block - 1) + end_of(block - 1) + "."},
        {block, numbers(0, block) + "." + end_of(block) + "."},
        {block + 1, numbers(0, block) + "." + numbers(block, block + 1) + end_of(block + 1) + "."},
        {2 * block,
         numbers(0, block) + "." + numbers(block, 2 * block) + "." + end_of(2 * block) + "."},
    };
    for (const auto &row : table) {
        SetUp();
        write_list(row.count);
        EXPECT_EQ(received(), row.received) << row.count;
        TearDown();
    }
    SetUp();
}

TEST_F(Reply, WaitsForNobodyOnceItIsToldNotTo) {
    utm_app_reply_stop_waiting();
    const utm_app_config_reply reply = {};
    int sent = 0;
    while (utm_app_reply_send(ends_[1], reply))
        ++sent;
    EXPECT_GT(sent, 0) << "a client with room for it gets its reply";
}

TEST_F(Reply, BlockGoesInOnePiece) {
    // What is taken of a block and what is left of it would each wait for the client.
    int stream[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, stream), 0);
    utm_app_reply_stop_waiting();
    reply_block_t list;
    utm_app_reply_begin(&list, stream[1]);
    while (utm_app_reply_next(&list) != nullptr) {
    }
    close(stream[1]);
    size_t taken = 0;
    char chunk[4096];
    for (ssize_t n; (n = read(stream[0], chunk, sizeof(chunk))) > 0;)
        taken += static_cast<size_t>(n);
    close(stream[0]);
    EXPECT_GT(taken, 0u);
    EXPECT_EQ(taken % sizeof(list.replies), 0u) << taken;
}

TEST_F(Reply, EndIsNotSentToAClientThatHasGoneBeforeIt) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    shutdown(ends_[0], SHUT_RD);
    // The entries fill a block, which goes when there is no room for the end.
    EXPECT_EQ(call_trace::of([this] { write_list(block); }), "reply");
    signal(SIGPIPE, before);
}

TEST_F(Reply, ThatWaitsIsGivenUp) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    const utm_app_config_reply reply = {};
    while (send(ends_[1], &reply, sizeof(reply), MSG_DONTWAIT) > 0) {
    }
    bool sent = true;
    sockets::thread_t thread([&] { sent = utm_app_reply_send(ends_[1], reply); });
    thread.wait_until_asleep();
    utm_app_reply_stop_waiting();
    thread.join();
    EXPECT_FALSE(sent);
    signal(SIGPIPE, before);
}

TEST_F(Reply, IsWrittenWholeThroughInterruptionsAndSmallPieces) {
    // No two pieces are alike, so that each has its own place.
    std::string whole(sizeof(utm_app_config_reply), '\0');
    for (size_t i = 0; i < whole.size(); ++i)
        whole[i] = static_cast<char>(i % 251);
    utm_app_config_reply reply = {};
    memcpy(&reply, whole.data(), sizeof(reply));
    world::disturb_send(3, 500);
    EXPECT_TRUE(utm_app_reply_send(ends_[1], reply));
    shutdown(ends_[1], SHUT_WR);
    std::string bytes;
    char piece[sizeof(reply)];
    for (ssize_t n; (n = recv(ends_[0], piece, sizeof(piece), 0)) > 0;)
        bytes.append(piece, static_cast<size_t>(n));
    EXPECT_EQ(bytes, whole);
}

} // namespace
