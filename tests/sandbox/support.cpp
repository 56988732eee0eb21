#include "tests/sandbox/support.h"

#include "sim/preload/redirect.h"

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

std::string root() {
    return getenv(SIM_SANDBOX_ROOT);
}

std::string on_machine(const std::string &path) {
    return "/proc/self/root" + path;
}

std::string in_private(const std::string &path) {
    return on_machine(root() + path);
}

std::string described(const std::string &path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        return "";
    std::string text;
    for (const auto fact :
         {status.st_dev, status.st_ino, ino_t{status.st_mode}, static_cast<ino_t>(status.st_size),
          ino_t{status.st_nlink}, static_cast<ino_t>(status.st_ctim.tv_sec),
          static_cast<ino_t>(status.st_ctim.tv_nsec)})
        text += std::to_string(fact) + " ";
    return text;
}

bool exists(const std::string &path) {
    return !described(path).empty();
}

place::place() {
    fs::create_directory(in_private(folder));
    fs::create_directory(on_machine(folder));
}

place::~place() {
    std::error_code gone;
    fs::remove_all(in_private(folder), gone);
    fs::remove_all(on_machine(folder), gone);
}

pid_t place::own_pid() {
    return getpid();
}

int status_of_child(const std::function<void()> &in_child) {
    const pid_t pid = fork();
    if (pid == 0) {
        in_child();
        _exit(127);
    }
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
