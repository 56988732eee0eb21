#pragma once
/// Fakes of the socket calls. Each notes the call and passes it on to the real one, unless
/// it is set to fail.

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace sockets {

/// Nothing fails and nothing is noted.
void reset();

/// Makes every call of a function fail with an error: `socket`, `setsockopt`, `listen` or
/// `accept4`.
/// @param error  for `errno`; 0 lets it succeed again
void fail(const std::string &function, int error);

/// @return the calls since the last call of `calls` or `reset`, one line each, such as
/// "socket 1 1 0" or "accept4"; descriptors are left out
std::string calls();

/// @return the descriptors that `accept4` returned since the last `reset`, failures not among them
std::vector<int> accepted();

/// A thread beside the test's own.
class thread_t {
public:
    explicit thread_t(std::function<void()> run);
    /// Waits until the thread waits for something.
    void wait_until_asleep() const;
    void join() { thread_.join(); }

private:
    std::atomic<int> id_{0};
    std::thread thread_;
};

} // namespace sockets
