#pragma once
/// Makes the daemon equal to a household, over whatever wire leads to it.

#include "client/apply_plan.h"
#include "client/message.h"
#include "client/wire.h"
#include "format/household.h"

#include <cstdint>

struct ctl_apply_wish {
    bool dry_run = false;              ///< nothing is changed
    bool repair = false;               ///< send whatever could be out of step
    bool prune = false;                ///< delete who is not of the household
    const char *usage_path = nullptr;  ///< absolute: the usage file to restore
    const char *state_path = nullptr;  ///< the folder of what was applied last
    const char *socket_path = nullptr; ///< the daemon's; null: see `ctl_make_up_for_export`
    int32_t timeout_s = 0;             ///< how long to wait for another `apply`
};

/// What was done, or with `dry_run` what would be.
struct ctl_apply_report {
    plain_vector<ctl_deed> deeds; ///< those that have a line, in their order
    plain_vector<ctl_line> warnings;
};

/// @param report  out: empty before; on failure what was done up to it
/// @return CTL_DONE; or the status to end with, after a message
[[nodiscard]] ctl_exit ctl_apply_household(const household_t &household, const ctl_apply_wish &wish,
                                           const ctl_wire &wire, ctl_apply_report *report);
