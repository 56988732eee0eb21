#pragma once
/// Writing to a descriptor.

#include <cerrno>
#include <cstddef>
#include <unistd.h>

/// Writes bytes whole, however many calls that takes.
/// @return false, with `errno` set, when they could not be written whole
[[nodiscard]] inline bool write_whole(int fd, const void *bytes, size_t size) {
    const char *next = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t written = write(fd, next, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}
