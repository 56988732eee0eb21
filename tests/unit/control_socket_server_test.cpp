#include "control/socket_server.h"

#include "control/fd_event.h"
#include "core/debug_log.h"
#include "format/protocol.h"
#include "sim/harness/client.h"
#include "tests/lib/exchange.h"
#include "tests/lib/sockets.h"
#include "tests/lib/world.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <set>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::string loop_failed = "log utm_app_config_loop failed\n";
const std::string ping_came = "log [socket] Receive cmd type=0\n";

std::set<int> open_descriptors() {
    std::set<int> open;
    for (int fd = 0; fd < FD_SETSIZE; ++fd)
        if (fcntl(fd, F_GETFD) >= 0)
            open.insert(fd);
    return open;
}

std::set<int> registered() {
    std::set<int> found;
    for (int fd = 0; fd < fd_event_capacity; ++fd)
        if (fd_event_is_registered(fd))
            found.insert(fd);
    return found;
}

/// A call as `sockets::calls` shows it.
std::string call(const std::string &function, std::initializer_list<int> arguments) {
    std::string line = function;
    for (const int argument : arguments)
        line += " " + std::to_string(argument);
    return line + "\n";
}

/// What the server does about one connection that it accepts.
std::string calls_of_an_accept() {
    return call("accept4", {SOCK_CLOEXEC}) + call("setsockopt", {SOL_SOCKET, SO_SNDTIMEO});
}

class SocketServer : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        sockets::reset();
        fd_event_reset();
        before_ = open_descriptors();
    }
    void TearDown() override {
        for (const int fd : clients_)
            close(fd);
        clients_.clear();
        let_connections_go();
        fd_event_reset();
        listen_fd = -1;
        for (const int fd : open_descriptors())
            if (!before_.contains(fd))
                close(fd);
        fs::remove_all(UTM_APP_CONFIG_SOCKET_PATH);
        fs::remove_all(directory_);
        sockets::reset();
    }

    /// Runs the thread's body for so many passes.
    void run(int passes) {
        world::end_select_after(passes);
        EXPECT_EQ(utm_app_config_handler(nullptr), nullptr);
        world::end_select_after(-1);
    }

    /// A client that has sent some bytes already.
    int client(const std::string &bytes = {}) {
        const int fd = sim_connect();
        EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        clients_.push_back(fd);
        sockets::calls();
        return fd;
    }
    int asking(uint8_t type) { return client(sim_bytes(world::request(type))); }

    void close_client(int fd) {
        close(fd);
        std::erase(clients_, fd);
    }

    /// A path of a length in a directory of the test's own.
    std::string path_of(size_t length) {
        fs::create_directory(directory_);
        std::string path = directory_ + "/";
        path.resize(length, 'x');
        return path;
    }

    /// What the server has opened, and in brackets what of it is not watched: "nothing", "socket",
    /// "socket + 2", "socket + 1 (1 unwatched)".
    std::string held() const {
        std::set<int> open = open_descriptors();
        for (const int fd : before_)
            open.erase(fd);
        for (const int fd : clients_)
            open.erase(fd);
        const size_t all = open.size();
        std::string text = open.erase(listen_fd) == 1 ? "socket" : "";
        if (!open.empty())
            text += (text.empty() ? "" : " + ") + std::to_string(open.size());
        const size_t watched = registered().size();
        if (watched != all)
            text += " (" + std::to_string(all - watched) + " unwatched)";
        return text.empty() ? "nothing" : text;
    }

    std::set<int> before_;
    std::vector<int> clients_;
    const std::string directory_ = "/tmp/socket_server_test";

private:
    /// Lets the server release what it keeps of connections whose clients have gone.
    void let_connections_go() {
        std::set<int> kept = registered();
        kept.erase(listen_fd);
        if (kept.empty())
            return;
        fd_event_del(listen_fd);
        run(1);
    }
};

/// What a client has received: a line for each reply, then whether the connection is open.
std::string received(int fd, uint8_t type = UTM_APP_CONFIG_PING) {
    std::string bytes;
    char chunk[4096];
    ssize_t n = 0;
    while ((n = recv(fd, chunk, sizeof(chunk), MSG_DONTWAIT)) > 0)
        bytes.append(chunk, static_cast<size_t>(n));
    const std::string reply = bytes.empty() ? "" : world::describe(type, bytes);
    return reply + (n == 0 ? "closed" : "open");
}

// ---- Creating the socket -------------------------------------------------------------------

TEST_F(SocketServer, CreatesAListeningSocketThatStartedProgramsDoNotGet) {
    // The longest path that fits into an address.
    const std::string path = path_of(106);
    const int fd = utm_app_config_socket_create(path.c_str());
    EXPECT_EQ(sockets::calls(), call("socket", {AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0}) +
                                    call("setsockopt", {SOL_SOCKET, SO_REUSEADDR}) +
                                    call("listen", {15}));
    EXPECT_EQ(held(), "1 (1 unwatched)");
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_TRUE(fs::is_socket(path));
    EXPECT_EQ(world::trace(), "");
}

