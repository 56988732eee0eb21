/// The client without a daemon: help, and command lines that make no sense.

#include "client/arguments.h"
#include "client/options.h"
#include "client/verbs.h"
#include "tests/daemon/support/appctl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using word_list = std::vector<std::string>;

/// Options of the table with a value that each of them takes.
const std::pair<unsigned, word_list> OPTIONS[] = {{CTL_OPTION_JSON, {"--json"}},
                                                  {CTL_OPTION_JSON, {"-j"}},
                                                  {CTL_OPTION_ASCII, {"--ascii"}},
                                                  {CTL_OPTION_ASCII, {"-a"}},
                                                  {CTL_OPTION_NAMES, {"--names", "/dev/null"}},
                                                  {CTL_OPTION_NAMES, {"-n/dev/null"}},
                                                  {CTL_OPTION_APPS, {"--apps"}},
                                                  {CTL_OPTION_DAY, {"--day", "1"}},
                                                  {CTL_OPTION_WEEK, {"--week=1"}},
                                                  {CTL_OPTION_MONTH, {"--month"}},
                                                  {CTL_OPTION_HISTORY, {"--history"}},
                                                  {CTL_OPTION_HISTORY, {"--history=weeks"}},
                                                  {CTL_OPTION_DAYS, {"--days"}},
                                                  {CTL_OPTION_WEEKS, {"--weeks"}}};

constexpr char NOBODY[] = "/tmp/nobody-listens-here";

word_list words_of(const ctl_verb &verb) {
    word_list words = {verb.noun};
    if (verb.word != nullptr)
        words.push_back(verb.word);
    return words;
}

std::string name_of(const ctl_verb &verb) {
    return std::string(verb.noun) + (verb.word != nullptr ? std::string(" ") + verb.word : "");
}

word_list with_operands(word_list words, size_t count) {
    for (size_t i = 0; i < count; ++i)
        words.push_back(std::to_string(i + 1));
    return words;
}

/// What stands behind "Usage: " on a verb's own help.
std::string usage_line(const ctl_verb &verb) {
    return "Usage: utm_appctl " + name_of(verb) +
           (verb.synopsis[0] != '\0' ? std::string(" ") + verb.synopsis : "") +
           (verb.options != 0 ? " [OPTIONS]\n" : "\n");
}

/// @return a message and the verb's own help on standard error, and nothing else
program_end wrong(const ctl_verb &verb, const std::string &message) {
    word_list words = words_of(verb);
    words.push_back("--help");
    return {.status = 2, .err = "utm_appctl: " + message + "\n" + appctl(words).out};
}

constexpr char COMMON_OPTIONS[] =
    R"(  -s, --socket PATH              the daemon's socket, if not the default
  -t, --timeout SECONDS          how long to wait for an answer; default 30
  -h, --help                     show help
  -V, --version                  the version
)";

constexpr char WHOLE_HELP[] = R"(Usage: utm_appctl COMMAND [OPERANDS] [OPTIONS]
Controls the daemon that tracks and limits a family's internet time.

The daemon
  ping                            ask whether the daemon answers
  status                          show whether limits are enforced
  activate on|off                 enforce limits, or let everything pass
  debug on|off                    have the daemon log what it does

People
  profile add ID                  create a profile without limits
  profile del ID                  delete a profile and release its devices
  device add ID MAC...            add devices to a profile
  device del ID MAC...            remove devices from a profile, release them

Time limits
  limit show ID                   show today's limit and whether it is enabled
  limit set ID MINUTES            set the limit of today and of every weekday
  limit enable ID                 cut the profile off when its limit is reached
  limit disable ID                only count usage; do not enforce the limit
  weekday show ID                 show the limit of each weekday
  weekday set ID DAY MINUTES      set the limit of one weekday
  extend show ID                  show today's bonus
  extend add ID MINUTES           add to today's bonus
  extend reset ID                 cancel today's bonus

Usage
  usage ID                        show usage: totals, applications or a chart
  report [PATH]                   write an HTML page, of now or of a usage file

Applications
  policy create POLICY            create a policy without rules
  policy rule POLICY APP=RULE...  limit, block or free applications
  policy bind ID POLICY           give a profile a policy, permanently
  policy clear POLICY             remove all rules of a policy
  signature load PATH             load signatures into the DPI engine

