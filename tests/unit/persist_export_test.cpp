#include "persist/export.h"

#include "core/debug_log.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "persist/import.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

class Export : public usage_file_fixture {
protected:
    /// Gives a profile a weekday list of these entries and no others.
    static void set_weekdays(int32_t profile_id, const std::vector<std::pair<int, int>> &entries) {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(profile_id);
        auto wanted = entries.begin();
        for (config_weekday_limit_t &entry : weekdays_of(profile)) {
            if (wanted == entries.end()) {
                list_unlink(&entry.link);
                free(&entry);
                continue;
            }
            entry.day = wanted->first;
            entry.limit = wanted->second;
            ++wanted;
        }
    }

    /// @return what the one profile's object holds between its id and its bonus
    static std::string weekday_members() {
        const std::string all = export_text();
        const std::string before = "{\"user_profile_list\":[{\"user_profile_id\":3";
        EXPECT_EQ(all.substr(0, before.size()), before);
        return all.substr(before.size(), all.find("\"daily_extend\"") - before.size());
    }
};

TEST_F(Export, WritesAnEmptyStore) {
    EXPECT_EQ(utm_app_export_statistics(export_path, 0), 0);
    EXPECT_EQ(read_file(export_path),
              "{\"user_profile_list\":[],\"timestamp\":1772625600,\"global_stat\":[]}");
    EXPECT_EQ(world::trace(), "log export to /tmp/usage/export.json success\n");
}

TEST_F(Export, WritesEveryMemberInItsPlace) {
    make(usage_file::profile_t{3,
                               15,
                               40,
                               200,
                               {{10, 5, 9, 30, 4}, {11, 1, 2, 3, 29}},
                               {1440, 60, 61, 62, 63, 120, 121},
                               25,
                               1,
                               {"0A:1B:2C:3D:4E:5F", "FF:00:00:00:00:01"},
                               usage_file::policy_t{7, {{11, 2, 0}, {10, 1, 60}}}});
    make_router_app({20, 1, 2, 3, 0});
    make_router_app({21, 0, 0, 0, 29});
    const std::string zeros = "0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0";
    EXPECT_EQ(
        export_text(),
        "{\"user_profile_list\":[{\"user_profile_id\":3,\"mon\":1440,\"tues\":60,\"wed\":61,"
        "\"thur\":62,\"fri\":63,\"sat\":120,\"sun\":121,\"daily_extend\":25,\"daily_used\":15,"
        "\"weekly_used\":40,\"monthly_used\":200,\"blocked\":1,\"app_stat_list\":[{\"app_id\":10,"
        "\"daily_used\":5,\"weekly_used\":9,\"monthly_used\":30,\"next_day_idx\":4,"
        "\"prev_30_days\":[" +
            zeros +
            "]},{\"app_id\":11,\"daily_used\":1,\"weekly_used\":2,\"monthly_used\":3,"
            "\"next_day_idx\":29,\"prev_30_days\":[" +
            zeros +
            "]}],\"device_list\":[\"0A:1B:2C:3D:4E:5F\",\"FF:00:00:00:00:01\"],"
            "\"app_policy\":{\"app_policy_id\":7,\"app_list\":[{\"app_id\":11,\"action\":2,"
            "\"daily_limit\":0},{\"app_id\":10,\"action\":1,\"daily_limit\":60}]}}],"
            "\"timestamp\":1772625600,\"global_stat\":[{\"app_id\":20,\"daily_used\":1,"
            "\"weekly_used\":2,\"monthly_used\":3,\"next_day_idx\":0,\"prev_30_days\":[" +
            zeros +
            "]},{\"app_id\":21,\"daily_used\":0,\"weekly_used\":0,\"monthly_used\":0,"
            "\"next_day_idx\":29,\"prev_30_days\":[" +
            zeros + "]}]}");
}

TEST_F(Export, WritesARingInTheOrderOfItsSlots) {
    usage_file::app_t app = {10, 0, 0, 0, 7};
    for (int32_t slot = 0; slot < 30; ++slot)
        app.ring[static_cast<size_t>(slot)] = 100 + slot;
    make_router_app(app);
    EXPECT_EQ(export_text(),
              "{\"user_profile_list\":[],\"timestamp\":1772625600,\"global_stat\":[{\"app_id\":10,"
              "\"daily_used\":0,\"weekly_used\":0,\"monthly_used\":0,\"next_day_idx\":7,"
              "\"prev_30_days\":[100,101,102,103,104,105,106,107,108,109,110,111,112,113,114,115,"
              "116,117,118,119,120,121,122,123,124,125,126,127,128,129]}]}");
}

