/// The client in front of a server that it cannot trust.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

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

TEST(ClientBadServer, AListMayComeInOnePiece) {
    const fake_server server(FAKE_SOCKET, sends(week_of_limits()));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), WEEK);
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

TEST(ClientBadServer, WhatComesBehindTheEndIsNotRead) {
    const fake_server one(FAKE_SOCKET, sends(status_reply(0) + status_reply(1)));
    EXPECT_EQ(ask_fake({"ping"}), done());
}

TEST(ClientBadServer, AListBehindItsEndIsNotRead) {
    const fake_server list(FAKE_SOCKET, sends(week_of_limits() + week_of_limits()));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), WEEK);
}

TEST(ClientBadServer, AConnectionClosedAtOnceIsABrokenReply) {
    const fake_server server(FAKE_SOCKET, sends(""));
    EXPECT_EQ(ask_fake({"ping"}), closed_without_reply(0));
    EXPECT_EQ(ask_fake({"usage", "3", "--history"}), closed_without_reply(37));
    EXPECT_EQ(ask_fake({"signature", "load", "/tmp/a"}), closed_without_reply(46));
}

TEST(ClientBadServer, AReplyThatBreaksOffIsNotUsed) {
    for (const int count : {1, 135, 136, 137, 831}) {
        const fake_server server(FAKE_SOCKET,
                                 sends(status_reply(0).substr(0, static_cast<size_t>(count))));
        EXPECT_EQ(ask_fake({"ping"}), closed_after(count));
        EXPECT_EQ(ask_fake({"status", "--json"}), closed_after(count));
        EXPECT_EQ(ask_fake({"signature", "load", "/tmp/a"}), closed_after(count));
    }
}

TEST(ClientBadServer, AListThatBreaksOffPrintsNothing) {
    const std::string entry = wire_of({.status = DATA, .app_id = 305, .app_minutes = 9});
    const fake_server server(FAKE_SOCKET, sends(entry + entry + entry.substr(0, 100)));
    EXPECT_EQ(ask_fake({"usage", "3", "--apps"}), closed_after(100));
    EXPECT_EQ(ask_fake({"usage", "3", "--history"}), closed_after(100));
}

TEST(ClientBadServer, TheShortReplyOfAFailedLoadIsARefusal) {
    const program_end refused =
        fails(1, "the daemon refused: the DPI engine did not load the signatures; does the file "
                 "exist, and is it a signature file?");
    const std::string reply = status_reply(UTM_APP_CONFIG_STATUS_NOT_LOADED);
    {
        const fake_server server(FAKE_SOCKET, sends(reply.substr(0, 136)));
        EXPECT_EQ(ask_fake({"signature", "load", "/tmp/a"}), refused);
        EXPECT_EQ(ask_fake({"ping"}), closed_after(136)) << "nothing else has one";
    }
    const fake_server server(FAKE_SOCKET, sends(reply.substr(0, 135)));
    EXPECT_EQ(ask_fake({"signature", "load", "/tmp/a"}), closed_after(135));
}

TEST(ClientBadServer, AnUnknownStatusIsABrokenReply) {
    const fake_server server(FAKE_SOCKET, sends(status_reply(7)));
    const program_end unknown = fails(
        4, "the daemon's reply has the unknown status 7: are both programs of the same version?");
    EXPECT_EQ(ask_fake({"ping"}), unknown);
    EXPECT_EQ(ask_fake({"usage", "3", "--apps"}), unknown);
}

TEST(ClientBadServer, AListIsNoAnswerToASingleQuestion) {
    const fake_server server(FAKE_SOCKET, sends(status_reply(DATA) + status_reply(0)));
    EXPECT_EQ(ask_fake({"ping"}), fails(4, "the daemon began a list where one reply was expected: "
                                           "are both programs of the same version?"));
}

TEST(ClientBadServer, AListThatEndsWithARefusalPrintsNothing) {
    const std::string entries = status_reply(DATA) + status_reply(DATA);
    const fake_server server(FAKE_SOCKET,
                             sends(entries + status_reply(UTM_APP_CONFIG_STATUS_FAIL)));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), fails(1, NO_PROFILE));
    EXPECT_EQ(ask_fake({"usage", "3", "--apps", "--json"}), fails(1, NO_PROFILE));
}

TEST(ClientBadServer, AHistoryThatEndsWithARefusalPrintsNothing) {
    const fake_server server(FAKE_SOCKET, [](int fd, const std::string &request) {
        const bool is_history = request[0] == UTM_APP_CONFIG_GET_PREV_DAY_USAGE;
        sim_send(fd, is_history ? status_reply(DATA) + status_reply(1) : status_reply(0));
    });
    EXPECT_EQ(ask_fake({"usage", "3", "--history"}), fails(1, NO_PROFILE));
}

TEST(ClientBadServer, AWeekOfMoreThanSevenDaysIsNotBelieved) {
    const std::string entry = wire_of({.status = DATA, .weekday = 1, .weekday_minutes = 1});
    std::string bytes;
    for (int i = 0; i < 8; ++i)
        bytes += entry;
    const fake_server server(FAKE_SOCKET, sends(bytes + status_reply(0)));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), fails(4, TOO_LONG));
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

TEST(ClientBadServer, ARefusalThatNeverShouldBeIsTold) {
    const fake_server server(FAKE_SOCKET, sends(status_reply(UTM_APP_CONFIG_STATUS_FAIL)));
    EXPECT_EQ(
        ask_fake({"ping"}),
        fails(1, "the daemon refused: it should not; are both programs of the same version?"));
}

TEST(ClientBadServer, OnlyASignatureCanFailToLoad) {
    const fake_server server(FAKE_SOCKET, sends(status_reply(UTM_APP_CONFIG_STATUS_NOT_LOADED)));
    EXPECT_EQ(ask_fake({"limit", "show", "3"}),
              fails(4, "the daemon's reply has the unknown status 255: are both programs of the "
                       "same version?"));
}
