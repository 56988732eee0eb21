#pragma once
/// Running the machine's own programs: a shell, a compiler.

#include <string>
#include <sys/types.h>
#include <vector>

namespace programs {

/// How a program ended and what it printed.
struct result {
    int status; ///< exit status, or -1 when it did not exit by itself
    std::string out;
    bool operator==(const result &) const = default;
};

/// Starts a program, looked for on the PATH. One at a time: what it prints goes into a file.
/// @return its process, or -1
pid_t start(std::vector<std::string> words);

/// Waits for its end.
result finish(pid_t pid);

/// Runs a program to its end.
result run(const std::vector<std::string> &words);

} // namespace programs
