#pragma once
/// Blocking: the one place that asks whether time is used up, and that blocks and releases.
///
/// Two questions decide: is a rule used up, is a budget used up; equality counts as used up. The
/// answer becomes command lines and events (`enforcement`) and the flags of profiles and usage
/// records, which say what ought to hold. While the feature switch is off the flags mostly stay
/// as they are; where they do not, the function says so.

#include "store/store.h"

#include <cstdint>

/// @return whether the application has used up the rule's limit today. The caller checks that the
///         rule is a limit
[[nodiscard]] bool utm_app_rule_is_used_up(const config_policy_app_t &rule) UTM_STORE_LOCKED;

/// @return a profile's budget for today: its limit and its bonus, in minutes
[[nodiscard]] int32_t utm_app_budget_of(const config_user_profile_t &profile) UTM_STORE_LOCKED;

/// @return whether the profile has used up its budget. The caller checks that the limit is
///         enabled
[[nodiscard]] bool utm_app_budget_is_used_up(const config_user_profile_t &profile) UTM_STORE_LOCKED;

// ---- A profile as a whole ------------------------------------------------------------------

/// Blocks a profile that has used up its budget, after its use has grown. It never unblocks: that
/// is left to the setters and to midnight.
void utm_app_block_used_up_profile(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Blocks or unblocks a profile after a setter has moved its budget.
void utm_app_enforce_moved_budget(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Acts on an enable flag that has changed.
void utm_app_enforce_changed_enable(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Announces a profile with devices unblocked at the start of a day, whatever its flag says, so
/// that a router that has lost count is corrected every midnight. Done whether or not the feature
/// is active.
void utm_app_announce_new_day(const config_user_profile_t &profile) UTM_STORE_LOCKED;

/// Releases what the old day's limits blocked, the profile and its applications, whether or not
/// the feature is active. Block rules hold every day.
void utm_app_release_for_new_day(config_user_profile_t *profile) UTM_STORE_LOCKED;

// ---- Rules ---------------------------------------------------------------------------------

/// Brings the bound profile's devices in line with a rule that is new to its policy.
void utm_app_enforce_new_rule(config_app_policy_t *policy,
                              config_policy_app_t *rule) UTM_STORE_LOCKED;

/// The same for a rule whose action or limit has changed.
void utm_app_enforce_changed_rule(config_app_policy_t *policy,
                                  config_policy_app_t *rule) UTM_STORE_LOCKED;

/// Releases the application of a rule that goes.
void utm_app_release_rule(config_app_policy_t *policy, config_policy_app_t *rule) UTM_STORE_LOCKED;

/// Releases every application of a policy whose rules all go, whether or not the feature is active.
void utm_app_release_policy(config_app_policy_t *policy) UTM_STORE_LOCKED;

/// Blocks what the rules of a newly bound policy block. The feature switch is not asked and no
/// flag changes: the lines only reach a guard that is off while the feature is.
void utm_app_enforce_bound_policy(config_app_policy_t *policy) UTM_STORE_LOCKED;

/// Blocks what is over its limit after an import. Neither a rule's action nor the feature switch is
/// asked, and no flag changes: the import only restores what the network should already do.
void utm_app_enforce_imported_use(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Blocks an application that has used up its rule, after its use has grown.
void utm_app_block_used_up_app(config_user_profile_t *profile,
                               config_app_usage_t *usage) UTM_STORE_LOCKED;

// ---- Devices -------------------------------------------------------------------------------

/// Brings a device that joins a profile under the blocks in force. An application that is over
/// its limit and also has a block rule is blocked twice, by two equal lines.
void utm_app_block_joining_device(config_user_profile_t *profile,
                                  const config_device_t *device) UTM_STORE_LOCKED;

/// Releases a device that leaves a profile.
void utm_app_release_leaving_device(const config_user_profile_t *profile,
                                    const config_device_t *device) UTM_STORE_LOCKED;

/// Releases every device of a profile that goes, whether or not the feature is active: whatever
/// was blocked before it was switched off must not outlive the profile.
void utm_app_release_profile(config_user_profile_t *profile) UTM_STORE_LOCKED;

// ---- The feature switch --------------------------------------------------------------------

/// Carries out every block that the records hold, after the feature was switched on. Rules with
/// POLICY_ACTION_BLOCK are not consulted, only the flags of profiles and usage records.
void utm_app_apply_all_blocks() UTM_STORE_LOCKED;

/// Releases everything that is blocked, after the feature was switched off. The flags stay, so
/// that `utm_app_apply_all_blocks` can bring the same state back.
void utm_app_lift_all_blocks() UTM_STORE_LOCKED;
