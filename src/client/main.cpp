/// utm_appctl: controls the daemon that tracks and limits a family's internet time. From its
/// command line to its exit status: finds the verb, checks its operands and options, and runs it.

#include "client/arguments.h"
#include "client/household_file.h"
#include "client/message.h"
#include "client/monitor.h"
#include "client/output.h"
#include "client/rpcd.h"
#include "client/suggestion.h"
#include "client/verbs.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace {

/// Columns of a verb and its operands.
constexpr int verb_width = 34;

/// An operand's forms, by its word in the synopsis.
struct operand_form {
    const char *word;
    const char *form;
};

constexpr operand_form forms[] = {
    {"ID", "a person: a number of your choice, or a name in the household"},
    {"POLICY", "a number of your choice, 1 or more"},
    {"MINUTES", "90, 90m, 1h30m, 1:30 or 1.5h"},
    {"DAY", "monday, mon or 1; sat,sun; weekdays, weekend, all; sunday is 0"},
    {"MAC", "02:00:00:00:00:1a, with or without separators"},
    {"APP=RULE", "video=45m limits, video=block blocks, video=allow ends both;\n"
                 "            applications go by number, or by their name in the household"},
    {"FILE", "a household file; - is standard input"},
    {"PATH", "a file; but for report it is the daemon that opens it, as root"},
    {"on|off", "yes and no will do, too"},
    {"WORD", "a word behind utm_appctl; the last one is still being typed"},
};

constexpr char exit_statuses[] =
    "\n"
    "Exit status: 0 done, 1 the daemon refused, 2 wrong usage, 3 no daemon,\n"
    "4 timeout, a broken reply, or output that could not be written.\n";

void write_form(FILE *out, const operand_form &form) {
    fprintf(out, "  %-10s%s\n", form.word, form.form);
}

/// The words that a command line begins with; null where it has none.
struct verb_words {
    const char *noun;
    const char *word;
};

verb_words words_at(const ctl_options &options, size_t first) {
    const size_t size = options.operands.size();
    return {size > first ? options.operands[first] : nullptr,
            size > first + 1 ? options.operands[first + 1] : nullptr};
}

/// @return whether any verb begins with the word
bool is_noun(const char *word) {
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, word) == 0)
            return true;
    return false;
}

/// @return the verb, or none when the noun needs another second word
std::optional<ctl_verb> find_verb(const verb_words &words) {
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, words.noun) == 0 &&
            (verb.word == nullptr || (words.word != nullptr && strcmp(verb.word, words.word) == 0)))
            return verb;
    return std::nullopt;
}

void write_verb_line(FILE *out, const ctl_verb &verb) {
    const int width = fprintf(out, "  %s %s", ctl_name_of(verb).text, verb.synopsis);
    fprintf(out, "%*s%s\n", width < verb_width ? verb_width - width : 1, "", verb.help);
}

void write_help(FILE *out) {
    fputs("Usage: utm_appctl COMMAND [OPERANDS] [OPTIONS]\n"
          "Controls the daemon that tracks and limits a family's internet time.\n",
          out);
    for (const ctl_verb &verb : ctl_verbs()) {
        if (verb.group != nullptr)
            fprintf(out, "\n%s\n", verb.group);
        write_verb_line(out, verb);
    }
    // All options would fill another screen.
    fputs("\nOptions of every command (COMMAND --help lists all that it takes)\n", out);
    ctl_write_options(out, ctl_common_options);
    fputs("\nOperands\n", out);
    for (const operand_form &form : forms)
        write_form(out, form);
    fputs(exit_statuses, out);
}

void write_noun_help(FILE *out, const char *noun) {
    fprintf(out, "Usage: utm_appctl %s ...\n\n", noun);
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, noun) == 0)
            write_verb_line(out, verb);
}

/// Writes "utm_appctl", the verb and its operands.
void write_usage(FILE *out, const ctl_verb &verb) {
    const bool has_options = (ctl_options_of(verb) & ~ctl_common_options) != 0;
    fprintf(out, "Usage: utm_appctl %s%s%s%s\n", ctl_name_of(verb).text,
            verb.synopsis[0] != '\0' ? " " : "", verb.synopsis, has_options ? " [OPTIONS]" : "");
}

void write_verb_help(FILE *out, const ctl_verb &verb) {
    write_usage(out, verb);
    fprintf(out, "\n  %s\n", verb.help);
    if (verb.synopsis[0] != '\0')
        fputs("\nOperands:\n", out);
    for (const operand_form &form : forms)
        if (ctl_has_operand(verb, form.word))
            write_form(out, form);
    if (verb.example != nullptr)
        fprintf(out, "\nExample:\n  utm_appctl %s\n", verb.example);
    fputs("\nOptions:\n", out);
    ctl_write_options(out, ctl_options_of(verb));
}

