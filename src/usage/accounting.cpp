#include "usage/accounting.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "store/enforcement.h"

namespace {

/// Links a new record and the policy's rule for its application. All other links hold already: the
/// application had no record before, so no rule can have pointed at one.
void link_new_usage(config_user_profile_t *profile, config_app_usage_t *usage) UTM_STORE_LOCKED {
    if (profile->app_policy == nullptr)
        return;
    config_policy_app_t *rule = utm_app_find_policy_app(profile->app_policy, usage->app_id);
    if (rule == nullptr)
        return;
    rule->app_usage = usage;
    usage->policy_app = rule;
}

config_app_usage_t *add_app_usage(config_user_profile_t *profile, int32_t app_id,
                                  int32_t minutes) UTM_STORE_LOCKED {
    config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
    if (usage == nullptr)
        return nullptr;
    usage->app_id = app_id;
    usage->daily_used = minutes;
    list_push_front(&profile->app_stat_list, &usage->link);
    profile->app_count += 1;
    link_new_usage(profile, usage);
    return usage;
}

/// Finds an application's record and adds the minutes to it, or creates it with them.
/// @return null when memory runs out
config_app_usage_t *count_minutes(config_user_profile_t *profile, int32_t app_id, int32_t minutes,
                                  app_index_t *index) UTM_STORE_LOCKED {
    config_app_usage_t *usage = index != nullptr
                                    ? app_index_find(index, app_id)
                                    : utm_app_find_app_usage(&profile->app_stat_list, app_id);
    if (usage != nullptr) {
        usage->daily_used = saturating_sum(usage->daily_used, minutes);
        return usage;
    }
    usage = add_app_usage(profile, app_id, minutes);
    if (usage != nullptr && index != nullptr)
        app_index_add(index, usage);
    return usage;
}

/// Application 0 is the engine's "not recognised": no rule is meant for it.
bool has_reached_its_limit(const config_app_usage_t &usage) UTM_STORE_LOCKED {
    return utm_app_feature_is_active() && usage.app_id != 0 && usage.blocked == 0 &&
           usage.policy_app != nullptr && usage.policy_app->action == POLICY_ACTION_LIMIT &&
           usage.daily_used >= usage.policy_app->daily_limit;
}

} // namespace

int32_t utm_app_budget_of(const config_user_profile_t *profile) {
    return saturating_sum(profile->daily_limit, profile->daily_extend);
}

int32_t utm_app_update_profile_usage(config_user_profile_t *profile, int32_t minutes) {
    if (profile == nullptr)
        return -1;
    profile->daily_used = saturating_sum(profile->daily_used, minutes);
    const int32_t budget = utm_app_budget_of(profile);
    if (!utm_app_feature_is_active() || profile->daily_limit_enable != 1 || profile->blocked != 0 ||
        profile->daily_used < budget)
        return 0;
    utm_app_debug_log("Block profile %d to use network because %d exceed %d\n",
                      profile->user_profile_id, profile->daily_used, budget);
    utm_app_block_profile(profile);
    profile->blocked = 1;
    return 0;
}

int32_t utm_app_update_app_usage(config_user_profile_t *profile, int32_t app_id, int32_t minutes,
                                 app_index_t *index) {
    if (profile == nullptr)
        return -1;
    config_app_usage_t *usage = count_minutes(profile, app_id, minutes, index);
    if (usage == nullptr)
        return -1;
    if (!has_reached_its_limit(*usage))
        return 0;
    utm_app_debug_log("Block app %d for profile %d because %d exceed %d\n", app_id,
                      profile->user_profile_id, usage->daily_used, usage->policy_app->daily_limit);
    utm_app_block_app_on_devices(&profile->device_list, app_id);
    usage->blocked = 1;
    return 0;
}
