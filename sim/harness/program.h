#pragma once
/// Running a program to its end, and how processes end.

#include "sim/harness/files.h"

#include <functional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

/// How a process ended.
struct sim_exit {
    bool ended = false; ///< false: it was still there when the timeout was over
    int status = -1;    ///< exit status, or -1 when a signal ended it
    int signal = 0;     ///< the signal that ended it, or 0
};

/// The wait status of a child whose end nobody knows: that of an exit with 1, which is no success.
inline constexpr int sim_lost_status = 1 << 8;

/// Waits for a child of ours to end.
sim_exit sim_reap(pid_t pid, sim_timeout timeout = {});

/// Lets another process end first: this one ignores what a terminal sends, which reaches the other
/// by itself, and passes SIGTERM and SIGHUP on to it.
/// @param process  0: pass nothing on any more
void sim_leave_signals_to(pid_t process);

/// @return the children of the calling process, orphans that were passed to it included
std::set<pid_t> sim_children();

/// Replaces this process by one of the programs that are tested, through an emulator where they are
/// for another machine.
/// @param command_line  the program, by its path, and its arguments
[[noreturn]] void sim_exec(const std::vector<std::string> &command_line);

/// The same with a program that was built like this one: where this one is emulated, so is that.
[[noreturn]] void sim_exec_own(const std::vector<std::string> &command_line);

/// What a program said, and how it ended.
struct sim_outcome {
    std::string out = {};
    std::string err = {};
    sim_exit how = {};
};

/// Runs a program of this build with nothing on its standard input, and collects what it prints.
/// One that has not ended in time is killed, and `how.ended` stays false.
///
/// @param command_line  the program, by its path, and its arguments
/// @param in_child      run in the new process just before exec; may be empty
sim_outcome sim_run(const std::vector<std::string> &command_line,
                    const std::function<void()> &in_child = {}, sim_timeout timeout = {});
