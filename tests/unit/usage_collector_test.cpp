#include "usage/collector.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include "store/store.h"

#include <gtest/gtest.h>

namespace {

using world::default_now;
using world::local;
using world::make_policy;
using world::make_profile;
using world::make_usage;

class Collector : public testing::Test {
protected:
    void SetUp() override { world::reset(); }
};

std::string query(const char *seconds, const char *mac) {
    return std::string("query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{") + seconds +
           ",\"mac\":\"" + mac + "\"}'\n";
}

/// Answers the queries of a tick in turn; a query that is one too many is answered "{}".
void answer(std::vector<std::string> replies) {
    world::on_popen([replies, next = size_t{0}](const std::string &) mutable {
        return next < replies.size() ? replies[next++] : "{}";
    });
}

TEST_F(Collector, DoesNothingWithoutAProfile) {
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(world::trace(), "");
}

TEST_F(Collector, AddsUpWhatADeviceUsed) {
    make_profile(3, {world::phone});
    world::set_now(default_now + 60);
    answer({R"({"data":[{"type":"APP","app_id":10,"total_time_usage":4},)"
            R"({"type":"INTERNET","app_id":0,"total_time_usage":9},)"
            R"({"type":"APPLICATION","app_id":20,"total_time_usage":5},)"
            R"({"type":"INTERNET_V6","app_id":0,"total_time_usage":1},)"
            R"({"type":"OTHER","app_id":30,"total_time_usage":6}]})"});
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::render_store(),
              "profile 3: devices 1 [AABBCCDDEE0F ], enabled 0, limit 1440 + 0, used 10/0/0, "
              "blocked 0, collected +60, apps 2, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 20: used 5/0/0, blocked 0, days [] next 0\n"
              "  app 10: used 4/0/0, blocked 0, days [] next 0\n"
              "router: apps 0, collected +0\n");
    EXPECT_EQ(world::trace(), query(R"("s":1772625540,"e":1772625600)", "AABBCCDDEE0F "));
    EXPECT_EQ(world::open_pipes(), 0);
}

TEST_F(Collector, AsksForEachProfilesOwnInterval) {
    make_profile(3, {world::tablet, world::phone})->last_collect_ts = 1'772'600'000;
    make_profile(-5, {world::phone})->last_collect_ts = 0;
    world::set_now(default_now + 60);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    // The clock then goes back: the interval ends before it starts.
    world::set_now(default_now);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    const std::string back = R"("s":1772625600,"e":1772625540)";
    EXPECT_EQ(world::trace(),
              query(R"("s":1772599940,"e":1772625600)", "001122334455 AABBCCDDEE0F ") +
                  "event unblock profile -5\n" // it was collected in 1970
                  "log send event: unblock profile -5 to use network\n" +
                  query(R"("s":-60,"e":1772625600)", "AABBCCDDEE0F ") +
                  query(back.c_str(), "001122334455 AABBCCDDEE0F ") +
                  query(back.c_str(), "AABBCCDDEE0F "));
}

TEST_F(Collector, LetsTheIntervalOfAnUnansweredQueryPass) {
    config_user_profile_t *profile = make_profile(3, {world::phone});
    world::set_now(default_now + 60);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(profile->last_collect_ts, default_now + 60);
    EXPECT_EQ(profile->daily_used, 0);
}

TEST_F(Collector, NeverQueriesAProfileWithoutDevicesButRollsItOver) {
    config_user_profile_t *profile = make_profile(3);
    profile->daily_used = 5;
    profile->blocked = 1;
    make_usage(profile, {{10, 4}});
    world::set_now(local(2026, 3, 5));
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::render(*profile),
              "profile 3: devices 0 [], enabled 0, limit 1440 + 0, used 0/5/0, blocked 0, "
              "collected +43200, apps 1, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 0/4/0, blocked 0, days [0:4] next 1\n");
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
    EXPECT_EQ(world::render(*profile),
              "profile 3: devices 1 [AABBCCDDEE0F ], enabled 0, limit 1440 + 0, used 1/5/0, "
              "blocked 0, collected +43200, apps 1, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 2/4/0, blocked 0, days [0:4] next 1\n");
    EXPECT_EQ(world::trace(), "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n"
                              "event unblock profile 3\n"
                              "log send event: unblock profile 3 to use network\n" +
                                  query(R"("s":1772625540,"e":1772668740)", "AABBCCDDEE0F "));
}

