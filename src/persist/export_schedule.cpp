#include "persist/export_schedule.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "format/usage_file.h"
#include "persist/export.h"

#include <sys/sysinfo.h>

utm_rwlock_t utm_export_interval_rwlock;
int32_t statistics_export_interval_minute = 30;
std::atomic<int64_t> last_export_statistics_ts{0};

namespace {

/// The interval in seconds, as a 32-bit product that wraps: an interval beyond 35,791,394 minutes
/// (68 years) asks for another one, or, where the product comes out negative, for none at all.
int64_t threshold_of(int32_t interval_minute) {
    return static_cast<int32_t>(static_cast<uint32_t>(interval_minute) * 60U);
}

/// @return seconds since the router booted; 0 when it does not say, which puts the export off
unsigned long uptime() {
    struct sysinfo info = {};
    const int result = sysinfo(&info);
    if (result == 0)
        return static_cast<unsigned long>(info.uptime);
    utm_app_debug_log("sysinfo code error = %d\n", result);
    return 0;
}

} // namespace

void utm_app_export_check() {
    const time_t now = utm_app_now();
    const int64_t threshold = threshold_of(utm_app_get_export_interval());
    const unsigned long up = uptime();
    // A negative threshold is beyond every uptime, compared as it is without a sign.
    if (now - last_export_statistics_ts > threshold && up >= static_cast<unsigned long>(threshold))
        utm_app_export_statistics_to(usage_file_path);
}

int32_t utm_app_get_export_interval() {
    const read_guard lock(utm_export_interval_rwlock);
    return statistics_export_interval_minute;
}

int32_t utm_app_set_export_interval(int32_t minutes) {
    if (minutes < 1)
        return -1;
    const write_guard lock(utm_export_interval_rwlock);
    statistics_export_interval_minute = minutes;
    return 0;
}
