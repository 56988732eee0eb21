#include "format/household_reader.h"

#include "core/text.h"
#include "format/spelling.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <strings.h>

namespace {

/// Room for a key in a place or a remark.
constexpr size_t shown_max = household_name_size;

void append(household_remark_t *remark, const char *text) {
    const size_t length = strlen(remark->text);
    snprintf(remark->text + length, sizeof(remark->text) - length, "%s", text);
}

/// Writes "people[1].devices[0].mac".
void write_place(household_remark_t *remark, const household_place_t *place) {
    if (place == nullptr || place->outer == nullptr)
        return;
    write_place(remark, place->outer);
    char step[shown_max + sizeof("[18446744073709551615]")] = "";
    if (place->key == nullptr) {
        snprintf(step, sizeof(step), "[%zu]", place->index);
    } else {
        if (remark->text[0] != '\0')
            append(remark, ".");
        text_copy_clean(step, shown_max, place->key);
    }
    append(remark, step);
}

/// Takes out the last warning, to make room for an error.
/// @return false without one
bool drop_a_warning(household_remarks_t *remarks) {
    for (household_remark_t *last = remarks->end(); last != remarks->begin();) {
        if ((--last)->is_error)
            continue;
        memmove(last, last + 1, static_cast<size_t>(remarks->end() - last - 1) * sizeof(*last));
        remarks->keep(remarks->size() - 1);
        return true;
    }
    return false;
}

__attribute__((format(printf, 4, 0))) void note(household_reader_t *reader, bool is_error,
                                                const household_place_t *place, const char *format,
                                                va_list arguments) {
    reader->has_error = reader->has_error || is_error;
    household_remarks_t *remarks = reader->remarks;
    if (remarks->size() >= household_remarks_max && !(is_error && drop_a_warning(remarks)))
        return;
    household_remark_t remark = {};
    remark.is_error = is_error;
    write_place(&remark, place);
    if (remark.text[0] != '\0')
        append(&remark, ": ");
    const size_t length = strlen(remark.text);
    vsnprintf(remark.text + length, sizeof(remark.text) - length, format, arguments);
    household_add(reader, remarks, remark);
}

/// @return what a value is, for an objection to it
const char *type_text(json_object *value) {
    switch (json_object_get_type(value)) {
    case json_type_null:
        return "null";
    case json_type_boolean:
        return json_object_get_boolean(value) ? "true" : "false";
    case json_type_double:
        return "a number with a point";
    case json_type_int:
        return "a number";
    case json_type_object:
        return "an object";
    case json_type_array:
        return "a list";
    case json_type_string:
        break;
    }
    return "a text";
}

const household_field_t *find_field(std::span<const household_field_t> fields, const char *key) {
    for (const household_field_t &field : fields)
        if (strcmp(field.key, key) == 0)
            return &field;
    return nullptr;
}

void object_to_key(household_reader_t *reader, const household_place_t &place,
                   std::span<const household_field_t> fields, const char *key) {
    constexpr size_t most = 15;
    const char *words[most + 1] = {};
    for (size_t i = 0; i < fields.size() && i < most; ++i)
        words[i] = fields[i].key;
    household_object_to(reader, &place, "unknown key %s%s", household_quote(key).text,
                        household_hint(spelling_nearest(key, words)).text);
}

bool looks_like_a_number(const char *text) {
    text += *text == '-' || *text == '+';
    return *text != '\0' && text[strspn(text, "0123456789")] == '\0';
}

/// Reads minutes of any number.
bool read_time(household_reader_t *reader, const household_place_t &place, json_object *value,
               const char *words, int64_t *minutes) {
    if (json_object_is_type(value, json_type_int)) {
        *minutes = json_object_get_int64(value);
        return true;
    }
    if (!json_object_is_type(value, json_type_string)) {
        household_object_to(reader, &place, "has to be minutes, a time in quotes or %s, not %s",
                            words, type_text(value));
        return false;
    }
    int32_t spelled = 0;
    const char *text = household_read_text(reader, place, value, "");
    if (text == nullptr)
        return false;
    if (!spelling_minutes(text, &spelled)) {
        household_object_to(reader, &place,
                            "%s is not a time: give minutes, such as 90 or \"1h30m\", or %s",
                            household_quote(text).text, words);
        return false;
    }
    *minutes = spelled;
    return true;
}

} // namespace

void household_object_to(household_reader_t *reader, const household_place_t *place,
                         const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    note(reader, true, place, format, arguments);
    va_end(arguments);
}

void household_warn(household_reader_t *reader, const household_place_t *place, const char *format,
                    ...) {
    va_list arguments;
    va_start(arguments, format);
    note(reader, false, place, format, arguments);
    va_end(arguments);
}

household_quote_t household_quote(const char *text) {
    household_quote_t quote = {};
    char clean[shown_max];
    text_copy_clean(clean, sizeof(clean), text);
    // A question mark takes the place of more bytes, never of fewer.
    const bool is_cut = strlen(text) >= sizeof(clean);
    snprintf(quote.text, sizeof(quote.text), "\"%s%s\"", clean, is_cut ? "..." : "");
    return quote;
}

