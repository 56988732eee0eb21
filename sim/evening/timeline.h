#pragma once
/// The demo's output: a line per event, with the time, who it comes from and what it is.

#include <chrono>
#include <ctime>
#include <string>

enum class voice {
    family, ///< what Ana types for the household
    daemon, ///< what the daemon logs
    router, ///< what reaches the router
    usage,  ///< what utm_appctl answers about a person, put into a row
    system, ///< what becomes of the daemon's process
};

struct timeline {
    bool colour = false;
    /// A slot of time for every line, so that a person can follow; 0 shows each at once. What the
    /// daemon and the client need counts against it, so that a slow machine takes no longer.
    std::chrono::milliseconds slot = {};
    std::chrono::steady_clock::time_point next = {}; ///< when the next line's slot begins
};

/// Colours are for terminals, and only where nobody asked to leave them out.
timeline timeline_open(bool fast);

/// @param meaning  in plain words; may be empty. On a line of its own when both are too long
void timeline_say(timeline *out, time_t when, voice who, const std::string &text,
                  const std::string &meaning = {});

/// A headline between two scenes.
void timeline_title(timeline *out, const std::string &text);

/// Text that belongs to no moment, indented below the last line.
void timeline_note(timeline *out, const std::string &text);

/// Something that should not have happened.
void timeline_complain(timeline *out, const std::string &text);
