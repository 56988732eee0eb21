#pragma once
/// What changes in a household: two looks at it are compared, and each difference is an event.
///
/// Nothing here asks anybody, and time comes with the look, so a midnight or a restart is a pair of
/// looks.

#include "client/output.h"
#include "client/standing.h"
#include "core/vector.h"
#include "format/household.h"

#include <cstdint>

/// An application that has a rule, at the time of a look.
struct ctl_seen_app {
    household_name_t name;
    ctl_app_standing is;
};

/// A person of the household, at the time of a look.
struct ctl_seen_person {
    household_name_t name;
    ctl_standing is;
    household_part_t apps;
    /// The least time left that was announced and that still holds, or 0: what is announced once
    /// is announced again only after a bonus or a new day has led above it.
    int32_t announced;
};

/// Everything that one look sees.
struct ctl_look {
    bool is_taken; ///< false before the first look
    bool is_there; ///< the daemon answers; else what follows is what it answered last
    bool is_seen;  ///< it has ever answered
    bool limits_on;
    int64_t time; ///< seconds since the epoch
    plain_vector<ctl_seen_person> people;
    plain_vector<ctl_seen_app> apps;
};

enum class ctl_event_kind : uint8_t {
    back,       ///< the daemon answers again
    gone,       ///< the daemon does not answer
    new_day,    ///< another local day than at the look before
    limits_on,  ///< limits are enforced
    limits_off, ///< everything passes
    added,      ///< somebody is new in the household file
    cut_off,    ///< a person's time is used up
    let_in,     ///< the contrary, for whatever reason
    left,       ///< fifteen or five minutes are left
    blocked,    ///< an application is blocked for a person
    released,   ///< the contrary
    free,       ///< an application has no rule any more
    used,       ///< a person's figures have changed
    removed,    ///< somebody is no longer in the household file
};

/// @return the event's word for programs, such as "cut-off"
[[nodiscard]] const char *ctl_event_word(ctl_event_kind kind);

/// Each has a copy of what it is about, since programs may wait longer than the look is kept.
struct ctl_event {
    ctl_event_kind kind;
    bool limits_on;
    int64_t time;
    ctl_seen_person person; ///< from `added` on
    ctl_seen_app app;       ///< of `blocked`, `released` and `free`
};

using ctl_events = plain_vector<ctl_event>;

/// @return whether the event is about a person
[[nodiscard]] bool ctl_has_person(const ctl_event &event);
/// @return whether the event is about an application
[[nodiscard]] bool ctl_has_app(const ctl_event &event);

/// Room for an event as a sentence.
struct ctl_event_text {
    char text[2 * household_name_size + 80];
};

/// @return the event as a sentence for people, without a full stop
[[nodiscard]] ctl_event_text ctl_event_sentence(const ctl_event &event);

/// Fills in the event as a document; the manual page lists its keys.
void ctl_describe_event(const ctl_event &event, ctl_document *document);

/// The looks of a watch, of which the last one is kept for comparison.
class ctl_looks {
public:
    /// @return an empty look to fill in. Where the daemon does not answer its time is enough
    ctl_look *next();

    /// Compares the look that was filled in with the one before: first what is about everybody,
    /// then person by person in the household's order, then those who are gone from it. What is at
    /// the first look is no change, unless nobody answers.
    ///
    /// @param all  also each change of a person's figures and each rule that goes, and of whom is
    ///             seen first everything that is
    /// @return false when memory ran out: then some events may be missing
    [[nodiscard]] bool settle(bool all, ctl_events *events);

private:
    ctl_look looks_[2] = {};
    int last_ = 0;
};
