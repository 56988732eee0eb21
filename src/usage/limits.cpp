#include "usage/limits.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "store/blocking.h"
#include "usage/calendar.h"

namespace {

/// Minutes of one bonus. Bonuses add up without a bound, so this only stops slips of the hand.
constexpr int32_t extend_max = 360;

bool is_daily_limit(int32_t minutes) {
    return minutes >= 1 && minutes <= minutes_per_day;
}

/// An entry that has this limit already changes nothing, not even today's limit.
void set_weekday(config_user_profile_t *profile, int32_t weekday,
                 int32_t minutes) UTM_STORE_LOCKED {
    for (config_weekday_limit_t &entry : weekdays_of(profile)) {
        if (entry.day != weekday || entry.limit == minutes)
            continue;
        entry.limit = minutes;
        // Only today's entry decides anything before midnight.
        if (weekday != utm_app_current_weekday())
            continue;
        profile->daily_limit = minutes;
        utm_app_enforce_moved_budget(profile);
    }
}

void say_nothing() {}

/// Does something to a profile while the store is held.
/// @param miss  logs that there is no such profile, so that the line comes before anything that
///              happens once the store is free again
/// @return 0, or -1 without the profile
template <typename Act, typename Miss = void (*)()>
int32_t with_profile(int32_t profile_id, Act act, Miss miss = say_nothing)
    UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        miss();
        return -1;
    }
    act(profile);
    return 0;
}

/// Reads one figure of a profile. Most getters say nothing of a profile that is missing; the texts
/// of those that do are different.
template <typename Miss = void (*)()>
int32_t read_figure(int32_t profile_id, int32_t config_user_profile_t::*figure, int32_t *value,
                    Miss miss = say_nothing) UTM_EXCLUDES(utm_app_config_mutex) {
    return with_profile(
        profile_id,
        [=](const config_user_profile_t *profile) UTM_STORE_LOCKED { *value = profile->*figure; },
        miss);
}

/// A limit for every day overwrites all weekdays', also when it is today's limit already.
void set_every_day(config_user_profile_t *profile, int32_t minutes) UTM_STORE_LOCKED {
    if (profile->daily_limit != minutes) {
        profile->daily_limit = minutes;
        utm_app_enforce_moved_budget(profile);
    }
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        entry.limit = minutes;
}

} // namespace

int32_t utm_app_set_daily_limit_enable(int32_t profile_id, int32_t enable) {
    if (enable != 0 && enable != 1) {
        utm_app_debug_log("set daily limit for profile %d failed\n", profile_id);
        return -1;
    }
    return with_profile(profile_id, [=](config_user_profile_t *profile) UTM_STORE_LOCKED {
        // The network is touched on a change alone; the line is written in any case.
        if (profile->daily_limit_enable != enable) {
            profile->daily_limit_enable = enable;
            utm_app_enforce_changed_enable(profile);
        }
        utm_app_debug_log("Set daily limit enable %d for profile %d success\n", enable, profile_id);
    });
}

int32_t utm_app_get_daily_limit_enable(int32_t profile_id, int32_t *enable) {
    if (enable == nullptr) {
        utm_app_debug_log("get daily limit for profile %d enable failed\n", profile_id);
        return -1;
    }
    return read_figure(profile_id, &config_user_profile_t::daily_limit_enable, enable);
}

int32_t utm_app_set_daily_limit(int32_t profile_id, int32_t minutes) {
    if (!is_daily_limit(minutes)) {
        utm_app_debug_log("Set daily limit %d for profile %d failed because range error\n", minutes,
                          profile_id);
        return -1;
    }
    return with_profile(profile_id, [=](config_user_profile_t *profile) UTM_STORE_LOCKED {
        set_every_day(profile, minutes);
        utm_app_debug_log("Set daily limit to %d for profile %d success\n", minutes, profile_id);
    });
}

int32_t utm_app_get_daily_limit(int32_t profile_id, int32_t *minutes) {
    return read_figure(profile_id, &config_user_profile_t::daily_limit, minutes);
}

int32_t utm_app_set_weekday_daily_limit(int32_t profile_id, int32_t weekday, int32_t minutes) {
    // The minutes come first: a request with two errors is logged with this one.
    if (!is_daily_limit(minutes)) {
        utm_app_debug_log("Set weekday daily limit %d for profile %d failed because range error\n",
                          minutes, profile_id);
        return -1;
    }
    if (weekday < 0 || weekday >= days_per_week) {
        utm_app_debug_log("Set weekday %d for profile %d failed because range error\n", weekday,
                          profile_id);
        return -1;
    }
    return with_profile(profile_id, [=](config_user_profile_t *profile) UTM_STORE_LOCKED {
        set_weekday(profile, weekday, minutes);
        utm_app_debug_log("Set weekday daily limit to %d for profile %d success\n", minutes,
                          profile_id);
    });
}

config_weekday_pair_t *utm_app_get_weekday_daily_limit(int32_t profile_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr)
        return nullptr;
    config_weekday_pair_t *pairs = heap_allocate<config_weekday_pair_t>(days_per_week);
    if (pairs == nullptr) {
        utm_app_debug_log("Get weekday daily limit of profile %d failed because malloc failed\n",
                          profile_id);
        return nullptr;
    }
    // Zeros stand where memory was short for an entry: the reply always has seven rows.
    int32_t filled = 0;
    for (const config_weekday_limit_t &entry : weekdays_of(profile)) {
        if (filled == days_per_week)
            break;
        pairs[filled++] = {entry.day, entry.limit};
    }
    return pairs;
}

int32_t utm_app_add_extend(int32_t profile_id, int32_t minutes) {
    if (minutes < 1 || minutes > extend_max) {
        utm_app_debug_log("Add extend %d for profile %d failed because range error\n", minutes,
                          profile_id);
        return -1;
    }
    return with_profile(
        profile_id,
        [=](config_user_profile_t *profile) UTM_STORE_LOCKED {
            profile->daily_extend = saturating_sum(profile->daily_extend, minutes);
            utm_app_enforce_moved_budget(profile);
            utm_app_debug_log("Add extend %d to profile %d, now %d\n", minutes, profile_id,
                              profile->daily_extend);
        },
        [=] {
            utm_app_debug_log("Add extend %d to profile %d failed because profile is not existed\n",
                              minutes, profile_id);
        });
}

int32_t utm_app_reset_extend(int32_t profile_id) {
    return with_profile(
        profile_id,
        [=](config_user_profile_t *profile) UTM_STORE_LOCKED {
            // Whoever has already used the bonus is blocked at once.
            profile->daily_extend = 0;
            utm_app_enforce_moved_budget(profile);
            utm_app_debug_log("Reset profile %d , now %d\n", profile_id, profile->daily_extend);
        },
        [=] {
            utm_app_debug_log("Reset profile %d extend failed because profile is not existed\n",
                              profile_id);
        });
}

int32_t utm_app_get_extend(int32_t profile_id, int32_t *minutes) {
    return read_figure(profile_id, &config_user_profile_t::daily_extend, minutes, [=] {
        utm_app_debug_log("Get extended for profile %d failed because profile is not existed\n",
                          profile_id);
    });
}
