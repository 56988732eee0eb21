#include "tests/model/rules.h"

namespace model {

namespace {

/// What lies between two collections. A month ends only together with a week.
struct passed_t {
    bool day;
    bool week;
    bool month;
};

passed_t passed(time_t last, time_t now) {
    const tm before = date_of(last);
    const tm after = date_of(now);
    const bool week = after.tm_wday < before.tm_wday;
    return {after.tm_mday != before.tm_mday, week, week && after.tm_mon != before.tm_mon};
}

void close(used_t &used, const passed_t &boundary) {
    used.weekly = saturated(int64_t{used.weekly} + used.daily);
    used.daily = 0;
    if (boundary.week) {
        used.monthly = saturated(int64_t{used.monthly} + used.weekly);
        used.weekly = 0;
    }
    if (boundary.month)
        used.monthly = 0;
}

void close(std::vector<app_t> &apps, const passed_t &boundary) {
    for (app_t &app : apps) {
        app.finished_days.push_back(app.used.daily);
        close(app.used, boundary);
    }
}

/// A new day: everything that the old one's limits blocked is free again.
void roll_over(state_t &state, profile_t &profile) {
    const passed_t boundary = passed(profile.collected, state.now);
    if (!boundary.day)
        return;
    const bool has_devices = !profile.devices.empty();
    if (has_devices)
        announce(state, profile, false);
    profile.extend = 0;
    profile.limit = profile.weekdays[static_cast<size_t>(date_of(state.now).tm_wday)];
    close(profile.used, boundary);
    close(profile.apps, boundary);
    if (profile.blocked && has_devices)
        announce(state, profile, false);
    profile.blocked = false;
    for (app_t &app : profile.apps) {
        const rule_t *rule = rule_for(state, profile, app.id);
        if (!app.blocked || rule == nullptr || rule->action != 1)
            continue;
        unblock_app(state, profile, app.id);
        app.blocked = false;
    }
}

app_t &app_with(std::vector<app_t> &apps, int32_t id) {
    if (find_app(apps, id) == nullptr) {
        app_t app;
        app.id = id;
        apps.insert(apps.begin(), app);
    }
    return *find_app(apps, id);
}

void use_app(state_t &state, profile_t &profile, const figure_t &figure) {
    if (find_app(profile.apps, figure.app) == nullptr)
        profile.app_count = saturated(int64_t{profile.app_count} + 1);
    app_t &app = app_with(profile.apps, figure.app);
    app.used.daily = saturated(int64_t{app.used.daily} + figure.minutes);
    const rule_t *rule = rule_for(state, profile, app.id);
    if (!state.active || app.id == 0 || app.blocked || rule == nullptr || rule->action != 1 ||
        app.used.daily < rule->limit)
        return;
    log(state, "Block app %d for profile %d because %d exceed %d", app.id, profile.id,
        app.used.daily, rule->limit);
    block_app(state, profile, app.id);
    app.blocked = true;
}

std::string interval(time_t last, time_t now) {
    return "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":" +
           std::to_string(last - 60) + ",\"e\":" + std::to_string(now - 60);
}

/// @return false when the query could not be made, which ends the pass
bool collect(state_t &state, profile_t &profile) {
    const answer_t answer = ask(state, interval(profile.collected, state.now) + ",\"mac\":\"" +
                                           profile.device_text + "\"}'");
    if (answer.fails) {
        log(state, "Update app status failed because popen failed");
        return false;
    }
    for (const figure_t &figure : answer.figures) {
        if (figure.type.starts_with("APP"))
            use_app(state, profile, figure);
        else if (figure.type.starts_with("INTERNET"))
            use_internet(state, profile, figure.minutes);
    }
    return true;
}

void collect_profiles(state_t &state) {
    for (profile_t &profile : state.profiles) {
        roll_over(state, profile);
        if (!profile.devices.empty() && !collect(state, profile))
            return;
        profile.collected = state.now;
    }
}

void collect_router(state_t &state) {
    const passed_t boundary = passed(state.router_collected, state.now);
    if (boundary.day)
        close(state.router, boundary);
    const answer_t answer = ask(state, interval(state.router_collected, state.now) + "}'");
    if (answer.fails) {
        log(state, "Update global app status failed because popen failed");
        return;
    }
    for (const figure_t &figure : answer.figures)
        if (figure.type.starts_with("APP")) {
            app_t &app = app_with(state.router, figure.app);
            app.used.daily = saturated(int64_t{app.used.daily} + figure.minutes);
        }
    state.router_collected = state.now;
}

} // namespace

void use_internet(state_t &state, profile_t &profile, int32_t minutes) {
    profile.used.daily = saturated(int64_t{profile.used.daily} + minutes);
    const int32_t budget = budget_of(profile);
    if (!state.active || !profile.enabled || profile.blocked || profile.used.daily < budget)
        return;
    log(state, "Block profile %d to use network because %d exceed %d", profile.id,
        profile.used.daily, budget);
    announce(state, profile, true);
    profile.blocked = true;
}

void tick(state_t &state) {
    collect_profiles(state);
    collect_router(state);
    check_export(state);
}

} // namespace model
