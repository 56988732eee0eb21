/// The client and numbers that no honest daemon sends: they are printed as they are.

#include "tests/daemon/support/appctl.h"
#include "tests/daemon/support/fake_server.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace {

/// A reply to whatever is asked, with this figure wherever a single reply has minutes.
std::string single_reply(int32_t value) {
    return wire_of({.minutes = value});
}

std::string list_of(const std::vector<fake_reply> &entries) {
    std::string bytes;
    for (const fake_reply &entry : entries)
        bytes += wire_of(entry);
    return bytes + wire_of({.status = 0});
}

} // namespace

TEST(ClientExtremes, TheLargestMinutesAddUp) {
    const fake_server server(FAKE_SOCKET, sends(single_reply(INT32_MAX)));
    EXPECT_EQ(ask_fake({"usage", "3"}), done("today       2147483647    35791394h7m\n"
                                             "this week   4294967294   71582788h14m\n"
                                             "this month  6442450941  107374182h21m\n"
                                             "limit       2147483647    35791394h7m\n"
                                             "extend      2147483647    35791394h7m\n"
                                             "left        2147483647    35791394h7m\n"));
    EXPECT_EQ(ask_fake({"usage", "3", "-j"}),
              done(R"({"profile":3,"today":2147483647,"week":4294967294,"month":6442450941,)"
                   R"("enabled":true,"limit":2147483647,"extend":2147483647,"left":2147483647})"
                   "\n"));
}

TEST(ClientExtremes, TheSmallestMinutesAddUp) {
    const fake_server server(FAKE_SOCKET, sends(single_reply(INT32_MIN)));
    EXPECT_EQ(ask_fake({"usage", "3", "-j"}),
              done(R"({"profile":3,"today":-2147483648,"week":-4294967296,"month":-6442450944,)"
                   R"("enabled":true,"limit":-2147483648,"extend":-2147483648,"left":0})"
                   "\n"));
    EXPECT_EQ(ask_fake({"limit", "show", "3"}),
              done("limit    -2147483648 (-35791394h8m)\nenabled  yes\n"));
    EXPECT_EQ(ask_fake({"extend", "show", "3"}), done("-2147483648 (-35791394h8m)\n"));
    EXPECT_EQ(ask_fake({"interval", "show"}), done("-2147483648 (-35791394h8m)\n"));
}

TEST(ClientExtremes, WeekdaysThatDoNotExistHaveNoName) {
    const fake_server server(
        FAKE_SOCKET,
        sends(list_of({{.status = DATA, .weekday = 99, .weekday_minutes = INT32_MAX},
                       {.status = DATA, .weekday = -1, .weekday_minutes = INT32_MIN}})));
    EXPECT_EQ(ask_fake({"weekday", "show", "3"}), done("DAY      MINUTES          TIME\n"
                                                       "?     2147483647   35791394h7m\n"
                                                       "?    -2147483648  -35791394h8m\n"));
    EXPECT_EQ(ask_fake({"weekday", "show", "3", "-j"}),
              done(R"({"profile":3,"weekdays":[{"day":99,"name":"?","minutes":2147483647},)"
                   R"({"day":-1,"name":"?","minutes":-2147483648}]})"
                   "\n"));
}

TEST(ClientExtremes, ApplicationsOfAnyNumberAddUp) {
    const fake_reply most = {.status = DATA, .app_id = INT32_MIN, .app_minutes = INT32_MAX};
    const fake_reply nothing = {.status = DATA};
    const fake_server server(FAKE_SOCKET, sends(list_of({most, most, nothing})));
    EXPECT_EQ(ask_fake({"usage", "3", "--apps"}), done("APPLICATION     MINUTES          TIME\n"
                                                       "-2147483648  2147483647   35791394h7m\n"
                                                       "-2147483648  2147483647   35791394h7m\n"
                                                       "total        4294967294  71582788h14m\n"));
}

TEST(ClientExtremes, BarsAreDrawnForWhatWasUsedAlone) {
    const fake_reply entry = {
        .status = DATA, .app_id = -1, .history = {INT32_MAX, INT32_MIN, -1, 1}};
    const fake_server server(FAKE_SOCKET, sends(list_of({entry})));
    EXPECT_EQ(ask_fake({"usage", "3", "--history=weeks"}),
              done("3 weeks ago            1            1m  #\n"
                   "2 weeks ago           -1           -1m\n"
                   "last week    -2147483648  -35791394h8m\n"
                   "this week     2147483647   35791394h7m  "
                   "########################################\n"));
}

TEST(ClientExtremes, AHistoryOfTheLargestMinutesAddsUp) {
    const fake_reply entry = {
        .status = DATA, .app_id = 305, .history = {INT32_MAX, 0, 0, INT32_MIN}};
    const fake_server server(FAKE_SOCKET, sends(list_of({entry, entry})));
    EXPECT_EQ(
        ask_fake({"usage", "3", "--history=weeks", "-j"}),
        done(R"({"profile":3,"unit":"week","minutes":[-4294967296,0,0,4294967294],"applications":[)"
             R"({"app":305,"name":null,"minutes":[-2147483648,0,0,2147483647]},)"
             R"({"app":305,"name":null,"minutes":[-2147483648,0,0,2147483647]}]})"
             "\n"));
}
