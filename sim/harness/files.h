#pragma once
/// Reading what the daemon and the simulated router leave behind, and waiting for it.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

/// How long, in real time, to wait for something that should happen at once. Generous: it is
/// reached only when something is broken, or on a very slow machine.
struct sim_timeout {
    std::chrono::milliseconds limit{60'000};
};

/// For reading an answer: without a limit.
inline constexpr sim_timeout sim_forever = {std::chrono::milliseconds::max()};

/// @return the file's bytes; none when there is no such file
std::string sim_read_file(const std::string &path);

/// Replaces the file's content in one step, so that a reader never sees half of it.
bool sim_write_file(const std::string &path, const std::string &content);

/// @return the text's lines, without their line ends
std::vector<std::string> sim_split_lines(const std::string &text);

/// @return the lines of the simulated router's journal, oldest first
std::vector<std::string> sim_journal(const std::string &router_dir);

/// Polls once a millisecond.
/// @return false when the condition did not come true in time
[[nodiscard]] bool sim_wait_for(const std::function<bool()> &condition, sim_timeout timeout = {});
