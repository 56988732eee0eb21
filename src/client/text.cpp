#include "client/text.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

using byte_t = unsigned char;

bool is_continuation(byte_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// @return bytes of the character that a text begins with; 0 when it is no UTF-8
size_t character_size(const byte_t *text) {
    const byte_t first = text[0];
    const size_t size = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
    for (size_t i = 1; i < size; ++i)
        if (!is_continuation(text[i]))
            return 0;
    const bool overlong = (first == 0xE0 && text[1] < 0xA0) || (first == 0xF0 && text[1] < 0x90);
    const bool beyond = (first == 0xED && text[1] >= 0xA0) || (first == 0xF4 && text[1] >= 0x90);
    return overlong || beyond ? 0 : size;
}

bool is_control(const byte_t *character) {
    return character[0] < 0x20 || character[0] == 0x7F ||
           (character[0] == 0xC2 && character[1] < 0xA0);
}

} // namespace

bool ctl_parse_int(const char *text, int32_t *value) {
    const char *digits = text + (*text == '-' || *text == '+');
    char *end = nullptr;
    errno = 0;
    const long long number = strtoll(text, &end, 10);
    if (*digits < '0' || *digits > '9' || *end != '\0' || errno != 0 || number < INT32_MIN ||
        number > INT32_MAX)
        return false;
    *value = static_cast<int32_t>(number);
    return true;
}

void ctl_copy_clean(char *to, size_t size, const char *from) {
    const byte_t *next = reinterpret_cast<const byte_t *>(from);
    while (*next != '\0') {
        const size_t length = character_size(next);
        const bool bad = length == 0 || is_control(next);
        const size_t written = bad ? 1 : length;
        if (written >= size)
            break;
        if (bad)
            *to = '?';
        else
            memcpy(to, next, length);
        to += written;
        size -= written;
        next += length == 0 ? 1 : length;
    }
    *to = '\0';
}

size_t ctl_text_width(const char *text) {
    size_t width = 0;
    for (; *text != '\0'; ++text)
        width += !is_continuation(static_cast<byte_t>(*text));
    return width;
}
