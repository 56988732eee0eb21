#pragma once
/// A device's address, and the one spelling of it: upper-case hexadecimal digits, in transmission
/// order.

#include <cstdint>
#include <cstdio>

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
