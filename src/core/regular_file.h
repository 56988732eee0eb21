#pragma once
/// Opening a file whose path somebody else has named.

#include <cstdint>

/// Opens a regular file for reading. Anything else is refused, and not even opened: a pipe or a
/// device could keep the reader, and the lock it holds, waiting without end. So is a file that is
/// too large for a reader that takes it whole.
/// @param size_limit  bytes
/// @return a descriptor that is closed in the programs that the caller starts; or -1 with `errno`
///         set, to ENOTSUP for no regular file and to EFBIG for one that is too large
[[nodiscard]] int regular_file_open(const char *path, int64_t size_limit);
