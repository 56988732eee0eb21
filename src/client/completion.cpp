/// What a shell may offer for the last word of a command line that somebody types: one program
/// knows it, and the shells' own scripts only ask. No daemon is needed for it.

#include "client/arguments.h"
#include "client/output.h"
#include "client/verbs.h"

#include <cstdio>
#include <cstring>
#include <getopt.h>
#include <optional>
#include <strings.h>

namespace {

/// Words that begin as the typed one does: a line each, behind a tab what it is.
class offers {
public:
    /// @param json  collects them for a document
    /// @param begun  what is typed already
    /// @param kept  what precedes each: "--day=" of a word that has its value in it
    offers(bool json, const char *begun, std::string_view kept)
        : json_(json), begun_(begun), kept_(kept) {
        if (json)
            array_ = document_.add_array("words");
    }

    /// @param behind  what follows the word at once
    void add(const char *word, const char *help, const char *behind = "") {
        if (strncasecmp(word, begun_, strlen(begun_)) != 0)
            return;
        char text[2 * ctl_name_size];
        snprintf(text, sizeof(text), "%.*s%s%s", static_cast<int>(kept_.size()), kept_.data(), word,
                 behind);
        if (!json_) {
            printf("%s\t%s\n", text, help);
            return;
        }
        ctl_document element;
        element.add_text("word", text);
        element.add_text("help", help);
        document_.append(array_, &element);
    }

    /// Leaves the word to the shell, which knows how names of files are quoted.
    void add_files() { files_ = true; }

