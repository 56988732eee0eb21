#include "bench/plain_document.h"

#include "store/store.h"

#include <algorithm>
#include <cstdio>
#include <json-c/json.h>

namespace {

plain_app_t app_of(const config_app_usage_t &from) {
    plain_app_t app = {from.app_id,       from.daily_used,   from.weekly_used,
                       from.monthly_used, from.next_day_idx, {}};
    std::copy_n(from.prev_30_days, day_ring_days, app.prev_30_days);
    return app;
}

plain_profile_t profile_of(config_user_profile_t &from) {
    plain_profile_t profile = {};
    profile.id = from.user_profile_id;
    for (const config_weekday_limit_t &entry : weekdays_of(&from))
        profile.weekdays[entry.day] = entry.limit;
    profile.daily_extend = from.daily_extend;
    profile.daily_used = from.daily_used;
    profile.weekly_used = from.weekly_used;
    profile.monthly_used = from.monthly_used;
    profile.blocked = from.blocked;
    for (const config_app_usage_t &usage : apps_of(&from))
        profile.apps.push_back(app_of(usage));
    for (const config_device_t &device : devices_of(&from))
        profile.devices.push_back(mac_text(device.mac).text);
    profile.policy_id = from.app_policy->app_policy_id;
    for (const config_policy_app_t &rule : rules_of(from.app_policy))
        profile.rules.push_back({rule.app_id, rule.action, rule.daily_limit});
    return profile;
}

void add_int(json_object *object, const char *key, int32_t value) {
    json_object_object_add(object, key, json_object_new_int(value));
}

json_object *json_of(const plain_app_t &app) {
    json_object *object = json_object_new_object();
    add_int(object, "app_id", app.app_id);
    add_int(object, "daily_used", app.daily_used);
    add_int(object, "weekly_used", app.weekly_used);
    add_int(object, "monthly_used", app.monthly_used);
    add_int(object, "next_day_idx", app.next_day_idx);
    json_object *ring = json_object_new_array();
    for (const int32_t minutes : app.prev_30_days)
        json_object_array_add(ring, json_object_new_int(minutes));
    json_object_object_add(object, "prev_30_days", ring);
    return object;
}

json_object *json_of(const std::string &text) {
    return json_object_new_string(text.c_str());
}

json_object *json_of(const plain_rule_t &rule) {
    json_object *object = json_object_new_object();
    add_int(object, "app_id", rule.app_id);
    add_int(object, "action", rule.action);
    add_int(object, "daily_limit", rule.daily_limit);
    return object;
}

json_object *json_of(const plain_profile_t &profile);

template <typename T>
json_object *array_of(const std::vector<T> &values) {
    json_object *array = json_object_new_array();
    for (const T &value : values)
        json_object_array_add(array, json_of(value));
    return array;
}

json_object *json_of(const plain_profile_t &profile) {
    json_object *object = json_object_new_object();
    add_int(object, "user_profile_id", profile.id);
    // The daemon writes each day's limit over those of the day before; here each is written once.
    const char *const labels[] = {"mon", "tues", "wed", "thur", "fri", "sat", "sun"};
    for (int day = 0; day < 7; ++day)
        add_int(object, labels[day], profile.weekdays[day]);
    add_int(object, "daily_extend", profile.daily_extend);
    add_int(object, "daily_used", profile.daily_used);
    add_int(object, "weekly_used", profile.weekly_used);
    add_int(object, "monthly_used", profile.monthly_used);
    add_int(object, "blocked", profile.blocked);
    json_object_object_add(object, "app_stat_list", array_of(profile.apps));
    json_object_object_add(object, "device_list", array_of(profile.devices));
    json_object *policy = json_object_new_object();
    add_int(policy, "app_policy_id", profile.policy_id);
    json_object_object_add(policy, "app_list", array_of(profile.rules));
    json_object_object_add(object, "app_policy", policy);
    return object;
}

} // namespace

plain_document_t plain_document_of_store() {
    const mutex_guard lock(utm_app_config_mutex);
    plain_document_t document;
    for (config_user_profile_t &profile : all_profiles())
        document.profiles.push_back(profile_of(profile));
    for (const config_app_usage_t &usage : global_apps())
        document.router.push_back(app_of(usage));
    return document;
}

int plain_document_write(const plain_document_t &document, int32_t timestamp, const char *path) {
    json_object *root = json_object_new_object();
    json_object_object_add(root, "user_profile_list", array_of(document.profiles));
    add_int(root, "timestamp", timestamp);
    json_object_object_add(root, "global_stat", array_of(document.router));
    const int result = json_object_to_file(path, root);
    json_object_put(root);
    return result;
}
