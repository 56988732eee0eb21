#include "tests/unit/support/render.h"

#include "store/store.h"
#include "tests/unit/support/world.h"

#include <cstdio>

namespace {

std::string number(int64_t value) {
    return std::to_string(value);
}

std::string moment(int64_t seconds) {
    char text[32];
    snprintf(text, sizeof(text), "%+lld", static_cast<long long>(seconds - world::default_now));
    return text;
}

std::string used(int32_t daily, int32_t weekly, int32_t monthly) {
    return "used " + number(daily) + "/" + number(weekly) + "/" + number(monthly);
}

std::string ring(const config_app_usage_t &usage) {
    std::string text;
    for (int slot = 0; slot < day_ring_days; ++slot)
        if (usage.prev_30_days[slot] != 0)
            text +=
                (text.empty() ? "" : " ") + number(slot) + ":" + number(usage.prev_30_days[slot]);
    return "days [" + text + "] next " + number(usage.next_day_idx);
}

std::string rule(const config_policy_app_t &entry) {
    return number(entry.action) + "/" + number(entry.daily_limit);
}

/// The records of a usage list, one line each; a link that only goes one way shows.
std::string apps(config_list_node_t *list) {
    std::string text;
    for (const config_app_usage_t &usage : list_range<config_app_usage_t>(list))
        text += "  " + world::render(usage) + "\n";
    return text;
}

std::string render_policy(config_app_policy_t &policy) {
    std::string text = "policy " + number(policy.app_policy_id) + ": profile " +
                       (policy.profile ? number(policy.profile->user_profile_id) : "none") +
                       ", count " + number(policy.app_count) + ", rules";
    for (const config_policy_app_t &entry : rules_of(&policy)) {
        const bool is_half_linked = entry.app_usage && entry.app_usage->policy_app != &entry;
        text += " " + number(entry.app_id) + "/" + rule(entry) +
                (entry.app_usage ? "" : " (unused)") + (is_half_linked ? " (half linked)" : "");
    }
    return text + "\n";
}

} // namespace

namespace world {

std::string render(const config_app_usage_t &usage) {
    const config_policy_app_t *entry = usage.policy_app;
    const bool is_half_linked = entry && entry->app_usage != &usage;
    return "app " + number(usage.app_id) + ": " +
           used(usage.daily_used, usage.weekly_used, usage.monthly_used) + ", blocked " +
           number(usage.blocked) + ", " + ring(usage) + (entry ? ", rule " + rule(*entry) : "") +
           (is_half_linked ? " (half linked)" : "");
}

std::string render(config_user_profile_t &profile) {
    int32_t devices = 0;
    for ([[maybe_unused]] const config_device_t &device : devices_of(&profile))
        ++devices;
    std::string text =
        "profile " + number(profile.user_profile_id) + ": devices " + number(profile.device_count) +
        (devices == profile.device_count ? "" : " (really " + number(devices) + ")") + " [" +
        (profile.device_list_string ? profile.device_list_string : "") + "], enabled " +
        number(profile.daily_limit_enable) + ", limit " + number(profile.daily_limit) + " + " +
        number(profile.daily_extend) + ", " +
        used(profile.daily_used, profile.weekly_used, profile.monthly_used) + ", blocked " +
        number(profile.blocked) + ", collected " + moment(profile.last_collect_ts) + ", apps " +
        number(profile.app_count) + ", policy " +
        (profile.app_policy ? number(profile.app_policy->app_policy_id) : "none") + "\n  weekdays";
    for (const config_weekday_limit_t &day : weekdays_of(&profile))
        text += " " + number(day.day) + ":" + number(day.limit);
    return text + "\n" + apps(&profile.app_stat_list);
}

std::string render_router() {
    const mutex_guard lock(utm_app_config_mutex);
    return "router: apps " + number(utm_app_config_global_app_stat_list_count) + ", collected " +
           moment(utm_app_config_global_app_stat_last_ts) + "\n" +
           apps(&utm_app_config_global_app_stat_list);
}

std::string render_store() {
    std::string text;
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_user_profile_t &profile : all_profiles())
            text += render(profile);
        for (config_app_policy_t &policy : all_policies())
            text += render_policy(policy);
    }
    return text + render_router();
}

} // namespace world
