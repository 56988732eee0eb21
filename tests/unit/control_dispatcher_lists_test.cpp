#include "control/dispatcher.h"

#include "tests/lib/exchange.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using world::exchange;
using world::make_profile;
using world::make_usage;
using world::request;

/// The commands that answer with a list, and the one that runs a program.
class DispatcherLists : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

TEST_F(DispatcherLists, ListsSevenWeekdaysAndAnEnd) {
    config_user_profile_t *profile = make_profile(5);
    for (config_weekday_limit_t &day : weekdays_of(profile))
        day.limit = 100 + day.day;
    EXPECT_EQ(exchange(request(31, {5})), "data day 0 limit 100\n"
                                          "data day 1 limit 101\n"
                                          "data day 2 limit 102\n"
                                          "data day 3 limit 103\n"
                                          "data day 4 limit 104\n"
                                          "data day 5 limit 105\n"
                                          "data day 6 limit 106\n"
                                          "ok\n");
    EXPECT_EQ(exchange(request(31, {6})), "fail\n");
}

TEST_F(DispatcherLists, CarriesTheLastEntryIntoTheEnd) {
    make_profile(5);
    const std::string replies = world::exchange_bytes(sim_bytes(request(31, {5})));
    ASSERT_EQ(replies.size(), 8u * 832u);
    std::string last = replies.substr(6 * 832, 832);
    EXPECT_EQ(world::int32_at(last, 264), 6);
    EXPECT_EQ(world::int32_at(last, 268), 1440);
    last[0] = 0;
    EXPECT_EQ(replies.substr(7 * 832), last);
}

TEST_F(DispatcherLists, RanksApplicationsOfAPeriod) {
    make_usage(make_profile(5), {{10, 4}, {20, 6}, {-30, 5}});
    EXPECT_EQ(exchange(request(36, {5, 0})), "data app 20 minutes 6\n"
                                             "data app -30 minutes 5\n"
                                             "data app 10 minutes 4\n"
                                             "ok\n");
    EXPECT_EQ(exchange(request(36, {5, 2000})), exchange(request(36, {5, 0})));
    for (const int32_t period : {31, 999, 1004, 2001, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(exchange(request(36, {5, period})), "fail\n") << period;
    EXPECT_EQ(exchange(request(36, {6, 0})), "fail\n");
}

TEST_F(DispatcherLists, ListsOneEntryOfZerosWithoutApplications) {
    make_profile(5);
    EXPECT_EQ(exchange(request(36, {5, 0})), "data app 0 minutes 0\nok\n");
    EXPECT_EQ(exchange(request(37, {5, 0})), "fail\n");
}

TEST_F(DispatcherLists, ListsAsManyApplicationsAsTheCountSaysOrTheListHolds) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 4}});
    profile->app_count = 3;
    EXPECT_EQ(exchange(request(36, {5, 0})), "data app 10 minutes 4\n"
                                             "data app 0 minutes 0\n"
                                             "data app 0 minutes 0\n"
                                             "ok\n");
    EXPECT_EQ(exchange(request(37, {5, 0})), "data app 10 minutes 4\nok\n");
}

TEST_F(DispatcherLists, ListsEarlierDaysAndWeeks) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{20, 7}, {10, 9}});
    for (config_app_usage_t &app : apps_of(profile))
        for (int32_t i = 0; i < 30; ++i)
            app.prev_30_days[i] = app.app_id == 20 ? 1 + i : 0;
    // Most recent first: slot 29, then 28 and so on. It is a Wednesday: three days of this week.
    EXPECT_EQ(exchange(request(37, {5, 0})),
              "data app 20 minutes 7 30 29 28 27 26 25 24 23 22 21 20 19 18 17 16 15 14 13 12 11 "
              "10 9 8 7 6 5 4 3 2 1\n"
              "data app 10 minutes 9\n"
              "ok\n");
    EXPECT_EQ(exchange(request(37, {5, 1})), "data app 20 minutes 94 168 119 70\n"
                                             "data app 10 minutes 9\n"
                                             "ok\n");
    for (const int32_t mode : {2, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(exchange(request(37, {5, mode})), "fail\n") << mode;
    EXPECT_EQ(exchange(request(37, {6, 0})), "fail\n");
}

TEST_F(DispatcherLists, FailsWhenAListCannotBeAllocated) {
    make_usage(make_profile(5), {{10, 4}});
    for (const uint8_t type : {uint8_t{31}, uint8_t{36}, uint8_t{37}}) {
        world::fail_allocation(1);
        EXPECT_EQ(exchange(request(type, {5, 0})), "fail\n");
    }
    EXPECT_EQ(world::trace(),
              "log [socket] Receive cmd type=31\n"
              "log Get weekday daily limit of profile 5 failed because malloc failed\n"
              "log [socket] Receive cmd type=36\n"
              "log Get app usage of profile 5 failed because malloc failed\n"
              "log [socket] Receive cmd type=37\n"
              "log Get prev day usage for profile 5 failed because malloc failed\n");
}

TEST_F(DispatcherLists, EndsAListEarlyForAClientThatNeverReads) {
    config_user_profile_t *profile = make_profile(5);
    std::vector<config_app_minutes_t> apps;
    for (int32_t app_id = 1; app_id <= 5000; ++app_id)
        apps.push_back({app_id, app_id});
    make_usage(profile, apps);
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const timeval timeout = {0, 50'000};
    ASSERT_EQ(setsockopt(ends[1], SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout)), 0);
    const std::string asked = sim_bytes(request(36, {5, 0}));
    ASSERT_EQ(write(ends[0], asked.data(), asked.size()), 136);
    utm_app_config_cmd_dispatch(ends[1]);
    close(ends[1]);
    std::string replies;
    char chunk[4096];
    for (ssize_t n; (n = read(ends[0], chunk, sizeof(chunk))) > 0;)
        replies.append(chunk, static_cast<size_t>(n));
    close(ends[0]);
    // It got the beginning and not the end. (Waiting again for each of the thousands of replies
    // that did not fit would take minutes.)
    EXPECT_EQ(world::describe(36, replies.substr(0, 832)), "data app 5000 minutes 5000\n");
    EXPECT_LT(replies.size(), 5000u * 832u);
    const size_t last = (replies.size() / 832 - 1) * 832;
    EXPECT_EQ(replies[last], 2);
}

TEST_F(DispatcherLists, RunsTheCommandOfAClientThatHasGone) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    make_profile(5);
    for (const utm_app_config_cmd &asked : {request(31, {5}), request(1, {6})}) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        ASSERT_EQ(write(ends[0], &asked, sizeof(asked)), 136);
        close(ends[0]);
        utm_app_config_cmd_dispatch(ends[1]);
        close(ends[1]);
    }
    signal(SIGPIPE, before);
    EXPECT_EQ(world::trace(), "log [socket] Receive cmd type=31\n"
                              "log [socket] Receive cmd type=1\n"
                              "log Create profile 6 success\n");
}

