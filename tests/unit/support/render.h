#pragma once
/// Records as text: one comparison of a string says everything about a record at once.
///
///     profile 3: devices 1 [001122334455 ], enabled 1, limit 60 + 0, used 5/0/0, blocked 0,
///         collected +60, apps 1, policy 4
///       weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60
///       app 305: used 4/0/0, blocked 0, days [29:7] next 0, rule 1/30
///     policy 4: profile 3, count 1, rules 305/1/30
///     router: apps 1, collected +0
///       app 305: used 4/0/0, blocked 0, days [] next 0
///
/// (The first two lines are one.) Used minutes are the day's, the week's and the month's; times
/// are seconds from `world::default_now`; a ring shows its slots that are not 0.

#include "store/records.h"

#include <string>

namespace world {

/// A usage record, on one line.
std::string render(const config_app_usage_t &usage);

/// A profile with its weekday limits and applications.
std::string render(config_user_profile_t &profile);

/// The whole store: profiles, policies, router-wide statistics.
std::string render_store();

/// The router-wide statistics alone.
std::string render_router();

} // namespace world
