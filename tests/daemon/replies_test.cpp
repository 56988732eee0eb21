/// Replies that wait for a program or for a tick.

#include "tests/daemon/support/fixture.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class DaemonReplies : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        start();
    }
    /// A daemon that finds another shell than the simulated router's.
    void put_in_place_of_the_shell(const std::string &script) {
        stop();
        std::filesystem::create_directory("/tmp/bin");
        ASSERT_TRUE(sim_write_file("/tmp/bin/lcsh", "#!/bin/sh\n" + script + "\n"));
        ASSERT_EQ(chmod("/tmp/bin/lcsh", 0777), 0);
        options.fakes = std::string("/tmp/bin:") + UTM_FAKES;
        start();
    }
};

} // namespace

TEST_F(DaemonReplies, ASignatureIsLoadedWhenAnyLineOfTheShellSaysSo) {
    put_in_place_of_the_shell("echo 1; echo signature loaded today; echo 3; exit 1");
    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_OK);

    put_in_place_of_the_shell("echo load; echo ed; exit 0");
    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_NOT_LOADED);

    put_in_place_of_the_shell("exec /nowhere/lcsh \"$@\"");
    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_NOT_LOADED);
}

TEST_F(DaemonReplies, AShellThatSaysALotIsReadToItsEnd) {
    put_in_place_of_the_shell("echo loaded; yes '' | head -c 1000000; touch /tmp/said-it-all");

    EXPECT_EQ(load_signature("/tmp/signature"), UTM_APP_CONFIG_STATUS_OK);
    EXPECT_TRUE(std::filesystem::exists("/tmp/said-it-all"));
}

TEST_F(DaemonReplies, CommandsWaitForATickThatHoldsTheStore) {
    hold_up_a_tick();
    const int waiting = send_request({.type = UTM_APP_CONFIG_GET_STATUS});
    EXPECT_FALSE(sim_read_answer(waiting, {std::chrono::milliseconds(50)}).closed);

    open_gates();

    EXPECT_EQ(sim_status(sim_read_answer(waiting)), UTM_APP_CONFIG_STATUS_OK);
    close(waiting);
}
