#pragma once
/// How requests reach the daemon where more than one is sent: over its socket, or in a test without
/// one.

#include "client/connection.h"
#include "format/protocol.h"

#include <span>

struct ctl_wire {
    void *context;
    /// Asks for one answer.
    /// @param replies  out: as many as there is room for, the last of the answer not among them
    ///                 when it only ends a list
    /// @param count  out: how many there were
    /// @return CTL_DONE; CTL_REFUSED without a message; CTL_NO_DAEMON or CTL_BROKEN after one
    ctl_exit (*ask)(void *context, const utm_app_config_cmd &request,
                    std::span<utm_app_config_reply> replies, size_t *count);
};

/// @param daemon  has to outlive the wire
[[nodiscard]] ctl_wire ctl_wire_to(const ctl_daemon &daemon);

/// Asks for a single reply.
/// @return as `ask` above
[[nodiscard]] ctl_exit ctl_wire_ask(const ctl_wire &wire, const utm_app_config_cmd &request,
                                    utm_app_config_reply *reply);

/// The same for a request whose reply says nothing more.
[[nodiscard]] ctl_exit ctl_wire_send(const ctl_wire &wire, const utm_app_config_cmd &request);
