/// What the daemon has, as read from its exports and asked from its getters.

#include "client/daemon_state.h"

#include "tests/unit/support/apply_fixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>

namespace {

class ClientDaemonState : public testing::Test {
protected:
    static void read(const std::string &text, ctl_daemon_state *state) {
        const json_ptr root(json_tokener_parse(text.c_str()));
        ASSERT_NE(root, nullptr) << text;
        ASSERT_TRUE(ctl_state_read(root.get(), state));
    }

    /// Reads a file of one person with these members.
    static void read_person(const std::string &members, ctl_daemon_state *state) {
        read("{\"user_profile_list\":[{\"user_profile_id\":3" + members + "}],\"global_stat\":[]}",
             state);
    }
};

TEST_F(ClientDaemonState, ReadsEverythingOfAPerson) {
    ctl_daemon_state state = {};
    read_person(R"(,"mon":10,"tues":11,"wed":12,"thur":13,"fri":14,"sat":15,"sun":16,)"
                R"("daily_extend":30,"daily_used":5,"weekly_used":0,"monthly_used":0,"blocked":1,)"
                R"("app_stat_list":[{"app_id":305,"daily_used":4,"weekly_used":0,)"
                R"("monthly_used":0}],"device_list":["02:00:00:00:00:0A","nonsense"],)"
                R"("app_policy":{"app_policy_id":9,"app_list":[{"app_id":305,"action":1,)"
                R"("daily_limit":45}]})",
                &state);
    EXPECT_TRUE(state.active);
    EXPECT_TRUE(state.has_counted);
    ASSERT_EQ(state.people.size(), 1U);
    const ctl_daemon_person &person = state.people[0];
    EXPECT_EQ(person.number, 3);
    for (int32_t day = 0; day < days_per_week; ++day)
        EXPECT_EQ(person.weekday_limits[day], 10 + day);
    EXPECT_EQ(person.extend, 30);
    EXPECT_EQ(person.used, 5);
    EXPECT_TRUE(person.blocked);
    EXPECT_EQ(person.policy, 9);
    EXPECT_EQ(person.devices.count, 1U);
    EXPECT_TRUE(ctl_state_has_device(state, person, apply::mac(0x0A)));
    ASSERT_EQ(state.rules.size(), 1U);
    EXPECT_EQ(state.rules[0].daily_limit, 45);
    ASSERT_EQ(state.apps.size(), 1U);
    EXPECT_EQ(state.apps[0].minutes, 4);
}

TEST_F(ClientDaemonState, KnowsWhetherAnybodyHasCounted) {
    const std::pair<const char *, bool> people[] = {
        {"", false},
        {",\"daily_used\":0", false},
        {",\"daily_used\":1", true},
        {",\"weekly_used\":1", true},
        {",\"monthly_used\":1", true},
        {R"(,"app_stat_list":[{"app_id":1,"daily_used":0,"weekly_used":0,"monthly_used":0}])",
         false},
        {R"(,"app_stat_list":[{"app_id":1,"daily_used":0,"weekly_used":1,"monthly_used":0}])",
         true},
        {R"(,"app_stat_list":[{"app_id":1,"daily_used":0,"weekly_used":0,"monthly_used":0,)"
         R"("next_day_idx":1,"prev_30_days":[7,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,)"
         R"(0,0,0,0,0]}])",
         true},
    };
    for (const auto &[members, has_counted] : people) {
        ctl_daemon_state state = {};
        read_person(members, &state);
        EXPECT_EQ(state.has_counted, has_counted) << members;
    }
    ctl_daemon_state router = {};
    read(R"({"user_profile_list":[],"global_stat":[{"app_id":1,"daily_used":7,"weekly_used":0,)"
         R"("monthly_used":0}]})",
         &router);
    EXPECT_FALSE(router.has_counted);
}

TEST_F(ClientDaemonState, TakesOddMembersForMissingOnes) {
    for (const char *value : {"null", "7", "\"x\"", "{}", "true", "[null,7,\"x\",[],{}]"}) {
        ctl_daemon_state state = {};
        read_person(",\"app_stat_list\":" + std::string(value) + ",\"device_list\":" + value +
                        ",\"app_policy\":" + value,
                    &state);
        ASSERT_EQ(state.people.size(), 1U) << value;
        EXPECT_EQ(state.people[0].devices.count, 0U) << value;
        EXPECT_EQ(state.people[0].rules.count, 0U) << value;
        EXPECT_EQ(state.people[0].policy, 0) << value;
    }
}

TEST_F(ClientDaemonState, SaysWhyAFileIsNoUsageFile) {
    const std::pair<std::string, const char *> texts[] = {
        {"", "it is not JSON, is cut off, or is nested deeper than 32"},
        {"[]", "it is not a JSON object"},
        {"{}", "it has no user_profile_list"},
        {"{\"user_profile_list\":[]}", "it has no global_stat"},
        {"[" + std::string(2 * 1024 * 1024, ' ') + "]", "it is larger than 2 MiB"},
    };
    for (const auto &[text, reason] : texts) {
        std::ofstream("/tmp/state.json") << text;
        const char *objection = nullptr;
        EXPECT_EQ(ctl_usage_file_open("/tmp/state.json", &objection), nullptr);
        EXPECT_STREQ(objection, reason);
    }
    const char *objection = nullptr;
    EXPECT_EQ(ctl_usage_file_open("/tmp/state.none", &objection), nullptr);
    EXPECT_STREQ(objection, "No such file or directory");
    EXPECT_EQ(ctl_usage_file_open("/tmp", &objection), nullptr);
    EXPECT_STREQ(objection, "it is not a regular file");
    std::ofstream("/tmp/state.json") << "{\"user_profile_list\":[],\"global_stat\":[]}";
    EXPECT_NE(ctl_usage_file_open("/tmp/state.json", &objection), nullptr);
    EXPECT_EQ(objection, nullptr);
}

} // namespace
