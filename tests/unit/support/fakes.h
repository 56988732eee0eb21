#pragma once
/// Running the simulated router's programs, each in a process of its own.

#include "tests/lib/program.h"

#include <string>
#include <vector>

namespace fakes {

/// The simulated router's directory.
inline constexpr char router_dir[] = "/tmp/router";

/// An empty router, which UTM_SIM_DIR names.
void reset();
/// Takes both away.
void remove();

/// Writes a file of the router's directory.
void write(const std::string &name, const std::string &content);

/// Runs a program of the build with arguments.
program_end run(const std::string &program, const std::vector<std::string> &arguments);

/// The same with arguments that hold no blanks, in one line: "lcsh apg on".
program_end run_line(const std::string &line);

/// @return the journal since the last call of `journal` or `reset`
std::string journal();

} // namespace fakes
