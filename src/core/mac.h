#pragma once
/// A device's address, and the one spelling of it: upper-case hexadecimal digits, in transmission
/// order. People's other spellings are read too.

#include <cstdint>
#include <cstdio>
#include <cstring>

/// Bytes of an Ethernet address, in transmission order.
inline constexpr int32_t mac_bytes = 6;

/// An address as access rules, logs and the usage file have it: "0A:1B:2C:3D:4E:5F".
struct mac_text_t {
    char text[sizeof("0A:1B:2C:3D:4E:5F")];
};

/// @param mac  `mac_bytes` bytes
inline mac_text_t mac_text(const uint8_t *mac) {
    mac_text_t to;
    snprintf(to.text, sizeof(to.text), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
             mac[3], mac[4], mac[5]);
    return to;
}

/// The same without colons, as the statistics query has it: "0A1B2C3D4E5F".
struct mac_digits_t {
    char text[2 * mac_bytes + 1];
};

/// @param mac  `mac_bytes` bytes
inline mac_digits_t mac_digits(const uint8_t *mac) {
    mac_digits_t to;
    snprintf(to.text, sizeof(to.text), "%02X%02X%02X%02X%02X%02X", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5]);
    return to;
}

/// @return the value of a hexadecimal digit, -1 for any other character
constexpr int mac_digit_value(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const int lower = digit | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Reads twelve hexadecimal digits in either case, bare or in equal groups of one, two or three
/// bytes between colons, dashes or full stops.
/// @param mac  out: `mac_bytes` bytes
/// @return false for any other text
[[nodiscard]] inline bool mac_parse(const char *text, uint8_t *mac) {
    constexpr int digits = 2 * mac_bytes;
    int group = 0;
    while (group < digits && mac_digit_value(text[group]) >= 0)
        ++group;
    const char separator = text[group];
    const bool is_bare = group == digits;
    if (group == 0 || group % 2 != 0 || digits % group != 0 ||
        (!is_bare && (separator == '\0' || strchr(":-.", separator) == nullptr)))
        return false;
    for (int digit = 0; digit < digits; digit += 2) {
        if (digit > 0 && digit % group == 0 && *text++ != separator)
            return false;
        const int high = mac_digit_value(text[0]);
        const int low = high < 0 ? -1 : mac_digit_value(text[1]);
        if (low < 0)
            return false;
        mac[digit / 2] = static_cast<uint8_t>(high * 16 + low);
        text += 2;
    }
    return *text == '\0';
}
