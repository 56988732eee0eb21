#pragma once
/// Why the daemon refuses. It says only that it does, so the client finds out: it asks more, and
/// looks at the file that the request names. What a request itself could have wrong is checked
/// before it is sent.

#include "client/apply_words.h"
#include "client/daemon_state.h"
#include "client/verbs.h"

/// Says the one reason for which a request has been refused.
/// @param request  one of the call's
/// @return CTL_REFUSED; or what asking failed with, after a message
ctl_exit ctl_explain(const ctl_call &call, const utm_app_config_cmd &request);

/// How a message names a person: "Mia", or "profile 3".
[[nodiscard]] ctl_called ctl_call_person(const household_t &household, int32_t number);

/// Looks at everything that the daemon has.
/// @param seen  out: false while limits are off, when it exports nothing, and when it cannot be
///              done, after a message: what was asked for need not fail with it
/// @return CTL_DONE, or what asking the daemon failed with, after a message
[[nodiscard]] ctl_exit ctl_look(const ctl_call &call, ctl_daemon_state *state, bool *seen);

/// What keeps a file from being one that the daemon imports, as this program can tell.
struct ctl_objection {
    char text[160]; ///< empty when nothing does
};

/// @param now  seconds since the epoch
[[nodiscard]] ctl_objection ctl_object_to_import(const char *path, int64_t now);
