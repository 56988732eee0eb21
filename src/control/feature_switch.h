#pragma once
/// The feature switch: turns the whole service on and off.

#include "store/store.h"

#include <cstdint>

/// Turns the switch and brings the network in line with it.
///
/// On: the DPI engine's guard goes on, the router's services are told, and every recorded block is
/// applied again. Off: the same the other way round. The blocked flags are left as they are.
/// Switched on while the usage file is missing, it is written at once, so that a reader finds one.
/// A switch that has this value already only writes its log line.
///
/// @param value  0 or 1
/// @return 0, or -1 for any other value, which changes and logs nothing
[[nodiscard]] int32_t utm_app_set_activate(uint32_t value) UTM_EXCLUDES(utm_app_config_mutex);
