#pragma once
/// The rollover: what a tick does first when a local day, week or month has passed.
///
/// A finished day moves into the week's figure and the ring, a finished week into the month's.
/// Monthly figures restart only when the week changes with the month: front ends show "this
/// month" as whole weeks, so a month that starts mid-week keeps counting. However many days have
/// passed, one call rolls over once.

#include "store/store.h"

/// Rolls one profile and its applications over and lifts what was blocked for the old day.
///
/// A profile that was blocked and has devices is announced unblocked twice, before and after its
/// figures change; receivers take the repetition as they take every unblock at midnight.
///
/// @param now  seconds since the epoch; the same value for every profile of a tick
void utm_app_profile_rollover(config_user_profile_t *profile, time_t now)
    UTM_REQUIRES(utm_app_config_mutex);

/// Rolls the router-wide statistics over. Nothing is blocked or unblocked.
/// @param now  seconds since the epoch
void utm_app_global_rollover(time_t now) UTM_REQUIRES(utm_app_config_mutex);