TEST_F(SocketServer, SaysWhichStepFailedAndClosesTheDescriptor) {
    const std::string too_long = path_of(107);
    struct {
        const char *function; ///< that fails
        int error;
        std::string path;
        std::string trace;
    } const table[] = {
        {"socket", EMFILE, "/tmp/sock", "log Can't create unix domain socket: /tmp/sock(24)\n"},
        {"setsockopt", EPERM, "/tmp/sock", "log Can't set unix socket options: /tmp/sock(1)\n"},
        {"listen", EINVAL, "/tmp/sock", "log Can't listen to unix address: /tmp/sock(22)\n"},
        {"", 0, "/tmp/none/sock", "log Can't bind unix address: /tmp/none/sock(2)\n"},
        {"", 0, too_long, "log Can't bind unix address: " + too_long + "(36)\n"},
    };
    for (const auto &row : table)
        for (const unsigned debug : {1U, 0U}) {
            SetUp();
            ASSERT_EQ(utm_app_debug_set(debug), 0);
            sockets::fail(row.function, row.error);
            EXPECT_EQ(utm_app_config_socket_create(row.path.c_str()), -1);
            EXPECT_EQ(world::trace(), debug == 1 ? row.trace : "");
            EXPECT_EQ(held(), "nothing") << row.trace;
            fs::remove_all("/tmp/sock");
        }
    EXPECT_TRUE(fs::is_empty(directory_)) << "a path was cut";
}

// ---- Binding it to its place ---------------------------------------------------------------

void leave_a_file() {
    std::ofstream(UTM_APP_CONFIG_SOCKET_PATH) << "x";
}
void leave_a_socket() {
    close(utm_app_config_socket_create(UTM_APP_CONFIG_SOCKET_PATH));
}
void leave_a_dangling_link() {
    fs::create_symlink("/tmp/nowhere", UTM_APP_CONFIG_SOCKET_PATH);
}
constexpr void (*leave_something[])() = {leave_a_file, leave_a_socket, leave_a_dangling_link};

bool is_path_taken() {
    return fs::exists(fs::symlink_status(UTM_APP_CONFIG_SOCKET_PATH));
}

TEST_F(SocketServer, PutsTheSocketInPlaceOfWhateverAnEarlierRunLeft) {
    for (void (*leave)() : leave_something) {
        SetUp();
        leave();
        ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
        EXPECT_TRUE(fs::is_socket(fs::symlink_status(UTM_APP_CONFIG_SOCKET_PATH)));
        EXPECT_EQ(held(), "socket");
        EXPECT_EQ(world::trace(), "");
        const int fd = asking(UTM_APP_CONFIG_PING);
        run(2);
        EXPECT_EQ(received(fd), "ok\nclosed");
        TearDown();
    }
}

TEST_F(SocketServer, OpensTheSocketToEverybodyWhateverTheMask) {
    for (const mode_t mask : {0U, 0777U}) {
        const mode_t old = umask(mask);
        const int result = utm_app_config_socket_init_binding();
        umask(old);
        ASSERT_EQ(result, 0);
        struct stat status = {};
        ASSERT_EQ(stat(UTM_APP_CONFIG_SOCKET_PATH, &status), 0);
        EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | 0777)) << mask;
        TearDown();
        SetUp();
    }
}

TEST_F(SocketServer, WatchesNothingWhenTheSocketCannotBeMade) {
    listen_fd = 77;
    sockets::fail("listen", ENOMEM);
    EXPECT_EQ(utm_app_config_socket_init_binding(), -1);
    EXPECT_EQ(listen_fd, -1);
    EXPECT_EQ(held(), "nothing");
    EXPECT_EQ(world::trace(), "log Can't listen to unix address: /dev/utm_app_config_socket(12)\n");
}

// ---- The end ---------------------------------------------------------------------------------

TEST_F(SocketServer, EndsWhereItWaitsForClientsAndSaysNothing) {
    for (const int result : {1, -1}) {
        ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
        int passes = 0;
        world::on_select([&](int, const timeval &) {
            utm_app_config_socket_stop();
            ++passes;
            errno = EBADF;
            return result;
        });
        EXPECT_EQ(utm_app_config_handler(nullptr), nullptr);
        EXPECT_EQ(passes, 1);
        EXPECT_EQ(sockets::accepted(), std::vector<int>{});
        EXPECT_EQ(world::trace(), "");
        utm_app_config_socket_remove();
    }
}

