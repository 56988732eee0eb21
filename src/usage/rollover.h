#pragma once
/// The rollover: what a tick does first when a local day, week or month has passed.
///
/// A finished day moves into the week's figure and the ring, a finished week into the month's.
/// Monthly figures restart only when the week changes with the month, so they are made of whole
/// weeks: after a month that ends mid-week they keep counting. However many days have passed, one
/// call rolls over once.

#include "store/store.h"

/// Rolls one profile and its applications over and lifts what was blocked for the old day.
///
/// A profile with devices is announced unblocked at once, whatever its flag says, so that a router
/// that has lost count is put right every midnight; one that was blocked, a second time at the end.
///
/// @param now  seconds since the epoch; the same value for every profile of a tick
void utm_app_profile_rollover(config_user_profile_t *profile, time_t now)
    UTM_REQUIRES(utm_app_config_mutex);

/// Rolls the router-wide statistics over. Nothing is blocked or unblocked.
/// @param now  seconds since the epoch
void utm_app_global_rollover(time_t now) UTM_REQUIRES(utm_app_config_mutex);
