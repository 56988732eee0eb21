/// Applications, people, devices and rules. A record with an error is still added as far as it can
/// be read, so that what refers to it is not objected to as well.

#include "core/text.h"
#include "format/household_reader.h"
#include "format/protocol.h"
#include "format/spelling.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace {

// ---- Applications --------------------------------------------------------------------------

void read_app_number(household_reader_t *reader, const household_place_t &place, json_object *value,
                     void *record) {
    int32_t number = 0;
    if (!household_read_number(reader, place, value, 1, &number))
        return;
    if (household_app_name(*reader->household, number) != nullptr)
        household_object_to(reader, &place, "%d has a name already", number);
    else
        static_cast<household_app_t *>(record)->number = number;
}

void read_app_name(household_reader_t *reader, const household_place_t &place, json_object *value,
                   void *record) {
    household_app_t *app = static_cast<household_app_t *>(record);
    household_name_t name = {};
    if (!household_read_unlike_number(reader, place, value, &name))
        return;
    for (const household_app_t &other : reader->household->apps)
        if (text_is_same(other.name.text, name.text)) {
            household_object_to(reader, &place, "\"%s\" is another application's name", name.text);
            return;
        }
    app->name = name;
}

constexpr household_field_t app_fields[] = {
    {"number", read_app_number, true},
    {"name", read_app_name, true},
};

// ---- Devices -------------------------------------------------------------------------------

struct device_reading_t {
    household_device_t device;
    bool has_mac;
};

/// Whose a device is that has been read: of the person that is being read, or of another one.
void object_to_owner(household_reader_t *reader, const household_place_t &place, size_t device) {
    const household_t &household = *reader->household;
    const mac_text_t mac = mac_text(household.devices[device].mac);
    for (const household_person_t &person : household.people)
        if (device >= person.devices.first &&
            device - person.devices.first < person.devices.count) {
            household_object_to(reader, &place,
                                "%s is a device of \"%s\" too: it can be one person's only",
                                mac.text, person.name.text);
            return;
        }
    household_object_to(reader, &place, "%s is there twice", mac.text);
}

/// @return what keeps an address from being a device's, in words; null when nothing does
const char *objection_to_mac(const uint8_t *mac) {
    const auto is_all = [mac](uint8_t byte) {
        return std::all_of(mac, mac + mac_bytes, [byte](uint8_t one) { return one == byte; });
    };
    return is_all(0)      ? "is no device's address, but none at all"
           : is_all(0xFF) ? "is the address of all devices at once (broadcast)"
           : mac[0] & 1   ? "is the address of a group of devices (multicast)"
                          : nullptr;
}

void read_mac(household_reader_t *reader, const household_place_t &place, json_object *value,
              void *record) {
    device_reading_t *reading = static_cast<device_reading_t *>(record);
    uint8_t *mac = reading->device.mac;
    const char *text = household_read_text(reader, place, value, "a MAC address in quotes");
    if (text == nullptr)
        return;
    if (!mac_parse(text, mac)) {
        household_object_to(reader, &place,
                            "%s is not a MAC address: give six bytes, such as 02:00:00:00:00:1a",
                            household_quote(text).text);
        return;
    }
    const char *objection = objection_to_mac(mac);
    if (objection != nullptr) {
        household_object_to(reader, &place, "%s %s", mac_text(mac).text, objection);
        return;
    }
    const plain_vector<household_device_t> &devices = reader->household->devices;
    for (size_t i = 0; i < devices.size(); ++i)
        if (memcmp(devices[i].mac, mac, mac_bytes) == 0) {
            object_to_owner(reader, place, i);
            return;
        }
    reading->has_mac = true;
    if (mac[0] & 2)
        household_warn(
            reader, &place,
            "%s is made up by the device (randomised) and may change, and then the device "
            "is nobody's: turn off the private address for this network in the device's "
            "settings, and give the address that it shows then",
            mac_text(mac).text);
}

void read_device_name(household_reader_t *reader, const household_place_t &place,
                      json_object *value, void *record) {
    household_name_t *name = &static_cast<device_reading_t *>(record)->device.name;
    static_cast<void>(household_read_name(reader, place, value, name));
}

constexpr household_field_t device_fields[] = {
    {"mac", read_mac, true},
    {"name", read_device_name, false},
};

void read_device(household_reader_t *reader, const household_place_t &place, json_object *value,
                 void *) {
    device_reading_t reading = {};
    household_read_object(reader, place, value, device_fields, &reading);
    if (reading.has_mac)
        household_add(reader, &reader->household->devices, reading.device);
}

// ---- Rules ---------------------------------------------------------------------------------

/// @return "; did you mean ...", for as long as remarks are noted: each looks at all names
household_quote_t hint_at_app(const household_reader_t &reader, const char *text) {
    const bool is_full = reader.remarks->size() >= household_remarks_max;
    return household_hint(is_full ? nullptr : household_nearest_app(*reader.household, text));
}

/// @return the application, 0 after an objection
int32_t read_app_of_rule(household_reader_t *reader, const household_place_t &place,
                         json_object *value) {
    int32_t app_id = 0;
    if (json_object_is_type(value, json_type_int))
        return household_read_number(reader, place, value, 1, &app_id) ? app_id : 0;
    const char *text =
        household_read_text(reader, place, value, "an application's name in quotes or its number");
    if (text == nullptr)
        return 0;
    const household_t &household = *reader->household;
    if (!household_find_app(household, text, &app_id))
        household_object_to(reader, &place, "%s is no application that has a name here%s",
                            household_quote(text).text, hint_at_app(*reader, text).text);
    else if (app_id < 1 && !reader->has_app_without_number)
        household_object_to(reader, &place, "%s is application %d, which can have no rule",
                            household_quote(text).text, app_id);
    return std::max(app_id, 0);
}

