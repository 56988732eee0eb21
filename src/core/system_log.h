#pragma once
/// The system's log: for the few things that the daemon's own log is no place for.

/// Writes one line. Not for a signal handler.
/// @param format  as for `printf`, without a line end
void utm_app_system_log(const char *format, ...) __attribute__((format(printf, 1, 2)));
