/// The client and the limits: of today, of weekdays, and the bonus.

#include "tests/daemon/support/client_fixture.h"

namespace {

class ClientLimits : public client_test {
protected:
    void SetUp() override {
        client_test::SetUp();
        add_mia();
    }
};

constexpr char BAD_LIMIT[] =
    "the daemon refused: no such profile, or the limit is not between 1m and 24h";
constexpr char BAD_BONUS[] =
    "the daemon refused: no such profile, or the bonus is not between 1m and 6h";

program_end no_time(const std::string &text) {
    return fails(2, "\"" + text + "\" is not a time: give minutes, such as 90, 90m or 1h30m");
}

} // namespace

TEST_F(ClientLimits, MinutesMayBeWrittenInThreeWays) {
    for (const char *text : {"90", "90m", "1h30m"}) {
        must({"limit", "set", "3", "1"});
        EXPECT_EQ(ctl({"limit", "set", "3", text}), done());
        EXPECT_EQ(ctl({"limit", "show", "3"}), done("limit    90 (1h30m)\nenabled  no\n"));
    }
}

TEST_F(ClientLimits, ALimitIsAMinuteToADay) {
    EXPECT_EQ(ctl({"limit", "set", "3", "1m"}), done());
    EXPECT_EQ(ctl({"limit", "set", "3", "24h"}), done());
    EXPECT_EQ(ctl({"limit", "set", "3", "0"}), fails(1, BAD_LIMIT));
    EXPECT_EQ(ctl({"limit", "set", "3", "24h1m"}), fails(1, BAD_LIMIT));
    EXPECT_EQ(ctl({"limit", "set", "9", "1"}), fails(1, BAD_LIMIT));
    EXPECT_EQ(ctl({"limit", "set", "3", "1h60m"}), no_time("1h60m"));
    EXPECT_EQ(ctl({"limit", "set", "--", "3", "-1"}), no_time("-1"));
    EXPECT_EQ(ctl({"limit", "show", "3"}), done("limit    1440 (24h)\nenabled  no\n"));
}

TEST_F(ClientLimits, ALimitIsEnabledAndDisabled) {
    EXPECT_EQ(ctl({"limit", "enable", "3"}), done());
    EXPECT_EQ(ctl({"limit", "show", "3"}), done("limit    1440 (24h)\nenabled  yes\n"));
    EXPECT_EQ(ctl({"limit", "disable", "3"}), done());
    EXPECT_EQ(ctl({"limit", "show", "3"}), done("limit    1440 (24h)\nenabled  no\n"));
}

