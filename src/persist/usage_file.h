#pragma once
/// The usage file: the accounting state as one JSON document, which `export` writes and `import`
/// reads. docs/usage-file.md describes it for people.
///
/// | in            | key                  | value                                             |
/// |---------------|----------------------|---------------------------------------------------|
/// | root          | user_profile_list    | array of profiles                                 |
/// |               | timestamp            | seconds since the epoch, cut to 32 bits           |
/// |               | global_stat          | array of applications, router-wide                |
/// | profile       | user_profile_id      |                                                   |
/// |               | mon .. sun           | weekday limits; "mon" is day 0, which is Sunday   |
/// |               | daily_extend         | minutes                                           |
/// |               | daily_used, weekly_used, monthly_used | minutes                          |
/// |               | blocked              | 0 or 1                                            |
/// |               | app_stat_list        | array of applications                             |
/// |               | device_list          | array of "AA:BB:CC:DD:EE:FF"                      |
/// |               | app_policy           | the bound policy; left out without one            |
/// | application   | app_id               |                                                   |
/// |               | daily_used, weekly_used, monthly_used | minutes                          |
/// |               | next_day_idx         | 0..29                                             |
/// |               | prev_30_days         | thirty numbers, in slot order                     |
/// | policy        | app_policy_id        |                                                   |
/// |               | app_list             | array of rules                                    |
/// | rule          | app_id, action, daily_limit |                                            |

#include "core/lock.h"

#include <cstdint>

/// The daemon's own file. The folder is the router's to provide.
inline constexpr char usage_file_path[] = "/tmp/ApplicationData/app_usage.json";

/// Bytes that an import reads at the most; 10,000 applications take about three million.
inline constexpr int64_t usage_file_size_limit = 64 * 1024 * 1024;

/// Serialises exports and imports, each for its whole run. Taken before `utm_app_config_mutex`.
extern utm_mutex_t utm_app_export_import_mutex;

namespace usage_key {

inline constexpr char user_profile_list[] = "user_profile_list";
inline constexpr char timestamp[] = "timestamp";
inline constexpr char global_stat[] = "global_stat";
inline constexpr char user_profile_id[] = "user_profile_id";
/// By day number. Day 0 is Sunday and stands under "mon": the names are places in a list, and
/// files in the field are written so.
inline constexpr const char *weekdays[] = {"mon", "tues", "wed", "thur", "fri", "sat", "sun"};
inline constexpr char daily_extend[] = "daily_extend";
inline constexpr char daily_used[] = "daily_used";
inline constexpr char weekly_used[] = "weekly_used";
inline constexpr char monthly_used[] = "monthly_used";
inline constexpr char blocked[] = "blocked";
inline constexpr char app_stat_list[] = "app_stat_list";
inline constexpr char device_list[] = "device_list";
inline constexpr char app_policy[] = "app_policy";
inline constexpr char app_policy_id[] = "app_policy_id";
inline constexpr char app_list[] = "app_list";
inline constexpr char app_id[] = "app_id";
inline constexpr char action[] = "action";
inline constexpr char daily_limit[] = "daily_limit";
inline constexpr char next_day_idx[] = "next_day_idx";
inline constexpr char prev_30_days[] = "prev_30_days";

} // namespace usage_key

/// Opens a usage file for reading. Anything but a regular file is refused, and not even opened: a
/// pipe or a device could keep the reader, and the lock it holds, waiting for ever. So is a file
/// larger than `usage_file_size_limit`, since json-c reads a file whole before it looks at it.
/// @return a descriptor that is closed in the programs that the daemon starts, or -1
[[nodiscard]] int usage_file_open_to_read(const char *path);

/// Opens a usage file for writing, empty. Pipes and sockets are refused like that.
/// @return a descriptor that is closed in the programs that the daemon starts, or -1
[[nodiscard]] int usage_file_open_to_write(const char *path);

/// @return a path as log lines show it
[[nodiscard]] inline const char *usage_file_shown(const char *path) {
    return path == nullptr ? "NULL" : path;
}
