#include "tests/model/rules.h"

namespace model {

namespace {

void set_blocked(state_t &state, profile_t &profile, bool blocked) {
    if (profile.blocked == blocked)
        return;
    announce(state, profile, blocked);
    profile.blocked = blocked;
}

/// After a change of the budget: a profile is blocked exactly while it has used it up.
void judge(state_t &state, profile_t &profile) {
    if (state.active && profile.enabled)
        set_blocked(state, profile, profile.used.daily >= budget_of(profile));
}

} // namespace

int32_t budget_of(const profile_t &profile) {
    return saturated(int64_t{profile.limit} + profile.extend);
}

bool enable_limit(state_t &state, int32_t id, int32_t enable) {
    if (enable != 0 && enable != 1) {
        log(state, "set daily limit for profile %d failed", id);
        return false;
    }
    profile_t *profile = find_profile(state, id);
    if (profile == nullptr)
        return false;
    if (profile->enabled != (enable == 1)) {
        profile->enabled = enable == 1;
        if (state.active && !profile->enabled)
            set_blocked(state, *profile, false);
        if (state.active && profile->enabled && profile->used.daily >= budget_of(*profile))
            set_blocked(state, *profile, true);
    }
    log(state, "Set daily limit enable %d for profile %d success", enable, id);
    return true;
}

bool set_limit(state_t &state, int32_t id, int32_t minutes) {
    if (minutes < 1 || minutes > 1440) {
        log(state, "Set daily limit %d for profile %d failed because range error", minutes, id);
        return false;
    }
    profile_t *profile = find_profile(state, id);
    if (profile == nullptr)
        return false;
    if (profile->limit != minutes) {
        profile->limit = minutes;
        judge(state, *profile);
    }
    profile->weekdays.fill(minutes);
    log(state, "Set daily limit to %d for profile %d success", minutes, id);
    return true;
}

bool set_weekday_limit(state_t &state, int32_t id, int32_t weekday, int32_t minutes) {
    if (minutes < 1 || minutes > 1440) {
        log(state, "Set weekday daily limit %d for profile %d failed because range error", minutes,
            id);
        return false;
    }
    if (weekday < 0 || weekday > 6) {
        log(state, "Set weekday %d for profile %d failed because range error", weekday, id);
        return false;
    }
    profile_t *profile = find_profile(state, id);
    if (profile == nullptr)
        return false;
    int32_t &limit = profile->weekdays[static_cast<size_t>(weekday)];
    const bool is_new = limit != minutes;
    limit = minutes;
    if (is_new && weekday == date_of(state.now).tm_wday) {
        profile->limit = minutes;
        judge(state, *profile);
    }
    log(state, "Set weekday daily limit to %d for profile %d success", minutes, id);
    return true;
}

bool add_extend(state_t &state, int32_t id, int32_t minutes) {
    if (minutes < 1 || minutes > 360) {
        log(state, "Add extend %d for profile %d failed because range error", minutes, id);
        return false;
    }
    profile_t *profile = find_profile(state, id);
    if (profile == nullptr) {
        log(state, "Add extend %d to profile %d failed because profile is not existed", minutes,
            id);
        return false;
    }
    profile->extend = saturated(int64_t{profile->extend} + minutes);
    judge(state, *profile);
    log(state, "Add extend %d to profile %d, now %d", minutes, id, profile->extend);
    return true;
}

bool reset_extend(state_t &state, int32_t id) {
    profile_t *profile = find_profile(state, id);
    if (profile == nullptr) {
        log(state, "Reset profile %d extend failed because profile is not existed", id);
        return false;
    }
    profile->extend = 0;
    judge(state, *profile);
    log(state, "Reset profile %d , now 0", id);
    return true;
}

bool switch_feature(state_t &state, int32_t value) {
    if (value != 0 && value != 1)
        return false;
    const bool old = state.active;
    const bool on = value == 1;
    const bool lacks_file = on && !old && !state.files.contains(own_path);
    state.active = on;
    if (on != old) {
        guard(state, on);
        state.trace += on ? "status_changed 1 1\n" : "status_changed 1 0\n";
        for (const profile_t &profile : state.profiles) {
            if (profile.enabled && profile.blocked)
                announce(state, profile, on);
            for (const app_t &app : profile.apps)
                if (app.blocked && on)
                    block_app(state, profile, app.id);
                else if (app.blocked)
                    unblock_app(state, profile, app.id);
            if (!on && profile.policy)
                reset_devices(state, profile);
        }
    }
    log(state, "Set activate from %d to %d", old, value);
    if (lacks_file)
        export_to(state, own_path, true);
    return true;
}

} // namespace model
