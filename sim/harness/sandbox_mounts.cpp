#include "sim/harness/sandbox_mounts.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/// Something of the old /tmp or /dev that is put back into the new one.
struct kept_path {
    std::string path;
    int fd;
    bool is_directory;
};

bool fail(std::string *why, const std::string &what) {
    *why = what + ": " + strerror(errno);
    return false;
}

bool is_under(const std::string &path, const std::string &directory) {
    return path.compare(0, directory.size() + 1, directory + "/") == 0;
}

bool write_proc(const char *path, const std::string &text) {
    int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(fd);
    return written;
}

/// Everybody stays who they are: the daemon's files then belong to the user who runs it.
bool map_identity(uid_t uid, gid_t gid) {
    std::string user = std::to_string(uid);
    std::string group = std::to_string(gid);
    return write_proc("/proc/self/setgroups", "deny") &&
           write_proc("/proc/self/uid_map", user + " " + user + " 1") &&
           write_proc("/proc/self/gid_map", group + " " + group + " 1");
}

bool unshare_mounts(std::string *why) {
    uid_t uid = geteuid();
    gid_t gid = getegid();
    if (unshare(CLONE_NEWNS) == 0)
        return true;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
        if (map_identity(uid, gid))
            return true;
        return fail(why, "cannot map this user into a new user namespace");
    }
    return fail(why, "this machine allows no mount namespace");
}

std::string real_path(const std::string &path) {
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? resolved : std::string();
}

/// Opened in the new namespace: a descriptor of the old one could not be mounted from.
bool hold(const std::string &path, std::vector<kept_path> *held, std::string *why) {
    int fd = open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat status = {};
    if (fd < 0 || fstat(fd, &status) != 0)
        return fail(why, "cannot keep " + path);
    held->push_back({path, fd, S_ISDIR(status.st_mode)});
    return true;
}

bool hold_all(const std::vector<std::string> &keep, std::vector<kept_path> *held,
              std::string *why) {
    for (const std::string &wanted : keep) {
        std::string path = real_path(wanted);
        if (path.empty() || path == "/tmp" || path == "/dev") {
            *why =
                "cannot keep " + wanted + ": it is missing, or all of a directory that is hidden";
            return false;
        }
        if ((is_under(path, "/tmp") || is_under(path, "/dev")) && !hold(path, held, why))
            return false;
    }
    // daemon(3) insists on the real null device; sanitizers and shells want the others.
    for (const char *device : {"null", "zero", "full", "random", "urandom"})
        if (!hold(std::string("/dev/") + device, held, why))
            return false;
    // A shell asks for its terminal by this name.
    return access("/dev/tty", F_OK) != 0 || hold("/dev/tty", held, why);
}

bool make_parents(const std::string &path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        if (mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST)
            return false;
    return true;
}

bool make_mount_point(const kept_path &kept) {
    if (!make_parents(kept.path))
        return false;
    if (kept.is_directory)
        return mkdir(kept.path.c_str(), 0755) == 0 || errno == EEXIST;
    int fd = open(kept.path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    close(fd);
    return true;
}

bool put_back(const kept_path &kept, std::string *why) {
    std::string source = "/proc/self/fd/" + std::to_string(kept.fd);
    if (!make_mount_point(kept) ||
        mount(source.c_str(), kept.path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0)
        return fail(why, "cannot keep " + kept.path);
    close(kept.fd);
    return true;
}

bool mount_fresh(const char *path, const char *mode, std::string *why) {
    if (mount("tmpfs", path, "tmpfs", MS_NOSUID, mode) == 0)
        return true;
    return fail(why, std::string("cannot mount a fresh ") + path);
}

/// Terminals of the sandbox's own, and the names that shells and interpreters know for what is
/// open. Whoever lacks them says so.
void furnish_dev() {
    if (mkdir("/dev/pts", 0755) == 0 &&
        mount("devpts", "/dev/pts", "devpts", MS_NOSUID | MS_NOEXEC, "newinstance,ptmxmode=0666") ==
            0 &&
        symlink("pts/ptmx", "/dev/ptmx") != 0)
        perror("/dev/ptmx");
    for (const auto &[name, target] :
         {std::pair("/dev/fd", "/proc/self/fd"), std::pair("/dev/stdin", "/proc/self/fd/0"),
          std::pair("/dev/stdout", "/proc/self/fd/1"), std::pair("/dev/stderr", "/proc/self/fd/2")})
        if (symlink(target, name) != 0)
            perror(name);
}

/// A working directory below the old /tmp would still be the machine's: go to the kept one of the
/// same name, or to the root.
bool return_to(const std::string &directory) {
    return (!directory.empty() && chdir(directory.c_str()) == 0) || chdir("/") == 0;
}

} // namespace

bool sim_enter_mount_namespace(const std::vector<std::string> &keep, std::string *why) {
    std::vector<kept_path> held;
    std::string directory = real_path(".");
    if (!unshare_mounts(why))
        return false;
    // Before anything is mounted, or the machine would see it too.
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return fail(why,
                    "this machine allows no mount namespace: its mounts cannot be made private");
    if (!hold_all(keep, &held, why) || !mount_fresh("/tmp", "mode=1777", why) ||
        !mount_fresh("/dev", "mode=0755", why))
        return false;
    for (const kept_path &kept : held)
        if (!put_back(kept, why))
            return false;
    furnish_dev();
    return return_to(directory) || fail(why, "cannot leave the old working directory");
}