TEST_F(Export, LeavesThePolicyOutOfAProfileWithoutOne) {
    make(usage_file::profile_t{3});
    make(usage_file::profile_t{4, 0, 0, 0, {}, {1, 2, 3, 4, 5, 6, 7}, 0, 0, {}, {{9, {}}}});
    EXPECT_EQ(export_text(),
              "{\"user_profile_list\":[{\"user_profile_id\":3,\"mon\":1440,\"tues\":1440,"
              "\"wed\":1440,\"thur\":1440,\"fri\":1440,\"sat\":1440,\"sun\":1440,"
              "\"daily_extend\":0,\"daily_used\":0,\"weekly_used\":0,\"monthly_used\":0,"
              "\"blocked\":0,\"app_stat_list\":[],\"device_list\":[]},"
              "{\"user_profile_id\":4,\"mon\":1,\"tues\":2,\"wed\":3,\"thur\":4,\"fri\":5,"
              "\"sat\":6,\"sun\":7,\"daily_extend\":0,\"daily_used\":0,\"weekly_used\":0,"
              "\"monthly_used\":0,\"blocked\":0,\"app_stat_list\":[],\"device_list\":[],"
              "\"app_policy\":{\"app_policy_id\":9,\"app_list\":[]}}],"
              "\"timestamp\":1772625600,\"global_stat\":[]}");
}

TEST_F(Export, WritesTheEndsOfEveryInteger) {
    make_router_app({int32_min, int32_max, int32_min, int32_max, 0});
    usage_file::document_t expected = {{}, world::default_now, {}};
    expected.router.push_back({int32_min, int32_max, int32_min, int32_max, 0});
    EXPECT_EQ(export_text(), usage_file::text(expected));
}

TEST_F(Export, FillsAWeekdayListWithTheLimitOfTheDayBefore) {
    make(usage_file::profile_t{3});
    set_weekdays(3, {{2, 90}});
    EXPECT_EQ(weekday_members(), ",\"wed\":90,\"thur\":90,\"fri\":90,\"sat\":90,\"sun\":90,");
    set_weekdays(3, {{6, 45}});
    EXPECT_EQ(weekday_members(), ",\"sun\":45,");
}

TEST_F(Export, LetsALaterWeekdayEntryReplaceAnEarlierOneInPlace) {
    make(usage_file::profile_t{3});
    set_weekdays(3, {{1, 10}, {4, 40}, {5, 50}});
    EXPECT_EQ(weekday_members(),
              ",\"tues\":10,\"wed\":10,\"thur\":10,\"fri\":40,\"sat\":50,\"sun\":50,");
    // Behind a later day, an earlier one overwrites it; keys that are new come last.
    set_weekdays(3, {{5, 50}, {3, 30}});
    EXPECT_EQ(weekday_members(), ",\"sat\":30,\"sun\":30,\"thur\":30,\"fri\":30,");
}

TEST_F(Export, IgnoresWeekdayEntriesOfNoDay) {
    make(usage_file::profile_t{3});
    set_weekdays(3, {{7, 1}, {-1, 2}, {int32_min, 3}, {int32_max, 4}, {6, 5}});
    EXPECT_EQ(weekday_members(), ",\"sun\":5,");
    set_weekdays(3, {});
    EXPECT_EQ(weekday_members(), ",");
}

TEST_F(Export, CutsTheTimeToThirtyTwoBits) {
    world::set_now(0x1'8000'0001);
    EXPECT_EQ(utm_app_export_statistics(export_path, 0), 0);
    EXPECT_EQ(read_file(export_path),
              "{\"user_profile_list\":[],\"timestamp\":-2147483647,\"global_stat\":[]}");
    EXPECT_EQ(last_export_statistics_ts, 0x1'8000'0001);
}

