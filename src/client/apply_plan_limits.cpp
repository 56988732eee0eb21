/// The last parts of a plan: what may be used, and that the router believes no more and no less.

#include "client/apply_planner.h"

#include <algorithm>

namespace {

/// What the daemon takes at once.
constexpr int32_t bonus_part_max = 360;
/// More than a whole day makes no difference.
constexpr int32_t bonus_max = minutes_per_day;

} // namespace

/// Takes back every application's block on every device, those included whose rule is long gone.
/// Before an import no rule may be bound: it would block without a flag, and no midnight releases.
void ctl_planner::clear_policies() {
    for (ctl_person_plan &person : people_) {
        if (person.policy == 0 || (!wish_.repair && wish_.usage == nullptr && !person.is_released))
            continue;
        begin_quietly();
        send(UTM_APP_CONFIG_DELETE_POLICY, person.policy);
        person.is_cleared = true;
    }
}

/// Has the daemon announce that somebody is free. It does so only of whom it has cut off: so it
/// has to do that first, where it believes that they are free already.
void ctl_planner::release(ctl_person_plan *person) {
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
void ctl_planner::release_by_file(plain_vector<ctl_person_plan *> *people) {
    if (people->empty())
        return;
    for (ctl_person_plan *person : *people) {
        if (!person->enabled)
            enable(person, true);
        keep(&plan_.used_up, person->number);
    }
    send_file(ctl_step_file::used_up);
    send_file(ctl_step_file::as_it_was);
    for (ctl_person_plan *person : *people)
        enable(person, false);
}

void ctl_planner::release_people() {
    plain_vector<ctl_person_plan *> by_file;
    begin_quietly();
    for (ctl_person_plan &person : lost_) {
        send(UTM_APP_CONFIG_CREATE_PROFILE, person.number);
        keep(&by_file, &person);
    }
    for (ctl_person_plan &person : people_) {
        if (!person.is_released)
            continue;
        if (person.blocked || person.used >= saturating_sum(1, person.extend))
            release(&person);
        else
            keep(&by_file, &person);
    }
    release_by_file(&by_file);
    for (const ctl_person_plan &person : lost_)
        send(UTM_APP_CONFIG_DELETE_PROFILE, person.number);
}

void ctl_planner::set_limits(ctl_person_plan *person) {
    const int32_t *wanted = person->wanted->weekday_limits;
    const ctl_daemon_person *now = person->now;
    int32_t before[days_per_week];
    for (int32_t day = 0; day < days_per_week; ++day)
        before[day] = now != nullptr ? now->weekday_limits[day] : household_no_limit;
    const int32_t today = now != nullptr ? now->limit : household_no_limit;
    // What a release has changed is put back without a word.
    const ctl_line line =
        ctl_limits_line(wish_.household, *person->wanted, before,
                        today != wanted[wish_.weekday] ? wanted[wish_.weekday] : 0);
    begin(line, person->number);
    for (int32_t day = 0; day < days_per_week; ++day)
        if (person->weekday_limits[day] != wanted[day])
            send_weekday(person, day, wanted[day]);
    set_todays_limit(person, wanted[wish_.weekday]);
}

/// A policy's number says nothing, so any free one will do. One that exists and is not bound cannot
/// be seen: creating it is refused then, and its rules, which binding would enforce, go first.
void ctl_planner::bind_policies() {
    int32_t next_free = 1;
    for (ctl_person_plan &person : people_) {
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
void ctl_planner::settle(ctl_person_plan *person) {
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
void ctl_planner::give_bonus(const ctl_daemon_person &from) {
    const ctl_person_plan *person = of(from.number);
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
void ctl_planner::restore() {
    if (wish_.usage == nullptr)
        return;
    for (const ctl_daemon_person &person : wish_.usage->people)
        if (wish_.usage->is_of_today)
            give_bonus(person);
    begin(ctl_line_of("usage restored from %s", wish_.usage_path));
    send_file(ctl_step_file::usage);
    for (const ctl_daemon_person &person : wish_.usage->people)
        if (household_person_of(wish_.household, person.number) == nullptr && wish_.prune) {
            begin(ctl_line_of("person %d: deleted, with what the usage file has of them",
                              person.number),
                  person.number);
            send(UTM_APP_CONFIG_DELETE_PROFILE, person.number);
        } else if (household_person_of(wish_.household, person.number) == nullptr &&
                   ctl_state_person(wish_.state, person.number) == nullptr)
            keep(&plan_.warnings, ctl_line_of("person %d comes from the usage file and is not of "
                                              "the household; --prune deletes them",
                                              person.number));
}

/// Sends every rule, for those that block outright are forgotten when limits are switched off and
/// on. A limit is set by way of another rule, because a change is carried out whatever the flags
/// say: from "removed" where there is time left, from "blocked" where there is none.
void ctl_planner::set_rules(const ctl_person_plan &person) {
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
