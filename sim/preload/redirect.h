#pragma once
/// The sandbox of machines that allow no mount namespaces: paths lead elsewhere.
///
/// A program in such a sandbox believes in a /tmp and a control socket of its own. This library's
/// calls lead their paths into a private folder, the sandbox's *root*:
///
/// | path                   | where it leads, unless below a folder that is *kept*    |
/// |------------------------|---------------------------------------------------------|
/// | /tmp, /tmp/...         | ROOT/tmp, ROOT/tmp/...                                  |
/// | /dev/utm_...           | ROOT/dev/utm_...                                        |
/// | everything else        | where it says                                           |
///
/// The root also holds what is nobody's path: `preload.so`, a link to this library, and `sockets`
/// (socket_calls.cpp).
///
/// What a program is told (its working directory, a link's target, a socket's name) leads back,
/// so that it sees the same paths as in a mount namespace.
///
/// No allocation, no lock: a signal handler and the child of a vfork may open a file.

#include <climits>
#include <cstddef>
#include <fcntl.h>

/// Names the root's folder; unset, every path is what it says.
inline constexpr char SIM_SANDBOX_ROOT[] = "UTM_SANDBOX_ROOT";
/// Names the folders that are kept, one a line; the root is one of them anyway.
inline constexpr char SIM_SANDBOX_KEPT[] = "UTM_SANDBOX_KEPT";

/// Where a path leads.
class sim_redirected {
public:
    /// @param path       may be null, which stays null
    /// @param directory  what a relative path starts from; only the working directory is looked at
    explicit sim_redirected(const char *path, int directory = AT_FDCWD);
    sim_redirected(const sim_redirected &) = delete;
    sim_redirected &operator=(const sim_redirected &) = delete;

    operator const char *() const { return chosen_; }

private:
    const char *chosen_;
    char text_[PATH_MAX];
};

/// @return the root's folder; empty outside of such a sandbox
const char *sim_sandbox_root();

/// Turns a path below the root back into what a program in the sandbox calls it, in place.
/// @param path  need not end with a NUL
/// @return its new length; the same where it was no path below the root
size_t sim_shown_path(char *path, size_t length);