TEST_F(SocketServer, WakesForTheEnd) {
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    sockets::thread_t thread([] { EXPECT_EQ(utm_app_config_handler(nullptr), nullptr); });
    thread.wait_until_asleep();
    const auto told = std::chrono::steady_clock::now();
    utm_app_config_socket_stop();
    thread.join();
    EXPECT_LT(std::chrono::steady_clock::now() - told, std::chrono::milliseconds(500))
        << "a wait for clients lasts a second";
    EXPECT_EQ(world::trace(), "");
}

TEST_F(SocketServer, RemovesThePathThatItBound) {
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    utm_app_config_socket_remove();
    EXPECT_FALSE(is_path_taken());
    EXPECT_EQ(listen_fd, -1);
    EXPECT_EQ(held(), "nothing");
}

TEST_F(SocketServer, LeavesAPathThatSomebodyElseHasTaken) {
    for (void (*take)() : leave_something) {
        SetUp();
        ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
        fs::remove(UTM_APP_CONFIG_SOCKET_PATH);
        take();
        utm_app_config_socket_remove();
        EXPECT_TRUE(is_path_taken());
        TearDown();
    }
}

/// Whose path it is, its device and its number tell together.
TEST_F(SocketServer, LeavesAPathOfAnotherDeviceOrNumber) {
    for (const int on_another_device : {0, 1}) {
        ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
        world::on_lstat([on_another_device](struct stat *found) {
            found->st_dev += on_another_device == 1 ? 1 : 0;
            found->st_ino += on_another_device == 0 ? 1 : 0;
            return 0;
        });
        utm_app_config_socket_remove();
        EXPECT_TRUE(is_path_taken()) << on_another_device;
        world::on_lstat(nullptr);
    }
}

/// A binding that could not look at its own path takes no other for it, not even the one before.
TEST_F(SocketServer, LeavesAPathWhereItDoesNotKnowItsOwn) {
    const std::string aside = std::string(UTM_APP_CONFIG_SOCKET_PATH) + ".aside";
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    fs::rename(UTM_APP_CONFIG_SOCKET_PATH, aside);
    world::on_lstat([](struct stat *) { return -1; });
    ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
    world::on_lstat(nullptr);
    fs::rename(aside, UTM_APP_CONFIG_SOCKET_PATH);
    utm_app_config_socket_remove();
    EXPECT_TRUE(is_path_taken());
}

// ---- Serving connections -------------------------------------------------------------------

class SocketServerRunning : public SocketServer {
protected:
    void SetUp() override {
        SocketServer::SetUp();
        ASSERT_EQ(utm_app_config_socket_init_binding(), 0);
        sockets::calls();
    }
};

TEST_F(SocketServerRunning, AcceptsInOnePassAndServesInTheNext) {
    const int fd = asking(UTM_APP_CONFIG_PING);
    run(1);
    EXPECT_EQ(received(fd), "open");
    EXPECT_EQ(sockets::calls(), calls_of_an_accept());
    EXPECT_EQ(held(), "socket + 1");
    run(1);
    EXPECT_EQ(received(fd), "ok\nclosed");
    EXPECT_EQ(sockets::calls(), "");
    EXPECT_EQ(held(), "socket");
    EXPECT_EQ(world::trace(), loop_failed + ping_came + loop_failed);
}

TEST_F(SocketServerRunning, AcceptsOneConnectionAPass) {
    const std::vector<int> fds = {asking(UTM_APP_CONFIG_PING), asking(UTM_APP_CONFIG_GET_STATUS),
                                  asking(UTM_APP_CONFIG_PING)};
    run(3);
    EXPECT_EQ(received(fds[0]), "ok\nclosed");
    EXPECT_EQ(received(fds[1], UTM_APP_CONFIG_GET_STATUS), "ok activate 0 debug 1\nclosed");
    EXPECT_EQ(received(fds[2]), "open");
    run(1);
    EXPECT_EQ(received(fds[2]), "ok\nclosed");
    EXPECT_EQ(held(), "socket");
}

TEST_F(SocketServerRunning, ServesOthersBesideAClientThatSaysNothingUntilItLeaves) {
    const int silent = client();
    const int fd = asking(UTM_APP_CONFIG_PING);
    run(3);
    EXPECT_EQ(received(fd), "ok\nclosed");
    EXPECT_EQ(received(silent), "open");
    EXPECT_EQ(held(), "socket + 1");
    close_client(silent);
    run(1);
    EXPECT_EQ(held(), "socket");
}

TEST_F(SocketServerRunning, BoundsHowLongAReplyMayWaitAndKeepsTheDescriptorToItself) {
    client();
    run(1);
    ASSERT_EQ(sockets::accepted().size(), 1U);
    const int fd = sockets::accepted()[0];
    timeval timeout = {};
    socklen_t size = sizeof(timeout);
    ASSERT_EQ(getsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, &size), 0);
    EXPECT_EQ(timeout.tv_sec, 3);
    EXPECT_EQ(timeout.tv_usec, 0);
    EXPECT_EQ(fcntl(fd, F_GETFD), FD_CLOEXEC);
}

