/// What happens under which lock: the disk, the shell and the clock, and the locks inside locks.
/// (`call_trace.h` says how to read a trace.)

#include "control/feature_switch.h"
#include "core/debug_log.h"
#include "core/owners.h"
#include "format/protocol.h"
#include "format/usage_file.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "persist/import.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/exchange.h"
#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "usage/collector.h"
#include "usage/limits.h"
#include "usage/reports.h"
#include "usage/top_apps.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

/// The log is off, so that a gated line shows as a look at its mutex, "debug()", and no more.
class Locks : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        std::filesystem::create_directory("/tmp/ApplicationData");
        ASSERT_EQ(utm_app_debug_set(0), 0);
    }

    static void expect(const std::function<int32_t()> &act, int32_t result,
                       const std::string &trace) {
        EXPECT_EQ(call_trace::of([&] { EXPECT_EQ(act(), result); }), trace);
    }

    static void expect_export(const char *path, int32_t result, const std::string &trace) {
        expect([=] { return utm_app_export_statistics(path, 0); }, result, trace);
    }

    static void expect_import(const std::string &text, int32_t result, const std::string &trace) {
        write_file(import_path, text);
        expect([] { return utm_app_import_statistics(import_path); }, result, trace);
    }
};

constexpr char empty_file[] = R"({"user_profile_list":[],"global_stat":[]})";

// ---- The usage file ------------------------------------------------------------------------

TEST_F(Locks, AnExportWritesTheFileUnderTheFilesLockAloneAndReportsUnderNone) {
    make(usage_file::profile_t{3, 1, 2, 3});
    expect([] { return utm_app_export_statistics(export_path, 1); }, 0,
           "file(clock store() write flush rename) debug()");
    expect_export(export_path, 0, "store() file(clock store() write flush rename) debug()");
    expect_export(nullptr, -1, "store() file(clock) log");
    expect_export("", -1, "store() file(clock) log");
    expect_export("/tmp/none/export.json", -1, "store() file(clock store()) log");
    ASSERT_EQ(utm_app_debug_set(1), 0);
    expect_export(export_path, 0, "store() file(clock store() write flush rename) debug() log");
    world::set_active(false);
    expect_export(export_path, -1, "store()");
}

TEST_F(Locks, AnImportGivesTheStoreUpBetweenItsHalvesAndReportsUnderNoLock) {
    expect_import(empty_file, 0, "store() file(clock parse store() store()) log");
    // Profiles are created in its first half, and blocked there.
    expect_import(usage_file::text(usage_file::document_t{{{3}, {4}}, world::default_now, {}}), 0,
                  "store() file(clock parse store(sort clock clock) store()) log");
    world::empty_store();
    usage_file::profile_t profile = {3};
    profile.devices = {"00:11:22:33:44:55"};
    profile.policy = usage_file::policy_t{7, {{10, 1, 5}}};
    make(profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_find_profile(3)->daily_limit_enable = 1;
    }
    expect_import(
        usage_file::text(
            usage_file::document_t{{{3, 1440, 0, 0, {{10, 5}}}}, world::default_now, {{20}}}),
        0, "store() file(clock parse store(sort debug() run debug() event debug()) store()) log");
}