The usage file
  interval show                   show how often it is written
  interval set MINUTES            set how often it is written
  export PATH                     have the daemon write a usage file
  import PATH                     have the daemon read a usage file

Options (COMMAND --help lists those of a command)
  -j, --json                     print one JSON document
  -a, --ascii                    draw charts in plain ASCII
  -n, --names FILE               application names: lines such as "305 video"
      --apps                     applications today, or a chart for each
      --day N                    applications on the day N days ago, 0 to 30
      --week N                   applications in the week N weeks ago, 0 to 3
      --month                    applications in this month
      --history                  a chart, of days unless --weeks is given
      --days                     with --history: today and 30 days before
      --weeks                    with --history: this week and 3 before
  -s, --socket PATH              the daemon's socket, if not the default
  -t, --timeout SECONDS          how long to wait for an answer; default 30
  -h, --help                     show help
  -V, --version                  the version

ID, POLICY  whole numbers of your choice
MINUTES     90, 90m or 1h30m
DAY         monday, mon or 1; the week begins with sunday, 0
MAC         02:00:00:00:00:1a, with or without separators
APP=RULE    video=45m to limit, video=block, video=remove; applications go by
            number, or by name after --names or in /etc/utm_appd/apps

Exit status: 0 done, 1 the daemon refused, 2 wrong usage, 3 no daemon,
4 timeout, a broken reply, or output that could not be written.
)";

} // namespace

TEST(ClientWrongUse, TheVersionIsTheProjects) {
    const program_end version = done("utm_appctl " UTM_APPCTL_VERSION "\n");
    EXPECT_EQ(appctl({"--version"}), version);
    EXPECT_EQ(appctl({"-V"}), version);
    EXPECT_EQ(appctl({"limit", "set", "--version"}), version);
}

TEST(ClientWrongUse, HelpOfEverythingNamesEveryVerbAndOption) {
    EXPECT_EQ(appctl({"--help"}), done(WHOLE_HELP));
    EXPECT_EQ(appctl({"-h"}), done(WHOLE_HELP));
    EXPECT_EQ(appctl({"-s", NOBODY, "-h"}), done(WHOLE_HELP));
    for (const ctl_verb &verb : ctl_verbs())
        EXPECT_THAT(WHOLE_HELP, HasSubstr("\n  " + name_of(verb) + " " + verb.synopsis))
            << name_of(verb);
}

TEST(ClientWrongUse, HelpFitsInto80Columns) {
    std::string texts = appctl({"--help"}).out;
    for (const ctl_verb &verb : ctl_verbs())
        texts += wrong(verb, "").err;
    for (const std::string &line : sim_split_lines(texts))
        EXPECT_LE(line.size(), 80u) << line;
}

