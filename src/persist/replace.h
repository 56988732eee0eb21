#pragma once
/// Writing a usage file so that there is a whole one at any moment: the old or the new.

#include "format/usage_file.h"

/// Writes a text to what a path leads to.
///
/// Where there is a regular file, or nothing yet, a new file is written in the same folder, flushed
/// to the disk and given the name. It has the owner and the mode of the file that it replaces.
/// Where the folder takes no new file, the old one is overwritten. A device is written to; pipes
/// and sockets are refused, since a pipe's reader could keep the writer waiting for ever.
/// @return whether the text was written whole
[[nodiscard]] bool utm_app_replace_usage_file(const char *path, const usage_text_t &text);
