#pragma once
/// "Did you mean", for a word that is not known.

#include "core/vector.h"

/// A message's second line: "Did you mean "usage"?", or what else there is to say.
struct ctl_suggestion {
    char text[240];
};

/// @param known  the words that would do; ends with null
/// @param otherwise  when none of them is near
[[nodiscard]] ctl_suggestion ctl_suggest(const char *text, const char *const *known,
                                         const char *otherwise);

/// @param known  gets a null at its end
[[nodiscard]] ctl_suggestion ctl_suggest(const char *text, plain_vector<const char *> *known,
                                         const char *otherwise);
