#include "sim/harness/appctl.h"

/// Enough for the words that occur: names of several words, and paths.
static std::string quoted(const std::string &word) {
    bool is_plain = !word.empty() && word.find_first_of(" \t'\"$\\") == std::string::npos;
    return is_plain ? word : "\"" + word + "\"";
}

sim_outcome sim_appctl(const sim_daemon_options &world, const std::vector<std::string> &words,
                       sim_timeout timeout) {
    std::vector<std::string> command_line = {SIM_BUILT_APPCTL};
    command_line.insert(command_line.end(), words.begin(), words.end());
    return sim_run(
        command_line, [&] { sim_set_environment(world); }, timeout);
}

std::string sim_appctl_line(const std::vector<std::string> &words) {
    std::string line = "utm_appctl";
    for (const std::string &word : words)
        line += " " + quoted(word);
    return line;
}
