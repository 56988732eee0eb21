#include "client/options.h"

#include "client/message.h"
#include "client/names.h"
#include "client/suggestion.h"
#include "format/protocol.h"
#include "format/spelling.h"

#include <cstring>
#include <getopt.h>

namespace {

constexpr int32_t timeout_max_s = 3600;
constexpr int32_t interval_max_s = 3600;
constexpr int32_t day_max = UTM_APP_CONFIG_PERIOD_OLDEST_DAY;
constexpr int32_t week_max = UTM_APP_CONFIG_PERIOD_OLDEST_WEEK - UTM_APP_CONFIG_PERIOD_WEEK;

constexpr ctl_option_row rows[] = {
    {CTL_OPTION_ASCII, "ascii", 'a', no_argument, "", "draw charts in plain ASCII"},
    {CTL_OPTION_NAMES, "names", 'n', required_argument, " FILE",
     "application names: lines such as \"305 video\""},
    {CTL_OPTION_HOUSEHOLD, "household", 0, required_argument, " FILE",
     "the household file, for names of people"},
    {CTL_OPTION_APPS, "apps", 0, no_argument, "", "applications today, or a chart for each"},
    {CTL_OPTION_DAY, "day", 0, required_argument, " N",
     "applications on the day N days ago, 0 to 30"},
    {CTL_OPTION_YESTERDAY, "yesterday", 0, no_argument, "", "the same as --day 1"},
    {CTL_OPTION_WEEK, "week", 0, required_argument, " N",
     "applications in the week N weeks ago, 0 to 3"},
    {CTL_OPTION_MONTH, "month", 0, no_argument, "", "applications in this month"},
    {CTL_OPTION_HISTORY, "history", 0, optional_argument, "",
     "a chart, of days unless --weeks is given"},
    {CTL_OPTION_DAYS, "days", 0, no_argument, "", "with --history: today and 30 days before"},
    {CTL_OPTION_WEEKS, "weeks", 0, no_argument, "", "with --history: this week and 3 before"},
    {CTL_OPTION_DRY_RUN, "dry-run", 0, no_argument, "", "only say what would be done"},
    {CTL_OPTION_REPAIR, "repair", 0, no_argument, "", "send everything that could be out of step"},
    {CTL_OPTION_PRUNE, "prune", 0, no_argument, "", "delete who is not of the household"},
    {CTL_OPTION_RESTORE, "restore", 0, required_argument, " PATH",
     "import a usage file, if nothing was counted"},
    {CTL_OPTION_CSV, "csv", 0, no_argument, "", "print lines of comma-separated values"},
    {CTL_OPTION_YES, "yes", 'y', no_argument, "", "delete the history, too, without asking"},
    {CTL_OPTION_PERSON, "person", 0, required_argument, " PERSON",
     "a page for this person, without anybody else"},
    {CTL_OPTION_OUTPUT, "output", 'o', required_argument, " FILE",
     "write this file instead, whole or not at all"},
    {CTL_OPTION_ALL, "all", 0, no_argument, "", "also what is, and each minute that is used"},
    {CTL_OPTION_EXEC, "exec", 0, required_argument, " FOLDER",
     "run the programs in the folder with each event"},
    {CTL_OPTION_INTERVAL, "interval", 0, required_argument, " SECONDS",
     "how often to look; default 10"},
    {CTL_OPTION_JSON, "json", 'j', no_argument, "", "print one JSON document"},
    {CTL_OPTION_SOCKET, "socket", 's', required_argument, " PATH",
     "the daemon's socket, if not the default"},
    {CTL_OPTION_TIMEOUT, "timeout", 't', required_argument, " SECONDS",
     "how long to wait for an answer; default 30"},
    {CTL_OPTION_HELP, "help", 'h', no_argument, "", "show help"},
    {CTL_OPTION_VERSION, "version", 'V', no_argument, "", "the version"},
};
constexpr size_t row_count = sizeof(rows) / sizeof(*rows);

/// getopt_long answers with these: the row's index, away from letters and its own signs.
constexpr int first_value = 1000;
/// getopt_long's sign for a word that is no option.
constexpr int operand_value = 1;

const ctl_option_row *row_of(int value) {
    if (value >= first_value)
        return &rows[value - first_value];
    for (const ctl_option_row &row : rows)
        if (row.letter != 0 && row.letter == value)
            return &row;
    return nullptr;
}

bool read_bounded(const char *text, const ctl_option_row &row, int32_t least, int32_t most,
                  int32_t *number) {
    if (spelling_number(text, number) && *number >= least && *number <= most)
        return true;
    ctl_say("\"%s\" is not valid for --%s\nGive a whole number from %d to %d", text, row.name,
            least, most);
    return false;
}

bool take_option(const ctl_option_row &row, ctl_options *options) {
    options->given |= row.bit;
    switch (row.bit) {
    case CTL_OPTION_SOCKET:
        options->daemon.socket_path = optarg;
        return true;
    case CTL_OPTION_TIMEOUT:
        return read_bounded(optarg, row, 1, timeout_max_s, &options->daemon.timeout_s);
    case CTL_OPTION_NAMES:
        options->names_path = optarg;
        return true;
    case CTL_OPTION_HOUSEHOLD:
        options->household_path = optarg;
        return true;
    case CTL_OPTION_YESTERDAY:
        options->day = 1;
        return true;
    case CTL_OPTION_RESTORE:
        options->restore_path = optarg;
        return true;
    case CTL_OPTION_PERSON:
        options->person = optarg;
        return true;
    case CTL_OPTION_OUTPUT:
        options->output_path = optarg;
        return true;
    case CTL_OPTION_EXEC:
        options->programs_path = optarg;
        return true;
    case CTL_OPTION_INTERVAL:
        return read_bounded(optarg, row, 1, interval_max_s, &options->interval_s);
    case CTL_OPTION_DAY:
        return read_bounded(optarg, row, 0, day_max, &options->day);
    case CTL_OPTION_WEEK:
        return read_bounded(optarg, row, 0, week_max, &options->week);
    case CTL_OPTION_HISTORY:
        if (optarg != nullptr)
            options->history_unit = optarg;
        return true;
    case CTL_OPTION_DAYS:
    case CTL_OPTION_WEEKS:
        options->history_unit = row.name;
        return true;
    default:
        return true;
    }
}

/// @param value  what getopt_long answered: a colon where a value is missing
ctl_exit unknown_option(const char *word, int value) {
    if (value == ':')
        return ctl_fail(CTL_USAGE, "\"%s\" needs a value\nSee utm_appctl --help", word);
    if (optopt >= first_value)
        return ctl_fail(CTL_USAGE, "\"%s\": this option takes no value\nGive --%s alone", word,
                        row_of(optopt)->name);
    if (word[1] >= '0' && word[1] <= '9')
        // What begins like a number was mostly meant as one.
        return ctl_fail(CTL_USAGE, "\"%s\" is no option\nPut -- in front of a negative number",
                        word);
    char name[40];
    snprintf(name, sizeof(name), "%.*s", static_cast<int>(strcspn(word, "=")), word);
    char dashed[row_count][20];
    const char *known[row_count + 1] = {};
    for (size_t i = 0; i < row_count; ++i) {
        snprintf(dashed[i], sizeof(dashed[i]), "--%s", rows[i].name);
        known[i] = dashed[i];
    }
    return ctl_fail(CTL_USAGE, "\"%s\" is no option\n%s", word,
                    ctl_suggest(name, known, "See utm_appctl --help").text);
}

/// The older spelling of --days and --weeks, "--history weeks". The word may be missing, so the
/// library does not look for it after a blank.
bool is_history_unit(const char *text) {
    return strcmp(text, "days") == 0 || strcmp(text, "weeks") == 0;
}

/// Fills the library's form of the table.
/// @param letters  room for a sign, two characters a row, and the NUL
void library_form(option *longs, char *letters) {
    *letters++ = '-'; // operands are given in order, wherever they stand
    *letters++ = ':'; // complaints are ours
    for (size_t i = 0; i < row_count; ++i) {
        longs[i] = {rows[i].name, rows[i].argument_kind, nullptr,
                    first_value + static_cast<int>(i)};
        if (rows[i].letter == 0)
            continue;
        *letters++ = rows[i].letter;
        if (rows[i].argument_kind == required_argument)
            *letters++ = ':';
    }
    *letters = '\0';
    longs[row_count] = {};
}

/// musl's getopt_long ends at a lone "-", which glibc's takes for the operand that it is.
bool is_lone_dash(int argc, char **argv, int word) {
    return optind == word && word < argc && strcmp(argv[word], "-") == 0;
}

bool has_more_than_one(unsigned bits) {
    return (bits & (bits - 1)) != 0;
}

} // namespace

