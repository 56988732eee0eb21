#include "client/arguments.h"

#include "client/verbs.h"
#include "core/mac.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
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

std::string read_mac(const char *text, std::string *mac) {
    uint8_t bytes[mac_bytes] = {};
    const std::string said = said_by([&] { return ctl_read_mac(text, bytes); });
    *mac = std::string(reinterpret_cast<const char *>(bytes), sizeof(bytes));
    return said;
}

std::string read_path(const std::string &text, std::string *path) {
    ctl_path read;
    memset(&read, '!', sizeof(read));
    const std::string said = said_by([&] { return ctl_read_path(text.c_str(), &read); });
    *path = said.empty() ? read.text : "";
    return said;
}

std::string read_signature(const std::string &text) {
    ctl_path path = {};
    return said_by([&] { return ctl_read_signature_path(text.c_str(), &path); });
}

/// @return a rule as "app action limit", or what was said
std::string read_rule(const char *text) {
    ctl_app_names names;
    EXPECT_TRUE(names.add({305, "video"}) && names.add({306, "a=b"}));
    utm_app_config_app_entry rule = {};
    const std::string said = said_by([&] { return ctl_read_rule(names, text, &rule); });
    if (!said.empty())
        return said;
    return std::to_string(rule.app_id) + " " + std::to_string(rule.action) + " " +
           std::to_string(rule.limit);
}

using text_pairs = std::vector<std::pair<const char *, const char *>>;

TEST(ClientArguments, TakeAMacAddressAndNothingElseForOne) {
    std::string mac;
    EXPECT_EQ(read_mac("02-FE-80-7F-00-1A", &mac), "");
    EXPECT_EQ(mac, std::string("\x02\xfe\x80\x7f\x00\x1a", 6));
    EXPECT_EQ(read_mac("02:fe:80:7f:00", &mac),
              "utm_appctl: \"02:fe:80:7f:00\" is not a MAC address: give six bytes, such as "
              "02:00:00:00:00:1a\n");
}

TEST(ClientArguments, TakeAWeekdayByNameOrNumber) {
    const std::pair<const char *, int32_t> cases[] = {
        {"0", 0},         {"6", 6},   {"sun", 0},  {"SUNDAY", 0}, {"Mon", 1},   {"tues", 2},
        {"wednesday", 3}, {"thu", 4}, {"thur", 4}, {"fRi", 5},    {"satur", 6}, {"1", 1}};
    for (const auto &given : cases) {
        int32_t day = -1;
        EXPECT_EQ(said_by([&] { return ctl_read_weekday(given.first, &day); }), "");
        EXPECT_EQ(day, given.second) << given.first;
    }
}

TEST(ClientArguments, TakeNothingElseForAWeekday) {
    for (const char *text : {"", "7", "-1", "00", "01", "6.", "s", "su", "t", "th", "sundays",
                             "sun day", " sun", "sunn", "day", "\xc3\xa9"}) {
        int32_t day = -1;
        EXPECT_EQ(
            said_by([&] { return ctl_read_weekday(text, &day); }),
            "utm_appctl: \"" + std::string(text) +
                "\" is not a weekday: give a name, such as monday or mon, or 0 (Sunday) to 6\n");
        EXPECT_EQ(day, -1);
    }
}

TEST(ClientArguments, NameEveryWeekdayAndNoOther) {
    EXPECT_STREQ(ctl_weekday_name(0), "Sunday");
    EXPECT_STREQ(ctl_weekday_name(6), "Saturday");
    EXPECT_STREQ(ctl_weekday_name(7), "?");
    EXPECT_STREQ(ctl_weekday_name(-1), "?");
}

TEST(ClientArguments, TakeOnAndOff) {
    int32_t value = 7;
    EXPECT_EQ(said_by([&] { return ctl_read_switch("on", &value); }), "");
    EXPECT_EQ(value, 1);
    EXPECT_EQ(said_by([&] { return ctl_read_switch("off", &value); }), "");
    EXPECT_EQ(value, 0);
    for (const char *text : {"", "1", "0", "On", "yes", "on "})
        EXPECT_EQ(said_by([&] { return ctl_read_switch(text, &value); }),
                  "utm_appctl: \"" + std::string(text) + "\" is neither on nor off\n");
}

