#include "sim/router/command.h"
#include "sim/router/router_dir.h"
#include "tests/lib/world.h"
#include "tests/unit/support/fakes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using fakes::journal;
using result = program_end;
using fakes::run;
using fakes::run_line;

class SimFakes : public testing::Test {
protected:
    void SetUp() override {
        world::reset();
        fakes::reset();
    }
    void TearDown() override { fakes::remove(); }
};

/// What a program does with a command line that it does not know.
result refusal(const std::string &line, const std::string &why) {
    return {SIM_REFUSED, "", line + ": " + why + "\n"};
}

const result done = {0, "", ""};

std::string blocked() {
    return run_line("simrouter blocked").out;
}

const std::string guard_on = "the application guard is on\n";
const std::string guard_off = "the application guard is off: no application is held\n";

// ---- lcsh ----------------------------------------------------------------------------------

TEST_F(SimFakes, LcshAcceptsTheDaemonsCommandLines) {
    for (const std::string line : {
             "lcsh apg on",
             "lcsh apg off",
             "lcsh apg acl set 00:11:22:33:44:55 305 0 18",
             "lcsh apg acl set AA:BB:CC:DD:EE:FF -1 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 2147483647 0 18",
             "lcsh apg acl del 00:11:22:33:44:55 305 0",
             "lcsh apg acl del 00:11:22:33:44:55 -2147483648 0",
             "lcsh apg acl reset 00:11:22:33:44:55",
         }) {
        EXPECT_EQ(run_line(line), done) << line;
        EXPECT_EQ(journal(), line + "\n");
    }
}

TEST_F(SimFakes, LcshRefusesEverythingElse) {
    for (const std::string line : {
             "lcsh",
             "lcsh apg",
             "lcsh on",
             "lcsh apg ON",
             "lcsh apg on on",
             "lcsh apg on 1",
             "lcsh apg acl",
             "lcsh apg acl set",
             "lcsh apg acl set 00:11:22:33:44:55",
             "lcsh apg acl set 00:11:22:33:44:55 305",
             "lcsh apg acl set 00:11:22:33:44:55 305 0",
             "lcsh apg acl set 00:11:22:33:44:55 305 18 0",
             "lcsh apg acl set 00:11:22:33:44:55 305 0 17",
             "lcsh apg acl set 00:11:22:33:44:55 305 0 18 0",
             "lcsh apg acl set 305 00:11:22:33:44:55 0 18",
             "lcsh apg acl set aa:BB:CC:DD:EE:FF 305 0 18",
             "lcsh apg acl set 001122334455 305 0 18",
             "lcsh apg acl set 00-11-22-33-44-55 305 0 18",
             "lcsh apg acl set 00:11:22:33:44:5 305 0 18",
             "lcsh apg acl set 00:11:22:33:44:555 305 0 18",
             "lcsh apg acl set 00:11:22:33:44:5G 305 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 0305 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 +305 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 305x 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 x 0 18",
             "lcsh apg acl set 00:11:22:33:44:55 2147483648 0 18",
             "lcsh apg acl del 00:11:22:33:44:55 305",
             "lcsh apg acl del 00:11:22:33:44:55 305 1",
             "lcsh apg acl del 00:11:22:33:44:55 305 0 18",
             "lcsh apg acl reset",
             "lcsh apg acl reset 00:11:22:33:44:55 0",
             "lcsh apg acl reset 00:11:22:33:44:5a",
             "lcsh apg acl add 00:11:22:33:44:55 305 0 18",
             "lcsh apg rule set 00:11:22:33:44:55 305 0 18",
             "lcsh load",
             "lcsh load /tmp/a /tmp/b",
             "lcsh LOAD /tmp/a",
         }) {
        EXPECT_EQ(run_line(line), refusal(line, "no such command"));
        EXPECT_EQ(journal(), "refused " + line + "\n");
    }
    EXPECT_EQ(blocked(), "nothing is blocked\n" + guard_off);
}

TEST_F(SimFakes, QuotesArgumentsThatAShellWouldTakeApart) {
    struct {
        std::vector<std::string> arguments;
        std::string line;
    } const table[] = {
        {{""}, "lcsh ''"},
        {{"apg on"}, "lcsh 'apg on'"},
        {{"apg", "on", ""}, "lcsh apg on ''"},
        {{"apg", "on\n"}, "lcsh apg 'on?'"},
        {{"apg", "on;"}, "lcsh apg 'on;'"},
    };
    for (const auto &row : table) {
        EXPECT_EQ(run("lcsh", row.arguments), refusal(row.line, "no such command"));
        EXPECT_EQ(journal(), "refused " + row.line + "\n");
    }
}