TEST_F(Locks, AnImportThatFailsLeavesTheStoreAlone) {
    expect_import("{", -1, "store() file(clock parse) log");
    expect_import("[]", -1, "store() file(clock parse) log");
    expect_import(usage_file::text(usage_file::document_t{{}, world::default_now + 86'400, {}}), -1,
                  "store() file(clock parse log) log");
    expect([] { return utm_app_import_statistics(nullptr); }, -1, "store() file(clock) log");
    expect([] { return utm_app_import_statistics("/tmp/none"); }, -1, "store() file(clock) log");
    world::set_active(false);
    expect_import(empty_file, -1, "store()");
}

/// The time of the last export as each word finds it: "before" it is set, or "after".
TEST_F(Locks, AnExportCountsOnceTheFileIsWrittenAndAnImportOnceAllIsTakenOver) {
    std::string words;
    const auto look = [&](const std::string &word) {
        words += word + (last_export_statistics_ts == 5 ? "before " : "after ");
    };
    set_last_export(5);
    call_trace::of([] { EXPECT_EQ(utm_app_export_statistics(export_path, 1), 0); }, look);
    EXPECT_EQ(words, "file(before clockbefore store(before )before writebefore flushbefore "
                     "renamebefore )after debug(after )after ");
    write_file(import_path, empty_file);
    set_last_export(5);
    words.clear();
    call_trace::of([] { EXPECT_EQ(utm_app_import_statistics(import_path), 0); }, look);
    EXPECT_EQ(words, "store(before )before file(before clockbefore parsebefore store(before "
                     ")before store(before )before )after logafter ");
}

// ---- When it is written --------------------------------------------------------------------

TEST_F(Locks, TheExportCheckLetsTheIntervalGoBeforeItAsksOrWrites) {
    set_last_export(world::default_now - 1800);
    EXPECT_EQ(call_trace::of(utm_app_export_check), "clock interval-read() uptime");
    set_last_export(world::default_now - 1801);
    EXPECT_EQ(
        call_trace::of(utm_app_export_check),
        "clock interval-read() uptime store() file(clock store() write flush rename) debug()");
    set_last_export(world::default_now - 1801);
    world::fail_sysinfo(-1);
    EXPECT_EQ(call_trace::of(utm_app_export_check), "clock interval-read() uptime debug()");
}

TEST_F(Locks, TheSwitchWritesAMissingFileAfterItHasLetTheStoreGo) {
    world::set_active(false);
    const auto on = [] { return utm_app_set_activate(1); };
    expect(on, 0, "store(run status look) debug() file(clock store() write flush rename) debug()");
    expect(on, 0, "store() debug()");
    expect([] { return utm_app_set_activate(0); }, 0, "store(run status) debug()");
    expect(on, 0, "store(run status look) debug()");
    expect([] { return utm_app_set_activate(2); }, -1, "");
}

// ---- A tick --------------------------------------------------------------------------------

TEST_F(Locks, ACollectorReadsTheClockAndThenHoldsTheStoreToItsEnd) {
    world::make_profile(3);
    world::make_profile(4, {world::tablet});
    expect(utm_app_update_app_status, 0, "clock store(query reap)");
    expect(utm_app_update_global_app_status, 0, "clock store(query reap)");
    world::fail_popen(1);
    expect(utm_app_update_app_status, -1, "clock store(query debug())");
    world::fail_popen(1);
    expect(utm_app_update_global_app_status, -1, "clock store(query debug())");
    world::set_now(world::default_now + 86'400); // each profile's weekday limit is taken
    expect(utm_app_update_app_status, 0, "clock store(clock event debug() clock query reap)");
}

// ---- The store's own operations ------------------------------------------------------------

/// Profile 1 with a device and, bound to it, policy 4 with a rule; policy 5 with one, unbound.
void make_bound_state() {
    world::empty_store();
    world::make_policy(4, {{12, 2, 0}}, world::make_profile(1, {world::tablet}));
    world::make_profile(2, {world::phone});
    world::make_policy(5, {{13, 2, 0}});
    world::set_active(true);
}

TEST_F(Locks, AnOperationHoldsTheStoreForAsLongAsItWorksOnIt) {
    int32_t minutes = 0;
    const config_policy_rule_t rule = {14, 2, 0};
    const std::pair<std::function<int32_t()>, const char *> cases[] = {
        {[] { return utm_app_create_profile(3); }, "clock store() debug()"},
        {[] { return utm_app_delete_profile(1); }, "store(run debug()) debug()"},
        {[] { return utm_app_flush_profiles(); }, "store(run debug() run debug()) debug()"},
        {[] { return utm_app_add_device(1, world::phone.data()); }, "store(run debug())"},
        {[] { return utm_app_delete_device(1, world::tablet.data()); }, "store(run debug())"},
        {[] { return utm_app_add_extend(1, 30); }, "store(debug())"},
        {[] { return utm_app_add_extend(9, 30); }, "store(debug())"},
        {[] { return utm_app_reset_extend(9); }, "store(debug())"},
        {[&] { return utm_app_get_extend(9, &minutes); }, "store(debug())"},
        {[] { return utm_app_create_policy(6); }, "store() debug()"},
        {[] { return utm_app_create_policy(4); }, "store() debug()"},
        {[&] { return utm_app_add_apps_to_policy(4, &rule, 1); }, "store(debug() run) debug()"},
        {[] { return utm_app_delete_policy(4); }, "store(run)"},
        {[] { return utm_app_add_policy_to_profile(2, 5); }, "store(debug() run debug())"},
        {[] { return utm_app_set_activate(0); }, "store(run status run) debug()"},
    };
    for (const auto &row : cases) {
        make_bound_state();
        EXPECT_EQ(call_trace::of([&] { static_cast<void>(row.first()); }), row.second);
    }
}

/// The router's client is reaped before its figures are counted: what they block runs programs too.
TEST_F(Locks, ACollectorReapsItsQueryBeforeItBlocks) {
    usage_file::profile_t profile = {3};
    profile.devices = {"00:11:22:33:44:55"};
    profile.policy = usage_file::policy_t{7, {{10, 1, 5}}};
    make(profile);
    world::on_popen([](const std::string &) {
        return R"({"data":[{"type":"APP","app_id":10,"total_time_usage":5}]})";
    });
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_app_status(), 0); }),
              "clock store(query reap debug() run)");
}

