#pragma once
/// The controller of the virtual clock that libsimpreload.so gives to a program.

#include "sim/harness/files.h"

#include <ctime>
#include <string>

struct sim_clock_page;

/// A virtual clock, which belongs to the process that created it: a program that sleeps by it is
/// killed when that process is gone. The page's file must stay where it is while a program uses it.
struct sim_clock {
    std::string path;
    sim_clock_page *page = nullptr;

    sim_clock() = default;
    sim_clock(const sim_clock &) = delete;
    sim_clock &operator=(const sim_clock &) = delete;
    ~sim_clock();
};

/// Creates the page's file, with the clock standing at `start`.
[[nodiscard]] bool sim_clock_create(sim_clock *clock, const std::string &path, time_t start);

/// Opens the page of a clock that another process created, which stays its owner.
[[nodiscard]] bool sim_clock_attach(sim_clock *clock, const std::string &path);

/// @return what the program's `gettimeofday` answers now, in seconds since the epoch
time_t sim_clock_now(const sim_clock &clock);

/// Waits until a program sleeps and nothing granted is left: after a start this means that the
/// daemon's first tick is over.
[[nodiscard]] bool sim_clock_wait_asleep(const sim_clock &clock, sim_timeout timeout = {});

/// Lets `seconds` pass and waits until the program has slept through them and sleeps again. The
/// work that it does in between is done when this returns: after 60 seconds, one tick.
/// @return false when the program was not asleep again in time; the seconds stay granted
[[nodiscard]] bool sim_clock_advance(sim_clock *clock, int seconds, sim_timeout timeout = {});

/// Grants `seconds` without waiting, for a program that is meant to be caught halfway.
void sim_clock_grant(sim_clock *clock, int seconds);

/// Sets the clock forwards or backwards by `delta` seconds; no sleep ends by it.
void sim_clock_jump(sim_clock *clock, time_t delta);

/// Forgets a sleeper that was killed, so that waiting means the next program.
void sim_clock_forget_sleeper(sim_clock *clock);
