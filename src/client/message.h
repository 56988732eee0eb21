#pragma once
/// Messages for people, on standard error: standard output is for data alone.

#include "client/exit_status.h"

#include <cstdarg>

/// Writes "utm_appctl: ", the text and a line end.
__attribute__((format(printf, 1, 2))) void ctl_say(const char *format, ...);

/// The same for arguments that have been gathered already.
__attribute__((format(printf, 1, 0))) void ctl_say_list(const char *format, va_list arguments);

/// The same, on the way out: `return ctl_fail(CTL_USAGE, "...")`.
/// @return `status`
__attribute__((format(printf, 2, 3))) ctl_exit ctl_fail(ctl_exit status, const char *format, ...);
