#include "core/read_whole.h"

#include <cerrno>

heap_ptr<char> read_whole(int fd, size_t limit, size_t *size) {
    // Not cleared: what the file does not fill is never touched.
    heap_ptr<char> bytes(static_cast<char *>(malloc(limit + 1)));
    if (bytes == nullptr)
        return nullptr;
    *size = 0;
    while (*size <= limit) {
        const ssize_t count = read(fd, bytes.get() + *size, limit + 1 - *size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return nullptr;
        if (count == 0)
            return bytes;
        *size += static_cast<size_t>(count);
    }
    errno = EFBIG;
    return nullptr;
}
