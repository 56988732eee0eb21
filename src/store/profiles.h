#pragma once
/// Profiles and their devices: creating and destroying people, moving devices in and out.
///
/// Each operation keeps the network in step: a device that joins inherits the profile's blocks, a
/// device that leaves is released, a profile that goes releases all its devices. Operations
/// return 0 or -1 and report their outcome as one log line.

#include "store/store.h"

#include <cstdint>

/// Creates a profile with no limit in force: 1440 minutes every day, nothing used, no devices.
///
/// An id that exists already leaves that profile exactly as it is and still succeeds.
///
/// @param profile_id  any value, zero and negative ones included
/// @return 0, or -1 when memory runs out
[[nodiscard]] int32_t utm_app_create_profile(int32_t profile_id) UTM_EXCLUDES(utm_app_config_mutex);

/// Destroys a profile; one that does not exist is deleted already.
/// @return always 0
int32_t utm_app_delete_profile(int32_t profile_id) UTM_EXCLUDES(utm_app_config_mutex);

/// Destroys every profile, in list order, so that the daemon's end releases every device.
/// @return always 0
int32_t utm_app_flush_profiles() UTM_EXCLUDES(utm_app_config_mutex);

/// Adds a device. Only this profile is searched: another may hold the same address.
/// @param mac  `mac_bytes` bytes in transmission order
/// @return 0 when added or already there; -1 when the profile is missing or memory runs out
[[nodiscard]] int32_t utm_app_add_device(int32_t profile_id, const uint8_t *mac)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Removes a device and releases it.
/// @param mac  `mac_bytes` bytes in transmission order
/// @return 0 when removed, and also when the profile does not hold it; -1 without the profile
[[nodiscard]] int32_t utm_app_delete_device(int32_t profile_id, const uint8_t *mac)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Reads a profile's devices, oldest first.
/// @param count  out: devices; 0 without devices; -1 without the profile or without memory
/// @return `count` times `mac_bytes` bytes that the caller frees, or null
[[nodiscard]] uint8_t *utm_app_get_devices(int32_t profile_id, int32_t *count)
    UTM_EXCLUDES(utm_app_config_mutex);

/// Allocates a profile as a new one starts out, its collection interval beginning at `now`.
/// It is in no list yet and has no weekday entries.
/// @return the record, owned by the caller until it is appended, or null
[[nodiscard]] config_user_profile_t *utm_app_new_profile(int32_t profile_id, int64_t now);

/// Gives a new profile its seven weekday entries, Sunday first, 1440 minutes each. A day whose
/// entry cannot be allocated is left out.
/// @return 0, or -1 when the profile or any entry is missing
int32_t utm_app_add_weekday_limits(int32_t profile_id) UTM_STORE_LOCKED;

/// The same for a profile that is at hand.
/// @return 0, or -1 when any entry is missing
int32_t utm_app_give_weekday_limits(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Releases a profile's devices and frees everything it owns.
void utm_app_destroy_profile(config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Rebuilds `device_list_string`: every device as twelve upper-case hexadecimal digits and a
/// blank. With no device left the old text stays; nobody queries a profile without devices.
void utm_app_rebuild_device_list_string(config_user_profile_t *profile) UTM_STORE_LOCKED;
