#include "tests/unit/support/usage_file_json.h"

#include <json-c/json.h>

extern "C" {
json_object *__real_json_object_new_object();
json_object *__real_json_object_new_array();
json_object *__real_json_object_new_int(int32_t value);
json_object *__real_json_object_new_string(const char *text);
int __real_json_object_object_add(json_object *object, const char *key, json_object *value);
int __real_json_object_array_add(json_object *array, json_object *value);
}

namespace {

int calls = 0;
int call_to_fail = 0;

bool fails() {
    return ++calls == call_to_fail;
}

} // namespace

extern "C" {

json_object *__wrap_json_object_new_object() {
    return fails() ? nullptr : __real_json_object_new_object();
}

json_object *__wrap_json_object_new_array() {
    return fails() ? nullptr : __real_json_object_new_array();
}

json_object *__wrap_json_object_new_int(int32_t value) {
    return fails() ? nullptr : __real_json_object_new_int(value);
}

json_object *__wrap_json_object_new_string(const char *text) {
    return fails() ? nullptr : __real_json_object_new_string(text);
}

int __wrap_json_object_object_add(json_object *object, const char *key, json_object *value) {
    return fails() ? -1 : __real_json_object_object_add(object, key, value);
}

int __wrap_json_object_array_add(json_object *array, json_object *value) {
    return fails() ? -1 : __real_json_object_array_add(array, value);
}

} // extern "C"

namespace usage_file {

void fail_json(int nth) {
    calls = 0;
    call_to_fail = nth;
}

int json_calls() {
    return calls;
}

} // namespace usage_file
