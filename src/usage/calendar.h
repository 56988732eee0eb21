#pragma once
/// Calendar arithmetic: which local-time boundaries lie between two instants.
///
/// Every field comes from `localtime` of the machine's zone, so days change at local midnight and
/// follow daylight saving. The functions keep no state and are safe on both threads. The
/// two-instant tests take the earlier instant first; each compares one calendar field and nothing
/// else, which is exact for the instants of consecutive ticks and deliberately narrow for others.

#include <cstdint>
#include <ctime>

/// @return today's `tm_wday`, 0 = Sunday, of the wall clock read afresh
[[nodiscard]] int32_t utm_app_current_weekday();

/// @return 1 if the day of the month differs, else 0: a month later to the day is "the same day"
[[nodiscard]] int32_t utm_app_is_day_changed(time_t last, time_t now);

/// @return 1 if the weekday number went down (Saturday to Sunday, say), else 0
[[nodiscard]] int32_t utm_app_is_week_changed(time_t last, time_t now);

/// @return 1 if the month's number differs, whatever the year, else 0
[[nodiscard]] int32_t utm_app_is_month_changed(time_t last, time_t now);

/// @return 1 if the year differs, else 0
[[nodiscard]] int32_t utm_app_is_year_changed(time_t last, time_t now);

/// Counts leap days up to a month, in floating point.
///
/// The quarter, the hundredth and the four-hundredth are added before the fraction is cut, so
/// some years come out one lower than by whole-number division (2024 gives 490, not 491). Saved
/// figures were rolled forward by this count; it stays as it is.
///
/// @param year   full, such as 2025
/// @param month  1..12; before March the year's own leap day has not come yet
[[nodiscard]] int32_t utm_app_leap_days(int32_t year, int32_t month);

/// @return a day number of the instant's local date, of use only in differences
[[nodiscard]] int64_t utm_app_day_number(time_t instant);

/// @return local calendar days from `a` to `b`, negative when `b` is earlier; -1 also when the
///         difference leaves 32 bits
[[nodiscard]] int32_t utm_app_days_between(time_t a, time_t b);
