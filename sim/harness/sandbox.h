#pragma once
/// A private /tmp, and a private control socket in /dev, for this program and what it starts.
///
/// The daemon's paths are compiled in (/dev/utm_app_config_socket, /tmp/utm_log, ...). In the
/// sandbox it uses them without touching the machine's, and many can run side by side. There are
/// two ways, and `sim_enter_sandbox` alone decides between them:
///
/// * a mount namespace, wherever the machine allows one: the whole of /tmp and /dev is fresh;
/// * elsewhere (in most containers, in a plain chroot) the paths of all programs in the sandbox are
///   redirected by the preloaded library. That needs no right at all, but programs that are
///   linked statically, or started with an empty environment, leave this sandbox.

#include <string>
#include <vector>

/// Chooses the way by hand: "mounts" or "redirection".
inline constexpr char SIM_SANDBOX_VARIABLE[] = "UTM_SANDBOX";

/// Enters the sandbox. Call it first in `main`: it may start the program again, and the process
/// must have no threads. If neither way works, it says why and ends the program with status 1.
///
/// @param arguments  `main`'s
/// @param keep       existing files and folders that stay reachable at their own paths, such as the
///                   build tree: a clone may live under /tmp. The working directory stays anyway,
///                   unless it is /tmp itself; then the root directory takes its place.
void sim_enter_sandbox(char **arguments, std::vector<std::string> keep);

/// @return the way that was taken, for people: one line without its end
std::string sim_sandbox_way();
