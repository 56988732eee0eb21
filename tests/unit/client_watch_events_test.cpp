#include "client/watch_events.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

constexpr int64_t noon = 1'893'499'200; // 2030-01-01 12:00 UTC
constexpr int64_t day_s = 86'400;

household_name_t name_of(const std::string &text) {
    household_name_t name = {};
    strcpy(name.text, text.c_str());
    return name;
}

struct seen_rule {
    int32_t app_id;
    bool blocked;
};

struct seen_mia {
    int32_t number = 1;
    int32_t used = 0;
    int32_t limit = 120;
    int32_t extend = 0;
    bool enabled = true;
    bool is_known = true;
    std::vector<seen_rule> rules = {};
};

/// A household that is looked at again and again; each look has what its events are called.
class ClientWatchEvents : public testing::Test {
protected:
    void SetUp() override {
        const char *zone = getenv("TZ");
        zone_ = zone == nullptr ? "" : zone;
        set_zone("UTC0");
    }
    void TearDown() override { set_zone(zone_.c_str()); }

    static void set_zone(const char *zone) {
        setenv("TZ", zone, 1);
        tzset();
    }

    /// @return the sentences of what has changed, a line each
    std::string look_at_all(const std::vector<seen_mia> &people) {
        ctl_look *next = looks_.next();
        next->is_there = true;
        next->limits_on = limits_on_;
        next->time = now_;
        for (const seen_mia &mia : people)
            add(next, mia);
        return settle();
    }
    std::string look(const seen_mia &mia) { return look_at_all({mia}); }

    std::string look_in_vain() {
        looks_.next()->time = now_;
        return settle();
    }

    bool limits_on_ = true;
    bool all_ = false;
    int64_t now_ = noon;

private:
    void add(ctl_look *next, const seen_mia &mia) {
        ctl_seen_person person = {};
        person.name = name_of(mia.number == 1 ? "Mia" : "Person " + std::to_string(mia.number));
        person.is = {mia.number, mia.is_known, limits_on_,      mia.enabled,
                     mia.limit,  mia.extend,   {mia.used, 0, 0}};
        person.apps = {next->apps.size(), mia.rules.size()};
        for (const seen_rule &rule : mia.rules)
            ASSERT_TRUE(
                next->apps.add({name_of("app " + std::to_string(rule.app_id)),
                                {{rule.app_id, POLICY_ACTION_LIMIT, 45}, 0, rule.blocked}}));
        ASSERT_TRUE(next->people.add(person));
    }

    std::string settle() {
        ctl_events events;
        EXPECT_TRUE(looks_.settle(all_, &events));
        std::string lines;
        for (const ctl_event &event : events) {
            EXPECT_EQ(event.time, now_);
            lines += std::string(ctl_event_word(event.kind)) + ": " +
                     ctl_event_sentence(event).text + "\n";
        }
        return lines;
    }

    ctl_looks looks_;
    std::string zone_;
};

TEST_F(ClientWatchEvents, HaveNothingToSayOfTheFirstLookNorOfAnEqualOne) {
    const seen_mia mia = {.used = 120, .rules = {{305, true}}};
    EXPECT_EQ(look(mia), "");
    EXPECT_EQ(look(mia), "");
}

TEST_F(ClientWatchEvents, TellEverythingThatIsWhenAskedTo) {
    all_ = true;
    EXPECT_EQ(look_at_all({{.used = 120, .rules = {{305, true}, {306, false}}},
                           {.number = 2, .used = 7, .limit = 1440},
                           {.number = 3, .is_known = false}}),
              "back: the daemon answers\n"
              "limits-on: limits are on\n"
              "added: Mia is in the household file now\n"
              "cut-off: Mia is cut off: 2h used\n"
              "blocked: app 305 is blocked for Mia\n"
              "released: app 306 is released for Mia\n"
              "used: Mia has used 2h, 0m left\n"
              "added: Person 2 is in the household file now\n"
              "let-in: Person 2 is let in again\n"
              "used: Person 2 has used 7m\n"
              "added: Person 3 is in the household file now\n"
              "let-in: Person 3 is let in again\n"
              "used: Person 3 is unknown to the daemon\n");
    limits_on_ = false;
    EXPECT_EQ(look_at_all({{.number = 2, .used = 7, .limit = 1440}}),
              "limits-off: limits are off\n"
              "used: Person 2 has used 7m\n"
              "free: app 305 has no rule for Mia\n"
              "free: app 306 has no rule for Mia\n"
              "removed: Mia is no longer in the household file\n"
              "removed: Person 3 is no longer in the household file\n");
}

