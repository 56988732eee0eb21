#include "persist/export_schedule.h"

#include "tests/lib/world.h"
#include "tests/unit/support/call_trace.h"

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

/// Sets the interval right before each lock call, without the lock.
std::function<void(const std::string &)> setting(int32_t when_taken, int32_t when_given_back) {
    return [=](const std::string &word) {
        statistics_export_interval_minute = word == ")" ? when_given_back : when_taken;
    };
}

TEST_F(ExportInterval, IsReadUnderItsLock) {
    int32_t seen = 0;
    EXPECT_EQ(call_trace::of([&] { seen = utm_app_get_export_interval(); }, setting(77, 88)),
              "interval-read()");
    EXPECT_EQ(seen, 77);
}

TEST_F(ExportInterval, IsSetUnderItsLock) {
    std::string seen;
    const auto look = [&](const std::string &word) {
        seen += word + std::to_string(statistics_export_interval_minute);
    };
    EXPECT_EQ(call_trace::of([] { EXPECT_EQ(utm_app_set_export_interval(5), 0); }, look),
              "interval-write()");
    EXPECT_EQ(seen, "interval-write(30)5");
}

} // namespace
