#pragma once
/// Calls by rpcd, which gives other programs of a router an object on its bus: `utm_appctl rpcd
/// list` says which methods there are, and `utm_appctl rpcd call METHOD` reads the arguments, one
/// JSON object, from standard input. A method is one of utm_appctl's own commands with --json. No
/// shell comes between the two, so no argument has to be quoted for one.

#include "client/message.h"
#include "core/json.h"

/// The command line that a call amounts to.
struct ctl_rpcd_line {
    static constexpr int words_max = 16;

    char *words[words_max + 1] = {}; ///< as `main` has them, with a null behind the last
    int count = 0;                   ///< 0: there is none
    json_ptr arguments = {};         ///< what words point into
};

/// @return whether the command line is a call by rpcd
[[nodiscard]] bool ctl_is_rpcd(int argc, char **argv);

/// Reads such a command line; `list` is answered at once, and leaves no other one.
/// @return CTL_DONE, or CTL_USAGE after a message
[[nodiscard]] ctl_exit ctl_rpcd(int argc, char **argv, ctl_rpcd_line *line);

/// Makes a method and its arguments into a command line.
/// @param text  the arguments
[[nodiscard]] ctl_exit ctl_rpcd_call(const char *method, const char *text, size_t length,
                                     ctl_rpcd_line *line);
