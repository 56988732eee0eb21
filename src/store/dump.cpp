#include "store/dump.h"

#include "core/debug_log.h"
#include "format/day_ring.h"

namespace {

/// Writes a record's thirty days, yesterday first.
/// @param separator  in and out: a blank before the dump's very first figure and a comma before
///                   every later one, across all records; readers of dumps know it so
void dump_history(const config_app_usage_t &usage, char *separator) UTM_STORE_LOCKED {
    for (int32_t days_ago = 1; days_ago <= day_ring_days; ++days_ago) {
        utm_app_debug_log("%c %d", *separator, day_ring_at(usage, days_ago));
        *separator = ',';
    }
    utm_app_debug_log("\n");
}

/// The limit is shown whatever the rule's action is, for a block rule too.
void dump_application(const config_app_usage_t &usage, char *separator) UTM_STORE_LOCKED {
    utm_app_debug_log("\tapp id %d use: %d, ", usage.app_id, usage.daily_used);
    if (usage.policy_app == nullptr)
        utm_app_debug_log("no limit\n");
    else
        utm_app_debug_log("limit %d, blocked: %d\n", usage.policy_app->daily_limit, usage.blocked);
    utm_app_debug_log("weekly use: %d, monthly use: %d, previous 30 day use:", usage.weekly_used,
                      usage.monthly_used);
    dump_history(usage, separator);
}

void dump_policy(config_app_policy_t *policy) UTM_STORE_LOCKED {
    if (policy == nullptr) {
        utm_app_debug_log("No policy\n");
        return;
    }
    utm_app_debug_log("Policy id %d\n", policy->app_policy_id);
    for (const config_policy_app_t &rule : rules_of(policy))
        utm_app_debug_log("\tapp id %d action %d limit %d\n", rule.app_id, rule.action,
                          rule.daily_limit);
}

void dump_profile(config_user_profile_t &profile, char *separator) UTM_STORE_LOCKED {
    utm_app_debug_log("------------------------\n");
    utm_app_debug_log("profile id: %d\n", profile.user_profile_id);
    utm_app_debug_log("\tlimit: %d\n", profile.daily_limit);
    utm_app_debug_log("\textend: %d\n", profile.daily_extend);
    utm_app_debug_log("\tdaily used: %d, weekly: %d, monthly: %d\n", profile.daily_used,
                      profile.weekly_used, profile.monthly_used);
    utm_app_debug_log("\tblocked: %d\n", profile.blocked);
    utm_app_debug_log("Device list:\n");
    for (const config_device_t &device : devices_of(&profile))
        utm_app_debug_log("\tdevice %s\n", mac_text(device.mac).text);
    utm_app_debug_log("APP usage:\n");
    for (const config_app_usage_t &usage : apps_of(&profile))
        dump_application(usage, separator);
    dump_policy(profile.app_policy);
}

} // namespace

void utm_app_dump_store() {
    const mutex_guard lock(utm_app_config_mutex);
    char separator = ' ';
    utm_app_debug_log("==========Profile list:==============\n");
    for (config_user_profile_t &profile : all_profiles())
        dump_profile(profile, &separator);
    utm_app_debug_log("Global stat:\n");
    for (const config_app_usage_t &usage : global_apps())
        utm_app_debug_log("\tapp id %d use %d\n", usage.app_id, usage.daily_used);
    utm_app_debug_log("===============================\n");
}
