#pragma once
/// What lies in a sandbox for people: the simulated router's folder, the virtual clock, one daemon.
///
/// The sandbox's program makes it, and the commands in the sandbox find it by its environment.
/// Beside what sim/README.md lists, the router's folder holds:
///
/// | file          | meaning                                                        |
/// |---------------|----------------------------------------------------------------|
/// | `daemon.pid`  | while there is a daemon: its process                           |
/// | `daemon.exit` | how the last daemon ended: "exit status 0", "signal 9"         |
/// | `journal.read`| how many lines of the journal `journal` and `news` have shown  |
/// | `log.read`    | how many lines of the daemon's log the command `news` has told |

#include "sim/harness/daemon_process.h"

#include <string>

inline constexpr char household_router[] = "/tmp/router";

/// @return the path of a file in the router's folder
std::string household_file(const char *name);

/// The calling process's sandbox, as its environment describes it.
/// @param clock  attached to the sandbox's
[[nodiscard]] bool household_open(sim_clock *clock, sim_daemon_options *options);

/// @return the running daemon's process, or -1
pid_t household_daemon();

/// Starts the daemon and waits until its first tick is over.
[[nodiscard]] bool household_start_daemon(const sim_daemon_options &options);

/// Sends the daemon a signal until it is gone, which the sandbox's own program notices.
/// @return whether it went
[[nodiscard]] bool household_end_daemon(int signal_number);
