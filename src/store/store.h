#pragma once
/// The in-memory store: the lists, the counters beside them, the lock that guards them, and the
/// lookups and cross-links that everything else is built on.

#include "core/lock.h"
#include "store/records.h"

#include <cstdint>

/// Guards every list, record and counter of the store and the feature switch. Whoever takes it
/// holds it for a whole operation, including the command lines that the operation runs.
extern utm_mutex_t utm_app_config_mutex;

/// The caller holds the store.
#define UTM_STORE_LOCKED UTM_REQUIRES(utm_app_config_mutex)

/// All profiles, in creation order.
extern config_list_node_t utm_app_config_user_profile_list UTM_GUARDED_BY(utm_app_config_mutex);
/// All policies, bound or not, in creation order.
extern config_list_node_t utm_app_config_app_policy_list UTM_GUARDED_BY(utm_app_config_mutex);
/// Router-wide use per application, newest first. Rankings sort a copy, never this list.
extern config_list_node_t utm_app_config_global_app_stat_list UTM_GUARDED_BY(utm_app_config_mutex);
/// Records in `utm_app_config_global_app_stat_list`.
extern int32_t utm_app_config_global_app_stat_list_count UTM_GUARDED_BY(utm_app_config_mutex);
/// Seconds since the epoch of the last router-wide collection; the next one starts there.
extern int64_t utm_app_config_global_app_stat_last_ts UTM_GUARDED_BY(utm_app_config_mutex);
/// The feature switch: 0 off, 1 on. Held here because the whole store asks it; turned in
/// `control/feature_switch`. It starts switched off.
extern int32_t activate UTM_GUARDED_BY(utm_app_config_mutex);

/// Empties the lists (without freeing) and starts the router-wide interval at `now`.
/// @param now  seconds since the epoch
void utm_app_store_init(time_t now) UTM_STORE_LOCKED;

/// @return whether limits are enforced, that is, whether the feature switch is on
inline bool utm_app_feature_is_active() UTM_STORE_LOCKED {
    return activate == 1;
}

/// @return the feature switch, 0 or 1, for a caller that does not hold the store
[[nodiscard]] int32_t utm_app_get_activate() UTM_EXCLUDES(utm_app_config_mutex);

inline list_range<config_user_profile_t> all_profiles() UTM_STORE_LOCKED {
    return list_range<config_user_profile_t>(&utm_app_config_user_profile_list);
}

inline list_range<config_app_policy_t> all_policies() UTM_STORE_LOCKED {
    return list_range<config_app_policy_t>(&utm_app_config_app_policy_list);
}

inline list_range<config_app_usage_t> global_apps() UTM_STORE_LOCKED {
    return list_range<config_app_usage_t>(&utm_app_config_global_app_stat_list);
}

/// @return whether the profile is cut off now: a block counts only while the limit is enabled
inline bool is_cut_off(const config_user_profile_t &profile) UTM_STORE_LOCKED {
    return profile.daily_limit_enable == 1 && profile.blocked == 1;
}

/// @return whether there is anything to query and to block
inline bool has_devices(const config_user_profile_t &profile) UTM_STORE_LOCKED {
    return profile.device_count != 0 || !list_is_empty(&profile.device_list);
}

inline list_range<config_weekday_limit_t>
weekdays_of(config_user_profile_t *profile) UTM_STORE_LOCKED {
    return list_range<config_weekday_limit_t>(&profile->weekday_list);
}

inline list_range<config_device_t> devices_of(config_user_profile_t *profile) UTM_STORE_LOCKED {
    return list_range<config_device_t>(&profile->device_list);
}

inline list_range<config_app_usage_t> apps_of(config_user_profile_t *profile) UTM_STORE_LOCKED {
    return list_range<config_app_usage_t>(&profile->app_stat_list);
}

inline list_range<config_policy_app_t> rules_of(config_app_policy_t *policy) UTM_STORE_LOCKED {
    return list_range<config_policy_app_t>(&policy->app_list);
}

/// The lookups walk a list from the front and return the first match, or null; so does a null
/// record or list.
[[nodiscard]] config_user_profile_t *utm_app_find_profile(int32_t profile_id) UTM_STORE_LOCKED;
[[nodiscard]] config_app_policy_t *utm_app_find_policy(int32_t policy_id) UTM_STORE_LOCKED;
/// @param mac  `mac_bytes` bytes, all of which must match
[[nodiscard]] config_device_t *utm_app_find_device(config_user_profile_t *profile,
                                                   const uint8_t *mac) UTM_STORE_LOCKED;
/// @param list  a list of usage records, a profile's or the router's; null finds nothing
[[nodiscard]] config_app_usage_t *utm_app_find_app_usage(config_list_node_t *list,
                                                         int32_t app_id) UTM_STORE_LOCKED;
[[nodiscard]] config_policy_app_t *utm_app_find_policy_app(config_app_policy_t *policy,
                                                           int32_t app_id) UTM_STORE_LOCKED;

/// Makes the rules of a profile's policy and the profile's usage records point at each other.
///
/// Called whenever either side changes. It clears all links and sets them anew, so no link
/// outlives its record. A profile without a policy is left untouched.
void utm_app_link_policy_to_usage(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Unlinks and frees every record of a profile's usage list; a rule that pointed at one points
/// at nothing afterwards. `app_count` is left to the caller.
void utm_app_free_app_usage(config_user_profile_t *profile) UTM_STORE_LOCKED;
