#pragma once
/// The dispatcher: reads one request, runs its command, writes the reply or replies.

/// Serves one request. A request that is not read whole at once, or of a type that is not served,
/// gets no reply. The caller closes the connection.
/// @param fd  a connection that is ready to be read
void utm_app_config_cmd_dispatch(int fd);