constexpr char load[] = "log [socket] Receive cmd type=46\n"
                        "log UTM_APP_CONFIG_LOAD_SIGNATURE\n";

struct load_case_t {
    const char *printed;
    const char *reply;
};

TEST_F(DispatcherLists, LoadsASignatureWhenTheShellSaysSo) {
    const std::string filler(511, 'x');
    const std::string late = filler + "loaded\n";
    const std::string on_the_edge = std::string(508, 'x') + "loaded\n";
    const load_case_t cases[] = {
        {"loaded\n", "ok\n"},
        {"signature loaded.", "ok\n"},
        {"not yet\nunloaded again\nerror\n", "ok\n"},
        {"", "not loaded\n"},
        {"load failed\n", "not loaded\n"},
        {"Loaded\nload\ned\n", "not loaded\n"},
        {late.c_str(), "ok\n"},
        // Lines are read in pieces of 511 characters; a word that lies across two is missed.
        {on_the_edge.c_str(), "not loaded\n"},
    };
    for (const load_case_t &c : cases) {
        world::on_popen([&c](const std::string &) { return c.printed; });
        EXPECT_EQ(exchange(sim_path_command(46, "/tmp/sig.bin")), c.reply) << c.printed;
        EXPECT_EQ(world::trace(), load + std::string("log cmd = lcsh load /tmp/sig.bin\n"
                                                     "query lcsh load /tmp/sig.bin\n"));
        EXPECT_EQ(world::open_pipes(), 0);
    }
}

TEST_F(DispatcherLists, AnswersWithAShortReplyWhenTheShellCannotBeStarted) {
    world::fail_popen(1);
    EXPECT_EQ(exchange(sim_path_command(46, "x")), "not loaded in 136 bytes\n");
    EXPECT_EQ(world::trace(), load + std::string("log cmd = lcsh load x\n"
                                                 "query failed lcsh load x\n"
                                                 "log cmd popen :lcsh load app signature fail.\n"));
}

TEST_F(DispatcherLists, CutsASignaturesLineAt127Characters) {
    const size_t room = 127 - strlen("lcsh load ");
    for (const size_t length : {room, room + 1, size_t{127}, size_t{128}}) {
        // A path of 128 characters comes without its NUL.
        EXPECT_EQ(exchange(sim_path_command(46, std::string(length, 'p'))), "not loaded\n");
        const std::string line = "lcsh load " + std::string(room, 'p') + "\n";
        EXPECT_EQ(world::trace(), load + ("log cmd = " + line) + "query " + line) << length;
    }
}

TEST_F(DispatcherLists, TakesAPathAsItStands) {
    EXPECT_EQ(exchange(sim_path_command(46, "")), "not loaded\n");
    EXPECT_EQ(exchange(sim_path_command(46, "%s%n a;b")), "not loaded\n");
    EXPECT_EQ(exchange(sim_path_command(46, std::string("ab\0cd", 5))), "not loaded\n");
    EXPECT_EQ(world::trace(), load +
                                  std::string("log cmd = lcsh load \n"
                                              "query lcsh load \n") +
                                  load +
                                  "log cmd = lcsh load %s%n a;b\n"
                                  "query lcsh load %s%n a;b\n" +
                                  load +
                                  "log cmd = lcsh load ab\n"
                                  "query lcsh load ab\n");
}

} // namespace
