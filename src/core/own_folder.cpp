#include "core/own_folder.h"

#include "core/owners.h"
#include "core/system_log.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

own_folder_t utm_app_log_folder{"/tmp/utm_log", false};
own_folder_t utm_app_usage_folder{"/tmp/ApplicationData", false};

namespace {

/// A link to a link is odd enough.
constexpr int hops_max = 8;

int fail(int error) {
    errno = error;
    return -1;
}

/// Takes the slashes from a path's end: with one there the kernel would follow a link that the path
/// ends at, whoever laid it.
/// @return whether the path then ends with a name
bool end_with_a_name(char *path) {
    char *end = path + strlen(path);
    while (end > path + 1 && end[-1] == '/')
        *--end = '\0';
    const char *slash = strrchr(path, '/');
    const char *name = slash == nullptr ? path : slash + 1;
    return strcmp(name, ".") != 0 && strcmp(name, "..") != 0;
}

/// Puts a link's target in the place of the link's own path.
bool follow(int link, char *path, size_t room) {
    char *slash = strrchr(path, '/');
    char target[PATH_MAX];
    const ssize_t length = readlinkat(link, "", target, sizeof(target));
    if (length <= 0)
        return false;
    // A relative target begins in the link's folder.
    char *to = target[0] == '/' || slash == nullptr ? path : slash + 1;
    if (static_cast<size_t>(length) >= room - static_cast<size_t>(to - path))
        return false;
    memcpy(to, target, static_cast<size_t>(length));
    to[length] = '\0';
    return end_with_a_name(path);
}

bool is_ours_alone(const struct stat &status) {
    return S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace

int utm_app_open_own_folder(const own_folder_t &folder) {
    char path[PATH_MAX];
    strcpy(path, folder.path);
    for (int hop = 0; hop <= hops_max; ++hop) {
        fd_guard fd(open(path, O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat status = {};
        if (fd.get() < 0 || fstat(fd.get(), &status) != 0)
            return -1;
        if (!S_ISLNK(status.st_mode))
            return is_ours_alone(status) ? fd.release() : fail(EPERM);
        if (status.st_uid != geteuid() || !follow(fd.get(), path, sizeof(path)))
            return fail(EPERM);
    }
    return fail(EPERM);
}

void utm_app_report_own_folder(own_folder_t *folder, int error) {
    if (error == EPERM && !folder->is_reported.exchange(true))
        utm_app_system_log("%s is not used: it has to be a folder of user %u that nobody else may "
                           "write",
                           folder->path, static_cast<unsigned>(geteuid()));
    else if (error == 0)
        folder->is_reported = false;
}
