#pragma once
/// The report: a usage file as one page for people.

#include "client/message.h"
#include "format/household.h"

#include <cstdio>

/// Reads a usage file and writes a self-contained HTML page of it: no script, and nothing that
/// would be loaded from elsewhere.
///
/// "Today" is the day of the file's timestamp, and its clock is the local one. Nothing is written
/// before the file is known to be good. The caller checks whether the page could be written.
///
/// @param path   a file that the daemon has exported
/// @param household  for names of people and applications; others are shown by their number
/// @return CTL_DONE; CTL_USAGE when the file cannot be read or is not a usage file; CTL_BROKEN when
///         memory ran out; the last two after a message
[[nodiscard]] ctl_exit ctl_write_report(FILE *page, const char *path, const household_t &household);
