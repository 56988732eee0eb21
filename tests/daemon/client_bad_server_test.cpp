/// The client in front of a server that it cannot trust.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <gtest/gtest.h>

namespace {

using words_t = std::vector<std::string>;

constexpr char NOT_LOADED[] = "the daemon refused: the DPI engine did not load the signatures; "
                              "does the file exist, and is it a signature file?";
constexpr char TOO_LONG[] = "the daemon's list is too long, or memory has run out";

std::string status_reply(uint8_t status) {
    return wire_of({.status = status});
}

program_end closed_after(int count) {
    return fails(4, "the daemon closed the connection after " + std::to_string(count) +
                        " of a reply's 832 bytes: are both programs of the same version?");
}

program_end closed_without_reply(int command) {
    return fails(4, "the daemon closed the connection without a reply: it does not know command " +
                        std::to_string(command) + ", or it is shutting down; try again");
}

program_end unknown_status(int status) {
    return fails(4, "the daemon's reply has the unknown status " + std::to_string(status) +
                        ": are both programs of the same version?");
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

/// Whatever is asked, this is sent.
TEST(ClientBadServer, IsAnsweredByWhatItSends) {
    const std::string entry = wire_of({.status = DATA, .app_id = 305, .app_minutes = 9});
    const std::string refused = status_reply(UTM_APP_CONFIG_STATUS_FAIL);
    const std::string not_loaded = status_reply(UTM_APP_CONFIG_STATUS_NOT_LOADED);
    std::string eight_days;
    for (int day = 0; day < 8; ++day)
        eight_days += wire_of({.status = DATA, .weekday = 1, .weekday_minutes = 1});
    const words_t ping = {"ping"};
    const words_t load = {"signature", "load", "/tmp/a"};
    const words_t week = {"weekday", "show", "3"};
    const words_t apps = {"usage", "3", "--apps"};
    const words_t history = {"usage", "3", "--history"};
    const struct {
        std::string sent;
        words_t words;
        program_end end;
    } rows[] = {
        {status_reply(0) + refused, ping, done()},
        {week_of_limits() + week_of_limits(), week, WEEK},
        {"", ping, closed_without_reply(0)},
        {"", history, closed_without_reply(37)},
        {"", load, closed_without_reply(46)},
        {status_reply(0).substr(0, 1), ping, closed_after(1)},
        {status_reply(0).substr(0, 136), load, closed_after(136)},
        {status_reply(0).substr(0, 831), {"status", "--json"}, closed_after(831)},
        {entry + entry + entry.substr(0, 100), apps, closed_after(100)},
        {entry + entry + entry.substr(0, 100), history, closed_after(100)},
        {not_loaded.substr(0, 136), load, fails(1, NOT_LOADED)},
        {not_loaded.substr(0, 135), load, closed_after(135)},
        {not_loaded.substr(0, 136), ping, closed_after(136)},
        {not_loaded, {"limit", "show", "3"}, unknown_status(255)},
        {status_reply(7), ping, unknown_status(7)},
        {status_reply(7), apps, unknown_status(7)},
        {status_reply(DATA) + status_reply(0), ping,
         fails(4, "the daemon began a list where one reply was expected: are both programs of the "
                  "same version?")},
        {status_reply(DATA) + refused, week, fails(1, NO_PROFILE)},
        {status_reply(DATA) + refused, {"usage", "3", "--apps", "--json"}, fails(1, NO_PROFILE)},
        {eight_days + status_reply(0), week, fails(4, TOO_LONG)},
        {refused, ping,
         fails(1, "the daemon refused: it should not; are both programs of the same version?")},
    };
    for (const auto &row : rows) {
        const fake_server server(FAKE_SOCKET, sends(row.sent));
        EXPECT_EQ(ask_fake(row.words), row.end) << "row " << &row - rows;
    }
}

TEST(ClientBadServer, AHistoryThatEndsWithARefusalPrintsNothing) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &request) {
        const bool is_history = request[0] == UTM_APP_CONFIG_GET_PREV_DAY_USAGE;
        sim_send(fd, is_history ? status_reply(DATA) + status_reply(1) : status_reply(0));
    });
    EXPECT_EQ(ask_fake({"usage", "3", "--history"}), fails(1, NO_PROFILE));
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
