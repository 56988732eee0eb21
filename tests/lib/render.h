#pragma once
/// Records as text: one comparison of a string says everything about a record at once.
///
///     profile 3: devices 1 [001122334455 ], enabled 1, limit 60 + 0, used 5/0/0, blocked 0,
///         collected +60, apps 1, policy 4
///       weekdays 0:60 1:60 2:60 3:60 4:60 5:60 6:60
///       app 305: used 4/0/0, blocked 0, days [29:7] next 0, rule 1/30
///     policy 4: profile 3, count 2, rules 305/1/30 310/2/0 (unused)
///     router: apps 1, collected +0
///       app 305: used 4/0/0, blocked 0, days [] next 0
///
/// (The first two lines are one.) Used minutes are the day's, the week's and the month's; times
/// are seconds from `world::default_now`; a ring shows its slots that are not 0; a rule is its
/// application, action and limit, and "(unused)" while no usage record belongs to it. Between the
/// brackets stands the text that queries use; where the list of devices says something else,
/// "(really [...])" follows. A link that goes one way only or to something that does not belong
/// here, and a list that cannot be walked both ways, read "ASTRAY".

#include "store/store.h"

#include <string>

namespace world {

/// A usage record, on one line.
std::string render(const config_app_usage_t &usage);

/// A profile with its weekday limits and applications.
std::string render(config_user_profile_t &profile);

/// The profile with this id; "no profile 3" without one. The caller does not hold the store.
std::string render_profile(int32_t profile_id);

/// The policy with this id; "no policy 4" without one. The caller does not hold the store.
std::string render_policy(int32_t policy_id);

/// Every profile, then every policy, each in list order. The caller does not hold the store.
std::string render_lists();

/// The router-wide statistics alone. The caller does not hold the store.
std::string render_router();

/// The whole store: profiles, policies, router-wide statistics.
std::string render_store();

/// Of `render_profile` what it says of usage: "apps 1", then the records. The caller does not hold
/// the store.
std::string render_apps(int32_t profile_id);

/// A ranking: "count: app=minutes ...", or "none, count" without one.
std::string render(const config_app_minutes_t *pairs, int32_t count);

/// A rendered text without what stands at its start value: "profile 3: devices 0 []" is a profile
/// as it was created, and "app 305: used 4/0/0" an application that has no day behind it.
std::string brief(std::string text);

} // namespace world
