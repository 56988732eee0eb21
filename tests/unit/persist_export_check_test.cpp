#include "persist/export_schedule.h"

#include "core/debug_log.h"
#include "format/usage_file.h"
#include "tests/lib/int32_limits.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

namespace {

const std::string written = "log export to /tmp/ApplicationData/app_usage.json success\n";

class ExportCheck : public usage_file_fixture {
protected:
    void SetUp() override {
        usage_file_fixture::SetUp();
        std::filesystem::create_directory("/tmp/ApplicationData");
    }

    static void set_interval(int32_t minutes) {
        ASSERT_EQ(utm_app_set_export_interval(minutes), 0);
    }

    /// Checks with so many seconds gone since the last export, at `default_now`.
    /// @return whether the file was written
    static bool exports_after(int64_t seconds) {
        std::filesystem::remove(usage_file_path);
        set_last_export(world::default_now - seconds);
        world::trace();
        utm_app_export_check();
        const std::string trace = world::trace();
        EXPECT_TRUE(trace.empty() || trace == written) << trace;
        EXPECT_EQ(std::filesystem::exists(usage_file_path), !trace.empty());
        EXPECT_EQ(last_export_statistics_ts,
                  trace.empty() ? world::default_now - seconds : world::default_now);
        return !trace.empty();
    }
};

TEST_F(ExportCheck, ExportsWhenMoreThanAnIntervalHasPassed) {
    EXPECT_FALSE(exports_after(0));
    EXPECT_FALSE(exports_after(1799));
    EXPECT_FALSE(exports_after(1800));
    EXPECT_TRUE(exports_after(1801));
    EXPECT_TRUE(exports_after(1'000'000));
    // A clock that was set back waits for the time to come round again.
    EXPECT_FALSE(exports_after(-1'000'000));
}

TEST_F(ExportCheck, WaitsUntilTheRouterHasBeenUpForAnInterval) {
    world::set_uptime(1799);
    EXPECT_FALSE(exports_after(100'000));
    world::set_uptime(1800);
    EXPECT_TRUE(exports_after(100'000));
    EXPECT_FALSE(exports_after(1800));
}

TEST_F(ExportCheck, ExportsOnEveryThirtyFirstTick) {
    std::string ticks;
    set_last_export(world::default_now);
    for (int tick = 1; tick <= 100; ++tick) {
        world::set_now(world::default_now + 60 * tick);
        utm_app_export_check();
        if (!world::trace().empty())
            ticks += std::to_string(tick) + " ";
    }
    EXPECT_EQ(ticks, "31 62 93 ");
}

TEST_F(ExportCheck, ExportsOnEveryTickThatIsMoreThanAMinuteAfterTheLast) {
    set_interval(1);
    EXPECT_FALSE(exports_after(60));
    EXPECT_TRUE(exports_after(61));
    world::set_uptime(59);
    EXPECT_FALSE(exports_after(61));
}

TEST_F(ExportCheck, WritesTheWholeStoreToItsOwnFile) {
    make(usage_file::profile_t{3, 1, 2, 3});
    EXPECT_TRUE(exports_after(1801));
    EXPECT_EQ(read_file(usage_file_path),
              usage_file::text(usage_file::document_t{{{3, 1, 2, 3}}, world::default_now, {}}));
}

TEST_F(ExportCheck, WritesNothingWhileTheFeatureIsOff) {
    world::set_active(false);
    EXPECT_FALSE(exports_after(1801));
    set_interval(1);
    EXPECT_FALSE(exports_after(1'000'000));
}

TEST_F(ExportCheck, PostponesTheNextExportByAnIntervalWhenOneFails) {
    std::filesystem::remove_all("/tmp/ApplicationData");
    set_last_export(world::default_now - 1801);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), "log export to /tmp/ApplicationData/app_usage.json failed\n");
    EXPECT_EQ(last_export_statistics_ts, world::default_now);
    std::filesystem::create_directory("/tmp/ApplicationData");
    world::set_now(world::default_now + 1800);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), "");
    world::set_now(world::default_now + 1801);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), written);
}

TEST_F(ExportCheck, PutsTheExportOffWhenTheUptimeIsUnknown) {
    world::fail_sysinfo(-1);
    set_last_export(world::default_now - 1801);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), "log sysinfo code error = -1\n");
    EXPECT_FALSE(std::filesystem::exists(usage_file_path));
    EXPECT_EQ(last_export_statistics_ts, world::default_now - 1801);
    world::fail_sysinfo(0);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), written);
}

TEST_F(ExportCheck, TellsOfAnUnknownUptimeOnlyWhileLoggingIsOn) {
    world::fail_sysinfo(-1);
    ASSERT_EQ(utm_app_debug_set(0), 0);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), "");
}

TEST_F(ExportCheck, WaitsForTheLongestIntervalThatIsNotCut) {
    constexpr int32_t longest = int32_max / 60;
    set_interval(longest);
    world::set_uptime(int64_t{longest} * 60);
    EXPECT_FALSE(exports_after(int64_t{longest} * 60));
    EXPECT_TRUE(exports_after(int64_t{longest} * 60 + 1));
}

TEST_F(ExportCheck, NeverExportsWhereTheIntervalInSecondsComesOutNegative) {
    // 2147483647 x 60 is -60 in 32 bits, which as an uptime no router reaches.
    for (const int32_t minutes : {int32_max, int32_max / 60 + 1, 71'582'788}) {
        set_interval(minutes);
        world::set_uptime(std::numeric_limits<long>::max());
        EXPECT_FALSE(exports_after(0)) << minutes;
        EXPECT_FALSE(exports_after(1'000'000'000'000)) << minutes;
    }
}

TEST_F(ExportCheck, TakesAnIntervalBeyondThirtyTwoBitsOfSecondsForTheRemainder) {
    // 71582789 x 60 is 2^32 + 44.
    set_interval(71'582'789);
    EXPECT_FALSE(exports_after(44));
    EXPECT_TRUE(exports_after(45));
}

TEST_F(ExportCheck, SetsIntervalsOfAMinuteAndMore) {
    EXPECT_EQ(utm_app_get_export_interval(), 30);
    for (const int32_t minutes : {1, 31, int32_max}) {
        EXPECT_EQ(utm_app_set_export_interval(minutes), 0);
        EXPECT_EQ(utm_app_get_export_interval(), minutes);
    }
    for (const int32_t minutes : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(utm_app_set_export_interval(minutes), -1);
        EXPECT_EQ(utm_app_get_export_interval(), int32_max);
    }
    EXPECT_EQ(world::trace(), "");
}

TEST_F(ExportCheck, CountsANewIntervalFromTheLastExport) {
    set_last_export(world::default_now - 301);
    set_interval(5);
    EXPECT_EQ(last_export_statistics_ts, world::default_now - 301);
    utm_app_export_check();
    EXPECT_EQ(world::trace(), written);
}

} // namespace
