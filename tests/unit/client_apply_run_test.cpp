/// `apply` against the daemon's own code: what it asks, what it leaves alone, and how it goes on
/// after it was cut short.

#include "client/apply.h"

#include "core/debug_log.h"
#include "store/store.h"
#include "tests/lib/exchange.h"
#include "tests/lib/render.h"
#include "tests/unit/support/apply_fixture.h"
#include "tests/unit/support/world_test.h"

#include <climits>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

const std::string own_file = "/tmp/ApplicationData/app_usage.json";
const std::string applied_folder = "/tmp/apply_run_test";

class ClientApplyRun : public world_test {
protected:
    void SetUp() override {
        world_test::SetUp();
        std::filesystem::remove_all(applied_folder);
        std::filesystem::remove_all("/tmp/ApplicationData");
        std::filesystem::create_directory("/tmp/ApplicationData");
        household_.limits = true;
    }
    void TearDown() override {
        world::empty_store();
        std::filesystem::remove_all("/tmp/ApplicationData");
        std::filesystem::remove_all(applied_folder);
    }

    /// Sends to the dispatcher, until the wire is cut.
    static ctl_exit ask(void *context, const utm_app_config_cmd &request,
                        std::span<utm_app_config_reply> replies, size_t *count) {
        ClientApplyRun *test = static_cast<ClientApplyRun *>(context);
        if (test->requests_++ >= test->cut_after_)
            return CTL_BROKEN;
        test->sent_ += apply::text_of(request) + "\n";
        const std::string bytes = world::exchange_bytes(sim_bytes(request));
        utm_app_config_reply reply = {};
        *count = 0;
        for (size_t at = 0; at + sizeof(reply) <= bytes.size(); at += sizeof(reply)) {
            memcpy(&reply, bytes.data() + at, sizeof(reply));
            if (*count < replies.size())
                replies[(*count)++] = reply;
        }
        return reply.status == UTM_APP_CONFIG_STATUS_OK ? CTL_DONE : CTL_REFUSED;
    }

    /// @return the lines of what was done; what was said is in `said_`
    std::string run(const ctl_apply_wish &options = {}) {
        ctl_apply_wish wish = options;
        wish.state_path = applied_folder.c_str();
        ctl_apply_report report = {};
        requests_ = 0;
        sent_.clear();
        testing::internal::CaptureStderr();
        status_ = ctl_apply_household(household_, wish, {this, ask}, &report);
        said_ = testing::internal::GetCapturedStderr();
        std::string text;
        for (const ctl_deed &deed : report.deeds)
            text += std::string(deed.line.text) + "\n";
        for (const ctl_line &warning : report.warnings)
            text += std::string("warning: ") + warning.text + "\n";
        return text;
    }

    void want(const std::vector<apply::person_t> &people) {
        household_.people.clear();
        household_.devices.clear();
        household_.rules.clear();
        const bool limits = household_.limits;
        apply::fill(&household_, people);
        household_.limits = limits;
    }

    static std::string read(const std::string &file) {
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }

    static config_user_profile_t *profile(int32_t number) {
        const mutex_guard lock(utm_app_config_mutex);
        return utm_app_find_profile(number);
    }

    household_t household_ = {};
    int requests_ = 0;
    int cut_after_ = INT_MAX;
    std::string sent_;
    std::string said_;
    ctl_exit status_ = CTL_DONE;
};

const std::vector<apply::person_t> family = {
    {.number = 1,
     .limit = 60,
     .devices = {0x0A, 0x0B},
     .rules = {{305, POLICY_ACTION_LIMIT, 30}, {306, POLICY_ACTION_BLOCK, 0}}},
    {.number = 2, .name = "Tom", .limit = 90, .enforced = false, .devices = {0x0C}}};

