#pragma once
/// What the parts of the household's reader share: remarks with their places, objects by a table of
/// their keys, and the values that stand everywhere. For the household_*.cpp files alone.

#include "core/json.h"
#include "format/household.h"

#include <string_view>

/// A value's place: a chain from the innermost to the document, each link on its reader's stack.
struct household_place_t {
    const household_place_t *outer; ///< null: the document
    const char *key;                ///< null: an element
    size_t index;                   ///< of an element
};

/// What of the document only a gateway reads, as bits.
enum household_gateway_t : uint32_t {
    HOUSEHOLD_BEDTIME = 1,
    HOUSEHOLD_SCHOOL = 2,
    HOUSEHOLD_PAUSED = 4,
    HOUSEHOLD_FREE = 8,
    HOUSEHOLD_THRESHOLD = 16,
};

struct household_reader_t {
    household_t *household;
    household_remarks_t *remarks;
    plain_vector<int32_t> people_numbers = {}; ///< of the people with other errors too
    bool has_app_without_number = false;       ///< which has been objected to
    uint32_t gateway = 0;                      ///< bits of what would have an effect there
    bool has_error = false;
    bool is_out_of_memory = false;
};

/// @param place  null: the remark says itself where
__attribute__((format(printf, 3, 4))) void household_object_to(household_reader_t *reader,
                                                               const household_place_t *place,
                                                               const char *format, ...);

__attribute__((format(printf, 3, 4))) void
household_warn(household_reader_t *reader, const household_place_t *place, const char *format, ...);

/// Adds a record, or notes that memory ran out.
template <typename T>
void household_add(household_reader_t *reader, plain_vector<T> *list, const T &record) {
    if (!list->add(record))
        reader->is_out_of_memory = true;
}

/// A text as a remark shows it: clean, in quotes, and cut when it is long.
struct household_quote_t {
    char text[2 * household_name_size];
};

[[nodiscard]] household_quote_t household_quote(const char *text);

/// "; did you mean "limit"?", or nothing without a word.
[[nodiscard]] household_quote_t household_hint(const char *word);

/// Parses a text, which is bounded before anything is made of it.
/// @return false after an objection
[[nodiscard]] bool household_parse(household_reader_t *reader, const char *text, size_t size,
                                   json_ptr *document);

// ---- Values --------------------------------------------------------------------------------

/// Reads what stands at a key.
using household_read_t = void (*)(household_reader_t *reader, const household_place_t &place,
                                  json_object *value, void *record);

struct household_field_t {
    const char *key;
    household_read_t read;
    bool is_needed;
};

/// Reads an object's members in their order, and objects to unknown and missing ones.
/// @param record  what each field's function gets
void household_read_object(household_reader_t *reader, const household_place_t &place,
                           json_object *value, std::span<const household_field_t> fields,
                           void *record);

/// Reads each element of an array.
void household_read_array(household_reader_t *reader, const household_place_t &place,
                          json_object *value, household_read_t read, void *record);

/// @return whether the value has the type; else after an objection
/// @param wanted  "true or false"
[[nodiscard]] bool household_is_a(household_reader_t *reader, const household_place_t &place,
                                  json_object *value, json_type type, const char *wanted);

/// Reads true or false.
bool household_read_switch(household_reader_t *reader, const household_place_t &place,
                           json_object *value, bool *on);

/// @return whether a text is a word, whatever the case
[[nodiscard]] bool household_is_word(json_object *value, std::string_view word);

/// @param number  out: untouched after an objection
[[nodiscard]] bool household_read_number(household_reader_t *reader, const household_place_t &place,
                                         json_object *value, int32_t least, int32_t *number);

/// @return the text; null after an objection
[[nodiscard]] const char *household_read_text(household_reader_t *reader,
                                              const household_place_t &place, json_object *value,
                                              const char *wanted);

/// Reads a name of a person, a device or an application.
[[nodiscard]] bool household_read_name(household_reader_t *reader, const household_place_t &place,
                                       json_object *value, household_name_t *name);

/// The same for a name that stands for a number elsewhere, and so must not look like one.
[[nodiscard]] bool household_read_unlike_number(household_reader_t *reader,
                                                const household_place_t &place, json_object *value,
                                                household_name_t *name);

/// Reads minutes, 1 to 1440.
/// @param words  what else may stand there, for the objection: "\"none\""
[[nodiscard]] bool household_read_minutes(household_reader_t *reader,
                                          const household_place_t &place, json_object *value,
                                          const char *words, int32_t *minutes);

// ---- Parts of a document -------------------------------------------------------------------

/// Adds to the household's applications.
void household_read_app(household_reader_t *reader, const household_place_t &place,
                        json_object *value, void *record);

/// Adds to the household's people, devices and rules.
void household_read_person(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *record);

/// Reads a person's limit: a time for every day, or times by days.
/// @param record  int32_t[days_per_week]
void household_read_limit(household_reader_t *reader, const household_place_t &place,
                          json_object *value, void *record);

// What a gateway reads is checked.
void household_read_bedtime(household_reader_t *reader, const household_place_t &place,
                            json_object *value, void *record);
void household_read_school(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *record);
void household_read_paused(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *record);
void household_read_free(household_reader_t *reader, const household_place_t &place,
                         json_object *value, void *record);
void household_read_threshold(household_reader_t *reader, const household_place_t &place,
                              json_object *value, void *record);

/// Warns in one line of what only a gateway would do.
void household_warn_of_gateway(household_reader_t *reader);
