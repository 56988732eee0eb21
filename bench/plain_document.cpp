#include "bench/plain_document.h"

#include "store/store.h"

#include <algorithm>
#include <cstdio>
#include <json-c/json.h>

namespace {

usage_app_t app_of(const config_app_usage_t &from) {
    usage_app_t app = {from.app_id,
                       {from.daily_used, from.weekly_used, from.monthly_used},
                       true,
                       from.next_day_idx,
                       {}};
    std::copy_n(from.prev_30_days, day_ring_days, app.prev_30_days);
    return app;
}

plain_profile_t profile_of(config_user_profile_t &from) {
    plain_profile_t profile = {};
    profile.figures = {from.user_profile_id,
                       {},
                       days_per_week,
                       from.daily_extend,
                       {from.daily_used, from.weekly_used, from.monthly_used},
                       from.blocked};
    for (const config_weekday_limit_t &entry : weekdays_of(&from))
        profile.figures.weekdays[entry.day] = {entry.day, entry.limit};
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

void add_counters(json_object *object, const usage_counters_t &used) {
    add_int(object, usage_key::daily_used, used.daily);
    add_int(object, usage_key::weekly_used, used.weekly);
    add_int(object, usage_key::monthly_used, used.monthly);
}

json_object *json_of(const usage_app_t &app) {
    json_object *object = json_object_new_object();
    add_int(object, usage_key::app_id, app.app_id);
    add_counters(object, app.used);
    add_int(object, usage_key::next_day_idx, app.next_day_idx);
    json_object *ring = json_object_new_array();
    for (const int32_t minutes : app.prev_30_days)
        json_object_array_add(ring, json_object_new_int(minutes));
    json_object_object_add(object, usage_key::prev_30_days, ring);
    return object;
}

json_object *json_of(const std::string &text) {
    return json_object_new_string(text.c_str());
}

json_object *json_of(const config_policy_rule_t &rule) {
    json_object *object = json_object_new_object();
    add_int(object, usage_key::app_id, rule.app_id);
    add_int(object, usage_key::action, rule.action);
    add_int(object, usage_key::daily_limit, rule.daily_limit);
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
    add_int(object, usage_key::user_profile_id, profile.figures.user_profile_id);
    for (const usage_weekday_t &entry : profile.figures.weekdays)
        add_int(object, usage_key::weekdays[entry.day], entry.limit);
    add_int(object, usage_key::daily_extend, profile.figures.daily_extend);
    add_counters(object, profile.figures.used);
    add_int(object, usage_key::blocked, profile.figures.blocked);
    json_object_object_add(object, usage_key::app_stat_list, array_of(profile.apps));
    json_object_object_add(object, usage_key::device_list, array_of(profile.devices));
    json_object *policy = json_object_new_object();
    add_int(policy, usage_key::app_policy_id, profile.policy_id);
    json_object_object_add(policy, usage_key::app_list, array_of(profile.rules));
    json_object_object_add(object, usage_key::app_policy, policy);
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
    json_object_object_add(root, usage_key::user_profile_list, array_of(document.profiles));
    add_int(root, usage_key::timestamp, timestamp);
    json_object_object_add(root, usage_key::global_stat, array_of(document.router));
    const int result = json_object_to_file(path, root);
    json_object_put(root);
    return result;
}
