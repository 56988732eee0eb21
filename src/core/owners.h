#pragma once
/// Owners of what C hands out: heap blocks, descriptors, streams. Each releases it at the
/// end of the block, so that every function may return early.

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <utility>

/// Allocates `count` zero-filled objects of a plain type. The programs link no C++ runtime, so
/// there is no `operator new` that could end them when memory runs out: every allocation may
/// return null.
///
/// @return the first of them, or null when memory runs out or the size overflows
template <typename T>
[[nodiscard]] T *heap_allocate(size_t count = 1) {
    return static_cast<T *>(calloc(count, sizeof(T)));
}

struct heap_free {
    void operator()(void *memory) const { free(memory); }
};

/// Owns one allocation of `heap_allocate` (or of any C function that says "the caller frees it").
template <typename T>
using heap_ptr = std::unique_ptr<T, heap_free>;

/// Owns a descriptor; a negative one is nothing.
class fd_guard {
public:
    explicit fd_guard(int fd = -1) : fd_(fd) {}
    ~fd_guard() { reset(-1); }
    fd_guard(const fd_guard &) = delete;
    fd_guard &operator=(const fd_guard &) = delete;

    int get() const { return fd_; }
    /// @return the descriptor, which is the caller's from here on
    int release() { return std::exchange(fd_, -1); }
    /// Closes the descriptor and takes over another one.
    void reset(int fd) {
        if (fd_ >= 0)
            close(fd_);
        fd_ = fd;
    }

private:
    int fd_;
};

struct file_close {
    void operator()(FILE *file) const { fclose(file); }
};

/// Owns an open stream.
using file_ptr = std::unique_ptr<FILE, file_close>;

struct pipe_close {
    void operator()(FILE *pipe) const { pclose(pipe); }
};

/// Owns a pipe of `popen`; closing it reaps the program at its other end.
using pipe_ptr = std::unique_ptr<FILE, pipe_close>;
