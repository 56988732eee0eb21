#include "store/store.h"

#include "core/saturate.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "usage/accounting.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>

namespace {

// ---- The intrusive list --------------------------------------------------------------------

std::vector<int32_t> days_in(config_list_node_t *head) {
    std::vector<int32_t> days;
    for (const config_weekday_limit_t &entry : list_range<config_weekday_limit_t>(head))
        days.push_back(entry.day);
    return days;
}

std::vector<int32_t> days_backwards(const config_list_node_t *head) {
    std::vector<int32_t> days;
    for (config_list_node_t *node = head->prev; node != head; node = node->prev)
        days.push_back(list_record<config_weekday_limit_t>(node)->day);
    return days;
}

class List : public testing::Test {
protected:
    void SetUp() override { list_init(&head_); }

    config_list_node_t head_ = {};
    config_weekday_limit_t one_ = {1, 0, {}};
    config_weekday_limit_t two_ = {2, 0, {}};
    config_weekday_limit_t three_ = {3, 0, {}};
};

using days = std::vector<int32_t>;

TEST_F(List, PointsAtItselfWhenItIsEmpty) {
    EXPECT_EQ(head_.next, &head_);
    EXPECT_EQ(head_.prev, &head_);
    EXPECT_TRUE(list_is_empty(&head_));
    EXPECT_EQ(days_in(&head_), days{});
}

TEST_F(List, AppendsAtTheTail) {
    for (config_weekday_limit_t *entry : {&one_, &two_, &three_})
        list_append(&head_, &entry->link);
    EXPECT_EQ(days_in(&head_), (days{1, 2, 3}));
    EXPECT_EQ(days_backwards(&head_), (days{3, 2, 1}));
    EXPECT_FALSE(list_is_empty(&head_));
}

TEST_F(List, PushesAtTheFront) {
    for (config_weekday_limit_t *entry : {&one_, &two_, &three_})
        list_push_front(&head_, &entry->link);
    EXPECT_EQ(days_in(&head_), (days{3, 2, 1}));
    EXPECT_EQ(days_backwards(&head_), (days{1, 2, 3}));
}

TEST_F(List, JoinsTheNeighboursOfANodeThatLeaves) {
    struct {
        config_weekday_limit_t *leaving;
        days rest, backwards;
    } const table[] = {
        {&one_, {2, 3}, {3, 2}},
        {&two_, {1, 3}, {3, 1}},
        {&three_, {1, 2}, {2, 1}},
    };
    for (const auto &row : table) {
        list_init(&head_);
        for (config_weekday_limit_t *entry : {&one_, &two_, &three_})
            list_append(&head_, &entry->link);
        list_unlink(&row.leaving->link);
        EXPECT_EQ(days_in(&head_), row.rest);
        EXPECT_EQ(days_backwards(&head_), row.backwards);
        EXPECT_EQ(row.leaving->link.next, nullptr);
        EXPECT_EQ(row.leaving->link.prev, nullptr);
    }
}

TEST_F(List, IsEmptyAgainAfterTheLastNodeLeaves) {
    list_append(&head_, &one_.link);
    list_unlink(&one_.link);
    EXPECT_TRUE(list_is_empty(&head_));
    EXPECT_EQ(head_.prev, &head_);
}

TEST_F(List, LetsAWalkTakeOutTheRecordThatItLooksAt) {
    for (config_weekday_limit_t *entry : {&one_, &two_, &three_})
        list_append(&head_, &entry->link);
    days seen;
    for (config_weekday_limit_t &entry : list_range<config_weekday_limit_t>(&head_)) {
        seen.push_back(entry.day);
        list_unlink(&entry.link);
    }
    EXPECT_EQ(seen, (days{1, 2, 3}));
    EXPECT_TRUE(list_is_empty(&head_));
}

// ---- Minutes -------------------------------------------------------------------------------

TEST(Minutes, StayWithinTheirRange) {
    struct {
        int32_t a, b, sum;
    } const table[] = {
        {0, 0, 0},
        {1440, 360, 1800},
        {-5, 3, -2},
        {INT32_MAX, 0, INT32_MAX},
        {INT32_MAX - 1, 1, INT32_MAX},
        {INT32_MAX, 1, INT32_MAX},
        {INT32_MAX, INT32_MAX, INT32_MAX},
        {INT32_MIN, -1, INT32_MIN},
        {INT32_MIN, INT32_MIN, INT32_MIN},
        {INT32_MIN, INT32_MAX, -1},
    };
    for (const auto &row : table)
        EXPECT_EQ(saturating_sum(row.a, row.b), row.sum) << row.a << " + " << row.b;
}

TEST(Minutes, AreMovedIntoTheirRange) {
    struct {
        int64_t value;
        int32_t minutes;
    } const table[] = {
        {0, 0},
        {-7, -7},
        {int64_t{INT32_MAX}, INT32_MAX},
        {int64_t{INT32_MAX} + 1, INT32_MAX},
        {INT64_MAX, INT32_MAX},
        {int64_t{INT32_MIN}, INT32_MIN},
        {int64_t{INT32_MIN} - 1, INT32_MIN},
        {INT64_MIN, INT32_MIN},
    };
    for (const auto &row : table)
        EXPECT_EQ(saturate(row.value), row.minutes) << row.value;
}

// ---- The global lists ----------------------------------------------------------------------

class Store : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

TEST_F(Store, ListsProfilesAndPoliciesInCreationOrder) {
    for (const int32_t id : {5, 3, 9})
        ASSERT_EQ(utm_app_create_profile(id), 0);
    for (const int32_t id : {8, 2})
        ASSERT_EQ(utm_app_create_policy(id), id);
    const std::string rest = ": devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
                             "collected +0, apps 0, policy none\n"
                             "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n";
    EXPECT_EQ(world::render_lists(), "profile 5" + rest + "profile 3" + rest + "profile 9" + rest +
                                         "policy 8: profile none, count 0, rules\n"
                                         "policy 2: profile none, count 0, rules\n");
}

TEST_F(Store, ListsTheApplicationReportedLastFirst) {
    config_user_profile_t *profile = world::make_profile(1);
    {
        const mutex_guard lock(utm_app_config_mutex);
        ASSERT_EQ(utm_app_update_app_usage(profile, 10, 4), 0);
        ASSERT_EQ(utm_app_update_app_usage(profile, 20, 6), 0);
    }
    std::vector<int32_t> ids;
    for (const config_app_usage_t &usage : apps_of(profile))
        ids.push_back(usage.app_id);
    EXPECT_EQ(ids, (std::vector<int32_t>{20, 10}));
}

TEST_F(Store, ListsTheRuleAddedLastFirst) {
    world::make_policy(4, {{7, 1, 30}, {8, 2, 0}});
    EXPECT_EQ(world::render_policy(4),
              "policy 4: profile none, count 2, rules 8/2/0 (unused) 7/1/30 (unused)\n");
}

TEST_F(Store, FindsByIdOrFindsNothing) {
    config_user_profile_t *profile = world::make_profile(-7, {world::tablet, world::phone});
    config_app_policy_t *policy = world::make_policy(INT32_MAX, {{12, 1, 5}, {-12, 2, 0}});
    world::make_usage(profile, {{12, 5}, {-12, 6}});
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_find_profile(-7), profile);
    EXPECT_EQ(utm_app_find_profile(7), nullptr);
    EXPECT_EQ(utm_app_find_policy(INT32_MAX), policy);
    EXPECT_EQ(utm_app_find_policy(-7), nullptr);
    EXPECT_EQ(utm_app_find_app_usage(&profile->app_stat_list, -12)->daily_used, 6);
    EXPECT_EQ(utm_app_find_app_usage(&profile->app_stat_list, 13), nullptr);
    EXPECT_EQ(utm_app_find_app_usage(nullptr, 12), nullptr);
    EXPECT_EQ(utm_app_find_policy_app(policy, 12)->daily_limit, 5);
    EXPECT_EQ(utm_app_find_policy_app(policy, 13), nullptr);
}

