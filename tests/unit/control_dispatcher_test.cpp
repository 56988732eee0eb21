#include "control/dispatcher.h"

#include "tests/lib/exchange.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include "persist/export_schedule.h"
#include "store/store.h"

#include <climits>
#include <gtest/gtest.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using world::exchange;
using world::exchange_bytes;
using world::make_policy;
using world::make_profile;
using world::make_usage;
using world::request;

class Dispatcher : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

std::string received_log(int type) {
    return "log [socket] Receive cmd type=" + std::to_string(type) + "\n";
}

TEST_F(Dispatcher, AnswersAPing) {
    const std::string reply = exchange_bytes(sim_bytes(request(0)));
    EXPECT_EQ(reply, std::string(832, '\0'));
    EXPECT_EQ(world::trace(), "log [socket] Receive cmd type=0\n");
}

TEST_F(Dispatcher, GivesNoReplyToARequestThatIsNotWhole) {
    const std::string whole = sim_bytes(request(1, {5}));
    for (const size_t size : {0u, 1u, 8u, 135u})
        EXPECT_EQ(exchange_bytes(whole.substr(0, size)), "") << size;
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +0\n");
}

TEST_F(Dispatcher, NeverWaitsForTheRestOfARequest) {
    const std::string whole = sim_bytes(request(1, {5}));
    for (const size_t size : {0u, 100u}) {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        ASSERT_EQ(write(ends[0], whole.data(), size), static_cast<ssize_t>(size));
        utm_app_config_cmd_dispatch(ends[1]);
        ASSERT_EQ(write(ends[0], whole.data() + size, 136 - size),
                  static_cast<ssize_t>(136 - size));
        close(ends[1]);
        // The rest lies unread, so the client learns of it; what counts is that no reply came.
        char reply = 0;
        EXPECT_LE(read(ends[0], &reply, 1), 0) << size;
        close(ends[0]);
    }
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Dispatcher, ServesTheFirst136BytesOfALongerRequest) {
    EXPECT_EQ(exchange_bytes(sim_bytes(request(0)) + "x").size(), 832u);
    EXPECT_EQ(exchange_bytes(sim_bytes(request(0)) + sim_bytes(request(1, {5}))).size(), 832u);
    EXPECT_EQ(world::trace(), received_log(0) + received_log(0));
}

TEST_F(Dispatcher, GivesNoReplyToATypeThatIsNotServed) {
    const std::set<int> served = {0,  1,  2,  3,  4,  26, 27, 28, 29, 30, 31, 32, 33, 34, 35,
                                  36, 37, 39, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51};
    make_profile(5, {world::phone});
    const std::string before = world::render_store();
    for (int type = 0; type < 256; ++type) {
        if (served.contains(type))
            continue;
        EXPECT_EQ(exchange_bytes(sim_bytes(request(static_cast<uint8_t>(type), {5, 1, 1, 1, 1}))),
                  "")
            << type;
        EXPECT_EQ(world::trace(), received_log(type));
    }
    EXPECT_EQ(world::render_store(), before);
}

TEST_F(Dispatcher, SaysNothingOfARequestWhileDebuggingIsOff) {
    EXPECT_EQ(exchange(request(41, {0})), "ok\n");
    EXPECT_EQ(exchange(request(1, {5})), "ok\n");
    EXPECT_EQ(exchange(request(41, {1})), "ok\n");
    EXPECT_EQ(world::trace(), received_log(41));
}

TEST_F(Dispatcher, CreatesAndDeletesProfiles) {
    EXPECT_EQ(exchange(request(1, {5})), "ok\n");
    EXPECT_EQ(exchange(request(1, {5})), "ok\n");
    EXPECT_EQ(exchange(request(1, {INT_MIN})), "ok\n");
    EXPECT_EQ(exchange(request(2, {5})), "ok\n");
    EXPECT_EQ(exchange(request(2, {5})), "ok\n");
    EXPECT_EQ(world::trace(), received_log(1) + "log Create profile 5 success\n" + received_log(1) +
                                  "log Create profile 5 success\n" + received_log(1) +
                                  "log Create profile -2147483648 success\n" + received_log(2) +
                                  "log Delete user profile 5 and unblock all success\n"
                                  "log Delete profile 5 success\n" +
                                  received_log(2) + "log Delete profile 5 success\n");
}

