#include "client/apply_planner.h"

#include <algorithm>

// ---- What the parts are made of ------------------------------------------------------------

void ctl_planner::begin(const ctl_line &line) {
    plan_.is_change |= line.text[0] != '\0';
    keep(&plan_.deeds, {line, 0, false, plan_.steps.size(), 0});
}

void ctl_planner::begin(const ctl_line &line, int32_t person) {
    begin(line);
    if (!fits_)
        return;
    ctl_deed &deed = plan_.deeds[plan_.deeds.size() - 1];
    deed.person = person;
    deed.is_personal = true;
}

/// @return the step, until the next one; null when memory ran out
ctl_step *ctl_planner::send(const utm_app_config_cmd &request) {
    keep(&plan_.steps, {request, ctl_step_file::none, false});
    if (!fits_)
        return nullptr;
    ++plan_.deeds[plan_.deeds.size() - 1].count;
    return &plan_.steps[plan_.steps.size() - 1];
}

/// Written out once, since a request is large and there are many of them.
ctl_step *ctl_planner::send(uint8_t type, int32_t arg0, int32_t arg1, int32_t arg2, int32_t arg3,
                            int32_t arg4) {
    return send(
        {.type = type, .arg0 = arg0, .arg1 = arg1, .arg2 = arg2, .arg3 = arg3, .arg4 = arg4});
}

void ctl_planner::send_device(uint8_t type, int32_t person, const ctl_mac &mac) {
    utm_app_config_cmd request = {.type = type, .arg0 = person};
    utm_app_config_put_mac(&request, mac.bytes);
    send(request);
}

void ctl_planner::send_file(ctl_step_file file) {
    ctl_step *step = send(UTM_APP_CONFIG_IMPORT_STATISTICS, 0);
    if (step != nullptr)
        step->file = file;
}

void ctl_planner::send_weekday(ctl_person_plan *person, int32_t day, int32_t minutes) {
    send(UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, person->number, day, 0, minutes);
    person->weekday_limits[day] = minutes;
    if (day == wish_.weekday)
        person->limit = minutes;
}

/// Today's own limit follows its weekday's only when that changes.
void ctl_planner::set_todays_limit(ctl_person_plan *person, int32_t minutes) {
    if (person->weekday_limits[wish_.weekday] == minutes && person->limit != minutes)
        send_weekday(person, wish_.weekday,
                     minutes == household_no_limit ? minutes - 1 : minutes + 1);
    if (person->weekday_limits[wish_.weekday] != minutes)
        send_weekday(person, wish_.weekday, minutes);
}

void ctl_planner::enable(ctl_person_plan *person, bool enabled) {
    send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person->number, 0, enabled);
    person->enabled = enabled;
    person->blocked = enabled && (person->blocked || person->used >= person->budget());
}

void ctl_planner::send_rules(const ctl_person_plan &person, const config_policy_rule_t *rules,
                             int32_t count) {
    utm_app_config_app_entry entries[UTM_APP_CONFIG_APP_LIST_MAX];
    for (int32_t i = 0; i < count; ++i)
        entries[i] = {static_cast<uint32_t>(rules[i].app_id),
                      static_cast<uint16_t>(rules[i].action),
                      static_cast<uint16_t>(rules[i].daily_limit)};
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY, .arg0 = person.policy, .arg1 = count};
    utm_app_config_put_rules(&request, entries, count);
    send(request);
}

// ---- What they ask -------------------------------------------------------------------------

ctl_person_plan *ctl_planner::of(int32_t number) {
    for (ctl_person_plan &person : people_)
        if (person.number == number)
            return &person;
    return nullptr;
}

/// @return to whom the household gives the device, or null
const household_person_t *ctl_planner::owner_of(const ctl_mac &mac) const {
    for (const household_person_t &person : wish_.household.people)
        for (const household_device_t &device :
             household_records(wish_.household.devices, person.devices))
            if (ctl_mac_of(device.mac) == mac)
                return &person;
    return nullptr;
}

/// @return whether the device was somebody else's when it was applied last: whoever moved it may
///         have left blocks on it
bool ctl_planner::is_strangers_in_memory(const ctl_mac &mac, int32_t person) const {
    const ctl_daemon_state &applied = wish_.memory.applied;
    bool is_others = false;
    for (const ctl_daemon_person &other : applied.people) {
        if (!ctl_state_has_device(applied, other, mac))
            continue;
        if (other.number == person)
            return false;
        is_others = true;
    }
    return is_others;
}

/// @return whether all devices leave and join again: nothing else takes their blocks back where
///         there is no policy to clear
bool ctl_planner::is_joined_anew(const ctl_person_plan &person) const {
    return wish_.repair && person.now != nullptr && person.now->policy == 0;
}

bool ctl_planner::is_pruned(const ctl_daemon_person &person) const {
    if (household_person_of(wish_.household, person.number) != nullptr)
        return false;
    return wish_.prune || (wish_.memory.has_scratch && wish_.memory.scratch == person.number);
}

bool ctl_planner::has_to_leave(const ctl_daemon_person &person, const ctl_mac &mac) const {
    const household_person_t *owner = owner_of(mac);
    if (household_person_of(wish_.household, person.number) == nullptr)
        return owner != nullptr;
    return owner == nullptr || owner->number != person.number;
}

/// The daemon has lost who was there, as it does when it is killed: the router may still believe
/// what it was told.
bool ctl_planner::is_to_be_released(int32_t number, const ctl_daemon_person *now) const {
    if (wish_.repair || ctl_contains(wish_.memory.release, number))
        return true;
    const ctl_daemon_person *applied = ctl_state_person(wish_.memory.applied, number);
    return now == nullptr && applied != nullptr && applied->enabled;
}

bool ctl_planner::is_policy_taken(int32_t policy) const {
    const auto has_it = [policy](const auto &person) { return person.policy == policy; };
    return std::any_of(wish_.state.people.begin(), wish_.state.people.end(), has_it) ||
           std::any_of(people_.begin(), people_.end(), has_it);
}

/// @return minutes of the application today
int32_t ctl_planner::used_of(const ctl_person_plan &person, int32_t app_id) const {
    if (person.now != nullptr)
        for (const ctl_app_today &app : household_records(wish_.state.apps, person.now->apps))
            if (app.app_id == app_id)
                return app.minutes;
    return -1;
}

void ctl_planner::choose_scratch() {
    plan_.scratch = INT32_MIN;
    while (ctl_state_person(wish_.state, plan_.scratch) != nullptr ||
           household_person_of(wish_.household, plan_.scratch) != nullptr)
        ++plan_.scratch;
}

// ---- The parts, in their order ------------------------------------------------------------

bool ctl_planner::make() {
    choose_scratch();
    meet_people();
    warn_of_strangers();
    remove_devices();
    prune();
    create_people();
    release_ghosts();
    add_devices();
    clear_policies();
    release_people();
    for (ctl_person_plan &person : people_)
        set_limits(&person);
    bind_policies();
    for (ctl_person_plan &person : people_)
        settle(&person);
    restore();
    for (const ctl_person_plan &person : people_)
        set_rules(person);
    if (!wish_.household.limits) {
        if (wish_.was_active)
            begin(ctl_line_of("limits are switched off"));
        else
            begin_quietly();
        send(UTM_APP_CONFIG_SET_ACTIVATE, 0);
    }
    return fits_;
}

bool ctl_make_plan(const ctl_plan_wish &wish, ctl_plan *plan) {
    return ctl_planner(wish, plan).make();
}
