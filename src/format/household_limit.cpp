/// A person's limit: one time, or times by days, of which a day beats a group and a group "all".

#include "format/household_reader.h"
#include "format/spelling.h"

#include <bit>

namespace {

/// How closely a word names a day.
enum rank_t : size_t { RANK_ALL, RANK_GROUP, RANK_DAY, RANK_COUNT };

struct limit_reading_t {
    int32_t *weekday_limits;
    weekday_set_t named[RANK_COUNT];
};

rank_t rank_of(weekday_set_t days) {
    return std::has_single_bit(days) ? RANK_DAY : days == every_weekday ? RANK_ALL : RANK_GROUP;
}

/// @return those of the days that have been named as closely before
weekday_set_t enter(limit_reading_t *reading, weekday_set_t days, int32_t minutes) {
    const rank_t rank = rank_of(days);
    weekday_set_t closer = 0;
    for (size_t i = rank + 1; i < RANK_COUNT; ++i)
        closer |= reading->named[i];
    for (int32_t day = 0; day < days_per_week; ++day)
        if ((days & ~closer) >> day & 1)
            reading->weekday_limits[day] = minutes;
    const weekday_set_t twice = days & reading->named[rank];
    reading->named[rank] |= days;
    return twice;
}

/// @return minutes; a whole day after an objection
int32_t read_time(household_reader_t *reader, const household_place_t &place, json_object *value) {
    int32_t minutes = household_no_limit;
    if (!household_is_word(value, "none"))
        static_cast<void>(household_read_minutes(reader, place, value, "\"none\"", &minutes));
    return minutes;
}

void object_to_days(household_reader_t *reader, const household_place_t &place, const char *key) {
    constexpr const char *words[] = {"all",    "weekdays", "weekend",   "sunday",
                                     "monday", "tuesday",  "wednesday", "thursday",
                                     "friday", "saturday", nullptr};
    household_object_to(
        reader, &place,
        "%s are no days: give such as \"friday\", \"sat,sun\", \"weekend\" or \"all\"%s",
        household_quote(key).text, household_hint(spelling_nearest(key, words)).text);
}

/// Reads one member of an object of times.
void read_days(household_reader_t *reader, const household_place_t &limit, const char *key,
               json_object *value, limit_reading_t *reading) {
    weekday_set_t days = 0;
    if (!spelling_days(key, &days)) {
        object_to_days(reader, limit, key);
        return;
    }
    const household_place_t place = {&limit, key, 0};
    const int32_t minutes = read_time(reader, place, value);
    weekday_set_t twice = 0;
    for (const char *next = key; next != nullptr && spelling_next_days(&next, &days);)
        twice |= enter(reading, days, minutes);
    if (twice != 0)
        household_object_to(reader, &place, "%s has a limit twice",
                            spelling_weekday(std::countr_zero(twice)));
}

} // namespace

void household_read_limit(household_reader_t *reader, const household_place_t &place,
                          json_object *value, void *record) {
    limit_reading_t reading = {static_cast<int32_t *>(record), {}};
    if (!json_object_is_type(value, json_type_object)) {
        enter(&reading, every_weekday, read_time(reader, place, value));
        return;
    }
    json_object_object_foreach(value, key, member) read_days(reader, place, key, member, &reading);
}