TEST_F(Store, TellsAddressesApartByEveryByte) {
    config_user_profile_t *profile = world::make_profile(1, {world::phone, world::tablet});
    const mutex_guard lock(utm_app_config_mutex);
    const config_device_t *found = utm_app_find_device(profile, world::tablet.data());
    ASSERT_NE(found, nullptr);
    EXPECT_TRUE(std::equal(found->mac, found->mac + mac_bytes, world::tablet.begin()));
    for (size_t byte = 0; byte < mac_bytes; ++byte) {
        world::mac_t other = world::tablet;
        other[byte] ^= 1;
        EXPECT_EQ(utm_app_find_device(profile, other.data()), nullptr) << byte;
    }
}

TEST_F(Store, FindsTheFirstOfEqualRecords) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{12, 1}, {12, 2}});
    EXPECT_EQ(world::usage_of(profile, 12)->daily_used, 1);
}

TEST_F(Store, StartsWithEmptyListsAndTheGivenTime) {
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_config_global_app_stat_list_count = 3;
    utm_app_store_init(42);
    for (const config_list_node_t *head :
         {&utm_app_config_user_profile_list, &utm_app_config_app_policy_list,
          &utm_app_config_global_app_stat_list}) {
        EXPECT_EQ(head->next, head);
        EXPECT_EQ(head->prev, head);
    }
    EXPECT_EQ(utm_app_config_global_app_stat_list_count, 0);
    EXPECT_EQ(utm_app_config_global_app_stat_last_ts, 42);
}

