#pragma once
/// The wall clock: the one place where the daemon asks what time it is.

#include <sys/time.h>

/// @return the wall clock's whole seconds since the epoch, read with `gettimeofday`
inline time_t utm_app_now() {
    timeval now = {};
    gettimeofday(&now, nullptr);
    return now.tv_sec;
}