    [[nodiscard]] ctl_exit end() {
        if (json_) {
            document_.add_bool("files", files_);
            return document_.print();
        }
        if (files_)
            puts("\tfiles");
        return CTL_DONE;
    }

private:
    bool json_;
    const char *begun_;
    std::string_view kept_;
    ctl_document document_;
    json_object *array_ = nullptr;
    bool files_ = false;
};

/// The words in front of the typed one, taken apart.
struct typed_line {
    plain_vector<const char *> operands = {};
    const ctl_option_row *waiting = nullptr; ///< the option that still needs its value
    bool is_ended = false;                   ///< behind a lone -- there are no options
    bool unit_may_follow = false;            ///< behind --history
};

/// @return the option of a word such as "--day", "--day=1" or "-s", or null
const ctl_option_row *option_of(const char *word) {
    const bool is_letter = word[0] == '-' && word[1] != '-';
    if (strncmp(word, is_letter ? "-" : "--", is_letter ? 1 : 2) != 0)
        return nullptr;
    word += is_letter ? 1 : 2;
    const size_t length = strcspn(word, "=");
    for (const ctl_option_row &row : ctl_option_rows())
        if (is_letter ? length == 1 && row.letter == word[0]
                      : strlen(row.name) == length && strncmp(row.name, word, length) == 0)
            return &row;
    return nullptr;
}

[[nodiscard]] bool take_word(const char *word, typed_line *line) {
    const bool is_value = line->waiting != nullptr;
    line->waiting = nullptr;
    line->unit_may_follow = false;
    if (is_value)
        return true;
    if (line->is_ended || word[0] != '-' || word[1] == '\0')
        return line->operands.add(word);
    line->is_ended = strcmp(word, "--") == 0;
    const ctl_option_row *row = option_of(word);
    if (row != nullptr && row->argument_kind == required_argument && strchr(word, '=') == nullptr)
        line->waiting = row;
    line->unit_may_follow =
        row != nullptr && row->bit == CTL_OPTION_HISTORY && strchr(word, '=') == nullptr;
    return true;
}

void offer_numbers(int last, offers *to) {
    for (int i = 0; i <= last; ++i) {
        char text[12];
        snprintf(text, sizeof(text), "%d", i);
        to->add(text, "");
    }
}

/// @return whether the option's value names a file
bool is_of_files(const ctl_option_row &row) {
    return strcmp(row.argument, " FILE") == 0 || strcmp(row.argument, " PATH") == 0 ||
           strcmp(row.argument, " FOLDER") == 0;
}

void offer_people(const ctl_call &call, offers *to) {
    for (const household_person_t &person : call.household.people)
        to->add(person.name.text, "");
}

void offer_values(const ctl_call &call, const ctl_option_row &row, offers *to) {
    if (row.bit == CTL_OPTION_DAY)
        offer_numbers(UTM_APP_CONFIG_PERIOD_OLDEST_DAY, to);
    else if (row.bit == CTL_OPTION_WEEK)
        offer_numbers(UTM_APP_CONFIG_PERIOD_OLDEST_WEEK - UTM_APP_CONFIG_PERIOD_WEEK, to);
    else if (row.bit == CTL_OPTION_PERSON)
        offer_people(call, to);
    else if (is_of_files(row))
        to->add_files();
}

/// Offers nouns, or the words of a noun.
void offer_verbs(const char *noun, offers *to) {
    const char *before = "";
    for (const ctl_verb &verb : ctl_verbs()) {
        if (noun == nullptr && strcmp(verb.noun, before) != 0)
            to->add(verb.noun, verb.word == nullptr ? verb.help : "");
        else if (noun != nullptr && strcmp(verb.noun, noun) == 0 && verb.word != nullptr)
            to->add(verb.word, verb.help);
        before = verb.noun;
    }
}

void offer_options(unsigned bits, offers *to) {
    for (const ctl_option_row &row : ctl_option_rows()) {
        char name[40];
        snprintf(name, sizeof(name), "--%s", row.name);
        if ((bits & row.bit) != 0)
            to->add(name, row.help);
    }
}

/// Offers what the application of a rule may be followed by, or applications.
/// @param rule  what is typed
void offer_rules(const ctl_call &call, const char *rule, offers *to) {
    if (strchr(rule, '=') == nullptr) {
        for (const ctl_app_name &app : call.names)
            to->add(app.name, "", "=");
        return;
    }
    to->add("block", "block it");
    to->add("allow", "no rule");
}

void offer_words(std::initializer_list<const char *> words, offers *to) {
    for (const char *word : words)
        to->add(word, "");
}

/// @return the verb that the operands begin with, or none
std::optional<ctl_verb> verb_of(const plain_vector<const char *> &operands) {
    for (const ctl_verb &verb : ctl_verbs()) {
        const size_t words = verb.word == nullptr ? 1 : 2;
        if (operands.size() >= words && strcmp(verb.noun, operands[0]) == 0 &&
            (verb.word == nullptr || strcmp(verb.word, operands[1]) == 0))
            return verb;
    }
    return std::nullopt;
}

void offer_operand(const ctl_call &call, const ctl_verb &verb, const typed_line &line,
                   const char *typed, offers *to) {
    const size_t words = verb.word == nullptr ? 1 : 2;
    const std::string_view word = ctl_operand_word(verb, line.operands.size() - words);
    if (word == "ID")
        offer_people(call, to);
    else if (word == "on|off")
        offer_words({"on", "off"}, to);
    else if (word == "DAY")
        offer_words({"sunday", "monday", "tuesday", "wednesday", "thursday", "friday", "saturday",
                     "weekdays", "weekend", "all"},
                    to);
    else if (word == "APP=RULE")
        offer_rules(call, typed, to);
    else if (word == "PATH" || word == "FILE")
        to->add_files();
}

void offer(const ctl_call &call, const typed_line &line, const char *typed, offers *to) {
    const std::optional<ctl_verb> verb = verb_of(line.operands);
    const bool is_option = !line.is_ended && typed[0] == '-';
    if (line.waiting != nullptr)
        offer_values(call, *line.waiting, to);
    else if (const ctl_option_row *row = option_of(typed);
             is_option && row != nullptr && strchr(typed, '=') != nullptr)
        offer_values(call, *row, to);
    else if (is_option)
        offer_options(verb.has_value() ? ctl_options_of(*verb) : ctl_common_options, to);
    else if (line.unit_may_follow && typed[0] == '\0')
        offer_words({"--days", "--weeks"}, to);
    else if (verb.has_value())
        offer_operand(call, *verb, line, typed, to);
    else if (line.operands.size() < 2)
        offer_verbs(line.operands.empty() ? nullptr : line.operands[0], to);
}

} // namespace

ctl_exit ctl_completion(const ctl_call &call) {
    const char *typed = call.operands.back();
    typed_line line;
    for (const char *word : call.operands.first(call.operands.size() - 1))
        if (!take_word(word, &line))
            return ctl_fail(CTL_BROKEN, "out of memory");
    // The value of "--day=1" and of "video=block" is what is completed.
    const char *equals = strrchr(typed, '=');
    const char *begun = equals == nullptr || line.waiting != nullptr ? typed : equals + 1;
    offers to(call.json(), begun, {typed, static_cast<size_t>(begun - typed)});
    offer(call, line, typed, &to);
    return to.end();
}
