#include "usage/rollover.h"

#include "core/saturate.h"
#include "format/day_ring.h"
#include "store/blocking.h"
#include "usage/calendar.h"

#include <algorithm>

namespace {

/// What has passed between two collections, beside the day.
struct boundary_t {
    bool week;
    bool month;
};

/// A month counts only where a week ends too: front ends show a month as whole weeks.
boundary_t boundary_between(time_t last, time_t now) {
    const bool week = utm_app_is_week_changed(last, now) != 0;
    return {week, week && utm_app_is_month_changed(last, now) != 0};
}

/// Closes the day, and the week and month where they end, in three running figures.
void roll_counters(int32_t *daily, int32_t *weekly, int32_t *monthly, boundary_t boundary) {
    *weekly = saturating_sum(*weekly, *daily);
    *daily = 0;
    if (boundary.week) {
        *monthly = saturating_sum(*monthly, *weekly);
        *weekly = 0;
    }
    if (boundary.month)
        *monthly = 0;
}

void roll_usage(config_app_usage_t *usage, boundary_t boundary) UTM_STORE_LOCKED {
    day_ring_push(usage, usage->daily_used);
    roll_counters(&usage->daily_used, &usage->weekly_used, &usage->monthly_used, boundary);
}

/// Puts today's weekday limit in force; a profile that lacks the entry keeps yesterday's.
void take_weekday_limit(config_user_profile_t *profile) UTM_STORE_LOCKED {
    const int32_t weekday = utm_app_current_weekday();
    for (const config_weekday_limit_t &entry : weekdays_of(profile))
        if (entry.day == weekday) {
            profile->daily_limit = entry.limit;
            return;
        }
}

passed_t passed_between(time_t then, time_t now) {
    if (utm_app_is_year_changed(then, now) != 0 || utm_app_is_month_changed(then, now) != 0)
        return passed_t::month;
    if (utm_app_is_week_changed(then, now) != 0)
        return passed_t::week;
    return utm_app_is_day_changed(then, now) != 0 ? passed_t::day : passed_t::nothing;
}

} // namespace

void utm_app_profile_rollover(config_user_profile_t *profile, time_t now) {
    const time_t last = profile->last_collect_ts;
    if (utm_app_is_day_changed(last, now) == 0)
        return;
    const boundary_t boundary = boundary_between(last, now);
    // First the network, then the figures, last the blocks: the order of the events is visible.
    utm_app_announce_new_day(*profile);
    profile->daily_extend = 0;
    take_weekday_limit(profile);
    roll_counters(&profile->daily_used, &profile->weekly_used, &profile->monthly_used, boundary);
    for (config_app_usage_t &usage : apps_of(profile))
        roll_usage(&usage, boundary);
    utm_app_release_for_new_day(profile);
}

void utm_app_global_rollover(time_t now) {
    const time_t last = utm_app_config_global_app_stat_last_ts;
    if (utm_app_is_day_changed(last, now) == 0)
        return;
    const boundary_t boundary = boundary_between(last, now);
    for (config_app_usage_t &usage : global_apps())
        roll_usage(&usage, boundary);
}

file_age_t utm_app_file_age(time_t then, time_t now) {
    return {utm_app_days_between(then, now), passed_between(then, now)};
}

usage_counters_t utm_app_roll_forward(const usage_counters_t &read, passed_t passed) {
    switch (passed) {
    case passed_t::month:
        return {0, 0, 0};
    case passed_t::week:
        return {0, 0, saturate(int64_t{read.monthly} + read.daily + read.weekly)};
    case passed_t::day:
        return {0, saturating_sum(read.weekly, read.daily), read.monthly};
    case passed_t::nothing:
        break;
    }
    return read;
}

void utm_app_roll_forward(usage_app_t *app, const file_age_t &age) {
    app->used = utm_app_roll_forward(app->used, age.passed);
    if (!app->has_ring)
        return;
    for (int32_t day = 0; day < std::min(age.days, day_ring_days); ++day)
        app->prev_30_days[(app->next_day_idx + day) % day_ring_days] = 0;
    app->next_day_idx =
        static_cast<int32_t>((int64_t{app->next_day_idx} + age.days) % day_ring_days);
}
