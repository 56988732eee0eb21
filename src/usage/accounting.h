#pragma once
/// Accounting: adds a tick's minutes to a profile and blocks what has used up its time.

#include "store/store.h"
#include "usage/app_index.h"

#include <cstdint>

/// A usage record that minutes were added to.
struct counted_usage_t {
    config_app_usage_t *usage; ///< null when memory ran out
    bool is_new;               ///< it was created for them
};

/// Adds minutes to an application's record in a list, the profile's or the router's, and creates
/// the record when it is new.
/// @param count  the list's own count, which a new record raises
/// @param index  an index over the list, or null to walk the list
[[nodiscard]] counted_usage_t utm_app_count_minutes(config_list_node_t *list, int32_t *count,
                                                    int32_t app_id, int32_t minutes,
                                                    app_index_t *index) UTM_STORE_LOCKED;

/// Adds minutes of internet use to a profile and blocks it when they use up its budget. It never
/// unblocks: that is left to the setters and to midnight.
/// @param minutes  of the tick's interval; 0 only checks
/// @return 0, or -1 for a null profile
[[nodiscard]] int32_t utm_app_update_profile_usage(config_user_profile_t *profile,
                                                   int32_t minutes) UTM_STORE_LOCKED;

/// Adds minutes of one application to a profile, creating the application's record when it is
/// new, and blocks the application on the profile's devices when they reach its rule's limit.
/// @param index  an index over the profile's usage list, or null to walk the list
/// @return 0, or -1 for a null profile or no memory
[[nodiscard]] int32_t utm_app_update_app_usage(config_user_profile_t *profile, int32_t app_id,
                                               int32_t minutes,
                                               app_index_t *index = nullptr) UTM_STORE_LOCKED;
