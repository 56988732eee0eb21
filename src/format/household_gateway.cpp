/// What only a gateway reads: checked here, so that a file is as good there.

#include "format/household_reader.h"
#include "format/spelling.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// ---- Hours ---------------------------------------------------------------------------------

struct hours_t {
    int32_t from; ///< minutes since midnight; -1 where it was not read
    int32_t to;
};

void read_days(household_reader_t *reader, const household_place_t &place, json_object *value,
               void *) {
    weekday_set_t days = 0;
    const char *text = household_read_text(reader, place, value, "days in quotes");
    if (text != nullptr && !spelling_days(text, &days))
        household_object_to(
            reader, &place,
            "%s are no days: give such as \"friday\", \"sat,sun\", \"weekdays\" or \"all\"",
            household_quote(text).text);
}

void read_time(household_reader_t *reader, const household_place_t &place, json_object *value,
               int32_t *minutes) {
    const char *text = household_read_text(reader, place, value, "a time of day in quotes");
    if (text != nullptr && !spelling_time_of_day(text, minutes))
        household_object_to(reader, &place, "%s is not a time of day, such as \"20:30\"",
                            household_quote(text).text);
}

void read_from(household_reader_t *reader, const household_place_t &place, json_object *value,
               void *record) {
    read_time(reader, place, value, &static_cast<hours_t *>(record)->from);
}

void read_to(household_reader_t *reader, const household_place_t &place, json_object *value,
             void *record) {
    read_time(reader, place, value, &static_cast<hours_t *>(record)->to);
}

constexpr household_field_t hours_fields[] = {
    {"days", read_days, true},
    {"from", read_from, true},
    {"to", read_to, true},
};

void read_hours(household_reader_t *reader, const household_place_t &place, json_object *value,
                void *) {
    hours_t hours = {-1, -1};
    household_read_object(reader, place, value, hours_fields, &hours);
    if (hours.from >= 0 && hours.from == hours.to)
        household_object_to(reader, &place, "\"from\" and \"to\" are the same");
}

/// Reads a list that has an effect unless it is empty.
void read_list(household_reader_t *reader, const household_place_t &place, json_object *value,
               household_read_t read, household_gateway_t bit) {
    household_read_array(reader, place, value, read, nullptr);
    if (json_object_is_type(value, json_type_array) && json_object_array_length(value) > 0)
        reader->gateway |= bit;
}

// ---- Destinations --------------------------------------------------------------------------

/// @return the address family; 0 for no address
int family_of(const char *address) {
    unsigned char bytes[sizeof(in6_addr)];
    return inet_pton(AF_INET, address, bytes) == 1    ? AF_INET
           : inet_pton(AF_INET6, address, bytes) == 1 ? AF_INET6
                                                      : 0;
}

/// Such as "192.0.2.0/24" or "2001:db8::1".
bool is_network(const char *text) {
    char address[INET6_ADDRSTRLEN] = "";
    const size_t length = strcspn(text, "/");
    if (length >= sizeof(address))
        return false;
    memcpy(address, text, length);
    const int family = family_of(address);
    if (text[length] == '\0')
        return family != 0;
    const char *digits = text + length + 1;
    const size_t count = strspn(digits, "0123456789");
    int32_t bits = 0;
    return family != 0 && count > 0 && digits[count] == '\0' && spelling_number(digits, &bits) &&
           bits <= (family == AF_INET ? 32 : 128);
}

bool is_label(std::string_view label) {
    constexpr std::string_view letters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-";
    return !label.empty() && label.size() <= 63 && label.front() != '-' && label.back() != '-' &&
           label.find_first_not_of(letters) == label.npos;
}

bool is_host(std::string_view name) {
    constexpr size_t name_max = 253;
    if (name.size() > name_max)
        return false;
    for (;;) {
        const size_t dot = name.find('.');
        const std::string_view label(name.data(), std::min(dot, name.size()));
        if (!is_label(label))
            return false;
        // Ending with a number it would be an address that is wrong.
        if (dot == name.npos)
            return label.find_first_not_of("0123456789") != label.npos;
        name.remove_prefix(dot + 1);
    }
}

void read_destination(household_reader_t *reader, const household_place_t &place,
                      json_object *value, void *) {
    const char *text = household_read_text(reader, place, value, "a host or a network in quotes");
    if (text != nullptr && !is_network(text) && !is_host(text))
        household_object_to(
            reader, &place,
            "%s is neither a host, such as \"school.example\", nor a network, such as "
            "\"192.0.2.0/24\"",
            household_quote(text).text);
}

} // namespace

void household_read_bedtime(household_reader_t *reader, const household_place_t &place,
                            json_object *value, void *) {
    read_list(reader, place, value, read_hours, HOUSEHOLD_BEDTIME);
}

void household_read_school(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *) {
    read_list(reader, place, value, read_hours, HOUSEHOLD_SCHOOL);
}

void household_read_paused(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *) {
    bool is_paused = false;
    if (household_read_switch(reader, place, value, &is_paused) && is_paused)
        reader->gateway |= HOUSEHOLD_PAUSED;
}

void household_read_free(household_reader_t *reader, const household_place_t &place,
                         json_object *value, void *) {
    read_list(reader, place, value, read_destination, HOUSEHOLD_FREE);
}

void household_read_threshold(household_reader_t *reader, const household_place_t &place,
                              json_object *value, void *) {
    int32_t bytes = 0;
    if (household_read_number(reader, place, value, 1, &bytes))
        reader->gateway |= HOUSEHOLD_THRESHOLD;
}

void household_warn_of_gateway(household_reader_t *reader) {
    constexpr const char *keys[] = {"bedtime", "school", "paused", "free", "threshold"};
    char list[sizeof("bedtime, school, paused, free, threshold")] = "";
    size_t length = 0;
    for (size_t i = 0; i < std::size(keys); ++i)
        if (reader->gateway >> i & 1)
            length += static_cast<size_t>(snprintf(list + length, sizeof(list) - length, "%s%s",
                                                   length == 0 ? "" : ", ", keys[i]));
    if (length > 0)
        household_warn(reader, nullptr, "%s: checked, and ignored until a gateway reads it", list);
}
