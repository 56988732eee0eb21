#pragma once
/// The 30-day ring of a usage record: how its last thirty finished days are kept, in memory as in
/// the usage file.
///
///     slot             0  1  2  ...  i-2  i-1  i  i+1  ...  29      with i = next_day_idx
///     days ago         i  .  .        2    1  30   29       i+1
///
/// `next_day_idx` names the oldest day, the slot that the next finished day overwrites. A new
/// record's ring is all zero with index 0.
///
/// The functions take any record that has both fields.

#include "core/saturate.h"

#include <cstdint>

/// Finished days that a usage record remembers.
inline constexpr int32_t day_ring_days = 30;

/// Writes a finished day's minutes into the ring and moves on, 29 to 0.
template <typename Usage>
void day_ring_push(Usage *usage, int32_t minutes) {
    usage->prev_30_days[usage->next_day_idx] = minutes;
    usage->next_day_idx = usage->next_day_idx == day_ring_days - 1 ? 0 : usage->next_day_idx + 1;
}

/// @param days_ago  1 (yesterday) to 30
/// @return the minutes of that finished day
template <typename Usage>
int32_t day_ring_at(const Usage &usage, int32_t days_ago) {
    return usage.prev_30_days[(usage.next_day_idx + day_ring_days - days_ago) % day_ring_days];
}

/// @return the minutes of the finished days `first` to `last` days ago, saturated; 0 for none
template <typename Usage>
int32_t day_ring_sum(const Usage &usage, int32_t first, int32_t last) {
    int64_t sum = 0;
    for (int32_t days_ago = first; days_ago <= last; ++days_ago)
        sum += day_ring_at(usage, days_ago);
    return saturate(sum);
}
