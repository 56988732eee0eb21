#include "usage/reports.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "format/day_ring.h"
#include "format/protocol.h"
#include "usage/calendar.h"
#include "usage/top_apps.h"

namespace {

static_assert(UTM_APP_CONFIG_PERIOD_OLDEST_DAY == day_ring_days,
              "a client asks for no day that the ring does not hold");

bool is_period(int32_t period) {
    return (period >= 0 && period <= UTM_APP_CONFIG_PERIOD_OLDEST_DAY) ||
           (period >= UTM_APP_CONFIG_PERIOD_WEEK && period <= UTM_APP_CONFIG_PERIOD_OLDEST_WEEK) ||
           period == UTM_APP_CONFIG_PERIOD_MONTH;
}

/// @return the minutes of a finished week, which starts on a Sunday
/// @param weekday    today's, so that many days of this week are finished
/// @param weeks_ago  1..3
int32_t finished_week(const config_app_usage_t &usage, int32_t weekday,
                      int32_t weeks_ago) UTM_STORE_LOCKED {
    const int32_t latest = weekday + days_per_week * (weeks_ago - 1) + 1;
    return day_ring_sum(usage, latest, latest + days_per_week - 1);
}

int32_t minutes_in_period(const config_app_usage_t &usage, int32_t period,
                          int32_t weekday) UTM_STORE_LOCKED {
    const int64_t this_week = int64_t{usage.weekly_used} + usage.daily_used;
    if (period == UTM_APP_CONFIG_PERIOD_MONTH)
        return saturate(this_week + usage.monthly_used);
    if (period == UTM_APP_CONFIG_PERIOD_WEEK)
        return saturate(this_week);
    if (period > UTM_APP_CONFIG_PERIOD_WEEK)
        return finished_week(usage, weekday, period - UTM_APP_CONFIG_PERIOD_WEEK);
    return period == 0 ? usage.daily_used : day_ring_at(usage, period);
}

/// Copies a profile's figures, in list order. A profile without any has one row of zeros, so that
/// its list is told from that of a profile that is missing.
config_app_minutes_t *copy_app_usage(int32_t profile_id, int32_t period, int32_t weekday,
                                     int32_t *count) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr)
        return nullptr;
    const bool is_unused = list_is_empty(&profile->app_stat_list);
    const int32_t rows = is_unused ? 1 : profile->app_count;
    config_app_minutes_t *pairs = heap_allocate<config_app_minutes_t>(static_cast<size_t>(rows));
    if (pairs == nullptr) {
        utm_app_debug_log("Get app usage of profile %d failed because malloc failed\n", profile_id);
        return nullptr;
    }
    int32_t filled = 0;
    for (const config_app_usage_t &usage : apps_of(profile)) {
        if (filled == rows)
            break;
        pairs[filled++] = {usage.app_id, minutes_in_period(usage, period, weekday)};
    }
    *count = rows;
    return pairs;
}

/// Counted rather than read from `app_count`, which an import may leave higher than the list is
/// long.
int32_t count_apps(config_user_profile_t *profile) UTM_STORE_LOCKED {
    int32_t count = 0;
    for ([[maybe_unused]] const config_app_usage_t &usage : apps_of(profile))
        ++count;
    return count;
}

void fill_row(config_prev_day_row_t *row, const config_app_usage_t &usage, int32_t mode,
              int32_t weekday) UTM_STORE_LOCKED {
    row->app_id = usage.app_id;
    row->current = usage.daily_used;
    if (mode == UTM_APP_CONFIG_PREV_BY_DAY)
        for (int32_t days_ago = 1; days_ago <= day_ring_days; ++days_ago)
            row->previous[days_ago - 1] = day_ring_at(usage, days_ago);
    if (mode != UTM_APP_CONFIG_PREV_BY_WEEK)
        return;
    row->current = saturating_sum(usage.daily_used, day_ring_sum(usage, 1, weekday));
    for (int32_t weeks_ago = 1; weeks_ago <= 3; ++weeks_ago)
        row->previous[weeks_ago - 1] = finished_week(usage, weekday, weeks_ago);
}

} // namespace

int32_t utm_app_get_usage(int32_t profile_id, int32_t *daily, int32_t *weekly, int32_t *monthly) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        utm_app_debug_log("Get usage for profile %d failed because profile is not existed\n",
                          profile_id);
        return -1;
    }
    *daily = profile->daily_used;
    *weekly = profile->weekly_used;
    *monthly = profile->monthly_used;
    return 0;
}

config_app_minutes_t *utm_app_get_app_usage(int32_t profile_id, int32_t period, int32_t *count) {
    *count = -1;
    if (!is_period(period))
        return nullptr;
    config_app_minutes_t *pairs =
        copy_app_usage(profile_id, period, utm_app_current_weekday(), count);
    if (pairs != nullptr)
        qsort(pairs, static_cast<size_t>(*count), sizeof(*pairs),
              compare_config_app_usage_t_assending);
    return pairs;
}

config_prev_day_row_t *utm_app_get_prev_day_usage(int32_t profile_id, int32_t mode,
                                                  int32_t *count) {
    const int32_t weekday = utm_app_current_weekday();
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr)
        return nullptr;
    *count = count_apps(profile);
    if (*count == 0)
        return nullptr;
    config_prev_day_row_t *rows = heap_allocate<config_prev_day_row_t>(static_cast<size_t>(*count));
    if (rows == nullptr) {
        utm_app_debug_log("Get prev day usage for profile %d failed because malloc failed\n",
                          profile_id);
        return nullptr;
    }
    config_prev_day_row_t *row = rows;
    for (const config_app_usage_t &usage : apps_of(profile))
        fill_row(row++, usage, mode, weekday);
    return rows;
}
