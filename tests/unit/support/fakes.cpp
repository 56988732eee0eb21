#include "tests/unit/support/fakes.h"

#include "sim/harness/daemon_process.h"
#include "sim/harness/files.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <ostream>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr char out_path[] = "/tmp/stand_in_out";
constexpr char err_path[] = "/tmp/stand_in_err";

/// What the program prints goes into files: nobody has to read while it runs.
pid_t start(const std::string &path, const std::vector<char *> &argv) {
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path, flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path, flags, 0600);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

std::string take(const std::string &path) {
    const std::string content = sim_read_file(path);
    fs::remove(path);
    return content;
}

} // namespace

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

void PrintTo(const result &shown, std::ostream *stream) {
    *stream << "status " << shown.status << "\nout: " << shown.out << "\nerr: " << shown.err;
}

result run(const std::string &program, const std::vector<std::string> &arguments) {
    std::string path = sim_built_options(router_dir).fakes + "/" + program;
    std::vector<std::string> kept = arguments;
    std::vector<char *> argv = {path.data()};
    for (std::string &argument : kept)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    const pid_t pid = start(path, argv);
    int status = 0;
    const bool ended = pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status);
    return {ended ? WEXITSTATUS(status) : -1, take(out_path), take(err_path)};
}

result run_line(const std::string &line) {
    std::istringstream words(line);
    std::string program;
    words >> program;
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word);
    return run(program, arguments);
}

std::string journal() {
    return take(std::string(router_dir) + "/journal");
}

} // namespace fakes