/// @param record  the rule, whose person's other rules are the last ones of the household
void read_rule_name(household_reader_t *reader, const household_place_t &place, json_object *value,
                    void *record) {
    static_cast<config_policy_rule_t *>(record)->app_id = read_app_of_rule(reader, place, value);
}

void read_rule_action(household_reader_t *reader, const household_place_t &place,
                      json_object *value, void *record) {
    config_policy_rule_t *rule = static_cast<config_policy_rule_t *>(record);
    if (household_is_word(value, "blocked"))
        rule->action = POLICY_ACTION_BLOCK;
    else if (household_is_word(value, "free"))
        rule->action = POLICY_ACTION_REMOVE;
    else if (household_read_minutes(reader, place, value, "\"blocked\" or \"free\"",
                                    &rule->daily_limit))
        rule->action = POLICY_ACTION_LIMIT;
}

constexpr household_field_t rule_fields[] = {
    {"name", read_rule_name, true},
    {"rule", read_rule_action, true},
};

/// @param record  where in the household the person's rules begin
void read_rule(household_reader_t *reader, const household_place_t &place, json_object *value,
               void *record) {
    const size_t first = *static_cast<const size_t *>(record);
    plain_vector<config_policy_rule_t> *rules = &reader->household->rules;
    config_policy_rule_t rule = {};
    household_read_object(reader, place, value, rule_fields, &rule);
    const auto is_same = [&rule](const config_policy_rule_t &other) {
        return other.app_id == rule.app_id;
    };
    if (rule.app_id == 0)
        return;
    if (std::any_of(rules->begin() + first, rules->end(), is_same))
        household_object_to(reader, &place, "application %d has a rule already", rule.app_id);
    else
        household_add(reader, rules, rule);
}

/// Until here a rule that frees has kept its place, so that a second one is found.
void drop_free(plain_vector<config_policy_rule_t> *rules, size_t first) {
    const auto end =
        std::remove_if(rules->begin() + first, rules->end(), [](const config_policy_rule_t &rule) {
            return rule.action == POLICY_ACTION_REMOVE;
        });
    rules->keep(static_cast<size_t>(end - rules->begin()));
}

// ---- People --------------------------------------------------------------------------------

household_person_t *person_of(void *record) {
    return static_cast<household_person_t *>(record);
}

void read_number(household_reader_t *reader, const household_place_t &place, json_object *value,
                 void *record) {
    int32_t number = 0;
    if (!household_read_number(reader, place, value, INT32_MIN, &number))
        return;
    const plain_vector<int32_t> &taken = reader->people_numbers;
    if (std::find(taken.begin(), taken.end(), number) != taken.end())
        household_object_to(reader, &place, "%d is another person's number", number);
    household_add(reader, &reader->people_numbers, number);
    person_of(record)->number = number;
}

void read_name(household_reader_t *reader, const household_place_t &place, json_object *value,
               void *record) {
    household_name_t name = {};
    if (!household_read_unlike_number(reader, place, value, &name))
        return;
    const auto is_same = [&name](const household_person_t &other) {
        return text_is_same(other.name.text, name.text);
    };
    const plain_vector<household_person_t> &people = reader->household->people;
    if (strcasecmp(name.text, "all") == 0)
        household_object_to(reader, &place, "\"%s\" means everybody", name.text);
    else if (std::any_of(people.begin(), people.end(), is_same))
        household_object_to(reader, &place, "\"%s\" is another person's name", name.text);
    person_of(record)->name = name;
}

void read_devices(household_reader_t *reader, const household_place_t &place, json_object *value,
                  void *) {
    household_read_array(reader, place, value, read_device, nullptr);
}

void read_limit(household_reader_t *reader, const household_place_t &place, json_object *value,
                void *record) {
    household_read_limit(reader, place, value, person_of(record)->weekday_limits);
}

void read_enforced(household_reader_t *reader, const household_place_t &place, json_object *value,
                   void *record) {
    household_read_switch(reader, place, value, &person_of(record)->enforced);
}

void read_rules(household_reader_t *reader, const household_place_t &place, json_object *value,
                void *) {
    plain_vector<config_policy_rule_t> *rules = &reader->household->rules;
    size_t first = rules->size();
    household_read_array(reader, place, value, read_rule, &first);
    drop_free(rules, first);
}

constexpr household_field_t person_fields[] = {
    {"number", read_number, true},
    {"name", read_name, true},
    {"devices", read_devices, false},
    {"limit", read_limit, false},
    {"enforced", read_enforced, false},
    {"applications", read_rules, false},
    {"bedtime", household_read_bedtime, false},
    {"school", household_read_school, false},
    {"paused", household_read_paused, false},
};

} // namespace

void household_read_app(household_reader_t *reader, const household_place_t &place,
                        json_object *value, void *) {
    household_app_t app = {};
    household_read_object(reader, place, value, app_fields, &app);
    reader->has_app_without_number = reader->has_app_without_number || app.number == 0;
    household_add(reader, &reader->household->apps, app);
}

void household_read_person(household_reader_t *reader, const household_place_t &place,
                           json_object *value, void *) {
    household_t *household = reader->household;
    household_person_t person = {};
    person.enforced = true;
    person.devices.first = household->devices.size();
    person.rules.first = household->rules.size();
    std::fill_n(person.weekday_limits, days_per_week, household_no_limit);
    household_read_object(reader, place, value, person_fields, &person);
    person.devices.count = household->devices.size() - person.devices.first;
    person.rules.count = household->rules.size() - person.rules.first;
    household_add(reader, &household->people, person);
}
