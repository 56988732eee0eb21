#pragma once
/// The router's top applications: one usage record per application seen on any device.

#include "store/store.h"
#include "usage/app_index.h"

#include <cstdint>

/// Adds minutes to an application's router-wide record, which is created when it is new.
/// @param index  an index over the router-wide list, or null to walk the list
/// @return always 0; without memory for a new record only this figure is lost
int32_t utm_app_global_app_stat_add(int32_t app_id, int32_t minutes,
                                    app_index_t *index = nullptr) UTM_STORE_LOCKED;

/// Ranks every application by the total of today's, this week's and this month's minutes.
/// @param count  out: applications, 0 for none
/// @return an array, most used first, that the caller frees; null without applications or memory
[[nodiscard]] config_app_minutes_t *utm_app_get_top_apps(int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Frees every router-wide record. Writes nothing to the log.
void utm_app_clear_global_app_stat() UTM_STORE_LOCKED;

/// Forgets the router-wide statistics: the daemon's end.
void utm_app_reset_top_apps() UTM_EXCLUDES(utm_app_config_mutex);

/// Orders two `config_app_minutes_t` by minutes for `qsort`: largest first, in spite of its name.
/// Equal minutes keep no defined order.
/// @return -1, 0 or 1; 0 when either is null
int compare_config_app_usage_t_assending(const void *a, const void *b);
