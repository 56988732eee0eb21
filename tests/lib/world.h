#pragma once
/// The world that a unit test sees: fakes in place of the calls to the outside.
///
/// The linker puts these in place of `system`, `popen`, the clock, the notification calls and the
/// allocator. Everything that the daemon does to the outside is one line of the *trace*, in
/// the order in which it happened, log lines included:
///
///     log Create profile 3 success
///     run lcsh apg acl set 00:1A:2B:3C:4D:5E 305 0 18
///     event block profile 3
///     status_changed 1 1
///     query ubus -t 2 call ...
///     syslog /tmp/utm_log is not used: ...
///
/// A test builds the smallest state, acts once, and compares the whole trace.

#include "tests/lib/small_states.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <pthread.h>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <vector>

namespace world {

/// Back to the beginning: an empty store, the feature and every fake's settings at their
/// start values, debug logging on, an empty log, the clock at `default_now`, the zone UTC.
void reset();

/// Wednesday, 4 March 2026, 12:00:00 UTC.
inline constexpr time_t default_now = 1'772'625'600;

/// What happened since the last call of `trace` or `reset`, one line each.
std::string trace();

/// Does something without a line in the trace (the log keeps its lines).
void quietly(const std::function<void()> &act);

/// The log file's whole text.
std::string log();

/// Sets what `gettimeofday` answers.
void set_now(time_t now);

/// Sets the zone of the machine, such as "Europe/Berlin" or "UTC".
void set_zone(const char *zone);

/// @return the instant of a local time in the zone that is set
time_t local(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

/// Answers `system`: the raw wait status for a command line. Lines of the log itself (mkdir,
/// touch, mv) really run and are not asked for, unless `intercept_log_commands` is set; then they
/// do not run and appear in the trace.
void on_system(std::function<int(const std::string &line)> answer);
void intercept_log_commands();

/// Answers `popen`: the text that the program prints. Without one, programs print nothing.
void on_popen(std::function<std::string(const std::string &line)> answer);

/// Makes the `nth` call of `popen` from now fail (1 is the next one).
void fail_popen(int nth);

/// Makes the `nth` `calloc` or `realloc` of the daemon's code from now fail (1 is the next one);
/// 0 counts without failing.
void fail_allocation(int nth);

/// Makes every allocation from the `nth` one on fail, until `fail_allocation(0)`.
void fail_allocations_from(int nth);

/// @return calls of `calloc` and `realloc` since the last `fail_allocation...` or `reset`
int allocations();

/// Pipes opened with `popen` and not closed yet.
int open_pipes();
/// Closes those that are left open on purpose.
void close_pipes();

/// Sets the uptime that `sysinfo` answers, in seconds; a day to begin with.
void set_uptime(long seconds);

/// Makes `sysinfo` fail with a result; 0 lets it succeed again.
void fail_sysinfo(int result);

/// Answers `sleep`, which returns at once and is no part of the trace.
void on_sleep(std::function<void(unsigned seconds)> answer);

/// Answers `select` with the sets left as they are, so that all that is watched is ready. Without
/// an answer the real one is called.
void on_select(std::function<int(int descriptors, const timeval &timeout)> answer);

/// Lets the real `select` wait that many times and makes the next call fail (EBADF).
void end_select_after(int calls);

/// Lets `write` fail with EINTR so many times and then take no more than so many bytes a call (0
/// for any number). The log's lines go the same way.
void disturb_write(int interruptions, size_t most);
/// The same for `read`.
void disturb_read(int interruptions, size_t most);
/// The same for `send`.
void disturb_send(int interruptions, size_t most);

/// Does something after each `stat`, when its caller believes to know the file.
void after_stat(std::function<void(const std::string &path)> act);

/// Changes what `lstat` found, and gives its result: without 0 it finds nothing.
void on_lstat(std::function<int(struct stat *found)> change);

/// Answers `pthread_create`, which then starts nothing. Without an answer it is the real one.
using thread_body_t = void *(void *);
void on_thread(
    std::function<int(const pthread_attr_t *attributes, thread_body_t *body, void *argument)>
        answer);

} // namespace world
