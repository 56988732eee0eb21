#include "sim/router/scenario.h"

#include "sim/harness/files.h"
#include "sim/router/router_dir.h"
#include "sim/router/usage.h"
#include "tests/lib/world.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr char household[] = "person mia 3 Mia\n"
                             "person tom 4 Tom\n"
                             "device tablet mia 00:11:22:33:44:55 Mia's tablet\n"
                             "device phone  mia AA:BB:CC:DD:EE:0F Mia's phone\n"
                             "device laptop tom 02:00:00:00:00:01 Tom's laptop\n"
                             "app video 305 video\n"
                             "app chat  12  chat\n"
                             "date 2026-03-04\n";

const std::vector<std::string> mias = {"00:11:22:33:44:55", "AA:BB:CC:DD:EE:0F"};

class SimScenario : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        std::filesystem::create_directory("/tmp/router");
        setenv(SIM_ROUTER_VARIABLE, "/tmp/router", 1);
    }
    void TearDown() override {
        std::filesystem::remove_all("/tmp/router");
        unsetenv(SIM_ROUTER_VARIABLE);
    }

    /// Reads the household's scenario with further lines.
    void live(const std::string &lines) {
        std::string error;
        ASSERT_TRUE(sim_write_file(path_, household + lines));
        ASSERT_TRUE(scenario_read(path_, &scene_, &error)) << error;
    }

    /// An answer, such as "305:20 INTERNET:30".
    std::string usage(const usage_query &query) const {
        std::string text;
        for (const usage_element &element : usage_of(scene_, query))
            text += (text.empty() ? "" : " ") + name_of(element) + ":" +
                    std::to_string(element.minutes);
        return text;
    }

    /// The sum of the answers to adjoining queries of a width in seconds, as `usage` shows one.
    std::string usage_in_steps(usage_query query, time_t width) const {
        std::map<std::string, int64_t> sums;
        const scenario_span whole = query.span;
        for (time_t from = whole.from; from < whole.to; from += width) {
            query.span = {from, std::min(from + width, whole.to)};
            for (const usage_element &element : usage_of(scene_, query))
                sums[name_of(element)] += element.minutes;
        }
        std::string text;
        for (const char *name : {"305", "12", "INTERNET"})
            if (sums.contains(name))
                text += (text.empty() ? "" : " ") + std::string(name) + ":" +
                        std::to_string(sums[name]);
        return text;
    }

    static std::string name_of(const usage_element &element) {
        return element.app_id == 0 ? element.type : std::to_string(element.app_id);
    }

    const std::string path_ = "/tmp/router/scenario";
    scenario scene_;
};

/// A stretch of 4 March 2026.
scenario_span span(int from_hour, int from_minute, int to_hour, int to_minute) {
    return {world::local(2026, 3, 4, from_hour, from_minute),
            world::local(2026, 3, 4, to_hour, to_minute)};
}

usage_query whole_router(const scenario_span &when) {
    return {.span = when, .router_wide = true};
}

usage_query devices(const scenario_span &when, const std::vector<std::string> &macs) {
    return {.span = when, .macs = macs};
}

// ---- Counting minutes ----------------------------------------------------------------------