TEST_F(ClientWatchEvents, TellOfRulesThatComeAndGoWhenAskedTo) {
    EXPECT_EQ(look({.used = 7, .rules = {{305, true}, {306, false}}}), "");
    all_ = true;
    EXPECT_EQ(look({.used = 7, .rules = {{307, false}, {308, true}}}),
              "released: app 307 is released for Mia\n"
              "blocked: app 308 is blocked for Mia\n"
              "released: app 305 is released for Mia\n"
              "free: app 305 has no rule for Mia\n"
              "free: app 306 has no rule for Mia\n");
}

TEST_F(ClientWatchEvents, TellEachUsedMinuteOnlyWhenAskedTo) {
    EXPECT_EQ(look({.used = 10}) + look({.used = 11}), "");
    all_ = true;
    EXPECT_EQ(look({.used = 12}), "used: Mia has used 12m, 1h48m left\n");
    EXPECT_EQ(look({.used = 12}), "");
    EXPECT_EQ(look({.used = 12, .extend = 30}), "used: Mia has used 12m, 2h18m left\n");
    EXPECT_EQ(look({.used = 12, .extend = 30, .enabled = false}), "used: Mia has used 12m\n");
}

TEST_F(ClientWatchEvents, CountDownOnce) {
    EXPECT_EQ(look({.used = 104}), "");
    EXPECT_EQ(look({.used = 105}), "left: Mia has 15m left\n");
    EXPECT_EQ(look({.used = 106}) + look({.used = 114}), "");
    EXPECT_EQ(look({.used = 115}), "left: Mia has 5m left\n");
    EXPECT_EQ(look({.used = 119}), "");
    EXPECT_EQ(look({.used = 120}), "cut-off: Mia is cut off: 2h used\n");
    EXPECT_EQ(look({.used = 121}), "");
}

TEST_F(ClientWatchEvents, TellOnceThatBothTimesWereCrossedInOneStep) {
    EXPECT_EQ(look({.used = 100}), "");
    EXPECT_EQ(look({.used = 117}), "left: Mia has 3m left\n");
    EXPECT_EQ(look({.used = 118}), "");
}

TEST_F(ClientWatchEvents, SayNothingOfMinutesLeftWhenNoneAre) {
    EXPECT_EQ(look({.used = 100}), "");
    EXPECT_EQ(look({.used = 130}), "cut-off: Mia is cut off: 2h10m used\n");
}

TEST_F(ClientWatchEvents, CountDownAgainAfterABonusThatLeadsAbove) {
    EXPECT_EQ(look({.used = 100}), "");
    EXPECT_EQ(look({.used = 120}), "cut-off: Mia is cut off: 2h used\n");
    EXPECT_EQ(look({.used = 120, .extend = 30}), "let-in: Mia is let in again: 30m left\n");
    EXPECT_EQ(look({.used = 135, .extend = 30}), "left: Mia has 15m left\n");
    // Above five minutes only: fifteen are not told again.
    EXPECT_EQ(look({.used = 146, .extend = 30}), "left: Mia has 4m left\n");
    EXPECT_EQ(look({.used = 146, .extend = 36}), "");
    EXPECT_EQ(look({.used = 177, .extend = 60}), "left: Mia has 3m left\n");
}

TEST_F(ClientWatchEvents, FollowALimitThatIsMoved) {
    EXPECT_EQ(look({.used = 60}), "");
    EXPECT_EQ(look({.used = 60, .limit = 70}), "left: Mia has 10m left\n");
    EXPECT_EQ(look({.used = 60, .limit = 60}), "cut-off: Mia is cut off: 1h used\n");
    EXPECT_EQ(look({.used = 60, .limit = 90}), "let-in: Mia is let in again: 30m left\n");
    EXPECT_EQ(look({.used = 60, .limit = 75}), "left: Mia has 15m left\n");
    EXPECT_EQ(look({.used = 60, .limit = 30, .enabled = false}), "");
    EXPECT_EQ(look({.used = 60, .limit = 30}), "cut-off: Mia is cut off: 1h used\n");
    EXPECT_EQ(look({.used = 60, .limit = 30, .enabled = false}), "let-in: Mia is let in again\n");
}

TEST_F(ClientWatchEvents, LeaveAWholeDayOutOfTheCountdown) {
    EXPECT_EQ(look({.used = 1400, .limit = 1440}) + look({.used = 1430, .limit = 1440}), "");
}

