#pragma once
/// How a person stands today, by the daemon's getters alone: an export would move the schedule of
/// the daemon's own.

#include "client/connection.h"
#include "core/saturate.h"
#include "core/vector.h"
#include "format/policy_rule.h"
#include "format/usage_file.h"

#include <cstdint>
#include <span>

/// One person's day, in minutes. It takes four questions, since the protocol has a command for each
/// figure: time may pass in between, so the figures can be a minute apart.
struct ctl_standing {
    int32_t number;
    bool is_known;  ///< the daemon has this person; else nothing below means anything
    bool limits_on; ///< as it was told to `ctl_read_standing`
    bool enabled;   ///< the limit cuts off; else it is only counted
    int32_t limit;  ///< today's
    int32_t extend; ///< today's bonus
    usage_counters_t used;

    int64_t budget() const { return int64_t{limit} + extend; }
    /// @return what is left today, as if the limit were enabled
    int64_t left() const { return used.daily < budget() ? budget() - used.daily : 0; }
    /// The daemon's own sum of limit and bonus stays at the end of its range.
    bool cut_off() const {
        return limits_on && enabled && used.daily >= saturating_sum(limit, extend);
    }
};

/// An application that has a rule. The daemon tells nobody its rules: they are the household's.
struct ctl_app_standing {
    config_policy_rule_t rule;
    int32_t used; ///< today
    bool blocked;
};

using ctl_app_standings = plain_vector<ctl_app_standing>;

/// Asks whether limits are on.
/// @return CTL_DONE, or what `ctl_ask` failed with
[[nodiscard]] ctl_exit ctl_read_limits_on(const ctl_daemon &daemon, bool *on);

/// Asks for a person's figures. Somebody whom the daemon does not have is no failure.
/// @return CTL_DONE, or what `ctl_ask` failed with
[[nodiscard]] ctl_exit ctl_read_standing(const ctl_daemon &daemon, int32_t number, bool limits_on,
                                         ctl_standing *standing);

/// Asks for the use of the applications that have a rule.
/// @param apps  out: one for each rule, in the order of the rules, whatever was used; nothing for
///              somebody whom the daemon does not have
/// @return CTL_DONE, or what `ctl_ask_list` failed with
[[nodiscard]] ctl_exit ctl_read_app_standings(const ctl_daemon &daemon,
                                              const ctl_standing &standing,
                                              std::span<const config_policy_rule_t> rules,
                                              ctl_app_standings *apps);
