#include "persist/import.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "core/heap.h"
#include "core/regular_file.h"
#include "core/saturate.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "persist/place.h"
#include "persist/profile_index.h"
#include "store/blocking.h"
#include "store/profiles.h"
#include "usage/accounting.h"
#include "usage/rollover.h"
#include "usage/top_apps.h"

#include <algorithm>

namespace {

/// Reads one application, rolled forward to today.
/// @return a record that the caller links in; null for an element that lacks a figure, or without
///         memory
config_app_usage_t *read_application(json_object *element, const file_age_t &age) {
    usage_app_t app;
    if (!usage_read_app(element, &app))
        return nullptr;
    config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
    if (usage == nullptr)
        return nullptr;
    utm_app_roll_forward(&app, age);
    usage->app_id = app.app_id;
    usage->daily_used = app.used.daily;
    usage->weekly_used = app.used.weekly;
    usage->monthly_used = app.used.monthly;
    usage->next_day_idx = app.next_day_idx;
    std::copy_n(app.prev_30_days, day_ring_days, usage->prev_30_days);
    return usage;
}

/// Finds the profile that takes an element's figures, or creates it.
/// @return null when memory runs out
config_user_profile_t *profile_to_fill(const profile_index_t &index,
                                       int32_t profile_id) UTM_STORE_LOCKED {
    config_user_profile_t *profile = profile_index_find(index, profile_id);
    if (profile != nullptr) {
        utm_app_free_app_usage(profile);
        return profile;
    }
    profile = utm_app_new_profile(profile_id, utm_app_now());
    if (profile == nullptr)
        return nullptr;
    list_append(&utm_app_config_user_profile_list, &profile->link);
    utm_app_give_weekday_limits(profile);
    profile_index_add(index, profile);
    return profile;
}

/// Gives a profile the file's applications, in the file's order. Its application count becomes
/// the file's too, elements that could not be read included.
void import_applications(json_object *element, const file_age_t &age,
                         config_user_profile_t *profile) UTM_STORE_LOCKED {
    json_object *list = usage_apps_of(element);
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        config_app_usage_t *usage = read_application(json_object_array_get_idx(list, i), age);
        if (usage != nullptr)
            list_append(&profile->app_stat_list, &usage->link);
    }
    profile->app_count = saturate(static_cast<int64_t>(count));
    utm_app_link_policy_to_usage(profile);
    utm_app_enforce_imported_use(profile);
}

void import_profile(json_object *element, const file_age_t &age,
                    const profile_index_t &index) UTM_STORE_LOCKED {
    usage_profile_t read;
    if (!usage_read_profile(element, &read))
        return;
    config_user_profile_t *profile = profile_to_fill(index, read.user_profile_id);
    if (profile == nullptr)
        return;
    const usage_counters_t used = utm_app_roll_forward(read.used, age.passed);
    profile->daily_used = used.daily;
    profile->weekly_used = used.weekly;
    profile->monthly_used = used.monthly;
    if (usage_has_apps(element))
        import_applications(element, age, profile);
    utm_app_block_used_up_profile(profile);
}

void import_profiles(json_object *root, const file_age_t &age) UTM_FILE_LOCKED
    UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    json_object *list = usage_profiles_of(root);
    const profile_index_t index = profile_index_of(list);
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i)
        import_profile(json_object_array_get_idx(list, i), age, index);
}

void import_router(json_object *root, const file_age_t &age, time_t now) UTM_FILE_LOCKED
    UTM_EXCLUDES(utm_app_config_mutex) {
    json_object *list = usage_router_apps_of(root);
    const size_t count = json_array_size(list);
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_clear_global_app_stat();
    for (size_t i = 0; i < count; ++i) {
        config_app_usage_t *usage = read_application(json_object_array_get_idx(list, i), age);
        if (usage == nullptr)
            continue;
        list_push_front(&utm_app_config_global_app_stat_list, &usage->link);
        utm_app_config_global_app_stat_list_count += 1;
    }
    utm_app_config_global_app_stat_last_ts = now;
}

json_ptr read_document(const char *path) UTM_FILE_LOCKED {
    if (path == nullptr || path[0] == '\0')
        return nullptr;
    place_t place;
    if (!utm_app_find_place(path, &place))
        return nullptr;
    const fd_guard file(regular_file_open(place.name, place.folder.get()));
    return file.get() < 0 ? nullptr : usage_file_read(file.get());
}

/// @return whether the file was taken over; if not, the store is untouched
[[nodiscard]] bool import_now(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex) {
    const mutex_guard lock(utm_app_export_import_mutex);
    const time_t now = utm_app_now();
    const json_ptr document = read_document(path);
    json_object *root = document.get();
    if (usage_objection_to(root) != nullptr)
        return false;
    int32_t written = 0;
    const time_t then = usage_read_time(root, &written) ? written : now;
    const file_age_t age = utm_app_file_age(then, now);
    if (age.days < 0) {
        utm_app_log_always("Import statistic failed because it is from future\n");
        return false;
    }
    import_profiles(root, age);
    import_router(root, age, now);
    last_export_statistics_ts = now;
    return true;
}

} // namespace

int32_t utm_app_import_statistics(const char *path) {
    if (utm_app_get_activate() == 0)
        return -1;
    const bool imported = import_now(path);
    heap_give_back();
    if (!imported) {
        utm_app_log_always("import from %s failed\n", usage_path_shown(path).text);
        return -1;
    }
    utm_app_log_always("import from %s success\n", usage_path_shown(path).text);
    return 0;
}
