#pragma once
/// Texts that come from others, as log lines show them.

/// A text whose control characters (bytes below 32, and 127) stand as `\xHH`. A path with a line
/// end would otherwise be a line of its own, in whatever file the log is.
struct log_text_t {
    char text[4096 + 8]; ///< a path whole, and as much of its longer form as has room
};

[[nodiscard]] log_text_t utm_app_log_text(const char *text);
