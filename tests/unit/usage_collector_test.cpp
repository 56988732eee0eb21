#include "usage/collector.h"

#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/unit/support/world_test.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using world::default_now;
using world::local;
using world::make_policy;
using world::make_profile;
using world::make_usage;

class Collector : public world_test {};

/// The end of the trace's line for a query of seconds from and to, and where a profile's devices
/// are asked for, their text.
std::string query_line(const std::string &from, const std::string &to, const char *mac = nullptr) {
    return "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":" + from + ",\"e\":" + to +
           (mac == nullptr ? "" : std::string(",\"mac\":\"") + mac + "\"") + "}'\n";
}

std::string query(const std::string &from, const std::string &to, const char *mac = nullptr) {
    return "query " + query_line(from, to, mac);
}

constexpr char phone_text[] = "AABBCCDDEE0F ";
constexpr char before_now[] = "1772625540"; ///< a lag before `default_now`
const std::string phones_minute = query(before_now, "1772625600", phone_text);
const std::string phones_new_day = query(before_now, "1772668740", phone_text);
const std::string routers_minute = query(before_now, "1772625600");

/// Answers the queries of a tick in turn; a query that is one too many is answered "{}".
void answer(std::vector<std::string> replies) {
    world::on_popen([replies, next = size_t{0}](const std::string &) mutable {
        return next < replies.size() ? replies[next++] : "{}";
    });
}

constexpr char one_figure[] = R"({"data":[{"type":"APP","app_id":10,"total_time_usage":4}]})";

std::string store() {
    EXPECT_EQ(world::open_pipes(), 0);
    return world::brief(world::render_store());
}

TEST_F(Collector, DoesNothingWithoutAProfile) {
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Collector, AddsUpWhatADeviceUsedAndTheRoutersApplicationsAlone) {
    make_profile(3, {world::phone});
    world::set_now(default_now + 60);
    world::on_popen([](const std::string &) {
        return R"({"data":[{"type":"APP","app_id":10,"total_time_usage":4},)"
               R"({"type":"INTERNET","app_id":0,"total_time_usage":9},)"
               R"({"type":"APPLICATION","app_id":20,"total_time_usage":5},)"
               R"({"type":"APP","app_id":10,"total_time_usage":1},)"
               R"({"type":"INTERNET_V6","app_id":0,"total_time_usage":1},)"
               R"({"type":"OTHER","app_id":30,"total_time_usage":6}]})";
    });
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(utm_app_update_global_app_status(), 0);
    EXPECT_EQ(store(), "profile 3: devices 1 [AABBCCDDEE0F ], used 10/0/0, collected +60, apps 2\n"
                       "  app 20: used 5/0/0\n"
                       "  app 10: used 5/0/0\n"
                       "router: apps 2, collected +60\n"
                       "  app 20: used 5/0/0\n"
                       "  app 10: used 5/0/0\n");
    EXPECT_EQ(world::trace(), phones_minute + routers_minute);
}

TEST_F(Collector, AsksForEachProfilesOwnInterval) {
    make_profile(3, world::both)->last_collect_ts = 1'772'600'000;
    make_profile(-5, {world::phone})->last_collect_ts = 0;
    world::set_now(default_now + 60);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    // The clock then goes back: the interval ends before it starts.
    world::set_now(default_now);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    const char *macs = "001122334455 AABBCCDDEE0F ";
    EXPECT_EQ(world::trace(), query("1772599940", "1772625600", macs) +
                                  world::unblock_event(-5) + // it was collected in 1970
                                  query("-60", "1772625600", phone_text) +
                                  query("1772625600", before_now, macs) +
                                  query("1772625600", before_now, phone_text));
    // Nobody answered, and the interval has passed all the same.
    EXPECT_EQ(store(), "profile 3: devices 2 [001122334455 AABBCCDDEE0F ]\n"
                       "profile -5: devices 1 [AABBCCDDEE0F ]\n"
                       "router: apps 0\n");
}

TEST_F(Collector, NeverQueriesAProfileWithoutDevicesButRollsItOver) {
    config_user_profile_t *profile = make_profile(3);
    profile->daily_used = 5;
    profile->blocked = 1;
    make_usage(profile, {{10, 4}});
    world::set_now(local(2026, 3, 5));
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(store(), "profile 3: devices 0 [], used 0/5/0, collected +43200, apps 1\n"
                       "  app 10: used 0/4/0, days [0:4] next 1\n"
                       "router: apps 0\n");
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Collector, RollsOverBeforeItAsksAndAddsToTheNewDay) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    profile->daily_used = 5;
    profile->blocked = 1;
    make_usage(profile, {{10, 4}});
    world::set_now(local(2026, 3, 5));
    answer({R"({"data":[{"type":"INTERNET","app_id":0,"total_time_usage":1},)"
            R"({"type":"APP","app_id":10,"total_time_usage":2}]})"});
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(store(), "profile 3: devices 1 [AABBCCDDEE0F ], used 1/5/0, collected +43200, "
                       "apps 1\n"
                       "  app 10: used 2/4/0, days [0:4] next 1\n"
                       "router: apps 0\n");
    EXPECT_EQ(world::trace(), world::unblock_event(3) + world::unblock_event(3) + phones_new_day);
}