TEST_F(SimScenario, CountsTheMinuteMarksWithinASpan) {
    struct {
        scenario_span span;
        int64_t minutes;
    } const table[] = {
        {{0, 0}, 0},   {{0, 59}, 0},   {{0, 60}, 1},    {{1, 60}, 1},  {{59, 60}, 1},
        {{60, 61}, 0}, {{59, 61}, 1},  {{59, 121}, 2},  {{1, 119}, 1}, {{0, 86'400}, 1440},
        {{-1, 0}, 1},  {{-60, -1}, 0}, {{-61, -60}, 1}, {{-60, 0}, 1}, {{-61, 61}, 3},
    };
    for (const auto &row : table)
        EXPECT_EQ(whole_minutes(row.span), row.minutes) << row.span.from << ".." << row.span.to;
}

TEST_F(SimScenario, LosesNoMinuteBetweenQueriesAndCountsNoneTwice) {
    live("use tablet video 17:05:30 17:25:29\n"
         "use phone video 17:10:01 17:40\n"
         "use tablet chat 17:25:29 17:31:59\n"
         "online laptop 17:50:30 18:00:30\n");
    const usage_query query = whole_router(span(17, 0, 18, 30));
    EXPECT_EQ(usage(query), "305:50 12:6 INTERNET:45");
    for (const time_t width : {1, 7, 59, 60, 61, 600, 3600, 5400})
        EXPECT_EQ(usage_in_steps(query, width), usage(query)) << width;
}

TEST_F(SimScenario, LosesNoMinuteOverMidnightAndTheChangeOfTheClocks) {
    world::set_zone("Europe/Berlin");
    live("use tablet video 2026-03-28 23:30 2026-03-29 04:30\n");
    const usage_query query = whole_router({world::local(2026, 3, 28), world::local(2026, 3, 30)});
    EXPECT_EQ(usage(query), "305:240 INTERNET:240");
    for (const time_t width : {60, 3600})
        EXPECT_EQ(usage_in_steps(query, width), usage(query)) << width;
}

TEST_F(SimScenario, CutsUseToTheQuery) {
    live("use tablet video 17:05 17:25\n");
    struct {
        scenario_span span;
        const char *usage;
    } const table[] = {
        {span(17, 0, 18, 0), "305:20 INTERNET:20"},
        {span(17, 5, 17, 25), "305:20 INTERNET:20"},
        {span(17, 10, 17, 11), "305:1 INTERNET:1"},
        {span(17, 0, 17, 6), "305:1 INTERNET:1"},
        {span(17, 24, 18, 0), "305:1 INTERNET:1"},
        {span(17, 0, 17, 5), ""},
        {span(17, 25, 18, 0), ""},
        {span(17, 10, 17, 10), ""},
        {span(17, 20, 17, 10), ""},
    };
    for (const auto &row : table)
        EXPECT_EQ(usage(whole_router(row.span)), row.usage) << row.span.from;
}

TEST_F(SimScenario, AddsApplicationsUpOverDevicesAndTheInternetOnce) {
    live("use tablet video 17:00 17:20\n"
         "use tablet video 17:10 17:30\n"
         "use phone video 17:10 17:40\n"
         "use laptop chat 17:30 17:35\n"
         "online laptop 17:50 18:00\n");
    const scenario_span hour = span(17, 0, 18, 0);
    struct {
        std::vector<std::string> macs;
        const char *usage;
    } const table[] = {
        {{mias[0]}, "305:30 INTERNET:30"},
        {{mias[1]}, "305:30 INTERNET:30"},
        {mias, "305:60 INTERNET:40"},
        {{mias[1], mias[0], mias[1]}, "305:60 INTERNET:40"},
        {{"02:00:00:00:00:01"}, "12:5 INTERNET:15"},
        {{mias[0], "02:00:00:00:00:01"}, "305:30 12:5 INTERNET:45"},
        {{"02:00:00:00:00:02"}, ""},
        {{}, ""},
    };
    for (const auto &row : table)
        EXPECT_EQ(usage(devices(hour, row.macs)), row.usage);
    EXPECT_EQ(usage(whole_router(hour)), "305:60 12:5 INTERNET:50");
}

// ---- What is blocked -----------------------------------------------------------------------

TEST_F(SimScenario, LeavesOutWhatIsBlocked) {
    live("use tablet video 17:00 17:20\n"
         "use phone video 17:20 17:30\n"
         "use tablet chat 17:30 17:35\n"
         "use laptop video 17:40 17:47\n");
    const std::string tablet_video = sim_rule_fact(mias[0].c_str(), 305).name;
    const std::string tablet_other = sim_rule_fact(mias[0].c_str(), 306).name;
    const std::string mia = sim_blocked_fact(3).name;
    struct {
        std::vector<std::string> facts;
        const char *usage;
    } const table[] = {
        {{}, "305:37 12:5 INTERNET:42"},
        {{"guard"}, "305:37 12:5 INTERNET:42"},
        {{tablet_video}, "305:37 12:5 INTERNET:42"},
        {{"guard", tablet_other}, "305:37 12:5 INTERNET:42"},
        {{"guard", tablet_video}, "305:17 12:5 INTERNET:22"},
        {{mia}, "305:7 INTERNET:7"},
        {{"guard", tablet_video, mia}, "305:7 INTERNET:7"},
        {{mia, sim_blocked_fact(4).name}, ""},
        {{sim_blocked_fact(5).name}, "305:37 12:5 INTERNET:42"},
    };
    for (const auto &row : table) {
        for (const std::string &fact : row.facts)
            sim_router_set(fact.c_str(), true);
        EXPECT_EQ(usage(whole_router(span(17, 0, 18, 0))), row.usage)
            << testing::PrintToString(row.facts);
        for (const std::string &fact : row.facts)
            sim_router_set(fact.c_str(), false);
    }
}

TEST_F(SimScenario, BlocksNoApplicationWhereNoneIsUsed) {
    live("online tablet 17:00 17:20\n");
    sim_router_set(SIM_GUARD_FACT, true);
    sim_router_set(sim_rule_fact(mias[0].c_str(), 305).name, true);
    EXPECT_EQ(usage(whole_router(span(17, 0, 18, 0))), "INTERNET:20");
    sim_router_set(sim_blocked_fact(3).name, true);
    EXPECT_EQ(usage(whole_router(span(17, 0, 18, 0))), "");
}

TEST_F(SimScenario, IsEmptyWithoutAFile) {
    std::string error;
    EXPECT_TRUE(scenario_read(path_, &scene_, &error));
    EXPECT_EQ(scene_.people.size() + scene_.uses.size(), 0U);
}

TEST_F(SimScenario, ReadsEveryField) {
    live("use tablet video 23:30 +1 00:30:15\n"
         "online phone 2026-03-06 08:00 2026-03-06 08:30\n");
    ASSERT_EQ(scene_.devices.size(), 3U);
    EXPECT_EQ(scene_.people[1].profile_id, 4);
    EXPECT_EQ(scene_.people[1].name, "Tom");
    EXPECT_EQ(scene_.devices[1].mac, "AA:BB:CC:DD:EE:0F");
    EXPECT_EQ(scene_.devices[1].person, 0U);
    EXPECT_EQ(scene_.devices[0].name, "Mia's tablet");
    EXPECT_EQ(scene_.apps[0].id, 305);
    ASSERT_EQ(scene_.uses.size(), 2U);
    EXPECT_EQ(scene_.uses[0].span.from, world::local(2026, 3, 4, 23, 30));
    EXPECT_EQ(scene_.uses[0].span.to, world::local(2026, 3, 5, 0, 30, 15));
    EXPECT_EQ(scene_.uses[1].app, scenario_use::NO_APP);
    EXPECT_EQ(scene_.uses[1].span.from, world::local(2026, 3, 6, 8));
    EXPECT_EQ(scene_.uses[1].span.to, world::local(2026, 3, 6, 8, 30));
}

} // namespace
