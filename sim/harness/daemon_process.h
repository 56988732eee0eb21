#pragma once
/// Starting and stopping the real daemon.

#include "sim/harness/clock_control.h"
#include "sim/harness/files.h"
#include "sim/harness/program.h"

#include <functional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

/// Where everything is, and what the daemon is to believe.
struct sim_daemon_options {
    std::string binary = {}; ///< the daemon
    std::vector<std::string> arguments = {};
    std::string fakes = {};        ///< directory that goes first on its PATH
    std::string router_dir = {};   ///< the simulated router's directory (UTM_SIM_DIR)
    std::string time_zone = "UTC"; ///< TZ
    sim_clock *clock = nullptr;    ///< null: real time
    std::string preload = {};      ///< libsimpreload.so, built for the daemon's machine
    /// Set last, so these may replace any of the above.
    std::vector<std::pair<std::string, std::string>> environment = {};
    /// Run in the new process just before exec.
    std::function<void()> in_child = {};
};

/// A running daemon, killed with its owner if nobody stopped it before.
struct sim_daemon {
    pid_t pid = -1;          ///< the detached daemon, a child of ours; -1 when it is not running
    int starter_status = -1; ///< exit status of the program that was started, before it detached

    sim_daemon() = default;
    sim_daemon(const sim_daemon &) = delete;
    sim_daemon &operator=(const sim_daemon &) = delete;
    ~sim_daemon();
};

/// @return options for the daemon of this build, with the fakes and the clock library of this
/// build and no clock yet
sim_daemon_options sim_built_options(const std::string &router_dir);

/// @return the build's directory, which a sandbox has to keep
std::string sim_build_directory();

/// Gives the calling process the environment of a program in the daemon's world: its PATH, local
/// time, clock and router. For a new process, before its exec.
void sim_set_environment(const sim_daemon_options &options);

/// Starts the daemon and waits until it has detached, which is when its socket exists. The calling
/// process becomes the reaper of orphans, so that the detached daemon is a child of it.
/// @return false when it did not detach; `starter_status` tells why (1: no socket)
[[nodiscard]] bool sim_daemon_start(sim_daemon *daemon, const sim_daemon_options &options,
                                    sim_timeout timeout = {});

/// Sends SIGINT until the daemon is gone. One is not always enough: like any program that tests a
/// flag and then sleeps, it can receive the signal just between the two.
sim_exit sim_daemon_stop(sim_daemon *daemon, sim_timeout timeout = {});

/// Ends the daemon as a power cut would.
sim_exit sim_daemon_kill(sim_daemon *daemon);

/// Waits for the daemon to end by itself.
sim_exit sim_daemon_wait_exit(sim_daemon *daemon, sim_timeout timeout = {});

/// Sends one signal.
bool sim_daemon_signal(const sim_daemon &daemon, int signal_number);

/// @return what sanitizers in a daemon of this router directory reported; empty when all is well.
/// The daemon's standard error is the null device, so they are told to report there.
std::string sim_sanitizer_reports(const std::string &router_dir);
