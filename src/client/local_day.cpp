#include "client/local_day.h"

#include <cstdio>

/// `strftime` pads a day of one figure, so the day is put in by hand.
static ctl_day_text day_text(const tm &day, const char *before, const char *after) {
    char first[24] = "";
    char last[24] = "";
    ctl_day_text text = {};
    strftime(first, sizeof first, before, &day);
    strftime(last, sizeof last, after, &day);
    snprintf(text.text, sizeof text.text, "%s%d%s", first, day.tm_mday, last);
    return text;
}

tm ctl_local_day(int64_t time, int days_ago) {
    const time_t seconds = static_cast<time_t>(time);
    tm day = {};
    localtime_r(&seconds, &day);
    if (days_ago == 0)
        return day;
    day.tm_mday -= days_ago;
    day.tm_hour = 12;
    day.tm_isdst = -1;
    mktime(&day);
    return day;
}

ctl_day_text ctl_short_day(const tm &day) {
    return day_text(day, "", " %b");
}

ctl_day_text ctl_weekday_day(const tm &day) {
    return day_text(day, "%a ", " %b");
}

ctl_day_text ctl_long_day(const tm &day) {
    return day_text(day, "%A, ", " %B %Y");
}

ctl_day_text ctl_clock_time(const tm &day) {
    ctl_day_text text = {};
    strftime(text.text, sizeof text.text, "%H:%M", &day);
    return text;
}
