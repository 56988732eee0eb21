#include "control/feature_switch.h"

#include "core/debug_log.h"
#include "format/usage_file.h"
#include "notify/qvutm_notify.h"
#include "persist/export.h"
#include "store/blocking.h"
#include "store/enforcement.h"

#include <unistd.h>

namespace {

/// The notification's first argument, always this; the library defines what it means.
constexpr int notify_feature = 1;

void switch_on() UTM_STORE_LOCKED {
    utm_app_guard_on();
    send_utm_notify_event_status_changed(notify_feature, 1);
    utm_app_apply_all_blocks();
}

void switch_off() UTM_STORE_LOCKED {
    utm_app_guard_off();
    send_utm_notify_event_status_changed(notify_feature, 0);
    utm_app_lift_all_blocks();
}

/// What turning the switch has found.
struct turned_t {
    int32_t old;
    bool lacks_usage_file; ///< switched on, and there is no usage file yet
};

turned_t turn(int32_t value) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    const int32_t old = activate;
    if (value == old)
        return {old, false};
    activate = value;
    if (value == 0) {
        switch_off();
        return {old, false};
    }
    switch_on();
    return {old, access(usage_file_path, F_OK) != 0};
}

} // namespace

int32_t utm_app_set_activate(uint32_t value) {
    if (value > 1)
        return -1;
    const int32_t requested = static_cast<int32_t>(value);
    const turned_t turned = turn(requested);
    utm_app_debug_log("Set activate from %d to %d\n", turned.old, requested);
    // Only here, after the store's lock is free again: the export takes it itself.
    if (turned.lacks_usage_file)
        utm_app_export_statistics(usage_file_path, 1);
    return 0;
}
