/// Whose socket it was: one on which somebody still listens is replaced, but not in silence.

#include "control/fd_event.h"
#include "control/socket_server.h"
#include "format/protocol.h"
#include "sim/harness/client.h"
#include "tests/lib/world.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

class SocketReplaced : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        fd_event_reset();
        std::filesystem::remove(UTM_APP_CONFIG_SOCKET_PATH);
    }
    void TearDown() override {
        fd_event_reset();
        std::filesystem::remove(UTM_APP_CONFIG_SOCKET_PATH);
    }

    /// Binds in place of what is there.
    /// @return what came of it, and whether a client then reaches this daemon
    static std::string trace_of_binding() {
        EXPECT_EQ(utm_app_config_socket_init_binding(), 0);
        const std::string trace = world::trace();
        const int client = sim_connect();
        EXPECT_GE(client, 0);
        const int accepted = accept4(listen_fd, nullptr, nullptr, SOCK_NONBLOCK);
        EXPECT_GE(accepted, 0);
        close(client);
        close(accepted);
        utm_app_config_socket_remove();
        return trace;
    }

    static constexpr char said[] = "syslog replacing /dev/utm_app_config_socket, on which another "
                                   "process still listens\n";
};

TEST_F(SocketReplaced, SaysSoWhereSomebodyListens) {
    const int first = sim_listen(UTM_APP_CONFIG_SOCKET_PATH, 5);
    EXPECT_EQ(trace_of_binding(), said);
    close(first);
}

TEST_F(SocketReplaced, DoesNotWaitForAListenerThatIsBusy) {
    const int first = sim_listen(UTM_APP_CONFIG_SOCKET_PATH, 0);
    const int waiting = sim_connect();
    EXPECT_EQ(trace_of_binding(), said);
    close(waiting);
    close(first);
}

TEST_F(SocketReplaced, SaysNothingOfWhatIsLeftOver) {
    EXPECT_EQ(trace_of_binding(), "");
    close(sim_listen(UTM_APP_CONFIG_SOCKET_PATH, 5));
    ASSERT_TRUE(std::filesystem::exists(UTM_APP_CONFIG_SOCKET_PATH));
    EXPECT_EQ(trace_of_binding(), "");
    std::ofstream{UTM_APP_CONFIG_SOCKET_PATH};
    EXPECT_EQ(trace_of_binding(), "");
}

} // namespace
