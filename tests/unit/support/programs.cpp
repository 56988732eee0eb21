#include "tests/unit/support/programs.h"

#include "sim/harness/files.h"

#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

static constexpr char out_path[] = "/tmp/program_out";

namespace programs {

pid_t start(std::vector<std::string> words) {
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path,
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

result finish(pid_t pid) {
    int status = 0;
    const bool ended = pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status);
    const std::string out = sim_read_file(out_path);
    std::filesystem::remove(out_path);
    return {ended ? WEXITSTATUS(status) : -1, out};
}

result run(const std::vector<std::string> &words) {
    return finish(start(words));
}

} // namespace programs
