#pragma once
/// Network enforcement: the only place that builds an access rule's command line for the DPI
/// engine's shell or a profile's event for the router's services.
///
/// The daemon filters nothing itself. A single application is blocked for a single device by a
/// line of the DPI shell ("apg acl ..."); a whole profile is cut off by an event of the
/// notification library. Each line is one synchronous `system` call. A line that fails is logged
/// and otherwise taken as done: the flags in the records say what ought to hold.

#include "store/store.h"

#include <cstdint>

/// The DPI engine's shell, found through PATH.
extern const char *LCSH_CMD;

/// Switches the DPI engine's "apg" function, which applies the access rules, on or off.
void utm_app_guard_on() UTM_STORE_LOCKED;
void utm_app_guard_off() UTM_STORE_LOCKED;

/// Runs the router's own script after a device has left a profile that is cut off. Whether it
/// succeeds changes nothing here.
void utm_app_run_leaving_script(int32_t profile_id) UTM_STORE_LOCKED;

/// Blocks or releases one application on one device; a null device does nothing.
void utm_app_block_app_on_device(const config_device_t *device, int32_t app_id) UTM_STORE_LOCKED;
void utm_app_unblock_app_on_device(const config_device_t *device, int32_t app_id) UTM_STORE_LOCKED;
/// Releases every application on one device; a null device does nothing.
void utm_app_reset_device(const config_device_t *device) UTM_STORE_LOCKED;

/// The same for every device of a list, in list order; a null or empty list does nothing.
void utm_app_block_app_on_devices(config_list_node_t *device_list, int32_t app_id) UTM_STORE_LOCKED;
void utm_app_unblock_app_on_devices(config_list_node_t *device_list,
                                    int32_t app_id) UTM_STORE_LOCKED;
void utm_app_reset_devices(config_list_node_t *device_list) UTM_STORE_LOCKED;

/// Tells the router's services that a profile loses or regains the network; a null profile does
/// nothing. The profile's `blocked` flag is the caller's: `blocking` keeps both together.
void utm_app_send_block_event(const config_user_profile_t *profile) UTM_STORE_LOCKED;
void utm_app_send_unblock_event(const config_user_profile_t *profile) UTM_STORE_LOCKED;

/// Placeholders: the router has no way to cut off a single device, so these only say so in the
/// log. A device that joins a blocked profile is caught by the next event for the profile.
void __block_one_device_to_use_network(const config_device_t *device) UTM_STORE_LOCKED;
void __unblock_one_device_to_use_network(const config_device_t *device) UTM_STORE_LOCKED;
