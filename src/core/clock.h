#pragma once
/// The wall clock, which the daemon reads nowhere else, and the lengths of a day and a week.

#include <cstdint>
#include <sys/time.h>

/// Minutes of a day: the limit that a new profile and its weekdays start with.
inline constexpr int32_t minutes_per_day = 1440;
inline constexpr int32_t days_per_week = 7;

/// @return the wall clock's whole seconds since the epoch, read with `gettimeofday`
inline time_t utm_app_now() {
    timeval now = {};
    gettimeofday(&now, nullptr);
    return now.tv_sec;
}
