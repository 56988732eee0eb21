#pragma once
/// The wire format of the control socket, and nothing else: a client includes this file, which
/// needs core/mac.h beside it.
///
/// A client connects to the stream socket, writes one request of 136 bytes and reads replies of
/// 832 bytes until one whose status is not UTM_APP_CONFIG_STATUS_DATA; then the server closes.
/// Integers are 32 bits wide in the host's byte order: both ends run on the same machine.

#include "core/mac.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Where the daemon listens.
inline constexpr char UTM_APP_CONFIG_SOCKET_PATH[] = "/dev/utm_app_config_socket";

/// The commands, by the first byte of a request. The numbers between are not served.
enum utm_app_config_cmd_type : uint8_t {
    UTM_APP_CONFIG_PING = 0,
    UTM_APP_CONFIG_CREATE_PROFILE = 1,
    UTM_APP_CONFIG_DELETE_PROFILE = 2,
    UTM_APP_CONFIG_ADD_DEVICE = 3,
    UTM_APP_CONFIG_DEL_DEVICE = 4,
    UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE = 26,
    UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE = 27,
    UTM_APP_CONFIG_SET_DAILY_LIMIT = 28,
    UTM_APP_CONFIG_GET_DAILY_LIMIT = 29,
    UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT = 30,
    UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT = 31,
    UTM_APP_CONFIG_ADD_EXTEND = 32,
    UTM_APP_CONFIG_GET_EXTEND = 33,
    UTM_APP_CONFIG_RESET_EXTEND = 34,
    UTM_APP_CONFIG_GET_PROFILE_USAGE = 35,
    UTM_APP_CONFIG_GET_APP_USAGE = 36,
    UTM_APP_CONFIG_GET_PREV_DAY_USAGE = 37,
    UTM_APP_CONFIG_SET_ACTIVATE = 39,
    UTM_APP_CONFIG_SET_DEBUG = 41,
    UTM_APP_CONFIG_CREATE_POLICY = 42,
    UTM_APP_CONFIG_ADD_APPS_TO_POLICY = 43,
    UTM_APP_CONFIG_DELETE_POLICY = 44,
    UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE = 45,
    UTM_APP_CONFIG_LOAD_SIGNATURE = 46,
    UTM_APP_CONFIG_GET_STATUS = 47,
    UTM_APP_CONFIG_GET_EXPORT_INTERVAL = 48,
    UTM_APP_CONFIG_SET_EXPORT_INTERVAL = 49,
    UTM_APP_CONFIG_IMPORT_STATISTICS = 50,
    UTM_APP_CONFIG_EXPORT_STATISTICS = 51,
};

/// The first byte of a reply.
enum utm_app_config_status : uint8_t {
    UTM_APP_CONFIG_STATUS_OK = 0,           ///< done; for a list, its end
    UTM_APP_CONFIG_STATUS_FAIL = 1,         ///< bad argument, unknown id, no memory
    UTM_APP_CONFIG_STATUS_DATA = 2,         ///< one entry of a list, more replies follow
    UTM_APP_CONFIG_STATUS_NOT_LOADED = 255, ///< LOAD_SIGNATURE only
};

/// A request. What a client does not name stays zero: `{.type = UTM_APP_CONFIG_PING}`.
///
/// | offset | size | field         | meaning                                                |
/// |--------|------|---------------|--------------------------------------------------------|
/// | 0      | 1    | type          | `utm_app_config_cmd_type`                              |
/// | 8      | 4    | arg0          | profile id, policy id or a value, by command           |
/// | 12     | 4    | arg1          | second id or selector                                  |
/// | 16     | 4    | arg2          | enable flag                                            |
/// | 20     | 4    | arg3          | limit, minutes                                         |
/// | 24     | 4    | arg4          | extension, minutes                                     |
/// | 12     | 6    | mac overlay   | ADD_DEVICE, DEL_DEVICE: address in transmission order  |
/// | 8      | 128  | path overlay  | LOAD_SIGNATURE, IMPORT, EXPORT: text ended by a NUL    |
/// | 16     | 80   | rules overlay | ADD_APPS_TO_POLICY: `arg1` (1 to 10) entries           |
struct utm_app_config_cmd {
    uint8_t type = UTM_APP_CONFIG_PING;
    uint8_t reserved[7] = {};
    int32_t arg0 = 0;
    int32_t arg1 = 0;
    int32_t arg2 = 0;
    int32_t arg3 = 0;
    int32_t arg4 = 0;
    uint8_t tail[108] = {};
};

