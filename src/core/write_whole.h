#pragma once
/// Writing until everything is written: a descriptor may take less than it was given.

#include <cerrno>
#include <cstddef>
#include <sys/types.h>

/// @param write_some  takes the bytes that are left and their number, as `write` does without its
///                    descriptor; it is called again when a signal has interrupted it
/// @return false when it could not write everything
template <typename WriteSome>
[[nodiscard]] bool write_whole(const void *bytes, size_t size, WriteSome write_some) {
    const char *next = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t written = write_some(next, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}