std::span<const ctl_option_row> ctl_option_rows() {
    return rows;
}

ctl_exit ctl_parse_options(int argc, char **argv, ctl_options *options) {
    option longs[row_count + 1];
    char letters[row_count * 2 + 3];
    library_form(longs, letters);
    options->words = argv;
    opterr = 0;
    bool unit_may_follow = false;
    ctl_exit status = CTL_DONE;
    for (;;) {
        const int word = optind;
        const int value = getopt_long(argc, argv, letters, longs, nullptr);
        if (value == -1 && is_lone_dash(argc, argv, word)) {
            ++optind;
            if (!options->operands.add(argv[word]))
                return ctl_fail(CTL_BROKEN, "out of memory");
            unit_may_follow = false;
            continue;
        }
        if (value == -1)
            break;
        if (value == operand_value) {
            if (unit_may_follow && is_history_unit(optarg))
                options->history_unit = optarg;
            else if (!options->operands.add(optarg))
                return ctl_fail(CTL_BROKEN, "out of memory");
            unit_may_follow = false;
            continue;
        }
        const ctl_option_row *row = row_of(value);
        unit_may_follow = row != nullptr && row->bit == CTL_OPTION_HISTORY && optarg == nullptr;
        // The first complaint is the last. What follows may ask for it as a document.
        if (status != CTL_DONE)
            options->given |= row != nullptr ? row->bit & CTL_OPTION_JSON : 0U;
        else if (row == nullptr)
            status = unknown_option(argv[word], value);
        else if (!take_option(*row, options))
            status = CTL_USAGE;
    }
    for (int i = optind; i < argc; ++i)
        if (!options->operands.add(argv[i]))
            return ctl_fail(CTL_BROKEN, "out of memory");
    return status;
}

