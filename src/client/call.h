#pragma once
/// What a verb gets to work with.

#include "client/connection.h"
#include "client/names.h"
#include "client/options.h"

struct ctl_call {
    const ctl_options &options;
    const char *const *operands; ///< behind the verb's words
    size_t operand_count;        ///< within the verb's bounds
    const ctl_app_names &names;  ///< empty for a verb that takes no --names
    const char *refusal;         ///< what it means when the daemon refuses this verb

    const ctl_daemon &daemon() const { return options.daemon; }
    bool json() const { return options.has(CTL_OPTION_JSON); }
};

/// Sends a request that only succeeds or fails.
[[nodiscard]] inline ctl_exit ctl_do(const ctl_call &call, const utm_app_config_cmd &request) {
    utm_app_config_reply reply = {};
    return ctl_ask(call.daemon(), request, &reply, call.refusal);
}
