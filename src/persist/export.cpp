#include "persist/export.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "core/json.h"
#include "core/owners.h"
#include "persist/export_schedule.h"

#include <cstdio>
#include <utility>

namespace {

/// Adds a member, taking the value over even when that fails.
[[nodiscard]] bool add(json_object *object, const char *key, json_object *value) {
    if (value == nullptr)
        return false;
    if (json_object_object_add(object, key, value) == 0)
        return true;
    json_object_put(value);
    return false;
}

[[nodiscard]] bool add_int(json_object *object, const char *key, int32_t value) {
    return add(object, key, json_object_new_int(value));
}

/// Appends an element, taking the value over even when that fails.
[[nodiscard]] bool append(json_object *array, json_object *value) {
    if (value == nullptr)
        return false;
    if (json_object_array_add(array, value) == 0)
        return true;
    json_object_put(value);
    return false;
}

/// Builds an array of one element for each record; null as soon as one cannot be built.
template <typename Records, typename Build>
json_object *array_of(Records records, Build build) {
    json_ptr array(json_object_new_array());
    if (array == nullptr)
        return nullptr;
    for (const auto &record : records)
        if (!append(array.get(), build(record)))
            return nullptr;
    return array.release();
}

json_object *ring_of(const config_app_usage_t &usage) {
    json_ptr ring(json_object_new_array());
    if (ring == nullptr)
        return nullptr;
    for (const int32_t minutes : usage.prev_30_days)
        if (!append(ring.get(), json_object_new_int(minutes)))
            return nullptr;
    return ring.release();
}

json_object *application_of(const config_app_usage_t &usage) {
    json_ptr object(json_object_new_object());
    if (object == nullptr || !add_int(object.get(), usage_key::app_id, usage.app_id) ||
        !add_int(object.get(), usage_key::daily_used, usage.daily_used) ||
        !add_int(object.get(), usage_key::weekly_used, usage.weekly_used) ||
        !add_int(object.get(), usage_key::monthly_used, usage.monthly_used) ||
        !add_int(object.get(), usage_key::next_day_idx, usage.next_day_idx) ||
        !add(object.get(), usage_key::prev_30_days, ring_of(usage)))
        return nullptr;
    return object.release();
}

json_object *device_of(const config_device_t &device) {
    return json_object_new_string(mac_text(device.mac).text);
}

json_object *rule_of(const config_policy_app_t &rule) {
    json_ptr object(json_object_new_object());
    if (object == nullptr || !add_int(object.get(), usage_key::app_id, rule.app_id) ||
        !add_int(object.get(), usage_key::action, rule.action) ||
        !add_int(object.get(), usage_key::daily_limit, rule.daily_limit))
        return nullptr;
    return object.release();
}

json_object *policy_of(config_app_policy_t *policy) {
    json_ptr object(json_object_new_object());
    if (object == nullptr ||
        !add_int(object.get(), usage_key::app_policy_id, policy->app_policy_id) ||
        !add(object.get(), usage_key::app_list, array_of(rules_of(policy), rule_of)))
        return nullptr;
    return object.release();
}

/// Writes a day's limit under its own key and under every later one; a later entry of the list
/// then replaces what it finds. So each day of a full list gets its own limit, and a list with
/// days missing fills the gaps with the limit of the day before.
[[nodiscard]] bool add_weekdays(json_object *object, config_user_profile_t *profile) {
    for (const config_weekday_limit_t &entry : weekdays_of(profile)) {
        if (entry.day < 0)
            continue;
        for (int32_t day = entry.day; day < days_per_week; ++day)
            if (!add_int(object, usage_key::weekdays[day], entry.limit))
                return false;
    }
    return true;
}

json_object *profile_of(config_user_profile_t &profile) {
    json_ptr object(json_object_new_object());
    if (object == nullptr ||
        !add_int(object.get(), usage_key::user_profile_id, profile.user_profile_id) ||
        !add_weekdays(object.get(), &profile) ||
        !add_int(object.get(), usage_key::daily_extend, profile.daily_extend) ||
        !add_int(object.get(), usage_key::daily_used, profile.daily_used) ||
        !add_int(object.get(), usage_key::weekly_used, profile.weekly_used) ||
        !add_int(object.get(), usage_key::monthly_used, profile.monthly_used) ||
        !add_int(object.get(), usage_key::blocked, profile.blocked) ||
        !add(object.get(), usage_key::app_stat_list, array_of(apps_of(&profile), application_of)) ||
        !add(object.get(), usage_key::device_list, array_of(devices_of(&profile), device_of)))
        return nullptr;
    if (profile.app_policy != nullptr &&
        !add(object.get(), usage_key::app_policy, policy_of(profile.app_policy)))
        return nullptr;
    return object.release();
}

/// Fills the document from the store.
/// @param root      the empty document
/// @param profiles  its profile array, taken over
/// @param now       the document's time, seconds since the epoch
[[nodiscard]] bool fill_document(json_object *root, json_ptr profiles, time_t now)
    UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    for (config_user_profile_t &profile : all_profiles())
        if (!append(profiles.get(), profile_of(profile)))
            return false;
    return add(root, usage_key::user_profile_list, profiles.release()) &&
           add_int(root, usage_key::timestamp, static_cast<int32_t>(now)) &&
           add(root, usage_key::global_stat, array_of(global_apps(), application_of));
}

/// @return the whole document, or null when memory runs out
json_ptr build_document(time_t now) UTM_EXCLUDES(utm_app_config_mutex) {
    json_ptr root(json_object_new_object());
    json_ptr profiles(json_object_new_array());
    if (root == nullptr || profiles == nullptr ||
        !fill_document(root.get(), std::move(profiles), now))
        return nullptr;
    return root;
}

/// Writes the document in json-c's compact form, the bytes that `json_object_to_file` writes. The
/// descriptor is ours so that no program started meanwhile inherits it.
[[nodiscard]] bool write_document(const char *path, json_object *root) {
    const fd_guard file(usage_file_open_to_write(path));
    return file.get() >= 0 && json_object_to_fd(file.get(), root, JSON_C_TO_STRING_PLAIN) == 0;
}

/// Exports under the usage file's lock.
/// @return whether the file was written
[[nodiscard]] bool export_now(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex) {
    const mutex_guard lock(utm_app_export_import_mutex);
    const time_t now = utm_app_now();
    if (path == nullptr || path[0] == '\0')
        return false;
    const json_ptr document = build_document(now);
    if (document == nullptr)
        return false;
    const bool written = write_document(path, document.get());
    last_export_statistics_ts = now;
    return written;
}

} // namespace

int32_t utm_app_export_statistics(const char *path, int32_t force) {
    if (force == 0 && utm_app_get_activate() == 0)
        return -1;
    if (!export_now(path)) {
        // Always written: a file that stopped growing must show in the log of any router.
        utm_app_log_always("export to %s failed\n", usage_file_shown(path));
        return -1;
    }
    utm_app_debug_log("export to %s success\n", path);
    return 0;
}

int32_t utm_app_export_statistics_to(const char *path) {
    return utm_app_export_statistics(path, 0);
}
