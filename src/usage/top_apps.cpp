#include "usage/top_apps.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "usage/accounting.h"

int32_t utm_app_global_app_stat_add(int32_t app_id, int32_t minutes, app_index_t *index) {
    // A record that memory is short for is no reason to give up the other figures.
    static_cast<void>(utm_app_count_minutes(&utm_app_config_global_app_stat_list,
                                            &utm_app_config_global_app_stat_list_count, app_id,
                                            minutes, index));
    return 0;
}

namespace {

/// Copies the router-wide figures, in list order.
config_app_minutes_t *copy_top_apps(int32_t *count) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    *count = utm_app_config_global_app_stat_list_count;
    if (*count == 0)
        return nullptr;
    config_app_minutes_t *apps = heap_allocate<config_app_minutes_t>(static_cast<size_t>(*count));
    if (apps == nullptr) {
        utm_app_debug_log("Get top apps failed because malloc failed\n");
        return nullptr;
    }
    int32_t filled = 0;
    for (const config_app_usage_t &usage : global_apps()) {
        if (filled == *count)
            break;
        apps[filled++] = {usage.app_id, saturate(int64_t{usage.daily_used} + usage.weekly_used +
                                                 usage.monthly_used)};
    }
    return apps;
}

} // namespace

config_app_minutes_t *utm_app_get_top_apps(int32_t *count) {
    // Sorted after the store is free again: the copy is nobody else's, and a tick may be waiting.
    config_app_minutes_t *apps = copy_top_apps(count);
    if (apps != nullptr)
        qsort(apps, static_cast<size_t>(*count), sizeof(*apps),
              compare_config_app_usage_t_assending);
    return apps;
}

void utm_app_clear_global_app_stat() {
    for (config_app_usage_t &usage : global_apps()) {
        list_unlink(&usage.link);
        free(&usage);
    }
    utm_app_config_global_app_stat_list_count = 0;
}

void utm_app_reset_top_apps() {
    {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_clear_global_app_stat();
    }
    utm_app_debug_log("Reset top apps success\n");
}

int compare_config_app_usage_t_assending(const void *a, const void *b) {
    if (a == nullptr || b == nullptr)
        return 0;
    const int32_t left = static_cast<const config_app_minutes_t *>(a)->minutes;
    const int32_t right = static_cast<const config_app_minutes_t *>(b)->minutes;
    return left > right ? -1 : left < right;
}
