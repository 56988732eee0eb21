#include "control/dispatcher.h"

#include "persist/export_schedule.h"
#include "store/store.h"
#include "tests/lib/exchange.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using world::device_request;
using world::exchange;
using world::exchange_bytes;
using world::make_policy;
using world::make_profile;
using world::make_usage;
using world::request;
using world::rules_request;

class Dispatcher : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

std::string received_log(int type) {
    return "log [socket] Receive cmd type=" + std::to_string(type) + "\n";
}

/// A connection to a client that has sent something.
struct connection_t {
    explicit connection_t(const std::string &sent) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        EXPECT_EQ(write(ends[0], sent.data(), sent.size()), static_cast<ssize_t>(sent.size()));
    }
    ~connection_t() { close(ends[0]); }
    connection_t(const connection_t &) = delete;
    connection_t &operator=(const connection_t &) = delete;

    void serve() const {
        utm_app_config_cmd_dispatch(ends[1]);
        close(ends[1]);
    }

    int ends[2]; ///< the client's and the dispatcher's
};

// ---- Requests ------------------------------------------------------------------------------

TEST_F(Dispatcher, AnswersAPing) {
    const std::string ping = sim_bytes(request(0));
    for (const std::string &behind : {std::string(), std::string("x"), sim_bytes(request(1, {5}))})
        EXPECT_EQ(exchange_bytes(ping + behind), std::string(832, '\0')) << behind.size();
    EXPECT_EQ(world::trace(), received_log(0) + received_log(0) + received_log(0));
}

TEST_F(Dispatcher, GivesNoReplyToARequestThatIsNotWholeAndNeverWaitsForItsRest) {
    const std::string whole = sim_bytes(request(1, {5}));
    for (const size_t size : {0u, 1u, 8u, 135u}) {
        const connection_t client(whole.substr(0, size));
        utm_app_config_cmd_dispatch(client.ends[1]);
        EXPECT_GT(write(client.ends[0], whole.data() + size, 136 - size), 0);
        close(client.ends[1]);
        // The rest lies unread, so the client learns of it; what counts is that no reply came.
        char reply = 0;
        EXPECT_LE(read(client.ends[0], &reply, 1), 0) << size;
    }
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +0\n");
}

TEST_F(Dispatcher, GivesNoReplyToATypeThatIsNotServed) {
    const std::set<int> served = {0,  1,  2,  3,  4,  26, 27, 28, 29, 30, 31, 32, 33, 34, 35,
                                  36, 37, 39, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51};
    make_profile(5, {world::phone});
    const std::string before = world::render_store();
    for (int type = 0; type < 256; ++type) {
        if (served.contains(type))
            continue;
        EXPECT_EQ(exchange(request(static_cast<uint8_t>(type), {5, 1, 1, 1, 1})), "no reply\n");
        EXPECT_EQ(world::trace(), received_log(type));
    }
    EXPECT_EQ(world::render_store(), before);
}

TEST_F(Dispatcher, SaysNothingOfARequestWhileDebuggingIsOff) {
    EXPECT_EQ(exchange(request(41, {0, -9, -9, -9, -9})), "ok\n");
    EXPECT_EQ(exchange(request(47)), "ok activate 0 debug 0\n");
    EXPECT_EQ(exchange(request(1, {5})), "ok\n");
    EXPECT_EQ(exchange(request(41, {1})), "ok\n");
    EXPECT_EQ(world::trace(), received_log(41));
}

TEST_F(Dispatcher, RunsTheCommandOfAClientThatHasGone) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    make_profile(5);
    for (const utm_app_config_cmd &asked : {request(31, {5}), request(1, {6})}) {
        connection_t client(sim_bytes(asked));
        close(std::exchange(client.ends[0], -1));
        client.serve();
    }
    signal(SIGPIPE, before);
    EXPECT_EQ(world::trace(),
              received_log(31) + received_log(1) + "log Create profile 6 success\n");
}

// ---- Commands with one reply ---------------------------------------------------------------

