#pragma once
/// Running the simulated router's programs, each in a process of its own.

#include <iosfwd>
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

/// How a program ended and what it printed.
struct result {
    int status; ///< exit status, or -1 when it did not exit by itself
    std::string out;
    std::string err;
    bool operator==(const result &) const = default;
};

/// For messages of failed expectations.
void PrintTo(const result &shown, std::ostream *stream);

/// Runs a program of the build with arguments.
result run(const std::string &program, const std::vector<std::string> &arguments);

/// The same with arguments that hold no blanks, in one line: "lcsh apg on".
result run_line(const std::string &line);

/// @return the journal since the last call of `journal` or `reset`
std::string journal();

} // namespace fakes
