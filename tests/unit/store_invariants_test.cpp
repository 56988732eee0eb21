#include "core/owners.h"
#include "tests/lib/invariants.h"
#include "tests/lib/world.h"
#include "usage/top_apps.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <utility>

namespace {

/// What the checks of the store find: each case breaks one thing in a store that is whole.
class StoreInvariants : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        profile_ = world::make_profile(7, {world::tablet, world::phone});
        other_ = world::make_profile(8, {world::tablet});
        world::make_usage(profile_, {{12, 5}, {13, 90}});
        policy_ = world::make_policy(
            4, {{12, POLICY_ACTION_BLOCK, 0}, {14, POLICY_ACTION_LIMIT, 9}}, profile_);
        unbound_ =
            world::make_policy(5, {{12, POLICY_ACTION_LIMIT, 30}, {13, POLICY_ACTION_LIMIT, 30}});
        const mutex_guard lock(utm_app_config_mutex);
        static_cast<void>(utm_app_global_app_stat_add(12, 3, nullptr));
        usage_ = utm_app_find_app_usage(&profile_->app_stat_list, 12);
        router_ = utm_app_find_app_usage(&utm_app_config_global_app_stat_list, 12);
        rule_ = utm_app_find_policy_app(policy_, 12);
        unbound_rule_ = utm_app_find_policy_app(unbound_, 12);
    }

    template <typename Value>
    std::string with(Value *place, Value value, memory_t memory = memory_t::enough) {
        const Value before = std::exchange(*place, value);
        std::string found = check_store_invariants(memory);
        *place = before;
        EXPECT_EQ(check_store_invariants(), "");
        return found;
    }

    config_user_profile_t *profile_ = nullptr;
    config_user_profile_t *other_ = nullptr;
    config_app_policy_t *policy_ = nullptr;
    config_app_policy_t *unbound_ = nullptr;
    config_app_usage_t *usage_ = nullptr;
    config_app_usage_t *router_ = nullptr;
    config_policy_app_t *rule_ = nullptr;
    config_policy_app_t *unbound_rule_ = nullptr;
};

TEST_F(StoreInvariants, HoldInAWholeStore) {
    EXPECT_EQ(check_store_invariants(), "");
}

TEST_F(StoreInvariants, BreakWithALink) {
    config_list_node_t stray = {&stray, &stray};
    EXPECT_EQ(with<config_list_node_t *>(&profile_->link.next, nullptr),
              "store 0: the list of profiles is broken");
    EXPECT_EQ(with(&policy_->link.next, &stray), "store 0: the list of policies is broken");
    EXPECT_EQ(with(&router_->link.prev, &stray),
              "store 0: the list of the router's applications is broken");
    EXPECT_EQ(with(&usage_->link.prev, &stray), "profile 7: its list of applications is broken");
    EXPECT_EQ(with(&profile_->device_list.prev, &stray),
              "profile 7: its list of devices is broken");
    EXPECT_EQ(with(&profile_->weekday_list.next, &stray),
              "profile 7: its list of weekdays is broken");
    EXPECT_EQ(with(&rule_->link.next, &stray), "policy 4: its list of rules is broken");
}

TEST_F(StoreInvariants, BreakWithACounter) {
    EXPECT_EQ(with(&profile_->device_count, 3), "profile 7: its device count is wrong");
    EXPECT_EQ(with(&profile_->app_count, 1), "profile 7: its application count is too low");
    EXPECT_EQ(with(&policy_->app_count, 1), "policy 4: its rule count is too low");
    EXPECT_EQ(with(&utm_app_config_global_app_stat_list_count, 2),
              "router 0: its application count is wrong");
}

TEST_F(StoreInvariants, BreakWithAnIdThatIsThereTwice) {
    EXPECT_EQ(with(&other_->user_profile_id, 7), "store 0: two profiles have one id");
    EXPECT_EQ(with(&unbound_->app_policy_id, 4), "store 0: two policies have one id");
    EXPECT_EQ(with(&unbound_->app_policy_id, 0), "policy 0: its id is below 1");
    EXPECT_EQ(with(&unbound_rule_->app_id, 13), "policy 5: it has two rules for an application");
    EXPECT_EQ(with(&rule_->app_id, 14),
              "profile 7: an application points at a rule for another one");
}