constexpr char family_lines[] = R"(limits are switched on
Mia: added as person 1
Tom: added as person 2
Mia: device 02:00:00:00:00:0A joins
Mia: device 02:00:00:00:00:0B joins
Tom: device 02:00:00:00:00:0C joins
Mia: limit 1h every day
Tom: limit 1h30m every day
Mia: limit enforced
Mia: application 305 30m, application 306 blocked
)";

constexpr char family_store[] =
    R"(profile 1: devices 2 [02000000000A 02000000000B ], enabled 1, limit 60 + 0, used 0/0/0, blocked 0, collected +0, apps 0, policy 1
  weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60
profile 2: devices 1 [02000000000C ], enabled 0, limit 90 + 0, used 0/0/0, blocked 0, collected +0, apps 0, policy none
  weekdays 0:90 1:90 2:90 3:90 4:90 5:90 6:90
policy 1: profile 1, count 2, rules 306/2/0 (unused) 305/1/30 (unused)
)";

/// @return everybody, with the rules as they were first sent: sending them again moves some of them
/// to the front
std::string store() {
    std::string text = world::render_lists();
    constexpr char moved[] = "rules 305/1/30 (unused) 306/2/0 (unused)";
    const size_t at = text.find(moved);
    if (at != std::string::npos)
        text.replace(at, strlen(moved), "rules 306/2/0 (unused) 305/1/30 (unused)");
    return text;
}

TEST_F(ClientApplyRun, SetsAFreshDaemonUpAndThenHasNothingToDo) {
    want(family);
    EXPECT_EQ(run(), family_lines);
    EXPECT_EQ(status_, CTL_DONE);
    EXPECT_EQ(store(), family_store);
    EXPECT_EQ(run(), "");
    EXPECT_EQ(store(), family_store);
    EXPECT_EQ(said_, "");
}

TEST_F(ClientApplyRun, OnlySaysWhatItWouldDo) {
    want(family);
    EXPECT_EQ(run({.dry_run = true}),
              std::string(family_lines) +
                  "warning: limits are off, so the daemon does not say what it has: devices and "
                  "rules are taken to be as they were applied last\n");
    EXPECT_EQ(world::render_lists(), "");
    EXPECT_FALSE(std::filesystem::exists(applied_folder));
    run();
    want({family[0]});
    const std::string memory = read(applied_folder + "/applied.json");
    EXPECT_EQ(run({.dry_run = true, .prune = true}), "person 2: deleted\n");
    EXPECT_EQ(store(), family_store);
    EXPECT_EQ(read(applied_folder + "/applied.json"), memory);
}

/// Whatever request is the last one, the next call brings everything to where it has to be.
TEST_F(ClientApplyRun, GoesOnWhereverItWasCutShort) {
    for (int cut = 0;; ++cut) {
        world::reset();
        std::filesystem::remove_all(applied_folder);
        want(family);
        cut_after_ = cut;
        run();
        const bool is_whole = status_ == CTL_DONE;
        cut_after_ = INT_MAX;
        run();
        ASSERT_EQ(status_, CTL_DONE) << said_;
        ASSERT_EQ(store(), family_store) << "cut after " << cut;
        ASSERT_EQ(run(), "") << "cut after " << cut;
        if (is_whole) {
            EXPECT_GT(cut, 30);
            break;
        }
    }
}

TEST_F(ClientApplyRun, SaysWhereItStopped) {
    want(family);
    cut_after_ = 11;
    EXPECT_EQ(run(), "limits are switched on\nMia: added as person 1\nTom: added as person 2\n"
                     "Mia: device 02:00:00:00:00:0A joins\n");
    EXPECT_EQ(status_, CTL_BROKEN);
    EXPECT_EQ(said_,
              "utm_appctl: stopped at \"Mia: device 02:00:00:00:00:0B joins\"; apply again to "
              "go on from there\n");
}

