#pragma once
/// The debug log: one plain-text file, one line per event, nothing added to the line.
///
/// The file is `/tmp/utm_log/utm_app_log`. It is opened and closed for every line, so that
/// rotating or deleting it from outside takes effect at the next line, and moved aside to
/// `/tmp/utm_log/utm_app_log2` when it has outgrown `debug_log_size_limit`. A line that cannot be
/// written is dropped without a word: a log never stops the daemon.

#include "core/lock.h"

#include <cstdint>

inline constexpr char debug_log_directory[] = "/tmp/utm_log";
inline constexpr char debug_log_path[] = "/tmp/utm_log/utm_app_log";
/// Bytes that the file may hold when a line is added; one byte more and it is moved aside.
inline constexpr int64_t debug_log_size_limit = 0x500000;

/// Held while the debug flag changes. It does not serialise the writers.
extern utm_mutex_t utm_app_debug_mutex;

/// @return the debug flag, 0 or 1, read without the mutex
[[nodiscard]] int utm_app_debug_get();

/// Switches the gated lines on or off.
///
/// @param value  0 or 1
/// @return 0, or -1 for any other value, which changes nothing
[[nodiscard]] int32_t utm_app_debug_set(unsigned value) UTM_EXCLUDES(utm_app_debug_mutex);

/// Writes one line while the debug flag is set. Almost every message of the daemon comes here.
/// @param format  as for `printf`, with its own line end
void utm_app_debug_log(const char *format, ...) UTM_EXCLUDES(utm_app_debug_mutex)
    __attribute__((format(printf, 1, 2)));

/// Writes one line whatever the debug flag says: start, stop, socket failures, the usage file.
/// Takes no lock, so it still works after the locks are destroyed at the end.
void utm_app_log_always(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// Writes one fixed line whatever the debug flag says, from a signal handler.
///
/// The interrupted thread may be inside the allocator, in `system` or in a log line of its own.
/// So this takes no lock, allocates nothing, starts no program and keeps `errno`.
void utm_app_log_from_signal(const char *line);
