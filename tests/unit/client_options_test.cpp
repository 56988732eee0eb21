#include "client/options.h"

#include <getopt.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

/// A command line, and what became of it.
struct parsed {
    ctl_exit status = CTL_DONE;
    std::string said = {};
    ctl_options options = {};

    explicit parsed(std::vector<std::string> line) : words(std::move(line)) {
        words.insert(words.begin(), "utm_appctl");
        // The word before a scan that begins anew is looked at: it is there, and says nothing.
        std::vector<char *> argv = {words[0].data()};
        for (std::string &word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        optind = 0; // the library begins anew
        testing::internal::CaptureStderr();
        status = ctl_parse_options(static_cast<int>(words.size()), argv.data() + 1, &options);
        said = testing::internal::GetCapturedStderr();
        for (const char *operand : options.operands)
            operands.emplace_back(operand);
        socket_path = options.daemon.socket_path;
    }
    std::vector<std::string> operands = {};
    std::string socket_path = {};
    std::vector<std::string> words; ///< what the options point into
};

using word_list = std::vector<std::string>;

TEST(ClientOptions, StandAnywhere) {
    const word_list operands = {"usage", "3", "days"};
    for (const word_list &words :
         {word_list{"-j", "usage", "3", "days"}, word_list{"usage", "-j", "3", "days"},
          word_list{"usage", "3", "days", "--json"}}) {
        const parsed line(words);
        EXPECT_EQ(line.status, CTL_DONE);
        EXPECT_EQ(line.operands, operands);
        EXPECT_EQ(line.options.given, CTL_OPTION_JSON);
    }
}

TEST(ClientOptions, EndBehindTwoDashes) {
    const parsed line({"usage", "-j", "--", "-3", "--json", "--", "-t"});
    EXPECT_EQ(line.status, CTL_DONE);
    EXPECT_EQ(line.operands, (word_list{"usage", "-3", "--json", "--", "-t"}));
    EXPECT_EQ(line.options.given, CTL_OPTION_JSON);
}

TEST(ClientOptions, LeaveADashAlone) {
    const parsed line({"export", "-"});
    EXPECT_EQ(line.status, CTL_DONE);
    EXPECT_EQ(line.operands, (word_list{"export", "-"}));
}

TEST(ClientOptions, AreTheDaemonsOwnSocketAndHalfAMinuteWhenTheyAreNotGiven) {
    const parsed line({"ping"});
    EXPECT_EQ(line.socket_path, UTM_APP_CONFIG_SOCKET_PATH);
    EXPECT_EQ(line.options.daemon.timeout_s, 30);
    EXPECT_EQ(line.options.given, 0u);
}

TEST(ClientOptions, TakeTheirValuesFromTheSameWordOrTheNext) {
    for (const word_list &words :
         {word_list{"ping", "-s", "/tmp/s", "-t", "5"}, word_list{"ping", "-s/tmp/s", "-t5"},
          word_list{"ping", "--socket", "/tmp/s", "--timeout", "5"},
          word_list{"ping", "--socket=/tmp/s", "--timeout=5"}}) {
        const parsed line(words);
        EXPECT_EQ(line.status, CTL_DONE) << line.said;
        EXPECT_EQ(line.socket_path, "/tmp/s");
        EXPECT_EQ(line.options.daemon.timeout_s, 5);
        EXPECT_EQ(line.operands, word_list{"ping"});
    }
}

TEST(ClientOptions, TakeTheLastOfSeveral) {
    const parsed line({"ping", "-t", "5", "-t", "7", "-s", "/a", "-s", "/b"});
    EXPECT_EQ(line.options.daemon.timeout_s, 7);
    EXPECT_EQ(line.socket_path, "/b");
}

TEST(ClientOptions, MayBeShort) {
    const parsed line({"usage", "3", "-jahV", "-n", "/tmp/names"});
    EXPECT_EQ(line.status, CTL_DONE);
    EXPECT_EQ(line.options.given, CTL_OPTION_JSON | CTL_OPTION_ASCII | CTL_OPTION_HELP |
                                      CTL_OPTION_VERSION | CTL_OPTION_NAMES);
    EXPECT_STREQ(line.options.names_path, "/tmp/names");
}

TEST(ClientOptions, HaveAUnitOfHistoryRightBehindTheOption) {
    for (const word_list &words :
         {word_list{"usage", "3", "--history=weeks"}, word_list{"usage", "3", "--history", "weeks"},
          word_list{"--history", "weeks", "usage", "3"},
          word_list{"usage", "3", "--hist", "weeks"}}) {
        const parsed line(words);
        ASSERT_NE(line.options.history_unit, nullptr);
        EXPECT_EQ(std::string(line.options.history_unit), "weeks");
        EXPECT_EQ(line.operands, (word_list{"usage", "3"}));
    }
}

TEST(ClientOptions, LeaveOtherWordsBehindHistoryAlone) {
    for (const char *word : {"3", "month", "day", ""}) {
        const parsed line({"usage", "--history", word});
        EXPECT_EQ(line.options.history_unit, nullptr) << word;
        EXPECT_EQ(line.operands, (word_list{"usage", word}));
    }
    EXPECT_EQ(parsed({"days", "weeks"}).operands, (word_list{"days", "weeks"}));
}

TEST(ClientOptions, OfAUnitOfHistoryStandAnywhere) {
    for (const word_list &words : {word_list{"usage", "3", "--history", "--weeks"},
                                   word_list{"--weeks", "usage", "--history", "3"},
                                   word_list{"usage", "3", "--history=days", "--weeks"}}) {
        const parsed line(words);
        EXPECT_STREQ(line.options.history_unit, "weeks");
        EXPECT_EQ(line.operands, (word_list{"usage", "3"}));
        EXPECT_EQ(line.options.given, CTL_OPTION_HISTORY | CTL_OPTION_WEEKS);
        EXPECT_TRUE(ctl_options_agree(line.options));
    }
    EXPECT_STREQ(parsed({"usage", "3", "--history", "--days"}).options.history_unit, "days");
}

TEST(ClientOptions, ThatContradictEachOtherAreNamed) {
    const struct {
        word_list words;
        const char *complaint;
    } cases[] = {
        {{"--day=1", "--week=1"}, "--day, --week and --month cannot be combined: give one of them"},
        {{"--history", "--month"}, "--month and --history cannot be combined: give one of them"},
        {{"--history", "--days", "--weeks"},
         "--days and --weeks cannot be combined: give one of them"},
        {{"--weeks"}, "--weeks needs --history"},
        {{"--days", "--apps"}, "--days needs --history"},
    };
    for (const auto &c : cases) {
        const parsed line(c.words);
        ASSERT_EQ(line.status, CTL_DONE) << line.said;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(ctl_options_agree(line.options));
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "utm_appctl: " + std::string(c.complaint) + "\n");
    }
    for (const word_list &words :
         {word_list{}, word_list{"--day=1"}, word_list{"--apps", "--history"},
          word_list{"--history=weeks", "-j"}, word_list{"-s", "/s", "-t", "5"}})
        EXPECT_TRUE(ctl_options_agree(parsed(words).options));
}

