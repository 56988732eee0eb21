/// The client when nobody answers, or not in time.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

program_end no_daemon(const std::string &path, const std::string &error) {
    return fails(3, "cannot reach the daemon at " + path + " (" + error +
                        "): is it running? Use -s for another socket");
}

const program_end TIMED_OUT =
    fails(4, "the daemon did not answer within 1 s: it may be waiting for "
             "one of the router's programs; try again, or wait longer with -t");

/// Runs the client with a timeout of a second and expects that this is what it had.
program_end run_with_timeout(std::vector<std::string> words) {
    words.insert(words.end(), {"-s", FAKE_SOCKET, "-t", "1"});
    const auto began = steady_clock::now();
    const program_end end = appctl(words);
    const auto took = steady_clock::now() - began;
    EXPECT_GE(took, milliseconds(990));
    EXPECT_LT(took, seconds(5));
    return end;
}

/// Connects until the queue of a socket is full.
std::vector<int> fill_queue(const sockaddr_un &address) {
    std::vector<int> fillers;
    for (;;) {
        const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        fillers.push_back(fd);
        if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            return fillers;
    }
}

/// Takes root's right to pass by permissions from the client.
void respect_permissions() {
    constexpr unsigned long dac_override = 1;
    prctl(PR_CAPBSET_DROP, dac_override);
}

} // namespace

TEST(ClientNoAnswer, APathWithoutAListenerHasNoDaemon) {
    unlink(UTM_APP_CONFIG_SOCKET_PATH); // of a test before this one
    ASSERT_TRUE(sim_write_file("/tmp/file", ""));
    close(sim_listen(FAKE_SOCKET, 1)); // left behind
    const std::string longest = "/tmp/" + std::string(102, 'a');
    const std::pair<std::string, const char *> table[] = {
        {UTM_APP_CONFIG_SOCKET_PATH, "No such file or directory"},
        {longest, "No such file or directory"},
        {"/dev/null/none", "Not a directory"},
        {"/tmp/file", "Connection refused"},
        {FAKE_SOCKET, "Connection refused"},
    };
    for (const auto &[path, error] : table)
        EXPECT_EQ(appctl({"ping", "-s", path}), no_daemon(path, error));
    EXPECT_EQ(appctl({"ping"}), no_daemon(table[0].first, table[0].second));
    EXPECT_EQ(appctl({"ping", "-s", longest + "a"}),
              fails(2, longest + "a is too long for a socket path: the system allows 107 "
                                 "characters"));
    EXPECT_EQ(appctl({"ping", "-s", ""}), fails(2, "the socket path is empty: give it after -s"));
    unlink(FAKE_SOCKET);
}

TEST(ClientNoAnswer, ASocketThatMayNotBeUsedHasOtherAdvice) {
    const int listener = sim_listen(FAKE_SOCKET, 1);
    chmod(FAKE_SOCKET, 0);

    EXPECT_EQ(
        appctl({"ping", "-s", FAKE_SOCKET}, {.in_child = respect_permissions}),
        fails(3, std::string("cannot reach the daemon at ") + FAKE_SOCKET +
                     " (Permission denied): you may not use it; ask the router's administrator"));

    close(listener);
    unlink(FAKE_SOCKET);
}

TEST(ClientNoAnswer, AReportWithoutADaemonLeavesNoFileBehind) {
    std::filesystem::create_directory("/tmp/here");
    EXPECT_EQ(appctl({"report", "-s", "/tmp/none"}, {.environment = {{"TMPDIR", "/tmp/here"}}}),
              no_daemon("/tmp/none", "No such file or directory"));
    EXPECT_TRUE(std::filesystem::remove("/tmp/here")) << "it is not empty";
}

TEST(ClientNoAnswer, AConnectionClosedUnreadIsABrokenReply) {
    const int listener = sim_listen(FAKE_SOCKET, 1);
    std::thread closer([listener] { close(accept(listener, nullptr, nullptr)); });

    EXPECT_EQ(appctl({"ping", "-s", FAKE_SOCKET}),
              fails(4, "the daemon closed the connection without a reply: it does not know command "
                       "0, or it is shutting down; try again"));

    closer.join();
    close(listener);
    unlink(FAKE_SOCKET);
}

TEST(ClientNoAnswer, AServerThatSaysNothingIsGivenUp) {
    const fake_server server(FAKE_SOCKET,
                             [](int fd, const std::string &) { client_goes(fd, 20'000); });
    EXPECT_EQ(run_with_timeout({"ping"}), TIMED_OUT);
    EXPECT_EQ(run_with_timeout({"usage", "3", "--apps"}), TIMED_OUT);
    EXPECT_EQ(run_with_timeout({"signature", "load", "/tmp/a"}), TIMED_OUT);
}

TEST(ClientNoAnswer, AServerThatStopsInTheMiddleIsGivenUp) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &) {
        sim_send(fd, wire_of({.status = UTM_APP_CONFIG_STATUS_DATA, .weekday_minutes = 1}));
        client_goes(fd, 20'000);
    });
    EXPECT_EQ(run_with_timeout({"weekday", "show", "3"}), TIMED_OUT);
}

TEST(ClientNoAnswer, AServerThatDripsIsGivenUp) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &) {
        while (sim_send(fd, std::string(1, '\0')) && !client_goes(fd, 100)) {
        }
    });
    EXPECT_EQ(run_with_timeout({"ping"}), TIMED_OUT);
}

TEST(ClientNoAnswer, AListOfNothingWithoutEndIsGivenUp) {
    // The one entry of a profile that used nothing, again and again: it takes no memory.
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &) {
        while (sim_send(fd, wire_of({.status = UTM_APP_CONFIG_STATUS_DATA}))) {
        }
    });
    EXPECT_EQ(run_with_timeout({"usage", "3", "--apps"}), TIMED_OUT);
}

TEST(ClientNoAnswer, AQueueThatStaysFullIsGivenUp) {
    const int listener = sim_listen(FAKE_SOCKET, 1);
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::copy(std::begin(FAKE_SOCKET), std::end(FAKE_SOCKET), address.sun_path);
    const std::vector<int> fillers = fill_queue(address);

    EXPECT_EQ(run_with_timeout({"ping"}), TIMED_OUT);

    for (const int fd : fillers)
        close(fd);
    close(listener);
    unlink(FAKE_SOCKET);
}
