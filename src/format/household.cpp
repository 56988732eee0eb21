#include "format/household.h"

#include "core/text.h"
#include "format/household_reader.h"
#include "format/spelling.h"

#include <cstring>

namespace {

void read_limits(household_reader_t *reader, const household_place_t &place, json_object *value,
                 void *) {
    household_read_switch(reader, place, value, &reader->household->limits);
}

/// They have been read before.
void read_apps(household_reader_t *, const household_place_t &, json_object *, void *) {}

void read_people(household_reader_t *reader, const household_place_t &place, json_object *value,
                 void *record) {
    const size_t count =
        json_object_is_type(value, json_type_array) ? json_object_array_length(value) : 0;
    if (count > household_people_max)
        household_object_to(reader, &place, "%zu people are more than %zu", count,
                            household_people_max);
    else
        household_read_array(reader, place, value, household_read_person, record);
}

constexpr household_field_t root_fields[] = {
    {"limits", read_limits, false},
    {"applications", read_apps, false},
    {"people", read_people, false},
    {"free", household_read_free, false},
    {"threshold", household_read_threshold, false},
};

/// People's rules name applications, wherever in the file these stand.
void read_apps_first(household_reader_t *reader, const household_place_t &root,
                     json_object *document, std::span<const household_app_t> others) {
    json_object *list = nullptr;
    const household_place_t place = {&root, "applications", 0};
    if (json_object_is_type(document, json_type_object) &&
        json_object_object_get_ex(document, place.key, &list))
        household_read_array(reader, place, list, household_read_app, nullptr);
    for (const household_app_t &app : others)
        household_add(reader, &reader->household->apps, app);
}

/// @return the name of a list's record that is nearest to a text
template <typename T>
const char *nearest_of(const plain_vector<T> &records, const char *text) {
    plain_vector<const char *> names;
    for (const T &record : records)
        if (!names.add(record.name.text))
            return nullptr;
    return names.add(nullptr) ? spelling_nearest(text, names.begin()) : nullptr;
}

} // namespace

bool household_read(const char *text, size_t size, std::span<const household_app_t> apps,
                    household_t *household, household_remarks_t *remarks) {
    household->limits = true;
    household_reader_t reader = {.household = household, .remarks = remarks};
    json_ptr document;
    if (!household_parse(&reader, text, size, &document))
        return false;
    const household_place_t root = {nullptr, nullptr, 0};
    read_apps_first(&reader, root, document.get(), apps);
    household_read_object(&reader, root, document.get(), root_fields, nullptr);
    household_warn_of_gateway(&reader);
    return !reader.has_error && !reader.is_out_of_memory;
}

const household_person_t *household_find_person(const household_t &household, const char *text) {
    int32_t number = 0;
    if (spelling_number(text, &number))
        return household_person_of(household, number);
    for (const household_person_t &person : household.people)
        if (text_is_same(person.name.text, text))
            return &person;
    return nullptr;
}

const household_person_t *household_person_of(const household_t &household, int32_t number) {
    for (const household_person_t &person : household.people)
        if (person.number == number)
            return &person;
    return nullptr;
}

bool household_find_app(const household_t &household, const char *text, int32_t *app_id) {
    if (spelling_number(text, app_id))
        return true;
    for (const household_app_t &app : household.apps)
        if (text_is_same(app.name.text, text)) {
            *app_id = app.number;
            return true;
        }
    return false;
}

const char *household_app_name(const household_t &household, int32_t app_id) {
    for (const household_app_t &app : household.apps)
        if (app.number == app_id)
            return app.name.text;
    return nullptr;
}

const char *household_nearest_person(const household_t &household, const char *text) {
    return nearest_of(household.people, text);
}

const char *household_nearest_app(const household_t &household, const char *text) {
    return nearest_of(household.apps, text);
}