TEST(ClientArguments, TakeARuleForAnApplication) {
    const text_pairs cases = {{"305=block", "305 2 0"},
                              {"305=remove", "305 0 0"},
                              {"305=0", "305 1 0"},
                              {"305=45", "305 1 45"},
                              {"305=1h30m", "305 1 90"},
                              {"305=65535", "305 1 65535"},
                              {"305=1092h15m", "305 1 65535"},
                              {"Video=5m", "305 1 5"},
                              {"a=b=block", "306 2 0"},
                              {"2147483647=block", "2147483647 2 0"},
                              {"-1=block", "4294967295 2 0"}};
    for (const auto &[text, rule] : cases)
        EXPECT_EQ(read_rule(text), rule) << text;
}

TEST(ClientArguments, TakeNothingElseForARule) {
    for (const char *text : {"", "=", "305", "305=", "=block", "305=Block", "305=65536", "305=-1",
                             "305=1092h16m", "305:block", "305=block ", "video=allow"})
        EXPECT_EQ(read_rule(text), "utm_appctl: \"" + std::string(text) +
                                       "\" is not a rule: give APP=MINUTES (at most 65535), "
                                       "APP=block or APP=remove\n");
    for (const char *app : {"music", "2147483648", "305 ", "vid"})
        EXPECT_EQ(read_rule((std::string(app) + "=block").c_str()),
                  "utm_appctl: \"" + std::string(app) +
                      "\": unknown application; give its number, or name it in a file for "
                      "--names\n");
}

TEST(ClientArguments, MakeAPathAbsolute) {
    mkdir("/tmp/here", 0755);
    ASSERT_EQ(chdir("/tmp/here"), 0);
    const text_pairs cases = {{"/tmp/a", "/tmp/a"},     {"a", "/tmp/here/a"},
                              {"./a", "/tmp/here/./a"}, {"../a", "/tmp/here/../a"},
                              {"-", "/tmp/here/-"},     {"a b\tc", "/tmp/here/a b\tc"}};
    for (const auto &[text, expected] : cases) {
        std::string path;
        EXPECT_EQ(read_path(text, &path), "");
        EXPECT_EQ(path, expected);
    }
    ASSERT_EQ(chdir("/"), 0);
}

TEST(ClientArguments, CutNoPath) {
    ASSERT_EQ(chdir("/tmp"), 0);
    const std::string longest = "/" + std::string(126, 'a');
    const std::string longest_here(122, 'a');
    std::string path;
    EXPECT_EQ(read_path(longest, &path), "");
    EXPECT_EQ(path, longest);
    EXPECT_EQ(read_path(longest_here, &path), "");
    EXPECT_EQ(path, "/tmp/" + longest_here);
    const std::string complaint = " is too long: a path may have at most 127 characters\n";
    EXPECT_EQ(read_path(longest + "a", &path), "utm_appctl: " + longest + "a" + complaint);
    EXPECT_EQ(read_path(longest_here + "a", &path),
              "utm_appctl: /tmp/" + longest_here + "a" + complaint);
    EXPECT_EQ(read_path("", &path), "utm_appctl: the path is empty: name a file\n");
    ASSERT_EQ(chdir("/"), 0);
}

TEST(ClientArguments, LeaveNoPathOfAFolderThatIsGone) {
    mkdir("/tmp/gone", 0755);
    ASSERT_EQ(chdir("/tmp/gone"), 0);
    ASSERT_EQ(rmdir("/tmp/gone"), 0);
    std::string path;
    EXPECT_EQ(read_path("a", &path), "utm_appctl: cannot find the current directory (No such file "
                                     "or directory): give an absolute path\n");
    EXPECT_EQ(read_path("/a", &path), "");
    ASSERT_EQ(chdir("/"), 0);
}

TEST(ClientArguments, LetNoShellReadASignaturesPath) {
    EXPECT_EQ(read_signature("/tmp/aZ09._-+,=@%:"), "");
    for (const char bad : std::string(" ;&|$`'\"\\<>()[]{}*?!~#^\n\t\x01\x7f\xc3"))
        EXPECT_EQ(read_signature(std::string("/tmp/a") + bad),
                  std::string("utm_appctl: /tmp/a") + bad +
                      ": a shell reads this path, so only letters, digits and /._-+,=@%: are "
                      "allowed; rename the file\n");
}

