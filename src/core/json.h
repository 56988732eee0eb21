#pragma once
/// json-c with an owner, and arrays that are checked to be arrays.

#include <cstddef>
#include <cstdint>
#include <json-c/json.h>
#include <memory>

struct json_release {
    void operator()(json_object *document) const { json_object_put(document); }
};

/// Owns one reference to a document.
using json_ptr = std::unique_ptr<json_object, json_release>;

/// What a reader takes of a text: json-c needs up to four hundred bytes for one of the text, so
/// what is in it is counted before anything is made of it.
struct json_limits_t {
    size_t values;
    size_t containers; ///< lists and objects, of the values
    size_t members;    ///< values that have a key
};

/// @return whether a text is within limits. In strings, commas, brackets and colons are counted too
[[nodiscard]] bool json_is_within(const char *text, size_t size, const json_limits_t &limits);

/// Where and why a text is no JSON.
struct json_failure_t {
    json_tokener_error error; ///< json_tokener_continue: the text ends too early
    size_t offset;
};

/// @param text  at most INT_MAX bytes
/// @param flags  of json-c's parser
/// @param failure  out, unless null: where `error` is json_tokener_success, the text is a document
/// @return the document, which is null for the text `null` too; null with `errno` set: ENOMEM, or
///         EBADMSG for a text that json-c cannot parse or that is nested deeper than 32
[[nodiscard]] json_ptr json_parse(const char *text, size_t size, int flags,
                                  json_failure_t *failure);

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
