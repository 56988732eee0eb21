#pragma once
/// A request's round trip, against a minimal server that answers the same bytes.

#include "bench/household.h"
#include "bench/socket_servers.h"

/// The servers of one size and the client's side of their round trips.
class round_trip_t {
public:
    /// Starts the servers: before any thread.
    explicit round_trip_t(const household_size_t &size);

    void register_pairs();

private:
    household_size_t size_;
    std::string socket_path_; ///< where the daemon's socket has been moved to
    std::string minimal_path_;
    std::string streaming_path_;
    canned_t one_;  ///< a request that one reply answers: a profile's usage
    canned_t list_; ///< a request that a reply for each application answers
    server_process daemon_;
    server_process minimal_;
    server_process streaming_;
};
