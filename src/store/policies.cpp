#include "store/policies.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "store/blocking.h"

namespace {

bool is_known_action(int32_t action) {
    return action == POLICY_ACTION_REMOVE || action == POLICY_ACTION_LIMIT ||
           action == POLICY_ACTION_BLOCK;
}

void free_rule(config_policy_app_t *rule) UTM_STORE_LOCKED {
    if (rule->app_usage != nullptr)
        rule->app_usage->policy_app = nullptr;
    list_unlink(&rule->link);
    free(rule);
}

int32_t add_rule(config_app_policy_t *policy, const config_policy_rule_t *rule) UTM_STORE_LOCKED {
    // Removing what is not there is no failure: a front end may repeat a request.
    if (rule->action == POLICY_ACTION_REMOVE)
        return 0;
    config_policy_app_t *entry = heap_allocate<config_policy_app_t>();
    if (entry == nullptr) {
        utm_app_debug_log("Policy %d add app %d action %d limit %d failed\n", policy->app_policy_id,
                          rule->app_id, rule->action, rule->daily_limit);
        return -1;
    }
    entry->app_id = rule->app_id;
    entry->action = rule->action;
    entry->daily_limit = rule->daily_limit;
    list_push_front(&policy->app_list, &entry->link);
    // The old value survives `utm_app_delete_policy`, so filling and deleting lets it climb for
    // ever.
    policy->app_count = saturating_sum(policy->app_count, 1);
    // The links come before the enforcement, which asks the rule's record what was used.
    if (policy->profile != nullptr)
        utm_app_link_policy_to_usage(policy->profile);
    utm_app_debug_log("Policy %d add app %d action %d limit %d success\n", policy->app_policy_id,
                      rule->app_id, rule->action, rule->daily_limit);
    utm_app_enforce_new_rule(policy, entry);
    return 0;
}

/// Releases the application first: `utm_app_release_rule` needs the rule's record, whose link
/// `free_rule` clears.
void remove_rule(config_app_policy_t *policy, config_policy_app_t *entry) UTM_STORE_LOCKED {
    utm_app_release_rule(policy, entry);
    free_rule(entry);
    policy->app_count -= 1;
}

/// Changes or removes a rule. The line is written before anything is done and says "update" for a
/// removal too: readers of the log know it so.
void change_rule(config_app_policy_t *policy, config_policy_app_t *entry,
                 const config_policy_rule_t *rule) UTM_STORE_LOCKED {
    utm_app_debug_log("Policy %d update app %d action %d limit %d success\n", policy->app_policy_id,
                      rule->app_id, rule->action, rule->daily_limit);
    if (rule->action == POLICY_ACTION_REMOVE) {
        remove_rule(policy, entry);
        return;
    }
    entry->action = rule->action;
    entry->daily_limit = rule->daily_limit;
    utm_app_enforce_changed_rule(policy, entry);
}

/// Appends a new policy unless its id is taken. The caller has allocated it and logs the outcome,
/// so that the store is held for the list alone.
bool append_policy(config_app_policy_t *policy) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    if (utm_app_find_policy(policy->app_policy_id) != nullptr)
        return false;
    list_append(&utm_app_config_app_policy_list, &policy->link);
    return true;
}

/// Runs every rule and continues after a rule that fails: each rule is independent.
int32_t set_rules(int32_t policy_id, const config_policy_rule_t *rules, int32_t count)
    UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    if (policy == nullptr)
        return -1;
    int32_t result = 0;
    for (int32_t i = 0; i < count; ++i)
        if (utm_app_set_rule(policy, &rules[i]) != 0)
            result = -1;
    return result;
}

} // namespace

int32_t utm_app_create_policy(int32_t policy_id) {
    // Profiles take any id, policies do not: the result is the id, and 0 and below say failure.
    if (policy_id < 1) {
        utm_app_debug_log("Create policy %d failed because id <= 0\n", policy_id);
        return -1;
    }
    heap_ptr<config_app_policy_t> policy(heap_allocate<config_app_policy_t>());
    if (policy == nullptr) {
        utm_app_debug_log("Create policy %d failed because malloc failed\n", policy_id);
        return -1;
    }
    policy->app_policy_id = policy_id;
    list_init(&policy->app_list);
    if (!append_policy(policy.get())) {
        utm_app_debug_log("Create policy %d failed because policy already exist\n", policy_id);
        return -1;
    }
    policy.release();
    utm_app_debug_log("Create policy %d success\n", policy_id);
    return policy_id;
}

