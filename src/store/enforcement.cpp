#include "store/enforcement.h"

#include "core/debug_log.h"
#include "notify/qvutm_notify.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

const char *LCSH_CMD = "lcsh";

namespace {

/// Room for a command line of the DPI shell; the longest takes 54 characters.
constexpr size_t command_size = 128;

/// Event type of a profile's network access.
constexpr uint16_t notify_profile_network = 128;
constexpr int32_t notify_block = 0;
constexpr int32_t notify_unblock = 1;

struct command_line_t {
    char text[command_size];
};

/// Builds a line. Beside the program's name only numbers and addresses go into it: nothing that a
/// shell could read another way.
__attribute__((format(printf, 1, 2))) command_line_t command_line(const char *format, ...) {
    command_line_t line = {};
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line.text, sizeof(line.text), format, arguments);
    va_end(arguments);
    return line;
}

/// Runs a line of which nobody asks whether it worked.
void run_unchecked(const command_line_t &line) {
    if (system(line.text) != 0)
        return;
}

/// Runs a line and logs a status other than 0: the raw wait status, so exit code 1 reads 256.
void run_checked(const command_line_t &line) {
    const int status = system(line.text);
    if (status != 0)
        utm_app_debug_log("Command %s return %d != 0\n", line.text, status);
}

void send_profile_event(const config_user_profile_t *profile, int32_t action) {
    utm_notify_event_t event = {};
    event.type = notify_profile_network;
    event.profile_id = profile->user_profile_id;
    event.action = action;
    send_utm_notify_event(&event);
}

} // namespace

void utm_app_guard_on() {
    run_unchecked(command_line("%s apg on", LCSH_CMD));
}

void utm_app_guard_off() {
    run_unchecked(command_line("%s apg off", LCSH_CMD));
}

void utm_app_run_leaving_script(int32_t profile_id) {
    run_unchecked(command_line("profile_daily_limit.sh -C %d", profile_id));
}

void utm_app_block_app_on_device(const config_device_t *device, int32_t app_id) {
    if (device == nullptr)
        return;
    const command_line_t line =
        command_line("%s apg acl set %s %d 0 18", LCSH_CMD, mac_text(device->mac).text, app_id);
    const int status = system(line.text);
    // Unlike the other two lines this one is logged without "!= 0"; the text is kept.
    if (status != 0)
        utm_app_debug_log("Command %s return %d\n", line.text, status);
}

void utm_app_unblock_app_on_device(const config_device_t *device, int32_t app_id) {
    if (device == nullptr)
        return;
    run_checked(
        command_line("%s apg acl del %s %d 0", LCSH_CMD, mac_text(device->mac).text, app_id));
}

void utm_app_reset_device(const config_device_t *device) {
    if (device == nullptr)
        return;
    run_checked(command_line("%s apg acl reset %s", LCSH_CMD, mac_text(device->mac).text));
}

void utm_app_block_app_on_devices(config_list_node_t *device_list, int32_t app_id) {
    if (device_list == nullptr)
        return;
    for (config_device_t &device : list_range<config_device_t>(device_list))
        utm_app_block_app_on_device(&device, app_id);
}

void utm_app_unblock_app_on_devices(config_list_node_t *device_list, int32_t app_id) {
    if (device_list == nullptr)
        return;
    for (config_device_t &device : list_range<config_device_t>(device_list))
        utm_app_unblock_app_on_device(&device, app_id);
}

void utm_app_reset_devices(config_list_node_t *device_list) {
    if (device_list == nullptr)
        return;
    for (config_device_t &device : list_range<config_device_t>(device_list))
        utm_app_reset_device(&device);
}

void utm_app_send_block_event(const config_user_profile_t *profile) {
    if (profile == nullptr)
        return;
    send_profile_event(profile, notify_block);
    utm_app_debug_log("send event: block profile %d to use network\n", profile->user_profile_id);
}

void utm_app_send_unblock_event(const config_user_profile_t *profile) {
    if (profile == nullptr)
        return;
    send_profile_event(profile, notify_unblock);
    utm_app_debug_log("send event: unblock profile %d to use network\n", profile->user_profile_id);
}

void __block_one_device_to_use_network(const config_device_t *) {
    utm_app_debug_log("[WARNING] %s is not implemented\n", "__block_one_device_to_use_network");
}

void __unblock_one_device_to_use_network(const config_device_t *) {
    utm_app_debug_log("[WARNING] %s is not implemented\n", "__unblock_one_device_to_use_network");
}
