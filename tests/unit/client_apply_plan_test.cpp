/// What `apply` sends, and in which order.

#include "client/apply_plan.h"

#include "tests/unit/support/apply_fixture.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

using apply::known_t;
using apply::person_t;

constexpr config_policy_rule_t limited(int32_t app_id, int32_t minutes) {
    return {app_id, POLICY_ACTION_LIMIT, minutes};
}

constexpr config_policy_rule_t blocked(int32_t app_id) {
    return {app_id, POLICY_ACTION_BLOCK, 0};
}

/// Wednesday.
constexpr int32_t today = 3;

class ClientApplyPlan : public testing::Test {
protected:
    ClientApplyPlan() { household_.limits = true; }

    void want(const std::vector<person_t> &people) { apply::fill(&household_, people); }
    void have(const std::vector<known_t> &people) { apply::fill(&state_, people); }
    void remember(const std::vector<known_t> &people) {
        memory_.exists = memory_.is_complete = true;
        apply::fill(&memory_.applied, people);
    }

    std::string plan() {
        ctl_plan plan = {};
        EXPECT_TRUE(ctl_make_plan({.household = household_,
                                   .memory = memory_,
                                   .state = state_,
                                   .usage = has_usage_ ? &usage_ : nullptr,
                                   .usage_path = "/tmp/usage.json",
                                   .weekday = today,
                                   .was_active = true,
                                   .repair = repair_,
                                   .prune = prune_},
                                  &plan));
        warnings_.clear();
        for (const ctl_line &warning : plan.warnings)
            warnings_ += std::string(warning.text) + "\n";
        is_change_ = plan.is_change;
        return apply::text_of(plan);
    }

    household_t household_ = {};
    ctl_apply_memory memory_ = {};
    ctl_daemon_state state_ = {};
    ctl_daemon_state usage_ = {};
    bool has_usage_ = false;
    bool repair_ = false;
    bool prune_ = false;
    bool is_change_ = false;
    std::string warnings_;
};

TEST_F(ClientApplyPlan, SetsAFreshDaemonUp) {
    want({{.number = 1, .limit = 120, .devices = {0x0A}, .rules = {limited(305, 45), blocked(306)}},
          {.number = 2, .name = "Tom", .enforced = false}});
    EXPECT_EQ(plan(), R"(# Mia: added as person 1
create 1
# Tom: added as person 2
create 2
create -2147483648
add -2147483648 02:00:00:00:00:0A
delete -2147483648
# Mia: device 02:00:00:00:00:0A joins
add 1 02:00:00:00:00:0A
# Mia: limit 2h every day
limit 1 day 0 120
limit 1 day 1 120
limit 1 day 2 120
limit 1 day 3 120
limit 1 day 4 120
limit 1 day 5 120
limit 1 day 6 120
policy 1 (or not)
clear 1
bind 1 1
# Mia: limit enforced
enable 1
# Mia: application 305 45m, application 306 blocked
rules 1 305=45 306=block
)");
    EXPECT_TRUE(is_change_);
    EXPECT_EQ(warnings_, "");
}

TEST_F(ClientApplyPlan, SendsOnlyRulesAgainWhereNothingDiffers) {
    want({{.limit = 120, .devices = {0x0A}, .rules = {limited(305, 45), blocked(306)}}});
    have({{.limit = 120,
           .policy = 9,
           .devices = {0x0A},
           .rules = {blocked(306), limited(305, 45)}}});
    EXPECT_EQ(plan(), "rules 9 305=remove 305=45 306=block\n");
    EXPECT_FALSE(is_change_);
}

TEST_F(ClientApplyPlan, SetsAUsedUpLimitByWayOfABlock) {
    want({{.rules = {limited(305, 45)}}});
    have({{.policy = 9, .rules = {limited(305, 45)}, .apps = {{305, 45}}}});
    EXPECT_EQ(plan(), "rules 9 305=block 305=45\n");
}

TEST_F(ClientApplyPlan, KeepsWhatBelongsTogetherInOneRequestOfTenRules) {
    std::vector<config_policy_rule_t> rules = {blocked(1)};
    for (int32_t app = 2; app <= 7; ++app)
        rules.push_back(limited(app, app));
    want({{.rules = rules}});
    have({{.policy = 9, .rules = rules}});
    EXPECT_EQ(plan(), "rules 9 1=block 2=remove 2=2 3=remove 3=3 4=remove 4=4 5=remove 5=5\n"
                      "rules 9 6=remove 6=6 7=remove 7=7\n");
}