/// The arguments that a command does not read are 9 or -9, which no command would accept.
TEST_F(Dispatcher, ReadsEachArgumentFromItsPlace) {
    const struct {
        utm_app_config_cmd request;
        const char *reply;
    } rows[] = {
        {request(1, {5, -9, -9, -9, -9}), "ok"},
        {request(1, {5}), "ok"},
        {request(1, {6}), "ok"},
        {request(2, {6, -9, -9, -9, -9}), "ok"},
        {request(2, {6}), "ok"},
        {device_request(3, 5, world::phone), "ok"},
        {device_request(3, 5, world::tablet), "ok"},
        {device_request(3, 9, world::phone), "fail"},
        {device_request(4, 5, world::tablet), "ok"},
        {device_request(4, 5, world::tablet), "ok"},
        {device_request(4, 9, world::phone), "fail"},
        {request(26, {5, -9, 1, -9, -9}), "ok"},
        {request(26, {5, 1, 2, 1, 1}), "fail"},
        {request(26, {9, 1, 1, 1, 1}), "fail"},
        {request(27, {5, -9, -9, -9, -9}), "ok enabled 1"},
        {request(27, {9}), "fail"},
        {request(28, {5, -9, -9, 61, -9}), "ok"},
        {request(28, {5, 1, 1, 1441, 1}), "fail"},
        {request(28, {9, 1, 1, 60, 1}), "fail"},
        {request(29, {5, -9, -9, -9, -9}), "ok limit 61"},
        {request(29, {9}), "fail"},
        {request(30, {5, 6, -9, 62, -9}), "ok"},
        {request(30, {5, 7, 1, 62, 1}), "fail"},
        {request(30, {5, 6, 1, 0, 1}), "fail"},
        {request(30, {9, 6, 1, 62, 1}), "fail"},
        {request(32, {5, -9, -9, -9, 30}), "ok"},
        {request(32, {5, 1, 1, 1, 361}), "fail"},
        {request(32, {9, 1, 1, 1, 30}), "fail"},
        {request(33, {5, -9, -9, -9, -9}), "ok extend 30"},
        {request(33, {9}), "fail"},
        {request(34, {5, -9, -9, -9, -9}), "ok"},
        {request(34, {9}), "fail"},
        {request(33, {5}), "ok extend 0"},
        {request(35, {9}), "fail"},
        {request(39, {1, -9, -9, -9, -9}), "ok"},
        {request(39, {2}), "fail"},
        {request(39, {INT_MIN}), "fail"},
        {request(47, {-9, -9, -9, -9, -9}), "ok activate 1 debug 1"},
        {request(39, {0}), "ok"},
        {request(41, {2}), "fail"},
        {request(41, {-1}), "fail"},
        {request(47), "ok activate 0 debug 1"},
        {request(42, {4, -9, -9, -9, -9}), "ok policy 4"},
        {request(42, {4}), "fail"},
        {request(42, {0}), "fail"},
        {request(42, {INT_MIN}), "fail"},
        {request(42, {INT_MAX}), "ok policy 2147483647"},
        {rules_request(4, 2, {{1, 2, 7}, {0xFFFFFFFF, 1, 65535}}), "ok"},
        {rules_request(INT_MAX, 1, {{1, 2, 7}}), "ok"},
        {request(44, {INT_MAX, -9, -9, -9, -9}), "ok"},
        {request(44, {9}), "fail"},
        {request(45, {5, 4, -9, -9, -9}), "ok"},
        {request(45, {5, 4}), "fail"},
        {request(45, {9, 4}), "fail"},
        {request(48, {-9, -9, -9, -9, -9}), "ok interval 30"},
        {request(49, {1, -9, -9, -9, -9}), "ok"},
        {request(49, {0, 1, 1, 1, 1}), "fail"},
        {request(49, {INT_MIN}), "fail"},
        {request(48), "ok interval 1"},
        {request(49, {INT_MAX}), "ok"},
        {request(48), "ok interval 2147483647"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(exchange(row.request), row.reply + std::string("\n"))
            << "row " << &row - rows << ", type " << int{row.request.type};
        EXPECT_TRUE(world::trace().starts_with(received_log(row.request.type)));
    }
    EXPECT_EQ(world::render_store(),
              "profile 5: devices 1 [AABBCCDDEE0F ], enabled 1, limit 61 + 0, used 0/0/0, "
              "blocked 0, collected +0, apps 0, policy 4\n"
              "  weekdays 0:61 1:61 2:61 3:61 4:61 5:61 6:62\n"
              "policy 4: profile 5, count 2, rules -1/1/65535 (unused) 1/2/7 (unused)\n"
              "policy 2147483647: profile none, count 1, rules\n"
              "router: apps 0, collected +0\n");
}

TEST_F(Dispatcher, LeavesTheLastExportAloneWhenTheIntervalChanges) {
    last_export_statistics_ts = 12345;
    EXPECT_EQ(exchange(request(49, {5})), "ok\n");
    EXPECT_EQ(last_export_statistics_ts, 12345);
}

TEST_F(Dispatcher, TellsTheMinutesOfAProfile) {
    config_user_profile_t *profile = make_profile(5);
    profile->daily_used = 5;
    profile->weekly_used = 60;
    profile->monthly_used = 700;
    EXPECT_EQ(exchange(request(35, {5, -9, -9, -9, -9})), "ok daily 5 weekly 60 monthly 700\n");
}

TEST_F(Dispatcher, FailsWhenMemoryRunsOut) {
    make_usage(make_profile(5), {{10, 4}});
    make_policy(4, {});
    for (const utm_app_config_cmd &asked : {request(1, {6}), rules_request(4, 1, {{3, 1, 5}}),
                                            request(31, {5}), request(36, {5}), request(37, {5})}) {
        world::fail_allocation(1);
        EXPECT_EQ(exchange(asked), "fail\n");
    }
    EXPECT_EQ(world::trace(),
              received_log(1) + "log Create profile 6 failed because malloc failed\n" +
                  received_log(43) + received_log(31) +
                  "log Get weekday daily limit of profile 5 failed because malloc failed\n" +
                  received_log(36) +
                  "log Get app usage of profile 5 failed because malloc failed\n" +
                  received_log(37) +
                  "log Get prev day usage for profile 5 failed because malloc failed\n");
}

TEST_F(Dispatcher, AddsOneToTenRules) {
    make_policy(4, {});
    std::vector<utm_app_config_app_entry> rules;
    for (uint32_t app_id = 1; app_id <= 15; ++app_id)
        rules.push_back({app_id, 1, static_cast<uint16_t>(app_id)});
    for (const int32_t count : {0, 11, 15, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(exchange(rules_request(4, count, rules)), "fail\n") << count;
        EXPECT_EQ(world::trace(), received_log(43)) << count;
    }
    EXPECT_EQ(world::render_policy(4), "policy 4: profile none, count 0, rules\n");
    EXPECT_EQ(exchange(rules_request(4, 10, rules)), "ok\n");
    EXPECT_EQ(world::render_policy(4),
              "policy 4: profile none, count 10, rules 10/1/10 (unused) 9/1/9 (unused) "
              "8/1/8 (unused) 7/1/7 (unused) 6/1/6 (unused) 5/1/5 (unused) 4/1/4 (unused) "
              "3/1/3 (unused) 2/1/2 (unused) 1/1/1 (unused)\n");
    EXPECT_EQ(exchange(rules_request(9, 1, rules)), "fail\n");
    EXPECT_EQ(exchange(rules_request(4, 2, {{1, 3, 5}, {2, 1, 6}})), "fail\n");
}

TEST_F(Dispatcher, ExportsToAndImportsFromThePathOfTheRequest) {
    for (const uint8_t type : {uint8_t{51}, uint8_t{50}}) {
        EXPECT_EQ(exchange(sim_path_command(type, "/tmp/of-the-request.json")), "fail\n");
        EXPECT_EQ(world::trace(), received_log(type)) << "the feature is off";
    }
    world::set_active(true);
    EXPECT_EQ(exchange(sim_path_command(51, "/tmp/of-the-request.json")), "ok\n");
    EXPECT_EQ(exchange(sim_path_command(50, "/tmp/of-the-request.json")), "ok\n");
    EXPECT_EQ(exchange(sim_path_command(50, "/tmp/none.json")), "fail\n");
    EXPECT_EQ(exchange(sim_path_command(51, "")), "fail\n");
    EXPECT_EQ(world::trace(),
              received_log(51) + "log export to /tmp/of-the-request.json success\n" +
                  received_log(50) + "log import from /tmp/of-the-request.json success\n" +
                  received_log(50) + "log import from /tmp/none.json failed\n" + received_log(51) +
                  "log export to  failed\n");
}

// ---- Lists ---------------------------------------------------------------------------------

TEST_F(Dispatcher, ListsSevenWeekdaysAndAnEndThatRepeatsTheLast) {
    config_user_profile_t *profile = make_profile(5);
    for (config_weekday_limit_t &day : weekdays_of(profile))
        day.limit = 100 + day.day;
    const std::string replies = exchange_bytes(sim_bytes(request(31, {5, -9, -9, -9, -9})));
    EXPECT_EQ(world::describe(31, replies), "data day 0 limit 100\n"
                                            "data day 1 limit 101\n"
                                            "data day 2 limit 102\n"
                                            "data day 3 limit 103\n"
                                            "data day 4 limit 104\n"
                                            "data day 5 limit 105\n"
                                            "data day 6 limit 106\n"
                                            "ok\n");
    EXPECT_EQ(replies.substr(7 * 832 + 1), replies.substr(6 * 832 + 1, 831));
    EXPECT_EQ(exchange(request(31, {6})), "fail\n");
}

TEST_F(Dispatcher, ListsApplicationsOfAPeriod) {
    config_user_profile_t *profile = make_profile(5);
    EXPECT_EQ(exchange(request(36, {5, 0})), "data app 0 minutes 0\nok\n");
    EXPECT_EQ(exchange(request(37, {5, 0})), "fail\n");
    make_usage(profile, {{10, 4}, {20, 6}, {-30, 5}});
    EXPECT_EQ(exchange(request(36, {5, 2000, -9, -9, -9})), "data app 20 minutes 6\n"
                                                            "data app -30 minutes 5\n"
                                                            "data app 10 minutes 4\n"
                                                            "ok\n");
    for (const auto &[id, period] : {std::pair{5, 31}, {5, -1}, {5, 1004}, {6, 0}})
        EXPECT_EQ(exchange(request(36, {id, period})), "fail\n") << period;
}

TEST_F(Dispatcher, ListsAsManyApplicationsAsTheCountSaysOrTheListHolds) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{10, 4}});
    profile->app_count = 3;
    EXPECT_EQ(exchange(request(36, {5, 0})), "data app 10 minutes 4\n"
                                             "data app 0 minutes 0\n"
                                             "data app 0 minutes 0\n"
                                             "ok\n");
    EXPECT_EQ(exchange(request(37, {5, 0})), "data app 10 minutes 4\nok\n");
}