/// A verb's first or second words, those of its noun once each.
struct word_list {
    plain_vector<const char *> words = {};
    char text[100] = ""; ///< with commas

    void add(const char *word) {
        if (!words.empty() && strcmp(words[words.size() - 1], word) == 0)
            return;
        const size_t length = strlen(text);
        snprintf(text + length, sizeof(text) - length, "%s%s", words.empty() ? "" : ", ", word);
        if (!words.add(word))
            return; // then there is no suggestion
    }
};

ctl_exit no_verb(const verb_words &words) {
    const bool is_known = is_noun(words.noun);
    word_list known;
    for (const ctl_verb &verb : ctl_verbs())
        if (!is_known)
            known.add(verb.noun);
        else if (strcmp(verb.noun, words.noun) == 0)
            known.add(verb.word);
    if (!is_known)
        return ctl_fail(CTL_USAGE, "\"%s\" is no command\n%s", words.noun,
                        ctl_suggest(words.noun, &known.words, "See utm_appctl --help").text);
    char all[200];
    snprintf(all, sizeof(all), "Give one of: %s; see utm_appctl %s --help", known.text, words.noun);
    if (words.word == nullptr)
        return ctl_fail(CTL_USAGE, "\"%s\" needs a second word\n%s", words.noun, all);
    return ctl_fail(CTL_USAGE, "\"%s %s\" is no command\n%s", words.noun, words.word,
                    ctl_suggest(words.word, &known.words, all).text);
}

/// Help was asked for: of everything, of a noun, or of a verb.
ctl_exit give_help(const verb_words &words) {
    const std::optional<ctl_verb> verb = words.noun == nullptr ? std::nullopt : find_verb(words);
    if (words.noun == nullptr)
        write_help(stdout);
    else if (verb.has_value())
        write_verb_help(stdout, *verb);
    else if (is_noun(words.noun) && words.word == nullptr)
        write_noun_help(stdout, words.noun);
    else
        return no_verb(words);
    return CTL_DONE;
}

/// Checks what can be told without reading an operand: how many there are, and the options.
bool is_well_formed(const ctl_verb &verb, const ctl_options &options, size_t count) {
    const ctl_bounds bounds = ctl_bounds_of(verb.synopsis);
    const unsigned strange = options.given & ~ctl_options_of(verb);
    const ctl_verb_name name = ctl_name_of(verb);
    if (count < bounds.least || count > bounds.most)
        ctl_say("\"%s\" has too %s operands\nUsage: utm_appctl %s%s%s; see utm_appctl %s --help",
                name.text, count < bounds.least ? "few" : "many", name.text,
                verb.synopsis[0] != '\0' ? " " : "", verb.synopsis, name.text);
    else if (strange != 0)
        ctl_say("--%s cannot be used with \"%s\"\nSee utm_appctl %s --help",
                ctl_option_name(strange), name.text, name.text);
    else
        return true;
    return false;
}

/// The words behind a verb. A time may stand in two words at the end, "2h 30m", as people say it.
class operand_words {
public:
    operand_words(const ctl_verb &verb, std::span<const char *const> words) : words_(words) {
        const size_t most = ctl_bounds_of(verb.synopsis).most;
        int32_t minutes = 0;
        if (words.size() != most + 1 || words.size() > room || !ctl_has_operand(verb, "MINUTES"))
            return;
        snprintf(time_, sizeof(time_), "%s %s", words[most - 1], words[most]);
        if (!spelling_minutes(time_, &minutes))
            return;
        std::copy_n(words.begin(), most - 1, joined_);
        joined_[most - 1] = time_;
        words_ = {joined_, most};
    }
    operand_words(const operand_words &) = delete;
    operand_words &operator=(const operand_words &) = delete;

    std::span<const char *const> get() const { return words_; }

private:
    static constexpr size_t room = 4;

    std::span<const char *const> words_;
    const char *joined_[room] = {};
    char time_[40] = "";
};

