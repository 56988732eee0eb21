#include "control/socket_server.h"

#include "control/dispatcher.h"
#include "control/fd_event.h"
#include "control/reply.h"
#include "core/debug_log.h"
#include "core/owners.h"
#include "core/system_log.h"
#include "format/protocol.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

int listen_fd = -1;

namespace {

constexpr int listen_backlog = 15;
/// Any local user may connect.
constexpr mode_t socket_mode = 0777;
/// How long a reply may wait for a client that does not read. The thread serves nobody else
/// meanwhile, so it is short; a reader that is merely slow comes back well within it.
constexpr time_t send_timeout_seconds = 3;

/// The path as it was bound: another file of the same name has another number.
struct stat bound_path;

/// What is kept of a connection.
struct config_conn {
    uint32_t state; ///< 0; any other value closes the connection unserved
    int32_t fd;
    uint8_t buf[UTM_APP_CONFIG_CMD_SIZE]; ///< room for a request; the dispatcher has its own
};

/// Binds or connects to a path. The address's length covers the family, the path, its NUL and one
/// byte more, which the kernel ignores after the NUL.
/// @param call  `bind` or `connect`
/// @return 0, or -1 with `errno` set, also for a path that does not fit into an address
template <typename Call>
int with_path(Call call, int fd, const char *path) {
    sockaddr_un address = {};
    const size_t length = strlen(path) + 4;
    if (length > sizeof(address)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, path, strlen(path) + 1);
    return call(fd, reinterpret_cast<const sockaddr *>(&address), static_cast<socklen_t>(length));
}

/// @return whether somebody listens at a path; one whose queue is full listens too
bool is_listened_on(const char *path) {
    struct stat status = {};
    if (stat(path, &status) != 0 || !S_ISSOCK(status.st_mode))
        return false;
    const fd_guard fd(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    return fd.get() >= 0 && (with_path(connect, fd.get(), path) == 0 || errno == EAGAIN);
}

/// Frees the path. A second daemon leaves the first one without a socket, which has to show
/// somewhere: both run, and the first one's log may be off.
void remove_stale_socket() {
    if (is_listened_on(UTM_APP_CONFIG_SOCKET_PATH))
        utm_app_system_log("replacing %s, on which another process still listens",
                           UTM_APP_CONFIG_SOCKET_PATH);
    unlink(UTM_APP_CONFIG_SOCKET_PATH);
}

/// Bounds how long a reply may wait. Without the bound the connection is served all the same.
void set_send_timeout(int fd) {
    const timeval timeout = {send_timeout_seconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
}

void utm_app_config_conn_close(int fd, config_conn *conn) {
    free(conn);
    if (fd < 0)
        return;
    fd_event_del(fd);
    close(fd);
}

void utm_app_config_socket_accept(int listening) {
    // The descriptor must be closed in programs from the start: the other thread may be starting
    // one right now.
    const int fd = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
    // Mostly no descriptor was left. The connection stays in the queue and the socket ready: give
    // the loop a pause instead of a busy wait until descriptors come back.
    if (fd < 0)
        fd_event_pause(listening);
    heap_ptr<config_conn> conn(heap_allocate<config_conn>());
    if (conn == nullptr) {
        utm_app_log_always("Socket accept failed because Out of memory!\n");
        return; // the descriptor stays open, unserved
    }
    conn->state = 0;
    conn->fd = fd;
    set_send_timeout(fd);
    fd_event_add(fd, fd_event_read, conn.get());
    if (fd_event_is_registered(fd))
        conn.release();
}

int utm_app_config_socket_on_read(int fd, void *data) {
    if (utm_app_config_is_ending())
        return 0;
    if (fd == listen_fd) {
        utm_app_config_socket_accept(fd);
        return 0;
    }
    config_conn *conn = static_cast<config_conn *>(data);
    if (conn->state == 0)
        utm_app_config_cmd_dispatch(fd);
    utm_app_config_conn_close(fd, conn);
    return 0;
}

int utm_app_config_socket_on_write(int fd, void *) {
    return fd;
}

int utm_app_config_socket_on_error(int, void *) {
    utm_app_log_always("Socket event error: %d\n", errno);
    return -1;
}

constexpr socket_event_handler config_socket_handler = {
    utm_app_config_socket_on_write,
    utm_app_config_socket_on_read,
    utm_app_config_socket_on_error,
};

} // namespace

int utm_app_config_socket_create(const char *path) {
    fd_guard fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd.get() < 0) {
        utm_app_debug_log("Can't create unix domain socket: %s(%d)\n", path, errno);
        return -1;
    }
    const int enable = 1;
    if (setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &enable, sizeof(enable)) < 0) {
        utm_app_debug_log("Can't set unix socket options: %s(%d)\n", path, errno);
        return -1;
    }
    if (with_path(bind, fd.get(), path) < 0) {
        utm_app_debug_log("Can't bind unix address: %s(%d)\n", path, errno);
        return -1;
    }
    if (listen(fd.get(), listen_backlog) < 0) {
        utm_app_debug_log("Can't listen to unix address: %s(%d)\n", path, errno);
        return -1;
    }
    return fd.release();
}

int utm_app_config_socket_init_binding() {
    utm_app_reply_allow_waiting();
    bound_path = {};
    remove_stale_socket();
    listen_fd = utm_app_config_socket_create(UTM_APP_CONFIG_SOCKET_PATH);
    if (listen_fd < 0)
        return -1;
    fd_event_add(listen_fd, fd_event_read, nullptr);
    chmod(UTM_APP_CONFIG_SOCKET_PATH, socket_mode);
    lstat(UTM_APP_CONFIG_SOCKET_PATH, &bound_path);
    return 0;
}

void *utm_app_config_handler(void *) {
    const socket_event_handler handler = config_socket_handler;
    while (!utm_app_config_is_ending()) {
        if (utm_app_config_loop(&handler) >= 0 || utm_app_config_is_ending())
            continue;
        utm_app_debug_log("utm_app_config_loop failed\n");
        return nullptr;
    }
    return nullptr;
}

void utm_app_config_socket_stop() {
    utm_app_reply_stop_waiting();
    // A listening socket that is shut down is ready to be read for good: it ends the wait that is
    // under way or the next one.
    shutdown(listen_fd, SHUT_RDWR);
}

void utm_app_config_socket_remove() {
    struct stat now = {};
    // The open socket keeps its number from being given to another file.
    if (lstat(UTM_APP_CONFIG_SOCKET_PATH, &now) == 0 && now.st_dev == bound_path.st_dev &&
        now.st_ino == bound_path.st_ino)
        unlink(UTM_APP_CONFIG_SOCKET_PATH);
    fd_event_del(listen_fd);
    close(listen_fd);
    listen_fd = -1;
}
