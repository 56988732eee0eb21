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
#include "tests/lib/exchange.h"
#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "usage/collector.h"
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
        switch_log(0);
    }

    static void switch_log(unsigned value) { ASSERT_EQ(utm_app_debug_set(value), 0); }

    static std::string trace_of_export(const char *path, int32_t force, int32_t result) {
        return call_trace::of([=] { EXPECT_EQ(utm_app_export_statistics(path, force), result); });
    }

    static std::string trace_of_import(const std::string &text, int32_t result) {
        write_file(import_path, text);
        return call_trace::of([=] { EXPECT_EQ(utm_app_import_statistics(import_path), result); });
    }

    static std::string trace_of_switch(uint32_t value) {
        return call_trace::of([=] { EXPECT_EQ(utm_app_set_activate(value), 0); });
    }

    static std::string trace_of_check(time_t seconds_since_the_last) {
        set_last_export(world::default_now - seconds_since_the_last);
        return call_trace::of(utm_app_export_check);
    }
};

constexpr char empty_file[] = R"({"user_profile_list":[],"global_stat":[]})";

// ---- The usage file ------------------------------------------------------------------------

TEST_F(Locks, AnExportWritesTheFileUnderTheFilesLockAlone) {
    make(usage_file::profile_t{3, 1, 2, 3});
    EXPECT_EQ(trace_of_export(export_path, 0, 0),
              "store() file(clock store() write flush rename) debug()");
    EXPECT_EQ(trace_of_export(export_path, 1, 0), "file(clock store() write flush rename) debug()");
}

TEST_F(Locks, AnExportReportsUnderNoLock) {
    EXPECT_EQ(trace_of_export(nullptr, 0, -1), "store() file(clock) log");
    EXPECT_EQ(trace_of_export("", 0, -1), "store() file(clock) log");
    EXPECT_EQ(trace_of_export("/tmp/none/export.json", 0, -1), "store() file(clock store()) log");
    switch_log(1);
    EXPECT_EQ(trace_of_export(export_path, 0, 0),
              "store() file(clock store() write flush rename) debug() log");
    world::set_active(false);
    EXPECT_EQ(trace_of_export(export_path, 0, -1), "store()");
}

TEST_F(Locks, AnImportGivesTheStoreUpBetweenItsHalvesAndReportsUnderNoLock) {
    EXPECT_EQ(trace_of_import(empty_file, 0), "store() file(clock parse store() store()) log");
}

TEST_F(Locks, AnImportBlocksInItsFirstHalf) {
    usage_file::profile_t profile = {3};
    profile.devices = {"00:11:22:33:44:55"};
    profile.policy = usage_file::policy_t{7, {{10, 1, 5}}};
    make(profile);
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_find_profile(3)->daily_limit_enable = 1;
    }
    const usage_file::document_t file = {{{3, 1440, 0, 0, {{10, 5}}}}, world::default_now, {{20}}};
    EXPECT_EQ(
        trace_of_import(usage_file::text(file), 0),
        "store() file(clock parse store(sort debug() run debug() event debug()) store()) log");
}

TEST_F(Locks, AnImportCreatesAProfileInItsFirstHalf) {
    const usage_file::document_t file = {{{3}, {4}}, world::default_now, {}};
    EXPECT_EQ(trace_of_import(usage_file::text(file), 0),
              "store() file(clock parse store(sort clock clock) store()) log");
}

TEST_F(Locks, AnImportThatFailsLeavesTheStoreAlone) {
    EXPECT_EQ(trace_of_import("{", -1), "store() file(clock parse) log");
    EXPECT_EQ(trace_of_import("[]", -1), "store() file(clock parse) log");
    const usage_file::document_t future = {{}, world::default_now + 86'400, {}};
    EXPECT_EQ(trace_of_import(usage_file::text(future), -1), "store() file(clock parse log) log");
    const auto import = [](const char *path) {
        return call_trace::of([=] { EXPECT_EQ(utm_app_import_statistics(path), -1); });
    };
    EXPECT_EQ(import(nullptr), "store() file(clock) log");
    EXPECT_EQ(import("/tmp/none"), "store() file(clock) log");
    world::set_active(false);
    EXPECT_EQ(import(import_path), "store()");
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
    EXPECT_EQ(trace_of_check(1800), "clock interval-read() uptime");
    EXPECT_EQ(trace_of_check(1801), "clock interval-read() uptime "
                                    "store() file(clock store() write flush rename) debug()");
    world::fail_sysinfo(-1);
    EXPECT_EQ(trace_of_check(1801), "clock interval-read() uptime debug()");
}

TEST_F(Locks, TheSwitchWritesAMissingFileAfterItHasLetTheStoreGo) {
    world::set_active(false);
    EXPECT_EQ(trace_of_switch(1), "store(run status look) debug() "
                                  "file(clock store() write flush rename) debug()");
    EXPECT_EQ(trace_of_switch(1), "store() debug()");
    EXPECT_EQ(trace_of_switch(0), "store(run status) debug()");
    EXPECT_EQ(trace_of_switch(1), "store(run status look) debug()");
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_set_activate(2), -1); }), "");
}

// ---- A tick --------------------------------------------------------------------------------

TEST_F(Locks, ACollectorReadsTheClockBeforeItWaitsForTheStore) {
    make(usage_file::profile_t{3});
    usage_file::profile_t second = {4};
    second.devices = {"00:11:22:33:44:55"};
    make(second);
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_app_status(), 0); }),
              "clock store(query reap)");
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_global_app_status(), 0); }),
              "clock store(query reap)");
}

TEST_F(Locks, ACollectorHoldsTheStoreToItsEnd) {
    usage_file::profile_t profile = {3};
    profile.devices = {"00:11:22:33:44:55"};
    make(profile);
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_app_status(), 0); }),
              "clock store(query reap)");
    world::set_now(world::default_now + 86'400);
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_app_status(), 0); }),
              "clock store(event debug() clock query reap)");
    world::fail_popen(1);
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_app_status(), -1); }),
              "clock store(query debug())");
    world::fail_popen(1);
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_update_global_app_status(), -1); }),
              "clock store(query debug())");
}

// ---- Rankings ------------------------------------------------------------------------------

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

TEST_F(Locks, ASignatureIsLoadedUnderNoLockAndItsShellReapedBeforeTheReply) {
    EXPECT_EQ(call_trace::of([] { world::exchange(sim_path_command(46, "/tmp/sig")); }),
              "request debug() debug() debug() query reap reply");
}

/// A shell whose output nobody takes is killed by it, in the midst of its loading.
TEST_F(Locks, ASignaturesShellIsHeardToItsEndWhateverItSays) {
    world::on_popen([](const std::string &) { return "loaded\n" + std::string(9000, '\n'); });
    EXPECT_EQ(call_trace::of(
                  [] { EXPECT_EQ(world::exchange(sim_path_command(46, "/tmp/sig")), "ok\n"); }),
              "request debug() debug() debug() query reap reply");
}

TEST_F(Locks, TheStatusIsReadUnderTheStoresLock) {
    EXPECT_EQ(call_trace::of([] { world::exchange(world::request(47)); }),
              "request debug() store() reply");
}

} // namespace
