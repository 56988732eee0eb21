#pragma once
/// The records of the store: plain data, one heap object each, owned by the store.
///
/// Every time quantity is a whole number of minutes, every id and flag a signed 32-bit integer.
/// Fields stand in their documented order. All of them are guarded by `utm_app_config_mutex`.

#include "core/clock.h"
#include "core/list.h"
#include "core/mac.h"
#include "format/day_ring.h"
#include "format/policy_rule.h"
#include "format/protocol.h"

#include <cstdint>

struct config_app_policy_t;
struct config_policy_app_t;

/// A person: the devices that share one daily budget of internet time.
struct config_user_profile_t {
    int32_t user_profile_id;    ///< given by the client, any value, unique among the profiles
    int32_t device_count;       ///< records in `device_list`
    int32_t app_count;          ///< records in `app_stat_list`; an imported list may hold fewer
    int32_t daily_limit_enable; ///< flag: does the daily budget block at all
    int32_t daily_limit;        ///< today's limit, minutes
    int32_t daily_extend;       ///< bonus on top of today's limit, minutes
    int32_t daily_used;         ///< minutes used today
    int32_t weekly_used;        ///< minutes of this week's finished days
    int32_t monthly_used;       ///< minutes of this month's finished weeks
    int32_t blocked;            ///< flag: the whole profile is cut off from the network
    char *device_list_string;   ///< owned; the devices as the statistics query names them, or null
    int64_t last_collect_ts;    ///< seconds since the epoch; where the next query starts
    config_app_policy_t *app_policy;  ///< owned; the bound policy, or null
    config_list_node_t link;          ///< in `utm_app_config_user_profile_list`
    config_list_node_t weekday_list;  ///< of `config_weekday_limit_t`, days 0 to 6
    config_list_node_t device_list;   ///< of `config_device_t`, oldest first
    config_list_node_t app_stat_list; ///< of `config_app_usage_t`, newest first
};

/// A profile's limit on one day of the week.
struct config_weekday_limit_t {
    int32_t day;   ///< 0 = Sunday ... 6 = Saturday, as `tm_wday` counts
    int32_t limit; ///< minutes
    config_list_node_t link;
};

/// One device of a profile. The same address may also belong to another profile.
struct config_device_t {
    uint8_t mac[mac_bytes];
    config_list_node_t link;
};

/// The use of one application, by one profile or by the whole router.
///
/// The router-wide records leave `blocked` 0 and `policy_app` null.
struct config_app_usage_t {
    int32_t app_id;       ///< the DPI engine's number for the application
    int32_t daily_used;   ///< minutes used today
    int32_t weekly_used;  ///< minutes of this week's finished days
    int32_t monthly_used; ///< minutes of this month's finished weeks
    int32_t blocked;      ///< flag: the application is blocked for the profile's devices
    int32_t prev_30_days[day_ring_days]; ///< minutes of the last finished days, see day_ring.h
    int32_t next_day_idx;                ///< 0..29, the slot that the next finished day goes to
    config_policy_app_t *policy_app;     ///< the policy's rule for this application, or null
    config_list_node_t link;
};

/// A list of rules for single applications, bound to at most one profile.
struct config_app_policy_t {
    int32_t app_policy_id; ///< above 0, unique among the policies
    int32_t app_count;     ///< entries; deleting a policy's rules leaves the old value standing
    config_user_profile_t *profile; ///< the profile that owns this policy, or null
    config_list_node_t app_list;    ///< of `config_policy_app_t`, newest first
    config_list_node_t link;        ///< in `utm_app_config_app_policy_list`
};

/// One rule of a policy.
struct config_policy_app_t {
    int32_t app_id;
    int32_t action;                ///< POLICY_ACTION_LIMIT or POLICY_ACTION_BLOCK
    int32_t daily_limit;           ///< minutes; decides only for POLICY_ACTION_LIMIT
    config_app_usage_t *app_usage; ///< the bound profile's record of this application, or null
    config_list_node_t link;
};

/// An application and its minutes, the row of every ranking.
struct config_app_minutes_t {
    int32_t app_id;
    int32_t minutes;
};
