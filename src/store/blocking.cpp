#include "store/blocking.h"

#include "core/debug_log.h"
#include "core/saturate.h"
#include "store/enforcement.h"

namespace {

/// The flag keeps the events apart: one is sent when the profile changes sides, not whenever
/// somebody asks.
void block_profile(config_user_profile_t *profile) UTM_STORE_LOCKED {
    if (profile->blocked != 0)
        return;
    utm_app_send_block_event(profile);
    profile->blocked = 1;
}

void unblock_profile(config_user_profile_t *profile) UTM_STORE_LOCKED {
    if (profile->blocked != 1)
        return;
    utm_app_send_unblock_event(profile);
    profile->blocked = 0;
}

void block_for_bound_profile(config_app_policy_t *policy, int32_t app_id) UTM_STORE_LOCKED {
    if (utm_app_feature_is_active() && policy->profile != nullptr)
        utm_app_block_app_on_devices(&policy->profile->device_list, app_id);
}

void unblock_for_bound_profile(config_app_policy_t *policy, int32_t app_id) UTM_STORE_LOCKED {
    if (utm_app_feature_is_active() && policy->profile != nullptr)
        utm_app_unblock_app_on_devices(&policy->profile->device_list, app_id);
}

/// The flag is set even while the feature is off: switching it on then blocks.
void enforce_block_rule(config_app_policy_t *policy, config_policy_app_t *rule) UTM_STORE_LOCKED {
    block_for_bound_profile(policy, rule->app_id);
    if (rule->app_usage != nullptr)
        rule->app_usage->blocked = 1;
}

/// A limit on an application that had no rule. It only blocks: without a rule nothing was blocked
/// that it could release.
void enforce_new_limit(config_app_policy_t *policy, config_policy_app_t *rule) UTM_STORE_LOCKED {
    if (!utm_app_feature_is_active() || !utm_app_rule_is_used_up(*rule))
        return;
    block_for_bound_profile(policy, rule->app_id);
    rule->app_usage->blocked = 1;
}

/// A limit in place of an earlier rule: blocks or releases, whichever has changed.
void enforce_changed_limit(config_app_policy_t *policy,
                           config_policy_app_t *rule) UTM_STORE_LOCKED {
    if (!utm_app_feature_is_active())
        return;
    config_app_usage_t *usage = rule->app_usage;
    if (usage == nullptr) {
        // Nothing used yet, so only an earlier block rule can be in force.
        unblock_for_bound_profile(policy, rule->app_id);
        return;
    }
    const bool used_up = utm_app_rule_is_used_up(*rule);
    if (!used_up && usage->blocked != 0) {
        unblock_for_bound_profile(policy, rule->app_id);
        usage->blocked = 0;
    } else if (used_up && usage->blocked == 0) {
        block_for_bound_profile(policy, rule->app_id);
        usage->blocked = 1;
    }
}

void block_app_over_limit(config_user_profile_t *profile, int32_t app_id) UTM_STORE_LOCKED {
    utm_app_debug_log("block device to use %d because exceed limit\n", app_id);
    utm_app_block_app_on_devices(&profile->device_list, app_id);
}

/// Releases the applications that a limit has blocked. The flags are cleared without devices too:
/// there is nobody to release, but the new day starts with nothing used.
void release_limited_apps(config_user_profile_t *profile) UTM_STORE_LOCKED {
    for (config_app_usage_t &usage : apps_of(profile)) {
        if (usage.blocked != 1 || usage.policy_app == nullptr ||
            usage.policy_app->action != POLICY_ACTION_LIMIT)
            continue;
        if (has_devices(*profile))
            utm_app_unblock_app_on_devices(&profile->device_list, usage.app_id);
        usage.blocked = 0;
    }
}

/// Carries out every block that a profile's records hold, or takes it back. The records stay as
/// they are.
void repeat_blocks(config_user_profile_t *profile, bool blocks) UTM_STORE_LOCKED {
    if (is_cut_off(*profile)) {
        if (blocks)
            utm_app_send_block_event(profile);
        else
            utm_app_send_unblock_event(profile);
    }
    for (const config_app_usage_t &usage : apps_of(profile)) {
        if (usage.blocked != 1)
            continue;
        if (blocks)
            utm_app_block_app_on_devices(&profile->device_list, usage.app_id);
        else
            utm_app_unblock_app_on_devices(&profile->device_list, usage.app_id);
    }
}

} // namespace

bool utm_app_rule_is_used_up(const config_policy_app_t &rule) {
    // Without a record nothing is used, so not even a limit of 0 minutes is used up.
    return rule.app_usage != nullptr && rule.app_usage->daily_used >= rule.daily_limit;
}

int32_t utm_app_budget_of(const config_user_profile_t &profile) {
    // Bonuses have no upper bound: a wrapped sum would block whoever was given most.
    return saturating_sum(profile.daily_limit, profile.daily_extend);
}

bool utm_app_budget_is_used_up(const config_user_profile_t &profile) {
    return profile.daily_used >= utm_app_budget_of(profile);
}

void utm_app_block_used_up_profile(config_user_profile_t *profile) {
    if (!utm_app_feature_is_active() || profile->daily_limit_enable != 1 || profile->blocked != 0 ||
        !utm_app_budget_is_used_up(*profile))
        return;
    utm_app_debug_log("Block profile %d to use network because %d exceed %d\n",
                      profile->user_profile_id, profile->daily_used, utm_app_budget_of(*profile));
    block_profile(profile);
}

