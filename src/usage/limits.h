#pragma once
/// A profile's limits: the setters and getters that the front end's commands call.
///
/// A profile is blocked exactly when its daily limit is enabled and today's use has reached its
/// budget (limit plus bonus; equality blocks). While the feature is off, setters store their value
/// and block nothing. Operations return 0 or -1; a getter leaves its out argument alone on -1.

#include "store/store.h"

#include <cstdint>

/// Switches the daily budget on (1) or off (0) and blocks or unblocks the profile accordingly.
[[nodiscard]] int32_t utm_app_set_daily_limit_enable(int32_t profile_id, int32_t enable)
    UTM_EXCLUDES(utm_app_config_mutex);
/// @param enable  out: 0 or 1
[[nodiscard]] int32_t utm_app_get_daily_limit_enable(int32_t profile_id, int32_t *enable)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Sets today's limit and every weekday's with it.
/// @param minutes  1..1440
[[nodiscard]] int32_t utm_app_set_daily_limit(int32_t profile_id, int32_t minutes)
    UTM_EXCLUDES(utm_app_config_mutex);
/// @param minutes  out: today's limit
[[nodiscard]] int32_t utm_app_get_daily_limit(int32_t profile_id, int32_t *minutes)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Sets one weekday's limit, and today's when it is that day.
/// @param weekday  0 (Sunday) to 6
/// @param minutes  1..1440, checked before the weekday
[[nodiscard]] int32_t utm_app_set_weekday_daily_limit(int32_t profile_id, int32_t weekday,
                                                      int32_t minutes)
    UTM_EXCLUDES(utm_app_config_mutex);

/// A weekday and its limit in minutes.
struct config_weekday_pair_t {
    int32_t day;
    int32_t limit;
};

/// Reads the weekday limits in list order.
/// @return `days_per_week` pairs that the caller frees, or null without the profile or memory
[[nodiscard]] config_weekday_pair_t *utm_app_get_weekday_daily_limit(int32_t profile_id)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Adds to today's bonus, which may free a blocked profile at once.
/// @param minutes  1..360 each time; only int32 bounds the sum
[[nodiscard]] int32_t utm_app_add_extend(int32_t profile_id, int32_t minutes)
    UTM_EXCLUDES(utm_app_config_mutex);
/// Takes today's bonus back, which may block the profile at once.
[[nodiscard]] int32_t utm_app_reset_extend(int32_t profile_id) UTM_EXCLUDES(utm_app_config_mutex);
/// @param minutes  out: today's bonus
[[nodiscard]] int32_t utm_app_get_extend(int32_t profile_id, int32_t *minutes)
    UTM_EXCLUDES(utm_app_config_mutex);