TEST(ClientWrongUse, HelpOfANounNamesItsVerbs) {
    EXPECT_EQ(appctl({"limit", "--help"}), done(R"(Usage: utm_appctl limit ...

  limit show ID                   show today's limit and whether it is enabled
  limit set ID MINUTES            set the limit of today and of every weekday
  limit enable ID                 cut the profile off when its limit is reached
  limit disable ID                only count usage; do not enforce the limit
)"));
}

TEST(ClientWrongUse, HelpOfAVerbNamesItsOptions) {
    EXPECT_EQ(appctl({"--help", "limit", "show", "whatever"}),
              done(std::string(R"(Usage: utm_appctl limit show ID [OPTIONS]

  show today's limit and whether it is enabled

Options:
  -j, --json                     print one JSON document
)") + COMMON_OPTIONS));
}

TEST(ClientWrongUse, HelpOfAVerbWithoutOperandsEndsWithItsName) {
    EXPECT_EQ(appctl({"ping", "-h"}), done(std::string(R"(Usage: utm_appctl ping

  ask whether the daemon answers

Options:
)") + COMMON_OPTIONS));
}

TEST(ClientWrongUse, EveryVerbHasHelpWithoutADaemon) {
    for (const ctl_verb &verb : ctl_verbs()) {
        word_list words = words_of(verb);
        words.insert(words.end(), {"--help", "-s", NOBODY});
        const program_end help = appctl(words);
        EXPECT_EQ(help, done(help.out));
        EXPECT_THAT(help.out, AllOf(StartsWith(usage_line(verb)), HasSubstr(verb.help),
                                    HasSubstr(COMMON_OPTIONS)));
    }
}

TEST(ClientWrongUse, EveryVerbCountsItsOperands) {
    for (const ctl_verb &verb : ctl_verbs()) {
        const ctl_bounds bounds = ctl_bounds_of(verb.synopsis);
        if (bounds.least > 0) {
            EXPECT_EQ(appctl(with_operands(words_of(verb), bounds.least - 1)),
                      wrong(verb, "too few operands"));
        }
        if (bounds.most < SIZE_MAX) {
            EXPECT_EQ(appctl(with_operands(words_of(verb), bounds.most + 1)),
                      wrong(verb, "too many operands"));
        }
    }
}

TEST(ClientWrongUse, AnOptionGoesWithTheVerbsThatTakeIt) {
    for (const ctl_verb &verb : ctl_verbs())
        for (const auto &[option, option_words] : OPTIONS) {
            if ((verb.options & option) != 0)
                continue;
            word_list words = with_operands(words_of(verb), ctl_bounds_of(verb.synopsis).least);
            words.insert(words.end(), option_words.begin(), option_words.end());
            EXPECT_EQ(appctl(words), wrong(verb, "--" + std::string(ctl_option_name(option)) +
                                                     " cannot be used with this command"));
        }
}

TEST(ClientWrongUse, NoWordsAreNoRequest) {
    EXPECT_EQ(appctl({}), (program_end{.status = 2, .err = appctl({"--help"}).out}));
    EXPECT_EQ(appctl({"-t", "3"}), appctl({}));
}

TEST(ClientWrongUse, AnUnknownVerbLeadsToHelp) {
    EXPECT_EQ(appctl({"pong"}), fails(2, "\"pong\": unknown command; see utm_appctl --help"));
    EXPECT_EQ(appctl({"pong", "--help"}), appctl({"pong"}));
    EXPECT_EQ(appctl({""}), fails(2, "\"\": unknown command; see utm_appctl --help"));
}

TEST(ClientWrongUse, ANounNeedsOneOfItsWords) {
    const std::string help = appctl({"limit", "--help"}).out;
    const program_end none = {.status = 2,
                              .err = "utm_appctl: \"limit\" needs a second word\n" + help};
    const program_end unknown = {.status = 2,
                                 .err = "utm_appctl: \"limit raise\": unknown command\n" + help};
    EXPECT_EQ(appctl({"limit"}), none);
    EXPECT_EQ(appctl({"limit", "raise", "3"}), unknown);
    EXPECT_EQ(appctl({"limit", "raise", "--help"}), unknown);
}

TEST(ClientWrongUse, HelpMayBeAskedForAsAWord) {
    EXPECT_EQ(appctl({"help"}), appctl({"--help"}));
    EXPECT_EQ(appctl({"help", "limit"}), appctl({"limit", "--help"}));
    EXPECT_EQ(appctl({"help", "limit", "set"}), appctl({"limit", "set", "--help"}));
    EXPECT_EQ(appctl({"help", "pong"}), appctl({"pong"}));
}

TEST(ClientWrongUse, AnUnknownOptionIsNamed) {
    for (const char *option : {"--jsonn", "-x", "-jx"})
        EXPECT_EQ(
            appctl({"status", option}),
            fails(2, "\"" + std::string(option) + "\": unknown option; see utm_appctl --help"));
    for (const char *lacking : {"-s", "--socket", "-t", "--timeout"})
        EXPECT_EQ(
            appctl({"status", lacking}),
            fails(2, "\"" + std::string(lacking) + "\" needs a value; see utm_appctl --help"));
    EXPECT_EQ(appctl({"status", "--json=yes"}),
              fails(2, "\"--json=yes\": this option takes no value"));
}

TEST(ClientWrongUse, ATimeoutIsASecondToAnHour) {
    for (const char *seconds : {"0", "-1", "3601", "1.5", "", "soon", "99999999999"})
        EXPECT_EQ(
            appctl({"ping", "-t", seconds}),
            fails(2, "\"" + std::string(seconds) +
                         "\" is not valid for --timeout: give a whole number from 1 to 3600"));
}

TEST(ClientWrongUse, OutputThatCannotBeWrittenIsNotDone) {
    const program_end full = fails(4, "the output could not be written (No space left on device)");
    for (const word_list &words :
         {word_list{"--help"}, word_list{"--version"}, word_list{"limit", "--help"}})
        EXPECT_EQ(appctl(words, {.out_path = "/dev/full"}), full);
}
