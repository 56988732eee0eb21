#pragma once
/// The daemon's own folders, which lie in /tmp, where everybody may lay something in their place.
///
/// Such a folder is used only while it belongs to the daemon's user and nobody else may write
/// there. A link in its place has to belong to that user too, and so has what it leads to. Then
/// whatever is in the folder is ours as well.

#include <atomic>

struct own_folder_t {
    const char *path;              ///< absolute
    std::atomic<bool> is_reported; ///< it may not be used, and the system's log says so
};

/// The debug log's.
extern own_folder_t utm_app_log_folder;
/// The usage file's.
extern own_folder_t utm_app_usage_folder;

/// Opens a folder for calls such as `openat`. A signal handler may call this.
/// @return a descriptor, or -1 with `errno` set: to EPERM when the folder may not be used
[[nodiscard]] int utm_app_open_own_folder(const own_folder_t &folder);

/// Says in the system's log that a folder may not be used, once until it may be used again. What is
/// in the way of other errors than EPERM is not reported.
/// @param error  of opening it, 0 for none
void utm_app_report_own_folder(own_folder_t *folder, int error);