int32_t utm_app_add_apps_to_policy(int32_t policy_id, const config_policy_rule_t *rules,
                                   int32_t count) {
    if (set_rules(policy_id, rules, count) != 0) {
        utm_app_debug_log("Add apps to policy %d failed\n", policy_id);
        return -1;
    }
    utm_app_debug_log("Add apps to policy %d success\n", policy_id);
    return 0;
}

int32_t utm_app_update_app_in_policy(int32_t policy_id, const config_policy_rule_t *rule) {
    if (rule == nullptr)
        return -1;
    if (set_rules(policy_id, rule, 1) != 0) {
        utm_app_debug_log("Update app to policy %d failed\n", policy_id);
        return -1;
    }
    utm_app_debug_log("Update app to policy %d success\n", policy_id);
    return 0;
}

config_policy_rule_t *utm_app_get_apps_of_policy(int32_t policy_id, int32_t *count) {
    *count = -1;
    const mutex_guard lock(utm_app_config_mutex);
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    // An empty policy gives -1, where a profile without devices gives 0; callers know both.
    if (policy == nullptr || policy->app_count < 1)
        return nullptr;
    // The count may be higher than the rules there are (see `add_rule`). The rest are zeros.
    config_policy_rule_t *rules =
        heap_allocate<config_policy_rule_t>(static_cast<size_t>(policy->app_count));
    if (rules == nullptr) {
        utm_app_debug_log("Get apps of policy %d failed because malloc failed\n", policy_id);
        return nullptr;
    }
    int32_t filled = 0;
    for (const config_policy_app_t &rule : rules_of(policy)) {
        if (filled == policy->app_count)
            break;
        rules[filled++] = {rule.app_id, rule.action, rule.daily_limit};
    }
    *count = policy->app_count;
    return rules;
}

int32_t utm_app_delete_policy(int32_t policy_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    if (policy == nullptr)
        return -1;
    utm_app_release_policy(policy);
    // Only the rules go. The policy keeps its id, its profile and even its count, so that a front
    // end can fill it again under the same number.
    for (config_policy_app_t &rule : rules_of(policy))
        free_rule(&rule);
    if (policy->profile != nullptr)
        utm_app_link_policy_to_usage(policy->profile);
    return 0;
}

int32_t utm_app_add_policy_to_profile(int32_t profile_id, int32_t policy_id) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        utm_app_debug_log("Add policy %d to profile %d failed because profile not exist\n",
                          policy_id, profile_id);
        return -1;
    }
    if (profile->app_policy != nullptr) {
        utm_app_debug_log("Add policy %d to profile %d failed because already has policy\n",
                          policy_id, profile_id);
        return -1;
    }
    // A policy of two profiles would be freed with the first of them, under the other's feet.
    config_app_policy_t *policy = utm_app_find_policy(policy_id);
    if (policy == nullptr || policy->profile != nullptr)
        return -1;
    profile->app_policy = policy;
    policy->profile = profile;
    utm_app_link_policy_to_usage(profile);
    utm_app_enforce_bound_policy(policy);
    utm_app_debug_log("Add policy %d to profile %d success\n", policy_id, profile_id);
    return 0;
}

int32_t utm_app_get_policy_of_profile(int32_t profile_id, int32_t *policy_id) {
    const mutex_guard lock(utm_app_config_mutex);
    const config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr || profile->app_policy == nullptr)
        return -1;
    *policy_id = profile->app_policy->app_policy_id;
    return 0;
}

int32_t utm_app_set_rule(config_app_policy_t *policy, const config_policy_rule_t *rule) {
    if (policy == nullptr || rule == nullptr || !is_known_action(rule->action))
        return -1;
    config_policy_app_t *entry = utm_app_find_policy_app(policy, rule->app_id);
    if (entry == nullptr)
        return add_rule(policy, rule);
    change_rule(policy, entry, rule);
    return 0;
}

void utm_app_destroy_policy(config_app_policy_t *policy) {
    // Nothing is released here: the profile that goes resets each of its devices anyway.
    for (config_policy_app_t &rule : rules_of(policy))
        free_rule(&rule);
    if (policy->profile != nullptr)
        policy->profile->app_policy = nullptr;
    list_unlink(&policy->link);
    free(policy);
}
