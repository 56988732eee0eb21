#pragma once
/// One request and its answer.
///
/// The daemon serves one request per connection: 136 bytes there, replies of 832 bytes back, and it
/// closes. A list is any number of data replies and one that ends it.

#include "client/message.h"
#include "core/owners.h"
#include "format/protocol.h"

#include <csignal>
#include <cstdint>

/// Most entries of a list, a thousand times what a family uses: a server that never ends its list
/// must not fill the memory.
inline constexpr size_t ctl_list_max = 100'000;

/// The daemon's socket, and how long to wait for it.
struct ctl_daemon {
    const char *socket_path = UTM_APP_CONFIG_SOCKET_PATH;
    int32_t timeout_s = 30; ///< for the whole of an answer
};

/// Set by a signal's handler to have no answer waited for any more. Nothing is said then.
extern volatile sig_atomic_t ctl_told_to_end;

/// An answer that is being read. Every failure is reported where it happens.
class ctl_answer {
public:
    /// Connects and sends the request.
    /// @return CTL_DONE; CTL_NO_DAEMON, CTL_BROKEN, or CTL_USAGE for a socket path that is too long
    [[nodiscard]] ctl_exit ask(const ctl_daemon &daemon, const utm_app_config_cmd &request);

    /// Reads the next reply whole, whatever pieces it comes in.
    /// @return CTL_DONE with any of the four statuses in the reply, or CTL_BROKEN
    [[nodiscard]] ctl_exit next(utm_app_config_reply *reply);

private:
    ctl_exit connect_to(const ctl_daemon &daemon);
    ctl_exit read_piece(char *to, size_t size, size_t *got);
    bool may_go_on() const;
    ctl_exit timed_out() const;

    fd_guard fd_;
    int32_t timeout_s_ = 0;
    int64_t deadline_ms_ = 0;
    uint8_t type_ = 0;
};

/// Asks for a single reply.
/// @param refusal  what to say when the daemon refuses: the possible reasons; null for a
///                 command that it never refuses; empty to say nothing
/// @return CTL_DONE for status 0, CTL_REFUSED for 1 and 255, or what `ctl_answer` failed with
[[nodiscard]] ctl_exit ctl_ask(const ctl_daemon &daemon, const utm_app_config_cmd &request,
                               utm_app_config_reply *reply, const char *refusal);

/// Asks for a list. It ends at the first reply whose status is not UTM_APP_CONFIG_STATUS_DATA.
/// @param take  called with each data reply; false ends the list: memory ran out
/// @return as `ctl_ask`
template <typename Take>
[[nodiscard]] ctl_exit ctl_ask_list(const ctl_daemon &daemon, const utm_app_config_cmd &request,
                                    const char *refusal, Take take);

/// Says that the daemon refused, and why, as `ctl_ask` does.
/// @return CTL_REFUSED
ctl_exit ctl_refused(const char *refusal);

/// Says that an answer has no end, or no memory is left for it.
/// @return CTL_BROKEN
ctl_exit ctl_too_long();

template <typename Take>
ctl_exit ctl_ask_list(const ctl_daemon &daemon, const utm_app_config_cmd &request,
                      const char *refusal, Take take) {
    ctl_answer answer;
    utm_app_config_reply reply = {};
    ctl_exit status = answer.ask(daemon, request);
    while (status == CTL_DONE) {
        status = answer.next(&reply);
        if (status != CTL_DONE || reply.status != UTM_APP_CONFIG_STATUS_DATA)
            break;
        if (!take(reply))
            return ctl_too_long();
    }
    if (status == CTL_DONE && reply.status != UTM_APP_CONFIG_STATUS_OK)
        return ctl_refused(refusal);
    return status;
}
