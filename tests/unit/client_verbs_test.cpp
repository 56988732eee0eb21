/// The manual page and the shells' completion have the verbs and options of the command line: all
/// of them, and no other.

#include "client/verbs.h"

#include "sim/harness/files.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace {

using words_t = std::vector<std::string>;

std::string manual() {
    return sim_read_file(UTM_SOURCE_DIR "/docs/utm_appctl.1");
}

/// @return a text with single blanks, and none around it
std::string with_single_blanks(const std::string &text) {
    const std::string single = std::regex_replace(text, std::regex(" +"), " ");
    const size_t first = single.find_first_not_of(' ');
    return first == std::string::npos
               ? ""
               : single.substr(first, single.find_last_not_of(' ') - first + 1);
}

/// @return a request of the manual's language as its reader sees it
std::string shown(const std::string &request) {
    const std::string text = request.substr(std::min(request.find(' '), request.size()));
    return with_single_blanks(std::regex_replace(text, std::regex(R"(["\\])"), ""));
}

/// @return the headings of a section of the manual and the tags of its paragraphs
words_t entries_of(const std::string &section) {
    words_t entries;
    bool inside = false;
    bool is_tag = false;
    for (const std::string &line : sim_split_lines(manual())) {
        if (line.starts_with(".SH"))
            inside = line == ".SH " + section;
        else if (inside && (is_tag || line.starts_with(".SS")))
            entries.push_back(shown(line));
        is_tag = line == ".TP";
    }
    return entries;
}

std::string name_of(const ctl_verb &verb) {
    return std::string(verb.noun) + (verb.word == nullptr ? "" : std::string(" ") + verb.word);
}

/// @return the options' names, such as "--json", sorted
words_t names_of_options(unsigned bits) {
    std::set<std::string> names;
    for (unsigned bit = 1; bit != 0; bit <<= 1U)
        if ((bits & bit) != 0 && *ctl_option_name(bit) != '\0')
            names.insert(std::string("--") + ctl_option_name(bit));
    return {names.begin(), names.end()};
}

/// @return the options as the help shows them, without what it says of each
words_t options_in_help() {
    char *text = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&text, &size);
    ctl_write_options(stream, ~0U);
    fclose(stream);
    words_t options;
    for (const std::string &line : sim_split_lines(text))
        options.push_back(with_single_blanks(line.substr(0, 32)));
    free(text);
    return options;
}

/// Completes the last of the words that follow "utm_appctl".
words_t complete(const words_t &words) {
    std::vector<const char *> operands;
    for (const std::string &word : words)
        operands.push_back(word.c_str());
    const ctl_options options;
    const ctl_app_names names;
    const household_t household = {};
    testing::internal::CaptureStdout();
    EXPECT_EQ(ctl_completion({.verb = ctl_verbs().at(0),
                              .options = options,
                              .household = household,
                              .names = names,
                              .operands = operands,
                              .request = {}}),
              CTL_DONE);
    words_t offered;
    for (const std::string &line : sim_split_lines(testing::internal::GetCapturedStdout()))
        offered.push_back(line.substr(0, line.find('\t')));
    return offered;
}

words_t sorted(words_t words) {
    std::sort(words.begin(), words.end());
    return words;
}

/// @return the verb's words, for a command line
words_t words_of(const ctl_verb &verb) {
    return verb.word == nullptr ? words_t{verb.noun} : words_t{verb.noun, verb.word};
}

TEST(ClientManual, HasEveryVerbWithItsOperandsAsTheHelpHasThem) {
    words_t verbs;
    for (const ctl_verb &verb : ctl_verbs()) {
        if (verb.group != nullptr)
            verbs.push_back(verb.group);
        verbs.push_back(with_single_blanks(name_of(verb) + " " + verb.synopsis));
    }
    EXPECT_EQ(entries_of("COMMANDS"), verbs);
}

TEST(ClientManual, HasEveryOptionAsTheHelpHasIt) {
    EXPECT_EQ(entries_of("OPTIONS"), options_in_help());
}

TEST(ClientManual, MentionsNoOptionThatDoesNotExist) {
    const std::string text = manual();
    const std::regex mention(R"(\\-\\-(\w+(\\-\w+)?))");
    std::set<std::string> mentioned;
    for (std::sregex_iterator it(text.begin(), text.end(), mention), end; it != end; ++it)
        mentioned.insert(shown(" " + (*it)[0].str()));
    EXPECT_EQ(words_t(mentioned.begin(), mentioned.end()), names_of_options(~0U));
}

TEST(ClientCompletion, OffersEveryNounAndItsWords) {
    words_t nouns;
    for (const ctl_verb &verb : ctl_verbs())
        if (nouns.empty() || nouns.back() != verb.noun)
            nouns.push_back(verb.noun);
    EXPECT_EQ(complete({""}), nouns);
    for (const std::string &noun : nouns) {
        words_t words;
        for (const ctl_verb &verb : ctl_verbs())
            if (noun == verb.noun && verb.word != nullptr)
                words.push_back(verb.word);
        if (words.empty())
            continue;
        EXPECT_EQ(complete({noun, ""}), words) << noun;
    }
}

TEST(ClientCompletion, OffersEveryVerbItsOptions) {
    for (const ctl_verb &verb : ctl_verbs()) {
        words_t words = words_of(verb);
        words.push_back("-");
        EXPECT_EQ(sorted(complete(words)), names_of_options(ctl_options_of(verb))) << name_of(verb);
    }
    EXPECT_EQ(sorted(complete({"--"})), names_of_options(ctl_common_options));
}

} // namespace
