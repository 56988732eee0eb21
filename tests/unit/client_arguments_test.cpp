/// What stands for what on a command line. The transcripts of tests/cram/client show how wrong
/// words are answered and what is sent.

#include "client/arguments.h"

#include "client/verbs.h"

#include <cstring>
#include <gtest/gtest.h>
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

/// @return a weekday's number, -1 where the text is none
int32_t read_weekday(const char *text) {
    int32_t day = -1;
    said_by([&] { return ctl_read_weekday(text, &day); });
    return day;
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

TEST(ClientArguments, TakeAWeekdayByNameOrNumber) {
    const std::pair<const char *, int32_t> cases[] = {
        {"0", 0},         {"6", 6},   {"sun", 0},  {"SUNDAY", 0}, {"Mon", 1},   {"tues", 2},
        {"wednesday", 3}, {"thu", 4}, {"thur", 4}, {"fRi", 5},    {"satur", 6}, {"1", 1}};
    for (const auto &[text, day] : cases)
        EXPECT_EQ(read_weekday(text), day) << text;
    for (const char *text : {"", "7", "-1", "00", "01", "6.", "s", "su", "t", "th", "sundays",
                             "sun day", " sun", "sunn", "day", "\xc3\xa9"})
        EXPECT_EQ(read_weekday(text), -1) << text;
}

TEST(ClientArguments, TakeARuleForAnApplication) {
    const std::pair<const char *, const char *> cases[] = {
        {"305=remove", "305 0 0"},       {"305=0", "305 1 0"},    {"305=1h30m", "305 1 90"},
        {"305=1092h15m", "305 1 65535"}, {"Video=5m", "305 1 5"}, {"a=b=block", "306 2 0"},
        {"-1=block", "4294967295 2 0"}};
    for (const auto &[text, rule] : cases)
        EXPECT_EQ(read_rule(text), rule) << text;
    for (const std::string text : {"=", "305=1092h16m", "305:block", "305=block ", "video=allow"})
        EXPECT_EQ(read_rule(text), "utm_appctl: \"" + text +
                                       "\" is not a rule: give APP=MINUTES (at most 65535), "
                                       "APP=block or APP=remove\n");
    for (const std::string app : {"music", "2147483648", "305 ", "vid"})
        EXPECT_EQ(read_rule(app + "=block"),
                  "utm_appctl: \"" + app +
                      "\": unknown application; give its number, or name it in a file for "
                      "--names\n");
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
                              "directory): give an absolute path\n");
    EXPECT_EQ(read_path("/a"), "/a");
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
