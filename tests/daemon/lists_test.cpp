/// Clients that read a long list slowly.

#include "tests/daemon/support/fixture.h"

#include <chrono>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using std::chrono::seconds;
using std::chrono::steady_clock;

namespace {

constexpr int APPS = 700;
constexpr int FIRST_APP = 1000;
constexpr int BY_DAY = 0;

const utm_app_config_cmd LONG_LIST = {
    .type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = 1, .arg1 = BY_DAY};

class DaemonLists : public daemon_test {
protected:
    /// Profile 1 has used applications 1000, 1001, ... for 1, 2, ... minutes.
    void SetUp() override {
        daemon_test::SetUp();
        start();
        ASSERT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        ASSERT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, {2})), 0);
        std::vector<std::pair<int, int>> apps;
        for (int i = 0; i < APPS; ++i)
            apps.push_back({FIRST_APP + i, i + 1});
        prescribe("reply.profile", usage_reply(apps));
        tick();
        prescribe("reply.profile", usage_reply({}));
    }

    /// A client that has asked for the list and reads nothing of it.
    static int stuck_reader() {
        const int fd = send_request(LONG_LIST);
        EXPECT_TRUE(sim_wait_for([fd] { return is_readable(fd); }));
        return fd;
    }
};

} // namespace

TEST_F(DaemonLists, ASlowReaderGetsEverything) {
    const int fd = send_request(LONG_LIST);
    sim_answer answer;

    // A second to each quarter: four seconds in all, more than a reply may wait.
    const size_t whole = (APPS + 1) * UTM_APP_CONFIG_REPLY_SIZE;
    while (answer.bytes.size() < whole && !HasFailure()) {
        std::this_thread::sleep_for(seconds(1));
        std::string piece(whole / 4 + 1, '\0');
        size_t filled = 0;
        while (filled < piece.size() && answer.bytes.size() + filled < whole) {
            const ssize_t got = recv(fd, &piece[filled], piece.size() - filled, 0);
            ASSERT_GT(got, 0) << "the list broke off";
            filled += static_cast<size_t>(got);
        }
        answer.bytes += piece.substr(0, filled);
    }
    EXPECT_TRUE(sim_read_answer(fd).closed);

    EXPECT_EQ(answer.bytes.size(), whole);
    const auto last = static_cast<uint8_t>(answer.bytes[whole - UTM_APP_CONFIG_REPLY_SIZE]);
    EXPECT_EQ(last, UTM_APP_CONFIG_STATUS_OK);
    close(fd);
}

TEST_F(DaemonLists, AReaderThatNeverReadsCostsTheOthersAFewSecondsAndTheTicksNone) {
    const int stuck = stuck_reader();
    const size_t before = journal().size();
    const auto asked = steady_clock::now();

    tick();
    EXPECT_EQ(journal().size(), before + 2) << "the profile's query and the router's";
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);

    EXPECT_LT(steady_clock::now() - asked, seconds(5)) << "a reply may wait for three, once";
    const sim_answer rest = sim_read_answer(stuck);
    EXPECT_TRUE(rest.closed);
    EXPECT_LT(rest.replies.size(), static_cast<size_t>(APPS)) << "it was sent whole after all";
    ASSERT_FALSE(rest.replies.empty());
    EXPECT_EQ(rest.replies.back().status, UTM_APP_CONFIG_STATUS_DATA) << "the list goes on";
    close(stuck);
}

TEST_F(DaemonLists, AReaderThatGoesInTheMiddleEndsItsList) {
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), 0);
    const int fd = send_request(LONG_LIST);
    std::string some(4000, '\0');
    ASSERT_GT(recv(fd, some.data(), some.size(), 0), 0);
    close(fd);

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), UTM_APP_CONFIG_STATUS_OK);

    // A writer that is waiting when the reader goes is told by an error, without a signal.
    const text_lines told = {"[socket] Receive cmd type=37", "[socket] Receive cmd type=0"};
    const text_lines signalled = {told[0], "Receive SIGPIPE", told[1]};
    EXPECT_THAT(log_lines(), testing::AnyOf(told, signalled));
}

TEST_F(DaemonLists, AReaderThatNeverReadsDoesNotHoldUpTheEnd) {
    ASSERT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), 0);
    const int stuck = stuck_reader();
    const auto told = steady_clock::now();

    stop();

    EXPECT_LT(steady_clock::now() - told, seconds(2)) << "a reply may wait for three";
    const sim_answer rest = sim_read_answer(stuck);
    EXPECT_TRUE(rest.closed);
    EXPECT_LT(rest.replies.size(), static_cast<size_t>(APPS));
    EXPECT_EQ(log_count("Receive SIGPIPE"), 0u) << "it has not gone by itself";
    EXPECT_EQ(log_count("utm_app_config_loop failed"), 0u);
    close(stuck);
}