TEST_F(Dispatcher, ListsEarlierDaysAndWeeks) {
    config_user_profile_t *profile = make_profile(5);
    make_usage(profile, {{20, 7}, {10, 9}});
    for (int32_t i = 0; i < 30; ++i)
        world::usage_of(profile, 20)->prev_30_days[i] = 1 + i;
    // Most recent first: slot 29, then 28 and so on. It is a Wednesday: three days of this week.
    EXPECT_EQ(exchange(request(37, {5, 0, -9, -9, -9})),
              "data app 20 minutes 7 30 29 28 27 26 25 24 23 22 21 20 19 18 17 16 15 14 13 12 11 "
              "10 9 8 7 6 5 4 3 2 1\n"
              "data app 10 minutes 9\n"
              "ok\n");
    EXPECT_EQ(exchange(request(37, {5, 1})), "data app 20 minutes 94 168 119 70\n"
                                             "data app 10 minutes 9\n"
                                             "ok\n");
    for (const auto &[id, mode] : {std::pair{5, 2}, {5, -1}, {5, INT_MIN}, {6, 0}})
        EXPECT_EQ(exchange(request(37, {id, mode})), "fail\n") << mode;
}

TEST_F(Dispatcher, EndsAListEarlyForAClientThatNeverReads) {
    std::vector<config_app_minutes_t> apps;
    for (int32_t app_id = 1; app_id <= 5000; ++app_id)
        apps.push_back({app_id, app_id});
    make_usage(make_profile(5), apps);
    const connection_t client(sim_bytes(request(36, {5, 0})));
    const timeval timeout = {0, 50'000};
    ASSERT_EQ(setsockopt(client.ends[1], SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout)), 0);
    client.serve();
    const std::string replies = sim_read_answer(client.ends[0]).bytes;
    // It got the beginning and not the end. (Waiting again for each of the thousands of replies
    // that did not fit would take minutes.)
    EXPECT_EQ(world::describe(36, replies.substr(0, 832)), "data app 5000 minutes 5000\n");
    EXPECT_LT(replies.size(), 5000u * 832u);
    EXPECT_EQ(replies[(replies.size() / 832 - 1) * 832], 2);
}

