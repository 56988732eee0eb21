/// How a command line is taken apart. What is wrong with one is in the transcripts.

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
        ctl_said().clear(); // another test's document would repeat it
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
    const parsed line({"usage", "-j", "-", "--", "-3", "--json", "--", "-t"});
    EXPECT_EQ(line.status, CTL_DONE);
    EXPECT_EQ(line.operands, (word_list{"usage", "-", "-3", "--json", "--", "-t"}));
    EXPECT_EQ(line.options.given, CTL_OPTION_JSON);
    EXPECT_EQ(line.socket_path, UTM_APP_CONFIG_SOCKET_PATH) << "not given";
    EXPECT_EQ(line.options.daemon.timeout_s, 30) << "not given";
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
    const parsed line({"usage", "3", "-jahV", "-n", "/tmp/names", "--day", "30", "--week", "2"});
    EXPECT_EQ(line.status, CTL_DONE);
    EXPECT_EQ(line.options.given, CTL_OPTION_JSON | CTL_OPTION_ASCII | CTL_OPTION_HELP |
                                      CTL_OPTION_VERSION | CTL_OPTION_NAMES | CTL_OPTION_DAY |
                                      CTL_OPTION_WEEK);
    EXPECT_STREQ(line.options.names_path, "/tmp/names");
    EXPECT_EQ(line.options.day, 30);
    EXPECT_EQ(line.options.week, 2);
}

TEST(ClientOptions, HaveAUnitOfHistory) {
    const struct {
        word_list words; ///< but "usage 3"
        const char *unit;
        word_list operands;
    } cases[] = {
        {{"--history=weeks"}, "weeks", {}},           {{"--hist", "weeks"}, "weeks", {}},
        {{"--history", "--weeks"}, "weeks", {}},      {{"--weeks", "--history"}, "weeks", {}},
        {{"--history=days", "--weeks"}, "weeks", {}}, {{"--history", "--days"}, "days", {}},
        {{"--history", "month"}, nullptr, {"month"}}, {{"--history", ""}, nullptr, {""}},
        {{"weeks", "--history"}, nullptr, {"weeks"}},
    };
    for (const auto &c : cases) {
        word_list words = {"usage", "3"};
        word_list operands = words;
        words.insert(words.end(), c.words.begin(), c.words.end());
        operands.insert(operands.end(), c.operands.begin(), c.operands.end());
        const parsed line(words);
        EXPECT_STREQ(line.options.history_unit, c.unit) << c.words[0];
        EXPECT_EQ(line.operands, operands);
    }
}

TEST(ClientOptions, ThatCouldBeOneOrAnotherAreUnknown) {
    const parsed line({"usage", "--a"}); // --ascii or --apps
    EXPECT_EQ(line.status, CTL_USAGE);
    EXPECT_EQ(line.said, "utm_appctl: \"--a\" is no option\nSee utm_appctl --help\n");
}

TEST(ClientOptions, HaveNames) {
    EXPECT_STREQ(ctl_option_name(CTL_OPTION_JSON), "json");
    EXPECT_STREQ(ctl_option_name(CTL_OPTION_SOCKET | CTL_OPTION_HISTORY), "history");
    EXPECT_STREQ(ctl_option_name(0), "");
}

} // namespace
