#include "persist/export_schedule.h"

#include "tests/lib/world.h"

#include <climits>
#include <gtest/gtest.h>
#include <thread>

namespace {

class ExportInterval : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
    void TearDown() override { (void)!utm_app_set_export_interval(30); }
};

TEST_F(ExportInterval, TakesAnyNumberOfMinutesFromOneUp) {
    for (const int32_t minutes : {1, 2, 30, 1440, INT32_MAX}) {
        EXPECT_EQ(utm_app_set_export_interval(minutes), 0);
        EXPECT_EQ(utm_app_get_export_interval(), minutes);
    }
    EXPECT_EQ(world::trace(), "");
}

TEST_F(ExportInterval, StaysAsItWasWhenAValueIsRefused) {
    ASSERT_EQ(utm_app_set_export_interval(45), 0);
    for (const int32_t minutes : {0, -1, INT32_MIN}) {
        EXPECT_EQ(utm_app_set_export_interval(minutes), -1);
        EXPECT_EQ(utm_app_get_export_interval(), 45);
    }
    EXPECT_EQ(world::trace(), "");
}

TEST_F(ExportInterval, CountsFromTheLastExportAllTheSame) {
    last_export_statistics_ts = 1'000;
    EXPECT_EQ(utm_app_set_export_interval(1), 0);
    EXPECT_EQ(last_export_statistics_ts, 1'000);
}

TEST_F(ExportInterval, IsReadWhileOthersReadIt) {
    const read_guard lock(utm_export_interval_rwlock);
    int32_t seen = 0;
    std::thread([&] { seen = utm_app_get_export_interval(); }).join();
    EXPECT_EQ(seen, 30);
}

TEST_F(ExportInterval, IsNeverSeenHalfSet) {
    std::thread writer([] {
        for (int turn = 0; turn < 1000; ++turn)
            (void)!utm_app_set_export_interval(turn % 2 == 0 ? 1 : INT32_MAX);
    });
    for (int turn = 0; turn < 1000; ++turn) {
        const int32_t minutes = utm_app_get_export_interval();
        EXPECT_TRUE(minutes == 30 || minutes == 1 || minutes == INT32_MAX) << minutes;
    }
    writer.join();
}

} // namespace
