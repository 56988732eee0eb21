/// The client's bar charts on a terminal.

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

const std::string BLOCK_CHART =
    chart("    0   0m", "  120   2h  " + repeat("█", 58), "   45  45m  " + repeat("█", 21) + "▊");
const std::string COLOUR_CHART =
    chart("    0   0m", "  120   2h  \033[36m" + repeat("█", 58) + "\033[0m",
          "   45  45m  \033[33m" + repeat("█", 21) + "▊\033[0m");

const std::pair<std::string, std::string> UTF_8 = {"LC_ALL", "C.UTF-8"};

} // namespace

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
