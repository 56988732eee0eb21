#include "client/apply_plan.h"

#include "client/apply_words.h"
#include "core/saturate.h"

#include <algorithm>
#include <climits>

namespace {

/// What the daemon takes at once.
constexpr int32_t bonus_part_max = 360;
/// More than a whole day makes no difference.
constexpr int32_t bonus_max = minutes_per_day;

/// A person of the household, and how things stand at this point of the plan.
struct person_plan {
    const household_person_t *wanted;
    const ctl_daemon_person *now; ///< null: the daemon does not know them
    int32_t number;
    int32_t weekday_limits[days_per_week];
    int32_t limit;
    int32_t extend;
    int32_t used;
    bool enabled;
    bool blocked;
    bool is_released; ///< the router is told that they are free, whatever it believes
    bool is_cleared;  ///< the policy has lost its rules
    int32_t policy;   ///< 0 for none

    int32_t budget() const { return saturating_sum(limit, extend); }
};

class planner {
public:
    planner(const ctl_plan_wish &wish, ctl_plan *plan) : wish_(wish), plan_(*plan) {}

    bool make();

private:
    // Each of these is a part of the order.
    void meet_people();
    void meet_lost(int32_t number);
    void warn_of_strangers();
    void remove_devices();
    void prune();
    void create_people();
    void release_ghosts();
    void add_devices();
    void clear_policies();
    void release_people();
    void set_limits(person_plan *person);
    void bind_policies();
    void settle(person_plan *person);
    void restore();
    void set_rules(const person_plan &person);

    // What they are made of.
    void begin(const ctl_line &line);
    void begin(const ctl_line &line, int32_t person);
    void begin_quietly() { begin(ctl_line{}); }
    ctl_step *send(const utm_app_config_cmd &request);
    ctl_step *send(uint8_t type, int32_t arg0, int32_t arg1 = 0, int32_t arg2 = 0, int32_t arg3 = 0,
                   int32_t arg4 = 0);
    void send_device(uint8_t type, int32_t person, const ctl_mac &mac);
    void send_file(ctl_step_file file);
    void send_weekday(person_plan *person, int32_t day, int32_t minutes);
    void send_rules(const person_plan &person, const config_policy_rule_t *rules, int32_t count);
    void set_todays_limit(person_plan *person, int32_t minutes);
    void enable(person_plan *person, bool enabled);
    void give_bonus(const ctl_daemon_person &from);
    void release(person_plan *person);
    void release_by_file(plain_vector<person_plan *> *people);
    void remove_devices_of(const ctl_daemon_person &person);
    void note_ghost(const ctl_mac &mac, plain_vector<ctl_mac> *ghosts);

    // What they ask.
    person_plan *of(int32_t number);
    const household_person_t *owner_of(const ctl_mac &mac) const;
    bool is_strangers_in_memory(const ctl_mac &mac, int32_t person) const;
    bool has_to_leave(const ctl_daemon_person &person, const ctl_mac &mac) const;
    bool is_joined_anew(const person_plan &person) const;
    bool is_pruned(const ctl_daemon_person &person) const;
    bool is_to_be_released(int32_t number, const ctl_daemon_person *now) const;
    bool is_policy_taken(int32_t policy) const;
    int32_t used_of(const person_plan &person, int32_t app_id) const;
    void choose_scratch();

    template <typename T>
    void keep(plain_vector<T> *list, const T &element) {
        fits_ = list->add(element) && fits_;
    }

