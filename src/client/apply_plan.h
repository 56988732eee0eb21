#pragma once
/// What `apply` has to send, and in which order. Nothing here asks or writes anything.
///
/// The order is what keeps the daemon, the DPI engine and the router's services in step
/// (docs/integration.md says what goes wrong otherwise):
///
///     1  devices leave whom they do not belong to
///     2  people are deleted (--prune) and created
///     3  devices that nobody has are released
///     4  devices join
///     5  who may still be cut off is released
///     6  limits, empty policies, enforcement
///     7  today's bonus and the usage file (--restore)
///     8  rules
///
/// Limits are on while all this is sent.

#include "client/apply_memory.h"
#include "client/daemon_state.h"
#include "core/vector.h"
#include "format/household.h"
#include "format/protocol.h"

#include <cstdint>

/// Which file the path of a request names. The plan knows no paths.
enum class ctl_step_file : uint8_t {
    none,
    used_up,   ///< the daemon's own figures, in which some people's time is used up
    as_it_was, ///< the same people's figures as they are
    usage,     ///< that of --restore
};

struct ctl_step {
    utm_app_config_cmd request;
    ctl_step_file file;
    bool may_be_refused; ///< a policy that exists already is as good
};

struct ctl_line {
    char text[220];
};

/// A part of the plan as people see it.
struct ctl_deed {
    ctl_line line;  ///< empty for what only sends again what cannot be seen
    int32_t person; ///< whom it is about, if `is_personal`
    bool is_personal;
    size_t first; ///< of its steps, which stand side by side
    size_t count;
};

struct ctl_plan {
    plain_vector<ctl_step> steps;
    plain_vector<ctl_deed> deeds;
    plain_vector<ctl_line> warnings;
    plain_vector<int32_t> release; ///< who may be cut off although the daemon does not know
    plain_vector<int32_t> used_up; ///< who is, for a moment, in `ctl_step_file::used_up`
    int32_t scratch;               ///< a person's number that nobody has
    bool is_change;                ///< any deed has a line
};

struct ctl_plan_wish {
    const household_t &household;
    const ctl_apply_memory &memory;
    const ctl_daemon_state &state; ///< as it is once limits are on
    const ctl_daemon_state *usage; ///< the usage file to restore, or null
    const char *usage_path;        ///< its path, for the line
    int32_t weekday;               ///< today's, 0 for Sunday
    bool was_active;               ///< limits were on already
    bool repair;                   ///< send whatever could be out of step
    bool prune;                    ///< delete who is not of the household
};

/// @param plan  out: empty before
/// @return false when memory ran out
[[nodiscard]] bool ctl_make_plan(const ctl_plan_wish &wish, ctl_plan *plan);
