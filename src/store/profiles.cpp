#include "store/profiles.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "core/owners.h"
#include "store/blocking.h"
#include "store/policies.h"

#include <cstdio>
#include <cstring>

namespace {

/// Bytes of the device list string that are allocated for a device, and those that it fills. The
/// last device's spare byte holds the NUL.
constexpr size_t device_piece_size = 14;
constexpr size_t device_piece_length = 13;

/// Appends a new profile unless its id is taken. Any id is good, 0 and negative ones too.
bool append_profile(config_user_profile_t *profile) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    if (utm_app_find_profile(profile->user_profile_id) != nullptr)
        return false;
    list_append(&utm_app_config_user_profile_list, &profile->link);
    utm_app_give_weekday_limits(profile);
    return true;
}

template <typename Record>
void free_record(Record *record) UTM_STORE_LOCKED {
    list_unlink(&record->link);
    free(record);
}

} // namespace

config_user_profile_t *utm_app_new_profile(int32_t profile_id, int64_t now) {
    config_user_profile_t *profile = heap_allocate<config_user_profile_t>();
    if (profile == nullptr)
        return nullptr;
    profile->user_profile_id = profile_id;
    profile->daily_limit = minutes_per_day;
    profile->last_collect_ts = now;
    list_init(&profile->weekday_list);
    list_init(&profile->device_list);
    list_init(&profile->app_stat_list);
    return profile;
}

int32_t utm_app_create_profile(int32_t profile_id) {
    heap_ptr<config_user_profile_t> profile(utm_app_new_profile(profile_id, utm_app_now()));
    if (profile == nullptr) {
        utm_app_debug_log("Create profile %d failed because malloc failed\n", profile_id);
        return -1;
    }
    // An id that is taken leaves the profile of that id as it is, and is reported as a success: a
    // front end sends everything again after a restart, of its own too.
    if (append_profile(profile.get()))
        profile.release();
    utm_app_debug_log("Create profile %d success\n", profile_id);
    return 0;
}

int32_t utm_app_add_weekday_limits(int32_t profile_id) {
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        utm_app_debug_log("Add weekday to profile %d failed because profile not exist\n",
                          profile_id);
        return -1;
    }
    return utm_app_give_weekday_limits(profile);
}

int32_t utm_app_give_weekday_limits(config_user_profile_t *profile) {
    int32_t result = 0;
    for (int32_t day = 0; day < days_per_week; ++day) {
        config_weekday_limit_t *entry = heap_allocate<config_weekday_limit_t>();
        if (entry == nullptr) {
            utm_app_debug_log("Add weekday to profile %d failed because malloc failed\n",
                              profile->user_profile_id);
            // The day is left out and takes no limit of its own; the others hold.
            result = -1;
            continue;
        }
        entry->day = day;
        entry->limit = minutes_per_day;
        list_append(&profile->weekday_list, &entry->link);
    }
    return result;
}

void utm_app_destroy_profile(config_user_profile_t *profile) {
    free(profile->device_list_string);
    profile->device_list_string = nullptr;
    // The policy goes with its profile: there is no operation that unbinds one.
    if (profile->app_policy != nullptr)
        utm_app_destroy_policy(profile->app_policy);
    utm_app_release_profile(profile);
    for (config_device_t &device : devices_of(profile))
        free_record(&device);
    for (config_weekday_limit_t &entry : weekdays_of(profile))
        free_record(&entry);
    utm_app_free_app_usage(profile);
    list_unlink(&profile->link);
    utm_app_debug_log("Delete user profile %d and unblock all success\n", profile->user_profile_id);
    free(profile);
}

int32_t utm_app_delete_profile(int32_t profile_id) {
    {
        const mutex_guard lock(utm_app_config_mutex);
        config_user_profile_t *profile = utm_app_find_profile(profile_id);
        if (profile != nullptr)
            utm_app_destroy_profile(profile);
    }
    utm_app_debug_log("Delete profile %d success\n", profile_id);
    return 0;
}

int32_t utm_app_flush_profiles() {
    {
        const mutex_guard lock(utm_app_config_mutex);
        for (config_user_profile_t &profile : all_profiles())
            utm_app_destroy_profile(&profile);
    }
    utm_app_debug_log("Flush all profiles success\n");
    return 0;
}

int32_t utm_app_add_device(int32_t profile_id, const uint8_t *mac) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        utm_app_debug_log("Add dev to profile %d failed because profile not exist\n", profile_id);
        return -1;
    }
    if (utm_app_find_device(profile, mac) != nullptr)
        return 0;
    config_device_t *device = heap_allocate<config_device_t>();
    if (device == nullptr) {
        utm_app_debug_log("Add dev to profile %d failed because malloc failed\n", profile_id);
        return -1;
    }
    memcpy(device->mac, mac, mac_bytes);
    list_append(&profile->device_list, &device->link);
    profile->device_count += 1;
    utm_app_rebuild_device_list_string(profile);
    if (utm_app_feature_is_active())
        utm_app_block_joining_device(profile, device);
    utm_app_debug_log("Add dev mac = %s to profile %d success\n", mac_text(mac).text, profile_id);
    return 0;
}

int32_t utm_app_delete_device(int32_t profile_id, const uint8_t *mac) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr) {
        utm_app_debug_log("Del dev from profile %d failed because profile not exist\n", profile_id);
        return -1;
    }
    heap_ptr<config_device_t> device(utm_app_find_device(profile, mac));
    if (device == nullptr) {
        utm_app_debug_log("Del dev %s from profile %d failed because cannot find dev\n",
                          mac_text(mac).text, profile_id);
        // The log says failed, the client hears success: the device is not there, as it wished.
        return 0;
    }
    list_unlink(&device->link);
    profile->device_count -= 1;
    utm_app_rebuild_device_list_string(profile);
    if (utm_app_feature_is_active())
        utm_app_release_leaving_device(profile, device.get());
    utm_app_debug_log("Del dev %s from profile %d success\n", mac_text(mac).text, profile_id);
    return 0;
}

uint8_t *utm_app_get_devices(int32_t profile_id, int32_t *count) {
    *count = -1;
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile == nullptr)
        return nullptr;
    if (profile->device_count < 1) {
        *count = 0;
        return nullptr;
    }
    uint8_t *macs = heap_allocate<uint8_t>(static_cast<size_t>(profile->device_count) * mac_bytes);
    if (macs == nullptr) {
        utm_app_debug_log("Get devices of profile %d failed because malloc failed\n", profile_id);
        return nullptr;
    }
    int32_t filled = 0;
    for (const config_device_t &device : devices_of(profile)) {
        if (filled == profile->device_count)
            break;
        memcpy(&macs[filled++ * mac_bytes], device.mac, mac_bytes);
    }
    *count = profile->device_count;
    return macs;
}

void utm_app_rebuild_device_list_string(config_user_profile_t *profile) {
    if (list_is_empty(&profile->device_list))
        return;
    char *text =
        heap_allocate<char>(static_cast<size_t>(profile->device_count) * device_piece_size);
    if (text == nullptr) {
        utm_app_debug_log("Update device list string failed because malloc failed\n");
        return;
    }
    // The old text stays until the new one is whole.
    char *end = text;
    for (const config_device_t &device : devices_of(profile)) {
        snprintf(end, device_piece_size, "%s ", mac_digits(device.mac).text);
        end += device_piece_length;
    }
    free(profile->device_list_string);
    profile->device_list_string = text;
}
