#pragma once
/// How people write numbers, times, days and switches: on a command line and in a household file
/// alike.

#include <cstdint>

/// Reads a whole number that fits in 32 bits, with an optional sign and nothing around it.
/// @param number  out: untouched on failure
[[nodiscard]] bool spelling_number(const char *text, int32_t *number);

/// Reads minutes: "90", "90m", "90min", "2h", "1h30m", "1h30", "1h 30m", "2.5h", "2:30", in any
/// case. After hours there are at most 59; a fraction has to make whole minutes.
/// @param minutes  out: 0 to INT32_MAX, untouched on failure
[[nodiscard]] bool spelling_minutes(const char *text, int32_t *minutes);

/// Reads a time of day, "0:00" to "24:00", with one or two digits in front of the colon.
/// @param minutes  out: since midnight, untouched on failure
[[nodiscard]] bool spelling_time_of_day(const char *text, int32_t *minutes);

/// Bits of weekdays: bit 0 is Sunday.
using weekday_set_t = uint8_t;

inline constexpr weekday_set_t every_weekday = 0x7f;

/// Reads weekdays: English names of which three letters are enough, numbers from 0 (Sunday) to 6,
/// "weekdays" (Monday to Friday), "weekend", "all", or several of them with commas, in any case.
/// @param days  out: at least one, untouched on failure
[[nodiscard]] bool spelling_days(const char *text, weekday_set_t *days);

/// Takes the first of several weekdays off a text of `spelling_days`: a day, or a group of them.
/// @param text  in and out: what is left, null at the end; anything on failure
/// @param days  out: at least one, untouched on failure
[[nodiscard]] bool spelling_next_days(const char **text, weekday_set_t *days);

/// @return "Sunday" for 0 and so on; "?" when there is no such day
[[nodiscard]] const char *spelling_weekday(int32_t day);

/// Reads "on", "yes", "true", "enabled" or "1", and their opposites, in any case.
/// @param on  out: untouched on failure
[[nodiscard]] bool spelling_switch(const char *text, bool *on);

/// @return the word of the list that somebody who typed the text most likely meant; null when none
///         is near
/// @param words  ends with null
[[nodiscard]] const char *spelling_nearest(const char *text, const char *const *words);
