#include "client/connection.h"

#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

volatile sig_atomic_t broken_pipes;

/// A server that acts between a client's connecting and its request.
class ClientConnection : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        broken_pipes = 0;
        before_ = signal(SIGPIPE, [](int) { broken_pipes = broken_pipes + 1; });
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        strcpy(address.sun_path, socket_path);
        unlink(socket_path);
        listening_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(listening_, reinterpret_cast<const sockaddr *>(&address), sizeof(address)),
                  0);
        ASSERT_EQ(listen(listening_, 1), 0);
    }
    void TearDown() override {
        close(listening_);
        unlink(socket_path);
        signal(SIGPIPE, before_);
    }

    /// Asks, and lets the server act right before the request is sent.
    /// @return what is said meanwhile
    template <typename Act>
    std::string ask(Act act, ctl_exit expected) {
        ctl_exit status = CTL_USAGE;
        testing::internal::CaptureStderr();
        const std::string trace = call_trace::of(
            [&] {
                status = ctl_ask({.socket_path = socket_path, .timeout_s = 5},
                                 {.type = UTM_APP_CONFIG_GET_EXTEND}, &reply_, "no such profile");
            },
            [&](const std::string &word) {
                if (word == "request")
                    act();
            });
        EXPECT_EQ(trace, "request");
        EXPECT_EQ(status, expected);
        EXPECT_EQ(broken_pipes, 0) << "a signal of its own would end the client";
        return testing::internal::GetCapturedStderr();
    }

    static constexpr char socket_path[] = "/tmp/client_connection";
    int listening_ = -1;
    utm_app_config_reply reply_ = {};

private:
    sighandler_t before_ = SIG_DFL;
};

TEST_F(ClientConnection, ThatWasClosedBeforeTheRequestMayHaveLeftAReply) {
    utm_app_config_reply left = {};
    left.extend = 15;
    const auto reply_and_close = [&] {
        const int served = accept(listening_, nullptr, nullptr);
        EXPECT_EQ(write(served, &left, sizeof(left)), static_cast<ssize_t>(sizeof(left)));
        close(served);
    };
    EXPECT_EQ(ask(reply_and_close, CTL_DONE), "");
    EXPECT_EQ(reply_.extend, 15);
}

TEST_F(ClientConnection, ThatWasClosedBeforeTheRequestWithoutAReplyIsTold) {
    EXPECT_EQ(ask([&] { close(accept(listening_, nullptr, nullptr)); }, CTL_BROKEN),
              "utm_appctl: the daemon closed the connection without a reply: it does not know "
              "command 33, or it is shutting down; try again\n");
}

} // namespace
