#include "store/dump.h"

#include "core/debug_log.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <numeric>

namespace {

class Dump : public usage_file_fixture {
protected:
    static std::string dumped() {
        forget_log();
        utm_app_dump_store();
        return world::log();
    }
};

/// Thirty days, yesterday first. The dump's first figure of all has no comma before it.
std::string history(const std::string &first, const std::string &others) {
    std::string text = first;
    for (int day = 1; day < 30; ++day)
        text += others;
    return text + "\n";
}

TEST_F(Dump, ShowsEveryFieldOfEveryRecord) {
    make(usage_file::profile_t{3,
                               15,
                               40,
                               200,
                               {{10, 5, 9, 30, 0}, {11, 6, 8, 31, 0}},
                               std::vector<int32_t>(7, 60),
                               25,
                               1,
                               {"0A:1B:2C:3D:4E:5F", "FF:00:00:00:00:01"},
                               usage_file::policy_t{7, {{10, 1, 60}, {12, 2, 0}}}});
    make(usage_file::profile_t{-4, 0, 0, 0, {{12}}});
    make_router_app({20, 3, 4, 5, 6});
    make_router_app({21, 0, 1, 1, 1});
    {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(3);
        profile->daily_limit = 90;
        utm_app_find_app_usage(&profile->app_stat_list, 10)->blocked = 1;
    }
    const std::string all = dumped();
    EXPECT_EQ(all, "==========Profile list:==============\n"
                   "------------------------\n"
                   "profile id: 3\n"
                   "\tlimit: 90\n"
                   "\textend: 25\n"
                   "\tdaily used: 15, weekly: 40, monthly: 200\n"
                   "\tblocked: 1\n"
                   "Device list:\n"
                   "\tdevice 0A:1B:2C:3D:4E:5F\n"
                   "\tdevice FF:00:00:00:00:01\n"
                   "APP usage:\n"
                   "\tapp id 10 use: 5, limit 60, blocked: 1\n"
                   "weekly use: 9, monthly use: 30, previous 30 day use:" +
                       history("  0", ", 0") +
                       "\tapp id 11 use: 6, no limit\n"
                       "weekly use: 8, monthly use: 31, previous 30 day use:" +
                       history(", 0", ", 0") +
                       "Policy id 7\n"
                       "\tapp id 10 action 1 limit 60\n"
                       "\tapp id 12 action 2 limit 0\n"
                       "------------------------\n"
                       "profile id: -4\n"
                       "\tlimit: 1440\n"
                       "\textend: 0\n"
                       "\tdaily used: 0, weekly: 0, monthly: 0\n"
                       "\tblocked: 0\n"
                       "Device list:\n"
                       "APP usage:\n"
                       "\tapp id 12 use: 0, no limit\n"
                       "weekly use: 0, monthly use: 0, previous 30 day use:" +
                       history(", 0", ", 0") +
                       "No policy\n"
                       "Global stat:\n"
                       "\tapp id 20 use 3\n"
                       "\tapp id 21 use 0\n"
                       "===============================\n");
    // The next dump starts with a blank again.
    EXPECT_EQ(dumped(), all);
}

TEST_F(Dump, ShowsARingFromYesterdayBack) {
    usage_file::app_t app = {10, 0, 0, 0, 4};
    std::iota(app.ring.begin(), app.ring.end(), 100);
    make(usage_file::profile_t{3, 0, 0, 0, {app}});
    const std::string all = dumped();
    const size_t at = all.find("previous");
    EXPECT_EQ(all.substr(at, all.find('\n', at) - at),
              "previous 30 day use:  103, 102, 101, 100, 129, 128, 127, 126, 125, 124, 123, 122, "
              "121, 120, 119, 118, 117, 116, 115, 114, 113, 112, 111, 110, 109, 108, 107, 106, "
              "105, 104");
}

TEST_F(Dump, WritesNothingWhileLoggingIsOff) {
    make(usage_file::profile_t{3, 0, 0, 0, {{10}}});
    ASSERT_EQ(utm_app_debug_set(0), 0);
    std::filesystem::remove(debug_log_path);
    utm_app_dump_store();
    EXPECT_FALSE(std::filesystem::exists(debug_log_path));
}

TEST_F(Dump, SeesTheLogsSizeLimitBeforeEachPiece) {
    forget_log();
    write_file(debug_log_path, std::string(static_cast<size_t>(debug_log_size_limit) - 10, 'x'));
    utm_app_dump_store();
    // The first line takes the file over its limit, so the second one starts a new file.
    EXPECT_EQ(world::log(), "Global stat:\n"
                            "===============================\n");
    std::filesystem::remove("/tmp/utm_log/utm_app_log2");
}

} // namespace
