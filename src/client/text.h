#pragma once
/// Text from outside, made safe for a terminal, a JSON document and a page; and numbers, times and
/// days as people write and read them.

#include <cstddef>
#include <cstdint>
#include <ctime>

/// Reads a whole number that fits in 32 bits, with an optional sign and nothing around it.
[[nodiscard]] bool ctl_parse_int(const char *text, int32_t *value);

/// Copies a text, cut to its room at a character's border. Control characters and bytes that are
/// no UTF-8 become question marks: a name must not be able to steer a terminal.
/// @param size  bytes at `to`, the NUL included
void ctl_copy_clean(char *to, size_t size, const char *from);

/// @return columns that clean text takes on a terminal, counting one per character
size_t ctl_text_width(const char *text);

/// Room for a time as text, its NUL included: "-153722867280912930h7m".
struct ctl_time_text {
    char text[28];
};

/// @return "1h30m", "2h", "45m", "0m"
ctl_time_text ctl_time_of(int64_t minutes);

/// Reads "90", "90m", "2h" or "1h30m". The daemon decides whether the number makes sense;
/// after hours there are at most 59.
/// @param minutes  out: 0 to INT32_MAX, untouched on failure
[[nodiscard]] bool ctl_parse_minutes(const char *text, int32_t *minutes);

/// A date's text: "Wednesday, 4 March 2026, 12:00" and room for any year.
struct ctl_day_text {
    char text[64];
};

/// @return the local day that many days before a time, about noon: there no change of the
///         clocks leads to another day. For 0 days it is the time itself
tm ctl_local_day(int64_t time, int days_ago);

/// @param format  as `strftime` has it
__attribute__((format(strftime, 2, 0))) ctl_day_text ctl_write_day(const tm &day,
                                                                   const char *format);

/// Writes a date with the day of the month as people do, "4": `strftime` can only pad it.
/// @param before, after  the text on either side of it, as `strftime` has it
ctl_day_text ctl_write_date(const tm &day, const char *before, const char *after);