struct bounded_case {
    const char *option;
    const char *least;
    const char *most;
    const char *below;
    const char *above;
};

TEST(ClientOptions, WithNumbersHaveBounds) {
    const bounded_case cases[] = {{"timeout", "1", "3600", "0", "3601"},
                                  {"day", "0", "30", "-1", "31"},
                                  {"week", "0", "3", "-1", "4"}};
    for (const bounded_case &c : cases) {
        const std::string option = std::string("--") + c.option + "=";
        for (const char *good : {c.least, c.most})
            EXPECT_EQ(parsed({"usage", option + good}).status, CTL_DONE) << option << good;
        for (const char *bad : {c.below, c.above, "", "x", "1x", "4294967297"}) {
            const parsed line({"usage", option + bad});
            EXPECT_EQ(line.status, CTL_USAGE);
            EXPECT_EQ(line.said, "utm_appctl: \"" + std::string(bad) + "\" is not valid for --" +
                                     c.option + ": give a whole number from " + c.least + " to " +
                                     c.most + "\n");
        }
    }
}

TEST(ClientOptions, KeepTheirNumbers) {
    const parsed line({"usage", "3", "--day", "30", "--week", "2"});
    EXPECT_EQ(line.options.day, 30);
    EXPECT_EQ(line.options.week, 2);
    EXPECT_EQ(line.options.given, CTL_OPTION_DAY | CTL_OPTION_WEEK);
}

TEST(ClientOptions, ThatDoNotExistAreNamed) {
    const std::pair<const char *, const char *> cases[] = {
        {"-x", "\": unknown option; see utm_appctl --help"},
        {"--nonsense", "\": unknown option; see utm_appctl --help"},
        {"-jx", "\": unknown option; see utm_appctl --help"},
        {"--a", "\": unknown option; see utm_appctl --help"}, // --ascii or --apps
        {"--json=1", "\": this option takes no value"},
        {"-s", "\" needs a value; see utm_appctl --help"},
        {"--timeout", "\" needs a value; see utm_appctl --help"}};
    for (const auto &given : cases) {
        const parsed line({"usage", given.first});
        EXPECT_EQ(line.status, CTL_USAGE) << given.first;
        EXPECT_EQ(line.said, "utm_appctl: \"" + std::string(given.first) + given.second + "\n");
    }
    const parsed negative({"profile", "add", "-3"});
    EXPECT_EQ(negative.status, CTL_USAGE);
    EXPECT_EQ(negative.said,
              "utm_appctl: \"-3\": unknown option; put -- in front of a negative number\n");
}

TEST(ClientOptions, HaveNames) {
    EXPECT_STREQ(ctl_option_name(CTL_OPTION_JSON), "json");
    EXPECT_STREQ(ctl_option_name(CTL_OPTION_SOCKET | CTL_OPTION_HISTORY), "history");
    EXPECT_STREQ(ctl_option_name(0), "");
}

} // namespace
