#include "client/text.h"

#include <cstdio>
#include <cstring>

ctl_time_text ctl_time_of(int64_t minutes) {
    ctl_time_text time = {};
    const char *sign = minutes < 0 ? "-" : "";
    const uint64_t size =
        minutes < 0 ? -static_cast<uint64_t>(minutes) : static_cast<uint64_t>(minutes);
    const unsigned long long hours = size / 60;
    const unsigned rest = static_cast<unsigned>(size % 60);
    if (hours == 0)
        snprintf(time.text, sizeof(time.text), "%s%um", sign, rest);
    else if (rest == 0)
        snprintf(time.text, sizeof(time.text), "%s%lluh", sign, hours);
    else
        snprintf(time.text, sizeof(time.text), "%s%lluh%02um", sign, hours, rest);
    return time;
}

tm ctl_local_day(int64_t time, int days_ago) {
    const time_t seconds = static_cast<time_t>(time);
    tm day = {};
    localtime_r(&seconds, &day);
    if (days_ago == 0)
        return day;
    // At noon, since an hour around midnight may be missing or come twice.
    day.tm_mday -= days_ago;
    day.tm_hour = 12;
    day.tm_isdst = -1;
    mktime(&day);
    return day;
}

ctl_day_text ctl_write_day(const tm &day, const char *format) {
    ctl_day_text text = {};
    strftime(text.text, sizeof(text.text), format, &day);
    return text;
}

ctl_day_text ctl_write_date(const tm &day, const char *before, const char *after) {
    ctl_day_text text = ctl_write_day(day, before);
    const size_t length = strlen(text.text);
    snprintf(text.text + length, sizeof(text.text) - length, "%d%s", day.tm_mday,
             ctl_write_day(day, after).text);
    return text;
}
