/// The client's bar charts, over midnights.

#include "tests/daemon/support/client_fixture.h"
#include "tests/lib/needs.h"

namespace {

class ClientHistory : public client_test {
protected:
    void SetUp() override {
        client_test::SetUp();
        add_mia();
    }
    /// Two hours on Tuesday, nothing on Wednesday, 45 minutes on Thursday, the third of January.
    void use_three_days() {
        use(120, {{305, 90}, {306, 30}});
        sleep_over();
        sleep_over();
        use(45, {{305, 45}});
    }
};

/// The 28 days of December that a chart of the third of January begins with.
constexpr const char *DECEMBER[] = {
    "Tue  4 Dec", "Wed  5 Dec", "Thu  6 Dec", "Fri  7 Dec", "Sat  8 Dec", "Sun  9 Dec",
    "Mon 10 Dec", "Tue 11 Dec", "Wed 12 Dec", "Thu 13 Dec", "Fri 14 Dec", "Sat 15 Dec",
    "Sun 16 Dec", "Mon 17 Dec", "Tue 18 Dec", "Wed 19 Dec", "Thu 20 Dec", "Fri 21 Dec",
    "Sat 22 Dec", "Sun 23 Dec", "Mon 24 Dec", "Tue 25 Dec", "Wed 26 Dec", "Thu 27 Dec",
    "Fri 28 Dec", "Sat 29 Dec", "Sun 30 Dec", "Mon 31 Dec"};

std::string repeat(const std::string &text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

/// @param nothing  what stands behind a day without use
/// @return a chart without use in December
std::string chart(const std::string &nothing, const std::string &tuesday,
                  const std::string &thursday) {
    std::string text;
    for (const char *day : DECEMBER)
        text += day + nothing + "\n";
    return text + "Tue  1 Jan" + tuesday + "\nWed  2 Jan" + nothing + "\nThu  3 Jan" + thursday +
           "\n";
}

const std::string ASCII_CHART =
    chart("    0   0m", "  120   2h  " + repeat("#", 58), "   45  45m  " + repeat("#", 22));
const std::string BLOCK_CHART =
    chart("    0   0m", "  120   2h  " + repeat("█", 58), "   45  45m  " + repeat("█", 21) + "▊");
const std::string COLOUR_CHART =
    chart("    0   0m", "  120   2h  \033[36m" + repeat("█", 58) + "\033[0m",
          "   45  45m  \033[33m" + repeat("█", 21) + "▊\033[0m");

const std::pair<std::string, std::string> UTF_8 = {"LC_ALL", "C.UTF-8"};

} // namespace

TEST_F(ClientHistory, ThirtyDaysAreAChartThatEndsWithToday) {
    use_three_days();

    EXPECT_EQ(ctl({"usage", "3", "--history"}), done(ASCII_CHART));
    EXPECT_EQ(ctl({"usage", "3", "--history", "days"}), done(ASCII_CHART));
    EXPECT_EQ(ctl({"usage", "--history", "days", "3"}), done(ASCII_CHART));
    EXPECT_EQ(ctl({"usage", "--history=days", "3"}), done(ASCII_CHART));
    EXPECT_EQ(ctl({"usage", "--history", "--days", "3"}), done(ASCII_CHART));
}

TEST_F(ClientHistory, AUtf8LocaleGetsEighthsOfABlock) {
    use_three_days();

    EXPECT_EQ(ctl({"usage", "3", "--history"}, {.environment = {UTF_8}}), done(BLOCK_CHART));
    EXPECT_EQ(ctl({"usage", "3", "--history", "--ascii"}, {.environment = {UTF_8}}),
              done(ASCII_CHART));
}

TEST_F(ClientHistory, ATerminalGetsColoursAndNoLineThatIsTooLong) {
    UTM_NEEDS("pseudo-terminals", have_terminals());
    use_three_days();
    const std::string narrow =
        chart("    0   0m", "  120   2h  \033[36m" + repeat("#", 18) + "\033[0m",
              "   45  45m  \033[33m" + repeat("#", 7) + "\033[0m");

    EXPECT_EQ(ctl({"usage", "3", "--history"}, {.environment = {UTF_8}, .terminal_columns = 80}),
              done(COLOUR_CHART));
    EXPECT_EQ(ctl({"usage", "3", "--history"}, {.terminal_columns = 40}), done(narrow));
}

TEST_F(ClientHistory, WhoWantsNoColoursGetsNone) {
    UTM_NEEDS("pseudo-terminals", have_terminals());
    use_three_days();
    const std::vector<std::string> verb = {"usage", "3", "--history"};

    EXPECT_EQ(ctl(verb, {.environment = {UTF_8, {"NO_COLOR", "1"}}, .terminal_columns = 80}),
              done(BLOCK_CHART));
    EXPECT_EQ(ctl(verb, {.environment = {UTF_8, {"TERM", "dumb"}}, .terminal_columns = 80}),
              done(BLOCK_CHART));
    EXPECT_EQ(ctl(verb, {.environment = {UTF_8, {"NO_COLOR", ""}}, .terminal_columns = 80}),
              done(COLOUR_CHART));
}

TEST_F(ClientHistory, APipeIsAsWideAsTheEnvironmentSays) {
    use(60, {{305, 60}});
    const auto last_line = [this](const char *columns) {
        return sim_split_lines(
                   ctl({"usage", "3", "--history"}, {.environment = {{"COLUMNS", columns}}}).out)
            .back();
    };

    EXPECT_EQ(last_line("50"), "Tue  1 Jan  60  1h  " + repeat("#", 30));
    EXPECT_EQ(last_line("20"), "Tue  1 Jan  60  1h  " + repeat("#", 10)) << "there is a least";
    EXPECT_EQ(last_line("500"), "Tue  1 Jan  60  1h  " + repeat("#", 100)) << "and a most";
    for (const char *senseless : {"-5", "0", "wide", ""})
        EXPECT_EQ(last_line(senseless), "Tue  1 Jan  60  1h  " + repeat("#", 60)) << senseless;
}

TEST_F(ClientHistory, ApplicationsHaveChartsOfTheirOwn) {
    use_three_days();
    ASSERT_TRUE(sim_write_file("/tmp/apps", "306 chat\n"));

    EXPECT_EQ(ctl({"usage", "3", "--history", "--apps", "--names", "/tmp/apps"}),
              done("chat\n" + chart("   0   0m", "  30  30m  " + repeat("#", 59), "   0   0m") +
                   "\n305\n" +
                   chart("   0     0m", "  90  1h30m  " + repeat("#", 57),
                         "  45    45m  " + repeat("#", 29))));
}

TEST_F(ClientHistory, FourWeeksAreAChartThatEndsWithThisOne) {
    use_three_days();

    EXPECT_EQ(ctl({"usage", "3", "--history", "weeks"}), done("3 weeks ago    0     0m\n"
                                                              "2 weeks ago    0     0m\n"
                                                              "last week      0     0m\n"
                                                              "this week    165  2h45m  " +
                                                              repeat("#", 55) + "\n"));
}

TEST_F(ClientHistory, WeeksMayBeAnOptionOfTheirOwn) {
    use(15, {{306, 15}});
    const program_end weeks = ctl({"usage", "3", "--history=weeks"});

    EXPECT_EQ(ctl({"usage", "3", "--history", "--weeks"}), weeks);
    EXPECT_EQ(ctl({"usage", "--weeks", "3", "--history"}), weeks);
    EXPECT_EQ(ctl({"usage", "3", "--weeks"}), fails(2, "--weeks needs --history"));
}

TEST_F(ClientHistory, AWeekThatIsOverMovesUp) {
    use_three_days();
    for (int day = 0; day < 4; ++day) // to Monday
        sleep_over();
    use(15, {{306, 15}});

    EXPECT_EQ(ctl({"usage", "3", "--history=weeks", "--json"}),
              done(R"({"profile":3,"unit":"week","minutes":[0,0,165,15],"applications":[)"
                   R"({"app":306,"name":null,"minutes":[0,0,30,15]},)"
                   R"({"app":305,"name":null,"minutes":[0,0,135,0]}]})"
                   "\n"));
}

TEST_F(ClientHistory, DaysAreADocumentWithTheNewestLast) {
    use_three_days();
    const std::string quiet = repeat("0,", 28);

    const program_end end = ctl({"usage", "3", "--history", "-j"});

    EXPECT_EQ(end, done(R"({"profile":3,"unit":"day","minutes":[)" + quiet +
                        R"(120,0,45],"applications":[)"
                        R"({"app":306,"name":null,"minutes":[)" +
                        quiet + R"(30,0,0]},{"app":305,"name":null,"minutes":[)" + quiet +
                        "90,0,45]}]}\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientHistory, WhoUsedNothingHasAnEmptyChart) {
    const program_end empty = done("3 weeks ago  0  0m\n"
                                   "2 weeks ago  0  0m\n"
                                   "last week    0  0m\n"
                                   "this week    0  0m\n");
    EXPECT_EQ(ctl({"usage", "3", "--history=weeks"}), empty);
    EXPECT_EQ(ctl({"usage", "3", "--history=weeks", "--apps"}), empty);
    EXPECT_EQ(ctl({"usage", "3", "--history=weeks", "--json"}),
              done(R"({"profile":3,"unit":"week","minutes":[0,0,0,0],"applications":[]})"
                   "\n"));
}

TEST_F(ClientHistory, HundredsOfApplicationsAreReadToTheLast) {
    std::vector<std::pair<int, int>> apps;
    for (int app = 1; app <= 700; ++app)
        apps.push_back({app, 2});
    use(10, apps);

    EXPECT_EQ(sim_split_lines(ctl({"usage", "3", "--history"}).out).back(),
              "Tue  1 Jan  1400  23h20m  " + repeat("#", 54));
}

TEST_F(ClientHistory, DaysKeepTheirNamesWhenTheClocksChange) {
    // In Central Europe half an hour of the third of April is over; three days before, the clocks
    // went forward. So many times 24 hours ago is late on the day before.
    sim_clock_jump(&clock, 1901399400 - sim_clock_now(clock)); // 2030-04-02 22:30 UTC
    tick();
    const program_end end =
        ctl({"usage", "3", "--history"}, {.environment = {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}}});

    const text_lines lines = sim_split_lines(end.out);
    ASSERT_EQ(lines.size(), 31u);
    EXPECT_EQ(lines[0], "Mon  4 Mar  0  0m");
    EXPECT_EQ(lines[26], "Sat 30 Mar  0  0m");
    EXPECT_EQ(lines[27], "Sun 31 Mar  0  0m");
    EXPECT_EQ(lines[28], "Mon  1 Apr  0  0m");
    EXPECT_EQ(lines[30], "Wed  3 Apr  0  0m");
}

TEST_F(ClientHistory, DaysAndWeeksAreAllTheUnits) {
    for (const char *unit : {"day", "months", "4", ""})
        EXPECT_EQ(ctl({"usage", "3", "--history=" + std::string(unit)}),
                  fails(2, "\"" + std::string(unit) +
                               "\" is not valid for --history: give days or weeks"));
    EXPECT_EQ(log_count("[socket] Receive cmd type=37"), 0u);
}

TEST_F(ClientHistory, AUnitStandsRightBehindItsOption) {
    const program_end too_many = ctl({"usage", "3", "4"});
    EXPECT_THAT(too_many.err, testing::StartsWith("utm_appctl: too many operands\n"));
    EXPECT_EQ(too_many.status, 2);
    EXPECT_EQ(ctl({"usage", "3", "--history", "month"}), too_many);
    EXPECT_EQ(ctl({"usage", "3", "weeks"}), too_many);
    EXPECT_EQ(ctl({"usage", "3", "weeks", "--history"}), too_many);
    EXPECT_EQ(ctl({"usage", "3", "--history", "-j", "weeks"}), too_many);
    EXPECT_EQ(ctl({"usage", "3", "--history=days", "weeks"}), too_many);
    EXPECT_EQ(ctl({"usage", "3", "--history", "days", "weeks"}), too_many);
}