TEST_F(ClientWatchEvents, BeginANewDay) {
    now_ = noon + day_s / 2 - 1; // 23:59:59
    EXPECT_EQ(look({.used = 120, .rules = {{305, true}, {306, true}}}), "");
    now_ += 1;
    // The daemon lets people in at its first minute of the day, which may be a look later.
    EXPECT_EQ(look({.used = 120, .rules = {{305, true}, {306, true}}}),
              "new-day: a new day begins\n");
    now_ += 10;
    EXPECT_EQ(look({.used = 0, .rules = {{305, false}, {306, true}}}),
              "let-in: Mia is let in again: 2h left\n"
              "released: app 305 is released for Mia\n");
    EXPECT_EQ(look({.used = 105, .rules = {{305, false}, {306, true}}}),
              "left: Mia has 15m left\n");
}

TEST_F(ClientWatchEvents, CountAShortDayDownFromItsBeginning) {
    EXPECT_EQ(look({.used = 120}), "");
    now_ += day_s;
    EXPECT_EQ(look({.used = 0, .limit = 10}),
              "new-day: a new day begins\nlet-in: Mia is let in again: 10m left\n");
    EXPECT_EQ(look({.used = 5, .limit = 10}), "left: Mia has 5m left\n");
}

TEST_F(ClientWatchEvents, TakeTheDayFromTheLocalClock) {
    set_zone("CET-1");
    now_ = noon + day_s / 2 - 3601; // 23:59:59 in Central Europe
    EXPECT_EQ(look_at_all({}), "");
    now_ += 1;
    EXPECT_EQ(look_at_all({}), "new-day: a new day begins\n");
}

TEST_F(ClientWatchEvents, FollowAClockThatJumps) {
    now_ = 100; // a router that does not know the time yet
    EXPECT_EQ(look({.used = 3}), "");
    now_ = noon;
    EXPECT_EQ(look({.used = 0}), "new-day: a new day begins\n");
    now_ += 365 * day_s; // the same day of another year
    EXPECT_EQ(look({.used = 0}), "new-day: a new day begins\n");
    now_ -= 3600;
    EXPECT_EQ(look({.used = 0}), "");
    now_ -= day_s;
    EXPECT_EQ(look({.used = 0}), "new-day: a new day begins\n");
}

TEST_F(ClientWatchEvents, FollowTheSwitch) {
    EXPECT_EQ(look({.used = 110, .limit = 100, .rules = {{305, true}}}), "");
    limits_on_ = false;
    EXPECT_EQ(look({.used = 110, .limit = 100, .rules = {{305, false}}}),
              "limits-off: limits are off\n"
              "let-in: Mia is let in again\n"
              "released: app 305 is released for Mia\n");
    EXPECT_EQ(look({.used = 110, .rules = {{305, false}}}), "");
    limits_on_ = true;
    EXPECT_EQ(look({.used = 110, .limit = 110, .rules = {{305, true}}}),
              "limits-on: limits are on\n"
              "cut-off: Mia is cut off: 1h50m used\n"
              "blocked: app 305 is blocked for Mia\n");
}

TEST_F(ClientWatchEvents, CountDownWhatBeganToHold) {
    limits_on_ = false;
    EXPECT_EQ(look({.used = 110}), "");
    limits_on_ = true;
    EXPECT_EQ(look({.used = 110}), "limits-on: limits are on\nleft: Mia has 10m left\n");
}

TEST_F(ClientWatchEvents, MissTheDaemonAndTakeUpWhereItWasLeft) {
    EXPECT_EQ(look({.used = 100, .rules = {{305, false}}}), "");
    EXPECT_EQ(look_in_vain(), "gone: the daemon does not answer\n");
    EXPECT_EQ(look_in_vain(), "");
    EXPECT_EQ(look({.used = 110, .rules = {{305, true}}}), "back: the daemon answers\n"
                                                           "left: Mia has 10m left\n"
                                                           "blocked: app 305 is blocked for Mia\n");
}

TEST_F(ClientWatchEvents, SayAtOnceThatTheDaemonIsMissing) {
    EXPECT_EQ(look_in_vain(), "gone: the daemon does not answer\n");
    EXPECT_EQ(look_in_vain(), "");
    EXPECT_EQ(look({.used = 120}), "back: the daemon answers\n");
    EXPECT_EQ(look({.used = 120, .extend = 5}), "let-in: Mia is let in again: 5m left\n");
}

