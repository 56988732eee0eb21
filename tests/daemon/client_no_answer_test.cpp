/// The client when nobody answers, or not in time.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <chrono>
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
        if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
            return fillers;
    }
}

/// Takes root's right to pass by permissions from the client.
void respect_permissions() {
    constexpr unsigned long dac_override = 1;
    prctl(PR_CAPBSET_DROP, dac_override);
}

} // namespace

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

TEST(ClientNoAnswer, AConnectionClosedUnreadIsABrokenReply) {
    const int listener = sim_listen(FAKE_SOCKET, 1);
    std::thread closer([listener] {
        const int fd = accept(listener, nullptr, nullptr);
        char first = 0;
        EXPECT_EQ(recv(fd, &first, 1, MSG_PEEK), 1) << "the request is there, and stays unread";
        close(fd);
    });

    EXPECT_EQ(appctl({"ping", "-s", FAKE_SOCKET}),
              fails(4, "the daemon closed the connection without a reply: it does not know command "
                       "0, or it is shutting down; try again"));

    closer.join();
    close(listener);
    unlink(FAKE_SOCKET);
}

TEST(ClientNoAnswer, AServerThatDoesNotComeToAnEndIsGivenUp) {
    const std::string entry = wire_of({.status = DATA});
    const fake_service silent = [](int fd, const std::string &) { client_goes(fd, 20'000); };
    const fake_service stops = [&](int fd, const std::string &) {
        sim_send(fd, entry);
        client_goes(fd, 20'000);
    };
    const fake_service drips = [](int fd, const std::string &) {
        while (sim_send(fd, std::string(1, '\0')) && !client_goes(fd, 100)) {
        }
    };
    // The one entry of a profile that used nothing, again and again: it takes no memory.
    const fake_service repeats = [&](int fd, const std::string &) {
        while (sim_send(fd, entry)) {
        }
    };
    const std::pair<fake_service, std::vector<std::string>> table[] = {
        {silent, {"ping"}},
        {silent, {"usage", "3", "--apps"}},
        {silent, {"signature", "load", "/tmp/a"}},
        {stops, {"weekday", "show", "3"}},
        {drips, {"ping"}},
        {repeats, {"usage", "3", "--apps"}},
    };
    for (const auto &[service, words] : table) {
        const fake_server server(FAKE_SOCKET, service);
        EXPECT_EQ(run_with_timeout(words), TIMED_OUT) << words[0];
    }
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
