/// The commands from the socket to the router and back. Those of the usage file have a test apart.

#include "tests/daemon/support/fixture.h"

#include <filesystem>

namespace {

const sim_mac TABLET = sim_parse_mac("02:00:00:00:00:0A");
const sim_mac PHONE = sim_parse_mac("02:00:00:00:00:0B");

class DaemonCommands : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        // Where a usage file is, switching the feature on writes none: usage_file_test.cpp.
        std::filesystem::create_directory("/tmp/ApplicationData");
        ASSERT_TRUE(sim_write_file(USAGE_PATH, "of an earlier life"));
        start_with_log();
    }
};

void visit_profiles() {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, TABLET)), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, TABLET)), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 9, TABLET)), FAIL);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_DEL_DEVICE, 3, PHONE)), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_DEL_DEVICE, 9, PHONE)), FAIL);
}

constexpr char PROFILES_LOG[] = R"([socket] Receive cmd type=0
[socket] Receive cmd type=1
Create profile 3 success
[socket] Receive cmd type=1
Create profile 3 success
[socket] Receive cmd type=3
Add dev mac = 02:00:00:00:00:0A to profile 3 success
[socket] Receive cmd type=3
[socket] Receive cmd type=3
Add dev to profile 9 failed because profile not exist
[socket] Receive cmd type=4
Del dev 02:00:00:00:00:0B from profile 3 failed because cannot find dev
[socket] Receive cmd type=4
Del dev from profile 9 failed because profile not exist
)";

void visit_limits() {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 3, .arg2 = 1}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 3, .arg2 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = 9}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 3, .arg3 = 0}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 3, .arg3 = 60}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT, .arg0 = 9}), FAIL);
    const uint8_t set_weekday = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT;
    EXPECT_EQ(ask({.type = set_weekday, .arg0 = 3, .arg1 = 7, .arg3 = 90}), FAIL);
    EXPECT_EQ(ask({.type = set_weekday, .arg0 = 3, .arg1 = 2, .arg3 = 1441}), FAIL);
    EXPECT_EQ(ask({.type = set_weekday, .arg0 = 3, .arg1 = 2, .arg3 = 90}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = 9}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 361}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 9, .arg4 = 30}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = 9}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_RESET_EXTEND, .arg0 = 3}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_RESET_EXTEND, .arg0 = 9}), FAIL);
}

constexpr char LIMITS_LOG[] = R"([socket] Receive cmd type=26
Set daily limit enable 1 for profile 3 success
[socket] Receive cmd type=26
set daily limit for profile 3 failed
[socket] Receive cmd type=27
[socket] Receive cmd type=28
Set daily limit 0 for profile 3 failed because range error
[socket] Receive cmd type=28
Set daily limit to 60 for profile 3 success
[socket] Receive cmd type=29
[socket] Receive cmd type=30
Set weekday 7 for profile 3 failed because range error
[socket] Receive cmd type=30
Set weekday daily limit 1441 for profile 3 failed because range error
[socket] Receive cmd type=30
Set weekday daily limit to 90 for profile 3 success
[socket] Receive cmd type=31
[socket] Receive cmd type=32
Add extend 361 for profile 3 failed because range error
[socket] Receive cmd type=32
Add extend 30 to profile 9 failed because profile is not existed
[socket] Receive cmd type=32
Add extend 30 to profile 3, now 30
[socket] Receive cmd type=33
Get extended for profile 9 failed because profile is not existed
[socket] Receive cmd type=34
Reset profile 3 , now 0
[socket] Receive cmd type=34
Reset profile 9 extend failed because profile is not existed
)";

void visit_policies() {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 0}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 7}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 7}), FAIL);
    EXPECT_EQ(ask(sim_rules_command(7, {})), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = 7, .arg1 = 11}), FAIL);
    EXPECT_EQ(ask(sim_rules_command(8, {{305, 2, 0}})), FAIL);
    EXPECT_EQ(ask(sim_rules_command(7, {{305, 1, 10}, {306, 2, 0}})), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 3, .arg1 = 8}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 9, .arg1 = 7}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 3, .arg1 = 7}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 3, .arg1 = 7}), FAIL);
}

constexpr char POLICIES_LOG[] = R"([socket] Receive cmd type=39
[socket] Receive cmd type=39
Set activate from 0 to 1
[socket] Receive cmd type=42
Create policy 0 failed because id <= 0
[socket] Receive cmd type=42
Create policy 7 success
[socket] Receive cmd type=42
Create policy 7 failed because policy already exist
[socket] Receive cmd type=43
[socket] Receive cmd type=43
[socket] Receive cmd type=43
Add apps to policy 8 failed
[socket] Receive cmd type=43
Policy 7 add app 305 action 1 limit 10 success
Policy 7 add app 306 action 2 limit 0 success
Add apps to policy 7 success
[socket] Receive cmd type=45
[socket] Receive cmd type=45
Add policy 7 to profile 9 failed because profile not exist
[socket] Receive cmd type=45
block device to use 306
Add policy 7 to profile 3 success
[socket] Receive cmd type=45
Add policy 7 to profile 3 failed because already has policy
)";

