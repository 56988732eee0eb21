#pragma once
/// Reports: what a profile and its applications have used, now and on earlier days.

#include "store/store.h"

#include <cstdint>

/// Reads a profile's counters, in minutes.
/// @return 0, or -1 without the profile, leaving the out arguments alone
[[nodiscard]] int32_t utm_app_get_usage(int32_t profile_id, int32_t *daily, int32_t *weekly,
                                        int32_t *monthly) UTM_EXCLUDES(utm_app_config_mutex);

/// Reads each application's minutes in one period, most used first.
///
/// | period     | minutes                                                        |
/// |------------|----------------------------------------------------------------|
/// | 0          | today                                                          |
/// | 1 .. 30    | that many days ago                                             |
/// | 1000       | this week                                                      |
/// | 1001..1003 | the week that many weeks ago                                   |
/// | 2000       | this month                                                     |
///
/// @param count  out: the profile's application count, which imported lists may fall short of
///               (the rest is zero pairs); 1 with a pair of zeros when it has no applications;
///               -1 on failure
/// @return pairs that the caller frees; null for another period, no profile or no memory
[[nodiscard]] config_app_minutes_t *utm_app_get_app_usage(int32_t profile_id, int32_t period,
                                                          int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);

/// One application's row of the previous-usage report.
struct config_prev_day_row_t {
    int32_t app_id;
    int32_t current;                 ///< today's minutes by day, this week's by week
    int32_t previous[day_ring_days]; ///< by day: yesterday first; by week: three weeks, then zeros
};

inline constexpr int32_t prev_usage_by_day = 0;
inline constexpr int32_t prev_usage_by_week = 1;

/// Reads each application's use today and on finished days, in list order.
/// @param mode   `prev_usage_by_day` or `prev_usage_by_week`; any other leaves `previous` zero
/// @param count  out: rows, that is, records in the profile's list (an imported profile's
///               application count may be larger); untouched without the profile
/// @return rows that the caller frees; null without the profile, applications or memory
[[nodiscard]] config_prev_day_row_t *utm_app_get_prev_day_usage(int32_t profile_id, int32_t mode,
                                                                int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);
