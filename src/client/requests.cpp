#include "client/requests.h"

utm_app_config_cmd ctl_device_request(uint8_t type, int32_t profile_id, const uint8_t *mac) {
    utm_app_config_cmd request = {.type = type, .arg0 = profile_id};
    utm_app_config_put_mac(&request, mac);
    return request;
}

utm_app_config_cmd ctl_path_request(uint8_t type, const ctl_path &path) {
    utm_app_config_cmd request = {.type = type};
    utm_app_config_put_path(&request, path.text);
    return request;
}

utm_app_config_cmd ctl_rules_request(int32_t policy_id, const utm_app_config_app_entry *rules,
                                     int32_t count) {
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = policy_id, .arg1 = count};
    utm_app_config_put_rules(&request, rules, count);
    return request;
}