void visit_blocks() {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 3, .arg3 = 10}), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 3, PHONE)), OK);
    EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_DEL_DEVICE, 3, PHONE)), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 5}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = 9}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 3, .arg1 = 31}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = 3, .arg1 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_DELETE_POLICY, .arg0 = 8}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_DELETE_POLICY, .arg0 = 7}), OK);
}

constexpr char BLOCKS_LOG[] = R"(Block app 305 for profile 3 because 10 exceed 10
[socket] Receive cmd type=28
send event: block profile 3 to use network
Set daily limit to 10 for profile 3 success
[socket] Receive cmd type=3
[WARNING] __block_one_device_to_use_network is not implemented
Add dev mac = 02:00:00:00:00:0B to profile 3 success
[socket] Receive cmd type=4
Del dev 02:00:00:00:00:0B from profile 3 success
[socket] Receive cmd type=32
send event: unblock profile 3 to use network
Add extend 5 to profile 3, now 5
[socket] Receive cmd type=35
Get usage for profile 9 failed because profile is not existed
[socket] Receive cmd type=36
[socket] Receive cmd type=37
[socket] Receive cmd type=44
[socket] Receive cmd type=44
)";

void visit_the_rest() {
    EXPECT_TRUE(sim_write_file("/tmp/good", "signature"));
    EXPECT_EQ(load_signature("/tmp/good"), OK);
    EXPECT_EQ(load_signature("/tmp/none"), UTM_APP_CONFIG_STATUS_NOT_LOADED);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_STATUS}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_EXPORT_INTERVAL}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = 0}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = 60}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 0}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 0}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_DELETE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_DELETE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 0}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_PING}), OK);
}

constexpr char REST_LOG[] = R"([socket] Receive cmd type=46
UTM_APP_CONFIG_LOAD_SIGNATURE
cmd = lcsh load /tmp/good
[socket] Receive cmd type=46
UTM_APP_CONFIG_LOAD_SIGNATURE
cmd = lcsh load /tmp/none
[socket] Receive cmd type=47
[socket] Receive cmd type=48
[socket] Receive cmd type=49
[socket] Receive cmd type=49
[socket] Receive cmd type=39
Set activate from 1 to 0
[socket] Receive cmd type=39
Set activate from 0 to 0
[socket] Receive cmd type=2
Delete user profile 3 and unblock all success
Delete profile 3 success
[socket] Receive cmd type=2
Delete profile 3 success
[socket] Receive cmd type=41
[socket] Receive cmd type=41
)";

text_lines tour_journal() {
    return {"lcsh apg on",
            "notify status_changed 1 1",
            "lcsh apg acl set 02:00:00:00:00:0A 306 0 18",
            device_query(NOON, NOON + 60, "02000000000A "),
            "lcsh apg acl set 02:00:00:00:00:0A 305 0 18",
            router_query(NOON, NOON + 60),
            "notify block profile 3",
            "lcsh apg acl set 02:00:00:00:00:0B 305 0 18",
            "lcsh apg acl set 02:00:00:00:00:0B 306 0 18",
            "lcsh apg acl reset 02:00:00:00:00:0B",
            "profile_daily_limit.sh -C 3",
            "notify unblock profile 3",
            "lcsh apg acl reset 02:00:00:00:00:0A",
            "lcsh load /tmp/good",
            "lcsh load /tmp/none",
            "lcsh apg off",
            "notify status_changed 1 0",
            "lcsh apg acl reset 02:00:00:00:00:0A",
            "lcsh apg acl reset 02:00:00:00:00:0A"};
}

} // namespace

TEST_F(DaemonCommands, ATourThroughAllOfThemIsLoggedAndCarriedOutToTheLetter) {
    prescribe("reply", R"({"data":[{"type":"APP","app_id":305,"total_time_usage":10},
                                   {"type":"INTERNET","app_id":0,"total_time_usage":10}]})");
    visit_profiles();
    visit_limits();
    visit_policies();
    tick();
    visit_blocks();
    visit_the_rest();

    EXPECT_EQ(sim_read_file(LOG_PATH),
              std::string(PROFILES_LOG) + LIMITS_LOG + POLICIES_LOG + BLOCKS_LOG + REST_LOG);
    EXPECT_EQ(journal(), tour_journal());
}
