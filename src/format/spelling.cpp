#include "format/spelling.h"

#include "core/clock.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

constexpr int64_t minutes_per_hour = 60;

constexpr const char *weekday_names[days_per_week] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};

/// Three letters tell every day from the others.
constexpr size_t weekday_letters = 3;

struct days_word_t {
    const char *word;
    weekday_set_t days;
};

constexpr days_word_t days_words[] = {
    {"all", every_weekday},
    {"weekdays", 0x3e},
    {"weekend", 0x41},
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

const char *skip_blanks(const char *text) {
    return text + strspn(text, " ");
}

/// Reads decimal digits, at least one.
/// @param next  in and out: where they begin and end
/// @param bound  the largest value that is accepted
bool take_digits(const char **next, int64_t bound, int64_t *value) {
    const char *text = *next;
    int64_t sum = 0;
    while (is_digit(*text)) {
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

/// Takes a unit, and the blanks before it, when it is there.
/// @param unit  in lower case
bool take_unit(const char **next, const char *unit) {
    const char *text = skip_blanks(*next);
    const size_t length = strlen(unit);
    if (strncasecmp(text, unit, length) != 0)
        return false;
    *next = text + length;
    return true;
}

bool take_minutes_unit(const char **next) {
    return take_unit(next, "min") || take_unit(next, "m");
}

/// Reads ".5" of an hour.
/// @param next  in and out: behind the full stop
bool take_fraction(const char **next, int64_t *minutes) {
    const char *first = *next;
    int64_t value = 0;
    if (!take_digits(next, 999'999'999, &value))
        return false;
    int64_t parts = 1;
    for (; first != *next && parts < 1'000'000'000; ++first)
        parts *= 10;
    *minutes = value * minutes_per_hour / parts;
    return first == *next && value * minutes_per_hour % parts == 0;
}

/// Reads ":30".
/// @param next  in and out: behind the colon
bool take_clock_minutes(const char **next, int64_t *minutes) {
    const char *first = *next;
    return take_digits(next, minutes_per_hour - 1, minutes) && *next - first == 2;
}

/// Reads what stands behind a number of hours and their unit: nothing, or minutes.
bool take_rest(const char **next, int64_t *minutes) {
    if (**next == '\0')
        return true;
    *next = skip_blanks(*next);
    if (!take_digits(next, minutes_per_hour - 1, minutes))
        return false;
    take_minutes_unit(next);
    return true;
}

/// @return whether a word is the weekday's name, or begins it
bool is_weekday(const char *word, size_t length, int32_t day) {
    const bool is_number = length == 1 && word[0] == '0' + day;
    return is_number || (length >= weekday_letters && length <= strlen(weekday_names[day]) &&
                         strncasecmp(word, weekday_names[day], length) == 0);
}

/// @return the days of one word; 0 when it is none
weekday_set_t days_of(const char *word, size_t length) {
    for (const days_word_t &entry : days_words)
        if (length == strlen(entry.word) && strncasecmp(word, entry.word, length) == 0)
            return entry.days;
    for (int32_t day = 0; day < days_per_week; ++day)
        if (is_weekday(word, length, day))
            return static_cast<weekday_set_t>(1 << day);
    return 0;
}

/// Longer words are nobody's slip of the finger.
constexpr size_t word_max = 31;

bool is_same_letter(char one, char other) {
    return strncasecmp(&one, &other, 1) == 0;
}

/// @return how many letters have to be changed, added, left out or swapped with their neighbour to
///         make one word of the other, whatever the case
size_t distance(const char *one, const char *other) {
    size_t rows[3][word_max + 2] = {};
    const size_t width = strlen(other);
    size_t *before = rows[0];
    size_t *above = rows[1];
    size_t *row = rows[2];
    for (size_t j = 0; j <= width; ++j)
        above[j] = j;
    for (size_t i = 0; one[i] != '\0'; ++i) {
        row[0] = i + 1;
        for (size_t j = 0; j < width; ++j) {
            const size_t changed = is_same_letter(one[i], other[j]) ? 0 : 1;
            row[j + 1] = std::min({above[j + 1] + 1, row[j] + 1, above[j] + changed});
            if (i > 0 && j > 0 && is_same_letter(one[i], other[j - 1]) &&
                is_same_letter(one[i - 1], other[j]))
                row[j + 1] = std::min(row[j + 1], before[j - 1] + 1);
        }
        size_t *const oldest = before;
        before = above;
        above = row;
        row = oldest;
    }
    return above[width];
}

/// One slip in a short word, two in a longer one: with more, anything is near.
size_t slips_allowed(size_t length) {
    return length < 3 ? 0 : length < 6 ? 1 : 2;
}

} // namespace

bool spelling_number(const char *text, int32_t *number) {
    // strtoll would also take blanks in front, or a text without a digit.
    const char *digits = text + (*text == '-' || *text == '+');
    char *end = nullptr;
    errno = 0;
    const long long value = strtoll(text, &end, 10);
    if (!is_digit(*digits) || *end != '\0' || errno != 0 || value < INT32_MIN || value > INT32_MAX)
        return false;
    *number = static_cast<int32_t>(value);
    return true;
}

bool spelling_minutes(const char *text, int32_t *minutes) {
    int64_t whole = 0;
    int64_t rest = 0;
    if (!take_digits(&text, INT32_MAX, &whole))
        return false;
    if (*text == ':') {
        whole *= minutes_per_hour;
        if (!take_clock_minutes(&++text, &rest))
            return false;
    } else if (*text == '.') {
        whole *= minutes_per_hour;
        if (!take_fraction(&++text, &rest) || !take_unit(&text, "h"))
            return false;
    } else if (take_unit(&text, "h")) {
        whole *= minutes_per_hour;
        if (!take_rest(&text, &rest))
            return false;
    } else {
        take_minutes_unit(&text);
    }
    if (*text != '\0' || whole + rest > INT32_MAX)
        return false;
    *minutes = static_cast<int32_t>(whole + rest);
    return true;
}

bool spelling_time_of_day(const char *text, int32_t *minutes) {
    int64_t hours = 0;
    int64_t rest = 0;
    const char *colon = strchr(text, ':');
    if (colon == nullptr || colon - text > 2 || !take_digits(&text, 24, &hours) || text != colon)
        return false;
    if (!take_clock_minutes(&++text, &rest) || *text != '\0')
        return false;
    const int64_t sum = hours * minutes_per_hour + rest;
    if (sum > minutes_per_day)
        return false;
    *minutes = static_cast<int32_t>(sum);
    return true;
}

bool spelling_next_days(const char **text, weekday_set_t *days) {
    const char *word = *text;
    const char *comma = strchr(word, ',');
    const char *end = comma == nullptr ? word + strlen(word) : comma;
    *text = comma == nullptr ? nullptr : skip_blanks(comma + 1);
    while (comma != nullptr && end > word && end[-1] == ' ')
        --end;
    const weekday_set_t found = days_of(word, static_cast<size_t>(end - word));
    if (found == 0)
        return false;
    *days = found;
    return true;
}

bool spelling_days(const char *text, weekday_set_t *days) {
    weekday_set_t sum = 0;
    while (text != nullptr) {
        weekday_set_t next = 0;
        if (!spelling_next_days(&text, &next))
            return false;
        sum |= next;
    }
    *days = sum;
    return true;
}

const char *spelling_weekday(int32_t day) {
    return day >= 0 && day < days_per_week ? weekday_names[day] : "?";
}

bool spelling_switch(const char *text, bool *on) {
    constexpr const char *words[][2] = {
        {"off", "on"}, {"no", "yes"}, {"false", "true"}, {"disabled", "enabled"}, {"0", "1"}};
    for (const auto &pair : words)
        for (const bool value : {false, true})
            if (strcasecmp(text, pair[value]) == 0) {
                *on = value;
                return true;
            }
    return false;
}

const char *spelling_nearest(const char *text, const char *const *words) {
    const size_t length = strlen(text);
    const char *nearest = nullptr;
    size_t least = SIZE_MAX;
    for (; *words != nullptr; ++words) {
        if (length > word_max || strlen(*words) > word_max)
            continue;
        const size_t slips = distance(text, *words);
        if (slips <= slips_allowed(length) && slips < least) {
            least = slips;
            nearest = *words;
        }
    }
    return nearest;
}
