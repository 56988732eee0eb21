#pragma once
/// Application policies: lists of rules that limit or block single applications, each bound to at
/// most one profile.
///
/// A policy is created unbound, bound once, and destroyed with its profile; it is never unbound.
/// Operations return 0 or -1 unless they say otherwise and report their outcome as one log line.

#include "store/store.h"

#include <cstdint>

/// Creates an empty, unbound policy.
/// @param policy_id  1 or more (profile ids have no such bound)
/// @return the id, or -1 when it is below 1 or taken, or memory runs out
[[nodiscard]] int32_t utm_app_create_policy(int32_t policy_id) UTM_EXCLUDES(utm_app_config_mutex);

/// Adds, changes or removes rules, in array order. A rule that fails does not undo the others.
/// @return 0, also for no rules at all; -1 when the policy is missing or any rule failed
[[nodiscard]] int32_t utm_app_add_apps_to_policy(int32_t policy_id,
                                                 const config_policy_rule_t *rules, int32_t count)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Does for one rule what `utm_app_add_apps_to_policy` does for many, under its own log lines.
/// @param rule  null fails without a log line
[[nodiscard]] int32_t utm_app_update_app_in_policy(int32_t policy_id,
                                                   const config_policy_rule_t *rule)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Reads a policy's rules, newest first.
///
/// The array has the policy's application count of entries. After `utm_app_delete_policy` that
/// count is larger than the list, and the entries without a rule are zero.
///
/// @param count  out: entries, or -1 when the policy is missing or empty or memory runs out
/// @return an array that the caller frees, or null
[[nodiscard]] config_policy_rule_t *utm_app_get_apps_of_policy(int32_t policy_id, int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Removes a policy's rules and releases the bound profile's devices, whether or not the feature
/// is active. In spite of its name it keeps the policy: bound, listed, with its id and its old
/// application count, ready to be filled again. Logs nothing.
/// @return 0, or -1 when the policy is missing
[[nodiscard]] int32_t utm_app_delete_policy(int32_t policy_id) UTM_EXCLUDES(utm_app_config_mutex);

/// Binds a policy to a profile and blocks what its rules block now, even while the feature is off.
///
/// A policy that another profile holds already is refused like a missing one: both profiles would
/// own it, and the first to be deleted would take it away from under the other.
[[nodiscard]] int32_t utm_app_add_policy_to_profile(int32_t profile_id, int32_t policy_id)
    UTM_EXCLUDES(utm_app_config_mutex);

/// @param policy_id  out: the bound policy's id, untouched on failure
/// @return 0, or -1 when the profile is missing or has no policy
[[nodiscard]] int32_t utm_app_get_policy_of_profile(int32_t profile_id, int32_t *policy_id)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Adds, changes or removes one rule and brings the bound profile's devices in line with it.
/// @return 0, or -1 for a missing argument, an unknown action or no memory
[[nodiscard]] int32_t utm_app_set_rule(config_app_policy_t *policy,
                                       const config_policy_rule_t *rule) UTM_STORE_LOCKED;

/// Frees a policy with its rules; nothing points at any of them afterwards.
void utm_app_destroy_policy(config_app_policy_t *policy) UTM_STORE_LOCKED;