TEST_F(Collector, BlocksWhatTheFiguresUseUpInTheirOrder) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    profile->daily_limit_enable = 1;
    profile->daily_limit = 60;
    profile->daily_used = 59;
    make_usage(profile, {{10, 4}});
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 5}}, profile);
    world::set_active(true);
    answer({R"({"data":[{"type":"APP","app_id":10,"total_time_usage":1},)"
            R"({"type":"INTERNET","app_id":0,"total_time_usage":1}]})"});
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::trace(), query(before_now, before_now, phone_text) +
                                  "log Block app 10 for profile 3 because 5 exceed 5\n" +
                                  world::block_lines({world::phone}, 10) +
                                  "log Block profile 3 to use network because 60 exceed 60\n" +
                                  world::block_event(3));
}

TEST_F(Collector, EndsThePassWhereAQueryCannotBeMade) {
    // Three profiles and a new day; the second one's query fails.
    for (const int32_t id : {1, 2, 3})
        make_profile(id, {world::phone})->daily_used = 5;
    world::set_now(local(2026, 3, 5));
    world::fail_popen(2);
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(world::trace(), world::unblock_event(1) + phones_new_day + world::unblock_event(2) +
                                  "query failed " +
                                  query_line(before_now, "1772668740", phone_text) +
                                  "log Update app status failed because popen failed\n");
    EXPECT_EQ(store(), "profile 1: devices 1 [AABBCCDDEE0F ], used 0/5/0, collected +43200\n"
                       "profile 2: devices 1 [AABBCCDDEE0F ], used 0/5/0\n"
                       "profile 3: devices 1 [AABBCCDDEE0F ], used 5/0/0\n"
                       "router: apps 0\n");
}

TEST_F(Collector, RollsOverAgainAfterAFailedQueryOfTheNewDay) {
    // The collection time stays behind, so the next tick meets the same midnight once more.
    make_usage(make_profile(3, {world::phone}), {{10, 4}});
    world::set_now(local(2026, 3, 5));
    world::fail_popen(1);
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::brief(world::render_apps(3)),
              "apps 1\n  app 10: used 0/4/0, days [0:4] next 2\n");
}

TEST_F(Collector, KeepsEachProfilesReplyToItself) {
    // A long reply, a shorter one, and none: nothing of the first may show in the others.
    for (const int32_t id : {1, 2, 3})
        make_profile(id, {world::phone});
    const std::string figure = R"({"type":"INTERNET","app_id":0,"total_time_usage":1})";
    std::string figures = figure;
    for (int i = 1; i < 100; ++i)
        figures += "," + figure;
    answer({"{\"data\":[" + figures + "]}", "{\"data\":[" + figure + "]}", ""});
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(store(), "profile 1: devices 1 [AABBCCDDEE0F ], used 100/0/0\n"
                       "profile 2: devices 1 [AABBCCDDEE0F ], used 1/0/0\n"
                       "profile 3: devices 1 [AABBCCDDEE0F ]\n"
                       "router: apps 0\n");
}

TEST_F(Collector, LeavesTheRoutersIntervalToTheNextTickWhenItsQueryFails) {
    world::set_now(default_now + 60);
    world::fail_popen(1);
    EXPECT_EQ(utm_app_update_global_app_status(), -1);
    EXPECT_EQ(store(), "router: apps 0\n");
    EXPECT_EQ(world::trace(), "query failed " + query_line(before_now, "1772625600") +
                                  "log Update global app status failed because popen failed\n");
}

// ---- Without memory ------------------------------------------------------------------------

struct memory_case_t {
    int nth;
    int allocations; ///< made in all
    int32_t result;
    std::string trace;
    const char *first, *second; ///< profile
};

