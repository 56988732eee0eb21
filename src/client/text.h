#pragma once
/// Text from outside, made safe for a terminal, a JSON document and a page.

#include <cstddef>
#include <cstdint>

/// Reads a whole number that fits in 32 bits, with an optional sign and nothing around it.
[[nodiscard]] bool ctl_parse_int(const char *text, int32_t *value);

/// Copies a text, cut to its room at a character's border. Control characters and bytes that are
/// no UTF-8 become question marks: a name must not be able to steer a terminal.
/// @param size  bytes at `to`, the NUL included
void ctl_copy_clean(char *to, size_t size, const char *from);

/// @return columns that clean text takes on a terminal, counting one per character
size_t ctl_text_width(const char *text);
