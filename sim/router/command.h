#pragma once
/// What every fake does with its command line, whatever its trade.

#include <string>

/// Exit status of a fake that was given a command line it does not know.
inline constexpr int SIM_REFUSED = 64;

/// @return the command line as a person would type it, on one line: arguments that a shell would
/// take apart are in single quotes
std::string sim_command_line(const char *program, int argc, char **argv);

/// Records a command line that the daemon should not have issued and complains to standard error.
/// @return the status to exit with
int sim_refuse(const std::string &command_line, const std::string &why);

/// Records an accepted command line, then does what the fault files ask: waits at a gate, fails.
/// @return 0 to carry the command out, otherwise the status to exit with instead
int sim_accept(const std::string &command_line);