TEST_F(ClientApplyRun, LeavesTheUsageFileAloneUntilSomethingIsCounted) {
    std::ofstream(own_file) << "of an earlier life";
    want(family);
    run();
    EXPECT_EQ(read(own_file), "of an earlier life");
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_find_profile(1)->daily_used = 1;
    }
    EXPECT_EQ(run(), "");
    EXPECT_NE(read(own_file).find("\"daily_used\":1"), std::string::npos) << read(own_file);
}

TEST_F(ClientApplyRun, AsksOnlyGettersWhileLimitsAreOffAndNothingDiffers) {
    household_.limits = false;
    want(family);
    const std::string lines = run();
    EXPECT_EQ(lines.find("limits are switched"), std::string::npos) << lines;
    EXPECT_EQ(utm_app_get_activate(), 0);
    EXPECT_EQ(run(), "");
    EXPECT_EQ(sent_, "command 47\ncommand 27\ncommand 29\ncommand 31\ncommand 33\ncommand 35\n"
                     "command 27\ncommand 29\ncommand 31\ncommand 33\ncommand 35\n");
    want({family[0]});
    household_.people[0].weekday_limits[2] = 70;
    EXPECT_EQ(run(), "Mia: limit 1h10m Tuesday\nwarning: person 2 is not of the household and was "
                     "left as they are; --prune deletes them, with thirty days of history\n");
    EXPECT_EQ(utm_app_get_activate(), 0);
    household_.limits = true;
    EXPECT_TRUE(run().starts_with("limits are switched on\n"));
    household_.limits = false;
    EXPECT_TRUE(run().starts_with("limits are switched off\n"));
    EXPECT_EQ(utm_app_get_activate(), 0);
}

TEST_F(ClientApplyRun, SeesWhileLimitsAreOffThatTheDaemonIsAnotherOne) {
    household_.limits = false;
    want(family);
    run();
    world::empty_store();
    run();
    EXPECT_EQ(store(), family_store);
}

TEST_F(ClientApplyRun, SwitchesOffAgainWhenItStops) {
    household_.limits = false;
    want(family);
    std::ofstream("/tmp/restore.json") << R"({"user_profile_list":[],"global_stat":[]})";
    run();
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_find_profile(1)->daily_used = 1;
    }
    EXPECT_EQ(run({.usage_path = "/tmp/restore.json"}), "");
    EXPECT_EQ(status_, CTL_REFUSED);
    EXPECT_EQ(said_, "utm_appctl: nothing is restored: the daemon has counted use already, which "
                     "/tmp/restore.json would replace. Apply without --restore\n");
    EXPECT_EQ(utm_app_get_activate(), 0);
}

constexpr char usage_of_today[] =
    R"({"user_profile_list":[{"user_profile_id":1,"daily_extend":30,"daily_used":70,)"
    R"("weekly_used":5,"monthly_used":0,"app_stat_list":[{"app_id":305,"daily_used":30,)"
    R"("weekly_used":0,"monthly_used":0}]}],"timestamp":1772625600,"global_stat":[]})";

TEST_F(ClientApplyRun, RestoresUsageWithTodaysBonus) {
    std::ofstream("/tmp/restore.json") << usage_of_today;
    want({family[0]});
    const std::string lines = run({.usage_path = "/tmp/restore.json"});
    EXPECT_NE(lines.find("Mia: bonus 30m\nusage restored from /tmp/restore.json\n"),
              std::string::npos)
        << lines;
    EXPECT_EQ(
        world::render_lists(),
        R"(profile 1: devices 2 [02000000000A 02000000000B ], enabled 1, limit 60 + 30, used 70/5/0, blocked 0, collected +0, apps 1, policy 1
  weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60
  app 305: used 30/0/0, blocked 1, days [] next 0, rule 1/30
policy 1: profile 1, count 2, rules 306/2/0 (unused) 305/1/30
)");
}

