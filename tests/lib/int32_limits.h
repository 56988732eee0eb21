#pragma once
/// The ends of what a counter and a limit can hold.

#include <cstdint>
#include <limits>

inline constexpr int32_t int32_max = std::numeric_limits<int32_t>::max();
inline constexpr int32_t int32_min = std::numeric_limits<int32_t>::min();
