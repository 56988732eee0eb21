#pragma once
/// The sandbox by mount namespace (sandbox.h chooses).

#include <string>
#include <vector>

/// Moves the calling process into a mount namespace of its own, with a fresh /tmp and a fresh /dev
/// that holds the real null, zero, full, random, urandom and tty, and terminals of its own. As root
/// the mount namespace alone suffices; anyone else gets it inside a user namespace, where the
/// system allows that.
///
/// Call it before the process has threads. It cannot be undone, and one that failed may have gone
/// half the way.
///
/// @param keep  existing files and folders that stay reachable at their own paths. Those outside of
///              /tmp and /dev stay anyway.
/// @param why   on failure, what was refused
[[nodiscard]] bool sim_enter_mount_namespace(const std::vector<std::string> &keep,
                                             std::string *why);
