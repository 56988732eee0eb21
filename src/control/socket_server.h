#pragma once
/// The control socket: a local stream socket that serves one request per connection.
///
/// The socket is open to every local user. One thread serves all connections, one command at a
/// time and each to its end; a client that says nothing costs a slot of the table and no time.

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

/// The body of the control-socket thread. It runs until it is told to stop or `select` fails;
/// nothing restarts it, and after a failure the daemon goes on without a control socket.
/// @return null
void *utm_app_config_handler(void *unused);

/// Tells the control-socket thread to stop. It wakes where it waits for clients, serves no
/// further one, and where it waits for a client to read, that one is cut off; a command is run to
/// its end.
void utm_app_config_socket_stop();

/// Closes the listening socket and removes its path, unless something else has taken the path by
/// now, such as a daemon that was started after this one. The thread has ended.
void utm_app_config_socket_remove();
