#pragma once
/// Reading until the end, of what may be longer than its reader takes.

#include "core/owners.h"

#include <cstddef>

/// Reads no more than the limit and a byte, whatever a file says of its size.
/// @param limit  bytes
/// @param size  out: bytes read
/// @return the bytes; null with `errno` set, to EFBIG when there are more
[[nodiscard]] heap_ptr<char> read_whole(int fd, size_t limit, size_t *size);
