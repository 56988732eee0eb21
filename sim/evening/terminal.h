#pragma once
/// Ana at a terminal: everything that the evening asks of the daemon is a command line of
/// utm_appctl.

#include "sim/evening/stage.h"

#include <string>
#include <vector>

/// A command line's words behind `utm_appctl`.
using typed_words = std::vector<std::string>;

/// Types a command line that prints nothing and expects it to succeed.
/// @param meaning  what it amounts to, in plain words; may be empty
void terminal_do(stage *set, const typed_words &words, const std::string &meaning = {});

/// The same for one that prints something, which is shown as it is.
/// @param last_lines  how many lines of it to show, as `tail` would; 0 shows all
/// @return all that it printed
std::string terminal_show(stage *set, const typed_words &words, const std::string &meaning = {},
                          size_t last_lines = 0);

/// The same for one whose output goes into a file.
/// @return all that it printed
std::string terminal_save(stage *set, const typed_words &words, const std::string &path,
                          const std::string &meaning = {});

/// Asks, unseen, for what is to be shown in another form.
/// @return what it printed; nothing when it failed, which counts as unexpected
std::string terminal_ask(stage *set, const typed_words &words);
