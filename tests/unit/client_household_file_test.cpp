#include "client/household_file.h"

#include "client/names.h"
#include "sim/harness/files.h"
#include "tests/lib/world.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char household_file[] = "/tmp/household.json";
constexpr char apps_file[] = "/tmp/household_apps";
constexpr char mia[] = R"({"applications": [{"number": 305, "name": "video"}],
 "people": [{"number": 1, "name": "Mia"}, {"number": -2, "name": "Jörg"}]})";

using read_function_t = ctl_exit (*)(const char *, const char *, household_t *);

/// What was read of a household, and what was said meanwhile.
struct outcome_t {
    ctl_exit status;
    std::string names; ///< "1 Mia, 305 video": people, then applications
    std::string said;
};

bool operator==(const outcome_t &one, const outcome_t &other) {
    return one.status == other.status && one.names == other.names && one.said == other.said;
}

std::ostream &operator<<(std::ostream &out, const outcome_t &outcome) {
    return out << outcome.status << " [" << outcome.names << "] " << outcome.said;
}

std::string names_of(const household_t &household) {
    std::string names;
    const auto add = [&names](const auto &list) {
        for (const auto &record : list)
            names += (names.empty() ? "" : ", ") + std::to_string(record.number) + " " +
                     record.name.text;
    };
    add(household.people);
    add(household.apps);
    return names;
}

outcome_t read_with(read_function_t read, const char *path, const char *names_path = apps_file) {
    household_t household = {};
    testing::internal::CaptureStderr();
    const ctl_exit status = read(path, names_path, &household);
    const std::string said = testing::internal::GetCapturedStderr();
    return {status, status == CTL_DONE ? names_of(household) : "", said};
}

class ClientHouseholdFile : public testing::Test {
protected:
    void SetUp() override {
        unlink(household_file);
        unsetenv("UTM_APPCTL_HOUSEHOLD");
        ASSERT_TRUE(sim_write_file(apps_file, "310 music\n"));
    }
    void TearDown() override { SetUp(); }
};

TEST_F(ClientHouseholdFile, IsNamedByTheOptionOrTheEnvironmentOrIsTheDefault) {
    const auto place = [](const char *told) {
        const ctl_household_place found = ctl_household_place_of(told);
        return std::string(found.path) + (found.is_told ? " told" : "");
    };
    EXPECT_EQ(place(nullptr), household_path);
    EXPECT_EQ(place("a"), "a told");
    setenv("UTM_APPCTL_HOUSEHOLD", "b", 1);
    EXPECT_EQ(place(nullptr), "b");
    EXPECT_EQ(place("a"), "a told");
    setenv("UTM_APPCTL_HOUSEHOLD", "", 1);
    EXPECT_EQ(place(nullptr), household_path);
}

TEST_F(ClientHouseholdFile, HasItsNamesBesideThoseOfTheNamesFile) {
    ASSERT_TRUE(sim_write_file(household_file, mia));
    const outcome_t expected = {CTL_DONE, "1 Mia, -2 Jörg, 305 video, 310 music", ""};
    EXPECT_EQ(read_with(ctl_read_names_of_household, household_file), expected);
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file), expected);
    setenv("UTM_APPCTL_HOUSEHOLD", household_file, 1);
    EXPECT_EQ(read_with(ctl_read_names_of_household, nullptr), expected);
}

TEST_F(ClientHouseholdFile, ThatIsMissingIsEmptyUnlessItWasNamed) {
    setenv("UTM_APPCTL_HOUSEHOLD", household_file, 1);
    EXPECT_EQ(read_with(ctl_read_names_of_household, nullptr),
              (outcome_t{CTL_DONE, "310 music", ""}));
    const outcome_t missing = {CTL_USAGE, "",
                               "utm_appctl: cannot read the household from /tmp/household.json: "
                               "No such file or directory\n"};
    EXPECT_EQ(read_with(ctl_read_names_of_household, household_file), missing);
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file), missing);
}

TEST_F(ClientHouseholdFile, ThatCannotBeReadIsReportedAndEmptyUnlessItWasNamed) {
    ASSERT_EQ(mkfifo(household_file, 0600), 0);
    const std::string said =
        "utm_appctl: cannot read the household from /tmp/household.json: it is not a regular "
        "file\n";
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file),
              (outcome_t{CTL_USAGE, "", said}));
    setenv("UTM_APPCTL_HOUSEHOLD", household_file, 1);
    EXPECT_EQ(read_with(ctl_read_names_of_household, nullptr),
              (outcome_t{CTL_DONE, "310 music", said}));
}

TEST_F(ClientHouseholdFile, ThatIsTooLargeIsNotRead) {
    ASSERT_TRUE(sim_write_file(household_file, std::string(household_size_limit + 1, ' ')));
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file),
              (outcome_t{CTL_USAGE, "",
                         "utm_appctl: cannot read the household from /tmp/household.json: it is "
                         "larger than 1 MiB\n"}));
    ASSERT_TRUE(sim_write_file(household_file, std::string(household_size_limit, ' ')));
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file),
              (outcome_t{CTL_USAGE, "", "utm_appctl: /tmp/household.json: it is empty\n"}));
}