// ---- Rankings ------------------------------------------------------------------------------

TEST_F(Locks, WhatIsReadIsCopiedUnderTheStoresLock) {
    make(usage_file::profile_t{3, 0, 0, 0, {{10, 5}}});
    int32_t count = 0;
    EXPECT_EQ(
        call_trace::of([] { heap_ptr<config_weekday_pair_t>(utm_app_get_weekday_daily_limit(3)); }),
        "store()");
    EXPECT_EQ(call_trace::of([&] {
                  heap_ptr<config_prev_day_row_t>(utm_app_get_prev_day_usage(3, 0, &count));
              }),
              "clock store()");
}

TEST_F(Locks, ARankingIsSortedUnderNoLock) {
    make_router_app({10, 5});
    make_router_app({20, 6});
    int32_t count = 0;
    EXPECT_EQ(call_trace::of([&] { heap_ptr<config_app_minutes_t>(utm_app_get_top_apps(&count)); }),
              "store() sort");
    make(usage_file::profile_t{3, 0, 0, 0, {{10, 5}, {20, 6}}});
    EXPECT_EQ(call_trace::of(
                  [&] { heap_ptr<config_app_minutes_t>(utm_app_get_app_usage(3, 0, &count)); }),
              "clock store() sort");
    EXPECT_EQ(call_trace::of([] { utm_app_reset_top_apps(); }), "store() debug()");
}

// ---- The debug flag ------------------------------------------------------------------------

TEST_F(Locks, TheDebugFlagChangesUnderItsMutex) {
    std::string flags;
    const auto look = [&](const std::string &word) {
        flags += word + std::to_string(utm_app_debug_get());
    };
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_debug_set(1), 0); }, look), "debug()");
    EXPECT_EQ(flags, "debug(0)1");
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_debug_set(2), -1); }), "");
}

// ---- Commands ------------------------------------------------------------------------------

/// @return how many of the daemon's locks are held where a word stands, for each place
std::vector<int64_t> depths_of(const std::string &word, const std::string &trace) {
    std::vector<int64_t> depths;
    for (size_t at = 0; (at = trace.find(word, at)) != std::string::npos; at += word.size()) {
        const auto here = trace.begin() + static_cast<std::ptrdiff_t>(at);
        depths.push_back(std::count(trace.begin(), here, '(') -
                         std::count(trace.begin(), here, ')'));
    }
    return depths;
}

/// A request of any type that is served.
utm_app_config_cmd request_of(uint8_t type, const char *path) {
    const bool has_path = type == UTM_APP_CONFIG_LOAD_SIGNATURE ||
                          type == UTM_APP_CONFIG_IMPORT_STATISTICS ||
                          type == UTM_APP_CONFIG_EXPORT_STATISTICS;
    const int32_t first = type == UTM_APP_CONFIG_SET_ACTIVATE ? 1 : 3;
    return has_path ? sim_path_command(type, path) : world::request(type, {first});
}

TEST_F(Locks, NoCommandHoldsOneWhileItReplies) {
    int replying = 0;
    for (uint8_t type = 0; type <= 51; ++type) {
        empty_store();
        make(usage_file::profile_t{3, 0, 0, 0, {{10, 5}, {20, 6}}});
        world::make_policy(7, {{10, 1, 60}});
        const std::string trace = call_trace::of(
            [=] { world::exchange_bytes(sim_bytes(request_of(type, export_path))); });
        const std::vector<int64_t> depths = depths_of("reply", trace);
        EXPECT_EQ(depths, std::vector<int64_t>(depths.size(), 0)) << int{type} << ": " << trace;
        replying += depths.empty() ? 0 : 1;
    }
    EXPECT_EQ(replying, 29);
}

/// A shell whose output nobody takes is killed by it, in the midst of its loading.
TEST_F(Locks, ASignatureIsLoadedUnderNoLockAndItsShellHeardToItsEndBeforeTheReply) {
    for (const std::string &output : {std::string(), "loaded\n" + std::string(9000, '\n')}) {
        world::on_popen([&](const std::string &) { return output; });
        EXPECT_EQ(call_trace::of([] { world::exchange(sim_path_command(46, "/tmp/sig")); }),
                  "request debug() debug() debug() query reap reply");
    }
}

TEST_F(Locks, TheStatusIsReadUnderTheStoresLock) {
    EXPECT_EQ(call_trace::of([] { world::exchange(world::request(47)); }),
              "request debug() store() reply");
}

} // namespace
