#pragma once
/// What text has to be that people and programs read. These are readers of their own: nothing here
/// is shared with what writes the text.

#include <string>

namespace fuzz {

/// UTF-8 without control characters; line ends are allowed.
void check_clean(const std::string &text);

/// One JSON document, by the book.
void check_json(const std::string &text);

/// A page: every element closed where it was opened, every attribute quoted and there once, every
/// entity known, no markup in text, no script, nothing loaded from elsewhere.
void check_html(const std::string &text);

} // namespace fuzz
