#include "client/text.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using byte_t = unsigned char;

bool is_continuation(byte_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// By hand, since libc's conversions depend on the locale, which a router may not have.
/// @return bytes of the character that a text begins with; 0 when it is not UTF-8
size_t character_size(const byte_t *text) {
    const byte_t first = text[0];
    const size_t size = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
    for (size_t i = 1; i < size; ++i)
        if (!is_continuation(text[i]))
            return 0;
    // The long spelling of a short character could hide a control character; surrogates and numbers
    // beyond Unicode are no characters at all.
    const bool overlong = (first == 0xE0 && text[1] < 0xA0) || (first == 0xF0 && text[1] < 0x90);
    const bool beyond = (first == 0xED && text[1] >= 0xA0) || (first == 0xF4 && text[1] >= 0x90);
    return overlong || beyond ? 0 : size;
}

/// Also those of two bytes (U+0080 to U+009F): some terminals obey them.
bool is_control(const byte_t *character) {
    return character[0] < 0x20 || character[0] == 0x7F ||
           (character[0] == 0xC2 && character[1] < 0xA0);
}

/// Reads decimal digits, at least one.
/// @param next  in and out: where they begin and end
/// @param bound  the largest value that is accepted
bool parse_digits(const char **next, int64_t bound, int64_t *value) {
    const char *text = *next;
    int64_t sum = 0;
    while (isdigit(static_cast<unsigned char>(*text))) {
        sum = sum * 10 + (*text++ - '0');
        if (sum > bound) // before the next digit could leave 64 bits
            return false;
    }
    if (text == *next)
        return false;
    *next = text;
    *value = sum;
    return true;
}

} // namespace

bool ctl_parse_int(const char *text, int32_t *value) {
    // strtoll would also take blanks in front, or a text without a digit.
    const char *digits = text + (*text == '-' || *text == '+');
    char *end = nullptr;
    errno = 0;
    const long long number = strtoll(text, &end, 10);
    if (*digits < '0' || *digits > '9' || *end != '\0' || errno != 0 || number < INT32_MIN ||
        number > INT32_MAX)
        return false;
    *value = static_cast<int32_t>(number);
    return true;
}

void ctl_copy_clean(char *to, size_t size, const char *from) {
    const byte_t *next = reinterpret_cast<const byte_t *>(from);
    while (*next != '\0') {
        const size_t length = character_size(next);
        const bool bad = length == 0 || is_control(next);
        const size_t written = bad ? 1 : length;
        if (written >= size)
            break;
        if (bad)
            *to = '?';
        else
            memcpy(to, next, length);
        to += written;
        size -= written;
        next += length == 0 ? 1 : length;
    }
    *to = '\0';
}

size_t ctl_text_width(const char *text) {
    size_t width = 0;
    for (; *text != '\0'; ++text)
        width += !is_continuation(static_cast<byte_t>(*text));
    return width;
}

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
        snprintf(time.text, sizeof(time.text), "%s%lluh%um", sign, hours, rest);
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
