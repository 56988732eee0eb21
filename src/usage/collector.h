#pragma once
/// The collectors: once a minute, ask the DPI statistics service what was used and add it up.
///
/// Each collector holds the store for its whole run, including the queries (at most two seconds
/// each). A query without an answer changes nothing, but its interval has passed: the collector
/// does not ask for those minutes again. A failure ends the run; the next tick starts over.

#include "store/store.h"

#include <cstdint>

/// Collects for every profile: rolls it over, queries its devices, adds up and blocks.
/// @return 0; -1 without a profile or when a query could not be made, which leaves the profiles
///         after it to the next tick
int32_t utm_app_update_app_status() UTM_EXCLUDES(utm_app_config_mutex);

/// Collects the router-wide statistics.
/// @return 0, or -1 when the query could not be made
int32_t utm_app_update_global_app_status() UTM_EXCLUDES(utm_app_config_mutex);
