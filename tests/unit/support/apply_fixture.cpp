#include "tests/unit/support/apply_fixture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace apply {

namespace {

template <typename T>
void must_add(plain_vector<T> *list, const T &element) {
    if (!list->add(element))
        abort();
}

std::string rules_text(const utm_app_config_cmd &request) {
    std::string text = "rules " + std::to_string(request.arg0);
    for (int32_t i = 0; i < request.arg1; ++i) {
        const utm_app_config_app_entry rule = utm_app_config_rule(request, i);
        text += " " + std::to_string(rule.app_id) + "=";
        text += rule.action == POLICY_ACTION_LIMIT   ? std::to_string(rule.limit)
                : rule.action == POLICY_ACTION_BLOCK ? "block"
                                                     : "remove";
    }
    return text;
}

} // namespace

ctl_mac mac(uint8_t last) {
    return {{2, 0, 0, 0, 0, last}};
}

void fill(household_t *household, const std::vector<person_t> &people) {
    household->limits = true;
    for (const person_t &from : people) {
        household_person_t person = {};
        person.number = from.number;
        strcpy(person.name.text, from.name.c_str());
        std::fill_n(person.weekday_limits, days_per_week, from.limit);
        person.enforced = from.enforced;
        person.devices = {household->devices.size(), from.devices.size()};
        for (const uint8_t last : from.devices) {
            household_device_t device = {};
            memcpy(device.mac, mac(last).bytes, mac_bytes);
            must_add(&household->devices, device);
        }
        person.rules = {household->rules.size(), from.rules.size()};
        for (const config_policy_rule_t &rule : from.rules)
            must_add(&household->rules, rule);
        must_add(&household->people, person);
    }
}

void fill(ctl_daemon_state *state, const std::vector<known_t> &people) {
    state->active = true;
    for (const known_t &from : people) {
        ctl_daemon_person person = {};
        person.number = from.number;
        std::fill_n(person.weekday_limits, days_per_week, from.limit);
        person.limit = from.limit;
        person.extend = from.extend;
        person.used = from.used;
        // Without a device a limit waits.
        person.enabled = from.enabled && !from.devices.empty();
        person.blocked = from.blocked;
        person.policy = from.policy;
        person.devices = {state->devices.size(), from.devices.size()};
        for (const uint8_t last : from.devices)
            must_add(&state->devices, mac(last));
        person.rules = {state->rules.size(), from.rules.size()};
        for (const config_policy_rule_t &rule : from.rules)
            must_add(&state->rules, rule);
        person.apps = {state->apps.size(), from.apps.size()};
        for (const ctl_app_today &app : from.apps)
            must_add(&state->apps, app);
        must_add(&state->people, person);
    }
}

std::string text_of(const utm_app_config_cmd &request) {
    const std::string id = std::to_string(request.arg0);
    const std::string second = std::to_string(request.arg1);
    switch (request.type) {
    case UTM_APP_CONFIG_CREATE_PROFILE:
        return "create " + id;
    case UTM_APP_CONFIG_DELETE_PROFILE:
        return "delete " + id;
    case UTM_APP_CONFIG_ADD_DEVICE:
        return "add " + id + " " + mac_text(utm_app_config_mac(request)).text;
    case UTM_APP_CONFIG_DEL_DEVICE:
        return "remove " + id + " " + mac_text(utm_app_config_mac(request)).text;
    case UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE:
        return (request.arg2 != 0 ? "enable " : "disable ") + id;
    case UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT:
        return "limit " + id + " day " + second + " " + std::to_string(request.arg3);
    case UTM_APP_CONFIG_ADD_EXTEND:
        return "bonus " + id + " " + std::to_string(request.arg4);
    case UTM_APP_CONFIG_SET_ACTIVATE:
        return request.arg0 != 0 ? "on" : "off";
    case UTM_APP_CONFIG_CREATE_POLICY:
        return "policy " + id;
    case UTM_APP_CONFIG_DELETE_POLICY:
        return "clear " + id;
    case UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE:
        return "bind " + id + " " + second;
    case UTM_APP_CONFIG_ADD_APPS_TO_POLICY:
        return rules_text(request);
    case UTM_APP_CONFIG_IMPORT_STATISTICS:
        return "import";
    default:
        return "command " + std::to_string(request.type);
    }
}

std::string text_of(const ctl_plan &plan) {
    constexpr const char *files[] = {"", " used_up", " as_it_was", " usage"};
    std::string text;
    for (const ctl_deed &deed : plan.deeds) {
        if (deed.line.text[0] != '\0')
            text += std::string("# ") + deed.line.text + "\n";
        for (size_t i = deed.first; i < deed.first + deed.count; ++i) {
            const ctl_step &step = plan.steps[i];
            text += text_of(step.request) + files[static_cast<int>(step.file)] +
                    (step.may_be_refused ? " (or not)" : "") + "\n";
        }
    }
    return text;
}

} // namespace apply