TEST_F(Export, WritesManyRecords) {
    usage_file::document_t expected = {{{5}}, world::default_now, {}};
    for (int32_t i = 0; i < 10'000; ++i)
        (i % 2 == 0 ? expected.router : expected.profiles[0].apps).push_back({i, i, 2 * i, 3, 29});
    make(expected);
    EXPECT_EQ(export_text(), usage_file::text(expected));
}

TEST_F(Export, WritesMoreThanAnImportTakesAndSaysSo) {
    usage_file::document_t large = {{}, world::default_now, {}};
    for (int32_t i = 0; i < 34'000; ++i)
        large.router.push_back({i, 0, 0, 0, 0});
    make(large);
    EXPECT_EQ(utm_app_export_statistics(export_path, 0), 0);
    EXPECT_EQ(world::trace(), "log export to /tmp/usage/export.json is more than an import takes\n"
                              "log export to /tmp/usage/export.json success\n");
    EXPECT_EQ(read_file(export_path), usage_file::text(large));
    EXPECT_EQ(utm_app_import_statistics(export_path), -1);
}

/// 64 profiles of 500 applications are what an import has to take.
TEST_F(Export, WritesNoHouseholdThatIsTooLarge) {
    usage_file::document_t document = {{}, world::default_now, {}};
    for (int32_t i = 0; i < 500; ++i)
        document.router.push_back({1000 + i, 99, 999, 9999, 29});
    for (int32_t id = 1; id <= 64; ++id) {
        usage_file::profile_t profile = {id, 999, 999, 9999, document.router};
        profile.devices.assign(32, "0A:1B:2C:3D:4E:5F");
        profile.policy = usage_file::policy_t{id, std::vector<usage_file::rule_t>(40, {1, 1, 60})};
        document.profiles.push_back(profile);
    }
    const std::string text = usage_file::text(document);
    EXPECT_TRUE(usage_text_is_readable(text.data(), text.size())) << text.size();
}

TEST_F(Export, ReplacesAnOlderAndLongerFile) {
    write_file(export_path, std::string(100'000, 'x'));
    EXPECT_EQ(utm_app_export_statistics(export_path, 0), 0);
    EXPECT_EQ(read_file(export_path),
              "{\"user_profile_list\":[],\"timestamp\":1772625600,\"global_stat\":[]}");
}

TEST_F(Export, DoesNothingWhileTheFeatureIsOffUnlessForced) {
    world::set_active(false);
    write_file(export_path, "old");
    set_last_export(5);
    EXPECT_EQ(utm_app_export_statistics(export_path, 0), -1);
    EXPECT_EQ(utm_app_export_statistics_to(export_path), -1);
    EXPECT_EQ(read_file(export_path), "old");
    EXPECT_EQ(last_export_statistics_ts, 5);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(utm_app_export_statistics(export_path, 1), 0);
    EXPECT_EQ(world::trace(), "log export to /tmp/usage/export.json success\n");
}

TEST_F(Export, TellsOfSuccessOnlyWhileLoggingIsOnAndOfFailureAlways) {
    ASSERT_EQ(utm_app_debug_set(0), 0);
    EXPECT_EQ(utm_app_export_statistics_to(export_path), 0);
    EXPECT_EQ(world::trace(), "");
    EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/none/file.json"), -1);
    EXPECT_EQ(world::trace(), "log export to /tmp/usage/none/file.json failed\n");
}

TEST_F(Export, FailsWithoutAPathAndKeepsTheTimeOfTheLastExport) {
    set_last_export(5);
    EXPECT_EQ(utm_app_export_statistics(nullptr, 0), -1);
    EXPECT_EQ(utm_app_export_statistics("", 0), -1);
    EXPECT_EQ(last_export_statistics_ts, 5);
    EXPECT_EQ(world::trace(), "log export to NULL failed\n"
                              "log export to  failed\n");
}

TEST_F(Export, CountsAFailedWriteAsAnExport) {
    set_last_export(5);
    world::set_now(world::default_now + 7);
    EXPECT_EQ(utm_app_export_statistics_to("/tmp/usage/none/file.json"), -1);
    EXPECT_EQ(last_export_statistics_ts, world::default_now + 7);
}

TEST_F(Export, FailsWhereverMemoryRunsOut) {
    make(usage_file::profile_t{3,
                               1,
                               2,
                               3,
                               std::vector<usage_file::app_t>(1000, {10, 5, 9, 30, 4}),
                               std::vector<int32_t>(7, 30),
                               0,
                               0,
                               {"0A:1B:2C:3D:4E:5F"},
                               usage_file::policy_t{7, {{11, 2, 0}}}});
    make_router_app({20, 1, 2, 3, 0});
    const std::string whole = export_text();
    world::fail_allocation(0);
    EXPECT_EQ(export_text(), whole);
    const int calls = world::allocations();
    EXPECT_GT(calls, 5);
    set_last_export(5);
    write_file(export_path, "old");
    for (int nth = 1; nth <= calls; ++nth) {
        world::fail_allocation(nth);
        EXPECT_EQ(utm_app_export_statistics_to(export_path), -1) << nth;
        EXPECT_EQ(world::trace(), "log export to /tmp/usage/export.json failed\n") << nth;
        EXPECT_EQ(read_file(export_path), "old") << nth;
        EXPECT_EQ(last_export_statistics_ts, 5) << nth;
        forget_log();
    }
    // Every lock is free again and the store is what it was.
    world::fail_allocation(0);
    EXPECT_EQ(export_text(), whole);
}

} // namespace
