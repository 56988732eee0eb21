#pragma once
/// Sums saturate: a counter that would leave 32 bits stays at the end of the range, where a
/// wrapped one would turn years of use into a negative figure that blocks nobody.

#include <cstdint>
#include <limits>

/// @return `value` moved into the range of int32
constexpr int32_t saturate(int64_t value) {
    using limits = std::numeric_limits<int32_t>;
    if (value > limits::max())
        return limits::max();
    if (value < limits::min())
        return limits::min();
    return static_cast<int32_t>(value);
}

/// @return a + b, saturated
constexpr int32_t saturating_sum(int32_t a, int32_t b) {
    return saturate(int64_t{a} + b);
}