TEST_F(ClientApplyRun, RestoresWithoutTheBonusOfAnotherDay) {
    std::ofstream("/tmp/restore.json") << usage_of_today;
    world::set_now(world::default_now + 86400);
    want({family[0]});
    const std::string lines = run({.usage_path = "/tmp/restore.json"});
    EXPECT_EQ(lines.find("bonus"), std::string::npos) << lines;
    EXPECT_EQ(profile(1)->weekly_used, 75);
}

TEST_F(ClientApplyRun, RefusesAFileThatIsNoUsageFile) {
    std::ofstream("/tmp/restore.json") << "{}";
    want({family[0]});
    EXPECT_EQ(run({.usage_path = "/tmp/restore.json"}), "");
    EXPECT_EQ(status_, CTL_USAGE);
    EXPECT_EQ(said_, "utm_appctl: cannot restore /tmp/restore.json: it has no user_profile_list. "
                     "Name a usage file that utm_appd has exported\n");
    EXPECT_EQ(sent_, "");
}

/// People of whom the daemon has counted something, and the router's own list.
void count_something() {
    config_user_profile_t *mia = nullptr;
    {
        const mutex_guard lock(utm_app_config_mutex);
        mia = utm_app_find_profile(1);
        mia->daily_used = 20;
        mia->weekly_used = 5;
        mia->daily_extend = 700;
    }
    world::make_usage(mia, {{305, 12}, {400, 3}});
    const mutex_guard lock(utm_app_config_mutex);
    for (const int32_t app_id : {1, 2, 3}) {
        config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
        usage->app_id = app_id;
        list_append(&utm_app_config_global_app_stat_list, &usage->link);
        ++utm_app_config_global_app_stat_list_count;
    }
}

TEST_F(ClientApplyRun, RepairsWithoutATraceInTheFigures) {
    want(family);
    run();
    count_something();
    const std::string store = world::render_store();
    world::trace();
    EXPECT_EQ(run({.repair = true}), "");
    EXPECT_EQ(status_, CTL_DONE) << said_;
    const std::string trace = world::trace();
    EXPECT_NE(trace.find("event block profile 1\n"), std::string::npos) << trace;
    EXPECT_NE(trace.find("event unblock profile 2\n"), std::string::npos) << trace;
    // A cleared policy keeps its old count.
    std::string after = world::render_store();
    after.replace(after.find("count 4"), 7, "count 2");
    EXPECT_EQ(after, store);
    EXPECT_FALSE(std::filesystem::exists(applied_folder + "/as_it_was.json"));
    EXPECT_FALSE(std::filesystem::exists(applied_folder + "/used_up.json"));
}

TEST_F(ClientApplyRun, GivesTheFiguresBackAfterARepairThatWasCutShort) {
    for (int cut = 0;; ++cut) {
        world::reset();
        std::filesystem::remove_all(applied_folder);
        want(family);
        run();
        count_something();
        const std::string figures = world::render_apps(1) + world::render_router();
        cut_after_ = cut;
        run({.repair = true});
        const bool is_whole = status_ == CTL_DONE;
        cut_after_ = INT_MAX;
        run();
        ASSERT_EQ(status_, CTL_DONE) << said_;
        ASSERT_EQ(run(), "") << "cut after " << cut;
        ASSERT_EQ(world::render_apps(1) + world::render_router(), figures) << "cut after " << cut;
        EXPECT_EQ(profile(1)->daily_used, 20) << cut;
        EXPECT_EQ(profile(1)->weekly_used, 5) << cut;
        EXPECT_EQ(profile(1)->daily_extend, 700) << cut;
        EXPECT_EQ(profile(1)->daily_limit, 60) << cut;
        EXPECT_EQ(profile(2)->daily_used, 0) << cut;
        EXPECT_EQ(profile(2)->daily_limit_enable, 0) << cut;
        EXPECT_EQ(profile(1)->daily_limit_enable, 1) << cut;
        if (is_whole) {
            EXPECT_GT(cut, 15);
            break;
        }
    }
}

} // namespace
