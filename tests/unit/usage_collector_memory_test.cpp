#include "usage/collector.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include "store/profiles.h"
#include "store/store.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using world::default_now;
using world::make_profile;

/// The collectors on a router whose memory runs out, one allocation after the other.
class CollectorWithoutMemory : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

constexpr char one_figure[] = R"({"data":[{"type":"APP","app_id":10,"total_time_usage":4}]})";
constexpr char query_of_phone[] =
    "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
    "'{\"s\":1772625540,\"e\":1772625600,\"mac\":\"AABBCCDDEE0F \"}'\n";
constexpr char query_of_router[] = "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                                   "'{\"s\":1772625540,\"e\":1772625600}'\n";

std::string two_profiles(const char *first, const char *second) {
    const std::string days = "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n";
    const std::string middle = ": devices 1 [AABBCCDDEE0F ], enabled 0, limit 1440 + 0, "
                               "used 0/0/0, blocked 0, collected ";
    const std::string app = "  app 10: used 4/0/0, blocked 0, days [] next 0\n";
    std::string text;
    for (const auto &[id, state] : {std::pair("1", first), std::pair("2", second)}) {
        const bool has_app = std::string(state).ends_with("apps 1");
        text += std::string("profile ") + id + middle + state + ", policy none\n" + days +
                (has_app ? app : "");
    }
    return text + "router: apps 0, collected +0\n";
}

struct memory_case_t {
    int nth;
    int allocations; ///< made in all
    int32_t result;
    std::string trace;
    std::string store;
};

TEST_F(CollectorWithoutMemory, NamesTheAllocationThatFailedAndKeepsTheStoreWhole) {
    const std::string query = query_of_phone;
    const std::string no_memory = "log Update app status failed because malloc failed\n";
    const std::string lost = "log Update app stat and block failed\n";
    // In turn: the reply buffer; the line, the index and the record of each of two profiles. An
    // index only saves time: without it nothing is lost.
    const memory_case_t cases[] = {
        {1, 1, -1, no_memory, two_profiles("+0, apps 0", "+0, apps 0")},
        {2, 2, -1, no_memory, two_profiles("+0, apps 0", "+0, apps 0")},
        {3, 7, 0, query + query, two_profiles("+60, apps 1", "+60, apps 1")},
        {4, 7, 0, query + lost + query, two_profiles("+60, apps 0", "+60, apps 1")},
        {5, 5, -1, query + no_memory, two_profiles("+60, apps 1", "+0, apps 0")},
        {6, 7, 0, query + query, two_profiles("+60, apps 1", "+60, apps 1")},
        {7, 7, 0, query + query + lost, two_profiles("+60, apps 1", "+60, apps 0")},
        {8, 7, 0, query + query, two_profiles("+60, apps 1", "+60, apps 1")},
    };
    for (const memory_case_t &c : cases) {
        world::reset();
        make_profile(1, {world::phone});
        make_profile(2, {world::phone});
        world::set_now(default_now + 60);
        world::on_popen([](const std::string &) { return one_figure; });
        world::fail_allocation(c.nth);
        EXPECT_EQ(utm_app_update_app_status(), c.result) << c.nth;
        EXPECT_EQ(world::allocations(), c.allocations) << c.nth;
        EXPECT_EQ(world::trace(), c.trace) << c.nth;
        EXPECT_EQ(world::render_store(), c.store) << c.nth;
        EXPECT_EQ(world::open_pipes(), 0) << c.nth;
    }
}

TEST_F(CollectorWithoutMemory, BuildsADeviceTextThatCouldNotBeHadBefore) {
    make_profile(3);
    world::fail_allocation(2); // the first one is the device's
    ASSERT_EQ(utm_app_add_device(3, world::phone.data()), 0);
    world::fail_allocation(2); // the first one is the reply's
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(world::trace(), "log Update device list string failed because malloc failed\n"
                              "log Add dev mac = AA:BB:CC:DD:EE:0F to profile 3 success\n"
                              "log Update device list string failed because malloc failed\n"
                              "log Update app status failed because malloc failed\n");
    world::fail_allocation(0);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::trace(), "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772625540,\"e\":1772625540,\"mac\":\"AABBCCDDEE0F \"}'\n");
}

TEST_F(CollectorWithoutMemory, LeavesTheRoutersPipeOpen) {
    world::set_now(default_now + 60);
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_update_global_app_status(), -1);
    EXPECT_EQ(world::trace(),
              query_of_router +
                  std::string("log Update global app status failed because malloc failed\n"));
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +0\n");
    EXPECT_EQ(world::open_pipes(), 1);
    world::close_pipes();
}

TEST_F(CollectorWithoutMemory, LosesTheRoutersFigureInSilence) {
    world::set_now(default_now + 60);
    world::on_popen([](const std::string &) { return one_figure; });
    world::fail_allocation(3); // behind the reply buffer and the index
    EXPECT_EQ(utm_app_update_global_app_status(), 0);
    EXPECT_EQ(world::trace(), query_of_router);
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +60\n");
    EXPECT_EQ(world::open_pipes(), 0);
}

TEST_F(CollectorWithoutMemory, RollsTheRouterOverBeforeItFails) {
    world::on_popen([](const std::string &) { return one_figure; });
    ASSERT_EQ(utm_app_update_global_app_status(), 0);
    world::set_now(world::local(2026, 3, 5));
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_update_global_app_status(), -1);
    EXPECT_EQ(world::render_store(), "router: apps 1, collected +0\n"
                                     "  app 10: used 0/4/0, blocked 0, days [0:4] next 1\n");
    world::close_pipes();
}

/// Says on the way out how many pipes are open.
void tell_open_pipes(int) {
    char text[] = "pipes open: 0\n";
    text[sizeof(text) - 3] = static_cast<char>('0' + world::open_pipes());
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof(text) - 1);
}

/// Runs a collector on a reply of 3000 bytes whose buffer cannot grow to its third step.
void collect_without_memory(int32_t (*collector)(), int allocation) {
    signal(SIGABRT, tell_open_pipes);
    world::on_popen([](const std::string &) { return std::string(3000, ' ') + one_figure; });
    world::fail_allocation(allocation);
    _exit(collector() == 0 ? 10 : 11);
}

TEST_F(CollectorWithoutMemory, EndsTheDaemonWhenAProfilesReplyDoesNotFit) {
    make_profile(3, {world::phone});
    // The buffer, the line, the step to 2048 bytes and the one to 3072.
    EXPECT_EXIT(collect_without_memory(utm_app_update_app_status, 4),
                testing::KilledBySignal(SIGABRT), "pipes open: 0");
    EXPECT_EQ(world::trace(), "log Update app status failed because realloc 3072 failed\n");
    EXPECT_EXIT(collect_without_memory(utm_app_update_app_status, 3),
                testing::KilledBySignal(SIGABRT), "pipes open: 0");
    EXPECT_EQ(world::trace(), "log Update app status failed because realloc 2048 failed\n");
}

TEST_F(CollectorWithoutMemory, EndsTheDaemonWhenTheRoutersReplyDoesNotFit) {
    EXPECT_EXIT(collect_without_memory(utm_app_update_global_app_status, 3),
                testing::KilledBySignal(SIGABRT), "pipes open: 0");
    EXPECT_EQ(world::trace(), "log Update global app status failed because realloc 3072 failed\n");
}

} // namespace
