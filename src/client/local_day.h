#pragma once
/// Days of the local calendar, as the page names them.

#include <cstdint>
#include <ctime>

/// A date's text; "Wednesday, 4 March 2026, 12:00" and room for any year.
struct ctl_day_text {
    char text[64];
};

/// @return the local day that lies so many days before a time, at noon: there no change of the
///         clocks leads to another day. For 0 days it is the time itself
tm ctl_local_day(int64_t time, int days_ago);

/// @return "4 Mar"
ctl_day_text ctl_short_day(const tm &day);
/// @return "Wed 4 Mar"
ctl_day_text ctl_weekday_day(const tm &day);
/// @return "Wednesday, 4 March 2026"
ctl_day_text ctl_long_day(const tm &day);
/// @return "12:00"
ctl_day_text ctl_clock_time(const tm &day);