TEST_F(Dispatcher, FailsWhenAProfileCannotBeAllocated) {
    world::fail_allocation(1);
    EXPECT_EQ(exchange(request(1, {5})), "fail\n");
    EXPECT_EQ(world::trace(),
              received_log(1) + "log Create profile 5 failed because malloc failed\n");
}

TEST_F(Dispatcher, AddsAndDeletesDevices) {
    make_profile(5);
    EXPECT_EQ(exchange(world::device_request(3, 5, world::phone)), "ok\n");
    EXPECT_EQ(exchange(world::device_request(3, 5, world::phone)), "ok\n");
    EXPECT_EQ(exchange(world::device_request(3, 6, world::phone)), "fail\n");
    EXPECT_EQ(exchange(world::device_request(4, 5, world::phone)), "ok\n");
    EXPECT_EQ(exchange(world::device_request(4, 5, world::phone)), "ok\n");
    EXPECT_EQ(exchange(world::device_request(4, 6, world::phone)), "fail\n");
    EXPECT_EQ(world::trace(),
              received_log(3) + "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 5 success\n" +
                  received_log(3) + received_log(3) +
                  "log Add dev to profile 6 failed because profile not exist\n" + received_log(4) +
                  "log Del dev AA:BB:CC:DD:EE:0F from profile 5 success\n" + received_log(4) +
                  "log Del dev AA:BB:CC:DD:EE:0F from profile 5 failed because cannot find dev\n" +
                  received_log(4) +
                  "log Del dev from profile 6 failed because profile not exist\n");
}

struct command_case_t {
    uint8_t type;
    std::vector<int32_t> arguments;
    const char *reply;
    const char *trace; ///< behind the line that the request was received
};

utm_app_config_cmd request_of(const command_case_t &c) {
    utm_app_config_cmd made = request(c.type);
    int32_t *const slots[] = {&made.arg0, &made.arg1, &made.arg2, &made.arg3, &made.arg4};
    for (size_t i = 0; i < c.arguments.size(); ++i)
        *slots[i] = c.arguments[i];
    return made;
}

