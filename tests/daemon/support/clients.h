#pragma once
/// Clients that ask without a pause, beside the test.

#include "sim/harness/client.h"

#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <vector>

/// Makes a client's next request from its own random numbers.
using request_maker = std::function<utm_app_config_cmd(std::mt19937 &)>;

/// A number of clients, each asking one request after the other until `stop`.
class busy_clients {
public:
    busy_clients(unsigned count, const request_maker &make);
    ~busy_clients();
    busy_clients(const busy_clients &) = delete;
    busy_clients &operator=(const busy_clients &) = delete;

    /// Lets every client end its request and joins it.
    void stop();
    /// @return requests that were answered with at least one whole reply
    size_t answered() const { return answered_; }
    /// @return requests whose connection the daemon accepted and then kept open for too long
    size_t left_waiting() const { return left_waiting_; }

private:
    void ask_until_stopped(unsigned seed, const request_maker &make);

    std::atomic<bool> stopped_{false};
    std::atomic<size_t> answered_{0};
    std::atomic<size_t> left_waiting_{0};
    std::vector<std::thread> threads_;
};

/// Any command but the switching of the log and of signatures, for one of a few profiles and
/// policies, with arguments that are mostly in range.
utm_app_config_cmd random_command(std::mt19937 &random);
