#pragma once
/// The clock for waiting: a router sets its time while it runs.

#include <cstdint>
#include <ctime>

/// @return milliseconds since some moment
inline int64_t monotonic_ms() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}
