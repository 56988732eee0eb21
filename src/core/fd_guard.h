#pragma once
/// A descriptor with an owner.

#include <unistd.h>

/// Closes a descriptor at the end of the block unless it is handed on; a negative one is nothing.
class fd_guard {
public:
    explicit fd_guard(int fd) : fd_(fd) {}
    ~fd_guard() {
        if (fd_ >= 0)
            close(fd_);
    }
    fd_guard(const fd_guard &) = delete;
    fd_guard &operator=(const fd_guard &) = delete;

    int get() const { return fd_; }
    /// @return the descriptor, which is the caller's from here on
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};
