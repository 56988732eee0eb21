#pragma once
/// A device's address, and the one spelling of it: upper-case hexadecimal digits, in transmission
/// order. People's other spellings are read too.

#include <cstdint>

/// Bytes of an Ethernet address, in transmission order.
inline constexpr int32_t mac_bytes = 6;

/// An address as access rules, logs and the usage file have it: "0A:1B:2C:3D:4E:5F".
struct mac_text_t {
    char text[sizeof("0A:1B:2C:3D:4E:5F")];
};

/// @param mac  `mac_bytes` bytes
[[nodiscard]] mac_text_t mac_text(const uint8_t *mac);

/// The same without colons, as the statistics query has it: "0A1B2C3D4E5F".
struct mac_digits_t {
    char text[2 * mac_bytes + 1];
};

/// @param mac  `mac_bytes` bytes
[[nodiscard]] mac_digits_t mac_digits(const uint8_t *mac);

/// Reads twelve hexadecimal digits in either case, bare or in equal groups of one, two or three
/// bytes between colons, dashes or full stops.
/// @param mac  out: `mac_bytes` bytes
/// @return false for any other text
[[nodiscard]] bool mac_parse(const char *text, uint8_t *mac);
