#include "persist/import.h"

#include "core/debug_log.h"
#include "persist/export_schedule.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

using usage_file::document_t;
using usage_file::profile_t;

const std::string week = "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n";

class Import : public usage_file_fixture {
protected:
    /// A file of now.
    static document_t file_of(std::vector<profile_t> profiles,
                              std::vector<usage_file::app_t> router = {}) {
        return {std::move(profiles), world::default_now, std::move(router)};
    }

    static int32_t import(const document_t &file) { return import_text(usage_file::text(file)); }
};

TEST_F(Import, CreatesProfilesThatTheStoreLacksWithoutDevicesAndLimits) {
    world::set_now(world::default_now + 60);
    EXPECT_EQ(import(file_of({{3,
                               15,
                               40,
                               200,
                               {{10, 1, 2, 3, 4}},
                               {1, 2, 3, 4, 5, 6, 7},
                               25,
                               1,
                               {"0A:1B:2C:3D:4E:5F"},
                               usage_file::policy_t{7, {{10, 2, 0}}}}})),
              0);
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/import.json success\n");
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 15/40/200, blocked 0, "
              "collected +60, apps 1, policy none\n" +
                  week +
                  "  app 10: used 1/2/3, blocked 0, days [] next 4\n"
                  "router: apps 0, collected +60\n");
}

TEST_F(Import, ReplacesCountersAndApplicationsOfAKnownProfileAndNothingElse) {
    make(profile_t{3,
                   1,
                   2,
                   3,
                   {{8, 5, 5, 5, 5}, {10, 6, 6, 6, 6}},
                   {30, 31, 32, 33, 34, 35, 36},
                   25,
                   1,
                   {"0A:1B:2C:3D:4E:5F"},
                   usage_file::policy_t{7, {{10, 1, 60}, {12, 1, 60}}}});
    EXPECT_EQ(import(file_of({{3, 15, 40, 200, {{11, 7, 8, 9, 10}, {12, 1, 1, 1, 1}}}})), 0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 1 [0A1B2C3D4E5F ], enabled 0, limit 1440 + 25, used 15/40/200, "
              "blocked 1, collected +0, apps 2, policy 7\n"
              "  weekdays 0:30 1:31 2:32 3:33 4:34 5:35 6:36\n"
              "  app 11: used 7/8/9, blocked 0, days [] next 10\n"
              "  app 12: used 1/1/1, blocked 0, days [] next 1, rule 1/60\n"
              "policy 7: profile 3, count 2, rules 10/1/60 (unused) 12/1/60\n"
              "router: apps 0, collected +0\n");
}

TEST_F(Import, LeavesProfilesAloneThatTheFileDoesNotName) {
    make(profile_t{5, 1, 2, 3, {{10, 5, 5, 5, 5}}});
    make(profile_t{3, 4, 5, 6, {{11, 5, 5, 5, 5}}});
    EXPECT_EQ(import(file_of({{9}, {3}})), 0);
    document_t expected = file_of({{5, 1, 2, 3, {{10, 5, 5, 5, 5}}}, {3}, {9}});
    EXPECT_EQ(export_text(), usage_file::text(expected));
}

TEST_F(Import, TakesTheLastOfTwoElementsOfOneProfile) {
    EXPECT_EQ(import(file_of({{3, 1, 1, 1, {{10}, {11}}}, {3, 2, 2, 2, {{12}}}})), 0);
    EXPECT_EQ(export_text(), usage_file::text(file_of({{3, 2, 2, 2, {{12}}}})));
}

TEST_F(Import, KeepsTheOrderOfAProfilesApplicationsAndReversesTheRouters) {
    make_router_app({99, 1, 1, 1, 1});
    EXPECT_EQ(import(file_of({{3, 0, 0, 0, {{10}, {12}, {11}}}}, {{20}, {22}, {21}})), 0);
    EXPECT_EQ(export_text(),
              usage_file::text(file_of({{3, 0, 0, 0, {{10}, {12}, {11}}}}, {{21}, {22}, {20}})));
    EXPECT_EQ(world::render_router(), "router: apps 3, collected +0\n"
                                      "  app 21: used 0/0/0, blocked 0, days [] next 0\n"
                                      "  app 22: used 0/0/0, blocked 0, days [] next 0\n"
                                      "  app 20: used 0/0/0, blocked 0, days [] next 0\n");
}

