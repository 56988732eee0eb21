#pragma once
/// Running a program to its end, for a test that compares whole what it left.

#include "sim/harness/files.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// How a program ended and what it printed.
struct program_end {
    int status = -1; ///< exit status; -1: it had to be killed, or a signal ended it
    std::string out = {};
    std::string err = {};

    bool operator==(const program_end &) const = default;
};

std::ostream &operator<<(std::ostream &to, const program_end &end);

/// Runs a program with nothing on its standard input and waits until it has ended.
///
/// @param command_line  the program, by its path or as the PATH has it, and its arguments
/// @param in_child      run in the new process just before exec; may be empty
program_end run_program(const std::vector<std::string> &command_line,
                        const std::function<void()> &in_child = {}, sim_timeout timeout = {});