TEST_F(ClientLimits, ALimitIsADocument) {
    must({"limit", "set", "3", "1h30m"});
    must({"limit", "enable", "3"});

    const program_end end = ctl({"limit", "show", "3", "--json"});

    EXPECT_EQ(end, done("{\"profile\":3,\"enabled\":true,\"limit\":90}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientLimits, ALimitCutsTheProfileOff) {
    must({"activate", "on"});
    must({"limit", "set", "3", "10"});
    unlink("/tmp/router/journal");
    use(10, {});

    EXPECT_EQ(ctl({"limit", "enable", "3"}), done());
    EXPECT_EQ(ctl({"extend", "add", "3", "5"}), done());
    EXPECT_EQ(ctl({"extend", "reset", "3"}), done());
    EXPECT_EQ(ctl({"limit", "disable", "3"}), done());

    const text_lines expected = {device_query(NOON, NOON + 60, "02000000000A "),
                                 router_query(NOON, NOON + 60),
                                 "notify block profile 3",
                                 "notify unblock profile 3",
                                 "notify block profile 3",
                                 "notify unblock profile 3"};
    EXPECT_EQ(journal(), expected);
}

TEST_F(ClientLimits, EveryWeekdayHasItsOwn) {
    EXPECT_EQ(ctl({"limit", "set", "3", "2h"}), done());
    EXPECT_EQ(ctl({"weekday", "set", "3", "0", "3h"}), done());
    EXPECT_EQ(ctl({"weekday", "set", "3", "Monday", "45"}), done());
    EXPECT_EQ(ctl({"weekday", "set", "3", "SAT", "1h30m"}), done());

    EXPECT_EQ(ctl({"weekday", "show", "3"}), done("DAY        MINUTES   TIME\n"
                                                  "Sunday         180     3h\n"
                                                  "Monday          45    45m\n"
                                                  "Tuesday        120     2h\n"
                                                  "Wednesday      120     2h\n"
                                                  "Thursday       120     2h\n"
                                                  "Friday         120     2h\n"
                                                  "Saturday        90  1h30m\n"));
}

TEST_F(ClientLimits, WeekdaysAreADocument) {
    must({"weekday", "set", "3", "wed", "75"});

    const program_end end = ctl({"weekday", "show", "3", "--json"});

    EXPECT_EQ(end, done(R"({"profile":3,"weekdays":[)"
                        R"({"day":0,"name":"Sunday","minutes":1440},)"
                        R"({"day":1,"name":"Monday","minutes":1440},)"
                        R"({"day":2,"name":"Tuesday","minutes":1440},)"
                        R"({"day":3,"name":"Wednesday","minutes":75},)"
                        R"({"day":4,"name":"Thursday","minutes":1440},)"
                        R"({"day":5,"name":"Friday","minutes":1440},)"
                        R"({"day":6,"name":"Saturday","minutes":1440}]})"
                        "\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientLimits, AWeekdayThatIsNoneIsNotAskedFor) {
    for (const char *day : {"7", "mo", "", "00", "mondays", "funday"})
        EXPECT_EQ(ctl({"weekday", "set", "3", day, "60"}),
                  fails(2, "\"" + std::string(day) +
                               "\" is not a weekday: give a name, such as monday or mon, or 0 "
                               "(Sunday) to 6"));
    EXPECT_EQ(ctl({"weekday", "set", "3", "mon", "25h"}), fails(1, BAD_LIMIT));
    EXPECT_EQ(ctl({"weekday", "set", "3", "mon", "1:30"}), no_time("1:30"));
    EXPECT_EQ(log_count("[socket] Receive cmd type=30"), 1u);
}

TEST_F(ClientLimits, ABonusAddsUpAndIsTakenBack) {
    EXPECT_EQ(ctl({"extend", "show", "3"}), done("0 (0m)\n"));
    EXPECT_EQ(ctl({"extend", "add", "3", "1h"}), done());
    EXPECT_EQ(ctl({"extend", "add", "3", "15"}), done());
    EXPECT_EQ(ctl({"extend", "show", "3"}), done("75 (1h15m)\n"));
    const program_end end = ctl({"extend", "show", "3", "--json"});
    EXPECT_EQ(end, done("{\"profile\":3,\"extend\":75}\n"));
    EXPECT_TRUE(is_document(end.out));
    EXPECT_EQ(ctl({"extend", "reset", "3"}), done());
    EXPECT_EQ(ctl({"extend", "show", "3"}), done("0 (0m)\n"));
}

TEST_F(ClientLimits, ABonusIsSixHoursAtMost) {
    EXPECT_EQ(ctl({"extend", "add", "3", "6h"}), done());
    EXPECT_EQ(ctl({"extend", "reset", "3"}), done());
    EXPECT_EQ(ctl({"extend", "add", "3", "6h1m"}), fails(1, BAD_BONUS));
    EXPECT_EQ(ctl({"extend", "add", "9", "5"}), fails(1, BAD_BONUS));
    EXPECT_EQ(ctl({"extend", "show", "3"}), done("0 (0m)\n"));
}

TEST_F(ClientLimits, AProfileThatDoesNotExistIsToldOnce) {
    const std::vector<std::vector<std::string>> verbs = {
        {"limit", "show", "9"},    {"limit", "show", "9", "--json"}, {"limit", "enable", "9"},
        {"limit", "disable", "9"}, {"weekday", "show", "9"},         {"weekday", "show", "9", "-j"},
        {"extend", "show", "9"},   {"extend", "show", "9", "-j"},    {"extend", "reset", "9"}};
    for (const std::vector<std::string> &verb : verbs)
        EXPECT_EQ(ctl(verb), fails(1, NO_PROFILE)) << testing::PrintToString(verb);
}
