/// The client in front of a server that it cannot trust. What a server can say in one piece is in
/// the transcripts.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <gtest/gtest.h>

namespace {

constexpr char TOO_LONG[] = "the daemon's list is too long, or memory has run out";

std::string status_reply(uint8_t status) {
    return wire_of({.status = status});
}

/// A week's limits of 1 to 7 minutes and the end of the list.
std::string week_of_limits() {
    std::string bytes;
    for (int day = 0; day < 7; ++day)
        bytes += wire_of({.status = DATA, .weekday = day, .weekday_minutes = day + 1});
    return bytes + status_reply(0);
}

const program_end WEEK = done("DAY        MINUTES  TIME\n"
                              "Sunday           1    1m\n"
                              "Monday           2    2m\n"
                              "Tuesday          3    3m\n"
                              "Wednesday        4    4m\n"
                              "Thursday         5    5m\n"
                              "Friday           6    6m\n"
                              "Saturday         7    7m\n");

} // namespace

TEST(ClientBadServer, AReplyMayComeByteByByte) {
    const std::string reply = wire_of({.status = 0, .activate = 1});
    const fake_server server(FAKE_SOCKET, [&reply](int fd, const std::string &) {
        for (const char byte : reply)
            if (!sim_send(fd, std::string(1, byte)) || (&byte != &reply.back() && !is_consumed(fd)))
                return;
    });
    EXPECT_EQ(ask_fake({"status"}), done("limits     on\ndebug log  off\n"));
}

TEST(ClientBadServer, PiecesNeedNotEndWhereRepliesDo) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &) {
        const std::string bytes = week_of_limits();
        for (size_t at = 0; at < bytes.size(); at += 1000)
            if (!sim_send(fd, bytes.substr(at, 1000)) ||
                (at + 1000 < bytes.size() && !is_consumed(fd)))
                return;
    });
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), WEEK);
}

TEST(ClientBadServer, AHistoryThatEndsWithARefusalPrintsNothing) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &request) {
        const bool is_history = request[0] == UTM_APP_CONFIG_GET_PREV_DAY_USAGE;
        sim_send(fd, is_history ? status_reply(DATA) + status_reply(1) : status_reply(0));
    });
    EXPECT_EQ(
        ask_fake({"usage", "3", "--history"}),
        fails(1, "the daemon refused: it should not; are both programs of the same version?"));
}

TEST(ClientBadServer, AListWithoutEndIsGivenUp) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &) {
        const std::string entry = wire_of({.status = DATA, .app_id = 305, .app_minutes = 1});
        while (sim_send(fd, entry)) {
        }
    });
    EXPECT_EQ(ask_fake({"usage", "3", "--apps"}), fails(4, TOO_LONG));
    EXPECT_EQ(ask_fake({"usage", "3", "--history"}), fails(4, TOO_LONG));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), fails(4, TOO_LONG));
}
