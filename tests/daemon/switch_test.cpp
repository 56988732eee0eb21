/// The feature switch: what it does to the router, and in which order.

#include "tests/daemon/support/fixture.h"

#include <filesystem>
#include <unistd.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char OVER_EVERY_LIMIT[] =
    R"({"data":[{"type":"APP","app_id":305,"total_time_usage":10},
                {"type":"APP","app_id":400,"total_time_usage":10},
                {"type":"INTERNET","app_id":0,"total_time_usage":60}]})";

class DaemonSwitch : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        // Where a usage file is, the switch writes none: usage_file_test.cpp.
        std::filesystem::create_directory("/tmp/ApplicationData");
        ASSERT_TRUE(sim_write_file(USAGE_PATH, "of an earlier life"));
        start();
    }
    /// Profile 1 with two devices has used up its time and that of application 305.
    void use_everything_up() {
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        for (const char *mac : {"02:00:00:00:00:01", "02:00:00:00:00:02"})
            EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1, sim_parse_mac(mac))), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 1, .arg2 = 1}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 1, .arg3 = 60}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_rules_command(1, {{305, 1, 10}})), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 1, .arg1 = 1}), 0);
        prescribe("reply.profile", OVER_EVERY_LIMIT);
        tick();
        prescribe("reply.profile", usage_reply({}));
    }
    /// Turns the switch and returns what the router saw of it.
    text_lines turn(int32_t value) {
        unlink((std::string(ROUTER_DIR) + "/journal").c_str());
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = value}), 0);
        return journal();
    }
};

} // namespace

TEST_F(DaemonSwitch, ItTurnsTheGuardAndTellsTheRouter) {
    EXPECT_THAT(turn(1), ElementsAre("lcsh apg on", "notify status_changed 1 1"));
    EXPECT_THAT(turn(0), ElementsAre("lcsh apg off", "notify status_changed 1 0"));
}

TEST_F(DaemonSwitch, TurnedToWhereItStandsItDoesNothing) {
    EXPECT_THAT(turn(0), IsEmpty());
    turn(1);
    EXPECT_THAT(turn(1), IsEmpty());
}

TEST_F(DaemonSwitch, WhileItIsOffNothingIsBlocked) {
    use_everything_up();

    EXPECT_THAT(journal(), ElementsAre(router_query(NOON, NOON),
                                       device_query(NOON, NOON + 60, "020000000001 020000000002 "),
                                       router_query(NOON, NOON + 60)));
}

TEST_F(DaemonSwitch, OffLiftsEveryBlockAndOnPutsBackThoseOfLimits) {
    turn(1);
    use_everything_up();

    EXPECT_THAT(turn(0),
                ElementsAre("lcsh apg off", "notify status_changed 1 0", "notify unblock profile 1",
                            "lcsh apg acl del 02:00:00:00:00:01 305 0",
                            "lcsh apg acl del 02:00:00:00:00:02 305 0",
                            "lcsh apg acl reset 02:00:00:00:00:01",
                            "lcsh apg acl reset 02:00:00:00:00:02"));
    EXPECT_THAT(turn(1),
                ElementsAre("lcsh apg on", "notify status_changed 1 1", "notify block profile 1",
                            "lcsh apg acl set 02:00:00:00:00:01 305 0 18",
                            "lcsh apg acl set 02:00:00:00:00:02 305 0 18"));
}

TEST_F(DaemonSwitch, ACommandThatFailsIsLoggedWithItsWaitStatus) {
    turn(1);
    use_everything_up();
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), 0);
    prescribe("fail", "1 acl set 02:00:00:00:00:01\n3 acl del 02:00:00:00:00:02\n");

    turn(0);
    turn(1);

    EXPECT_EQ(sim_read_file(LOG_PATH),
              "[socket] Receive cmd type=39\n"
              "send event: unblock profile 1 to use network\n"
              "Command lcsh apg acl del 02:00:00:00:00:02 305 0 return 768 != 0\n"
              "Set activate from 1 to 0\n"
              "[socket] Receive cmd type=39\n"
              "send event: block profile 1 to use network\n"
              "Command lcsh apg acl set 02:00:00:00:00:01 305 0 18 return 256\n"
              "Set activate from 0 to 1\n");
}
