#pragma once
/// json-c with an owner, and arrays that are checked to be arrays.

#include <cstdint>
#include <json-c/json.h>
#include <memory>

struct json_release {
    void operator()(json_object *document) const { json_object_put(document); }
};

/// Owns one reference to a document.
using json_ptr = std::unique_ptr<json_object, json_release>;

/// Finds a member that must be an array: json-c's array functions assert on any other type, so
/// every array that comes from outside passes through here.
/// @param object  any value, also null
/// @return the array, borrowed from the object; null when it is missing or no array
[[nodiscard]] json_object *json_array_member(json_object *object, const char *key);

/// Reads a value as json-c converts it: a numeric string gives its number, anything else gives 0.
/// So does the NaN that json-c's parser accepts, whose conversion differs between processors.
/// @param value  any value, also null
[[nodiscard]] int32_t json_int(json_object *value);

/// @return elements of an array, 0 for null
[[nodiscard]] inline size_t json_array_size(json_object *array) {
    return array == nullptr ? 0 : json_object_array_length(array);
}
