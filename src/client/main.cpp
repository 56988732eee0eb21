/// utm_appctl: controls the daemon that tracks and limits a family's internet time. From its
/// command line to its exit status: finds the verb, checks its operands and options, and runs it.

#include "client/arguments.h"
#include "client/message.h"
#include "client/output.h"
#include "client/verbs.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// Columns of a verb and its operands.
constexpr int verb_width = 34;

constexpr char legend[] =
    "\n"
    "ID, POLICY  whole numbers of your choice\n"
    "MINUTES     90, 90m or 1h30m\n"
    "DAY         monday, mon or 1; the week begins with sunday, 0\n"
    "MAC         02:00:00:00:00:1a, with or without separators\n"
    "APP=RULE    video=45m to limit, video=block, video=remove; applications go by\n"
    "            number, or by name after --names or in %s\n"
    "\n"
    "Exit status: 0 done, 1 the daemon refused, 2 wrong usage, 3 no daemon,\n"
    "4 timeout, a broken reply, or output that could not be written.\n";

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

/// @return the verb, or null when the noun needs another second word
const ctl_verb *find_verb(const verb_words &words) {
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, words.noun) == 0 &&
            (verb.word == nullptr || (words.word != nullptr && strcmp(verb.word, words.word) == 0)))
            return &verb;
    return nullptr;
}

void write_verb_line(FILE *out, const ctl_verb &verb) {
    const bool has_word = verb.word != nullptr;
    const int width = fprintf(out, "  %s%s%s %s", verb.noun, has_word ? " " : "",
                              has_word ? verb.word : "", verb.synopsis);
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
    fputs("\nOptions (COMMAND --help lists those of a command)\n", out);
    ctl_write_options(out, ~0U);
    fprintf(out, legend, ctl_names_path);
}

void write_noun_help(FILE *out, const char *noun) {
    fprintf(out, "Usage: utm_appctl %s ...\n\n", noun);
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, noun) == 0)
            write_verb_line(out, verb);
}

void write_verb_help(FILE *out, const ctl_verb &verb) {
    fprintf(out, "Usage: utm_appctl %s%s%s%s%s%s\n\n  %s\n\nOptions:\n", verb.noun,
            verb.word != nullptr ? " " : "", verb.word != nullptr ? verb.word : "",
            verb.synopsis[0] != '\0' ? " " : "", verb.synopsis,
            verb.options != 0 ? " [OPTIONS]" : "", verb.help);
    ctl_write_options(out, verb.options | ctl_common_options);
}

ctl_exit no_verb(const verb_words &words) {
    if (!is_noun(words.noun))
        return ctl_fail(CTL_USAGE, "\"%s\": unknown command; see utm_appctl --help", words.noun);
    if (words.word == nullptr)
        ctl_say("\"%s\" needs a second word", words.noun);
    else
        ctl_say("\"%s %s\": unknown command", words.noun, words.word);
    write_noun_help(stderr, words.noun);
    return CTL_USAGE;
}

/// Help was asked for: of everything, of a noun, or of a verb.
ctl_exit give_help(const verb_words &words) {
    const ctl_verb *verb = words.noun == nullptr ? nullptr : find_verb(words);
    if (words.noun == nullptr)
        write_help(stdout);
    else if (verb != nullptr)
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
    const unsigned strange = options.given & ~(verb.options | ctl_common_options);
    if (count < bounds.least || count > bounds.most)
        ctl_say("too %s operands", count < bounds.least ? "few" : "many");
    else if (strange != 0)
        ctl_say("--%s cannot be used with this command", ctl_option_name(strange));
    else
        return true;
    write_verb_help(stderr, verb);
    return false;
}

ctl_exit run_verb(const ctl_verb &verb, const ctl_options &options) {
    const size_t words = verb.word == nullptr ? 1 : 2;
    ctl_app_names names;
    ctl_call call = {.verb = verb,
                     .options = options,
                     .names = names,
                     .operands = {options.operands.begin() + words, options.operands.end()},
                     .request = {.type = verb.type, .arg2 = verb.enable}};
    if (!is_well_formed(verb, options, call.operands.size()))
        return CTL_USAGE;
    if (verb.has(CTL_OPTION_NAMES)) {
        const ctl_exit status = ctl_read_names(options.names_path, &names);
        if (status != CTL_DONE)
            return status;
    }
    if (!ctl_options_agree(options) || !ctl_read_operands(verb, call.operands, &call.request))
        return CTL_USAGE;
    return verb.run(call);
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
        return ctl_fail(CTL_USAGE, "a command is missing; see utm_appctl --help");
    if (words.noun == nullptr) {
        write_help(stderr);
        return CTL_USAGE;
    }
    const ctl_verb *verb = find_verb(words);
    return verb == nullptr ? no_verb(words) : run_verb(*verb, options);
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
    ctl_exit status = ctl_parse_options(argc, argv, &options);
    if (status == CTL_DONE)
        status = dispatch(options);
    if (ends_with_document(options, status))
        status = ctl_end_documents(status);
    return close_output(status);
}