TEST_F(StoreInvariants, BreakWithADeviceThatIsThereTwice) {
    config_device_t *tablet = nullptr;
    {
        const mutex_guard lock(utm_app_config_mutex);
        tablet = utm_app_find_device(profile_, world::tablet.data());
    }
    memcpy(tablet->mac, world::phone.data(), mac_bytes);
    EXPECT_EQ(check_store_invariants(), "profile 7: it holds a device twice");
}

TEST_F(StoreInvariants, BreakWithACrossLink) {
    EXPECT_EQ(with<config_policy_app_t *>(&usage_->policy_app, nullptr),
              "policy 4: a rule's record does not point back");
    EXPECT_EQ(with<config_app_usage_t *>(&rule_->app_usage, nullptr),
              "profile 7: an application points at a rule that does not point back");
    EXPECT_EQ(with(&unbound_rule_->app_usage, usage_),
              "policy 5: a rule points at another record than its own");
    EXPECT_EQ(with<config_app_policy_t *>(&profile_->app_policy, nullptr),
              "profile 7: an application points at a rule of no policy of it");
    EXPECT_EQ(with(&profile_->app_policy, unbound_),
              "profile 7: its policy is none, or another profile's");
    EXPECT_EQ(with(&unbound_->profile, other_),
              "policy 5: its profile is none, or has another policy");
    EXPECT_EQ(with(&router_->policy_app, rule_), "router 0: an application points at a rule");
}

TEST_F(StoreInvariants, BreakWithAFlagOrAnotherBound) {
    EXPECT_EQ(with(&activate, 2), "store 0: the feature switch is neither 0 nor 1");
    EXPECT_EQ(with(&profile_->blocked, 2), "profile 7: its blocked flag is neither 0 nor 1");
    EXPECT_EQ(with(&profile_->daily_limit_enable, -1),
              "profile 7: its enable flag is neither 0 nor 1");
    EXPECT_EQ(with(&profile_->daily_limit, 0), "profile 7: its limit is out of bounds");
    EXPECT_EQ(with(&profile_->daily_extend, -1), "profile 7: its bonus is below 0");
    EXPECT_EQ(with(&usage_->blocked, 2), "profile 7: an application's flag is neither 0 nor 1");
    EXPECT_EQ(with(&usage_->next_day_idx, 30),
              "profile 7: an application's next day is outside its ring");
    EXPECT_EQ(with(&router_->next_day_idx, -1),
              "router 0: an application's next day is outside its ring");
    EXPECT_EQ(with(&router_->blocked, 1), "router 0: an application is blocked");
    EXPECT_EQ(with(&rule_->action, 0),
              "policy 4: a rule's action is neither to limit nor to block");
}

TEST_F(StoreInvariants, BreakWithAWeekday) {
    config_weekday_limit_t *sunday = nullptr;
    {
        const mutex_guard lock(utm_app_config_mutex);
        sunday = &*weekdays_of(profile_).begin();
    }
    EXPECT_EQ(with(&sunday->day, 1), "profile 7: its weekdays are not in order");
    EXPECT_EQ(with(&sunday->limit, 1441), "profile 7: a weekday's limit is out of bounds");
    list_unlink(&sunday->link);
    free(sunday);
    EXPECT_EQ(check_store_invariants(), "profile 7: a weekday is missing");
    EXPECT_EQ(check_store_invariants(memory_t::short_at_times), "");
}

TEST_F(StoreInvariants, BreakWithADeviceListString) {
    char older[] = "001122334455 ";
    char malformed[] = "001122334455;";
    const std::string not_theirs = "profile 7: its device list string is not that of its devices";
    EXPECT_EQ(with(&profile_->device_list_string, older), not_theirs);
    EXPECT_EQ(with<char *>(&profile_->device_list_string, nullptr), not_theirs);
    EXPECT_EQ(with(&profile_->device_list_string, older, memory_t::short_at_times), "");
    EXPECT_EQ(with<char *>(&profile_->device_list_string, nullptr, memory_t::short_at_times), "");
    EXPECT_EQ(with(&profile_->device_list_string, malformed, memory_t::short_at_times),
              "profile 7: its device list string is malformed");
}

} // namespace
