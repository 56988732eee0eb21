#pragma once
/// The demo's output: a line per event, with the time, who it comes from and what it is.

#include <ctime>
#include <string>

enum class voice {
    family, ///< what Ana types for the household
    daemon, ///< what the daemon logs and answers
    router, ///< what reaches the router
};

struct timeline {
    bool colour = false;
    int pause_ms = 0; ///< after every line, so that a person can follow
};

/// Colours are for terminals, and only where nobody asked to leave them out.
timeline timeline_open(bool fast);

/// @param meaning  in plain words; may be empty. On a line of its own when both are too long
void timeline_say(const timeline &out, time_t when, voice who, const std::string &text,
                  const std::string &meaning = {});

/// A headline between two scenes.
void timeline_title(const timeline &out, const std::string &text);

/// Text that belongs to no moment, indented below the last line.
void timeline_note(const timeline &out, const std::string &text);

/// Something that should not have happened.
void timeline_complain(const timeline &out, const std::string &text);
