/// The client and what was used: a profile's sums, and its applications in one period.

#include "tests/daemon/support/client_fixture.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

class ClientUsage : public client_test {
protected:
    void SetUp() override {
        client_test::SetUp();
        add_mia();
        // A name that steers a terminal, one with an accent, and lines that are skipped.
        ASSERT_TRUE(sim_write_file("/tmp/apps", "# known here\n\n305 Vid\033[31meo\n"
                                                "  306\tCaf\xc3\xa9 chat \r\n305 second\n"));
    }
    /// A Tuesday, and 75 minutes of the Wednesday behind it.
    void use_two_days() {
        must({"limit", "set", "3", "2h"});
        use(130, {{305, 90}, {306, 45}});
        sleep_over();
        must({"extend", "add", "3", "10"});
        use(75, {{306, 75}, {307, 5}});
    }
};

} // namespace

TEST_F(ClientUsage, AProfileWithoutALimitHasNoTimeLeftToShow) {
    EXPECT_EQ(ctl({"usage", "3"}), done("today               0   0m\n"
                                        "this week           0   0m\n"
                                        "this month          0   0m\n"
                                        "limit, disabled  1440  24h\n"
                                        "extend              0   0m\n"));
}

TEST_F(ClientUsage, DaysAddUpToWeeksAndMonths) {
    use_two_days();
    must({"limit", "enable", "3"});

    EXPECT_EQ(ctl({"usage", "3"}), done("today        75  1h15m\n"
                                        "this week   205  3h25m\n"
                                        "this month  205  3h25m\n"
                                        "limit       120     2h\n"
                                        "extend       10    10m\n"
                                        "left         55    55m\n"));
}

TEST_F(ClientUsage, SumsAreADocument) {
    use_two_days();

    const program_end end = ctl({"usage", "3", "--json"});

    EXPECT_EQ(end, done(R"({"profile":3,"today":75,"week":205,"month":205,"enabled":false,)"
                        R"("limit":120,"extend":10,"left":55})"
                        "\n"));
    EXPECT_TRUE(is_document(end.out));
}

TEST_F(ClientUsage, NothingIsLeftBeyondTheLimit) {
    must({"limit", "set", "3", "10"});
    must({"limit", "enable", "3"});
    use(25, {});

    EXPECT_EQ(ctl({"usage", "3"}), done("today       25  25m\n"
                                        "this week   25  25m\n"
                                        "this month  25  25m\n"
                                        "limit       10  10m\n"
                                        "extend       0   0m\n"
                                        "left         0   0m\n"));
}

TEST_F(ClientUsage, ApplicationsGoByNumberWhereTheyHaveNoName) {
    use_two_days();

    EXPECT_EQ(ctl({"usage", "3", "--apps"}), done("APPLICATION  MINUTES   TIME\n"
                                                  "306               75  1h15m\n"
                                                  "307                5     5m\n"
                                                  "total             80  1h20m\n"));
}

TEST_F(ClientUsage, NamesAreCleanedAndAligned) {
    use_two_days();

    EXPECT_EQ(ctl({"usage", "3", "--day", "1", "--names", "/tmp/apps"}),
              done("APPLICATION  MINUTES   TIME\n"
                   "Vid?[31meo        90  1h30m\n"
                   "Caf\xc3\xa9 chat         45    45m\n"
                   "total            135  2h15m\n"));
}

TEST_F(ClientUsage, EveryPeriodHasItsApplications) {
    use_two_days();
    const std::string week = "APPLICATION  MINUTES   TIME\n"
                             "306              120     2h\n"
                             "305               90  1h30m\n"
                             "307                5     5m\n"
                             "total            215  3h35m\n";

    EXPECT_EQ(ctl({"usage", "3", "--week", "0"}), done(week));
    EXPECT_EQ(ctl({"usage", "3", "--month"}), done(week));
    EXPECT_EQ(ctl({"usage", "3", "--day=0"}), ctl({"usage", "3", "--apps"}));
    const std::string nothing = "APPLICATION  MINUTES  TIME\n"
                                "total              0    0m\n";
    for (const char *quiet : {"--day=2", "--day=30", "--week=1", "--week=3"})
        EXPECT_EQ(ctl({"usage", "3", quiet}), done(nothing)) << quiet;
}

