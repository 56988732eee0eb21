#include "persist/export.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "core/heap.h"
#include "format/usage_file.h"
#include "persist/export_schedule.h"
#include "persist/replace.h"

#include <algorithm>

utm_mutex_t utm_app_export_import_mutex;

namespace {

usage_app_t figures_of(const config_app_usage_t &usage) UTM_STORE_LOCKED {
    usage_app_t app = {.app_id = usage.app_id,
                       .used = {usage.daily_used, usage.weekly_used, usage.monthly_used},
                       .has_ring = true,
                       .next_day_idx = usage.next_day_idx,
                       .prev_30_days = {}};
    std::copy_n(usage.prev_30_days, day_ring_days, app.prev_30_days);
    return app;
}

usage_profile_t figures_of(config_user_profile_t *from) UTM_STORE_LOCKED {
    usage_profile_t profile = {.user_profile_id = from->user_profile_id,
                               .weekdays = {},
                               .weekday_count = 0,
                               .daily_extend = from->daily_extend,
                               .used = {from->daily_used, from->weekly_used, from->monthly_used},
                               .blocked = from->blocked};
    for (const config_weekday_limit_t &entry : weekdays_of(from))
        usage_add_weekday(&profile, entry.day, entry.limit);
    return profile;
}

void write_policy(usage_text_t *text, config_app_policy_t *policy) UTM_STORE_LOCKED {
    usage_write_policy(text, policy->app_policy_id);
    for (const config_policy_app_t &rule : rules_of(policy))
        usage_write_rule(text, {rule.app_id, rule.action, rule.daily_limit});
    usage_write_policy_end(text);
}

void write_profile(usage_text_t *text, config_user_profile_t *profile) UTM_STORE_LOCKED {
    usage_write_profile(text, figures_of(profile));
    for (const config_app_usage_t &usage : apps_of(profile))
        usage_write_app(text, figures_of(usage));
    usage_write_devices(text);
    for (const config_device_t &device : devices_of(profile))
        usage_write_device(text, mac_text(device.mac));
    usage_write_devices_end(text);
    if (profile->app_policy != nullptr)
        write_policy(text, profile->app_policy);
    usage_write_profile_end(text);
}

/// Writes the whole store down.
/// @param now  the document's time, seconds since the epoch
/// @return the text, which has failed when memory ran out
usage_text_t text_of_store(time_t now) UTM_FILE_LOCKED UTM_EXCLUDES(utm_app_config_mutex) {
    usage_text_t text = {};
    const mutex_guard lock(utm_app_config_mutex);
    usage_write_begin(&text);
    for (config_user_profile_t &profile : all_profiles())
        write_profile(&text, &profile);
    usage_write_router(&text, static_cast<int32_t>(now));
    for (const config_app_usage_t &usage : global_apps())
        usage_write_app(&text, figures_of(usage));
    usage_write_end(&text);
    return text;
}

/// What has become of an export.
struct exported_t {
    bool is_written;
    bool is_readable; ///< an import would take the text
};

[[nodiscard]] exported_t export_now(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex) {
    const mutex_guard lock(utm_app_export_import_mutex);
    const time_t now = utm_app_now();
    if (path == nullptr || path[0] == '\0')
        return {};
    const usage_text_t text = text_of_store(now);
    if (text.has_failed)
        return {};
    const bool is_written = utm_app_replace_usage_file(path, text);
    last_export_statistics_ts = now;
    return {is_written, usage_text_is_readable(text.bytes.get(), text.size)};
}

} // namespace

int32_t utm_app_export_statistics(const char *path, int32_t force) {
    if (force == 0 && utm_app_get_activate() == 0)
        return -1;
    const exported_t exported = export_now(path);
    heap_give_back();
    if (!exported.is_written) {
        // Always written: a file that stopped growing must show in the log of any router.
        utm_app_log_always("export to %s failed\n", usage_path_shown(path).text);
        return -1;
    }
    // The file may still serve another reader, so it is not withheld.
    if (!exported.is_readable)
        utm_app_log_always("export to %s is more than an import takes\n",
                           usage_path_shown(path).text);
    utm_app_debug_log("export to %s success\n", usage_path_shown(path).text);
    return 0;
}

int32_t utm_app_export_statistics_to(const char *path) {
    return utm_app_export_statistics(path, 0);
}
