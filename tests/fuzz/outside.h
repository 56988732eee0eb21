#pragma once
/// The outside of the daemon, for fuzzers: what the linker puts in place of the calls to programs,
/// the clock, clients and the notification library.
///
/// The unit tests' world (tests/lib/world.h) writes a trace that they compare, and reads the log
/// for it: a tenth of a second for a few hundred commands. Here nothing is written down. Every
/// command line is checked at once, and ends the fuzzer when it could mean more to a shell than it
/// says.

#include "format/protocol.h"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace outside {

/// Wednesday, 4 March 2026, 12:00:00 UTC.
inline constexpr time_t default_now = 1'772'625'600;

/// Prepares the log and the folder of the usage file, and the locks. Once, in the sandbox.
void prepare();

/// An empty store, the feature and logging off, the clock at `default_now`, programs that print
/// nothing and succeed.
void reset();

void set_now(time_t now);
time_t now();

/// What `sysinfo` answers, seconds; negative: it fails.
void set_uptime(long seconds);

/// The raw status that every command line ends with.
void set_status(int status);

/// What the next queries print; all others print nothing.
void set_reply(std::string text, int queries);

/// Makes the next queries fail to start.
void fail_queries(int count);

/// Sends a request as a client does.
/// @return the bytes of the answer, which are checked to be whole replies with an end
std::vector<utm_app_config_reply> ask(const utm_app_config_cmd &request);

} // namespace outside