TEST(ClientArguments, CutNoSignaturesPath) {
    const std::string longest = "/" + std::string(116, 'a');
    EXPECT_EQ(read_signature(longest), "");
    EXPECT_EQ(read_signature(longest + "a"),
              "utm_appctl: " + longest +
                  "a is too long: a signature's path may have at most 117 characters\n");
}

struct bounds_case {
    const char *synopsis;
    size_t least;
    size_t most;
};

TEST(ClientArguments, AreAsManyAsASynopsisHas) {
    const bounds_case cases[] = {{"", 0, 0},
                                 {"ID", 1, 1},
                                 {"on|off", 1, 1},
                                 {"ID DAY MINUTES", 3, 3},
                                 {"[PATH]", 0, 1},
                                 {"ID [PATH]", 1, 2},
                                 {"ID MAC...", 2, SIZE_MAX},
                                 {"POLICY APP=RULE...", 2, SIZE_MAX}};
    for (const bounds_case &c : cases) {
        const ctl_bounds bounds = ctl_bounds_of(c.synopsis);
        EXPECT_EQ(bounds.least, c.least) << c.synopsis;
        EXPECT_EQ(bounds.most, c.most) << c.synopsis;
    }
}

/// @return the request's arguments as "arg0 arg1 arg2 arg3 arg4 path", or what was said
std::string read_operands(const ctl_verb &verb, const std::vector<const char *> &operands) {
    utm_app_config_cmd request = {.type = verb.type};
    const std::string said = said_by([&] { return ctl_read_operands(verb, operands, &request); });
    if (!said.empty())
        return said;
    const char *path = reinterpret_cast<const char *>(&request) + UTM_APP_CONFIG_PATH_OFFSET;
    if (*path == '/')
        return path;
    std::string text = std::to_string(request.arg0);
    for (const int32_t number : {request.arg1, request.arg2, request.arg3, request.arg4})
        text += " " + std::to_string(number);
    return text;
}

TEST(ClientArguments, StandInARequestWhereTheVerbSays) {
    const struct {
        ctl_verb verb;
        std::vector<const char *> operands;
        const char *request;
    } cases[] = {
        {{.synopsis = ""}, {}, "0 0 0 0 0"},
        {{.synopsis = "ID"}, {"-3"}, "-3 0 0 0 0"},
        {{.synopsis = "POLICY"}, {"7"}, "7 0 0 0 0"},
        {{.synopsis = "ID POLICY"}, {"3", "7"}, "3 7 0 0 0"},
        {{.synopsis = "on|off"}, {"on"}, "1 0 0 0 0"},
        {{.synopsis = "MINUTES"}, {"1h"}, "60 0 0 0 0"},
        {{.synopsis = "ID DAY MINUTES", .minutes = &utm_app_config_cmd::arg3},
         {"3", "tue", "5"},
         "3 2 0 5 0"},
        {{.synopsis = "ID MINUTES", .minutes = &utm_app_config_cmd::arg4},
         {"3", "5m"},
         "3 0 0 0 5"},
        {{.synopsis = "PATH"}, {"/a"}, "/a"},
        {{.synopsis = "[PATH]"}, {"/a"}, "0 0 0 0 0"},
        {{.synopsis = "ID MAC..."}, {"3", "02", "zz"}, "3 0 0 0 0"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(read_operands(c.verb, c.operands), c.request) << c.verb.synopsis;
}

TEST(ClientArguments, AreReadUpToTheFirstBadOne) {
    EXPECT_EQ(read_operands({.synopsis = "ID POLICY"}, {"3", "x"}),
              "utm_appctl: \"x\" is not a policy's number: give a whole number, such as 3\n");
    EXPECT_EQ(read_operands({.synopsis = "ID MINUTES"}, {"x", "y"}),
              "utm_appctl: \"x\" is not a profile's number: give a whole number, such as 3\n");
    EXPECT_EQ(read_operands({.synopsis = "PATH"}, {"/a;b"}), "/a;b");
    EXPECT_EQ(read_operands({.synopsis = "PATH", .type = UTM_APP_CONFIG_LOAD_SIGNATURE}, {"/a;b"}),
              read_signature("/a;b"));
}

} // namespace
