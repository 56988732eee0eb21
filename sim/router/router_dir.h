#pragma once
/// The simulated router's directory: its journal and the files that hold its state.
///
/// Every fact of the state is a file of its own that exists or not. So the fakes, separate
/// processes that may run at the same moment, need no lock to agree on it.
///
/// | file                | while it exists                                             |
/// |---------------------|-------------------------------------------------------------|
/// | `guard`             | the application guard is on                                 |
/// | `rule.MAC.APP`      | a rule bars the application on the device (guard permitting) |
/// | `profile.ID.blocked`| the profile has no network                                  |
///
/// What the notification library's substitute needs of it is declared beside that.

#include "notify/simulated_router.h"

inline bool sim_router_holds(const char *name) {
    return access(sim_router_file(name).text, F_OK) == 0;
}

inline constexpr char SIM_GUARD_FACT[] = "guard";

/// @param mac  upper case with colons
inline sim_fact sim_rule_fact(const char *mac, int32_t app_id) {
    sim_fact fact = {};
    snprintf(fact.name, sizeof(fact.name), "rule.%s.%d", mac, app_id);
    return fact;
}
