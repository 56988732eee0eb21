#pragma once
/// How `utm_appctl` ends, for scripts that ask.

/// The exit status. Numbers are an interface: the manual page lists them.
enum ctl_exit : int {
    CTL_DONE = 0,      ///< done
    CTL_REFUSED = 1,   ///< the daemon refused
    CTL_USAGE = 2,     ///< wrong usage: an argument, an option, or a file that it names
    CTL_NO_DAEMON = 3, ///< nobody listens at the socket, or it may not be used
    CTL_BROKEN = 4,    ///< time-out, a broken reply, or output that could not be written
};
