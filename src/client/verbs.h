#pragma once
/// Everything that `utm_appctl` can do: one table that dispatch, the help texts, the manual page
/// and the completion of the shell all follow.

#include "client/call.h"

#include <span>

struct ctl_verb {
    const char *group;    ///< what it is about, at a group's first verb; else null
    const char *noun;     ///< the first word
    const char *word;     ///< the second word; null when the noun is all
    const char *synopsis; ///< the operands
    const char *help;     ///< one line, without a full stop
    size_t least;         ///< operands at the least
    size_t most;          ///< and at the most
    unsigned options;     ///< bits of `ctl_option`, besides the common ones
    const char *refusal;  ///< what it means when the daemon refuses; null: it never does
    ctl_exit (*run)(const ctl_call &call);
};

/// @return all verbs, those of one noun side by side, in the order of the help
std::span<const ctl_verb> ctl_verbs();

// The table's rows: each answers one verb. They are here for the table alone.
ctl_exit ctl_ping(const ctl_call &call);
ctl_exit ctl_status(const ctl_call &call);
ctl_exit ctl_activate(const ctl_call &call);
ctl_exit ctl_debug(const ctl_call &call);
ctl_exit ctl_profile_add(const ctl_call &call);
ctl_exit ctl_profile_del(const ctl_call &call);
ctl_exit ctl_device_add(const ctl_call &call);
ctl_exit ctl_device_del(const ctl_call &call);
ctl_exit ctl_limit_show(const ctl_call &call);
ctl_exit ctl_limit_set(const ctl_call &call);
ctl_exit ctl_limit_enable(const ctl_call &call);
ctl_exit ctl_limit_disable(const ctl_call &call);
ctl_exit ctl_weekday_show(const ctl_call &call);
ctl_exit ctl_weekday_set(const ctl_call &call);
ctl_exit ctl_extend_show(const ctl_call &call);
ctl_exit ctl_extend_add(const ctl_call &call);
ctl_exit ctl_extend_reset(const ctl_call &call);
ctl_exit ctl_usage(const ctl_call &call);
ctl_exit ctl_policy_create(const ctl_call &call);
ctl_exit ctl_policy_rule(const ctl_call &call);
ctl_exit ctl_policy_bind(const ctl_call &call);
ctl_exit ctl_policy_clear(const ctl_call &call);
ctl_exit ctl_signature_load(const ctl_call &call);
ctl_exit ctl_interval_show(const ctl_call &call);
ctl_exit ctl_interval_set(const ctl_call &call);
ctl_exit ctl_export(const ctl_call &call);
ctl_exit ctl_import(const ctl_call &call);
ctl_exit ctl_report(const ctl_call &call);
