#pragma once
/// When the usage file is exported: the interval, and the time of the last export.

#include "core/lock.h"

#include <atomic>
#include <cstdint>

/// Guards the interval. (`last_export_statistics_ts` is written with the usage file's lock held
/// and read without one: a stale value moves an export by at most one tick.)
extern utm_rwlock_t utm_export_interval_rwlock;

/// Minutes between periodic exports, 1 or more.
extern int32_t statistics_export_interval_minute UTM_GUARDED_BY(utm_export_interval_rwlock);

/// Seconds since the epoch of the last export attempt or successful import.
extern std::atomic<int64_t> last_export_statistics_ts;

/// @return the interval in minutes
[[nodiscard]] int32_t utm_app_get_export_interval() UTM_EXCLUDES(utm_export_interval_rwlock);

/// Exports to the daemon's own file when the interval has passed; called once a tick.
///
/// The router must have been up for an interval as well, so that a boot does not replace the file
/// before somebody has imported it. Nothing is written while the feature is off.
void utm_app_export_check() UTM_EXCLUDES(utm_export_interval_rwlock);

/// Sets the interval, which counts from the last export.
/// @param minutes  1 or more
/// @return 0, or -1 for a value below 1, which changes nothing
[[nodiscard]] int32_t utm_app_set_export_interval(int32_t minutes)
    UTM_EXCLUDES(utm_export_interval_rwlock);
