#pragma once
/// The two servers of a round trip, each in a process of its own.

#include "bench/household.h"
#include "format/protocol.h"

#include <string>
#include <vector>

/// A request and the bytes that answer it.
struct canned_t {
    utm_app_config_cmd request;
    std::string answer;
};

/// A server in a child process, which ends with the object.
class server_process {
public:
    server_process() = default;
    ~server_process();
    server_process(const server_process &) = delete;
    server_process &operator=(const server_process &) = delete;

    /// Starts the daemon's socket thread on a household of a size.
    void start_daemon(const household_size_t &size);

    /// Starts the least that could answer: `select`, `accept`, one read, a look-up among the
    /// requests, and a write of each `piece` bytes.
    void start_minimal(const char *path, const std::vector<canned_t> &canned, size_t piece);

private:
    int pid_ = -1;
};
