#include "tests/lib/render.h"

#include "core/mac.h"
#include "store/store.h"
#include "tests/lib/world.h"

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

/// Says so when a list cannot be walked backwards as it is walked forwards.
std::string links(const config_list_node_t &head) {
    const config_list_node_t *node = &head;
    do {
        if (node->next->prev != node)
            return " ASTRAY list\n";
        node = node->next;
    } while (node != &head);
    return "";
}

/// What a device query would name: the text that a profile keeps is made of this.
std::string addresses(config_user_profile_t &profile) {
    std::string text;
    for (const config_device_t &device : devices_of(&profile))
        text += std::string(mac_digits(device.mac).text) + " ";
    return text;
}

std::string device_list(config_user_profile_t &profile) {
    int32_t count = 0;
    for ([[maybe_unused]] const config_device_t &device : devices_of(&profile))
        ++count;
    const char *kept = profile.device_list_string;
    const std::string really = addresses(profile);
    const bool is_true = count == profile.device_count && really == (kept ? kept : "");
    return "devices " + number(profile.device_count) + " [" +
           (kept == nullptr   ? ""
            : kept[0] == '\0' ? "a text of no length"
                              : kept) +
           "]" + (is_true ? "" : " (really [" + really + "])");
}

std::string app_line(const config_app_usage_t &usage) {
    return "app " + number(usage.app_id) + ": " +
           used(usage.daily_used, usage.weekly_used, usage.monthly_used) + ", blocked " +
           number(usage.blocked) + ", " + ring(usage);
}

bool belong_together(const config_app_usage_t &usage, const config_policy_app_t &entry) {
    return usage.policy_app == &entry && entry.app_usage == &usage && entry.app_id == usage.app_id;
}

/// A link may go to a rule that is no more: it is only followed when the policy has that rule.
std::string rule_of(const config_app_usage_t &usage, config_app_policy_t *policy) {
    if (usage.policy_app == nullptr)
        return "";
    if (policy != nullptr)
        for (const config_policy_app_t &entry : rules_of(policy))
            if (belong_together(usage, entry))
                return ", rule " + rule(entry);
    return ", rule ASTRAY";
}

/// The records of a usage list, one line each.
std::string apps(config_list_node_t *list, config_app_policy_t *policy) {
    std::string text;
    for (const config_app_usage_t &usage : list_range<config_app_usage_t>(list))
        text += "  " + app_line(usage) + rule_of(usage, policy) + "\n";
    return text + links(*list);
}

std::string usage_of(const config_policy_app_t &entry, config_user_profile_t *profile) {
    if (entry.app_usage == nullptr)
        return " (unused)";
    if (profile != nullptr)
        for (const config_app_usage_t &usage : apps_of(profile))
            if (belong_together(usage, entry))
                return "";
    return " ASTRAY";
}

std::string policy_of(config_user_profile_t &profile) {
    if (profile.app_policy == nullptr)
        return "none";
    return number(profile.app_policy->app_policy_id) +
           (profile.app_policy->profile == &profile ? "" : " ASTRAY");
}

std::string policy_line(config_app_policy_t &policy) {
    std::string text = "policy " + number(policy.app_policy_id) + ": profile " +
                       (policy.profile ? number(policy.profile->user_profile_id) : "none") +
                       ", count " + number(policy.app_count) + ", rules";
    for (const config_policy_app_t &entry : rules_of(&policy))
        text += " " + number(entry.app_id) + "/" + rule(entry) + usage_of(entry, policy.profile);
    return text + "\n" + links(policy.app_list);
}

} // namespace

namespace world {

std::string render(const config_app_usage_t &usage) {
    const config_policy_app_t *entry = usage.policy_app;
    if (entry == nullptr)
        return app_line(usage);
    return app_line(usage) + ", rule " + (belong_together(usage, *entry) ? rule(*entry) : "ASTRAY");
}

std::string render(config_user_profile_t &profile) {
    std::string text = "profile " + number(profile.user_profile_id) + ": " + device_list(profile) +
                       ", enabled " + number(profile.daily_limit_enable) + ", limit " +
                       number(profile.daily_limit) + " + " + number(profile.daily_extend) + ", " +
                       used(profile.daily_used, profile.weekly_used, profile.monthly_used) +
                       ", blocked " + number(profile.blocked) + ", collected " +
                       moment(profile.last_collect_ts) + ", apps " + number(profile.app_count) +
                       ", policy " + policy_of(profile) + "\n  weekdays";
    for (const config_weekday_limit_t &day : weekdays_of(&profile))
        text += " " + number(day.day) + ":" + number(day.limit);
    return text + "\n" + links(profile.weekday_list) + links(profile.device_list) +
           apps(&profile.app_stat_list, profile.app_policy);
}

std::string render_profile(int32_t profile_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    return profile ? render(*profile) : "no profile " + number(profile_id) + "\n";
}

std::string render_policy(int32_t policy_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    return policy ? policy_line(*policy) : "no policy " + number(policy_id) + "\n";
}

std::string render_lists() {
    const mutex_guard lock(utm_app_config_mutex);
    std::string text;
    for (config_user_profile_t &profile : all_profiles())
        text += render(profile);
    for (config_app_policy_t &policy : all_policies())
        text += policy_line(policy);
    return text + links(utm_app_config_user_profile_list) + links(utm_app_config_app_policy_list);
}

std::string render_router() {
    const mutex_guard lock(utm_app_config_mutex);
    return "router: apps " + number(utm_app_config_global_app_stat_list_count) + ", collected " +
           moment(utm_app_config_global_app_stat_last_ts) + "\n" +
           apps(&utm_app_config_global_app_stat_list, nullptr);
}

std::string render_store() {
    return render_lists() + render_router();
}

std::string render_apps(int32_t profile_id) {
    const std::string text = render_profile(profile_id);
    const size_t count = text.find("apps ");
    return text.substr(count, text.find(',', count) - count) +
           text.substr(text.find('\n', text.find("  weekdays")));
}

std::string render(const config_app_minutes_t *pairs, int32_t count) {
    if (pairs == nullptr)
        return "none, " + number(count);
    std::string text = number(count) + ":";
    for (int32_t i = 0; i < count; ++i)
        text += " " + number(pairs[i].app_id) + "=" + number(pairs[i].minutes);
    return text;
}

std::string brief(std::string text) {
    for (const std::string part :
         {", enabled 0", ", limit 1440 + 0", ", used 0/0/0", ", blocked 0", ", collected +0",
          ", apps 0", ", policy none", ", days [] next 0",
          "\n  weekdays 0:1440 1:1440 2:1440 3:1440 4:1440 5:1440 6:1440"})
        for (size_t at; (at = text.find(part)) != std::string::npos;)
            text.erase(at, part.size());
    return text;
}

} // namespace world
