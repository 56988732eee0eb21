#include "usage/calendar.h"

#include "core/clock.h"

#include <limits>

namespace {

/// Days of each month; leap days come in through `utm_app_leap_days` alone.
constexpr int32_t month_days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

/// The calendar fields of an instant in the zone that was looked at last.
tm fields_of(time_t instant) {
    tm fields = {};
    localtime_r(&instant, &fields);
    return fields;
}

/// `localtime` for two threads: `localtime_r` fills the caller's record but need not look at the
/// zone again, so `tzset` does, as `localtime` would.
tm local_time(time_t instant) {
    tzset();
    return fields_of(instant);
}

/// Two instants, with one look at the zone: it costs a system call, for each profile of a tick.
struct local_pair_t {
    tm last;
    tm now;
};

local_pair_t local_times(time_t last, time_t now) {
    tzset();
    return {fields_of(last), fields_of(now)};
}

} // namespace

int32_t utm_app_current_weekday() {
    return local_time(utm_app_now()).tm_wday;
}

int32_t utm_app_is_day_changed(time_t last, time_t now) {
    const local_pair_t local = local_times(last, now);
    return local.now.tm_mday != local.last.tm_mday;
}

int32_t utm_app_is_week_changed(time_t last, time_t now) {
    const local_pair_t local = local_times(last, now);
    return local.now.tm_wday < local.last.tm_wday;
}

int32_t utm_app_is_month_changed(time_t last, time_t now) {
    const local_pair_t local = local_times(last, now);
    return local.now.tm_mon != local.last.tm_mon;
}

int32_t utm_app_is_year_changed(time_t last, time_t now) {
    const local_pair_t local = local_times(last, now);
    return local.now.tm_year != local.last.tm_year;
}

int32_t utm_app_leap_days(int32_t year, int32_t month) {
    const double finished = month <= 2 ? year - 1.0 : year;
    // A quarter is exact in binary, so the first two terms round once, fused or not.
    return static_cast<int32_t>(finished * 0.25 - finished / 100.0 + finished / 400.0);
}

int64_t utm_app_day_number(time_t instant) {
    const tm fields = local_time(instant);
    const int32_t year = fields.tm_year + 1900;
    int64_t days = int64_t{365} * year + fields.tm_mday;
    for (int month = 0; month < fields.tm_mon; ++month)
        days += month_days[month];
    return days + utm_app_leap_days(year, fields.tm_mon + 1);
}

int32_t utm_app_days_between(time_t a, time_t b) {
    using limits = std::numeric_limits<int32_t>;
    const int64_t days = utm_app_day_number(b) - utm_app_day_number(a);
    return days < limits::min() || days > limits::max() ? -1 : static_cast<int32_t>(days);
}
