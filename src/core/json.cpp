#include "core/json.h"

#include <cerrno>

namespace {

struct tokener_free {
    void operator()(json_tokener *tokener) const { json_tokener_free(tokener); }
};

} // namespace

bool json_is_within(const char *text, size_t size, const json_limits_t &limits) {
    size_t commas = 0;
    size_t containers = 0;
    size_t members = 0;
    for (const char *end = text + size; text != end; ++text) {
        commas += *text == ',';
        containers += *text == '[' || *text == '{';
        members += *text == ':';
    }
    // Each value stands behind a comma, or first in a list or an object, or is the document.
    return commas + containers + 1 <= limits.values && containers <= limits.containers &&
           members <= limits.members;
}

json_ptr json_parse(const char *text, size_t size, int flags, json_failure_t *failure) {
    const std::unique_ptr<json_tokener, tokener_free> tokener(
        json_tokener_new_ex(JSON_TOKENER_DEFAULT_DEPTH));
    errno = ENOMEM;
    if (tokener == nullptr)
        return nullptr;
    json_tokener_set_flags(tokener.get(), flags);
    json_ptr document(json_tokener_parse_ex(tokener.get(), text, static_cast<int>(size)));
    errno = EBADMSG;
    if (failure != nullptr)
        *failure = {json_tokener_get_error(tokener.get()),
                    json_tokener_get_parse_end(tokener.get())};
    return document;
}

json_object *json_array_member(json_object *object, const char *key) {
    json_object *member = nullptr;
    if (!json_object_is_type(object, json_type_object) ||
        !json_object_object_get_ex(object, key, &member) ||
        !json_object_is_type(member, json_type_array))
        return nullptr;
    return member;
}

int32_t json_int(json_object *value) {
    if (json_object_is_type(value, json_type_double)) {
        // Only a NaN differs from itself.
        const double number = json_object_get_double(value);
        if (number != number)
            return 0;
    }
    return json_object_get_int(value);
}
