#include "core/mac.h"

#include <cstdio>
#include <cstring>

namespace {

/// @return the value of a hexadecimal digit, -1 for any other character
constexpr int digit_value(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const int lower = digit | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

mac_text_t mac_text(const uint8_t *mac) {
    mac_text_t to;
    snprintf(to.text, sizeof(to.text), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
             mac[3], mac[4], mac[5]);
    return to;
}

mac_digits_t mac_digits(const uint8_t *mac) {
    mac_digits_t to;
    snprintf(to.text, sizeof(to.text), "%02X%02X%02X%02X%02X%02X", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5]);
    return to;
}

bool mac_parse(const char *text, uint8_t *mac) {
    constexpr int digits = 2 * mac_bytes;
    // The first group decides how long all are, and the character after it what separates them.
    int group = 0;
    while (group < digits && digit_value(text[group]) >= 0)
        ++group;
    const char separator = text[group];
    const bool is_bare = group == digits;
    if (group == 0 || group % 2 != 0 || digits % group != 0 ||
        (!is_bare && (separator == '\0' || strchr(":-.", separator) == nullptr)))
        return false;
    for (int digit = 0; digit < digits; digit += 2) {
        if (digit > 0 && digit % group == 0 && *text++ != separator)
            return false;
        const int high = digit_value(text[0]);
        const int low = high < 0 ? -1 : digit_value(text[1]);
        if (low < 0)
            return false;
        mac[digit / 2] = static_cast<uint8_t>(high * 16 + low);
        text += 2;
    }
    return *text == '\0';
}