TEST_F(ClientHouseholdFile, WithErrorsNamesNobodyForOtherVerbs) {
    ASSERT_TRUE(sim_write_file(household_file,
                               R"({"applications": [{"number": 305, "name": "video"}], "people": [
 {"number": 1, "name": "Mia", "devices": [{"mac": "02:00:00:00:00:1a"}], "limit": 0, "x": 1}]})"));
    EXPECT_EQ(
        read_with(ctl_read_names_of_household, household_file),
        (outcome_t{CTL_DONE, "310 music",
                   "utm_appctl: /tmp/household.json: people[0].limit: 0 minutes are less than "
                   "one or more than 24 hours: give a time between, or \"none\"; until this "
                   "is mended, the file names nobody and nothing\n"}));
    EXPECT_EQ(
        read_with(ctl_read_whole_household, household_file).said,
        "utm_appctl: /tmp/household.json: warning: people[0].devices[0].mac: "
        "02:00:00:00:00:1A is made up by the device (randomised) and may change, and then the "
        "device is nobody's: turn off the private address for this network in the device's "
        "settings, and give the address that it shows then\n"
        "utm_appctl: /tmp/household.json: people[0].limit: 0 minutes are less than one or "
        "more than 24 hours: give a time between, or \"none\"\n"
        "utm_appctl: /tmp/household.json: people[0]: unknown key \"x\"\n");
}

TEST_F(ClientHouseholdFile, WarnsOfNothingToOtherVerbs) {
    ASSERT_TRUE(sim_write_file(household_file, R"({"free": ["school.example"]})"));
    EXPECT_EQ(read_with(ctl_read_names_of_household, household_file).said, "");
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file),
              (outcome_t{CTL_DONE, "310 music",
                         "utm_appctl: /tmp/household.json: warning: free: checked, and ignored "
                         "until a gateway reads it\n"}));
}

TEST_F(ClientHouseholdFile, IsReadWithNoNamesFileOnlyWhenNoneWasNamed) {
    ASSERT_TRUE(sim_write_file(household_file, mia));
    EXPECT_EQ(read_with(ctl_read_whole_household, household_file, "/tmp/no_names"),
              (outcome_t{CTL_USAGE, "",
                         "utm_appctl: cannot read the applications' names from /tmp/no_names: No "
                         "such file or directory\n"}));
}

TEST_F(ClientHouseholdFile, MayBeStandardInput) {
    int ends[2] = {};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(write(ends[1], mia, sizeof(mia) - 1), static_cast<ssize_t>(sizeof(mia) - 1));
    close(ends[1]);
    const int kept = dup(STDIN_FILENO);
    ASSERT_GE(dup2(ends[0], STDIN_FILENO), 0);
    EXPECT_EQ(read_with(ctl_read_whole_household, "-"),
              (outcome_t{CTL_DONE, "1 Mia, -2 Jörg, 305 video, 310 music", ""}));
    EXPECT_EQ(read_with(ctl_read_whole_household, "-"),
              (outcome_t{CTL_USAGE, "", "utm_appctl: standard input: it is empty\n"}));
    dup2(kept, STDIN_FILENO);
    close(kept);
    close(ends[0]);
}

TEST_F(ClientHouseholdFile, GivesAPersonANameOrANumber) {
    ASSERT_TRUE(sim_write_file(household_file, mia));
    household_t household = {};
    ASSERT_EQ(ctl_read_whole_household(household_file, apps_file, &household), CTL_DONE);
    EXPECT_STREQ(ctl_person_name(household, -2).text, "Jörg");
    EXPECT_STREQ(ctl_person_name(household, 2).text, "2");
    EXPECT_STREQ(ctl_person_name(household, INT32_MIN).text, "-2147483648");
}

TEST_F(ClientHouseholdFile, TellsWhoIsMeant) {
    ASSERT_TRUE(sim_write_file(household_file, mia));
    household_t household = {};
    ASSERT_EQ(ctl_read_whole_household(household_file, apps_file, &household), CTL_DONE);
    const auto who = [&household](const char *text) {
        int32_t number = 0;
        testing::internal::CaptureStderr();
        const bool is_read = ctl_read_person(household, text, &number);
        const std::string said = testing::internal::GetCapturedStderr();
        return is_read ? std::to_string(number) + said : said;
    };
    EXPECT_EQ(who("mia"), "1");
    EXPECT_EQ(who("JÖRG"), "-2");
    EXPECT_EQ(who("1"), "1");
    EXPECT_EQ(who("44"), "44");
    EXPECT_EQ(who("mja"), "utm_appctl: \"mja\" is nobody's name\nDid you mean \"Mia\"?\n");
    EXPECT_EQ(who("ben"), "utm_appctl: \"ben\" is nobody's name\n"
                          "Give a whole number, or a name in the household\n");
}

} // namespace