TEST_F(Collector, NamesTheAllocationThatFailedAndKeepsTheStoreWhole) {
    const std::string query = phones_minute;
    const std::string no_memory = "log Update app status failed because malloc failed\n";
    const std::string lost = "log Update app stat and block failed\n";
    const char *counted = ", collected +60, apps 1\n  app 10: used 4/0/0\n";
    const char *uncounted = ", collected +60\n";
    // In turn: the reply buffer; the line, the index and the record of each of two profiles. An
    // index only saves time: without it nothing is lost.
    const memory_case_t cases[] = {
        {1, 1, -1, no_memory, "\n", "\n"},
        {2, 2, -1, no_memory, "\n", "\n"},
        {3, 7, 0, query + query, counted, counted},
        {4, 7, 0, query + lost + query, uncounted, counted},
        {5, 5, -1, query + no_memory, counted, "\n"},
        {6, 7, 0, query + query, counted, counted},
        {7, 7, 0, query + query + lost, counted, uncounted},
        {8, 7, 0, query + query, counted, counted},
    };
    for (const memory_case_t &c : cases) {
        SCOPED_TRACE(c.nth);
        world::reset();
        make_profile(1, {world::phone});
        make_profile(2, {world::phone});
        world::set_now(default_now + 60);
        world::on_popen([](const std::string &) { return one_figure; });
        world::fail_allocation(c.nth);
        EXPECT_EQ(utm_app_update_app_status(), c.result);
        EXPECT_EQ(world::allocations(), c.allocations);
        EXPECT_EQ(world::trace(), c.trace);
        const std::string devices = ": devices 1 [AABBCCDDEE0F ]";
        EXPECT_EQ(store(), "profile 1" + devices + c.first + "profile 2" + devices + c.second +
                               "router: apps 0\n");
    }
}

TEST_F(Collector, BuildsADeviceTextThatCouldNotBeHadBefore) {
    make_profile(3);
    world::fail_allocation(2); // the first one is the device's
    ASSERT_EQ(utm_app_add_device(3, world::phone.data()), 0);
    world::trace();
    world::fail_allocation(2); // the first one is the reply's
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(world::trace(), "log Update device list string failed because malloc failed\n"
                              "log Update app status failed because malloc failed\n");
    world::fail_allocation(0);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::trace(), query(before_now, before_now, phone_text));
}

TEST_F(Collector, LeavesTheRoutersPipeOpenAndItsDayRolledOver) {
    world::on_popen([](const std::string &) { return one_figure; });
    ASSERT_EQ(utm_app_update_global_app_status(), 0);
    world::trace();
    world::set_now(local(2026, 3, 5));
    world::fail_allocation(1);
    EXPECT_EQ(utm_app_update_global_app_status(), -1);
    EXPECT_EQ(world::trace(), query(before_now, "1772668740") +
                                  "log Update global app status failed because malloc failed\n");
    EXPECT_EQ(world::brief(world::render_router()), "router: apps 1\n"
                                                    "  app 10: used 0/4/0, days [0:4] next 1\n");
    EXPECT_EQ(world::open_pipes(), 1);
    world::close_pipes();
}

TEST_F(Collector, LosesTheRoutersFigureInSilence) {
    world::set_now(default_now + 60);
    world::on_popen([](const std::string &) { return one_figure; });
    world::fail_allocation(3); // behind the reply buffer and the index
    EXPECT_EQ(utm_app_update_global_app_status(), 0);
    EXPECT_EQ(world::trace(), routers_minute);
    EXPECT_EQ(store(), "router: apps 0, collected +60\n");
}

/// Says on the way out how many pipes are open.
void tell_open_pipes(int) {
    char text[] = "pipes open: 0\n";
    text[sizeof(text) - 3] = static_cast<char>('0' + world::open_pipes());
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof(text) - 1);
}

/// Runs a collector on a reply of 3000 bytes whose buffer cannot grow.
void collect_without_memory(int32_t (*collector)(), int allocation) {
    signal(SIGABRT, tell_open_pipes);
    world::on_popen([](const std::string &) { return std::string(3000, ' ') + one_figure; });
    world::fail_allocation(allocation);
    _exit(collector() == 0 ? 10 : 11);
}

TEST_F(Collector, EndsTheDaemonWhenAReplyDoesNotFit) {
    struct {
        int32_t (*collector)();
        int allocation;
        const char *line;
    } const cases[] = {
        // The buffer, a profile's line, the step to 2048 bytes and the one to 3072.
        {utm_app_update_app_status, 4,
         "log Update app status failed because realloc 3072 failed\n"},
        {utm_app_update_app_status, 3,
         "log Update app status failed because realloc 2048 failed\n"},
        {utm_app_update_global_app_status, 3,
         "log Update global app status failed because realloc 3072 failed\n"},
    };
    make_profile(3, {world::phone});
    for (const auto &c : cases) {
        EXPECT_EXIT(collect_without_memory(c.collector, c.allocation),
                    testing::KilledBySignal(SIGABRT), "pipes open: 0");
        EXPECT_EQ(world::trace(), c.line);
    }
}

} // namespace
