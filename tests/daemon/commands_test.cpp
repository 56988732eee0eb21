/// Commands that utm_appctl does not send; the transcripts of tests/cram/commands have the others.

#include "tests/daemon/support/fixture.h"

namespace {

class DaemonCommands : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        start_with_log();
    }
};

constexpr char REFUSALS_LOG[] = R"([socket] Receive cmd type=1
Create profile 3 success
[socket] Receive cmd type=42
Create policy 7 success
[socket] Receive cmd type=26
set daily limit for profile 3 failed
[socket] Receive cmd type=27
[socket] Receive cmd type=30
Set weekday 7 for profile 3 failed because range error
[socket] Receive cmd type=39
[socket] Receive cmd type=43
[socket] Receive cmd type=43
[socket] Receive cmd type=36
[socket] Receive cmd type=37
[socket] Receive cmd type=49
[socket] Receive cmd type=41
)";

} // namespace

TEST_F(DaemonCommands, ValuesThatNoClientSendsAreRefused) {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 3}), OK);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 7}), OK);

    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 3, .arg2 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = 9}), FAIL);
    const uint8_t set_weekday = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT;
    EXPECT_EQ(ask({.type = set_weekday, .arg0 = 3, .arg1 = 7, .arg3 = 90}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 2}), FAIL);
    EXPECT_EQ(ask(sim_rules_command(7, {})), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = 7, .arg1 = 11}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 3, .arg1 = 31}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = 3, .arg1 = 2}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = -1}), FAIL);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 2}), FAIL);

    EXPECT_EQ(sim_read_file(LOG_PATH), REFUSALS_LOG);
    EXPECT_THAT(journal(), testing::IsEmpty());
}
