#pragma once
/// JSON for scripts. The names of keys are an interface: the manual page lists them.

#include "client/names.h"
#include "core/json.h"

#include <cstdint>

/// Builds one JSON object. When memory runs out it notes that, and printing fails.
class ctl_document {
public:
    ctl_document() : object_(json_object_new_object()) {}

    void add_int(const char *key, int64_t value) { add(key, json_object_new_int64(value)); }
    void add_bool(const char *key, bool value) { add(key, json_object_new_boolean(value)); }
    void add_text(const char *key, const char *value) { add(key, json_object_new_string(value)); }
    /// Adds "app" and "name"; the name is null when there is none.
    void add_app(const ctl_app_names &names, int32_t app_id);
    /// Adds an array of minutes.
    void add_minutes(const char *key, const int64_t *minutes, size_t count);
    /// Adds an array, to which `append` adds objects.
    json_object *add_array(const char *key);
    /// Moves another object to the end of an array of this one.
    void append(json_object *array, ctl_document *element);

    /// Prints the document and a line end on standard output.
    [[nodiscard]] ctl_exit print() const;

private:
    void add(const char *key, json_object *value);

    json_ptr object_;
    bool complete_ = true;
};
