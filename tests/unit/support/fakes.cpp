#include "tests/unit/support/fakes.h"

#include "sim/harness/daemon_process.h"
#include "sim/harness/files.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace fs = std::filesystem;

namespace fakes {

void reset() {
    fs::remove_all(router_dir);
    fs::create_directory(router_dir);
    setenv("UTM_SIM_DIR", router_dir, 1);
}

void remove() {
    fs::remove_all(router_dir);
    unsetenv("UTM_SIM_DIR");
}

void write(const std::string &name, const std::string &content) {
    if (!sim_write_file(std::string(router_dir) + "/" + name, content))
        abort();
}

program_end run(const std::string &program, const std::vector<std::string> &arguments) {
    std::vector<std::string> command_line = {sim_built_options(router_dir).fakes + "/" + program};
    command_line.insert(command_line.end(), arguments.begin(), arguments.end());
    return run_program(command_line);
}

program_end run_line(const std::string &line) {
    std::istringstream words(line);
    std::string program;
    words >> program;
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word);
    return run(program, arguments);
}

std::string journal() {
    const std::string path = std::string(router_dir) + "/journal";
    const std::string lines = sim_read_file(path);
    fs::remove(path);
    return lines;
}

} // namespace fakes
