#pragma once
/// The parts that a page is made of: text, bars and a chart, as HTML with SVG inside.
///
/// Nothing here checks whether writing succeeds: the stream remembers, and its owner checks it.

#include "client/text.h"
#include "client/usage_document.h"

#include <cstdint>
#include <cstdio>
#include <span>

/// Writes text as a page shows it, in an element or in an attribute between double quotes.
void ctl_put_text(FILE *page, const char *text);

/// Writes an element such as `<td title="90 min">1h30m</td>`.
void ctl_put_minutes(FILE *page, const char *element, int64_t minutes);

/// Write everything before the page's content, and everything after it.
void ctl_begin_page(FILE *page, const char *title);
void ctl_end_page(FILE *page);

/// Writes a bar that says how much of a whole is used. Without a whole, or beyond it, it is full.
/// @param meaning  the same in words
void ctl_put_meter(FILE *page, int64_t minutes, int64_t whole, const char *meaning);

/// Writes a thin bar, as long as its share of the longest one. It stands beside its number, so
/// screen readers pass over it.
void ctl_put_bar(FILE *page, int64_t minutes, int64_t longest);

/// A day of a chart.
struct ctl_day_bar {
    int64_t minutes;
    ctl_day_text name; ///< "Wed 4 Mar", for the tooltip
    ctl_day_text mark; ///< "4 Mar", written below; may be empty
};

/// Writes a bar chart of days, at least one; the last of them is the current one.
/// @param meaning  the same in words
void ctl_put_day_chart(FILE *page, std::span<const ctl_day_bar> days, const char *meaning);

/// Writes a name, which must not turn what stands beside it when it is of another direction.
void ctl_put_name(FILE *page, const char *name);

/// Writes an application's name.
/// @param name  null when it has none
void ctl_put_app_name(FILE *page, const char *name, int32_t app_id);

/// Writes a chart of today and the days before, and what it says in words.
/// @param minutes  `ctl_history_days` of them, by days ago
/// @param time     of today; 0 when it is not known
void ctl_put_history(FILE *page, const int64_t *minutes, int64_t time);
