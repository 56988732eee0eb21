#pragma once
/// Minutes as people write and read them: 90, 90m, 1h30m.

#include <cstdint>

/// Room for a time as text, its NUL included: "-153722867280912930h7m".
inline constexpr int ctl_time_text_size = 28;

struct ctl_time_text {
    char text[ctl_time_text_size];
};

/// @return "1h30m", "2h", "45m", "0m"
ctl_time_text ctl_time_of(int64_t minutes);

/// Reads "90", "90m", "2h" or "1h30m". Whether so many minutes make sense is the daemon's to say;
/// behind hours there are at most 59.
/// @param minutes  out: 0 to INT32_MAX, untouched on failure
[[nodiscard]] bool ctl_parse_minutes(const char *text, int32_t *minutes);
