#pragma once
/// A file that the daemon writes for the client and that nobody else may read: it shows what a
/// family does all day.

#include "client/message.h"

/// A file in a folder of its own, both gone with their owner or when a signal ends the program.
/// There can be one at a time.
class ctl_temporary_file {
public:
    ctl_temporary_file() = default;
    ~ctl_temporary_file();
    ctl_temporary_file(const ctl_temporary_file &) = delete;
    ctl_temporary_file &operator=(const ctl_temporary_file &) = delete;

    /// Makes the folder in TMPDIR, or in /tmp, and the file in it, empty.
    /// @return CTL_DONE, or CTL_BROKEN after a message
    [[nodiscard]] ctl_exit make();

    /// @return the file's path, short enough for a request
    const char *path() const;
};