TEST_F(Import, LinksTheFirstOfTwoRecordsOfOneApplicationToItsRule) {
    make(profile_t{3,
                   0,
                   0,
                   0,
                   {},
                   std::vector<int32_t>(7, 60),
                   0,
                   0,
                   {},
                   usage_file::policy_t{7, {{10, 1, 60}}}});
    EXPECT_EQ(import(file_of({{3, 0, 0, 0, {{10, 1}, {10, 2}}}})), 0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
              "collected +0, apps 2, policy 7\n"
              "  weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60\n"
              "  app 10: used 1/0/0, blocked 0, days [] next 0, rule 1/60\n"
              "  app 10: used 2/0/0, blocked 0, days [] next 0\n"
              "policy 7: profile 3, count 1, rules 10/1/60\n"
              "router: apps 0, collected +0\n");
}

TEST_F(Import, BlocksAgainWhatIsOverItsLimit) {
    make(profile_t{3,
                   0,
                   0,
                   0,
                   {},
                   std::vector<int32_t>(7, 60),
                   5,
                   0,
                   {"00:11:22:33:44:55", "AA:BB:CC:DD:EE:0F"},
                   usage_file::policy_t{7, {{10, 1, 20}, {11, 1, 21}, {12, 1, 5}, {13, 1, 0}}}});
    {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(3);
        profile->daily_limit = 60;
        profile->daily_limit_enable = 1;
    }
    EXPECT_EQ(import(file_of({{3, 65, 0, 0, {{10, 20}, {11, 20}, {12, 9}}}})), 0);
    EXPECT_EQ(world::trace(), "log block device to use 10 because exceed limit\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 10 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n"
                              "log block device to use 12 because exceed limit\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 12 0 18\n"
                              "run lcsh apg acl set AA:BB:CC:DD:EE:0F 12 0 18\n"
                              "log Block profile 3 to use network because 65 exceed 65\n"
                              "event block profile 3\n"
                              "log send event: block profile 3 to use network\n"
                              "log import from /tmp/usage/import.json success\n");
    // The profile's flag follows its block; the applications' flags are left to the tick.
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 2 [001122334455 AABBCCDDEE0F ], enabled 1, limit 60 + 5, "
              "used 65/0/0, blocked 1, collected +0, apps 3, policy 7\n"
              "  weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60\n"
              "  app 10: used 20/0/0, blocked 0, days [] next 0, rule 1/20\n"
              "  app 11: used 20/0/0, blocked 0, days [] next 0, rule 1/21\n"
              "  app 12: used 9/0/0, blocked 0, days [] next 0, rule 1/5\n"
              "policy 7: profile 3, count 4, rules 10/1/20 11/1/21 12/1/5 13/1/0 (unused)\n"
              "router: apps 0, collected +0\n");
}

TEST_F(Import, BlocksNoProfileThatIsBelowItsBudgetOrBlockedAlready) {
    make(profile_t{3});
    make(profile_t{4, 0, 0, 0, {}, std::vector<int32_t>(7, 60), 0, 1});
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_user_profile_t &profile : all_profiles()) {
            profile.daily_limit = 60;
            profile.daily_limit_enable = 1;
        }
    }
    EXPECT_EQ(import(file_of({{3, 59}, {4, 60}})), 0);
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/import.json success\n");
}

TEST_F(Import, CutsARulesLinkToARecordThatIsFreed) {
    make(profile_t{3,
                   0,
                   0,
                   0,
                   {{10, 5}},
                   std::vector<int32_t>(7, 60),
                   0,
                   0,
                   {},
                   usage_file::policy_t{7, {{10, 1, 60}}}});
    // Without "app_stat_list" the profile's application count stays and nothing is linked anew.
    const std::string path = "{\"user_profile_list\":[{\"user_profile_id\":3}],\"global_stat\":[]}";
    EXPECT_EQ(import_text(path), 0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 0/0/0, blocked 0, "
              "collected +0, apps 1, policy 7\n"
              "  weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60\n"
              "policy 7: profile 3, count 1, rules 10/1/60 (unused)\n"
              "router: apps 0, collected +0\n");
}

TEST_F(Import, CountsAsAnExport) {
    set_last_export(5);
    world::set_now(world::default_now + 60);
    EXPECT_EQ(import(file_of({})), 0);
    EXPECT_EQ(last_export_statistics_ts, world::default_now + 60);
    set_last_export(5);
    EXPECT_EQ(import_text("{}"), -1);
    EXPECT_EQ(last_export_statistics_ts, 5);
}

TEST_F(Import, DoesNothingWhileTheFeatureIsOff) {
    make(profile_t{3, 1, 2, 3});
    const std::string before = export_text();
    world::set_active(false);
    EXPECT_EQ(import(file_of({{3, 9, 9, 9}})), -1);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(export_text(), before);
}

