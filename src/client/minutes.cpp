#include "client/minutes.h"

#include <cctype>
#include <cstdio>

/// Reads decimal digits, at least one.
/// @param next  in and out: where they begin and end
/// @param bound  the largest value that is accepted
static bool parse_digits(const char **next, int64_t bound, int64_t *value) {
    const char *text = *next;
    int64_t sum = 0;
    while (isdigit(static_cast<unsigned char>(*text))) {
        sum = sum * 10 + (*text++ - '0');
        if (sum > bound)
            return false;
    }
    if (text == *next)
        return false;
    *next = text;
    *value = sum;
    return true;
}

ctl_time_text ctl_time_of(int64_t minutes) {
    ctl_time_text time = {};
    const char *sign = minutes < 0 ? "-" : "";
    const uint64_t size =
        minutes < 0 ? -static_cast<uint64_t>(minutes) : static_cast<uint64_t>(minutes);
    const unsigned long long hours = size / 60;
    const unsigned rest = static_cast<unsigned>(size % 60);
    if (hours == 0)
        snprintf(time.text, sizeof time.text, "%s%um", sign, rest);
    else if (rest == 0)
        snprintf(time.text, sizeof time.text, "%s%lluh", sign, hours);
    else
        snprintf(time.text, sizeof time.text, "%s%lluh%um", sign, hours, rest);
    return time;
}

bool ctl_parse_minutes(const char *text, int32_t *minutes) {
    int64_t first = 0;
    int64_t rest = 0;
    if (!parse_digits(&text, INT32_MAX, &first))
        return false;
    if (*text == 'h') {
        ++text;
        first *= 60;
        if (*text != '\0' && (!parse_digits(&text, 59, &rest) || *text != 'm'))
            return false;
    }
    if (*text == 'm')
        ++text;
    if (*text != '\0' || first + rest > INT32_MAX)
        return false;
    *minutes = static_cast<int32_t>(first + rest);
    return true;
}
