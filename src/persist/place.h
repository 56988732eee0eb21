#pragma once
/// Where the path of a usage file leads: an open folder and a name in it.
///
/// A file is replaced by its name, so the links on the way have to be followed beforehand. From
/// then on the folder is held open: whoever moves it, or puts a link in its place, changes nothing.

#include "core/owners.h"

#include <climits>

struct place_t {
    fd_guard folder;         ///< good for calls such as `openat`, not for reading
    char name[NAME_MAX + 1]; ///< no link when it was looked at
    bool is_ours;            ///< the folder is one of the daemon's own
};

/// Follows a path to its end. There need not be a file yet.
///
/// In the daemon's own folders nothing but files is used, so no link is followed there, and a
/// folder that may not be used leads nowhere; the system's log says so. Elsewhere, links are
/// followed as the kernel follows them where it protects links: one in a folder that everybody may
/// write has to belong to us or to the folder's owner.
/// @return false when the path leads nowhere, with `errno` set
[[nodiscard]] bool utm_app_find_place(const char *path, place_t *place);
