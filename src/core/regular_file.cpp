#include "core/regular_file.h"

#include "core/owners.h"

#include <cerrno>
#include <sys/stat.h>

namespace {

bool is_regular(const struct stat &status) {
    if (!S_ISREG(status.st_mode))
        errno = ENOTSUP;
    return S_ISREG(status.st_mode);
}

} // namespace

int regular_file_open(const char *path, int folder) {
    const bool follows = folder == regular_file_no_folder;
    struct stat status = {};
    // A look before the open, because opening a device may already do something, and one
    // afterwards, because another program may have put something else in the file's place.
    if (fstatat(folder, path, &status, follows ? 0 : AT_SYMLINK_NOFOLLOW) != 0 ||
        !is_regular(status))
        return -1;
    // Without O_NONBLOCK the open itself would wait for a pipe's other end.
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    fd_guard fd(openat(folder, path, follows ? flags : flags | O_NOFOLLOW));
    if (fd.get() < 0 || fstat(fd.get(), &status) != 0)
        return -1;
    if (is_regular(status))
        return fd.release();
    fd.reset(-1);
    errno = ENOTSUP;
    return -1;
}
