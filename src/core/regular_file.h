#pragma once
/// Opening a file whose path somebody else has named.

#include <fcntl.h>

/// The working directory.
inline constexpr int regular_file_no_folder = AT_FDCWD;

/// Opens a regular file for reading. Anything else is refused, and not even opened: a pipe or a
/// device could keep the reader, and the lock it holds, waiting without end.
/// @param folder  where a relative path begins; there no link is followed at its end
/// @return a descriptor that is closed in the programs that the caller starts; or -1 with `errno`
///         set, to ENOTSUP for no regular file
[[nodiscard]] int regular_file_open(const char *path, int folder = regular_file_no_folder);
