#include "client/connection.h"

#include "client/message.h"
#include "core/monotonic.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace {

/// @return whether a command of this type may answer with the status
bool is_known(uint8_t status, uint8_t type) {
    return status == UTM_APP_CONFIG_STATUS_OK || status == UTM_APP_CONFIG_STATUS_FAIL ||
           status == UTM_APP_CONFIG_STATUS_DATA ||
           (status == UTM_APP_CONFIG_STATUS_NOT_LOADED && type == UTM_APP_CONFIG_LOAD_SIGNATURE);
}

ctl_exit no_daemon(const char *path) {
    const char *advice = "is it running? Use -s for another socket";
    if (errno == EACCES || errno == EPERM)
        advice = "you may not use it; ask the router's administrator";
    return ctl_fail(CTL_NO_DAEMON, "cannot reach the daemon at %s (%s): %s", path, strerror(errno),
                    advice);
}

ctl_exit closed_early(uint8_t type, size_t got) {
    if (got == 0)
        return ctl_fail(CTL_BROKEN,
                        "the daemon closed the connection without a reply: it does not know "
                        "command %d, or it is shutting down; try again",
                        type);
    return ctl_fail(CTL_BROKEN,
                    "the daemon closed the connection after %zu of a reply's %zu bytes: are both "
                    "programs of the same version?",
                    got, UTM_APP_CONFIG_REPLY_SIZE);
}

} // namespace

volatile sig_atomic_t ctl_told_to_end = 0;

ctl_exit ctl_answer::connect_to(const ctl_daemon &daemon) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const size_t length = strlen(daemon.socket_path);
    if (length >= sizeof(address.sun_path))
        return ctl_fail(CTL_USAGE,
                        "%s is too long for a socket path: the system allows %zu "
                        "characters",
                        daemon.socket_path, sizeof(address.sun_path) - 1);
    memcpy(address.sun_path, daemon.socket_path, length);
    if (length == 0)
        return ctl_fail(CTL_USAGE, "the socket path is empty: give it after -s");
    fd_.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd_.get() < 0)
        return ctl_fail(CTL_BROKEN, "cannot create a socket (%s)", strerror(errno));
    // Bounds the wait of connect too, for a daemon whose queue is full.
    const timeval limit = {.tv_sec = daemon.timeout_s, .tv_usec = 0};
    setsockopt(fd_.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    int result = 0;
    do // a stopped and continued process is interrupted, and may ask again
        result = connect(fd_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    while (result != 0 && errno == EINTR && may_go_on());
    if (result == 0)
        return CTL_DONE;
    return errno == EAGAIN || errno == EINTR ? timed_out() : no_daemon(daemon.socket_path);
}

bool ctl_answer::may_go_on() const {
    return ctl_told_to_end == 0 && monotonic_ms() < deadline_ms_;
}

ctl_exit ctl_answer::timed_out() const {
    if (ctl_told_to_end != 0)
        return CTL_BROKEN;
    return ctl_fail(CTL_BROKEN,
                    "the daemon did not answer within %d s: it may be waiting for one of the "
                    "router's programs; try again, or wait longer with -t",
                    timeout_s_);
}

ctl_exit ctl_answer::ask(const ctl_daemon &daemon, const utm_app_config_cmd &request) {
    timeout_s_ = daemon.timeout_s;
    deadline_ms_ = monotonic_ms() + int64_t{daemon.timeout_s} * 1000;
    type_ = request.type;
    const ctl_exit status = connect_to(daemon);
    if (status != CTL_DONE)
        return status;
    // In one piece: the daemon reads once, and what comes later is lost.
    ssize_t sent = 0;
    do
        sent = send(fd_.get(), &request, sizeof(request), MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR && may_go_on());
    if (sent == static_cast<ssize_t>(sizeof(request)))
        return CTL_DONE;
    if (sent < 0 && (errno == EPIPE || errno == ECONNRESET))
        return CTL_DONE; // it has closed already, and may have left a reply
    if (sent < 0 && (errno == EAGAIN || errno == EINTR))
        return timed_out();
    return ctl_fail(CTL_BROKEN, "the request could not be sent (%s); try again",
                    sent < 0 ? strerror(errno) : "cut short");
}

/// Waits for bytes and reads what has come.
/// @param got  out: 0 when the daemon has closed
ctl_exit ctl_answer::read_piece(char *to, size_t size, size_t *got) {
    for (;;) {
        if (!may_go_on())
            return timed_out();
        const int64_t left_ms = deadline_ms_ - monotonic_ms();
        pollfd readable = {.fd = fd_.get(), .events = POLLIN, .revents = 0};
        if (poll(&readable, 1, static_cast<int>(std::max<int64_t>(left_ms, 0))) <= 0)
            continue; // the time is up, or a signal: the clock tells
        const ssize_t count = recv(fd_.get(), to, size, MSG_DONTWAIT);
        if (count >= 0 || errno == ECONNRESET) {
            *got = count > 0 ? static_cast<size_t>(count) : 0;
            return CTL_DONE;
        }
        if (errno != EAGAIN && errno != EINTR)
            return ctl_fail(CTL_BROKEN, "the reply could not be read (%s); try again",
                            strerror(errno));
    }
}

ctl_exit ctl_answer::next(utm_app_config_reply *reply) {
    char *bytes = reinterpret_cast<char *>(reply);
    size_t size = 0;
    while (size < UTM_APP_CONFIG_REPLY_SIZE) {
        size_t got = 0;
        const ctl_exit status = read_piece(bytes + size, UTM_APP_CONFIG_REPLY_SIZE - size, &got);
        if (status != CTL_DONE)
            return status;
        size += got;
        if (got > 0)
            continue;
        // A signature whose load could not even be started has a reply of its own size.
        const bool is_short = type_ == UTM_APP_CONFIG_LOAD_SIGNATURE &&
                              size == UTM_APP_CONFIG_SHORT_REPLY_SIZE &&
                              reply->status == UTM_APP_CONFIG_STATUS_NOT_LOADED;
        return is_short ? CTL_DONE : closed_early(type_, size);
    }
    if (!is_known(reply->status, type_))
        return ctl_fail(
            CTL_BROKEN,
            "the daemon's reply has the unknown status %d: are both programs of the same version?",
            reply->status);
    return CTL_DONE;
}

ctl_exit ctl_ask(const ctl_daemon &daemon, const utm_app_config_cmd &request,
                 utm_app_config_reply *reply, const char *refusal) {
    ctl_answer answer;
    ctl_exit status = answer.ask(daemon, request);
    if (status == CTL_DONE)
        status = answer.next(reply);
    if (status != CTL_DONE)
        return status;
    if (reply->status == UTM_APP_CONFIG_STATUS_DATA)
        return ctl_fail(CTL_BROKEN, "the daemon began a list where one reply was expected: are "
                                    "both programs of the same version?");
    return reply->status == UTM_APP_CONFIG_STATUS_OK ? CTL_DONE : ctl_refused(refusal);
}

ctl_exit ctl_refused(const char *refusal) {
    if (refusal == nullptr)
        refusal = "it should not; are both programs of the same version?";
    if (refusal[0] != '\0')
        ctl_say("the daemon refused: %s", refusal);
    return CTL_REFUSED;
}

ctl_exit ctl_too_long() {
    return ctl_fail(CTL_BROKEN, "the daemon's list is too long, or memory has run out");
}
