/// Lists of devices and of rules: what the daemon has beside what the household says. The wire
/// lists neither, so the daemon has to write them down; while limits are off it does not.

#include "client/household_file.h"
#include "client/output.h"
#include "client/people.h"
#include "client/reason.h"
#include "client/text.h"
#include "client/verbs.h"

#include <algorithm>
#include <cstring>

namespace {

/// A device or a rule of a person.
struct item_t {
    int32_t number;
    int32_t policy; ///< the person's at the daemon, or 0
    bool in_household;
    bool at_daemon;
    const char *name; ///< the device's, or null
    ctl_mac mac;
    config_policy_rule_t rule;

    bool is_same(const item_t &other) const {
        return number == other.number && mac == other.mac && rule.app_id == other.rule.app_id &&
               rule.action == other.rule.action && rule.daily_limit == other.rule.daily_limit;
    }
};

struct list_t {
    bool is_seen; ///< what the daemon has is known
    ctl_daemon_state state;
    plain_vector<item_t> items;
    bool complete; ///< false once memory ran out

    size_t first; ///< of the person whose items are added: the daemon's, then the household's

    /// Adds an item. One of the household's may be there already.
    void add(const item_t &item) {
        for (size_t i = first; item.in_household && i < items.size(); ++i)
            if (items[i].is_same(item)) {
                items[i].in_household = true;
                items[i].name = item.name;
                return;
            }
        complete = complete && items.add(item);
    }
};

void add_devices(const ctl_call &call, const item_t &whose, const ctl_daemon_person *daemons,
                 const household_person_t *households, list_t *list) {
    item_t item = whose;
    item.at_daemon = true;
    if (daemons != nullptr)
        for (const ctl_mac &mac : household_records(list->state.devices, daemons->devices)) {
            item.mac = mac;
            list->add(item);
        }
    if (households == nullptr)
        return;
    item.at_daemon = false;
    item.in_household = true;
    for (const household_device_t &device :
         household_records(call.household.devices, households->devices)) {
        item.mac = ctl_mac_of(device.mac);
        item.name = device.name.text[0] != '\0' ? device.name.text : nullptr;
        list->add(item);
    }
}

void add_rules(const ctl_call &call, const item_t &whose, const ctl_daemon_person *daemons,
               const household_person_t *households, list_t *list) {
    item_t item = whose;
    const auto add = [&](const config_policy_rule_t &rule) {
        item.rule = rule;
        if (rule.action == POLICY_ACTION_BLOCK)
            item.rule.daily_limit = 0; // decides nothing
        list->add(item);
    };
    item.at_daemon = true;
    if (daemons != nullptr)
        for (const config_policy_rule_t &rule :
             household_records(list->state.rules, daemons->rules))
            add(rule);
    item.at_daemon = false;
    item.in_household = true;
    if (households != nullptr)
        for (const config_policy_rule_t &rule :
             household_records(call.household.rules, households->rules))
            add(rule);
}

/// Adds what a person has, here and there.
void add_person(const ctl_call &call, int32_t number, list_t *list) {
    const ctl_daemon_person *daemons = ctl_state_person(list->state, number);
    const household_person_t *households = household_person_of(call.household, number);
    item_t whose = {};
    whose.number = number;
    list->first = list->items.size();
    whose.policy = daemons == nullptr ? 0 : daemons->policy;
    if (call.verb.word[0] == 'l')
        add_devices(call, whose, daemons, households, list);
    else
        add_rules(call, whose, daemons, households, list);
}

/// @param list  out: empty before
ctl_exit read_list(const ctl_call &call, list_t *list) {
    ctl_exit status = ctl_look(call, &list->state, &list->is_seen);
    if (status != CTL_DONE)
        return status;
    const bool is_one = !call.operands.empty();
    const int32_t one = call.profile_id();
    if (is_one && household_person_of(call.household, one) == nullptr &&
        (!list->is_seen || ctl_state_person(list->state, one) == nullptr)) {
        status = ctl_send(call); // says why not
        if (status != CTL_DONE)
            return status;
    }
    if (!list->is_seen)
        ctl_say("limits are off, and the daemon does not show what it has: this is what the "
                "household says");
    for (const household_person_t &person : call.household.people)
        if (!is_one || person.number == one)
            add_person(call, person.number, list);
    for (const ctl_daemon_person &person : list->state.people)
        if ((!is_one || person.number == one) &&
            household_person_of(call.household, person.number) == nullptr)
            add_person(call, person.number, list);
    return list->complete ? CTL_DONE : ctl_fail(CTL_BROKEN, "out of memory");
}

/// @return what is to be said of an item that is not in both places
const char *remark_on(const ctl_call &call, const list_t &list, const item_t &item) {
    if (!list.is_seen || call.household.people.empty() || item.in_household == item.at_daemon)
        return "";
    return item.in_household ? "not at the daemon: see utm_appctl apply" : "not in the household";
}

ctl_exit print_list(const ctl_call &call, const list_t &list) {
    const bool has_devices = call.verb.word[0] == 'l';
    ctl_table table = {.columns = 4, .left = 0xf};
    ctl_add_texts(&table, {"PERSON", has_devices ? "DEVICE" : "APPLICATION",
                           has_devices ? "NAME" : "RULE", ""});
    for (const item_t &item : list.items) {
        ctl_cell *cells = ctl_add_row(&table);
        ctl_fill(&cells[0], "%s", ctl_person_name(call.household, item.number).text);
        ctl_fill(&cells[3], "%s", remark_on(call, list, item));
        if (has_devices) {
            ctl_fill(&cells[1], "%s", mac_text(item.mac.bytes).text);
            ctl_fill(&cells[2], "%s", item.name != nullptr ? item.name : "");
            continue;
        }
        ctl_fill_app(&cells[1], call.names, item.rule.app_id);
        ctl_fill(&cells[2], "%s",
                 item.rule.action == POLICY_ACTION_BLOCK ? "blocked"
                                                         : ctl_time_of(item.rule.daily_limit).text);
    }
    return ctl_print(table);
}

ctl_exit print_list_json(const ctl_call &call, const list_t &list) {
    const bool has_devices = call.verb.word[0] == 'l';
    ctl_document document;
    document.add_bool("known", list.is_seen);
    json_object *array = document.add_array(has_devices ? "devices" : "rules");
    for (const item_t &item : list.items) {
        ctl_document element;
        ctl_add_person(&element, call, item.number);
        if (has_devices) {
            element.add_text("mac", mac_text(item.mac.bytes).text);
            if (item.name != nullptr)
                element.add_text("name", item.name);
            else
                element.add_nothing("name");
        } else {
            element.add_int("policy", item.policy);
            element.add_app(call.names, item.rule.app_id);
            element.add_int("limit", item.rule.daily_limit);
        }
        element.add_bool("household", item.in_household);
        element.add_bool("daemon", item.at_daemon);
        document.append(array, &element);
    }
    return document.print();
}

} // namespace

ctl_exit ctl_list(const ctl_call &call) {
    list_t list = {};
    list.complete = true;
    const ctl_exit status = read_list(call, &list);
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_list_json(call, list) : print_list(call, list);
}
