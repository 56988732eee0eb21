#include "sim/harness/sandbox_redirection.h"

#include "sim/harness/preload.h"
#include "sim/harness/program.h"
#include "sim/preload/redirect.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// Holds the process that a sandbox was made for: a program that it starts, and that wants a
/// sandbox too, gets one of its own.
constexpr char process_variable[] = "UTM_SANDBOX_PROCESS";

bool fail(std::string *why, const std::string &what) {
    *why = what + ": " + strerror(errno);
    return false;
}

/// The loader takes a blank or a colon in LD_PRELOAD for the end of a path.
bool is_loadable(const std::string &path) {
    return path.find_first_of(" :\t\n") == std::string::npos;
}

/// @return where a private folder can be made: what the user wants for such things comes first
std::vector<std::string> possible_parents() {
    std::vector<std::string> parents;
    const char *wanted = getenv("TMPDIR");
    if (wanted != nullptr && wanted[0] == '/')
        parents.push_back(wanted);
    parents.insert(parents.end(), {"/tmp", "/var/tmp"});
    std::erase_if(parents, [](const std::string &parent) { return !is_loadable(parent); });
    return parents;
}

/// @return the folder's real path; empty when none could be made
std::string make_root(std::string *why) {
    for (const std::string &parent : possible_parents()) {
        std::string path = parent + "/utm_sandbox.XXXXXX";
        if (mkdtemp(path.data()) != nullptr)
            return sim_outside(path);
        fail(why, "cannot make a folder in " + parent);
    }
    return {};
}

/// A kept path stays where it is; a link in its place lets a look into /tmp show it.
bool link_kept(const std::string &root, const std::string &path) {
    std::error_code error;
    if (path.rfind("/tmp/", 0) != 0)
        return true;
    fs::create_directories(root + fs::path(path).parent_path().string(), error);
    fs::create_symlink(sim_outside(path), root + path, error);
    return !error || error == std::errc::file_exists;
}

bool furnish(const std::string &root, const std::vector<std::string> &keep, std::string *why) {
    if (mkdir((root + "/tmp").c_str(), 0777) != 0 || chmod((root + "/tmp").c_str(), 01777) != 0 ||
        mkdir((root + "/dev").c_str(), 0755) != 0 ||
        mkdir((root + "/sockets").c_str(), 0755) != 0 ||
        symlink(sim_built_preload().c_str(), (root + "/preload.so").c_str()) != 0)
        return fail(why, "cannot furnish " + root);
    for (const std::string &path : keep)
        if (!link_kept(root, path))
            return fail(why, "cannot keep " + path);
    return true;
}

void set_environment(const std::string &root, const std::vector<std::string> &keep) {
    std::string kept;
    for (const std::string &path : keep)
        kept += sim_outside(path) + "\n";
    setenv(SIM_SANDBOX_ROOT, root.c_str(), 1);
    setenv(SIM_SANDBOX_KEPT, kept.c_str(), 1);
    setenv(process_variable, std::to_string(getpid()).c_str(), 1);
    setenv("LD_PRELOAD", (root + "/preload.so").c_str(), 1);
    sim_accept_preload();
}

[[noreturn]] void start_anew(char **arguments, const std::string &root,
                             const std::vector<std::string> &keep) {
    // Nobody would clean up behind it, nor wait for it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    set_environment(root, keep);
    std::vector<std::string> command_line = {fs::read_symlink("/proc/self/exe")};
    for (char **word = arguments + 1; *word != nullptr; ++word)
        command_line.push_back(*word);
    sim_exec_own(command_line);
}

/// Orphans of the sandbox are reaped meanwhile.
int wait_for(pid_t process) {
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(-1, &status, 0);
        if (ended == process)
            return status;
        if (ended < 0 && errno != EINTR)
            return sim_lost_status;
    }
}

/// What the process left running ends here, as its files are about to go.
void end_survivors() {
    do {
        for (const pid_t survivor : sim_children())
            kill(survivor, SIGKILL);
    } while (waitpid(-1, nullptr, 0) > 0);
}

[[noreturn]] void end_as(int wait_status) {
    if (WIFSIGNALED(wait_status)) {
        signal(WTERMSIG(wait_status), SIG_DFL);
        raise(WTERMSIG(wait_status));
    }
    _exit(WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 1);
}

} // namespace

bool sim_is_redirected() {
    const char *process = getenv(process_variable);
    return process != nullptr && std::to_string(getpid()) == process;
}

void sim_enter_redirection(char **arguments, const std::vector<std::string> &keep,
                           std::string *why) {
    const std::string root = make_root(why);
    std::error_code error;
    if (root.empty())
        return;
    if (!furnish(root, keep, why)) {
        fs::remove_all(root, error);
        return;
    }
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const pid_t process = fork();
    if (process == 0)
        start_anew(arguments, root, keep);
    sim_leave_signals_to(std::max(process, 0));
    const int status = process > 0 ? wait_for(process) : 0;
    sim_leave_signals_to(0);
    end_survivors();
    fs::remove_all(root, error);
    if (process > 0)
        end_as(status);
    fail(why, "cannot start a process");
}

bool sim_check_redirection(std::string *why) {
    const char *root = getenv(SIM_SANDBOX_ROOT);
    struct stat seen = {};
    struct stat meant = {};
    if (root != nullptr && stat("/tmp", &seen) == 0 &&
        stat((std::string(root) + "/tmp").c_str(), &meant) == 0 && seen.st_ino == meant.st_ino &&
        seen.st_dev == meant.st_dev)
        return true;
    *why = "paths are not redirected: the loader did not take " + sim_built_preload();
    return false;
}
