#pragma once
/// One request over the control socket, as a client of the daemon makes it.

#include "format/protocol.h"

#include <cstddef>
#include <vector>

/// Connects to a path, sends a request and reads to the end of what comes back.
/// @param buffer  takes the replies where there is room for them; the rest is read and dropped
/// @return bytes received, or -1 when the connection failed
long socket_request(const char *path, const utm_app_config_cmd &request, std::vector<char> *buffer);
