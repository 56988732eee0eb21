#include "sim/harness/sandbox.h"

#include "sim/harness/sandbox_mounts.h"
#include "sim/harness/sandbox_redirection.h"

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum class sandbox_way { mounts, redirection };

[[noreturn]] void refuse(const std::string &why) {
    fprintf(stderr, "%s: no sandbox: %s\n", program_invocation_short_name, why.c_str());
    exit(1);
}

/// Tries it in a child: nobody comes back from a namespace that was entered halfway.
bool allows_mounts(const std::vector<std::string> &keep) {
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        std::string why;
        _exit(sim_enter_mount_namespace(keep, &why) ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

sandbox_way choose(const std::vector<std::string> &keep) {
    const char *wanted = getenv(SIM_SANDBOX_VARIABLE);
    if (wanted == nullptr || wanted[0] == '\0')
        return allows_mounts(keep) ? sandbox_way::mounts : sandbox_way::redirection;
    if (strcmp(wanted, "mounts") == 0)
        return sandbox_way::mounts;
    if (strcmp(wanted, "redirection") == 0)
        return sandbox_way::redirection;
    refuse(std::string(SIM_SANDBOX_VARIABLE) + " is neither \"mounts\" nor \"redirection\"");
}

bool is_below(const std::string &path, const std::string &folder) {
    return path.compare(0, folder.size() + 1, folder + "/") == 0;
}

/// @return the paths without links, and the working directory among them
std::vector<std::string> resolved(const std::vector<std::string> &keep) {
    std::vector<std::string> paths;
    char path[PATH_MAX];
    for (const std::string &wanted : keep) {
        if (realpath(wanted.c_str(), path) == nullptr)
            refuse("cannot keep " + wanted + ": " + strerror(errno));
        paths.push_back(path);
    }
    const char *directory = getcwd(path, sizeof(path));
    if (directory != nullptr && (is_below(path, "/tmp") || is_below(path, "/dev")))
        paths.push_back(path);
    else if (directory == nullptr || strcmp(path, "/tmp") == 0 || strcmp(path, "/dev") == 0)
        if (chdir("/") != 0)
            refuse(std::string("cannot leave the working directory: ") + strerror(errno));
    return paths;
}

void enter(char **arguments, const std::vector<std::string> &keep) {
    std::string why;
    if (choose(keep) == sandbox_way::mounts) {
        if (!sim_enter_mount_namespace(keep, &why))
            refuse(why);
        return;
    }
    sim_enter_redirection(arguments, keep, &why);
    refuse(why);
}

} // namespace

void sim_enter_sandbox(char **arguments, std::vector<std::string> keep) {
    std::string why;
    // Whoever ignores its children's ends never learns how they ended; a starter may have left
    // that to this program.
    signal(SIGCHLD, SIG_DFL);
    // The daemon uses no folder of its own that others may write, whoever made it.
    umask(S_IWGRP | S_IWOTH);
    if (access("/proc/self/exe", F_OK) != 0)
        refuse("there is no /proc; mount it: mount -t proc proc /proc");
    if (!sim_is_redirected())
        enter(arguments, resolved(keep));
    else if (!sim_check_redirection(&why))
        refuse(why);
    // That of the caller may name a folder that is out of sight.
    setenv("TMPDIR", "/tmp", 1);
    // The client's own files, as well.
    setenv("UTM_APPCTL_HOUSEHOLD", "/tmp/household.json", 1);
    setenv("UTM_APPCTL_STATE", "/tmp/utm_appctl", 1);
}

std::string sim_sandbox_way() {
    return sim_is_redirected() ? "Sandbox: redirected paths" : "Sandbox: a mount namespace";
}