TEST_F(SocketServerRunning, ServesAConnectionWhoseWaitCannotBeBounded) {
    const int fd = asking(UTM_APP_CONFIG_PING);
    sockets::fail("setsockopt", ENOPROTOOPT);
    run(2);
    EXPECT_EQ(received(fd), "ok\nclosed");
    EXPECT_EQ(world::trace(), ping_came + loop_failed);
}

TEST_F(SocketServerRunning, DoesNothingForADescriptorWatchedForWriting) {
    const int fd = client();
    fd_event_add(fd, fd_event_write, nullptr);
    fd_event_del(listen_fd);
    run(1);
    EXPECT_EQ(registered(), std::set<int>{fd});
    EXPECT_EQ(world::trace(), loop_failed);
    EXPECT_EQ(fd_event_del(fd), 0);
}

// ---- What goes wrong with a connection -----------------------------------------------------

TEST_F(SocketServerRunning, LeavesAConnectionOpenAndUnservedWhenMemoryRunsOut) {
    for (const unsigned debug : {1U, 0U}) {
        ASSERT_EQ(utm_app_debug_set(debug), 0);
        const int unlucky = asking(UTM_APP_CONFIG_PING);
        world::fail_allocation(1);
        run(1);
        EXPECT_EQ(world::trace(), "log Socket accept failed because Out of memory!\n" +
                                      (debug == 1 ? loop_failed : std::string()));
        EXPECT_EQ(sockets::calls(), call("accept4", {SOCK_CLOEXEC}));
        EXPECT_EQ(held(), "socket + 1 (1 unwatched)");
        const int next = asking(UTM_APP_CONFIG_PING);
        run(2);
        EXPECT_EQ(received(unlucky), "open");
        EXPECT_EQ(received(next), "ok\nclosed");
        TearDown();
        SetUp();
    }
}

/// Runs so many passes in which everything is ready that is watched.
void run_with_all_ready(int passes) {
    world::on_select([passes](int, const timeval &) mutable {
        errno = EBADF;
        return passes-- > 0 ? 1 : -1;
    });
    EXPECT_EQ(utm_app_config_handler(nullptr), nullptr);
    world::on_select(nullptr);
}

TEST_F(SocketServerRunning, LeavesTheListeningSocketOutOfThePassAfterAFailedAccept) {
    std::string calls;
    std::string trace;
    for (int passes = 1; passes <= 5; ++passes) {
        sockets::fail("accept4", passes == 5 ? ECONNABORTED : EMFILE);
        run_with_all_ready(passes);
        if (passes % 2 == 1) {
            calls += calls_of_an_accept();
            trace += "log Add fd failed: -1\n";
        }
        EXPECT_EQ(sockets::calls(), calls) << passes;
        EXPECT_EQ(world::trace(), trace + loop_failed) << passes;
        EXPECT_EQ(held(), "socket") << passes;
        TearDown();
        SetUp();
    }
}

TEST_F(SocketServerRunning, LogsOneLineWhenNeitherDescriptorNorMemoryIsLeft) {
    sockets::fail("accept4", EMFILE);
    world::fail_allocation(1);
    run_with_all_ready(2);
    EXPECT_EQ(world::trace(), "log Socket accept failed because Out of memory!\n" + loop_failed);
    EXPECT_EQ(sockets::calls(), call("accept4", {SOCK_CLOEXEC}));
    EXPECT_EQ(held(), "socket");
}

TEST_F(SocketServerRunning, ServesTheConnectionThatWaitedWhileAcceptingFailed) {
    const int fd = asking(UTM_APP_CONFIG_PING);
    sockets::fail("accept4", EMFILE);
    run_with_all_ready(2);
    sockets::fail("accept4", 0);
    run(2);
    EXPECT_EQ(received(fd), "ok\nclosed");
}

TEST_F(SocketServerRunning, LeavesAConnectionBeyondTheTableOpenAndUnserved) {
    const int fd = asking(UTM_APP_CONFIG_PING);
    std::set<int> fillers;
    for (int next = 0; (next = dup(listen_fd)) < fd_event_capacity;)
        fillers.insert(next);
    close(fd_event_capacity);
    run(1);
    for (const int filler : fillers)
        close(filler);
    EXPECT_EQ(world::trace(), "log Add fd failed: 128\n" + loop_failed);
    EXPECT_EQ(held(), "socket + 1 (1 unwatched)");
    EXPECT_EQ(received(fd), "open");
}

} // namespace
