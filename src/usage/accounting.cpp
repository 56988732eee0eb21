#include "usage/accounting.h"

#include "core/owners.h"
#include "core/saturate.h"
#include "store/blocking.h"

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

} // namespace

counted_usage_t utm_app_count_minutes(config_list_node_t *list, int32_t *count, int32_t app_id,
                                      int32_t minutes, app_index_t *index) {
    config_app_usage_t *usage =
        index != nullptr ? app_index_find(index, app_id) : utm_app_find_app_usage(list, app_id);
    if (usage != nullptr) {
        usage->daily_used = saturating_sum(usage->daily_used, minutes);
        return {usage, false};
    }
    usage = heap_allocate<config_app_usage_t>();
    if (usage == nullptr)
        return {};
    usage->app_id = app_id;
    usage->daily_used = minutes;
    // At the front: the order shows in the usage file, in the dump and in replies.
    list_push_front(list, &usage->link);
    *count += 1;
    if (index != nullptr)
        app_index_add(index, usage);
    return {usage, true};
}

int32_t utm_app_update_profile_usage(config_user_profile_t *profile, int32_t minutes) {
    if (profile == nullptr)
        return -1;
    profile->daily_used = saturating_sum(profile->daily_used, minutes);
    utm_app_block_used_up_profile(profile);
    return 0;
}

int32_t utm_app_update_app_usage(config_user_profile_t *profile, int32_t app_id, int32_t minutes,
                                 app_index_t *index) {
    if (profile == nullptr)
        return -1;
    const counted_usage_t counted =
        utm_app_count_minutes(&profile->app_stat_list, &profile->app_count, app_id, minutes, index);
    if (counted.usage == nullptr)
        return -1;
    if (counted.is_new)
        link_new_usage(profile, counted.usage);
    utm_app_block_used_up_app(profile, counted.usage);
    return 0;
}
