#pragma once
/// Running the client, utm_appctl, beside the daemon.

#include "sim/harness/daemon_process.h"
#include "sim/harness/program.h"

#include <string>
#include <vector>

/// Runs the client of this build with the words of a command line, as in
/// `sim_appctl(options, {"extend", "add", "1", "30m"})`.
///
/// @param world  how the daemon was started: the client gets the same environment, and with it the
///               same local time; what sanitizers find in it is among `sim_sanitizer_reports`
sim_outcome sim_appctl(const sim_daemon_options &world, const std::vector<std::string> &words,
                       sim_timeout timeout = {});

/// @return the command line as a person would type it: `utm_appctl extend add 1 30m`
std::string sim_appctl_line(const std::vector<std::string> &words);
