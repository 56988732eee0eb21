#pragma once
/// The command line's options: one table for parsing, for help, and for the options that a verb
/// takes.

#include "client/connection.h"
#include "core/vector.h"

#include <cstdint>
#include <cstdio>
#include <span>

/// A bit per option, so that a verb can say which ones it takes.
enum ctl_option : unsigned {
    CTL_OPTION_SOCKET = 1U << 0,
    CTL_OPTION_TIMEOUT = 1U << 1,
    CTL_OPTION_HELP = 1U << 2,
    CTL_OPTION_VERSION = 1U << 3,
    CTL_OPTION_JSON = 1U << 4,
    CTL_OPTION_ASCII = 1U << 5,
    CTL_OPTION_NAMES = 1U << 6,
    CTL_OPTION_APPS = 1U << 7,
    CTL_OPTION_DAY = 1U << 8,
    CTL_OPTION_WEEK = 1U << 9,
    CTL_OPTION_MONTH = 1U << 10,
    CTL_OPTION_HISTORY = 1U << 11,
    CTL_OPTION_DAYS = 1U << 12,
    CTL_OPTION_WEEKS = 1U << 13,
    CTL_OPTION_HOUSEHOLD = 1U << 14,
    CTL_OPTION_YES = 1U << 15,
    CTL_OPTION_YESTERDAY = 1U << 16,
    CTL_OPTION_DRY_RUN = 1U << 20,
    CTL_OPTION_REPAIR = 1U << 21,
    CTL_OPTION_PRUNE = 1U << 22,
    CTL_OPTION_RESTORE = 1U << 23,
    CTL_OPTION_CSV = 1U << 17,
    CTL_OPTION_ALL = 1U << 24,
    CTL_OPTION_EXEC = 1U << 25,
    CTL_OPTION_INTERVAL = 1U << 26,
    CTL_OPTION_OUTPUT = 1U << 27,
    CTL_OPTION_PERSON = 1U << 28,
};

/// Those that ask for a period; only one may be given.
inline constexpr unsigned ctl_period_options =
    CTL_OPTION_DAY | CTL_OPTION_YESTERDAY | CTL_OPTION_WEEK | CTL_OPTION_MONTH;

/// What every verb takes.
inline constexpr unsigned ctl_common_options =
    CTL_OPTION_JSON | CTL_OPTION_SOCKET | CTL_OPTION_TIMEOUT | CTL_OPTION_HELP | CTL_OPTION_VERSION;

struct ctl_options {
    char **words = nullptr; ///< the command line, with a null behind the last
    ctl_daemon daemon = {};
    const char *names_path = nullptr;
    const char *household_path = nullptr;
    const char *restore_path = nullptr;  ///< a usage file
    const char *programs_path = nullptr; ///< the folder of --exec
    const char *output_path = nullptr;
    const char *person = nullptr;       ///< a name or a number
    int32_t interval_s = 10;            ///< between two looks of watch
    int32_t day = 0;                    ///< days ago
    int32_t week = 0;                   ///< weeks ago
    const char *history_unit = nullptr; ///< "days" by --days, --history days or --history=days
    unsigned given = 0;                 ///< bits of `ctl_option`
    plain_vector<const char *> operands = {}; ///< the words that are no options, in order

    bool has(ctl_option option) const { return (given & option) != 0; }
};

/// One option: the library's table, the help, the completion and the manual's test are made from
/// such rows.
struct ctl_option_row {
    ctl_option bit;
    const char *name;
    char letter; ///< or 0
    int argument_kind;
    const char *argument; ///< as help shows it
    const char *help;
};

/// @return all options, in the order of the help
[[nodiscard]] std::span<const ctl_option_row> ctl_option_rows();

/// Takes a command line apart. Options may stand anywhere before "--".
/// @return CTL_DONE, or CTL_USAGE after a message
[[nodiscard]] ctl_exit ctl_parse_options(int argc, char **argv, ctl_options *options);

/// @return whether the options can be combined and none lacks one that it needs; if not, said why
[[nodiscard]] bool ctl_options_agree(const ctl_options &options);

/// @return the name, such as "json", of one of `bits`; the lowest counts
[[nodiscard]] const char *ctl_option_name(unsigned bits);

/// Writes a line for each of the options.
void ctl_write_options(FILE *out, unsigned bits);