TEST_F(Dispatcher, ReadsEachArgumentFromItsPlace) {
    // The arguments that a command does not read are 9 or -9, which no command would accept.
    config_user_profile_t *profile = make_profile(5);
    profile->weekly_used = 60;
    profile->monthly_used = 700;
    const command_case_t cases[] = {
        {26, {5, -9, 1, -9, -9}, "ok\n", "log Set daily limit enable 1 for profile 5 success\n"},
        {26, {5, 1, 2, 1, 1}, "fail\n", "log set daily limit for profile 5 failed\n"},
        {26, {9, 1, 1, 1, 1}, "fail\n", ""},
        {27, {5, -9, -9, -9, -9}, "ok enabled 1\n", ""},
        {27, {9}, "fail\n", ""},
        {28, {5, -9, -9, 61, -9}, "ok\n", "log Set daily limit to 61 for profile 5 success\n"},
        {28,
         {5, 1, 1, 1441, 1},
         "fail\n",
         "log Set daily limit 1441 for profile 5 failed because range error\n"},
        {28, {9, 1, 1, 60, 1}, "fail\n", ""},
        {29, {5, -9, -9, -9, -9}, "ok limit 61\n", ""},
        {29, {9}, "fail\n", ""},
        {30,
         {5, 6, -9, 62, -9},
         "ok\n",
         "log Set weekday daily limit to 62 for profile 5 success\n"},
        {30,
         {5, 7, 1, 62, 1},
         "fail\n",
         "log Set weekday 7 for profile 5 failed because range error\n"},
        {30,
         {5, 6, 1, 0, 1},
         "fail\n",
         "log Set weekday daily limit 0 for profile 5 failed because range error\n"},
        {30, {9, 6, 1, 62, 1}, "fail\n", ""},
        {32, {5, -9, -9, -9, 30}, "ok\n", "log Add extend 30 to profile 5, now 30\n"},
        {32,
         {5, 1, 1, 1, 361},
         "fail\n",
         "log Add extend 361 for profile 5 failed because range error\n"},
        {32,
         {9, 1, 1, 1, 30},
         "fail\n",
         "log Add extend 30 to profile 9 failed because profile is not existed\n"},
        {33, {5, -9, -9, -9, -9}, "ok extend 30\n", ""},
        {33,
         {9},
         "fail\n",
         "log Get extended for profile 9 failed because profile is not existed\n"},
        {34, {5, -9, -9, -9, -9}, "ok\n", "log Reset profile 5 , now 0\n"},
        {34, {9}, "fail\n", "log Reset profile 9 extend failed because profile is not existed\n"},
        {35, {5, -9, -9, -9, -9}, "ok daily 0 weekly 60 monthly 700\n", ""},
        {35, {9}, "fail\n", "log Get usage for profile 9 failed because profile is not existed\n"},
        {39,
         {1, -9, -9, -9, -9},
         "ok\n",
         "run lcsh apg on\nstatus_changed 1 1\nlog Set activate from 0 to 1\n"
         "log export to /tmp/ApplicationData/app_usage.json failed\n"},
        {39, {1}, "ok\n", "log Set activate from 1 to 1\n"},
        {39, {2}, "fail\n", ""},
        {39, {-1}, "fail\n", ""},
        {39, {INT_MIN}, "fail\n", ""},
        {47, {-9, -9, -9, -9, -9}, "ok activate 1 debug 1\n", ""},
        {39, {0}, "ok\n", "run lcsh apg off\nstatus_changed 1 0\nlog Set activate from 1 to 0\n"},
        {41, {2}, "fail\n", ""},
        {41, {-1}, "fail\n", ""},
        {47, {}, "ok activate 0 debug 1\n", ""},
        {42, {4, -9, -9, -9, -9}, "ok policy 4\n", "log Create policy 4 success\n"},
        {42, {4}, "fail\n", "log Create policy 4 failed because policy already exist\n"},
        {42, {0}, "fail\n", "log Create policy 0 failed because id <= 0\n"},
        {42, {INT_MIN}, "fail\n", "log Create policy -2147483648 failed because id <= 0\n"},
        {42, {INT_MAX}, "ok policy 2147483647\n", "log Create policy 2147483647 success\n"},
        {45, {5, 4, -9, -9, -9}, "ok\n", "log Add policy 4 to profile 5 success\n"},
        {45, {5, 4}, "fail\n", "log Add policy 4 to profile 5 failed because already has policy\n"},
        {45, {9, 4}, "fail\n", "log Add policy 4 to profile 9 failed because profile not exist\n"},
        {44, {4, -9, -9, -9, -9}, "ok\n", ""},
        {44, {9}, "fail\n", ""},
        {48, {-9, -9, -9, -9, -9}, "ok interval 30\n", ""},
        {49, {1, -9, -9, -9, -9}, "ok\n", ""},
        {48, {}, "ok interval 1\n", ""},
        {49, {0, 1, 1, 1, 1}, "fail\n", ""},
        {49, {-1}, "fail\n", ""},
        {49, {INT_MIN}, "fail\n", ""},
        {48, {}, "ok interval 1\n", ""},
        {49, {INT_MAX}, "ok\n", ""},
        {48, {}, "ok interval 2147483647\n", ""},
    };
    int row = 0;
    for (const command_case_t &c : cases) {
        SCOPED_TRACE("row " + std::to_string(++row) + ", type " + std::to_string(c.type));
        EXPECT_EQ(exchange(request_of(c)), c.reply);
        EXPECT_EQ(world::trace(), received_log(c.type) + c.trace);
    }
}

