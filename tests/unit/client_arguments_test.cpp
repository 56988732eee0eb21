/// What stands for what on a command line. The transcripts of tests/cram/client show how wrong
/// words are answered and what is sent.

#include "client/arguments.h"

#include "client/verbs.h"

#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

/// Runs a reader and returns what it says: nothing when it accepts the text.
template <typename Read>
std::string said_by(Read read) {
    testing::internal::CaptureStderr();
    const bool accepted = read();
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(accepted, said.empty()) << said;
    return said;
}

/// @return what becomes of the operands of the verb that has such an example, by its status and
/// what
///         it says; the request's numbers when it says nothing
std::string read_operands(const std::string &words) {
    for (const ctl_verb &verb : ctl_verbs()) {
        const std::string name = std::string(ctl_name_of(verb).text) + " ";
        if (!words.starts_with(name))
            continue;
        std::vector<std::string> operands;
        std::istringstream rest(words.substr(name.size()));
        for (std::string operand; rest >> operand;)
            operands.push_back(operand);
        std::vector<const char *> pointers;
        for (const std::string &operand : operands)
            pointers.push_back(operand.c_str());
        household_t household = {};
        EXPECT_TRUE(household.people.add({.number = 7,
                                          .name = {"Mia"},
                                          .weekday_limits = {},
                                          .enforced = true,
                                          .devices = {},
                                          .rules = {}}));
        utm_app_config_cmd request = {};
        testing::internal::CaptureStderr();
        const ctl_exit status = ctl_read_operands(verb, pointers, household, &request);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_EQ(status == CTL_DONE, said.empty());
        if (status != CTL_DONE)
            return std::to_string(status) + " " + said;
        return std::to_string(request.arg0) + " " + std::to_string(request.arg1) + " " +
               std::to_string(request.arg3) + " " + std::to_string(request.arg4);
    }
    return "no such verb";
}

/// @return the path, or what was said
std::string read_path(const std::string &text) {
    ctl_path path;
    memset(&path, '!', sizeof(path));
    const std::string said = said_by([&] { return ctl_read_path(text.c_str(), &path); });
    return said.empty() ? path.text : said;
}

std::string read_signature(const std::string &text) {
    ctl_path path = {};
    return said_by([&] { return ctl_read_signature_path(text.c_str(), &path); });
}

/// @return a rule as "app action limit", or what was said
std::string read_rule(const std::string &text) {
    ctl_app_names names;
    EXPECT_TRUE(names.add({305, "video"}) && names.add({306, "a=b"}));
    utm_app_config_app_entry rule = {};
    const std::string said = said_by([&] { return ctl_read_rule(names, text.c_str(), &rule); });
    if (!said.empty())
        return said;
    return std::to_string(rule.app_id) + " " + std::to_string(rule.action) + " " +
           std::to_string(rule.limit);
}

TEST(ClientArguments, GoWhereTheSynopsisSays) {
    const std::pair<const char *, const char *> cases[] = {
        {"limit set MIA 1H30", "7 0 90 0"},
        {"limit set 3 none", "3 0 1440 0"},
        {"extend add -3 6h", "-3 0 0 360"},
        {"weekday set 3 weekend 2:30", "3 0 150 0"},
        {"weekday set 3 SAT,fri 2h", "3 5 120 0"},
        {"interval set 2147483647", "2147483647 0 0 0"},
        {"activate YES", "1 0 0 0"},
        {"activate Off", "0 0 0 0"},
        {"policy bind 3 1", "3 1 0 0"}};
    for (const auto &[words, numbers] : cases)
        EXPECT_EQ(read_operands(words), numbers) << words;
}

TEST(ClientArguments, OutOfTheirRangeAreRefusedInTheDaemonsPlace) {
    const std::pair<const char *, const char *> cases[] = {
        {"limit set 3 24h1m", "1 utm_appctl: \"24h1m\" is not between 1m and 24h\n"
                              "For example: utm_appctl limit set mia 1h30m\n"},
        {"weekday set 3 sat 0", "1 utm_appctl: \"0\" is not between 1m and 24h\n"
                                "For example: utm_appctl weekday set mia sat,sun 3h\n"},
        {"extend add 3 361", "1 utm_appctl: \"361\" is not between 1m and 6h\n"
                             "For example: utm_appctl extend add mia 30m\n"},
        {"interval set 0", "1 utm_appctl: \"0\" is less than 1m\n"
                           "For example: utm_appctl interval set 30m\n"},
        {"policy create 0", "1 utm_appctl: \"0\" is not a policy's number\n"
                            "Give a whole number, 1 or more\n"},
        {"policy bind 3 -1", "1 utm_appctl: \"-1\" is not a policy's number\n"
                             "Give a whole number, 1 or more\n"}};
    for (const auto &[words, said] : cases)
        EXPECT_EQ(read_operands(words), said);
}