/// Reads the household where the verb takes names.
[[nodiscard]] ctl_exit read_household(const ctl_verb &verb, const ctl_options &options,
                                      household_t *household, ctl_app_names *names) {
    // What is applied is read as a whole, with all that is wrong with it.
    if ((ctl_options_of(verb) & CTL_OPTION_HOUSEHOLD) == 0 || verb.run == ctl_apply)
        return CTL_DONE;
    const ctl_exit status =
        ctl_read_names_of_household(options.household_path, options.names_path, household);
    if (status != CTL_DONE)
        return status;
    for (const household_app_t &app : household->apps) {
        ctl_app_name name = {.app_id = app.number, .name = {}};
        static_assert(sizeof(name.name) == sizeof(app.name.text));
        memcpy(name.name, app.name.text, sizeof(name.name));
        if (!names->add(name))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return CTL_DONE;
}

ctl_exit run_verb(const ctl_verb &verb, const ctl_options &options) {
    const size_t words = verb.word == nullptr ? 1 : 2;
    const operand_words operands(verb, {options.operands.begin() + words, options.operands.end()});
    household_t household = {};
    ctl_app_names names;
    ctl_call call = {.verb = verb,
                     .options = options,
                     .household = household,
                     .names = names,
                     .operands = operands.get(),
                     .request = {.type = verb.type, .arg2 = verb.enable}};
    if (!is_well_formed(verb, options, call.operands.size()) || !ctl_options_agree(options))
        return CTL_USAGE;
    if (ctl_monitor_is_apart && verb.run == ctl_monitor)
        return ctl_monitor(call);
    ctl_exit status = read_household(verb, options, &household, &names);
    if (status == CTL_DONE)
        status = ctl_read_operands(verb, call.operands, household, &call.request);
    return status == CTL_DONE ? verb.run(call) : status;
}

ctl_exit give_version(const ctl_options &options) {
    if (!options.has(CTL_OPTION_JSON)) {
        puts("utm_appctl " UTM_APPCTL_VERSION);
        return CTL_DONE;
    }
    ctl_document document;
    document.add_text("version", UTM_APPCTL_VERSION);
    return document.print();
}

bool begins_with_help(const verb_words &words) {
    return words.noun != nullptr && strcmp(words.noun, "help") == 0;
}

ctl_exit dispatch(const ctl_options &options) {
    if (options.has(CTL_OPTION_VERSION))
        return give_version(options);
    const verb_words words = words_at(options, 0);
    const bool is_help = begins_with_help(words);
    if (options.has(CTL_OPTION_HELP) || is_help)
        return give_help(is_help ? words_at(options, 1) : words);
    if (words.noun == nullptr && options.has(CTL_OPTION_JSON))
        return ctl_fail(CTL_USAGE, "a command is missing\nSee utm_appctl --help");
    if (words.noun == nullptr) {
        write_help(stderr);
        return CTL_USAGE;
    }
    const std::optional<ctl_verb> verb = find_verb(words);
    return verb.has_value() ? run_verb(*verb, options) : no_verb(words);
}

/// Help is for people alone, and the only answer that is no document.
bool ends_with_document(const ctl_options &options, ctl_exit status) {
    const bool is_help = options.has(CTL_OPTION_HELP) || begins_with_help(words_at(options, 0));
    return options.has(CTL_OPTION_JSON) && (status != CTL_DONE || !is_help);
}

/// The daemon's socket must not take the place of a standard stream that is closed: messages would
/// go there. Nothing can be written to what takes the place instead, so lost output still shows.
void fill_standard_descriptors() {
    int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    while (fd >= 0 && fd < STDERR_FILENO)
        fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (fd > STDERR_FILENO)
        close(fd);
}

/// Data that did not reach its reader must not pass for done.
ctl_exit close_output(ctl_exit status) {
    if (fflush(stdout) == 0 && ferror(stdout) == 0)
        return status;
    return ctl_fail(CTL_BROKEN, "the output could not be written (%s)", strerror(errno));
}

} // namespace

int main(int argc, char **argv) {
    fill_standard_descriptors();
    setlocale(LC_CTYPE, ""); // tells whether the terminal takes UTF-8
    ctl_options options;
    ctl_rpcd_line rpcd;
    ctl_exit status = CTL_DONE;
    if (ctl_is_rpcd(argc, argv)) {
        options.given = CTL_OPTION_JSON; // for what is wrong before there is a command line
        status = ctl_rpcd(argc, argv, &rpcd);
        argc = rpcd.count;
        argv = rpcd.words;
    }
    if (status == CTL_DONE && argc > 0)
        status = ctl_parse_options(argc, argv, &options);
    if (status == CTL_DONE && argc > 0)
        status = dispatch(options);
    if (ends_with_document(options, status))
        status = ctl_end_documents(status);
    return close_output(status);
}
