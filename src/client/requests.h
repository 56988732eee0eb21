#pragma once
/// Requests as the wire has them. Plain ones need no help:
/// `utm_app_config_cmd{.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30}`.

#include "client/arguments.h"
#include "format/protocol.h"

/// @param type  UTM_APP_CONFIG_ADD_DEVICE or UTM_APP_CONFIG_DEL_DEVICE
/// @param mac   `ctl_mac_bytes` bytes in transmission order
[[nodiscard]] utm_app_config_cmd ctl_device_request(uint8_t type, int32_t profile_id,
                                                    const uint8_t *mac);

/// @param type  UTM_APP_CONFIG_LOAD_SIGNATURE, _IMPORT_STATISTICS or _EXPORT_STATISTICS
[[nodiscard]] utm_app_config_cmd ctl_path_request(uint8_t type, const ctl_path &path);

/// @param count  1 to UTM_APP_CONFIG_APP_LIST_MAX
[[nodiscard]] utm_app_config_cmd
ctl_rules_request(int32_t policy_id, const utm_app_config_app_entry *rules, int32_t count);
