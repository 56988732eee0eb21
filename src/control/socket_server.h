#pragma once
/// The control socket: a local stream socket that serves one request per connection.
///
/// The socket is open to every local user. One thread serves all connections, one command at a
/// time and each to its end; a client that says nothing costs a slot of the table and no time.

#include "control/fd_event.h"

#include <cstdint>

/// The listening socket's descriptor.
extern int listen_fd;

/// Creates, binds and opens a listening Unix-domain socket, closed in the programs that the
/// daemon starts.
/// @param path  at most 106 characters
/// @return the descriptor, or -1
[[nodiscard]] int utm_app_config_socket_create(const char *path);

/// Sets up the listening socket at UTM_APP_CONFIG_SOCKET_PATH, in place of a stale one.
/// @return 0, or -1
[[nodiscard]] int utm_app_config_socket_init_binding();

/// The body of the control-socket thread. It runs until `select` fails; nothing restarts it, and
/// the daemon then goes on without a control socket.
/// @return null
void *utm_app_config_handler(void *unused);