TEST_F(Collector, BlocksWhatTheFiguresUseUpInTheirOrder) {
    config_user_profile_t *profile = make_profile(3, {world::tablet, world::phone});
    profile->daily_limit_enable = 1;
    profile->daily_limit = 60;
    profile->daily_used = 59;
    make_usage(profile, {{10, 4}});
    make_policy(4, {{10, POLICY_ACTION_LIMIT, 5}}, profile);
    world::set_active(true);
    answer({R"({"data":[{"type":"APP","app_id":10,"total_time_usage":1},)"
            R"({"type":"INTERNET","app_id":0,"total_time_usage":1}]})"});
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::trace(),
              query(R"("s":1772625540,"e":1772625540)", "001122334455 AABBCCDDEE0F ") +
                  "log Block app 10 for profile 3 because 5 exceed 5\n"
                  "run lcsh apg acl set 00:11:22:33:44:55 10 0 18\n"
                  "run lcsh apg acl set AA:BB:CC:DD:EE:0F 10 0 18\n"
                  "log Block profile 3 to use network because 60 exceed 60\n"
                  "event block profile 3\n"
                  "log send event: block profile 3 to use network\n");
}

TEST_F(Collector, EndsThePassWhereAQueryCannotBeMade) {
    // Three profiles and a new day; the second one's query fails.
    config_user_profile_t *first = make_profile(1, {world::phone});
    config_user_profile_t *second = make_profile(2, {world::phone});
    config_user_profile_t *third = make_profile(3, {world::phone});
    for (config_user_profile_t *profile : {first, second, third})
        profile->daily_used = 5;
    world::set_now(local(2026, 3, 5));
    world::fail_popen(2);
    EXPECT_EQ(utm_app_update_app_status(), -1);
    const std::string line =
        query(R"("s":1772625540,"e":1772668740)", "AABBCCDDEE0F ").substr(strlen("query "));
    EXPECT_EQ(world::trace(), "event unblock profile 1\n"
                              "log send event: unblock profile 1 to use network\n"
                              "query " +
                                  line +
                                  "event unblock profile 2\n"
                                  "log send event: unblock profile 2 to use network\n"
                                  "query failed " +
                                  line + "log Update app status failed because popen failed\n");
    const std::string days = "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n";
    const std::string devices = ": devices 1 [AABBCCDDEE0F ], enabled 0, limit 1440 + 0, ";
    EXPECT_EQ(
        world::render_store(),
        "profile 1" + devices + "used 0/5/0, blocked 0, collected +43200, apps 0, policy none\n" +
            days + "profile 2" + devices +
            "used 0/5/0, blocked 0, collected +0, apps 0, policy none\n" + days + "profile 3" +
            devices + "used 5/0/0, blocked 0, collected +0, apps 0, policy none\n" + days +
            "router: apps 0, collected +0\n");
}

TEST_F(Collector, RollsOverAgainAfterAFailedQueryOfTheNewDay) {
    // The collection time stays behind, so the next tick meets the same midnight once more.
    config_user_profile_t *profile = make_profile(3, {world::phone});
    make_usage(profile, {{10, 4}});
    world::set_now(local(2026, 3, 5));
    world::fail_popen(1);
    EXPECT_EQ(utm_app_update_app_status(), -1);
    EXPECT_EQ(utm_app_update_app_status(), 0);
    EXPECT_EQ(world::render(*profile),
              "profile 3: devices 1 [AABBCCDDEE0F ], enabled 0, limit 1440 + 0, used 0/0/0, "
              "blocked 0, collected +43200, apps 1, policy none\n"
              "  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440\n"
              "  app 10: used 0/4/0, blocked 0, days [0:4] next 2\n");
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
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(utm_app_find_profile(1)->daily_used, 100);
    EXPECT_EQ(utm_app_find_profile(2)->daily_used, 1);
    EXPECT_EQ(utm_app_find_profile(3)->daily_used, 0);
}

TEST_F(Collector, AddsUpTheRoutersApplicationsAlone) {
    world::set_now(default_now + 60);
    answer({R"({"data":[{"type":"APP","app_id":10,"total_time_usage":4},)"
            R"({"type":"INTERNET","app_id":0,"total_time_usage":9},)"
            R"({"type":"APP","app_id":20,"total_time_usage":5},)"
            R"({"type":"APP","app_id":10,"total_time_usage":1}]})"});
    EXPECT_EQ(utm_app_update_global_app_status(), 0);
    EXPECT_EQ(world::render_store(), "router: apps 2, collected +60\n"
                                     "  app 20: used 5/0/0, blocked 0, days [] next 0\n"
                                     "  app 10: used 5/0/0, blocked 0, days [] next 0\n");
    EXPECT_EQ(world::trace(), "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772625540,\"e\":1772625600}'\n");
    EXPECT_EQ(world::open_pipes(), 0);
}

TEST_F(Collector, LeavesTheRoutersIntervalToTheNextTickWhenItsQueryFails) {
    world::set_now(default_now + 60);
    world::fail_popen(1);
    EXPECT_EQ(utm_app_update_global_app_status(), -1);
    EXPECT_EQ(world::render_store(), "router: apps 0, collected +0\n");
    EXPECT_EQ(world::trace(), "query failed ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772625540,\"e\":1772625600}'\n"
                              "log Update global app status failed because popen failed\n");
}

} // namespace
