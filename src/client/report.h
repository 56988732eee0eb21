#pragma once
/// The report: a usage file as one page for people.

#include "client/message.h"
#include "client/names.h"

#include <cstdio>

/// Reads a usage file and writes a self-contained HTML page of it: no script, and nothing that
/// would be loaded from elsewhere.
///
/// "Today" is the day of the file's timestamp, and its clock is the local one. Nothing is written
/// before the file is known to be good. Whether the page could be written is the caller's to ask.
///
/// @param path   a file that the daemon has exported
/// @param names  what to call applications; others go by their number
/// @return CTL_DONE; CTL_USAGE when the file cannot be read or is not a usage file; CTL_BROKEN when
///         memory ran out; said why
[[nodiscard]] ctl_exit ctl_write_report(FILE *page, const char *path, const ctl_app_names &names);
