#pragma once
/// Times and days as people read them.

#include <cstdint>
#include <ctime>

/// Room for a time as text, its NUL included: "-153722867280912930h07m".
struct ctl_time_text {
    char text[29];
};

/// @return "1h30m", "2h07m", "2h", "45m", "0m"
ctl_time_text ctl_time_of(int64_t minutes);

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