bool ctl_options_agree(const ctl_options &options) {
    const unsigned periods = options.given & ctl_period_options;
    const unsigned units = options.given & (CTL_OPTION_DAYS | CTL_OPTION_WEEKS);
    const bool history = options.has(CTL_OPTION_HISTORY);
    if (has_more_than_one(periods))
        ctl_say("--%s and --%s cannot be combined\nGive one of them", ctl_option_name(periods),
                ctl_option_name(periods & (periods - 1)));
    else if (options.has(CTL_OPTION_CSV) && options.has(CTL_OPTION_JSON))
        ctl_say("--csv and --json cannot be combined\nGive one of them");
    else if (periods != 0 && history)
        ctl_say("--%s and --history cannot be combined\nGive one of them",
                ctl_option_name(periods));
    else if (has_more_than_one(units))
        ctl_say("--days and --weeks cannot be combined\nGive one of them");
    else if (units != 0 && !history)
        ctl_say("--%s needs --history\nFor example: utm_appctl usage mia --history --%s",
                ctl_option_name(units), ctl_option_name(units));
    else
        return true;
    return false;
}

const char *ctl_option_name(unsigned bits) {
    for (const ctl_option_row &row : rows)
        if ((bits & row.bit) != 0)
            return row.name;
    return "";
}

void ctl_write_options(FILE *out, unsigned bits) {
    for (const ctl_option_row &row : rows) {
        if ((bits & row.bit) == 0)
            continue;
        const char letter[] = {'-', row.letter, ',', '\0'};
        char name[40];
        snprintf(name, sizeof(name), "--%s%s", row.name, row.argument);
        fprintf(out, "  %3s %-26s %s\n", row.letter != 0 ? letter : "", name, row.help);
    }
}
