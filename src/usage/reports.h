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
/// @param period  a day, week or month as the wire numbers them (UTM_APP_CONFIG_PERIOD_...)
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

/// Reads each application's use today and on finished days, in list order.
/// @param mode   UTM_APP_CONFIG_PREV_BY_DAY or _BY_WEEK; any other leaves `previous` zero
/// @param count  out: rows, that is, records in the profile's list (an imported profile's
///               application count may be larger); untouched without the profile
/// @return rows that the caller frees; null without the profile, applications or memory
[[nodiscard]] config_prev_day_row_t *utm_app_get_prev_day_usage(int32_t profile_id, int32_t mode,
                                                                int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);
