/// What the replies carry.

#include "tests/daemon/support/fixture.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

class DaemonReplies : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        start();
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3}), 0);
        EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, {2})), 0);
    }
    /// A daemon that finds another shell than the simulated router's.
    void put_in_place_of_the_shell(const std::string &script) {
        stop();
        ASSERT_EQ(mkdir("/tmp/bin", 0777), 0);
        ASSERT_TRUE(sim_write_file("/tmp/bin/lcsh", "#!/bin/sh\n" + script + "\n"));
        ASSERT_EQ(chmod("/tmp/bin/lcsh", 0777), 0);
        options.fakes = std::string("/tmp/bin:") + UTM_FAKES;
        start();
    }
};

/// Asks for one reply and returns it.
utm_app_config_reply reply_to(const utm_app_config_cmd &request) {
    const sim_answer answer = sim_ask(request);
    EXPECT_TRUE(answer.closed);
    EXPECT_EQ(answer.replies.size(), 1u);
    EXPECT_EQ(sim_status(answer), UTM_APP_CONFIG_STATUS_OK);
    return answer.replies.empty() ? utm_app_config_reply{} : answer.replies.front();
}

/// Asks for a list and returns its entries without the end.
std::vector<utm_app_config_reply> entries_of(const utm_app_config_cmd &request) {
    sim_answer answer = sim_ask(request);
    EXPECT_EQ(sim_status(answer), UTM_APP_CONFIG_STATUS_OK);
    if (!answer.replies.empty())
        answer.replies.pop_back();
    for (const utm_app_config_reply &reply : answer.replies)
        EXPECT_EQ(reply.status, UTM_APP_CONFIG_STATUS_DATA);
    return answer.replies;
}

std::vector<std::pair<int, int>> app_usage(int32_t period) {
    std::vector<std::pair<int, int>> pairs;
    for (const auto &entry :
         entries_of({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 3, .arg1 = period}))
        pairs.push_back({entry.app_usage_app_id, entry.app_usage_value});
    return pairs;
}

} // namespace

TEST_F(DaemonReplies, AProfileWithoutUsageHasOneEmptyPairAndNoDays) {
    EXPECT_THAT(app_usage(0), ElementsAre(Pair(0, 0)));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = 3}),
              UTM_APP_CONFIG_STATUS_FAIL);
}

TEST_F(DaemonReplies, APolicySNumberComesBack) {
    EXPECT_EQ(reply_to({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 7}).policy_id, 7);
    EXPECT_EQ(reply_to({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 2147483647}).policy_id,
              2147483647);
}

TEST_F(DaemonReplies, ASignatureIsLoadedWhenAnyLineSaysSo) {
    put_in_place_of_the_shell("echo 1; echo signature loaded today; echo 3; exit 1");

    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_OK);
}

TEST_F(DaemonReplies, ASignatureIsNotLoadedWhenNoLineSaysSo) {
    put_in_place_of_the_shell("echo load; echo ed; exit 0");

    const sim_answer answer =
        sim_ask(sim_path_command(UTM_APP_CONFIG_LOAD_SIGNATURE, "/tmp/signature"));

    EXPECT_EQ(sim_status(answer), UTM_APP_CONFIG_STATUS_NOT_LOADED);
    EXPECT_EQ(answer.bytes.size(), UTM_APP_CONFIG_REPLY_SIZE);
}

TEST_F(DaemonReplies, AShellThatSaysALotIsReadToItsEnd) {
    put_in_place_of_the_shell("echo loaded; yes '' | head -c 1000000; touch /tmp/said-it-all");

    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_TRUE(std::filesystem::exists("/tmp/said-it-all"));
}

TEST_F(DaemonReplies, AShellThatIsMissingHasNotLoaded) {
    put_in_place_of_the_shell("exec /nowhere/lcsh \"$@\"");

    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_NOT_LOADED);
}

TEST_F(DaemonReplies, TheLongestPathIsCutToTheCommandLineS127Characters) {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), 0);
    const std::string path = "/tmp/" + std::string(122, 'p');

    EXPECT_EQ(load_signature(path), UTM_APP_CONFIG_STATUS_NOT_LOADED);

    EXPECT_EQ(journal().back(), "lcsh load " + path.substr(0, 117));
    EXPECT_EQ(log_lines().back(), "cmd = lcsh load " + path.substr(0, 117));
}

TEST_F(DaemonReplies, APathWithoutItsEndStaysWithinTheRequest) {
    utm_app_config_cmd command = utm_app_config_cmd{.type = UTM_APP_CONFIG_LOAD_SIGNATURE};
    memset(reinterpret_cast<char *>(&command) + UTM_APP_CONFIG_PATH_OFFSET, 'p',
           UTM_APP_CONFIG_PATH_SIZE);

    EXPECT_EQ(ask(command), UTM_APP_CONFIG_STATUS_NOT_LOADED);

    EXPECT_EQ(journal().back(), "lcsh load " + std::string(117, 'p'));
}

TEST_F(DaemonReplies, CommandsWaitForATickThatHoldsTheStore) {
    shut_gate("ubus");
    sim_clock_grant(&clock, 60);
    ASSERT_TRUE(wait_for_journal("ubus", 2));
    const int waiting = send_request({.type = UTM_APP_CONFIG_GET_STATUS});
    EXPECT_FALSE(sim_read_answer(waiting, {std::chrono::milliseconds(50)}).closed);

    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(waiting)), UTM_APP_CONFIG_STATUS_OK);
    close(waiting);
}
