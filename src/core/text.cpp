#include "core/text.h"

#include <cstring>

namespace {

using byte_t = unsigned char;

byte_t byte_of(char c) {
    return static_cast<byte_t>(c);
}

bool is_continuation(char c) {
    return (byte_of(c) & 0xC0) == 0x80;
}

/// Also those of two bytes (U+0080 to U+009F): some terminals obey them.
bool is_control(const char *character) {
    const byte_t first = byte_of(character[0]);
    return first < 0x20 || first == 0x7F || (first == 0xC2 && byte_of(character[1]) < 0xA0);
}

/// @param before  the byte in front: in UTF-8 the letters with accents are two bytes, of which
///                the first is the same
/// @return the byte, of a lower-case letter
byte_t lower(byte_t byte, byte_t before) {
    constexpr byte_t times_sign = 0x97;
    const bool is_accented = before == 0xC3 && byte >= 0x80 && byte <= 0x9E && byte != times_sign;
    const bool is_upper = (byte >= 'A' && byte <= 'Z') || is_accented;
    return is_upper ? static_cast<byte_t>(byte + 0x20) : byte;
}

} // namespace

size_t text_character_size(const char *text) {
    const byte_t first = byte_of(text[0]);
    const size_t size = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
    for (size_t i = 1; i < size; ++i)
        if (!is_continuation(text[i]))
            return 0;
    // The long spelling of a short character could hide a control character; surrogates and numbers
    // beyond Unicode are no characters at all.
    const byte_t second = size < 2 ? 0 : byte_of(text[1]);
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool beyond = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
    return overlong || beyond ? 0 : size;
}

void text_copy_clean(char *to, size_t size, const char *from) {
    while (*from != '\0') {
        const size_t length = text_character_size(from);
        const bool bad = length == 0 || is_control(from);
        const size_t written = bad ? 1 : length;
        if (written >= size)
            break;
        if (bad)
            *to = '?';
        else
            memcpy(to, from, length);
        to += written;
        size -= written;
        from += length == 0 ? 1 : length;
    }
    *to = '\0';
}

bool text_is_clean(const char *text) {
    while (*text != '\0') {
        const size_t length = text_character_size(text);
        if (length == 0 || is_control(text))
            return false;
        text += length;
    }
    return true;
}

size_t text_width(const char *text) {
    size_t width = 0;
    for (; *text != '\0'; ++text)
        width += !is_continuation(*text);
    return width;
}

bool text_is_same(const char *one, const char *other) {
    byte_t before = 0;
    for (;; ++one, ++other) {
        // What stood in front was the same in both, but for its case.
        const byte_t byte = lower(byte_of(*one), before);
        if (byte != lower(byte_of(*other), before))
            return false;
        if (byte == 0)
            return true;
        before = byte;
    }
}
