#include "persist/export_schedule.h"

utm_rwlock_t utm_export_interval_rwlock;
int32_t statistics_export_interval_minute = 30;
std::atomic<int64_t> last_export_statistics_ts{0};

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
