#include "core/json.h"

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
