#include "core/regular_file.h"

#include "core/owners.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// @return 0, or what is wrong with a file that is to be read
int refusal_to_read(const struct stat &status, int64_t size_limit) {
    if (!S_ISREG(status.st_mode))
        return ENOTSUP;
    return status.st_size > size_limit ? EFBIG : 0;
}

} // namespace

int regular_file_open(const char *path, int64_t size_limit) {
    struct stat status = {};
    // A look before the open, because opening a device may already do something, and one
    // afterwards, because another program may have put something else in the file's place.
    if (stat(path, &status) != 0)
        return -1;
    errno = refusal_to_read(status, size_limit);
    if (errno != 0)
        return -1;
    // Without O_NONBLOCK the open itself would wait for a pipe's other end.
    fd_guard fd(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (fd.get() < 0 || fstat(fd.get(), &status) != 0)
        return -1;
    const int refusal = refusal_to_read(status, size_limit);
    if (refusal == 0)
        return fd.release();
    fd.reset(-1);
    errno = refusal;
    return -1;
}
