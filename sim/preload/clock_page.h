#pragma once
/// The file behind the virtual clock: one page, shared by the controller and the clock library.

#include <atomic>
#include <cstdint>

/// Names the page's file to the clock library; unset, the library passes every call on.
inline constexpr char SIM_CLOCK_VARIABLE[] = "UTM_SIM_CLOCK";

/// Set for the daemon alone: its `sleep` takes the time that passes. In other programs of the same
/// world `sleep` is real, and only `gettimeofday` tells the virtual time.
inline constexpr char SIM_SLEEPER_VARIABLE[] = "UTM_SIM_SLEEPER";

/// Time passes only while a program sleeps: the controller grants seconds, the sleeper takes them
/// one at a time and moves the clock by each one it takes. So the program's n-th second starts at
/// the same virtual time in every run, however busy the machine is.
struct sim_clock_page {
    std::atomic<int64_t> now;        ///< seconds since the epoch, what `gettimeofday` answers
    std::atomic<int64_t> granted;    ///< seconds of sleep allowed so far
    std::atomic<int64_t> taken;      ///< seconds of sleep consumed so far, never above `granted`
    std::atomic<int32_t> sleeper;    ///< pid of the process that waits for a grant, or 0
    std::atomic<int32_t> controller; ///< pid of the process that grants
};

static_assert(std::atomic<int64_t>::is_always_lock_free, "the page is shared between processes");
