#pragma once
/// Runs the real client and keeps what it left: a transcript that a test compares whole.

#include "tests/lib/program.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// What the client finds around it. Its environment is the test's without what changes its output,
/// in the time zone UTC and the plain locale.
struct appctl_setting {
    /// Set last, so these may replace any of the above.
    std::vector<std::pair<std::string, std::string>> environment = {};
    int terminal_columns = 0;    ///< its standard output is a terminal so wide; 0: a pipe
    std::string clock_path = {}; ///< the page of a virtual clock
    /// Run in the new process just before exec.
    std::function<void()> in_child = {};
};

/// Runs the client with these words and waits until it has ended.
program_end appctl(const std::vector<std::string> &words, const appctl_setting &setting = {},
                   sim_timeout timeout = {});

/// A run that did what it was asked, without a word on standard error.
program_end done(const std::string &out = "");

/// A run that printed nothing but one message.
/// @param message  without the program's name in front and the line end behind
program_end fails(int status, const std::string &message);

/// @return whether terminals can be made here; in the private /dev that takes a mount
bool have_terminals();
