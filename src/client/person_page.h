#pragma once
/// One person's page: what is left of today, and nothing about anybody else, so that it may be
/// shown to whoever asks.

#include "client/standing.h"
#include "client/usage_document.h"
#include "format/household.h"

#include <cstdio>

/// What the page shows.
struct ctl_person_day {
    household_name_t name;
    int64_t time; ///< seconds since the epoch; 0 when it is not known
    usage_counters_t used;
    bool limits_on; ///< else nothing is limited or blocked. A usage file does not tell
    bool has_limit; ///< there is one, and it cuts off
    int64_t limit;
    int64_t extend;
    bool cut_off;
    ctl_app_standings apps;                 ///< those that have a rule
    int64_t history[ctl_history_days] = {}; ///< the total of all applications, by days ago
};

/// Asks the daemon for a person's day. It is not made to export anything, so this works while
/// limits are off and leaves the daemon's schedule alone.
/// @return CTL_DONE, or the status to end with, after a message
[[nodiscard]] ctl_exit ctl_ask_person_day(const ctl_daemon &daemon, const household_t &household,
                                          int32_t number, ctl_person_day *day);

/// Takes a person's day from a usage file.
/// @return CTL_DONE, or the status to end with, after a message: also when the file has nobody of
///         that number
[[nodiscard]] ctl_exit ctl_read_person_day(const char *path, const household_t &household,
                                           int32_t number, ctl_person_day *day);

/// Writes the page.
void ctl_write_person_page(FILE *page, const ctl_person_day &day, const household_t &household);
