/// The first parts of a plan: who leaves, who is deleted, who is new, and which devices they have.

#include "client/apply_planner.h"

#include <algorithm>

void ctl_planner::meet_people() {
    for (const household_person_t &wanted : wish_.household.people) {
        ctl_person_plan person = {.wanted = &wanted,
                                  .now = ctl_state_person(wish_.state, wanted.number),
                                  .number = wanted.number,
                                  .weekday_limits = {},
                                  .limit = household_no_limit,
                                  .extend = 0,
                                  .used = 0,
                                  .enabled = false,
                                  .blocked = false,
                                  .is_released = false,
                                  .is_cleared = false,
                                  .policy = 0};
        std::fill_n(person.weekday_limits, days_per_week, household_no_limit);
        if (person.now != nullptr) {
            std::copy_n(person.now->weekday_limits, days_per_week, person.weekday_limits);
            person.limit = person.now->limit;
            person.extend = person.now->extend;
            person.used = person.now->used;
            person.enabled = person.now->enabled;
            person.blocked = person.now->blocked;
            person.policy = person.now->policy;
        }
        person.is_released = is_to_be_released(wanted.number, person.now);
        if (person.is_released)
            keep(&plan_.release, wanted.number);
        keep(&people_, person);
    }
    // Whoever left the household can only be released under their number. Whoever is deleted
    // without a device, or without the daemon's knowing that they are cut off, is announced to
    // nobody.
    for (const int32_t number : wish_.memory.release)
        meet_lost(number);
    for (const ctl_daemon_person &applied : wish_.memory.applied.people)
        if (wish_.repair ||
            (applied.enabled && ctl_state_person(wish_.state, applied.number) == nullptr))
            meet_lost(applied.number);
    for (const ctl_daemon_person &person : wish_.state.people)
        if (wish_.repair)
            meet_lost(person.number);
}

/// Notes a person of no household who is not in the daemon, or will not be.
void ctl_planner::meet_lost(int32_t number) {
    const ctl_daemon_person *now = ctl_state_person(wish_.state, number);
    if (household_person_of(wish_.household, number) != nullptr ||
        (now != nullptr && !is_pruned(*now)) ||
        std::any_of(lost_.begin(), lost_.end(),
                    [number](const ctl_person_plan &other) { return other.number == number; }))
        return;
    ctl_person_plan person = {};
    person.number = number;
    person.limit = household_no_limit;
    keep(&lost_, person);
    keep(&plan_.release, number);
}

void ctl_planner::warn_of_strangers() {
    for (const ctl_daemon_person &person : wish_.state.people)
        if (household_person_of(wish_.household, person.number) == nullptr && !is_pruned(person))
            keep(&plan_.warnings,
                 ctl_line_of("person %d is not of the household and was left as they are; --prune "
                             "deletes them, with thirty days of history",
                             person.number));
}

void ctl_planner::remove_devices_of(const ctl_daemon_person &person) {
    ctl_person_plan *planned = of(person.number);
    const bool is_anew = planned != nullptr && is_joined_anew(*planned);
    bool has_begun = false;
    for (const ctl_mac &mac : household_records(wish_.state.devices, person.devices)) {
        const bool leaves = has_to_leave(person, mac);
        const bool joins_again =
            planned != nullptr && (is_anew || is_strangers_in_memory(mac, person.number));
        if (!leaves && !joins_again)
            continue;
        // A person who is cut off has to be free when the last device goes: without a device nobody
        // is told that they are.
        if (!has_begun && person.enabled && person.blocked) {
            begin_quietly();
            send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person.number);
            if (planned != nullptr)
                planned->enabled = planned->blocked = false;
        }
        has_begun = true;
        if (leaves)
            begin(ctl_line_of("%s: device %s leaves",
                              ctl_person_called(wish_.household, person.number).text,
                              mac_text(mac.bytes).text),
                  person.number);
        else
            begin_quietly();
        send_device(UTM_APP_CONFIG_DEL_DEVICE, person.number, mac);
    }
    if (has_begun && planned == nullptr && person.enabled && person.blocked) {
        begin_quietly();
        send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person.number, 0, 1);
    }
}

void ctl_planner::remove_devices() {
    for (const ctl_daemon_person &person : wish_.state.people)
        if (!is_pruned(person))
            remove_devices_of(person);
}

void ctl_planner::prune() {
    for (const ctl_daemon_person &person : wish_.state.people) {
        if (!is_pruned(person))
            continue;
        if (wish_.prune)
            begin(ctl_line_of("person %d: deleted", person.number), person.number);
        else
            begin_quietly();
        // Without a device nobody is told that they are free again, unless that is before.
        if (person.blocked && person.devices.count == 0) {
            send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person.number, 0, 1);
            send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person.number);
        }
        send(UTM_APP_CONFIG_DELETE_PROFILE, person.number);
    }
}

void ctl_planner::create_people() {
    for (const ctl_person_plan &person : people_) {
        if (person.now != nullptr)
            continue;
        begin(ctl_line_of("%s: added as person %d",
                          ctl_person_called(wish_.household, person.number).text, person.number),
              person.number);
        send(UTM_APP_CONFIG_CREATE_PROFILE, person.number);
    }
}

void ctl_planner::note_ghost(const ctl_mac &mac, plain_vector<ctl_mac> *ghosts) {
    if (!ctl_state_knows_device(wish_.state, mac) && !ctl_contains(*ghosts, mac))
        keep(ghosts, mac);
}

/// What nobody has in the daemon may still have rules in the engine: of a device that was removed
/// while limits were off, or from before the daemon was killed. Whoever is deleted takes the rules
/// of their devices along, so a person is made for that who counts nothing and blocks nothing.
void ctl_planner::release_ghosts() {
    plain_vector<ctl_mac> ghosts;
    for (const ctl_mac &mac : wish_.memory.devices)
        note_ghost(mac, &ghosts);
    for (const ctl_mac &mac : wish_.memory.applied.devices)
        note_ghost(mac, &ghosts);
    for (const household_device_t &device : wish_.household.devices)
        note_ghost(ctl_mac_of(device.mac), &ghosts);
    if (ghosts.empty())
        return;
    begin_quietly();
    send(UTM_APP_CONFIG_CREATE_PROFILE, plan_.scratch);
    for (const ctl_mac &mac : ghosts)
        send_device(UTM_APP_CONFIG_ADD_DEVICE, plan_.scratch, mac);
    send(UTM_APP_CONFIG_DELETE_PROFILE, plan_.scratch);
}

void ctl_planner::add_devices() {
    for (const ctl_person_plan &person : people_)
        for (const household_device_t &device :
             household_records(wish_.household.devices, person.wanted->devices)) {
            const ctl_mac mac = ctl_mac_of(device.mac);
            const bool is_there =
                person.now != nullptr && ctl_state_has_device(wish_.state, *person.now, mac);
            if (is_there && !is_joined_anew(person) && !is_strangers_in_memory(mac, person.number))
                continue;
            if (is_there)
                begin_quietly();
            else
                begin(ctl_device_line(wish_.household, person.number, device), person.number);
            send_device(UTM_APP_CONFIG_ADD_DEVICE, person.number, mac);
        }
}