TEST_F(ClientWatchEvents, TellEverythingOnceAMissingDaemonIsThere) {
    all_ = true;
    EXPECT_EQ(look_in_vain(), "gone: the daemon does not answer\n");
    EXPECT_EQ(look({.used = 7}), "back: the daemon answers\n"
                                 "limits-on: limits are on\n"
                                 "added: Mia is in the household file now\n"
                                 "let-in: Mia is let in again: 1h53m left\n"
                                 "used: Mia has used 7m, 1h53m left\n");
}

TEST_F(ClientWatchEvents, KnowTheDayWithoutADaemon) {
    EXPECT_EQ(look({.used = 120}), "");
    EXPECT_EQ(look_in_vain(), "gone: the daemon does not answer\n");
    now_ += day_s;
    EXPECT_EQ(look_in_vain(), "new-day: a new day begins\n");
    EXPECT_EQ(look({.used = 0}),
              "back: the daemon answers\nlet-in: Mia is let in again: 2h left\n");
}

TEST_F(ClientWatchEvents, FollowARestartThatLosesEverythingAndBringsItBack) {
    EXPECT_EQ(look({.used = 110, .rules = {{305, true}}}), "");
    limits_on_ = false;
    EXPECT_EQ(look({.is_known = false}),
              "limits-off: limits are off\nreleased: app 305 is released for Mia\n");
    limits_on_ = true;
    // What they were told before the restart they are not told again.
    EXPECT_EQ(look({.used = 110, .rules = {{305, true}}}),
              "limits-on: limits are on\nblocked: app 305 is blocked for Mia\n");
    EXPECT_EQ(look({.used = 115, .rules = {{305, true}}}), "left: Mia has 5m left\n");
}

TEST_F(ClientWatchEvents, LetInWhomTheDaemonHasForgotten) {
    EXPECT_EQ(look({.used = 120}), "");
    EXPECT_EQ(look({.is_known = false}), "let-in: Mia is let in again\n");
    EXPECT_EQ(look({.used = 0}), "");
    EXPECT_EQ(look({.used = 120}), "cut-off: Mia is cut off: 2h used\n");
}

TEST_F(ClientWatchEvents, FollowTheHousehold) {
    EXPECT_EQ(look_at_all({{.used = 110}}), "");
    // A newcomer's state is no change.
    EXPECT_EQ(look_at_all({{.number = 2, .used = 120, .rules = {{305, true}}}, {.used = 110}}),
              "added: Person 2 is in the household file now\n");
    EXPECT_EQ(look_at_all({{.number = 2, .used = 120, .rules = {{306, true}}}}),
              "blocked: app 306 is blocked for Person 2\n"
              "released: app 305 is released for Person 2\n"
              "removed: Mia is no longer in the household file\n");
    EXPECT_EQ(look({.used = 110}), "added: Mia is in the household file now\n"
                                   "removed: Person 2 is no longer in the household file\n");
}

TEST_F(ClientWatchEvents, TellWhatANewcomerIsWhenAskedTo) {
    EXPECT_EQ(look_at_all({}), "");
    all_ = true;
    EXPECT_EQ(look({.used = 120, .rules = {{305, true}}}),
              "added: Mia is in the household file now\n"
              "cut-off: Mia is cut off: 2h used\n"
              "blocked: app 305 is blocked for Mia\n"
              "used: Mia has used 2h, 0m left\n");
}

TEST_F(ClientWatchEvents, ComePersonByPersonInTheHouseholdsOrder) {
    EXPECT_EQ(look_at_all({{.used = 100}, {.number = 2, .used = 100}}), "");
    EXPECT_EQ(look_at_all({{.number = 2, .used = 120}, {.used = 120, .rules = {{305, true}}}}),
              "cut-off: Person 2 is cut off: 2h used\n"
              "cut-off: Mia is cut off: 2h used\n"
              "blocked: app 305 is blocked for Mia\n");
}

TEST_F(ClientWatchEvents, ReadWholeWithTheLongestNames) {
    ctl_event event = {};
    memset(event.person.name.text, 'x', household_name_size - 1);
    memset(event.app.name.text, 'y', household_name_size - 1);
    event.kind = ctl_event_kind::released;
    EXPECT_EQ(ctl_event_sentence(event).text, std::string(household_name_size - 1, 'y') +
                                                  " is released for " +
                                                  std::string(household_name_size - 1, 'x'));
}

} // namespace
