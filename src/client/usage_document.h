#pragma once
/// A usage file as plain records, read as leniently as the daemon's import reads it.
///
/// Whatever the file holds, the records are within bounds: minutes are not negative, texts are
/// clean, and sums fit.

#include "client/message.h"
#include "core/vector.h"
#include "format/usage_file.h"

#include <cstdint>
#include <span>

/// Days of history that a profile has: today and the thirty before.
inline constexpr int ctl_history_days = day_ring_days + 1;
/// Most profiles and devices that are kept; further ones are only counted. A household has a few,
/// but a file has room for three million, and no router has the memory for a page of them.
inline constexpr size_t ctl_profiles_max = 100;
inline constexpr size_t ctl_devices_max = 32;
/// A limit of a whole day means no limit.
inline constexpr int32_t ctl_no_limit = minutes_per_day;

/// @return the whole week's minutes, today's included
inline int64_t ctl_week_of(const usage_counters_t &used) {
    return int64_t{used.daily} + used.weekly;
}

/// @return the whole month's minutes, this week's included
inline int64_t ctl_month_of(const usage_counters_t &used) {
    return ctl_week_of(used) + used.monthly;
}

struct ctl_app_use {
    int32_t app_id;
    usage_counters_t used;
};

/// Where a profile's part of a list stands.
struct ctl_part {
    size_t first;
    size_t count;
};

struct ctl_profile_use {
    int32_t user_profile_id;
    int32_t weekday_limits[days_per_week]; ///< Sunday first; `ctl_no_limit` for a day that the
                                           ///< file leaves out
    int32_t daily_extend;
    usage_counters_t used;
    bool blocked;
    ctl_part apps;    ///< the most used this month first
    ctl_part rules;   ///< in the file's order
    ctl_part devices; ///< in the file's order, the first `ctl_devices_max`
    size_t device_count;
    /// The total of its applications' minutes, by days ago: 0 is today.
    int64_t history[ctl_history_days];
};

struct ctl_usage_document {
    bool has_time;
    int64_t timestamp; ///< seconds since 1970; 0 without one
    plain_vector<ctl_profile_use> profiles;
    size_t profile_count; ///< those that are not kept included
    ctl_part router_apps; ///< the most used this month first
    plain_vector<ctl_app_use> apps;
    /// Those that limit or block: other actions mean nothing.
    plain_vector<config_policy_rule_t> rules;
    plain_vector<mac_text_t> devices; ///< whatever text the file has, cut to an address's length
};

/// @return the records of a part of a list
template <typename T>
std::span<const T> ctl_records(const plain_vector<T> &list, ctl_part part) {
    return {list.begin() + part.first, part.count};
}

/// Reads a usage file.
/// @param document  out: empty before
/// @return CTL_DONE; CTL_USAGE when it cannot be read or is not a usage file; CTL_BROKEN when
///         memory ran out; the last two after a message
[[nodiscard]] ctl_exit ctl_read_usage_document(const char *path, ctl_usage_document *document);
