#include "client/chart.h"

#include "client/minutes.h"
#include "client/text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int columns_unless_told = 80;
constexpr int bar_columns_least = 10;
/// Some terminals are very wide; a bar of more tells nothing more.
constexpr int bar_columns_most = 100;

constexpr char past_colour[] = "\033[36m";
constexpr char present_colour[] = "\033[33m";
constexpr char no_colour[] = "\033[0m";

/// A block of 1 to 7 eighths of a column, then a whole one.
constexpr const char *eighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█"};

bool is_set(const char *variable) {
    const char *value = getenv(variable);
    return value != nullptr && value[0] != '\0';
}

int terminal_columns() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const char *columns = getenv("COLUMNS");
    int32_t number = 0;
    if (columns != nullptr && ctl_parse_int(columns, &number) && number > 0)
        return number;
    return columns_unless_told;
}

/// What stands in front of the bars, in columns.
struct layout {
    int label;
    int number;
    int time;
    int bar;
    int64_t largest;
};

int number_width(int64_t number) {
    return snprintf(nullptr, 0, "%lld", static_cast<long long>(number));
}

layout layout_of(const ctl_bars &bars, int columns) {
    layout of = {};
    for (const ctl_bar &bar : bars) {
        of.label = std::max(of.label, static_cast<int>(ctl_text_width(bar.label.text)));
        of.number = std::max(of.number, number_width(bar.minutes));
        of.time = std::max(of.time, static_cast<int>(strlen(ctl_time_of(bar.minutes).text)));
        of.largest = std::max(of.largest, bar.minutes);
    }
    const int blanks = 6; // two between columns
    of.bar = std::clamp(columns - of.label - of.number - of.time - blanks, bar_columns_least,
                        bar_columns_most);
    return of;
}

/// @return eighths of a column; whatever was used at all shows
int bar_length(int64_t minutes, const layout &of) {
    if (minutes <= 0)
        return 0;
    const double share = static_cast<double>(minutes) / static_cast<double>(of.largest);
    return std::max(1, static_cast<int>(share * of.bar * 8 + 0.5));
}

void print_bar(int length, bool utf8) {
    const int whole = utf8 ? length / 8 : (length + 7) / 8;
    for (int i = 0; i < whole; ++i)
        fputs(utf8 ? eighths[8] : "#", stdout);
    if (utf8)
        fputs(eighths[length % 8], stdout);
}

void print_line(const ctl_bar &bar, const layout &of, const ctl_style &style) {
    const int padding = of.label - static_cast<int>(ctl_text_width(bar.label.text));
    const int length = bar_length(bar.minutes, of);
    printf("%s%*s  %*lld  %*s", bar.label.text, padding, "", of.number,
           static_cast<long long>(bar.minutes), of.time, ctl_time_of(bar.minutes).text);
    if (length > 0) {
        fputs("  ", stdout);
        if (style.colour)
            fputs(bar.is_present ? present_colour : past_colour, stdout);
        print_bar(length, style.utf8);
        if (style.colour)
            fputs(no_colour, stdout);
    }
    putchar('\n');
}

} // namespace

ctl_style ctl_style_of_output(bool ascii) {
    const char *terminal = getenv("TERM");
    const bool is_dumb = terminal != nullptr && strcmp(terminal, "dumb") == 0;
    return {.utf8 = !ascii && strcmp(nl_langinfo(CODESET), "UTF-8") == 0,
            .colour = isatty(STDOUT_FILENO) != 0 && !is_set("NO_COLOR") && !is_dumb,
            .columns = terminal_columns()};
}

void ctl_print_bars(const ctl_bars &bars, const ctl_style &style) {
    const layout of = layout_of(bars, style.columns);
    for (const ctl_bar &bar : bars)
        print_line(bar, of, style);
}
