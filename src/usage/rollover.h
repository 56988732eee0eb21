#pragma once
/// The rollover: what a tick does first when a local day, week or month has passed.
///
/// A finished day moves into the week's figure and the ring, a finished week into the month's.
/// Monthly figures restart only when the week changes with the month, so they are made of whole
/// weeks: after a month that ends mid-week they keep counting. However many days have passed, one
/// call rolls over once.
///
/// Figures that come back from a file are rolled forward to today instead, by all the days that
/// have passed.

#include "format/usage_file.h"
#include "store/store.h"

/// Rolls one profile and its applications over and lifts what was blocked for the old day.
///
/// A profile with devices is announced unblocked at once, whatever its flag says, so that a router
/// that has lost count is corrected every midnight; a blocked one is announced again at the end.
///
/// @param now  seconds since the epoch; the same value for every profile of a tick
void utm_app_profile_rollover(config_user_profile_t *profile, time_t now) UTM_STORE_LOCKED;

/// Rolls the router-wide statistics over. Nothing is blocked or unblocked.
/// @param now  seconds since the epoch
void utm_app_global_rollover(time_t now) UTM_STORE_LOCKED;

/// The widest boundary that lies between a file's time and now.
enum class passed_t { nothing, day, week, month };

/// How far a file's figures are to be rolled forward.
struct file_age_t {
    int32_t days; ///< local calendar days since the file was written; negative from the future
    passed_t passed;
};

/// A week is noticed by its weekday number going down, as everywhere: a gap of a week or more
/// within a month, to the same or a later weekday, counts as the same week.
/// @param then  when the file was written, seconds since the epoch
[[nodiscard]] file_age_t utm_app_file_age(time_t then, time_t now);

/// @return today's, this week's and this month's figures, made of a file's
[[nodiscard]] usage_counters_t utm_app_roll_forward(const usage_counters_t &read, passed_t passed);

/// Rolls an application's figures forward. Its ring moves on by the days that have passed, which
/// have no figures. The file's own day is one of them; its minutes stay in the week's and the
/// month's figure.
/// @param age  not from the future
void utm_app_roll_forward(usage_app_t *app, const file_age_t &age);