TEST_F(Import, TellsOfItsOutcomeAlsoWhileLoggingIsOff) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_EQ(import(file_of({})), 0);
    EXPECT_EQ(import_text("[]"), -1);
    document_t future = file_of({});
    future.timestamp += 86'400;
    EXPECT_EQ(import(future), -1);
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/import.json success\n"
                              "log import from /tmp/usage/import.json failed\n"
                              "log Import statistic failed because it is from future\n"
                              "log import from /tmp/usage/import.json failed\n");
}

TEST_F(Import, SkipsAProfileAndDropsAnApplicationThatFindNoMemory) {
    const document_t file = file_of({{3, 1, 1, 1, {{10}}}, {4, 2, 2, 2, {{11}, {12}}}}, {{20}});
    write_file(import_path, usage_file::text(file));
    // The index comes first and the profile second; seven weekdays follow, then its application.
    world::fail_allocation(2);
    EXPECT_EQ(utm_app_import_statistics(import_path), 0);
    world::fail_allocation(0);
    EXPECT_EQ(export_text(), usage_file::text(file_of({{4, 2, 2, 2, {{11}, {12}}}}, {{20}})));
    empty_store();
    world::fail_allocation(10);
    EXPECT_EQ(utm_app_import_statistics(import_path), 0);
    world::fail_allocation(0);
    EXPECT_EQ(export_text(),
              usage_file::text(file_of({{3, 1, 1, 1, {}}, {4, 2, 2, 2, {{11}, {12}}}}, {{20}})));
    EXPECT_NE(world::render_store().find("apps 1, policy none"), std::string::npos);
}

/// @return a file of tiny profiles, numbered from 1 with a step, each once and then each again
std::string many_profiles(int32_t count, int32_t step) {
    std::string profiles;
    for (const char *used : {"1", "2"})
        for (int32_t i = 0; i < count; ++i)
            profiles += std::string(profiles.empty() ? "" : ",") +
                        "{\"user_profile_id\":" + std::to_string(1 + i * step) +
                        ",\"daily_used\":" + used + "}";
    return "{\"user_profile_list\":[" + profiles + "],\"global_stat\":[]}";
}

TEST_F(Import, TakesProfilesInTheFilesOrderAndTheLastOfOneId) {
    make(profile_t{9});
    make(profile_t{-5});
    EXPECT_EQ(import_text("{\"user_profile_list\":[{\"user_profile_id\":7,\"daily_used\":1},"
                          "{\"user_profile_id\":-5,\"daily_used\":2},{},"
                          "{\"user_profile_id\":3,\"daily_used\":3},"
                          "{\"user_profile_id\":7,\"daily_used\":4}],\"global_stat\":[]}"),
              0);
    EXPECT_EQ(export_text(), usage_file::text(file_of({{9}, {-5, 2}, {7, 4}, {3, 3}})));
}

/// Each look-up used to walk the store's whole list: this took half a minute.
TEST_F(Import, TakesTensOfThousandsOfProfilesAtOnce) {
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(import_text(many_profiles(30'000, 65'536)), 0);
    EXPECT_EQ(import_text(many_profiles(30'000, 65'536)), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(10));
    size_t count = 0;
    const mutex_guard lock(utm_app_config_mutex);
    for (const config_user_profile_t &profile : all_profiles()) {
        EXPECT_EQ(profile.daily_used, 2);
        ++count;
    }
    EXPECT_EQ(count, 30'000U);
}

TEST_F(Import, SurvivesTheFailureOfAnyAllocation) {
    const document_t file = file_of({{3, 1, 1, 1, {{10}, {11}}}, {4}}, {{20}, {21}});
    write_file(import_path, usage_file::text(file));
    world::fail_allocation(0);
    ASSERT_EQ(utm_app_import_statistics(import_path), 0);
    const int allocations = world::allocations();
    EXPECT_EQ(allocations, 21); // an index, two profiles, fourteen weekdays, four applications
    for (int nth = 1; nth <= allocations; ++nth) {
        empty_store();
        world::trace();
        world::fail_allocation(nth);
        EXPECT_EQ(utm_app_import_statistics(import_path), 0) << nth;
        const std::string trace = world::trace();
        EXPECT_TRUE(trace.ends_with("log import from /tmp/usage/import.json success\n")) << trace;
    }
    world::fail_allocation(0);
    empty_store();
    EXPECT_EQ(utm_app_import_statistics(import_path), 0);
    EXPECT_EQ(export_text(),
              usage_file::text(file_of({{3, 1, 1, 1, {{10}, {11}}}, {4}}, {{21}, {20}})));
}

} // namespace