TEST_F(SimFakes, LcshLoadsAFileThatHoldsSomething) {
    fakes::write("full", "x");
    fakes::write("empty", "");
    struct {
        const char *path, *answer;
    } const table[] = {
        {"/tmp/router/full", "signature /tmp/router/full loaded\n"},
        {"/tmp/router/empty", "no such signature\n"},
        {"/tmp/router/loaded", "no such signature\n"},
        {"/tmp/router", "no such signature\n"},
    };
    for (const auto &row : table) {
        EXPECT_EQ(run("lcsh", {"load", row.path}), (result{0, row.answer, ""}));
        EXPECT_EQ(journal(), std::string("lcsh load ") + row.path + "\n");
    }
}

// ---- The state -----------------------------------------------------------------------------

constexpr char set_a[] = "lcsh apg acl set 00:11:22:33:44:55 305 0 18";
constexpr char set_a_other[] = "lcsh apg acl set 00:11:22:33:44:55 -7 0 18";
constexpr char set_b[] = "lcsh apg acl set AA:BB:CC:DD:EE:FF 305 0 18";
constexpr char del_a[] = "lcsh apg acl del 00:11:22:33:44:55 305 0";
constexpr char reset_a[] = "lcsh apg acl reset 00:11:22:33:44:55";
constexpr char is_a[] = "an application (305) is blocked on a device (00:11:22:33:44:55)\n";
constexpr char is_a_other[] = "an application (-7) is blocked on a device (00:11:22:33:44:55)\n";
constexpr char is_b[] = "an application (305) is blocked on a device (AA:BB:CC:DD:EE:FF)\n";
constexpr char is_none[] = "nothing is blocked\n";

TEST_F(SimFakes, KeepWhatTheCommandsMade) {
    const std::string a = is_a;
    const std::string other = is_a_other;
    struct {
        std::vector<const char *> lines;
        std::string state;
    } const table[] = {
        {{}, is_none + guard_off},
        {{"lcsh apg on"}, is_none + guard_on},
        {{"lcsh apg on", "lcsh apg on"}, is_none + guard_on},
        {{"lcsh apg on", "lcsh apg off"}, is_none + guard_off},
        {{"lcsh apg off"}, is_none + guard_off},
        {{set_a}, a + guard_off},
        {{set_a, "lcsh apg on"}, a + guard_on},
        {{set_a, set_a}, a + guard_off},
        {{set_a, set_a, del_a}, is_none + guard_off},
        {{set_a, set_a_other, set_b}, other + a + is_b + guard_off},
        {{set_a, set_a_other, set_b, del_a}, other + is_b + guard_off},
        {{set_a, set_a_other, set_b, reset_a}, is_b + guard_off},
        {{set_a, reset_a, "lcsh apg on"}, is_none + guard_on},
        {{del_a, reset_a}, is_none + guard_off},
        {{set_a, "lcsh apg on", "lcsh apg off"}, a + guard_off},
    };
    for (const auto &row : table) {
        SetUp();
        std::string lines;
        for (const char *line : row.lines) {
            EXPECT_EQ(run_line(line), done);
            lines += line + std::string("\n");
        }
        EXPECT_EQ(run_line("simrouter blocked"), (result{0, row.state, ""})) << lines;
        EXPECT_EQ(journal(), lines);
    }
}

TEST_F(SimFakes, NameWhatIsBlockedAsTheScenarioDoes) {
    fakes::write("scenario", "person mia 3 Mia\n"
                             "device tablet mia 00:11:22:33:44:55 Mia's tablet\n"
                             "app video 305 moving pictures\n");
    run_line(set_a);
    run_line(set_b);
    sim_router_set(sim_blocked_fact(3).name, true);
    sim_router_set(sim_blocked_fact(-4).name, true);
    EXPECT_EQ(blocked(), "somebody (profile -4) has no network\n"
                         "Mia (profile 3) has no network\n"
                         "moving pictures (305) is blocked on Mia's tablet (00:11:22:33:44:55)\n"
                         "moving pictures (305) is blocked on a device (AA:BB:CC:DD:EE:FF)\n" +
                             guard_off);
}