household_quote_t household_hint(const char *word) {
    household_quote_t hint = {};
    if (word != nullptr)
        snprintf(hint.text, sizeof(hint.text), "; did you mean \"%s\"?", word);
    return hint;
}

void household_read_object(household_reader_t *reader, const household_place_t &place,
                           json_object *value, std::span<const household_field_t> fields,
                           void *record) {
    if (!household_is_a(reader, place, value, json_type_object, "an object in braces"))
        return;
    json_object_object_foreach(value, key, member) {
        const household_field_t *field = find_field(fields, key);
        if (field == nullptr)
            object_to_key(reader, place, fields, key);
        else
            field->read(reader, {&place, field->key, 0}, member, record);
    }
    for (const household_field_t &field : fields)
        if (field.is_needed && !json_object_object_get_ex(value, field.key, nullptr))
            household_object_to(reader, &place, "\"%s\" is missing", field.key);
}

void household_read_array(household_reader_t *reader, const household_place_t &place,
                          json_object *value, household_read_t read, void *record) {
    if (!household_is_a(reader, place, value, json_type_array, "a list in brackets"))
        return;
    for (size_t i = 0; i < json_object_array_length(value); ++i)
        read(reader, {&place, nullptr, i}, json_object_array_get_idx(value, i), record);
}

bool household_is_a(household_reader_t *reader, const household_place_t &place, json_object *value,
                    json_type type, const char *wanted) {
    if (json_object_is_type(value, type))
        return true;
    household_object_to(reader, &place, "has to be %s, not %s", wanted, type_text(value));
    return false;
}

bool household_read_switch(household_reader_t *reader, const household_place_t &place,
                           json_object *value, bool *on) {
    if (!household_is_a(reader, place, value, json_type_boolean, "true or false"))
        return false;
    *on = json_object_get_boolean(value) != 0;
    return true;
}

bool household_is_word(json_object *value, std::string_view word) {
    return json_object_is_type(value, json_type_string) &&
           static_cast<size_t>(json_object_get_string_len(value)) == word.size() &&
           strncasecmp(json_object_get_string(value), word.data(), word.size()) == 0;
}

bool household_read_number(household_reader_t *reader, const household_place_t &place,
                           json_object *value, int32_t least, int32_t *number) {
    if (!household_is_a(reader, place, value, json_type_int, "a whole number"))
        return false;
    const int64_t read = json_object_get_int64(value);
    if (read < least || read > INT32_MAX) {
        household_object_to(reader, &place, "has to be a number from %d to %d", least, INT32_MAX);
        return false;
    }
    *number = static_cast<int32_t>(read);
    return true;
}

const char *household_read_text(household_reader_t *reader, const household_place_t &place,
                                json_object *value, const char *wanted) {
    if (!household_is_a(reader, place, value, json_type_string, wanted))
        return nullptr;
    const char *text = json_object_get_string(value);
    if (strlen(text) == static_cast<size_t>(json_object_get_string_len(value)))
        return text;
    household_object_to(reader, &place, "has a NUL character");
    return nullptr;
}

bool household_read_name(household_reader_t *reader, const household_place_t &place,
                         json_object *value, household_name_t *name) {
    const char *text = household_read_text(reader, place, value, "a name in quotes");
    if (text == nullptr)
        return false;
    const size_t length = strlen(text);
    const char *objection = length == 0                    ? "is empty"
                            : !text_is_clean(text)         ? "has characters that cannot be shown"
                            : length >= sizeof(name->text) ? "is longer than 63 bytes"
                            : text[0] == ' ' || text[length - 1] == ' '
                                ? "begins or ends with a blank"
                                : nullptr;
    if (objection != nullptr) {
        household_object_to(reader, &place, "%s %s", household_quote(text).text, objection);
        return false;
    }
    memcpy(name->text, text, length + 1);
    return true;
}

bool household_read_unlike_number(household_reader_t *reader, const household_place_t &place,
                                  json_object *value, household_name_t *name) {
    household_name_t read = {};
    if (!household_read_name(reader, place, value, &read))
        return false;
    if (looks_like_a_number(read.text)) {
        household_object_to(reader, &place, "\"%s\" looks like a number: give it a letter",
                            read.text);
        return false;
    }
    *name = read;
    return true;
}

bool household_read_minutes(household_reader_t *reader, const household_place_t &place,
                            json_object *value, const char *words, int32_t *minutes) {
    int64_t read = 0;
    if (!read_time(reader, place, value, words, &read))
        return false;
    if (read < 1 || read > minutes_per_day) {
        household_object_to(
            reader, &place,
            "%lld minutes are less than one or more than 24 hours: give a time between, or %s",
            static_cast<long long>(read), words);
        return false;
    }
    *minutes = static_cast<int32_t>(read);
    return true;
}