void utm_app_enforce_moved_budget(config_user_profile_t *profile) {
    if (!utm_app_feature_is_active() || profile->daily_limit_enable != 1)
        return;
    if (utm_app_budget_is_used_up(*profile))
        block_profile(profile);
    else
        unblock_profile(profile);
}

void utm_app_enforce_changed_enable(config_user_profile_t *profile) {
    if (!utm_app_feature_is_active())
        return;
    if (profile->daily_limit_enable == 0)
        unblock_profile(profile);
    // Switching limits on takes nobody out who has time left.
    else if (utm_app_budget_is_used_up(*profile))
        block_profile(profile);
}

void utm_app_announce_new_day(const config_user_profile_t &profile) {
    if (has_devices(profile))
        utm_app_send_unblock_event(&profile);
}

void utm_app_release_for_new_day(config_user_profile_t *profile) {
    // A blocked profile is announced a second time, after `utm_app_announce_new_day`. The router
    // must take an unblock twice (docs/integration.md).
    if (profile->blocked == 1) {
        if (has_devices(*profile))
            utm_app_send_unblock_event(profile);
        profile->blocked = 0;
    }
    release_limited_apps(profile);
}

void utm_app_enforce_new_rule(config_app_policy_t *policy, config_policy_app_t *rule) {
    if (rule->action == POLICY_ACTION_BLOCK)
        enforce_block_rule(policy, rule);
    else
        enforce_new_limit(policy, rule);
}

void utm_app_enforce_changed_rule(config_app_policy_t *policy, config_policy_app_t *rule) {
    if (rule->action == POLICY_ACTION_BLOCK)
        enforce_block_rule(policy, rule);
    else
        enforce_changed_limit(policy, rule);
}

void utm_app_release_rule(config_app_policy_t *policy, config_policy_app_t *rule) {
    unblock_for_bound_profile(policy, rule->app_id);
    if (rule->app_usage != nullptr)
        rule->app_usage->blocked = 0;
}

void utm_app_release_policy(config_app_policy_t *policy) {
    if (policy->profile == nullptr)
        return;
    for (config_app_usage_t &usage : apps_of(policy->profile))
        usage.blocked = 0;
    // One line per device takes back every application at once.
    utm_app_reset_devices(&policy->profile->device_list);
}

void utm_app_enforce_bound_policy(config_app_policy_t *policy) {
    config_user_profile_t *profile = policy->profile;
    if (profile == nullptr)
        return;
    for (config_policy_app_t &rule : rules_of(policy)) {
        if (rule.action == POLICY_ACTION_BLOCK) {
            utm_app_debug_log("block device to use %d\n", rule.app_id);
            utm_app_block_app_on_devices(&profile->device_list, rule.app_id);
        } else if (rule.action == POLICY_ACTION_LIMIT && utm_app_rule_is_used_up(rule)) {
            block_app_over_limit(profile, rule.app_id);
        }
    }
}

void utm_app_enforce_imported_use(config_user_profile_t *profile) {
    if (profile->app_policy == nullptr)
        return;
    // A block rule counts here by its stored limit, as any rule. A device that joins, and the next
    // change of the rule, go by the action again.
    for (config_policy_app_t &rule : rules_of(profile->app_policy))
        if (utm_app_rule_is_used_up(rule))
            block_app_over_limit(profile, rule.app_id);
}

void utm_app_block_used_up_app(config_user_profile_t *profile, config_app_usage_t *usage) {
    const config_policy_app_t *rule = usage->policy_app;
    // Application 0 is the engine's "not recognised": no rule is meant for it.
    if (!utm_app_feature_is_active() || usage->app_id == 0 || usage->blocked != 0 ||
        rule == nullptr || rule->action != POLICY_ACTION_LIMIT || !utm_app_rule_is_used_up(*rule))
        return;
    utm_app_debug_log("Block app %d for profile %d because %d exceed %d\n", usage->app_id,
                      profile->user_profile_id, usage->daily_used, rule->daily_limit);
    utm_app_block_app_on_devices(&profile->device_list, usage->app_id);
    usage->blocked = 1;
}

void utm_app_block_joining_device(config_user_profile_t *profile, const config_device_t *device) {
    // The router knows no way to do this (see enforcement.h); the line in the log stays.
    if (is_cut_off(*profile))
        __block_one_device_to_use_network(device);
    for (const config_app_usage_t &usage : apps_of(profile))
        if (usage.blocked == 1)
            utm_app_block_app_on_device(device, usage.app_id);
    if (profile->app_policy == nullptr)
        return;
    for (const config_policy_app_t &rule : rules_of(profile->app_policy))
        if (rule.action == POLICY_ACTION_BLOCK)
            utm_app_block_app_on_device(device, rule.app_id);
}

void utm_app_release_leaving_device(const config_user_profile_t *profile,
                                    const config_device_t *device) {
    utm_app_reset_device(device);
    if (is_cut_off(*profile))
        utm_app_run_leaving_script(profile->user_profile_id);
}

void utm_app_release_profile(config_user_profile_t *profile) {
    // Without devices not even the event is sent: nobody was cut off.
    if (list_is_empty(&profile->device_list))
        return;
    utm_app_reset_devices(&profile->device_list);
    if (profile->blocked == 1)
        utm_app_send_unblock_event(profile);
}

void utm_app_apply_all_blocks() {
    for (config_user_profile_t &profile : all_profiles())
        repeat_blocks(&profile, true);
}

void utm_app_lift_all_blocks() {
    for (config_user_profile_t &profile : all_profiles()) {
        repeat_blocks(&profile, false);
        // Block rules set no flag where nothing was used yet: only a reset takes these back.
        if (profile.app_policy != nullptr)
            utm_app_reset_devices(&profile.device_list);
    }
}