/// What a rule does to its application.
enum config_policy_action : int32_t {
    POLICY_ACTION_REMOVE = 0, ///< take the rule away; only ever passed, never stored
    POLICY_ACTION_LIMIT = 1,  ///< block once the day's use reaches the rule's limit
    POLICY_ACTION_BLOCK = 2,  ///< always blocked
};

/// One entry of the rules overlay.
struct utm_app_config_app_entry {
    uint32_t app_id;
    uint16_t action; ///< `config_policy_action`
    uint16_t limit;  ///< minutes
};

/// The period of GET_APP_USAGE, in `arg1`.
enum utm_app_config_period : int32_t {
    UTM_APP_CONFIG_PERIOD_OLDEST_DAY = 30, ///< days are their own numbers, from 0, which is today
    UTM_APP_CONFIG_PERIOD_WEEK = 1000,     ///< this week; each number more is a week earlier
    UTM_APP_CONFIG_PERIOD_OLDEST_WEEK = 1003,
    UTM_APP_CONFIG_PERIOD_MONTH = 2000,
};

/// The selector of GET_PREV_DAY_USAGE, in `arg1`.
enum utm_app_config_prev : int32_t {
    UTM_APP_CONFIG_PREV_BY_DAY = 0,
    UTM_APP_CONFIG_PREV_BY_WEEK = 1,
};

inline constexpr size_t UTM_APP_CONFIG_CMD_SIZE = 136;
inline constexpr size_t UTM_APP_CONFIG_MAC_OFFSET = 12;
inline constexpr size_t UTM_APP_CONFIG_PATH_OFFSET = 8;
/// Bytes of the path overlay, its NUL included.
inline constexpr size_t UTM_APP_CONFIG_PATH_SIZE = 128;
inline constexpr size_t UTM_APP_CONFIG_APP_LIST_OFFSET = 16;
/// Entries that a request has room for.
inline constexpr int32_t UTM_APP_CONFIG_APP_LIST_MAX = 10;

static_assert(sizeof(utm_app_config_cmd) == UTM_APP_CONFIG_CMD_SIZE);
static_assert(offsetof(utm_app_config_cmd, type) == 0);
static_assert(offsetof(utm_app_config_cmd, arg0) == 8);
static_assert(offsetof(utm_app_config_cmd, arg1) == 12);
static_assert(offsetof(utm_app_config_cmd, arg2) == 16);
static_assert(offsetof(utm_app_config_cmd, arg3) == 20);
static_assert(offsetof(utm_app_config_cmd, arg4) == 24);
static_assert(offsetof(utm_app_config_cmd, tail) == 28);
static_assert(UTM_APP_CONFIG_PATH_OFFSET + UTM_APP_CONFIG_PATH_SIZE == UTM_APP_CONFIG_CMD_SIZE);
static_assert(sizeof(utm_app_config_app_entry) == 8);
static_assert(offsetof(utm_app_config_app_entry, app_id) == 0);
static_assert(offsetof(utm_app_config_app_entry, action) == 4);
static_assert(offsetof(utm_app_config_app_entry, limit) == 6);

/// The overlays lie over the request's bytes, whatever fields stand there.
inline void utm_app_config_overlay(utm_app_config_cmd *cmd, size_t offset, const void *bytes,
                                   size_t size) {
    memcpy(reinterpret_cast<char *>(cmd) + offset, bytes, size);
}

/// @param mac  `mac_bytes` bytes
inline void utm_app_config_put_mac(utm_app_config_cmd *cmd, const uint8_t *mac) {
    utm_app_config_overlay(cmd, UTM_APP_CONFIG_MAC_OFFSET, mac, mac_bytes);
}

/// @return `mac_bytes` bytes of the request
inline const uint8_t *utm_app_config_mac(const utm_app_config_cmd &cmd) {
    return reinterpret_cast<const uint8_t *>(&cmd) + UTM_APP_CONFIG_MAC_OFFSET;
}

/// @param path  a longer one is cut to UTM_APP_CONFIG_PATH_SIZE - 1 characters
inline void utm_app_config_put_path(utm_app_config_cmd *cmd, const char *path) {
    const size_t length = strnlen(path, UTM_APP_CONFIG_PATH_SIZE - 1);
    utm_app_config_overlay(cmd, UTM_APP_CONFIG_PATH_OFFSET, path, length);
}

/// A request's path, which may come without its NUL.
struct utm_app_config_path_text {
    char text[UTM_APP_CONFIG_PATH_SIZE + 1];
};

inline utm_app_config_path_text utm_app_config_path(const utm_app_config_cmd &cmd) {
    utm_app_config_path_text path = {};
    memcpy(path.text, reinterpret_cast<const char *>(&cmd) + UTM_APP_CONFIG_PATH_OFFSET,
           UTM_APP_CONFIG_PATH_SIZE);
    return path;
}

