#include "store/store.h"

#include "core/owners.h"

#include <cstring>

utm_mutex_t utm_app_config_mutex;

// Zero until `utm_app_store_init`: a list is not even empty before it points at itself.
config_list_node_t utm_app_config_user_profile_list;
config_list_node_t utm_app_config_app_policy_list;
config_list_node_t utm_app_config_global_app_stat_list;
int32_t utm_app_config_global_app_stat_list_count;
int64_t utm_app_config_global_app_stat_last_ts;
int32_t activate;

void utm_app_store_init(time_t now) {
    list_init(&utm_app_config_global_app_stat_list);
    list_init(&utm_app_config_app_policy_list);
    list_init(&utm_app_config_user_profile_list);
    utm_app_config_global_app_stat_last_ts = now;
    utm_app_config_global_app_stat_list_count = 0;
}

int32_t utm_app_get_activate() {
    const mutex_guard lock(utm_app_config_mutex);
    return activate;
}

config_user_profile_t *utm_app_find_profile(int32_t profile_id) {
    for (config_user_profile_t &profile : all_profiles())
        if (profile.user_profile_id == profile_id)
            return &profile;
    return nullptr;
}

config_app_policy_t *utm_app_find_policy(int32_t policy_id) {
    for (config_app_policy_t &policy : all_policies())
        if (policy.app_policy_id == policy_id)
            return &policy;
    return nullptr;
}

// An address is compared in full and found in this profile alone: two people may share a device.
config_device_t *utm_app_find_device(config_user_profile_t *profile, const uint8_t *mac) {
    if (profile == nullptr)
        return nullptr;
    for (config_device_t &device : devices_of(profile))
        if (memcmp(device.mac, mac, mac_bytes) == 0)
            return &device;
    return nullptr;
}

config_app_usage_t *utm_app_find_app_usage(config_list_node_t *list, int32_t app_id) {
    if (list == nullptr)
        return nullptr;
    for (config_app_usage_t &usage : list_range<config_app_usage_t>(list))
        if (usage.app_id == app_id)
            return &usage;
    return nullptr;
}

config_policy_app_t *utm_app_find_policy_app(config_app_policy_t *policy, int32_t app_id) {
    if (policy == nullptr)
        return nullptr;
    for (config_policy_app_t &rule : rules_of(policy))
        if (rule.app_id == app_id)
            return &rule;
    return nullptr;
}

void utm_app_link_policy_to_usage(config_user_profile_t *profile) {
    if (profile->app_policy == nullptr)
        return;
    // All links anew, since either list may have lost records: one that survived would be followed.
    for (config_app_usage_t &usage : apps_of(profile))
        usage.policy_app = nullptr;
    for (config_policy_app_t &rule : rules_of(profile->app_policy)) {
        rule.app_usage = utm_app_find_app_usage(&profile->app_stat_list, rule.app_id);
        if (rule.app_usage != nullptr)
            rule.app_usage->policy_app = &rule;
    }
}

void utm_app_free_app_usage(config_user_profile_t *profile) {
    for (config_app_usage_t &usage : apps_of(profile)) {
        // The rule outlives the record when an import replaces a profile's figures.
        if (usage.policy_app != nullptr)
            usage.policy_app->app_usage = nullptr;
        list_unlink(&usage.link);
        free(&usage);
    }
}
