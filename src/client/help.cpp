#include "client/help.h"

#include <cstring>

namespace {

/// Columns of a verb and its operands.
constexpr int verb_width = 34;

void write_verb_line(FILE *out, const ctl_verb &verb) {
    const bool has_word = verb.word != nullptr;
    const int width = fprintf(out, "  %s%s%s %s", verb.noun, has_word ? " " : "",
                              has_word ? verb.word : "", verb.synopsis);
    fprintf(out, "%*s%s\n", width < verb_width ? verb_width - width : 1, "", verb.help);
}

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
    "4 time-out, a broken reply, or output that could not be written.\n";

} // namespace

void ctl_write_help(FILE *out) {
    fputs("Usage: utm_appctl VERB [OPERANDS] [OPTIONS]\n"
          "Asks the daemon that keeps a family's internet time.\n",
          out);
    for (const ctl_verb &verb : ctl_verbs()) {
        if (verb.group != nullptr)
            fprintf(out, "\n%s\n", verb.group);
        write_verb_line(out, verb);
    }
    fputs("\nOptions; VERB --help tells which go with a verb\n", out);
    ctl_write_options(out, ~0U);
    fprintf(out, legend, ctl_names_path);
}

void ctl_write_noun_help(FILE *out, const char *noun) {
    fprintf(out, "Usage: utm_appctl %s ...\n\n", noun);
    for (const ctl_verb &verb : ctl_verbs())
        if (strcmp(verb.noun, noun) == 0)
            write_verb_line(out, verb);
}

void ctl_write_verb_help(FILE *out, const ctl_verb &verb) {
    fprintf(out, "Usage: utm_appctl %s%s%s%s%s%s\n\n  %s\n\nOptions:\n", verb.noun,
            verb.word != nullptr ? " " : "", verb.word != nullptr ? verb.word : "",
            verb.synopsis[0] != '\0' ? " " : "", verb.synopsis,
            verb.options != 0 ? " [OPTIONS]" : "", verb.help);
    ctl_write_options(out, verb.options | ctl_common_options);
}