TEST_F(Dispatcher, LeavesTheLastExportAloneWhenTheIntervalChanges) {
    last_export_statistics_ts = 12345;
    EXPECT_EQ(exchange(request(49, {5})), "ok\n");
    EXPECT_EQ(last_export_statistics_ts, 12345);
}

TEST_F(Dispatcher, ShowsThatDebuggingIsOff) {
    EXPECT_EQ(exchange(request(41, {0})), "ok\n");
    EXPECT_EQ(exchange(request(47)), "ok activate 0 debug 0\n");
}

TEST_F(Dispatcher, AddsUpToTenRulesWidened) {
    make_policy(4, {});
    std::vector<utm_app_config_app_entry> rules;
    for (uint32_t app_id = 1; app_id <= 10; ++app_id)
        rules.push_back({app_id, 1, static_cast<uint16_t>(app_id)});
    rules[0] = {0xFFFFFFFF, 2, 65535};
    EXPECT_EQ(exchange(world::rules_request(4, 10, rules)), "ok\n");
    EXPECT_EQ(world::render_store(),
              "policy 4: profile none, count 10, rules 10/1/10 (unused) 9/1/9 (unused) "
              "8/1/8 (unused) 7/1/7 (unused) 6/1/6 (unused) 5/1/5 (unused) 4/1/4 (unused) "
              "3/1/3 (unused) 2/1/2 (unused) -1/2/65535 (unused)\n"
              "router: apps 0, collected +0\n");
    world::trace();
    EXPECT_EQ(exchange(world::rules_request(4, 1, rules)), "ok\n");
    EXPECT_EQ(world::trace(), received_log(43) +
                                  "log Policy 4 update app -1 action 2 limit 65535 success\n"
                                  "log Add apps to policy 4 success\n");
}

TEST_F(Dispatcher, RefusesACountOfRulesThatIsNotOneToTen) {
    make_policy(4, {});
    const std::string before = world::render_store();
    const std::vector<utm_app_config_app_entry> rules(15, {1, 2, 3});
    for (const int32_t count : {0, 11, 15, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(exchange(world::rules_request(4, count, rules)), "fail\n") << count;
        EXPECT_EQ(world::trace(), received_log(43)) << count;
    }
    EXPECT_EQ(world::render_store(), before);
}

TEST_F(Dispatcher, FailsWhenARuleOrItsPolicyIsUnknownOrMemoryRunsOut) {
    make_policy(4, {});
    EXPECT_EQ(exchange(world::rules_request(4, 2, {{1, 3, 5}, {2, 1, 6}})), "fail\n");
    EXPECT_EQ(exchange(world::rules_request(9, 1, {{1, 1, 5}})), "fail\n");
    world::fail_allocation(1);
    EXPECT_EQ(exchange(world::rules_request(4, 1, {{3, 1, 5}})), "fail\n");
    EXPECT_EQ(world::trace(), received_log(43) +
                                  "log Policy 4 add app 2 action 1 limit 6 success\n"
                                  "log Add apps to policy 4 failed\n" +
                                  received_log(43) + "log Add apps to policy 9 failed\n" +
                                  received_log(43));
    EXPECT_EQ(world::render_store(), "policy 4: profile none, count 1, rules 2/1/6 (unused)\n"
                                     "router: apps 0, collected +0\n");
}

TEST_F(Dispatcher, RefusesTheUsageFileWhileTheFeatureIsOff) {
    for (const uint8_t type : {uint8_t{50}, uint8_t{51}}) {
        EXPECT_EQ(exchange(sim_path_command(type, "/tmp/usage.json")), "fail\n");
        EXPECT_EQ(world::trace(), received_log(type));
    }
}

TEST_F(Dispatcher, ExportsToAndImportsFromThePathOfTheRequest) {
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

} // namespace