TEST_F(ClientApplyPlan, ChangesAndRemovesRules) {
    want({{.rules = {limited(1, 30), blocked(2), limited(3, 10)}}});
    have({{.policy = 9, .rules = {limited(1, 20), limited(2, 30), limited(3, 10), blocked(4)}}});
    EXPECT_EQ(plan(), "# Mia: application 1 30m, application 2 blocked, application 4 free\n"
                      "rules 9 4=remove 1=remove 1=30 2=block 3=remove 3=10\n");
}

TEST_F(ClientApplyPlan, MovesDevicesOnlyAfterTheyHaveLeft) {
    want({{.devices = {0x0B}}, {.number = 2, .name = "Tom", .devices = {0x0A}}});
    have({{.devices = {0x0A}}, {.number = 2, .devices = {0x0B}}});
    EXPECT_EQ(plan(), R"(# Mia: device 02:00:00:00:00:0A leaves
remove 1 02:00:00:00:00:0A
# Tom: device 02:00:00:00:00:0B leaves
remove 2 02:00:00:00:00:0B
# Mia: device 02:00:00:00:00:0B joins
add 1 02:00:00:00:00:0B
# Tom: device 02:00:00:00:00:0A joins
add 2 02:00:00:00:00:0A
)");
}

TEST_F(ClientApplyPlan, TakesADeviceFromWhoeverElseHasIt) {
    want({{.devices = {0x0A}}});
    have({{.devices = {0x0A}}, {.number = 7, .devices = {0x0A, 0x0B}}});
    EXPECT_EQ(plan(), "# person 7: device 02:00:00:00:00:0A leaves\n"
                      "remove 7 02:00:00:00:00:0A\n");
    EXPECT_EQ(warnings_, "person 7 is not of the household and was left as they are; --prune "
                         "deletes them, with thirty days of history\n");
}

TEST_F(ClientApplyPlan, FreesWhoIsCutOffBeforeADeviceLeaves) {
    want({{.limit = 60}});
    have({{.limit = 60, .used = 60, .blocked = true, .devices = {0x0A}},
          {.number = 7, .limit = 60, .used = 60, .blocked = true}});
    EXPECT_EQ(plan(), R"(disable 1
# Mia: device 02:00:00:00:00:0A leaves
remove 1 02:00:00:00:00:0A
# Mia: limit only counted
)");
}

TEST_F(ClientApplyPlan, CutsOffAgainWhoIsCutOff) {
    want({{.limit = 60, .devices = {0x0A, 0x0B}}});
    have({{.limit = 60, .used = 60, .blocked = true, .devices = {0x0A}}});
    EXPECT_EQ(plan(), R"(create -2147483648
add -2147483648 02:00:00:00:00:0B
delete -2147483648
# Mia: device 02:00:00:00:00:0B joins
add 1 02:00:00:00:00:0B
disable 1
enable 1
)");
}

/// How a limit, its enforcement and the daemon's flag can be out of step.
TEST_F(ClientApplyPlan, BringsEnforcementInStep) {
    struct {
        int32_t used;
        bool enabled;
        bool blocked;
        bool wanted;
        const char *plan;
    } const rows[] = {
        {59, true, false, true, ""},
        {60, true, true, true, "disable 1\nenable 1\n"},
        {60, true, false, true, "# Mia: cut off\ndisable 1\nenable 1\n"},
        {59, true, true, true, "# Mia: no longer cut off\ndisable 1\nenable 1\n"},
        {60, false, true, true, "# Mia: limit enforced\nenable 1\ndisable 1\nenable 1\n"},
        {60, false, false, true, "# Mia: limit enforced\nenable 1\n"},
        {60, false, true, false, "# Mia: no longer cut off\nenable 1\ndisable 1\n"},
        {60, true, true, false, "# Mia: limit only counted\ndisable 1\n"},
        {60, false, false, false, ""},
        {59, true, false, false, "# Mia: limit only counted\ndisable 1\n"},
    };
    for (const auto &row : rows) {
        household_.people.clear();
        state_.people.clear();
        want({{.limit = 60, .enforced = row.wanted, .devices = {0x0A}}});
        have({{.limit = 60,
               .used = row.used,
               .enabled = row.enabled,
               .blocked = row.blocked,
               .devices = {0x0A}}});
        EXPECT_EQ(plan(), row.plan) << row.used << row.enabled << row.blocked << row.wanted;
    }
}

TEST_F(ClientApplyPlan, ChangesLimitsDayByDay) {
    want({{.limit = 120}});
    household_.people[0].weekday_limits[0] = 180;
    household_.people[0].weekday_limits[6] = 180;
    household_.people[0].weekday_limits[today] = 1440;
    have({{.limit = 120}});
    EXPECT_EQ(plan(), "# Mia: limit none Wednesday, 3h Saturday Sunday\n"
                      "limit 1 day 0 180\nlimit 1 day 3 1440\nlimit 1 day 6 180\n");
}