TEST_F(ClientUsage, ApplicationsAreADocument) {
    use_two_days();

    const program_end end = ctl({"usage", "3", "--day", "1", "-j", "-n", "/tmp/apps"});
    EXPECT_EQ(end, done(R"({"profile":3,"unit":"day","ago":1,"applications":[)"
                        R"({"app":305,"name":"Vid?[31meo","minutes":90},)"
                        R"({"app":306,"name":"Café chat","minutes":45}]})"
                        "\n"));
    EXPECT_TRUE(is_document(end.out));
    EXPECT_EQ(ctl({"usage", "3", "--week", "0", "-j"}),
              done(R"({"profile":3,"unit":"week","ago":0,"applications":[)"
                   R"({"app":306,"name":null,"minutes":120},)"
                   R"({"app":305,"name":null,"minutes":90},)"
                   R"({"app":307,"name":null,"minutes":5}]})"
                   "\n"));
}

TEST_F(ClientUsage, WhoUsedNothingHasNoApplications) {
    EXPECT_EQ(ctl({"usage", "3", "--apps"}), done("APPLICATION  MINUTES  TIME\n"
                                                  "total              0    0m\n"));
    EXPECT_EQ(ctl({"usage", "3", "--month", "--json"}),
              done("{\"profile\":3,\"unit\":\"month\",\"ago\":0,\"applications\":[]}\n"));
}

TEST_F(ClientUsage, AProfileThatDoesNotExistIsToldOnce) {
    for (const char *option :
         {"-j", "--apps", "--day=1", "--week=1", "--month", "--history", "--history=weeks"})
        EXPECT_EQ(ctl({"usage", "9", option}), fails(1, NO_PROFILE)) << option;
    EXPECT_EQ(ctl({"usage", "9"}), fails(1, NO_PROFILE));
}

TEST_F(ClientUsage, PeriodsExcludeEachOther) {
    const char *const several = "--day, --week and --month cannot be combined: give one of them";
    EXPECT_EQ(ctl({"usage", "3", "--day", "1", "--month"}), fails(2, several));
    EXPECT_EQ(ctl({"usage", "3", "--week", "1", "--month"}), fails(2, several));
    EXPECT_EQ(ctl({"usage", "3", "--day", "1", "--week", "1"}), fails(2, several));
    for (const std::string period : {"--day=1", "--week=1", "--month"})
        EXPECT_EQ(ctl({"usage", "3", "--history", period}),
                  fails(2, period.substr(0, period.find('=')) +
                               " and --history cannot be combined: give one of them"));
}

TEST_F(ClientUsage, PeriodsBeyondWhatIsKeptAreNotAskedFor) {
    for (const char *days : {"31", "-1", "one", ""})
        EXPECT_EQ(ctl({"usage", "3", "--day", days}),
                  fails(2, "\"" + std::string(days) +
                               "\" is not valid for --day: give a whole number from 0 to 30"));
    EXPECT_EQ(ctl({"usage", "3", "--week", "4"}),
              fails(2, "\"4\" is not valid for --week: give a whole number from 0 to 3"));
    EXPECT_EQ(log_count("[socket] Receive cmd type=36"), 0u);
}

TEST_F(ClientUsage, AFileOfNamesMustBeReadable) {
    EXPECT_EQ(ctl({"usage", "3", "--apps", "-n", "/tmp/none"}),
              fails(2, "cannot read the applications' names from /tmp/none: No such file or "
                       "directory"));
    EXPECT_EQ(ctl({"usage", "3", "--apps", "-n", "/tmp"}),
              fails(2, "cannot read the applications' names from /tmp: it is not a regular file"));
}

TEST_F(ClientUsage, APipeOfNamesIsNotWaitedFor) {
    ASSERT_EQ(mkfifo("/tmp/names", 0600), 0);
    EXPECT_EQ(
        ctl({"usage", "3", "--apps", "-n", "/tmp/names"}),
        fails(2, "cannot read the applications' names from /tmp/names: it is not a regular file"));
    unlink("/tmp/names");
}

TEST_F(ClientUsage, ARefusalStaysOneWhereNobodyListensToMessages) {
    const program_end end = ctl({"usage", "4"}, {.in_child = [] { close(STDERR_FILENO); }});
    EXPECT_EQ(end, program_end{.status = 1});
}

TEST_F(ClientUsage, ALineWithoutANameIsToldAndLeftOut) {
    ASSERT_TRUE(sim_write_file("/tmp/apps", "305 video\n306\n"));
    use(10, {{305, 10}});

    const program_end expected = {
        .status = 0,
        .out = "APPLICATION  MINUTES  TIME\nvideo             10   10m\n"
               "total             10   10m\n",
        .err = "utm_appctl: /tmp/apps, line 2: expected a number and a name, such as \"305 "
               "video\"; line skipped\n"};
    EXPECT_EQ(ctl({"usage", "3", "--apps", "-n", "/tmp/apps"}), expected);
}
