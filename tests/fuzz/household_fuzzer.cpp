/// Household files: whatever a file holds, there is an error, or a household that keeps its own
/// rules and, written down, is read as the same again.
///
/// An input is the text of a file.

#include "core/json.h"
#include "format/household.h"
#include "format/protocol.h"
#include "tests/fuzz/json_mutator.h"
#include "tests/fuzz/support.h"
#include "tests/fuzz/text_checks.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <strings.h>
#include <vector>

namespace {

constexpr household_app_t named_apps[] = {{310, {"music"}}, {0, {"unknown"}}, {305, {"tv"}}};

struct reading_t {
    bool is_good;
    household_t household;
    household_remarks_t remarks;
};

/// @param apps  besides those of the text
void read_household(const std::string &text, std::span<const household_app_t> apps,
                    reading_t *reading) {
    // A copy of just its size, so that a look behind it is noticed.
    const std::vector<char> bytes(text.begin(), text.end());
    reading->is_good =
        household_read(bytes.data(), bytes.size(), apps, &reading->household, &reading->remarks);
}

// ---- What has to hold ----------------------------------------------------------------------

void check_remarks(const reading_t &reading) {
    bool has_error = false;
    fuzz::check(reading.remarks.size() <= household_remarks_max, "too many remarks");
    for (const household_remark_t &remark : reading.remarks) {
        const size_t length = strnlen(remark.text, sizeof(remark.text));
        fuzz::check(length > 0 && length < sizeof(remark.text) - 1, "a remark that is cut");
        fuzz::check_clean(remark.text);
        fuzz::check(strchr(remark.text, '\n') == nullptr, "a remark of two lines");
        has_error = has_error || remark.is_error;
    }
    fuzz::check(has_error != reading.is_good, "an error in a good household, or none in a bad one");
}

/// @return the name in lower case, as far as it is ASCII
std::string check_name(const household_name_t &name) {
    fuzz::check(strnlen(name.text, sizeof(name.text)) < sizeof(name.text), "a name has no end");
    fuzz::check_clean(name.text);
    fuzz::check(strchr(name.text, '\n') == nullptr, "a name has two lines");
    std::string lower = name.text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

/// The same for a name that stands for a number.
std::string check_unlike_number(const household_name_t &name) {
    const std::string lower = check_name(name);
    const size_t sign = lower.find_first_not_of("+-") == 1 ? 1 : 0;
    fuzz::check(lower.size() > sign &&
                    lower.find_first_not_of("0123456789", sign) != std::string::npos,
                "a name is a number");
    return lower;
}

void check_minutes(int32_t minutes) {
    fuzz::check(minutes >= 1 && minutes <= 1440, "a time of no minute or more than a day");
}

void check_apps(const household_t &household) {
    std::set<std::string> names;
    std::set<int32_t> numbers;
    const size_t own = household.apps.size() - std::size(named_apps);
    for (size_t i = 0; i < own; ++i) {
        const household_app_t &app = household.apps[i];
        fuzz::check(names.insert(check_unlike_number(app.name)).second, "two applications' name");
        fuzz::check(app.number > 0 && numbers.insert(app.number).second, "an application's number");
    }
    fuzz::check(memcmp(household.apps.begin() + own, named_apps, sizeof(named_apps)) == 0,
                "the names file's applications are others");
}

void check_devices(std::span<const household_device_t> devices, std::set<std::string> *addresses) {
    for (const household_device_t &device : devices) {
        const std::string address(device.mac, device.mac + mac_bytes);
        fuzz::check(addresses->insert(address).second, "a device is there twice");
        fuzz::check((address[0] & 1) == 0 && address.find_first_not_of('\0') != address.npos,
                    "an address that no device has");
        check_name(device.name);
    }
}

void check_rules(std::span<const config_policy_rule_t> rules) {
    std::set<int32_t> apps;
    for (const config_policy_rule_t &rule : rules) {
        fuzz::check(rule.app_id > 0 && apps.insert(rule.app_id).second, "two rules for one");
        if (rule.action == POLICY_ACTION_LIMIT)
            check_minutes(rule.daily_limit);
        else
            fuzz::check(rule.action == POLICY_ACTION_BLOCK && rule.daily_limit == 0,
                        "a rule that neither limits nor blocks");
    }
}

void check_household(const household_t &household) {
    check_apps(household);
    fuzz::check(household.people.size() <= household_people_max, "too many people");
    std::set<std::string> names;
    std::set<std::string> addresses;
    std::set<int32_t> numbers;
    size_t devices = 0;
    size_t rules = 0;
    for (const household_person_t &person : household.people) {
        fuzz::check(person.devices.first == devices && person.rules.first == rules,
                    "a person's part does not follow the one before");
        devices += person.devices.count;
        rules += person.rules.count;
        fuzz::check(devices <= household.devices.size() && rules <= household.rules.size(),
                    "a person's part goes beyond the list");
        const std::string name = check_unlike_number(person.name);
        fuzz::check(name != "all" && names.insert(name).second, "a person's name");
        fuzz::check(numbers.insert(person.number).second, "two people's number");
        std::for_each(person.weekday_limits, person.weekday_limits + days_per_week, check_minutes);
        check_devices(household_records(household.devices, person.devices), &addresses);
        check_rules(household_records(household.rules, person.rules));
        fuzz::check(household_find_person(household, person.name.text) == &person &&
                        household_person_of(household, person.number) == &person,
                    "a person is not found");
    }
    fuzz::check(devices == household.devices.size() && rules == household.rules.size(),
                "a device or a rule is nobody's");
}

// ---- Writing it down -----------------------------------------------------------------------

void add(json_object *object, const char *key, json_object *value) {
    json_object_object_add(object, key, value);
}

template <typename T, typename Write>
json_object *list_of(const T &records, Write write) {
    json_object *list = json_object_new_array();
    for (const auto &record : records)
        json_object_array_add(list, write(record));
    return list;
}

json_object *write_app(const household_app_t &app) {
    json_object *object = json_object_new_object();
    add(object, "name", json_object_new_string(app.name.text));
    add(object, "number", json_object_new_int(app.number));
    return object;
}

json_object *write_device(const household_device_t &device) {
    json_object *object = json_object_new_object();
    if (device.name.text[0] != '\0')
        add(object, "name", json_object_new_string(device.name.text));
    add(object, "mac", json_object_new_string(mac_digits(device.mac).text));
    return object;
}

json_object *write_rule(const config_policy_rule_t &rule) {
    json_object *object = json_object_new_object();
    add(object, "rule",
        rule.action == POLICY_ACTION_BLOCK ? json_object_new_string("BLOCKED")
                                           : json_object_new_int(rule.daily_limit));
    add(object, "name", json_object_new_int(rule.app_id));
    return object;
}

json_object *write_limits(const int32_t *limits) {
    constexpr const char *days[] = {"0", "mon", "Tuesday", "3", "thurs", "FRI", "6"};
    json_object *object = json_object_new_object();
    for (size_t day = 0; day < std::size(days); ++day)
        add(object, days[day], json_object_new_int(limits[day]));
    return object;
}

json_object *write_person(const household_t &household, const household_person_t &person) {
    json_object *object = json_object_new_object();
    add(object, "enforced", json_object_new_boolean(person.enforced));
    add(object, "limit", write_limits(person.weekday_limits));
    add(object, "applications",
        list_of(household_records(household.rules, person.rules), write_rule));
    add(object, "devices",
        list_of(household_records(household.devices, person.devices), write_device));
    add(object, "name", json_object_new_string(person.name.text));
    add(object, "number", json_object_new_int(person.number));
    return object;
}

std::string write(const household_t &household) {
    const json_ptr document(json_object_new_object());
    add(document.get(), "people", list_of(household.people, [&](const household_person_t &person) {
            return write_person(household, person);
        }));
    const size_t own = household.apps.size() - std::size(named_apps);
    add(document.get(), "applications", list_of(std::span(household.apps.begin(), own), write_app));
    add(document.get(), "limits", json_object_new_boolean(household.limits));
    return json_object_to_json_string(document.get());
}

template <typename T>
std::string bytes_of(const plain_vector<T> &list) {
    return {reinterpret_cast<const char *>(list.begin()),
            reinterpret_cast<const char *>(list.end())};
}

bool is_same(const household_t &one, const household_t &other) {
    const auto is_same_person = [](const household_person_t &left,
                                   const household_person_t &right) {
        return left.number == right.number && strcmp(left.name.text, right.name.text) == 0 &&
               std::equal(left.weekday_limits, left.weekday_limits + days_per_week,
                          right.weekday_limits) &&
               left.enforced == right.enforced && left.devices.count == right.devices.count &&
               left.rules.count == right.rules.count;
    };
    return one.limits == other.limits &&
           std::equal(one.people.begin(), one.people.end(), other.people.begin(),
                      other.people.end(), is_same_person) &&
           bytes_of(one.devices) == bytes_of(other.devices) &&
           bytes_of(one.rules) == bytes_of(other.rules) &&
           bytes_of(one.apps) == bytes_of(other.apps);
}

void check_rewritten(const household_t &household) {
    reading_t again = {};
    read_household(write(household), named_apps, &again);
    fuzz::check(again.is_good, "a household that is written down is refused");
    fuzz::check(is_same(household, again.household), "a household that is written down is another");
}

/// An object without its last brace is none.
void check_cut(const std::string &text) {
    reading_t cut = {};
    read_household(text.substr(0, text.rfind('}')), named_apps, &cut);
    fuzz::check(!cut.is_good, "a household that is cut off is taken");
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *bytes, size_t size, size_t most, unsigned seed) {
    return fuzz::mutate_json(bytes, size, most, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string text(bytes, bytes + size);
    reading_t reading = {};
    read_household(text, named_apps, &reading);
    check_remarks(reading);
    if (!reading.is_good)
        return 0;
    check_household(reading.household);
    check_rewritten(reading.household);
    check_cut(text);
    return 0;
}