TEST_F(SimFakes, FailAsTheFaultFileAsks) {
    fakes::write("fail", "3 acl set\n4 apg\nnothing\n0 load\n");
    struct {
        const char *line;
        int status;
    } const table[] = {{set_a, 3}, {"lcsh apg on", 4}, {del_a, 4}};
    for (const auto &row : table) {
        EXPECT_EQ(run_line(row.line), (result{row.status, "", ""}));
        EXPECT_EQ(journal(), row.line + std::string("\n"));
    }
    EXPECT_EQ(run_line("lcsh load /nowhere"), (result{0, "no such signature\n", ""}));
    EXPECT_EQ(run_line("lcsh off"), refusal("lcsh off", "no such command"));
    EXPECT_EQ(blocked(), is_none + guard_off);
}

TEST_F(SimFakes, ComplainWithoutARouter) {
    unsetenv(SIM_ROUTER_VARIABLE);
    for (const std::string line :
         {"lcsh apg on", "profile_daily_limit.sh -C 3", "lcsh load /tmp/router"})
        EXPECT_EQ(run_line(line), refusal(line, "UTM_SIM_DIR names no simulated router"));
    EXPECT_EQ(run_line("lcsh off"), refusal("lcsh off", "no such command"));
    EXPECT_EQ(run_line("profile_daily_limit.sh -C"),
              refusal("profile_daily_limit.sh -C", "no such command"));
    EXPECT_EQ(run_line("simrouter blocked").status, 2);
}

// ---- ubus ----------------------------------------------------------------------------------

constexpr char no_usage[] = "{\n\t\"data\": [\n\n\t]\n}\n";

std::vector<std::string> query(const std::string &arguments) {
    return {"-t", "2", "call", "lc-dpi.lc-dev-statd", "time_usage_hour", arguments};
}

std::string query_line(const std::string &arguments) {
    return "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '" + arguments + "'";
}

TEST_F(SimFakes, UbusAcceptsTheDaemonsQueries) {
    for (const std::string arguments : {
             R"({"s":1772625540,"e":1772625600})",
             R"({"s":0,"e":0})",
             R"({"s":-60,"e":-1})",
             R"({"s":1,"e":2,"mac":"001122334455 "})",
             R"({"s":1,"e":2,"mac":"001122334455 AABBCCDDEEFF "})",
         }) {
        EXPECT_EQ(run("ubus", query(arguments)), (result{0, no_usage, ""})) << arguments;
        EXPECT_EQ(journal(), query_line(arguments) + "\n");
    }
}

TEST_F(SimFakes, UbusRefusesQueriesThatAreWrittenInAnotherWay) {
    for (const std::string arguments : {
             R"({})",
             R"({"s":1})",
             R"({"s":1,"e":2)",
             R"({"s":1,"e":2} )",
             R"({"s":1,"e":2}})",
             R"({"s": 1,"e":2})",
             R"({ "s":1,"e":2})",
             R"({"e":2,"s":1})",
             R"({"s":01,"e":2})",
             R"({"s":+1,"e":2})",
             R"({"s":1.0,"e":2})",
             R"({"s":"1","e":"2"})",
             R"({"s":1,"e":2,})",
             R"({"s":1,"e":2,"mac":""})",
             R"({"s":1,"e":2,"mac":" "})",
             R"({"s":1,"e":2,"mac":"001122334455"})",
             R"({"s":1,"e":2,"mac":"001122334455 "}x)",
             R"({"s":1,"e":2,"mac":" 001122334455"})",
             R"({"s":1,"e":2,"mac":"001122334455  "})",
             R"({"s":1,"e":2,"mac":"00112233445 "})",
             R"({"s":1,"e":2,"mac":"0011223344556 "})",
             R"({"s":1,"e":2,"mac":"aabbccddeeff "})",
             R"({"s":1,"e":2,"mac":"00:11:22:33:44:55 "})",
             R"({"s":1,"e":2,"mac":"001122334455,AABBCCDDEEFF "})",
             R"({"s":1,"e":2,"mac":"001122334455 AABBCCDDEEFF"})",
             R"({"s":1,"e":2,"mac":"001122334455AABBCCDDEEFF "})",
             R"({"s":1,"e":2, "mac":"001122334455 "})",
             R"({"mac":"001122334455 ","s":1,"e":2})",
         }) {
        EXPECT_EQ(run("ubus", query(arguments)), refusal(query_line(arguments), "no such call"));
        EXPECT_EQ(journal(), "refused " + query_line(arguments) + "\n");
    }
}

