#include "control/dispatcher.h"

#include "control/feature_switch.h"
#include "control/reply.h"
#include "core/debug_log.h"
#include "core/log_text.h"
#include "core/owners.h"
#include "format/protocol.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "persist/import.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "usage/limits.h"
#include "usage/reports.h"

#include <cstdio>
#include <cstring>
#include <sys/socket.h>

namespace {

using cmd_t = utm_app_config_cmd;
using reply_t = utm_app_config_reply;

void send_status(int fd, reply_t &reply, utm_app_config_status status) {
    reply.status = status;
    utm_app_reply_send(fd, reply);
}

/// Writes a list: one data reply an entry, then the end. A client that no longer takes replies
/// ends it early: every further one would wait out the timeout again.
template <typename Entry, typename Fill>
void send_list(int fd, reply_t &reply, const Entry *entries, int32_t count, Fill fill) {
    if (entries == nullptr) {
        send_status(fd, reply, UTM_APP_CONFIG_STATUS_FAIL);
        return;
    }
    reply_block_t block;
    utm_app_reply_begin(&block, fd);
    for (int32_t i = 0; i < count; ++i) {
        reply_t *next = utm_app_reply_next(&block);
        if (next == nullptr)
            return;
        fill(*next, entries[i]);
    }
    utm_app_reply_end(&block);
}

int32_t ping(const cmd_t &, reply_t &) {
    return 0;
}

int32_t create_profile(const cmd_t &cmd, reply_t &) {
    return utm_app_create_profile(cmd.arg0);
}

int32_t delete_profile(const cmd_t &cmd, reply_t &) {
    return utm_app_delete_profile(cmd.arg0);
}

int32_t add_device(const cmd_t &cmd, reply_t &) {
    return utm_app_add_device(cmd.arg0, utm_app_config_mac(cmd));
}

int32_t delete_device(const cmd_t &cmd, reply_t &) {
    return utm_app_delete_device(cmd.arg0, utm_app_config_mac(cmd));
}

int32_t set_daily_limit_enable(const cmd_t &cmd, reply_t &) {
    return utm_app_set_daily_limit_enable(cmd.arg0, cmd.arg2);
}

int32_t get_daily_limit_enable(const cmd_t &cmd, reply_t &reply) {
    return utm_app_get_daily_limit_enable(cmd.arg0, &reply.daily_limit_enable);
}

int32_t set_daily_limit(const cmd_t &cmd, reply_t &) {
    return utm_app_set_daily_limit(cmd.arg0, cmd.arg3);
}

int32_t get_daily_limit(const cmd_t &cmd, reply_t &reply) {
    return utm_app_get_daily_limit(cmd.arg0, &reply.daily_limit);
}

int32_t set_weekday_daily_limit(const cmd_t &cmd, reply_t &) {
    return utm_app_set_weekday_daily_limit(cmd.arg0, cmd.arg1, cmd.arg3);
}

void get_weekday_daily_limit(int fd, const cmd_t &cmd, reply_t &reply) {
    const heap_ptr<config_weekday_pair_t> days(utm_app_get_weekday_daily_limit(cmd.arg0));
    send_list(fd, reply, days.get(), days_per_week,
              [](reply_t &to, const config_weekday_pair_t &from) {
                  to.weekday_day = from.day;
                  to.weekday_limit = from.limit;
              });
}

int32_t add_extend(const cmd_t &cmd, reply_t &) {
    return utm_app_add_extend(cmd.arg0, cmd.arg4);
}

int32_t get_extend(const cmd_t &cmd, reply_t &reply) {
    return utm_app_get_extend(cmd.arg0, &reply.extend);
}

int32_t reset_extend(const cmd_t &cmd, reply_t &) {
    return utm_app_reset_extend(cmd.arg0);
}

int32_t get_profile_usage(const cmd_t &cmd, reply_t &reply) {
    return utm_app_get_usage(cmd.arg0, &reply.daily_used, &reply.weekly_used, &reply.monthly_used);
}

void get_app_usage(int fd, const cmd_t &cmd, reply_t &reply) {
    int32_t count = 0;
    const heap_ptr<config_app_minutes_t> apps(utm_app_get_app_usage(cmd.arg0, cmd.arg1, &count));
    send_list(fd, reply, apps.get(), count, [](reply_t &to, const config_app_minutes_t &from) {
        to.app_usage_app_id = from.app_id;
        to.app_usage_value = from.minutes;
    });
}

void get_prev_day_usage(int fd, const cmd_t &cmd, reply_t &reply) {
    if (cmd.arg1 != UTM_APP_CONFIG_PREV_BY_DAY && cmd.arg1 != UTM_APP_CONFIG_PREV_BY_WEEK) {
        send_status(fd, reply, UTM_APP_CONFIG_STATUS_FAIL);
        return;
    }
    int32_t count = 0;
    const heap_ptr<config_prev_day_row_t> rows(
        utm_app_get_prev_day_usage(cmd.arg0, cmd.arg1, &count));
    send_list(fd, reply, rows.get(), count, [](reply_t &to, const config_prev_day_row_t &from) {
        static_assert(sizeof(from) == sizeof(to.prev_day_app_id) + sizeof(to.prev_day_data));
        to.prev_day_app_id = from.app_id;
        to.prev_day_data[0] = from.current;
        memcpy(&to.prev_day_data[1], from.previous, sizeof(from.previous));
    });
}

int32_t set_activate(const cmd_t &cmd, reply_t &) {
    return utm_app_set_activate(static_cast<uint32_t>(cmd.arg0));
}

int32_t set_debug(const cmd_t &cmd, reply_t &) {
    return utm_app_debug_set(static_cast<unsigned>(cmd.arg0));
}

int32_t create_policy(const cmd_t &cmd, reply_t &reply) {
    // The one operation whose result is a number and no status.
    const int32_t policy_id = utm_app_create_policy(cmd.arg0);
    if (policy_id < 1)
        return -1;
    reply.policy_id = policy_id;
    return 0;
}

/// The action and the limit have 16 bits on the wire, without a sign: -1 arrives as 65535. As an
/// action that is refused, since nobody knows it; as a limit it is accepted.
config_policy_rule_t rule_of(const cmd_t &cmd, int32_t index) {
    const utm_app_config_app_entry entry = utm_app_config_rule(cmd, index);
    return {static_cast<int32_t>(entry.app_id), entry.action, entry.limit};
}

int32_t add_apps_to_policy(const cmd_t &cmd, reply_t &) {
    const int32_t count = cmd.arg1;
    if (count < 1 || count > UTM_APP_CONFIG_APP_LIST_MAX)
        return -1;
    const heap_ptr<config_policy_rule_t> rules(
        heap_allocate<config_policy_rule_t>(UTM_APP_CONFIG_APP_LIST_MAX));
    if (rules == nullptr)
        return -1;
    for (int32_t i = 0; i < count; ++i)
        rules.get()[i] = rule_of(cmd, i);
    return utm_app_add_apps_to_policy(cmd.arg0, rules.get(), count);
}

int32_t delete_policy(const cmd_t &cmd, reply_t &) {
    return utm_app_delete_policy(cmd.arg0);
}

int32_t add_policy_to_profile(const cmd_t &cmd, reply_t &) {
    return utm_app_add_policy_to_profile(cmd.arg0, cmd.arg1);
}

/// Reads what the DPI shell says of a signature, to its end.
/// @return whether any line says that it was loaded
bool says_loaded(FILE *pipe) {
    char line[512];
    bool loaded = false;
    while (fgets(line, sizeof(line), pipe) != nullptr)
        loaded = loaded || strstr(line, "loaded") != nullptr;
    return loaded;
}

/// Loads an application signature into the DPI engine. No lock is held while the shell runs. The
/// path goes to the system's shell unchanged: anybody who may use the socket may run programs.
void load_signature(int fd, const cmd_t &cmd, reply_t &reply) {
    utm_app_debug_log("UTM_APP_CONFIG_LOAD_SIGNATURE\n");
    char line[128] = {};
    // Always this shell, unlike the access rules; a longer line is cut.
    snprintf(line, sizeof(line), "lcsh load %.117s", utm_app_config_path(cmd).text);
    utm_app_debug_log("cmd = %s\n", utm_app_log_text(line).text);
    reply.status = UTM_APP_CONFIG_STATUS_NOT_LOADED;
    pipe_ptr pipe(popen(line, "re"));
    if (pipe == nullptr) {
        utm_app_debug_log("cmd popen :lcsh load app signature fail.\n");
        utm_app_reply_send(fd, reply, UTM_APP_CONFIG_SHORT_REPLY_SIZE);
        return;
    }
    if (says_loaded(pipe.get()))
        reply.status = UTM_APP_CONFIG_STATUS_OK;
    // The shell is reaped before the client has its reply.
    pipe.reset();
    utm_app_reply_send(fd, reply);
}

int32_t get_status(const cmd_t &, reply_t &reply) {
    const mutex_guard lock(utm_app_config_mutex);
    reply.activate = activate;
    reply.debug = utm_app_debug_get();
    return 0;
}

int32_t get_export_interval(const cmd_t &, reply_t &reply) {
    reply.export_interval_minute = utm_app_get_export_interval();
    return 0;
}

int32_t set_export_interval(const cmd_t &cmd, reply_t &) {
    return utm_app_set_export_interval(cmd.arg0);
}

int32_t import_statistics(const cmd_t &cmd, reply_t &) {
    return utm_app_import_statistics(utm_app_config_path(cmd).text);
}

int32_t export_statistics(const cmd_t &cmd, reply_t &) {
    return utm_app_export_statistics_to(utm_app_config_path(cmd).text);
}

/// One command: its number and its operation. `run` answers with one reply whose status
/// tells 0 from any other result; `serve` writes replies of its own.
struct command_t {
    utm_app_config_cmd_type type;
    int32_t (*run)(const cmd_t &cmd, reply_t &reply);
    void (*serve)(int fd, const cmd_t &cmd, reply_t &reply);
};

constexpr command_t commands[] = {
    {UTM_APP_CONFIG_PING, ping, nullptr},
    {UTM_APP_CONFIG_CREATE_PROFILE, create_profile, nullptr},
    {UTM_APP_CONFIG_DELETE_PROFILE, delete_profile, nullptr},
    {UTM_APP_CONFIG_ADD_DEVICE, add_device, nullptr},
    {UTM_APP_CONFIG_DEL_DEVICE, delete_device, nullptr},
    {UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, set_daily_limit_enable, nullptr},
    {UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, get_daily_limit_enable, nullptr},
    {UTM_APP_CONFIG_SET_DAILY_LIMIT, set_daily_limit, nullptr},
    {UTM_APP_CONFIG_GET_DAILY_LIMIT, get_daily_limit, nullptr},
    {UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, set_weekday_daily_limit, nullptr},
    {UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, nullptr, get_weekday_daily_limit},
    {UTM_APP_CONFIG_ADD_EXTEND, add_extend, nullptr},
    {UTM_APP_CONFIG_GET_EXTEND, get_extend, nullptr},
    {UTM_APP_CONFIG_RESET_EXTEND, reset_extend, nullptr},
    {UTM_APP_CONFIG_GET_PROFILE_USAGE, get_profile_usage, nullptr},
    {UTM_APP_CONFIG_GET_APP_USAGE, nullptr, get_app_usage},
    {UTM_APP_CONFIG_GET_PREV_DAY_USAGE, nullptr, get_prev_day_usage},
    {UTM_APP_CONFIG_SET_ACTIVATE, set_activate, nullptr},
    {UTM_APP_CONFIG_SET_DEBUG, set_debug, nullptr},
    {UTM_APP_CONFIG_CREATE_POLICY, create_policy, nullptr},
    {UTM_APP_CONFIG_ADD_APPS_TO_POLICY, add_apps_to_policy, nullptr},
    {UTM_APP_CONFIG_DELETE_POLICY, delete_policy, nullptr},
    {UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, add_policy_to_profile, nullptr},
    {UTM_APP_CONFIG_LOAD_SIGNATURE, nullptr, load_signature},
    {UTM_APP_CONFIG_GET_STATUS, get_status, nullptr},
    {UTM_APP_CONFIG_GET_EXPORT_INTERVAL, get_export_interval, nullptr},
    {UTM_APP_CONFIG_SET_EXPORT_INTERVAL, set_export_interval, nullptr},
    {UTM_APP_CONFIG_IMPORT_STATISTICS, import_statistics, nullptr},
    {UTM_APP_CONFIG_EXPORT_STATISTICS, export_statistics, nullptr},
};

const command_t *find_command(uint8_t type) {
    for (const command_t &command : commands)
        if (command.type == type)
            return &command;
    return nullptr;
}

} // namespace

void utm_app_config_cmd_dispatch(int fd) {
    cmd_t cmd;
    // One read: a request that arrives in pieces is lost, as is a short one. It never waits: a
    // lone out-of-band byte makes a connection ready and gives a plain read nothing.
    if (recv(fd, &cmd, sizeof(cmd), MSG_DONTWAIT) != static_cast<ssize_t>(sizeof(cmd)))
        return;
    reply_t reply = {};
    utm_app_debug_log("[socket] Receive cmd type=%d\n", cmd.type);
    const command_t *command = find_command(cmd.type);
    if (command == nullptr)
        return;
    if (command->serve != nullptr) {
        command->serve(fd, cmd, reply);
        return;
    }
    const bool done = command->run(cmd, reply) == 0;
    send_status(fd, reply, done ? UTM_APP_CONFIG_STATUS_OK : UTM_APP_CONFIG_STATUS_FAIL);
}
