#pragma once
/// Messages for people, on standard error, since standard output is for data alone; and the exit
/// status, for scripts. A JSON document repeats the messages: see `ctl_end_documents`.

#include "core/vector.h"

#include <cstdarg>

/// How `utm_appctl` ends. Numbers are an interface: the manual page lists them.
enum ctl_exit : int {
    CTL_DONE = 0,      ///< done
    CTL_REFUSED = 1,   ///< the daemon refused
    CTL_USAGE = 2,     ///< wrong usage: an argument, an option, or a file that it names
    CTL_NO_DAEMON = 3, ///< nobody listens at the socket, or it may not be used
    CTL_BROKEN = 4,    ///< timeout, a broken reply, or output that could not be written
};

/// Writes "utm_appctl: ", the text and a line end.
__attribute__((format(printf, 1, 2))) void ctl_say(const char *format, ...);

/// The same for a list of arguments.
__attribute__((format(printf, 1, 0))) void ctl_say_list(const char *format, va_list arguments);

/// The same, to end with: `return ctl_fail(CTL_USAGE, "...")`.
/// @return `status`
__attribute__((format(printf, 2, 3))) ctl_exit ctl_fail(ctl_exit status, const char *format, ...);

/// A message as a document has it: clean text on one line.
struct ctl_message {
    char text[1024];
};

/// What was said, the oldest first. Further ones than `ctl_messages_max` are left out, as is what
/// no memory was left for.
inline constexpr size_t ctl_messages_max = 100;
[[nodiscard]] plain_vector<ctl_message> &ctl_said();

/// Has nothing said for a while: what is tried again and again fails again and again.
void ctl_mute(bool mute);
