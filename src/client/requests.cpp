#include "client/requests.h"

#include <cstring>

/// Lays bytes over a request, as the overlays of the wire format do.
static void overlay(utm_app_config_cmd *request, size_t offset, const void *bytes, size_t size) {
    memcpy(reinterpret_cast<char *>(request) + offset, bytes, size);
}

utm_app_config_cmd ctl_device_request(uint8_t type, int32_t profile_id, const uint8_t *mac) {
    utm_app_config_cmd request = {.type = type, .arg0 = profile_id};
    overlay(&request, UTM_APP_CONFIG_MAC_OFFSET, mac, ctl_mac_bytes);
    return request;
}

utm_app_config_cmd ctl_path_request(uint8_t type, const ctl_path &path) {
    utm_app_config_cmd request = {.type = type};
    overlay(&request, UTM_APP_CONFIG_PATH_OFFSET, path.text, strlen(path.text) + 1);
    return request;
}

utm_app_config_cmd ctl_rules_request(int32_t policy_id, const utm_app_config_app_entry *rules,
                                     int32_t count) {
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = policy_id, .arg1 = count};
    overlay(&request, UTM_APP_CONFIG_APP_LIST_OFFSET, rules,
            static_cast<size_t>(count) * sizeof *rules);
    return request;
}
