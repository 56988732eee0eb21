#pragma once
/// Bar charts for a terminal: a line per bar, the oldest first.

#include "client/exit_status.h"
#include "client/growing.h"
#include "client/table.h"

#include <cstdint>

struct ctl_bar {
    ctl_cell label;
    int64_t minutes;
    bool is_present; ///< the day or week that is not over yet: in another colour
};

using ctl_bars = ctl_growing<ctl_bar>;

/// How a chart is drawn.
struct ctl_style {
    bool utf8;   ///< eighths of a block; else number signs
    bool colour; ///< on a terminal, where nobody asked to leave it out
    int columns; ///< of the terminal; 80 where there is none
};

/// Finds out what standard output takes. The locale must be set.
/// @param ascii  plain ASCII, whatever the locale
[[nodiscard]] ctl_style ctl_style_of_output(bool ascii);

/// Prints the bars on standard output, the longest as wide as the line has room.
void ctl_print_bars(const ctl_bars &bars, const ctl_style &style);