TEST_F(SimFakes, UbusRefusesOtherCalls) {
    const std::string good = R"({"s":1,"e":2})";
    struct {
        std::vector<std::string> arguments;
        std::string line;
    } const table[] = {
        {{}, "ubus"},
        {{"list"}, "ubus list"},
        {{"-t", "2", "call", "lc-dpi.lc-dev-statd", "time_usage_hour"},
         "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour"},
        {{"-t", "3", "call", "lc-dpi.lc-dev-statd", "time_usage_hour", good},
         "ubus -t 3 call lc-dpi.lc-dev-statd time_usage_hour '" + good + "'"},
        {{"call", "lc-dpi.lc-dev-statd", "time_usage_hour", good},
         "ubus call lc-dpi.lc-dev-statd time_usage_hour '" + good + "'"},
        {{"-t", "2", "call", "lc-dpi.lc-dev-stat", "time_usage_hour", good},
         "ubus -t 2 call lc-dpi.lc-dev-stat time_usage_hour '" + good + "'"},
        {{"-t", "2", "call", "lc-dpi.lc-dev-statd", "time_usage", good},
         "ubus -t 2 call lc-dpi.lc-dev-statd time_usage '" + good + "'"},
        {{"-t", "2", "call", "lc-dpi.lc-dev-statd", "time_usage_hour", good, "1"},
         query_line(good) + " 1"},
    };
    for (const auto &row : table) {
        EXPECT_EQ(run("ubus", row.arguments), refusal(row.line, "no such call"));
        EXPECT_EQ(journal(), "refused " + row.line + "\n");
    }
}

TEST_F(SimFakes, UbusPrintsThePrescribedReplyOfTheKind) {
    const std::string router = R"({"s":1,"e":2})";
    const std::string devices = R"({"s":1,"e":2,"mac":"001122334455 "})";
    fakes::write("reply", "both");
    EXPECT_EQ(run("ubus", query(router)), (result{0, "both", ""}));
    EXPECT_EQ(run("ubus", query(devices)), (result{0, "both", ""}));
    fakes::write("reply.router", std::string("r\0r", 3));
    fakes::write("reply.profile", "");
    EXPECT_EQ(run("ubus", query(router)), (result{0, std::string("r\0r", 3), ""}));
    EXPECT_EQ(run("ubus", query(devices)), done);
}

TEST_F(SimFakes, UbusRefusesToCountAnImproperScenario) {
    fakes::write("scenario", "# nobody\nuse tablet video 17:05 20:00\n");
    const std::string line = query_line(R"({"s":1,"e":2})");
    EXPECT_EQ(run("ubus", query(R"({"s":1,"e":2})")),
              refusal(line, "/tmp/router/scenario:2: there is no device tablet"));
    EXPECT_EQ(journal(), line + "\nrefused " + line + "\n");
}

// ---- profile_daily_limit.sh ----------------------------------------------------------------

TEST_F(SimFakes, TheScriptAcceptsAProfileId) {
    for (const std::string id : {"0", "3", "-1", "2147483647", "-2147483648"}) {
        EXPECT_EQ(run("profile_daily_limit.sh", {"-C", id}), done);
        EXPECT_EQ(journal(), "profile_daily_limit.sh -C " + id + "\n");
    }
}

TEST_F(SimFakes, TheScriptRefusesEverythingElse) {
    for (const std::string end :
         {"", " -C", " 3", " -c 3", " -C3", " 3 -C", " -C x", " -C 3x", " -C x3", " -C +3", " -C -",
          " -C --3", " -C 3-", " -C 3.0", " -C 3 4", " -R 3", " --C 3"}) {
        const std::string line = "profile_daily_limit.sh" + end;
        const std::string shown = end.empty() ? line + " " : line;
        EXPECT_EQ(run_line(line), refusal(shown, "no such command"));
        EXPECT_EQ(journal(), "refused " + shown + "\n");
    }
    EXPECT_EQ(run("profile_daily_limit.sh", {"-C", "3\n4"}),
              refusal("profile_daily_limit.sh -C 3?4", "no such command"));
    EXPECT_EQ(run("profile_daily_limit.sh", {"-C", ""}),
              refusal("profile_daily_limit.sh -C ", "no such command"));
    EXPECT_EQ(journal(), "refused profile_daily_limit.sh -C 3?4\n"
                         "refused profile_daily_limit.sh -C \n");
}

TEST_F(SimFakes, TheScriptFailsAsTheFaultFileAsks) {
    fakes::write("fail", "7 limit.sh -C 3\n");
    EXPECT_EQ(run_line("profile_daily_limit.sh -C 3").status, 7);
    EXPECT_EQ(run_line("profile_daily_limit.sh -C 4").status, 0);
}

} // namespace