/// @param count  1 to UTM_APP_CONFIG_APP_LIST_MAX; the caller sets `arg1` to it
inline void utm_app_config_put_rules(utm_app_config_cmd *cmd, const utm_app_config_app_entry *rules,
                                     int32_t count) {
    utm_app_config_overlay(cmd, UTM_APP_CONFIG_APP_LIST_OFFSET, rules,
                           static_cast<size_t>(count) * sizeof(*rules));
}

/// @param index  0 to UTM_APP_CONFIG_APP_LIST_MAX - 1
inline utm_app_config_app_entry utm_app_config_rule(const utm_app_config_cmd &cmd, int32_t index) {
    utm_app_config_app_entry entry;
    memcpy(&entry,
           reinterpret_cast<const char *>(&cmd) + UTM_APP_CONFIG_APP_LIST_OFFSET +
               static_cast<size_t>(index) * sizeof(entry),
           sizeof(entry));
    return entry;
}

/// A reply. Bytes that a command does not set mean nothing.
struct utm_app_config_reply {
    uint8_t status; ///< `utm_app_config_status`
    uint8_t reserved0[7];
    int32_t policy_id; ///< CREATE_POLICY
    uint8_t reserved1[4];
    int32_t daily_used;   ///< GET_PROFILE_USAGE, minutes
    int32_t weekly_used;  ///< GET_PROFILE_USAGE, minutes
    int32_t monthly_used; ///< GET_PROFILE_USAGE, minutes
    uint8_t reserved2[20];
    int32_t app_usage_app_id; ///< GET_APP_USAGE, per entry
    int32_t app_usage_value;  ///< GET_APP_USAGE, per entry, minutes
    uint8_t reserved3[24];
    int32_t prev_day_app_id;   ///< GET_PREV_DAY_USAGE, per entry
    int32_t prev_day_data[31]; ///< GET_PREV_DAY_USAGE, per entry: today or this week, then thirty
    uint8_t reserved4[16];
    int32_t daily_limit_enable; ///< GET_DAILY_LIMIT_ENABLE
    int32_t daily_limit;        ///< GET_DAILY_LIMIT, minutes
    int32_t extend;             ///< GET_EXTEND, minutes
    int32_t activate;           ///< GET_STATUS: the feature switch
    uint8_t reserved5[4];
    int32_t debug; ///< GET_STATUS: the debug flag
    uint8_t reserved6[16];
    int32_t weekday_day;   ///< GET_WEEKDAY_DAILY_LIMIT, per entry: 0 = Sunday
    int32_t weekday_limit; ///< GET_WEEKDAY_DAILY_LIMIT, per entry, minutes
    uint8_t reserved7[8];
    int32_t export_interval_minute; ///< GET_EXPORT_INTERVAL
    uint8_t reserved8[548];
};

inline constexpr size_t UTM_APP_CONFIG_REPLY_SIZE = 832;
/// A signature load whose command cannot be started answers with this many bytes only.
inline constexpr size_t UTM_APP_CONFIG_SHORT_REPLY_SIZE = 136;

static_assert(sizeof(utm_app_config_reply) == UTM_APP_CONFIG_REPLY_SIZE);
static_assert(offsetof(utm_app_config_reply, status) == 0);
static_assert(offsetof(utm_app_config_reply, policy_id) == 8);
static_assert(offsetof(utm_app_config_reply, daily_used) == 16);
static_assert(offsetof(utm_app_config_reply, weekly_used) == 20);
static_assert(offsetof(utm_app_config_reply, monthly_used) == 24);
static_assert(offsetof(utm_app_config_reply, app_usage_app_id) == 48);
static_assert(offsetof(utm_app_config_reply, app_usage_value) == 52);
static_assert(offsetof(utm_app_config_reply, prev_day_app_id) == 80);
static_assert(offsetof(utm_app_config_reply, prev_day_data) == 84);
static_assert(sizeof(utm_app_config_reply::prev_day_data) == 124);
static_assert(offsetof(utm_app_config_reply, daily_limit_enable) == 224);
static_assert(offsetof(utm_app_config_reply, daily_limit) == 228);
static_assert(offsetof(utm_app_config_reply, extend) == 232);
static_assert(offsetof(utm_app_config_reply, activate) == 236);
static_assert(offsetof(utm_app_config_reply, debug) == 244);
static_assert(offsetof(utm_app_config_reply, weekday_day) == 264);
static_assert(offsetof(utm_app_config_reply, weekday_limit) == 268);
static_assert(offsetof(utm_app_config_reply, export_interval_minute) == 280);