    const ctl_plan_wish &wish_;
    ctl_plan &plan_;
    plain_vector<person_plan> people_;
    plain_vector<person_plan> lost_; ///< of no household any more, and gone from the daemon
    bool fits_ = true;
};

// ---- What the parts are made of ------------------------------------------------------------

void planner::begin(const ctl_line &line) {
    plan_.is_change |= line.text[0] != '\0';
    keep(&plan_.deeds, {line, 0, false, plan_.steps.size(), 0});
}

void planner::begin(const ctl_line &line, int32_t person) {
    begin(line);
    if (!fits_)
        return;
    ctl_deed &deed = plan_.deeds[plan_.deeds.size() - 1];
    deed.person = person;
    deed.is_personal = true;
}

/// @return the step, until the next one; null when memory ran out
ctl_step *planner::send(const utm_app_config_cmd &request) {
    keep(&plan_.steps, {request, ctl_step_file::none, false});
    if (!fits_)
        return nullptr;
    ++plan_.deeds[plan_.deeds.size() - 1].count;
    return &plan_.steps[plan_.steps.size() - 1];
}

/// Written out once, since a request is large and there are many of them.
ctl_step *planner::send(uint8_t type, int32_t arg0, int32_t arg1, int32_t arg2, int32_t arg3,
                        int32_t arg4) {
    return send(
        {.type = type, .arg0 = arg0, .arg1 = arg1, .arg2 = arg2, .arg3 = arg3, .arg4 = arg4});
}

void planner::send_device(uint8_t type, int32_t person, const ctl_mac &mac) {
    utm_app_config_cmd request = {.type = type, .arg0 = person};
    utm_app_config_put_mac(&request, mac.bytes);
    send(request);
}

void planner::send_file(ctl_step_file file) {
    ctl_step *step = send(UTM_APP_CONFIG_IMPORT_STATISTICS, 0);
    if (step != nullptr)
        step->file = file;
}

void planner::send_weekday(person_plan *person, int32_t day, int32_t minutes) {
    send(UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, person->number, day, 0, minutes);
    person->weekday_limits[day] = minutes;
    if (day == wish_.weekday)
        person->limit = minutes;
}

/// Today's own limit follows its weekday's only when that changes.
void planner::set_todays_limit(person_plan *person, int32_t minutes) {
    if (person->weekday_limits[wish_.weekday] == minutes && person->limit != minutes)
        send_weekday(person, wish_.weekday,
                     minutes == household_no_limit ? minutes - 1 : minutes + 1);
    if (person->weekday_limits[wish_.weekday] != minutes)
        send_weekday(person, wish_.weekday, minutes);
}

void planner::enable(person_plan *person, bool enabled) {
    send(UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, person->number, 0, enabled);
    person->enabled = enabled;
    person->blocked = enabled && (person->blocked || person->used >= person->budget());
}

void planner::send_rules(const person_plan &person, const config_policy_rule_t *rules,
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

person_plan *planner::of(int32_t number) {
    for (person_plan &person : people_)
        if (person.number == number)
            return &person;
    return nullptr;
}

/// @return to whom the household gives the device, or null
const household_person_t *planner::owner_of(const ctl_mac &mac) const {
    for (const household_person_t &person : wish_.household.people)
        for (const household_device_t &device :
             household_records(wish_.household.devices, person.devices))
            if (ctl_mac_of(device.mac) == mac)
                return &person;
    return nullptr;
}

/// @return whether the device was somebody else's when it was applied last: whoever moved it may
///         have left blocks on it
bool planner::is_strangers_in_memory(const ctl_mac &mac, int32_t person) const {
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
bool planner::is_joined_anew(const person_plan &person) const {
    return wish_.repair && person.now != nullptr && person.now->policy == 0;
}

bool planner::is_pruned(const ctl_daemon_person &person) const {
    if (household_person_of(wish_.household, person.number) != nullptr)
        return false;
    return wish_.prune || (wish_.memory.has_scratch && wish_.memory.scratch == person.number);
}

bool planner::has_to_leave(const ctl_daemon_person &person, const ctl_mac &mac) const {
    const household_person_t *owner = owner_of(mac);
    if (household_person_of(wish_.household, person.number) == nullptr)
        return owner != nullptr;
    return owner == nullptr || owner->number != person.number;
}

/// The daemon has lost who was there, as it does when it is killed: the router may still believe
/// what it was told.
bool planner::is_to_be_released(int32_t number, const ctl_daemon_person *now) const {
    if (wish_.repair || ctl_contains(wish_.memory.release, number))
        return true;
    const ctl_daemon_person *applied = ctl_state_person(wish_.memory.applied, number);
    return now == nullptr && applied != nullptr && applied->enabled;
}

bool planner::is_policy_taken(int32_t policy) const {
    const auto has_it = [policy](const auto &person) { return person.policy == policy; };
    return std::any_of(wish_.state.people.begin(), wish_.state.people.end(), has_it) ||
           std::any_of(people_.begin(), people_.end(), has_it);
}

/// @return minutes of the application today
int32_t planner::used_of(const person_plan &person, int32_t app_id) const {
    if (person.now != nullptr)
        for (const ctl_app_today &app : household_records(wish_.state.apps, person.now->apps))
            if (app.app_id == app_id)
                return app.minutes;
    return -1;
}

void planner::choose_scratch() {
    plan_.scratch = INT32_MIN;
    while (ctl_state_person(wish_.state, plan_.scratch) != nullptr ||
           household_person_of(wish_.household, plan_.scratch) != nullptr)
        ++plan_.scratch;
}

// ---- The parts, in their order -------------------------------------------------------------

void planner::meet_people() {
    for (const household_person_t &wanted : wish_.household.people) {
        person_plan person = {.wanted = &wanted,
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
void planner::meet_lost(int32_t number) {
    const ctl_daemon_person *now = ctl_state_person(wish_.state, number);
    if (household_person_of(wish_.household, number) != nullptr ||
        (now != nullptr && !is_pruned(*now)) ||
        std::any_of(lost_.begin(), lost_.end(),
                    [number](const person_plan &other) { return other.number == number; }))
        return;
    person_plan person = {};
    person.number = number;
    person.limit = household_no_limit;
    keep(&lost_, person);
    keep(&plan_.release, number);
}

void planner::warn_of_strangers() {
    for (const ctl_daemon_person &person : wish_.state.people)
        if (household_person_of(wish_.household, person.number) == nullptr && !is_pruned(person))
            keep(&plan_.warnings,
                 ctl_line_of("person %d is not of the household and was left as they are; --prune "
                             "deletes them, with thirty days of history",
                             person.number));
}

void planner::remove_devices_of(const ctl_daemon_person &person) {
    person_plan *planned = of(person.number);
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

void planner::remove_devices() {
    for (const ctl_daemon_person &person : wish_.state.people)
        if (!is_pruned(person))
            remove_devices_of(person);
}

void planner::prune() {
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

void planner::create_people() {
    for (const person_plan &person : people_) {
        if (person.now != nullptr)
            continue;
        begin(ctl_line_of("%s: added as person %d",
                          ctl_person_called(wish_.household, person.number).text, person.number),
              person.number);
        send(UTM_APP_CONFIG_CREATE_PROFILE, person.number);
    }
}

void planner::note_ghost(const ctl_mac &mac, plain_vector<ctl_mac> *ghosts) {
    if (!ctl_state_knows_device(wish_.state, mac) && !ctl_contains(*ghosts, mac))
        keep(ghosts, mac);
}

/// What nobody has in the daemon may still have rules in the engine: of a device that was removed
/// while limits were off, or from before the daemon was killed. Whoever is deleted takes the rules
/// of their devices along, so a person is made for that who counts nothing and blocks nothing.
void planner::release_ghosts() {
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

void planner::add_devices() {
    for (const person_plan &person : people_)
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

/// Takes back every application's block on every device, those included whose rule is long gone.
/// Before an import no rule may be bound: it would block without a flag, and no midnight releases.
void planner::clear_policies() {
    for (person_plan &person : people_) {
        if (person.policy == 0 || (!wish_.repair && wish_.usage == nullptr && !person.is_released))
            continue;
        begin_quietly();
        send(UTM_APP_CONFIG_DELETE_POLICY, person.policy);
        person.is_cleared = true;
    }
}

/// Has the daemon announce that somebody is free. It does so only of whom it has cut off: so it
/// has to do that first, where it believes that they are free already.
void planner::release(person_plan *person) {
    if (!person->blocked) {
        if (person->enabled)
            enable(person, false);
        set_todays_limit(person, 1);
    }
    if (!person->enabled)
        enable(person, true);
    enable(person, false);
}

/// The same where nothing has been used yet: only a usage file can say otherwise.
void planner::release_by_file(plain_vector<person_plan *> *people) {
    if (people->empty())
        return;
    for (person_plan *person : *people) {
        if (!person->enabled)
            enable(person, true);
        keep(&plan_.used_up, person->number);
    }
    send_file(ctl_step_file::used_up);
    send_file(ctl_step_file::as_it_was);
    for (person_plan *person : *people)
        enable(person, false);
}

void planner::release_people() {
    plain_vector<person_plan *> by_file;
    begin_quietly();
    for (person_plan &person : lost_) {
        send(UTM_APP_CONFIG_CREATE_PROFILE, person.number);
        keep(&by_file, &person);
    }
    for (person_plan &person : people_) {
        if (!person.is_released)
            continue;
        if (person.blocked || person.used >= saturating_sum(1, person.extend))
            release(&person);
        else
            keep(&by_file, &person);
    }
    release_by_file(&by_file);
    for (const person_plan &person : lost_)
        send(UTM_APP_CONFIG_DELETE_PROFILE, person.number);
}

void planner::set_limits(person_plan *person) {
    const int32_t *wanted = person->wanted->weekday_limits;
    const ctl_daemon_person *now = person->now;
    int32_t before[days_per_week];
    for (int32_t day = 0; day < days_per_week; ++day)
        before[day] = now != nullptr ? now->weekday_limits[day] : household_no_limit;
    const int32_t today = now != nullptr ? now->limit : household_no_limit;
    // What a release has changed is put back without a word.
    const ctl_line line =
        ctl_limits_line(wish_.household, *person->wanted, before, today != wanted[wish_.weekday]);
    begin(line, person->number);
    for (int32_t day = 0; day < days_per_week; ++day)
        if (person->weekday_limits[day] != wanted[day])
            send_weekday(person, day, wanted[day]);
    set_todays_limit(person, wanted[wish_.weekday]);
}

/// A policy's number says nothing, so any free one will do. One that exists and is not bound cannot
/// be seen: creating it is refused then, and its rules, which binding would enforce, go first.
void planner::bind_policies() {
    int32_t next_free = 1;
    for (person_plan &person : people_) {
        if (person.policy != 0 || person.wanted->rules.count == 0)
            continue;
        int32_t policy = person.number;
        if (policy < 1 || is_policy_taken(policy)) {
            while (is_policy_taken(next_free))
                ++next_free;
            policy = next_free;
        }
        person.policy = policy;
        begin_quietly();
        ctl_step *create = send(UTM_APP_CONFIG_CREATE_POLICY, policy);
        if (create != nullptr)
            create->may_be_refused = true;
        send(UTM_APP_CONFIG_DELETE_POLICY, policy);
        send(UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, person.number, policy);
    }
}

/// Switches enforcement as it should be, and brings the daemon's flag, the budget and what the
/// router was told in step: whoever is cut off is released and cut off again, since a device that
/// joined them meanwhile is online, and since the flag outlives limits that are off.
void planner::settle(person_plan *person) {
    const bool wanted = ctl_is_enforced(*person->wanted);
    const bool is_used_up = person->used >= person->budget();
    const ctl_daemon_person *now = person->now;
    const bool was_enabled = now != nullptr && now->enabled;
    const bool was_blocked = now != nullptr && now->blocked;
    begin(ctl_enforcement_line(wish_.household, person->number, was_enabled, was_blocked, wanted,
                               wanted && is_used_up),
          person->number);
    if (person->enabled ? person->blocked || is_used_up : person->blocked) {
        if (!person->enabled)
            enable(person, true);
        enable(person, false);
    }
    if (person->enabled != wanted)
        enable(person, wanted);
}

/// A bonus that is higher already was given since, so nothing is added twice.
void planner::give_bonus(const ctl_daemon_person &from) {
    const person_plan *person = of(from.number);
    const int32_t bonus = std::min(from.extend, bonus_max);
    if (person == nullptr || bonus <= person->extend)
        return;
    begin(ctl_line_of("%s: bonus %s", ctl_person_called(wish_.household, from.number).text,
                      ctl_time_of(bonus).text),
          from.number);
    for (int32_t left = bonus - person->extend; left > 0; left -= bonus_part_max)
        send(UTM_APP_CONFIG_ADD_EXTEND, from.number, 0, 0, 0, std::min(left, bonus_part_max));
}

/// The bonus comes first: a usage file does not bring it back, and whoever has used part of it
/// would be cut off.
void planner::restore() {
    if (wish_.usage == nullptr)
        return;
    for (const ctl_daemon_person &person : wish_.usage->people)
        if (wish_.usage->is_of_today)
            give_bonus(person);
    begin(ctl_line_of("usage restored from %s", wish_.usage_path));
    send_file(ctl_step_file::usage);
    for (const ctl_daemon_person &person : wish_.usage->people)
        if (household_person_of(wish_.household, person.number) == nullptr && wish_.prune)
            send(UTM_APP_CONFIG_DELETE_PROFILE, person.number);
        else if (household_person_of(wish_.household, person.number) == nullptr &&
                 ctl_state_person(wish_.state, person.number) == nullptr)
            keep(&plan_.warnings, ctl_line_of("person %d comes from the usage file and is not of "
                                              "the household; --prune deletes them",
                                              person.number));
}

/// Sends every rule, for those that block outright are forgotten when limits are switched off and
/// on. A limit is set by way of another rule, because a change is carried out whatever the flags
/// say: from "removed" where there is time left, from "blocked" where there is none.
void planner::set_rules(const person_plan &person) {
    constexpr int32_t room = UTM_APP_CONFIG_APP_LIST_MAX;
    const auto wanted = household_records(wish_.household.rules, person.wanted->rules);
    std::span<const config_policy_rule_t> there;
    if (person.now != nullptr)
        there = household_records(wish_.state.rules, person.now->rules);
    begin(ctl_rules_line(wish_.household, person.number, there, wanted), person.number);
    if (person.is_cleared)
        there = {};
    config_policy_rule_t batch[room];
    int32_t count = 0;
    // What belongs together goes in one request, which is carried out whole.
    const auto add = [&](std::span<const config_policy_rule_t> together) {
        if (count + static_cast<int32_t>(together.size()) > room) {
            send_rules(person, batch, count);
            count = 0;
        }
        for (const config_policy_rule_t &rule : together)
            batch[count++] = rule;
    };
    for (const config_policy_rule_t &rule : there)
        if (ctl_find_rule(wanted, rule.app_id) == nullptr) {
            const config_policy_rule_t gone[] = {{rule.app_id, POLICY_ACTION_REMOVE, 0}};
            add(gone);
        }
    for (const config_policy_rule_t &rule : wanted) {
        const bool is_used_up = used_of(person, rule.app_id) >= rule.daily_limit;
        const config_policy_rule_t by_way_of[] = {
            {rule.app_id, is_used_up ? POLICY_ACTION_BLOCK : POLICY_ACTION_REMOVE,
             rule.daily_limit},
            rule};
        const bool is_direct =
            rule.action != POLICY_ACTION_LIMIT || ctl_find_rule(there, rule.app_id) == nullptr;
        add(is_direct ? std::span(by_way_of).subspan(1) : std::span(by_way_of));
    }
    if (count > 0)
        send_rules(person, batch, count);
}

bool planner::make() {
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
    for (person_plan &person : people_)
        set_limits(&person);
    bind_policies();
    for (person_plan &person : people_)
        settle(&person);
    restore();
    for (const person_plan &person : people_)
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

} // namespace

bool ctl_make_plan(const ctl_plan_wish &wish, ctl_plan *plan) {
    return planner(wish, plan).make();
}
