/// The last minutes of a Saturday and the first of a Sunday: limits, a bonus, and a new day.

#include "tests/daemon/support/fixture.h"

#include <filesystem>

namespace {

/// 2030-01-05 23:50:00.
constexpr time_t TEN_TO_MIDNIGHT = 1893887400;
constexpr time_t at(int minutes) {
    return TEN_TO_MIDNIGHT + minutes * 60;
}

/// Mia watches videos until she is stopped, and is online in between.
constexpr char SCENARIO[] = R"(date 2030-01-05
person mia 1 Mia
device tablet mia 02:00:00:00:00:01 Tablet
app video 305 Video
use tablet video 23:30 +1 00:30
online tablet 23:30 +1 00:30
)";

class DaemonMidnight : public daemon_test {
protected:
    void SetUp() override {
        daemon_test::SetUp();
        start_time = TEN_TO_MIDNIGHT;
        prescribe("scenario", SCENARIO);
        std::filesystem::create_directory("/tmp/ApplicationData");
        start();
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_device_command(UTM_APP_CONFIG_ADD_DEVICE, 1,
                                         sim_parse_mac("02:00:00:00:00:01"))),
                  0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = 1, .arg2 = 1}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = 1, .arg3 = 6}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = 1}), 0);
        EXPECT_EQ(ask(sim_rules_command(1, {{305, 1, 3}})), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = 1, .arg1 = 1}), 0);
        EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1}), 0);
        journal_start = journal().size();
    }
    text_lines journal_since_the_start() const {
        const text_lines all = journal();
        return text_lines(all.begin() + static_cast<long>(journal_start), all.end());
    }
    size_t journal_start = 0;
};

/// What a tick `minutes` after the start sends to the router, around what it decides.
void expect_tick(text_lines *lines, int minutes, const text_lines &before_query = {},
                 const text_lines &after_query = {}) {
    lines->insert(lines->end(), before_query.begin(), before_query.end());
    lines->push_back(device_query(at(minutes - 1), at(minutes), "020000000001 "));
    lines->insert(lines->end(), after_query.begin(), after_query.end());
    lines->push_back(router_query(at(minutes - 1), at(minutes)));
}

text_lines expected_journal() {
    text_lines lines;
    expect_tick(&lines, 1);
    expect_tick(&lines, 2);
    expect_tick(&lines, 3, {}, {"lcsh apg acl set 02:00:00:00:00:01 305 0 18"});
    expect_tick(&lines, 4);
    expect_tick(&lines, 5);
    expect_tick(&lines, 6, {}, {"notify block profile 1"});
    lines.push_back("notify unblock profile 1"); // the bonus
    expect_tick(&lines, 7);
    expect_tick(&lines, 8, {}, {"notify block profile 1"});
    expect_tick(&lines, 9);
    expect_tick(&lines, 10,
                {"notify unblock profile 1", "notify unblock profile 1",
                 "lcsh apg acl del 02:00:00:00:00:01 305 0"});
    expect_tick(&lines, 11);
    expect_tick(&lines, 12, {}, {"lcsh apg acl set 02:00:00:00:00:01 305 0 18"});
    return lines;
}

constexpr char EXPECTED_LOG[] = R"(Block app 305 for profile 1 because 3 exceed 3
Block profile 1 to use network because 6 exceed 6
send event: block profile 1 to use network
[socket] Receive cmd type=32
send event: unblock profile 1 to use network
Add extend 2 to profile 1, now 2
Block profile 1 to use network because 8 exceed 8
send event: block profile 1 to use network
send event: unblock profile 1 to use network
send event: unblock profile 1 to use network
Block app 305 for profile 1 because 3 exceed 3
)";

utm_app_config_reply first_reply(const utm_app_config_cmd &request) {
    const sim_answer answer = sim_ask(request);
    EXPECT_FALSE(answer.replies.empty());
    return answer.replies.empty() ? utm_app_config_reply{} : answer.replies.front();
}

} // namespace

TEST_F(DaemonMidnight, AnEveningIsLimitedToTheMinuteAndANewDayStartsAfresh) {
    tick(6);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 1, .arg4 = 2}), 0);
    tick(6);

    EXPECT_EQ(journal_since_the_start(), expected_journal());
    EXPECT_EQ(sim_read_file(LOG_PATH), EXPECTED_LOG);
}

TEST_F(DaemonMidnight, TheNewWeekTakesSaturdayIntoTheMonth) {
    tick(12);

    const auto usage = first_reply({.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = 1});
    EXPECT_EQ(usage.daily_used, 3) << "the first three minutes of Sunday's queries";
    EXPECT_EQ(usage.weekly_used, 0);
    EXPECT_EQ(usage.monthly_used, 6);
    const auto app =
        first_reply({.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = 1, .arg1 = 1}); // yesterday
    EXPECT_EQ(app.app_usage_app_id, 305);
    EXPECT_EQ(app.app_usage_value, 3);
}

TEST_F(DaemonMidnight, TheBonusEndsWithItsDay) {
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 1, .arg4 = 2}), 0);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, .arg0 = 1, .arg3 = 90}), 0);

    tick(10);

    EXPECT_EQ(first_reply({.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = 1}).extend, 0);
    EXPECT_EQ(first_reply({.type = UTM_APP_CONFIG_GET_DAILY_LIMIT, .arg0 = 1}).daily_limit, 90)
        << "Sunday's own limit";
}

TEST_F(DaemonMidnight, MidnightIsTheLocalOne) {
    stop();
    options.time_zone = "EAST-1"; // an hour ahead: ten to one there, midnight is over
    ASSERT_TRUE(sim_daemon_start(&daemon, options));
    ASSERT_TRUE(sim_clock_wait_asleep(clock));
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = 1}), 0);
    EXPECT_EQ(ask({.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 1, .arg4 = 2}), 0);

    tick(12);

    EXPECT_EQ(first_reply({.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = 1}).extend, 2);
}
