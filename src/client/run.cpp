#include "client/run.h"

#include "client/help.h"
#include "client/message.h"
#include "client/verbs.h"

#include <cerrno>
#include <clocale>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// @return whether any verb begins with the word
bool is_noun(const char *word) {
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, word) == 0)
            return true;
    return false;
}

/// @param word  the second operand, or null
/// @return the verb, or null when the noun needs another second word
const ctl_verb *find_verb(const char *noun, const char *word) {
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, noun) == 0 &&
            (verb.word == nullptr || (word != nullptr && strcmp(verb.word, word) == 0)))
            return &verb;
    return nullptr;
}

ctl_exit no_verb(const char *noun, const char *word) {
    if (!is_noun(noun))
        return ctl_fail(CTL_USAGE, "\"%s\" is no verb; see utm_appctl --help", noun);
    if (word == nullptr)
        ctl_say("\"%s\" needs a second word", noun);
    else
        ctl_say("\"%s %s\" is no verb", noun, word);
    ctl_write_noun_help(stderr, noun);
    return CTL_USAGE;
}

ctl_exit wrong_use(const ctl_verb &verb) {
    ctl_write_verb_help(stderr, verb);
    return CTL_USAGE;
}

/// Help was asked for: of everything, of a noun, or of a verb.
/// @param first  the operand that the verb begins with: behind the word "help", if that is how
ctl_exit give_help(const ctl_options &options, size_t first) {
    const char *noun = options.operands.size() > first ? options.operands[first] : nullptr;
    const char *word = options.operands.size() > first + 1 ? options.operands[first + 1] : nullptr;
    if (noun == nullptr) {
        ctl_write_help(stdout);
        return CTL_DONE;
    }
    const ctl_verb *verb = find_verb(noun, word);
    if (verb != nullptr)
        ctl_write_verb_help(stdout, *verb);
    else if (is_noun(noun) && word == nullptr)
        ctl_write_noun_help(stdout, noun);
    else
        return no_verb(noun, word);
    return CTL_DONE;
}

ctl_exit run_verb(const ctl_verb &verb, const ctl_options &options) {
    const size_t words = verb.word == nullptr ? 1 : 2;
    const size_t count = options.operands.size() - words;
    const unsigned strange = options.given & ~(verb.options | ctl_common_options);
    if (count < verb.least || count > verb.most) {
        ctl_say("too %s operands", count < verb.least ? "few" : "many");
        return wrong_use(verb);
    }
    if (strange != 0) {
        ctl_say("--%s does not go with this verb", ctl_option_name(strange));
        return wrong_use(verb);
    }
    ctl_app_names names;
    if ((verb.options & CTL_OPTION_NAMES) != 0) {
        const ctl_exit status = ctl_read_names(options.names_path, &names);
        if (status != CTL_DONE)
            return status;
    }
    return verb.run({.options = options,
                     .operands = options.operands.begin() + words,
                     .operand_count = count,
                     .names = names,
                     .refusal = verb.refusal});
}

ctl_exit dispatch(const ctl_options &options) {
    if (options.has(CTL_OPTION_VERSION)) {
        puts("utm_appctl " UTM_APPCTL_VERSION);
        return CTL_DONE;
    }
    const bool is_help = !options.operands.empty() && strcmp(options.operands[0], "help") == 0;
    if (options.has(CTL_OPTION_HELP) || is_help)
        return give_help(options, is_help ? 1 : 0);
    if (options.operands.empty()) {
        ctl_write_help(stderr);
        return CTL_USAGE;
    }
    const char *word = options.operands.size() > 1 ? options.operands[1] : nullptr;
    const ctl_verb *verb = find_verb(options.operands[0], word);
    return verb == nullptr ? no_verb(options.operands[0], word) : run_verb(*verb, options);
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

ctl_exit ctl_run(int argc, char **argv) {
    fill_standard_descriptors();
    setlocale(LC_CTYPE, ""); // tells whether the terminal takes UTF-8
    ctl_options options;
    ctl_exit status = ctl_parse_options(argc, argv, &options);
    if (status == CTL_DONE)
        status = dispatch(options);
    return close_output(status);
}
