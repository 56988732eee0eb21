#pragma once
/// The household: one JSON document that says by name how things should be. This is the one home of
/// its keys and of reading it; docs/household.md describes it for people, and
/// docs/household.schema.json for programs.
///
/// | in           | key          | value                                                       |
/// |--------------|--------------|-------------------------------------------------------------|
/// | root         | limits       | whether limits are on; true without it                      |
/// |              | applications | array of the DPI engine's applications                      |
/// |              | people       | array of people                                             |
/// |              | free         | for a gateway: hosts and networks that are no screen time   |
/// |              | threshold    | for a gateway: bytes from which a minute counts             |
/// | application  | number, name |                                                             |
/// | person       | number, name |                                                             |
/// |              | devices      | array of devices                                            |
/// |              | limit        | a time, "none", or an object of times by days               |
/// |              | enforced     | whether the limit cuts off; true without it                 |
/// |              | applications | array of rules                                              |
/// |              | bedtime, school | for a gateway: arrays of { days, from, to }              |
/// |              | paused       | for a gateway                                               |
/// | device       | mac, name    |                                                             |
/// | rule         | name, rule   | an application, and a time, "blocked" or "free"             |
///
/// The records are plain: nothing here knows what is made of them.

#include "core/clock.h"
#include "core/mac.h"
#include "core/vector.h"
#include "format/policy_rule.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// The default file, which need not exist.
inline constexpr char household_path[] = "/etc/utm_appd/household.json";

/// What a reader takes of a file, in bytes.
inline constexpr size_t household_size_limit = size_t{1024} * 1024;

inline constexpr size_t household_people_max = 1024;

/// A limit of a whole day is none.
inline constexpr int32_t household_no_limit = minutes_per_day;

/// A name's room, its NUL included.
inline constexpr int household_name_size = 64;

/// Printable UTF-8, whatever stood in the file.
struct household_name_t {
    char text[household_name_size];
};

struct household_device_t {
    uint8_t mac[mac_bytes];
    household_name_t name; ///< empty without one
};

struct household_app_t {
    int32_t number;
    household_name_t name;
};

/// Where a person's part of a list stands.
struct household_part_t {
    size_t first;
    size_t count;
};

struct household_person_t {
    int32_t number;
    household_name_t name;
    int32_t weekday_limits[days_per_week]; ///< minutes, Sunday first
    bool enforced;                         ///< the limit cuts off; false: it is only counted
    household_part_t devices;
    household_part_t rules; ///< those that limit or block: what is free has none
};

struct household_t {
    bool limits;
    plain_vector<household_person_t> people; ///< in the file's order, as all lists
    plain_vector<household_device_t> devices;
    plain_vector<config_policy_rule_t> rules;
    plain_vector<household_app_t> apps; ///< the file's own, then those of the names file
};

/// @return the records of a person's part of a list
template <typename T>
std::span<const T> household_records(const plain_vector<T> &list, household_part_t part) {
    return {list.begin() + part.first, part.count};
}

/// What the reader says of a file, with its place: "people[1].devices[0].mac: ...".
struct household_remark_t {
    bool is_error; ///< the file is of no use; else a warning
    char text[400];
};

/// Further ones are dropped, but an error is never dropped for a warning.
inline constexpr size_t household_remarks_max = 100;

using household_remarks_t = plain_vector<household_remark_t>;

/// Reads a household's text.
/// @param apps  names that the file may use besides its own
/// @param household  out: empty before; of no use unless the result is true
/// @param remarks  out: in the order of the file, after what is said of its text and applications
/// @return whether the text is a household without an error; false without an error in the remarks
///         when memory ran out
[[nodiscard]] bool household_read(const char *text, size_t size,
                                  std::span<const household_app_t> apps, household_t *household,
                                  household_remarks_t *remarks);

/// @param text  a person's name, whatever the case, or number
/// @return the person, or null
[[nodiscard]] const household_person_t *household_find_person(const household_t &household,
                                                              const char *text);

/// @return the person of that number, or null
[[nodiscard]] const household_person_t *household_person_of(const household_t &household,
                                                            int32_t number);

/// @param text  an application's name, whatever the case, or any number
/// @param app_id  out: untouched on failure
[[nodiscard]] bool household_find_app(const household_t &household, const char *text,
                                      int32_t *app_id);

/// @return the application's name, or null
[[nodiscard]] const char *household_app_name(const household_t &household, int32_t app_id);

/// @return the name that somebody who typed the text most likely meant, or null
[[nodiscard]] const char *household_nearest_person(const household_t &household, const char *text);
[[nodiscard]] const char *household_nearest_app(const household_t &household, const char *text);