TEST(ClientArguments, ThatAreNoneOfTheirKindAreWrongUsage) {
    const std::pair<const char *, const char *> cases[] = {
        {"limit set 3 soon", "2 utm_appctl: \"soon\" is not a time\n"
                             "Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h\n"},
        {"extend add 3 none", "2 utm_appctl: \"none\" is not a time\n"
                              "Give minutes, such as 90, 90m, 1h30m, 1:30 or 1.5h\n"},
        {"extend show mai", "2 utm_appctl: \"mai\" is nobody's name\n"
                            "Did you mean \"Mia\"?\n"},
        {"extend show 2147483648", "2 utm_appctl: \"2147483648\" is nobody's name\n"
                                   "Give a whole number, or a name in the household\n"},
        {"weekday set 3 teusday 1h", "2 utm_appctl: \"teusday\" is not a weekday\n"
                                     "Did you mean \"tuesday\"?\n"},
        {"weekday set 3 someday 1h", "2 utm_appctl: \"someday\" is not a weekday\n"
                                     "Give names, such as mon or sat,sun, or 0 (Sunday) to 6, "
                                     "weekdays, weekend or all\n"},
        {"activate maybe", "2 utm_appctl: \"maybe\" is neither on nor off\n"
                           "Give on or off; yes and no will do, too\n"},
        {"policy create x", "2 utm_appctl: \"x\" is not a policy's number\n"
                            "Give a whole number, such as 3\n"}};
    for (const auto &[words, said] : cases)
        EXPECT_EQ(read_operands(words), said);
}

TEST(ClientArguments, TakeTheAddressOfOneDeviceAlone) {
    const auto read = [](const char *text) {
        uint8_t mac[mac_bytes] = {};
        return said_by([&] { return ctl_read_device_mac(text, mac); });
    };
    EXPECT_EQ(read("02-00-00-00-00-1A"), "");
    EXPECT_EQ(read("000000000000"), "utm_appctl: 000000000000 is the address of no device\n"
                                    "Give the device's own, which its network settings show\n");
    for (const std::string text : {"ff:ff:ff:ff:ff:ff", "01:00:5e:00:00:fb", "333300000001"})
        EXPECT_EQ(read(text.c_str()),
                  "utm_appctl: " + text +
                      " is the address of many devices at once\n"
                      "Give the device's own, which its network settings show\n");
}

TEST(ClientArguments, TakeARuleForAnApplication) {
    const std::pair<const char *, const char *> cases[] = {
        {"305=remove", "305 0 0"},       {"305=0", "305 1 0"},     {"305=1h30m", "305 1 90"},
        {"305=1092h15m", "305 1 65535"}, {"Video=5m", "305 1 5"},  {"a=b=block", "306 2 0"},
        {"-1=block", "4294967295 2 0"},  {"305=ALLOW", "305 0 0"}, {"305=Blocked", "305 2 0"},
        {"305=free", "305 0 0"},         {"305=1:30", "305 1 90"}};
    for (const auto &[text, rule] : cases)
        EXPECT_EQ(read_rule(text), rule) << text;
    for (const std::string text : {"=", "305=1092h16m", "305:block", "305=block ", "video=none"})
        EXPECT_EQ(read_rule(text), "utm_appctl: \"" + text +
                                       "\" is not a rule\nGive APP=MINUTES (at most 65535), "
                                       "APP=block or APP=allow\n");
    for (const std::string app : {"music", "2147483648", "305 "})
        EXPECT_EQ(read_rule(app + "=block"),
                  "utm_appctl: \"" + app +
                      "\" is no application\n"
                      "Give its number, or name it in the household or in a file for --names\n");
    EXPECT_EQ(read_rule("vidoe=block"), "utm_appctl: \"vidoe\" is no application\n"
                                        "Did you mean \"video\"?\n");
}

TEST(ClientArguments, DoubleNoSlashForAPathInTheRoot) {
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(read_path("a"), "/a");
}

TEST(ClientArguments, LeaveNoPathOfAFolderThatIsGone) {
    mkdir("/tmp/gone", 0755);
    ASSERT_EQ(chdir("/tmp/gone"), 0);
    EXPECT_EQ(read_path("a b\tc"), "/tmp/gone/a b\tc");
    ASSERT_EQ(rmdir("/tmp/gone"), 0);
    EXPECT_EQ(read_path("a"), "utm_appctl: cannot find the current directory (No such file or "
                              "directory)\nGive an absolute path\n");
    EXPECT_EQ(read_path("/a"), "/a");
    ASSERT_EQ(chdir("/"), 0);
}

TEST(ClientArguments, LetNoShellReadASignaturesPath) {
    EXPECT_EQ(read_signature("/tmp/aZ09._-+,=@%:"), "");
    for (const char bad : std::string(" ;&|$`'\"\\<>()[]{}*?!~#^\n\t\x01\x7f\xc3"))
        EXPECT_EQ(read_signature(std::string("/tmp/a") + bad),
                  std::string("utm_appctl: a shell would read the path /tmp/a") + bad +
                      "\nIt may have only letters, digits and /._-+,=@%: in it; rename the file\n");
}

TEST(ClientArguments, AreAsManyAsASynopsisHas) {
    const struct {
        const char *synopsis;
        size_t least;
        size_t most;
    } cases[] = {{"", 0, 0},       {"on|off", 1, 1},    {"ID DAY MINUTES", 3, 3},
                 {"[PATH]", 0, 1}, {"ID [PATH]", 1, 2}, {"POLICY APP=RULE...", 2, SIZE_MAX}};
    for (const auto &c : cases) {
        const ctl_bounds bounds = ctl_bounds_of(c.synopsis);
        EXPECT_EQ(bounds.least, c.least) << c.synopsis;
        EXPECT_EQ(bounds.most, c.most) << c.synopsis;
    }
}

} // namespace