TEST_F(ClientApplyPlan, MendsTodaysOwnLimitByWayOfAnother) {
    want({{.limit = 120}});
    have({{.limit = 120}});
    state_.people[0].limit = 60;
    EXPECT_EQ(plan(), "# Mia: limit 2h today\nlimit 1 day 3 121\nlimit 1 day 3 120\n");
}

TEST_F(ClientApplyPlan, MendsALimitOfAWholeDayToo) {
    want({{.limit = 1440}});
    have({{.limit = 1440}});
    state_.people[0].limit = 60;
    EXPECT_EQ(plan(), "# Mia: limit none today\nlimit 1 day 3 1439\nlimit 1 day 3 1440\n");
}

TEST_F(ClientApplyPlan, DeletesNobodyUnlessTold) {
    have({{.number = 7, .devices = {0x0A}}});
    EXPECT_EQ(plan(), "");
    prune_ = true;
    EXPECT_EQ(plan(), "# person 7: deleted\ndelete 7\n");
    EXPECT_EQ(warnings_, "");
}

TEST_F(ClientApplyPlan, UsesAFreeNumberForAPolicy) {
    want({{.number = 2, .rules = {blocked(9)}},
          {.number = 1, .rules = {blocked(9)}},
          {.number = -4, .rules = {blocked(9)}}});
    have({{.number = 1, .policy = 2, .rules = {blocked(9)}}, {.number = 2}, {.number = -4}});
    EXPECT_EQ(plan(), R"(policy 1 (or not)
clear 1
bind 2 1
policy 3 (or not)
clear 3
bind -4 3
# Mia: application 9 blocked
rules 1 9=block
rules 2 9=block
# Mia: application 9 blocked
rules 3 9=block
)");
}

TEST_F(ClientApplyPlan, ReleasesDevicesThatNobodyHasAnyMore) {
    want({{}});
    have({{}, {.number = INT32_MIN}});
    remember({{.devices = {0x0A}}, {.number = INT32_MIN}});
    EXPECT_TRUE(memory_.devices.add(apply::mac(0x0B)));
    EXPECT_EQ(plan(), R"(create -2147483647
add -2147483647 02:00:00:00:00:0B
add -2147483647 02:00:00:00:00:0A
delete -2147483647
)");
    EXPECT_FALSE(is_change_);
}

TEST_F(ClientApplyPlan, DeletesThePersonOfAnApplyThatDied) {
    have({{.number = INT32_MIN, .devices = {0x0A}}});
    memory_.has_scratch = true;
    memory_.scratch = INT32_MIN;
    EXPECT_EQ(plan(), "delete -2147483648\n");
    EXPECT_EQ(warnings_, "");
}

TEST_F(ClientApplyPlan, JoinsAnewADeviceThatSomebodyElseHasMoved) {
    want({{.devices = {0x0A}}, {.number = 2, .name = "Tom"}});
    have({{.devices = {0x0A}}, {.number = 2}});
    remember({{}, {.number = 2, .devices = {0x0A}}});
    EXPECT_EQ(plan(), "remove 1 02:00:00:00:00:0A\nadd 1 02:00:00:00:00:0A\n");
    EXPECT_FALSE(is_change_);
}

TEST_F(ClientApplyPlan, ReleasesPeopleWhomTheDaemonHasLost) {
    want({{.devices = {0x0A}}, {.number = 2, .name = "Tom", .enforced = false}});
    remember({{.devices = {0x0A}},
              {.number = 2, .enabled = false},
              {.number = 3, .devices = {0x0B}},
              {.number = 4, .enabled = false}});
    EXPECT_EQ(plan(), R"(# Mia: added as person 1
create 1
# Tom: added as person 2
create 2
create -2147483648
add -2147483648 02:00:00:00:00:0A
add -2147483648 02:00:00:00:00:0B
delete -2147483648
# Mia: device 02:00:00:00:00:0A joins
add 1 02:00:00:00:00:0A
create 3
enable 3
enable 1
import used_up
import as_it_was
disable 3
disable 1
delete 3
# Mia: limit enforced
enable 1
)");
}

TEST_F(ClientApplyPlan, GoesOnReleasingWhereAnApplyDied) {
    want({{.limit = 60, .devices = {0x0A}},
          {.number = 2, .name = "Tom", .limit = 60, .devices = {0x0B}}});
    have({{.limit = 60, .used = 31, .extend = 30, .devices = {0x0A}},
          {.number = 2, .limit = 60, .used = 30, .extend = 30, .devices = {0x0B}}});
    EXPECT_TRUE(memory_.release.add(1) && memory_.release.add(2) && memory_.release.add(3));
    EXPECT_EQ(plan(), R"(create 3
disable 1
limit 1 day 3 1
enable 1
disable 1
enable 3
import used_up
import as_it_was
disable 3
disable 2
delete 3
limit 1 day 3 60
enable 1
enable 2
)");
    EXPECT_FALSE(is_change_);
}

