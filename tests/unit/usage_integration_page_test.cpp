/// docs/integration.md is correct: its example reply is read as it says, and the command lines
/// that it shows are those that the daemon issues.

#include "notify/qvutm_notify.h"
#include "store/enforcement.h"
#include "store/profiles.h"
#include "usage/collector.h"
#include "usage/statistics_query.h"

#include "tests/lib/exchange.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

const world::mac_t tablet = {0x02, 0x00, 0x00, 0x00, 0x00, 0x1A};
const world::mac_t phone = {0x02, 0x00, 0x00, 0x00, 0x00, 0x1B};

class IntegrationPage : public usage_file_fixture {
protected:
    std::string page = read_file(UTM_BUILD_DIR "/docs/integration.md");

    /// @return the text of the first block of a language
    std::string block(const std::string &language) const {
        const std::string opening = "```" + language + "\n";
        const size_t start = page.find(opening);
        EXPECT_NE(start, std::string::npos);
        const size_t text = start + opening.size();
        return page.substr(text, page.find("```", text) - text);
    }

    /// @return what stands in backticks, or alone on an indented line, and begins like that
    std::string lines_beginning(const std::string &start) const {
        std::string lines;
        for (const std::string &before : {std::string("`"), std::string("\n    ")})
            for (size_t at = page.find(before + start); at != std::string::npos;
                 at = page.find(before + start, at + 1)) {
                const size_t text = at + before.size();
                lines += page.substr(text, page.find_first_of("`\n", text) - text) + "\n";
            }
        return lines;
    }

    /// @return those lines of the trace that begin so, without that beginning
    static std::string trace_of(const std::string &start) {
        std::istringstream trace(world::trace());
        std::string lines;
        for (std::string line; std::getline(trace, line);)
            if (line.starts_with(start))
                lines += line.substr(start.size()) + "\n";
        return lines;
    }
};

TEST_F(IntegrationPage, ShowsEveryLineOfTheShellAndTheHelpersScript) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        config_device_t device = {};
        std::copy(tablet.begin(), tablet.end(), device.mac);
        utm_app_guard_on();
        utm_app_block_app_on_device(&device, 305);
        utm_app_unblock_app_on_device(&device, 305);
        utm_app_reset_device(&device);
        utm_app_guard_off();
        utm_app_run_leaving_script(3);
    }
    EXPECT_EQ(lines_beginning("lcsh apg") + lines_beginning("profile_daily_limit.sh "),
              trace_of("run "));
    world::exchange(sim_path_command(46, "/tmp/signatures.bin"));
    EXPECT_EQ(lines_beginning("lcsh load"), trace_of("query "));
}

TEST_F(IntegrationPage, ShowsTheQueries) {
    world::make_profile(3, {tablet, phone})->last_collect_ts -= 60;
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_config_global_app_stat_last_ts -= 60;
    }
    ASSERT_EQ(utm_app_update_app_status(), 0);
    ASSERT_EQ(utm_app_update_global_app_status(), 0);
    EXPECT_EQ(block("sh"), trace_of("query "));
}

TEST_F(IntegrationPage, ShowsAReplyThatIsReadAsItSays) {
    std::string told;
    for (const statistics_figure_t &figure : statistics_figures_t(block("json").c_str()))
        told += std::string(figure.kind == figure_kind_t::app ? "app " : "internet ") +
                std::to_string(figure.app_id) + " " + std::to_string(figure.minutes) + "\n";
    EXPECT_EQ(told, "app 305 1\napp 0 1\ninternet 0 1\n");
}

TEST_F(IntegrationPage, ShowsAReplyThatIsCountedAsItSays) {
    config_user_profile_t *profile = world::make_profile(3, {tablet});
    world::on_popen([this](const std::string &) { return block("json"); });
    ASSERT_EQ(utm_app_update_app_status(), 0);
    ASSERT_EQ(utm_app_update_global_app_status(), 0);
    const mutex_guard lock(utm_app_config_mutex);
    EXPECT_EQ(profile->daily_used, 1);
    EXPECT_EQ(profile->app_count, 2);
    for (config_list_node_t *list : {&profile->app_stat_list, &utm_app_config_global_app_stat_list})
        for (const int32_t app : {305, 0})
            EXPECT_EQ(utm_app_find_app_usage(list, app)->daily_used, 1) << app;
}

TEST_F(IntegrationPage, ShowsTheLibrarysFunctionsAsTheyAre) {
    // As pointers to the declared types: a change of the header ends the build.
    int (*const event)(const utm_notify_event_t *) = send_utm_notify_event;
    int (*const switched)(int feature, int status) = send_utm_notify_event_status_changed;
    ASSERT_NE(event, nullptr);
    ASSERT_NE(switched, nullptr);
    EXPECT_EQ(block("c"), "int send_utm_notify_event(const utm_notify_event_t *event);\n"
                          "int send_utm_notify_event_status_changed(int feature, int status);\n");
    EXPECT_NE(page.find("has " + std::to_string(sizeof(utm_notify_event_t)) + " bytes"),
              std::string::npos);
}

} // namespace
