#include "client/suggestion.h"

#include "format/spelling.h"

#include <cstdio>

ctl_suggestion ctl_suggest(const char *text, const char *const *known, const char *otherwise) {
    ctl_suggestion suggestion = {};
    const char *nearest = spelling_nearest(text, known);
    if (nearest != nullptr)
        snprintf(suggestion.text, sizeof(suggestion.text), "Did you mean \"%s\"?", nearest);
    else
        snprintf(suggestion.text, sizeof(suggestion.text), "%s", otherwise);
    return suggestion;
}

ctl_suggestion ctl_suggest(const char *text, plain_vector<const char *> *known,
                           const char *otherwise) {
    static constexpr const char *nothing[] = {nullptr};
    return ctl_suggest(text, known->add(nullptr) ? known->begin() : nothing, otherwise);
}
