#include "client/document.h"

#include "client/message.h"

void ctl_document::add(const char *key, json_object *value) {
    if (value != nullptr && object_ != nullptr &&
        json_object_object_add(object_.get(), key, value) == 0)
        return;
    json_object_put(value);
    complete_ = false;
}

void ctl_document::add_app(const ctl_app_names &names, int32_t app_id) {
    add_int("app", app_id);
    const char *name = ctl_find_name(names, app_id);
    if (name != nullptr)
        add_text("name", name);
    else if (object_ == nullptr || json_object_object_add(object_.get(), "name", nullptr) != 0)
        complete_ = false;
}

json_object *ctl_document::add_array(const char *key) {
    json_object *array = json_object_new_array();
    add(key, array);
    return complete_ ? array : nullptr;
}

void ctl_document::add_minutes(const char *key, const int64_t *minutes, size_t count) {
    json_object *array = add_array(key);
    for (size_t i = 0; i < count && complete_; ++i) {
        json_object *number = json_object_new_int64(minutes[i]);
        if (number != nullptr && json_object_array_add(array, number) == 0)
            continue;
        json_object_put(number);
        complete_ = false;
    }
}

void ctl_document::append(json_object *array, ctl_document *element) {
    if (array != nullptr && element->complete_ && element->object_ != nullptr &&
        json_object_array_add(array, element->object_.get()) == 0)
        element->object_.release();
    else
        complete_ = false;
}

ctl_exit ctl_document::print() const {
    const char *text = complete_ && object_ != nullptr
                           ? json_object_to_json_string_ext(object_.get(), JSON_C_TO_STRING_PLAIN)
                           : nullptr;
    if (text == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    puts(text);
    return CTL_DONE;
}