TEST_F(ClientApplyPlan, TellsThatWhoIsDeletedIsFree) {
    prune_ = true;
    have({{.number = 7, .limit = 60, .used = 60, .blocked = true}});
    EXPECT_EQ(plan(), R"(# person 7: deleted
enable 7
disable 7
delete 7
)");
}

/// Also whom the daemon does not know to be cut off.
TEST_F(ClientApplyPlan, TellsThatWhoIsDeletedIsFreeWhateverTheDaemonKnows) {
    repair_ = prune_ = true;
    have({{.number = 7, .devices = {0x0A}}});
    EXPECT_EQ(plan(), R"(# person 7: deleted
delete 7
create 7
enable 7
import used_up
import as_it_was
disable 7
delete 7
)");
}

TEST_F(ClientApplyPlan, LetsALimitWaitForADevice) {
    want({{.limit = 60}});
    have({{.limit = 60, .used = 60}});
    EXPECT_EQ(plan(), "");
}

TEST_F(ClientApplyPlan, RepairsEverybody) {
    repair_ = true;
    want({{.limit = 60, .devices = {0x0A}, .rules = {blocked(9)}},
          {.number = 2, .name = "Tom", .limit = 60, .devices = {0x0B}}});
    have({{.limit = 60,
           .used = 60,
           .blocked = true,
           .policy = 4,
           .devices = {0x0A},
           .rules = {blocked(9)}},
          {.number = 2, .limit = 60, .devices = {0x0B}}});
    remember({{.number = 3}, {.number = 4, .enabled = false}});
    EXPECT_EQ(plan(), R"(remove 2 02:00:00:00:00:0B
add 2 02:00:00:00:00:0B
clear 4
create 3
create 4
disable 1
enable 3
enable 4
import used_up
import as_it_was
disable 3
disable 4
disable 2
delete 3
delete 4
enable 1
enable 2
rules 4 9=block
)");
    EXPECT_FALSE(is_change_);
}

TEST_F(ClientApplyPlan, RestoresBeforeAnyRuleIsBound) {
    has_usage_ = true;
    want({{.limit = 60, .rules = {blocked(9)}}, {.number = 2, .name = "Tom"}});
    have({{.limit = 60, .policy = 4, .rules = {blocked(9)}}, {.number = 2, .extend = 30}});
    apply::fill(&usage_, {{.used = 70, .extend = 800}, {.number = 2, .extend = 20}, {.number = 5}});
    usage_.is_of_today = true;
    EXPECT_EQ(plan(), R"(clear 4
# Mia: bonus 13h20m
bonus 1 360
bonus 1 360
bonus 1 80
# usage restored from /tmp/usage.json
import usage
rules 4 9=block
)");
    EXPECT_EQ(warnings_, "person 5 comes from the usage file and is not of the household; --prune "
                         "deletes them\n");
    prune_ = true;
    usage_.is_of_today = false;
    EXPECT_EQ(plan(), R"(clear 4
# usage restored from /tmp/usage.json
import usage
# person 5: deleted, with what the usage file has of them
delete 5
rules 4 9=block
)");
}

TEST_F(ClientApplyPlan, GivesNoMoreThanADayOfBonus) {
    has_usage_ = true;
    want({{}});
    have({{}});
    apply::fill(&usage_, {{.extend = INT32_MAX}});
    usage_.is_of_today = true;
    EXPECT_EQ(plan(), R"(# Mia: bonus 24h
bonus 1 360
bonus 1 360
bonus 1 360
bonus 1 360
# usage restored from /tmp/usage.json
import usage
)");
}

TEST_F(ClientApplyPlan, SwitchesOffLast) {
    want({{.rules = {blocked(9)}}});
    have({{.policy = 4}});
    household_.limits = false;
    EXPECT_EQ(plan(), "# Mia: application 9 blocked\nrules 4 9=block\n"
                      "# limits are switched off\noff\n");
}

TEST_F(ClientApplyPlan, CutsALongLine) {
    std::vector<config_policy_rule_t> rules;
    for (int32_t app = 1; app <= 20; ++app)
        rules.push_back(blocked(app));
    want({{.rules = rules}});
    have({{.policy = 4}});
    const std::string text = plan();
    const std::string line = text.substr(0, text.find('\n'));
    EXPECT_TRUE(line.starts_with("# Mia: application 1 blocked, application 2 blocked,")) << line;
    EXPECT_TRUE(line.ends_with(" blocked and more")) << line;
}

} // namespace
