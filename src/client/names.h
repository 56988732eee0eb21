#pragma once
/// Names for applications: the daemon knows only the DPI engine's numbers.
///
/// A file of lines such as "305 video": a number, blanks, and a name up to the end of the line.
/// Empty lines and lines that begin with # are skipped.

#include "client/message.h"
#include "core/vector.h"

#include <cstdint>

/// The default file, which need not exist.
inline constexpr char ctl_names_path[] = "/etc/utm_appd/apps";

/// A name's room, its NUL included; longer ones are cut.
inline constexpr int ctl_name_size = 64;

struct ctl_app_name {
    int32_t app_id;
    char name[ctl_name_size]; ///< printable UTF-8 whatever stood in the file
};

/// In the file's order; of two lines for one application the first holds.
using ctl_app_names = plain_vector<ctl_app_name>;

/// Reads a file of names.
/// @param path  null: `ctl_names_path`, which need not exist
/// @return CTL_DONE, or the status to end with, after a message. A default file
///         that cannot be opened is reported and skipped
[[nodiscard]] ctl_exit ctl_read_names(const char *path, ctl_app_names *names);

/// @return the application's name, or null; application 0 is "not recognised" unless it is named
[[nodiscard]] const char *ctl_find_name(const ctl_app_names &names, int32_t app_id);

/// Finds an application by its number or, whatever the case, its name.
[[nodiscard]] bool ctl_find_app(const ctl_app_names &names, const char *text, int32_t *app_id);