// ---- Cross-links ---------------------------------------------------------------------------

/// Links anew and reports both sides.
std::string relinked(config_user_profile_t *profile) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_link_policy_to_usage(profile);
    }
    return world::render_apps(profile->user_profile_id) + world::render_policy(4);
}

TEST_F(Store, LinksRulesAndUsageOfTheSameApplication) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}, {20, 2}, {30, 3}});
    world::make_policy(4, {{30, 1, 60}, {40, 2, 0}, {10, 2, 0}}, profile);
    EXPECT_EQ(relinked(profile),
              "apps 3\n"
              "  app 10: used 1/0/0, blocked 0, days [] next 0, rule 2/0\n"
              "  app 20: used 2/0/0, blocked 0, days [] next 0\n"
              "  app 30: used 3/0/0, blocked 0, days [] next 0, rule 1/60\n"
              "policy 4: profile 1, count 3, rules 10/2/0 40/2/0 (unused) 30/1/60\n");
}

TEST_F(Store, LinksARuleToTheFirstOfEqualUsageRecords) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_policy(4, {{10, 1, 60}}, profile);
    world::make_usage(profile, {{10, 1}, {10, 2}});
    EXPECT_EQ(relinked(profile), "apps 2\n"
                                 "  app 10: used 1/0/0, blocked 0, days [] next 0, rule 1/60\n"
                                 "  app 10: used 2/0/0, blocked 0, days [] next 0\n"
                                 "policy 4: profile 1, count 1, rules 10/1/60\n");
}

TEST_F(Store, ReplacesStaleLinks) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}, {20, 2}});
    config_app_policy_t *policy = world::make_policy(4, {{30, 1, 60}, {20, 2, 0}}, profile);
    config_policy_app_t *first = list_record<config_policy_app_t>(policy->app_list.next);
    first->app_id = 10; // what was rule 20
    EXPECT_EQ(relinked(profile), "apps 2\n"
                                 "  app 10: used 1/0/0, blocked 0, days [] next 0, rule 2/0\n"
                                 "  app 20: used 2/0/0, blocked 0, days [] next 0\n"
                                 "policy 4: profile 1, count 2, rules 10/2/0 30/1/60 (unused)\n");
}

TEST_F(Store, LeavesAProfileWithoutPolicyUntouched) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}});
    config_policy_app_t rule = {};
    world::usage_of(profile, 10)->policy_app = &rule;
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_link_policy_to_usage(profile);
    config_app_usage_t *usage = utm_app_find_app_usage(&profile->app_stat_list, 10);
    EXPECT_EQ(usage->policy_app, &rule);
    usage->policy_app = nullptr; // the rule ends before the record does
}

TEST_F(Store, LeavesNoRulePointingAtFreedUsage) {
    config_user_profile_t *profile = world::make_profile(1);
    world::make_usage(profile, {{10, 1}, {20, 2}});
    world::make_policy(4, {{10, 1, 60}, {20, 2, 0}}, profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_free_app_usage(profile);
        profile->app_count = 0;
    }
    EXPECT_EQ(relinked(profile),
              "apps 0\n"
              "policy 4: profile 1, count 2, rules 20/2/0 (unused) 10/1/60 (unused)\n");
}

} // namespace
