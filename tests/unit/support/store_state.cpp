#include "tests/unit/support/store_state.h"

#include "store/store.h"

#include <cstdarg>
#include <cstdio>

namespace {

__attribute__((format(printf, 1, 2))) std::string text(const char *format, ...) {
    char buffer[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

std::string address_of(const uint8_t *mac) {
    return text("%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
}

/// Says so when a ring cannot be walked backwards as it is walked forwards.
std::string ring_text(const config_list_node_t *head) {
    const config_list_node_t *node = head;
    do {
        if (node->next->prev != node)
            return " ASTRAY ring";
        node = node->next;
    } while (node != head);
    return "";
}

std::string rule_of(const config_user_profile_t &profile, const config_app_usage_t &usage) {
    if (usage.policy_app == nullptr)
        return "";
    if (profile.app_policy != nullptr)
        for (const config_policy_app_t &rule : rules_of(profile.app_policy))
            if (&rule == usage.policy_app && rule.app_usage == &usage &&
                rule.app_id == usage.app_id)
                return " ruled";
    return " ASTRAY";
}

std::string usage_of(const config_app_policy_t &policy, const config_policy_app_t &rule) {
    if (rule.app_usage == nullptr)
        return "";
    if (policy.profile != nullptr)
        for (const config_app_usage_t &usage : apps_of(policy.profile))
            if (&usage == rule.app_usage && usage.policy_app == &rule)
                return " used";
    return " ASTRAY";
}

std::string policy_of(const config_user_profile_t &profile) {
    if (profile.app_policy == nullptr)
        return "none";
    return std::to_string(profile.app_policy->app_policy_id) +
           (profile.app_policy->profile == &profile ? "" : " ASTRAY");
}

std::string describe(config_user_profile_t &profile) {
    std::string all =
        text("profile %d: enable %d, limit %d+%d, used %d/%d/%d, blocked %d, since %lld, policy ",
             profile.user_profile_id, profile.daily_limit_enable, profile.daily_limit,
             profile.daily_extend, profile.daily_used, profile.weekly_used, profile.monthly_used,
             profile.blocked, static_cast<long long>(profile.last_collect_ts));
    all += policy_of(profile) + "\n week";
    for (const config_weekday_limit_t &weekday : weekdays_of(&profile))
        all += text(" %d=%d", weekday.day, weekday.limit);
    const char *devices = profile.device_list_string;
    all += text("\n %d devices ", profile.device_count) +
           (devices == nullptr ? "none" : "\"" + std::string(devices) + "\"") + ":";
    for (const config_device_t &device : devices_of(&profile))
        all += " " + address_of(device.mac);
    all += text("\n %d apps:", profile.app_count);
    for (const config_app_usage_t &usage : apps_of(&profile))
        all += text(" %d used %d/%d/%d blocked %d", usage.app_id, usage.daily_used,
                    usage.weekly_used, usage.monthly_used, usage.blocked) +
               rule_of(profile, usage) + ";";
    return all + ring_text(&profile.weekday_list) + ring_text(&profile.device_list) +
           ring_text(&profile.app_stat_list) + "\n";
}

std::string describe(config_app_policy_t &policy) {
    std::string all = text("policy %d: profile ", policy.app_policy_id);
    all += policy.profile == nullptr ? "none" : std::to_string(policy.profile->user_profile_id);
    all += text(", %d apps:", policy.app_count);
    for (const config_policy_app_t &rule : rules_of(&policy))
        all += text(" %d action %d limit %d", rule.app_id, rule.action, rule.daily_limit) +
               usage_of(policy, rule) + ";";
    return all + ring_text(&policy.app_list) + "\n";
}

std::string command_lines(const char *verb, const std::vector<std::vector<uint8_t>> &macs,
                          const std::string &rest) {
    std::string all;
    for (const std::vector<uint8_t> &mac : macs)
        all += text("run lcsh apg acl %s ", verb) + address_of(mac.data()) + rest + "\n";
    return all;
}

} // namespace

std::string profile_text(int32_t profile_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    return profile == nullptr ? text("no profile %d\n", profile_id) : describe(*profile);
}

std::string policy_text(int32_t policy_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    return policy == nullptr ? text("no policy %d\n", policy_id) : describe(*policy);
}

std::string store_text() {
    const mutex_guard lock(utm_app_config_mutex);
    std::string all;
    for (config_user_profile_t &profile : all_profiles())
        all += describe(profile);
    for (config_app_policy_t &policy : all_policies())
        all += describe(policy);
    return all + ring_text(&utm_app_config_user_profile_list) +
           ring_text(&utm_app_config_app_policy_list);
}

config_app_usage_t *usage_of(config_user_profile_t *profile, int32_t app_id) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_find_app_usage(&profile->app_stat_list, app_id);
}

std::string block_lines(const std::vector<std::vector<uint8_t>> &macs, int32_t app_id) {
    return command_lines("set", macs, text(" %d 0 18", app_id));
}

std::string unblock_lines(const std::vector<std::vector<uint8_t>> &macs, int32_t app_id) {
    return command_lines("del", macs, text(" %d 0", app_id));
}

std::string reset_lines(const std::vector<std::vector<uint8_t>> &macs) {
    return command_lines("reset", macs, "");
}
