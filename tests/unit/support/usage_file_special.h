#pragma once
/// What a path may name that is not a regular file.

#include <cstddef>
#include <string>

namespace usage_file {

/// A pipe in the file system with somebody at its reading end.
class pipe_reader_t {
public:
    explicit pipe_reader_t(const std::string &path);
    ~pipe_reader_t();
    pipe_reader_t(const pipe_reader_t &) = delete;
    pipe_reader_t &operator=(const pipe_reader_t &) = delete;

    /// @return what has been written to the pipe so far
    std::string available() const;

private:
    int fd_;
};

/// A socket that listens at a path.
class bound_socket_t {
public:
    explicit bound_socket_t(const std::string &path);
    ~bound_socket_t();
    bound_socket_t(const bound_socket_t &) = delete;
    bound_socket_t &operator=(const bound_socket_t &) = delete;

private:
    int fd_;
};

/// Lets files refuse this thread by their mode for the time of the object, root too: it gives up
/// the capabilities by which root is refused nothing. Another user's eyes would need that user to
/// be known, which a user namespace does not grant.
class unprivileged_t {
public:
    unprivileged_t();
    ~unprivileged_t();
    unprivileged_t(const unprivileged_t &) = delete;
    unprivileged_t &operator=(const unprivileged_t &) = delete;

private:
    unsigned effective_;
};

/// @return descriptors that this process has open
size_t open_descriptors();

} // namespace usage_file
