#pragma once
/// Text from outside as UTF-8: made safe for a terminal, a JSON document and a page, and compared
/// as people compare names. All of it by hand, since libc's conversions depend on the locale, which
/// a router may not have.

#include <cstddef>

/// @param text  ends with a NUL
/// @return bytes of the character that a text begins with; 0 when it is not UTF-8
[[nodiscard]] size_t text_character_size(const char *text);

/// Copies a text, cut to its room at a character's border. Control characters and bytes that are
/// no UTF-8 become question marks: a name must not be able to steer a terminal.
/// @param size  bytes at `to`, the NUL included
void text_copy_clean(char *to, size_t size, const char *from);

/// @return whether a text is UTF-8 without control characters
[[nodiscard]] bool text_is_clean(const char *text);

/// @return columns that clean text takes on a terminal, counting one per character
[[nodiscard]] size_t text_width(const char *text);

/// @return whether two texts are the same but for the case of the letters of Western Europe: those
///         of ASCII and of Latin-1
[[nodiscard]] bool text_is_same(const char *one, const char *other);
