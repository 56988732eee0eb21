/// A file of an evening, read by a daemon that has just started: that evening, or after a midnight.

#include "persist/import.h"

#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/render.h"
#include "tests/lib/world.h"
#include "tests/unit/support/usage_file_fixture.h"
#include "usage/collector.h"
#include "usage/limits.h"

#include <gtest/gtest.h>

namespace {

using world::local;

/// Application 305 has ten minutes a day, the profile thirty; 400 is not allowed at all.
class PowerCut : public usage_file_fixture {
protected:
    /// What the front end sends to a daemon that has just started.
    static void set_up() {
        world::quietly([] {
            ASSERT_EQ(utm_app_create_profile(1), 0);
            ASSERT_EQ(utm_app_add_device(1, world::tablet.data()), 0);
            ASSERT_EQ(utm_app_set_daily_limit_enable(1, 1), 0);
            ASSERT_EQ(utm_app_set_daily_limit(1, 30), 0);
            ASSERT_EQ(utm_app_create_policy(1), 1);
            const config_policy_rule_t rules[] = {{305, 1, 10}, {400, 2, 0}};
            ASSERT_EQ(utm_app_add_apps_to_policy(1, rules, 2), 0);
            ASSERT_EQ(utm_app_add_policy_to_profile(1, 1), 0);
        });
    }

    /// A tick that finds ten minutes of the application among thirty.
    static void use() {
        world::on_popen([](const std::string &) {
            return R"({"data":[{"type":"APP","app_id":305,"total_time_usage":10},)"
                   R"({"type":"INTERNET","app_id":0,"total_time_usage":30}]})";
        });
        ASSERT_EQ(utm_app_update_app_status(), 0);
    }

    /// Uses everything up, loses the store after an export, and imports the file at another time.
    static void cut_between(time_t used, time_t imported) {
        world::set_now(used);
        set_up();
        use();
        const std::string file = export_text();
        empty_store();
        world::set_now(imported);
        set_up();
        world::trace();
        ASSERT_EQ(import_text(file), 0);
    }

    static std::string store_line(const std::string &profile, const std::string &app) {
        return "profile 1: devices 1 [001122334455 ], enabled 1, limit 30 + 0, used " + profile +
               ", apps 1, policy 1\n"
               "  weekdays 0:30 1:30 2:30 3:30 4:30 5:30 6:30\n"
               "  app 305: used " +
               app +
               ", rule 1/10\n"
               "policy 1: profile 1, count 2, rules 400/2/0 (unused) 305/1/10\n";
    }

    static std::string profiles_and_policies() {
        const std::string all = world::render_store();
        return all.substr(0, all.find("router:"));
    }
};

TEST_F(PowerCut, OfTheSameDayBlocksAgain) {
    cut_between(local(2026, 3, 4, 12), local(2026, 3, 4, 12, 10));
    EXPECT_EQ(world::trace(), "log block device to use 305 because exceed limit\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 305 0 18\n"
                              "log Block profile 1 to use network because 30 exceed 30\n"
                              "event block profile 1\n"
                              "log send event: block profile 1 to use network\n"
                              "log import from /tmp/usage/import.json success\n");
    EXPECT_EQ(profiles_and_policies(),
              store_line("30/0/0, blocked 1, collected +600", "10/0/0, blocked 0, days [] next 0"));
}

TEST_F(PowerCut, OverMidnightKeepsTheUseAndBlocksNothing) {
    cut_between(local(2026, 3, 4, 23, 50), local(2026, 3, 5, 0, 10));
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/import.json success\n");
    EXPECT_EQ(profiles_and_policies(), store_line("0/30/0, blocked 0, collected +43800",
                                                  "0/10/0, blocked 0, days [] next 1"));
}

TEST_F(PowerCut, OverMidnightLeavesTheWholeNewDay) {
    cut_between(local(2026, 3, 4, 23, 50), local(2026, 3, 5, 0, 10));
    world::trace();
    world::set_now(local(2026, 3, 5, 0, 11));
    use();
    EXPECT_EQ(world::trace(), "query ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                              "'{\"s\":1772669340,\"e\":1772669400,\"mac\":\"001122334455 \"}'\n"
                              "log Block app 305 for profile 1 because 10 exceed 10\n"
                              "run lcsh apg acl set 00:11:22:33:44:55 305 0 18\n"
                              "log Block profile 1 to use network because 30 exceed 30\n"
                              "event block profile 1\n"
                              "log send event: block profile 1 to use network\n");
    EXPECT_EQ(profiles_and_policies(), store_line("30/30/0, blocked 1, collected +43860",
                                                  "10/10/0, blocked 1, days [] next 1"));
}

TEST_F(PowerCut, OverTheLastMidnightOfAWeekMovesTheUseIntoTheMonth) {
    cut_between(local(2026, 3, 7, 23, 50), local(2026, 3, 8, 0, 10));
    EXPECT_EQ(world::trace(), "log import from /tmp/usage/import.json success\n");
    EXPECT_EQ(profiles_and_policies(), store_line("0/0/30, blocked 0, collected +303000",
                                                  "0/0/10, blocked 0, days [] next 1"));
}

} // namespace