// ---- Signatures ----------------------------------------------------------------------------

/// What a signature's command leaves, with this behind "lcsh load ".
std::string load_trace(const std::string &path) {
    return received_log(46) + "log UTM_APP_CONFIG_LOAD_SIGNATURE\nlog cmd = lcsh load " + path +
           "\nquery lcsh load " + path + "\n";
}

TEST_F(Dispatcher, LoadsASignatureWhenTheShellSaysSo) {
    const struct {
        std::string printed;
        const char *reply;
    } cases[] = {
        {"signature loaded.", "ok\n"},
        {"not yet\nunloaded again\nerror\n", "ok\n"},
        {"", "not loaded\n"},
        {"Loaded\nload\ned\n", "not loaded\n"},
        {std::string(511, 'x') + "loaded\n", "ok\n"},
        // Lines are read in pieces of 511 characters; a word that lies across two is missed.
        {std::string(508, 'x') + "loaded\n", "not loaded\n"},
    };
    for (const auto &c : cases) {
        world::on_popen([&c](const std::string &) { return c.printed; });
        EXPECT_EQ(exchange(sim_path_command(46, "/tmp/sig.bin")), c.reply) << c.printed;
        EXPECT_EQ(world::trace(), load_trace("/tmp/sig.bin"));
        EXPECT_EQ(world::open_pipes(), 0);
    }
}

TEST_F(Dispatcher, AnswersWithAShortReplyWhenTheShellCannotBeStarted) {
    world::fail_popen(1);
    EXPECT_EQ(exchange(sim_path_command(46, "x")), "not loaded in 136 bytes\n");
    EXPECT_EQ(world::trace(), received_log(46) + "log UTM_APP_CONFIG_LOAD_SIGNATURE\n"
                                                 "log cmd = lcsh load x\n"
                                                 "query failed lcsh load x\n"
                                                 "log cmd popen :lcsh load app signature fail.\n");
}

TEST_F(Dispatcher, TakesASignaturesPathAsItStandsUpTo117Characters) {
    const std::string longest(117, 'p');
    const std::pair<std::string, std::string> table[] = {
        {longest, longest},
        {longest + "p", longest},
        {std::string(128, 'p'), longest}, // comes without its NUL
        {"", ""},
        {"%s%n a;b", "%s%n a;b"},
        {std::string("ab\0cd", 5), "ab"},
    };
    for (const auto &[path, taken] : table) {
        EXPECT_EQ(exchange(sim_path_command(46, path)), "not loaded\n");
        EXPECT_EQ(world::trace(), load_trace(taken)) << path.size();
    }
}

} // namespace
