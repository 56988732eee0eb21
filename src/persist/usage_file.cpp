#include "persist/usage_file.h"

#include "core/owners.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

utm_mutex_t utm_app_export_import_mutex;

namespace {

constexpr mode_t usage_file_mode = 0644;

bool is_readable(const struct stat &status) {
    return S_ISREG(status.st_mode) && status.st_size <= usage_file_size_limit;
}

bool is_writable(const struct stat &status) {
    return !S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode);
}

} // namespace

// Both look before they open, because opening a device may already do something, and once more
// afterwards, because another program may have put something else in the file's place.

int usage_file_open_to_read(const char *path) {
    struct stat status = {};
    if (stat(path, &status) != 0 || !is_readable(status))
        return -1;
    // Without O_NONBLOCK the open itself would wait for a pipe's other end.
    fd_guard fd(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (fd.get() < 0 || fstat(fd.get(), &status) != 0 || !is_readable(status))
        return -1;
    return fd.release();
}

int usage_file_open_to_write(const char *path) {
    struct stat status = {};
    if (stat(path, &status) == 0 && !is_writable(status))
        return -1;
    constexpr int flags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    fd_guard fd(open(path, flags, usage_file_mode));
    if (fd.get() < 0 || fstat(fd.get(), &status) != 0 || !is_writable(status))
        return -1;
    // Emptied only now, when it is known to be a file that may be written.
    if (S_ISREG(status.st_mode) && ftruncate(fd.get(), 0) != 0)
        return -1;
    return fd.release();
}
