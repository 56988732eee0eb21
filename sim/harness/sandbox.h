#pragma once
/// A private /tmp and /dev for this process and its children.
///
/// The daemon's paths are compiled in (/dev/utm_app_config_socket, /tmp/utm_log, ...). In the
/// sandbox it uses them without touching the machine's, and many can run side by side.

#include <string>
#include <vector>

/// Moves the calling process into a mount namespace of its own, with a fresh /tmp and a fresh /dev
/// that holds the real null, zero, full, random and urandom. As root the mount namespace alone
/// suffices; anyone else gets it inside a user namespace, where the system allows that.
///
/// Call it before the process has threads. It cannot be undone.
///
/// @param keep  existing directories that stay reachable at their own paths, such as the build
///              tree: a clone may live under /tmp. Those outside of /tmp and /dev stay anyway.
/// @param why   on failure, what was refused and what would help
[[nodiscard]] bool sim_enter_private_namespaces(const std::vector<std::string> &keep,
                                                std::string *why);
