#pragma once
/// How a plan comes about: what is known of everybody, and the steps so far. The parts of the plan
/// stand in apply_plan_people.cpp and apply_plan_limits.cpp, their order in apply_plan.cpp.

#include "client/apply_plan.h"
#include "client/apply_words.h"
#include "core/saturate.h"

/// A person of the household, and how things stand at this point of the plan.
struct ctl_person_plan {
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

class ctl_planner {
public:
    ctl_planner(const ctl_plan_wish &wish, ctl_plan *plan) : wish_(wish), plan_(*plan) {}

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
    void set_limits(ctl_person_plan *person);
    void bind_policies();
    void settle(ctl_person_plan *person);
    void restore();
    void set_rules(const ctl_person_plan &person);

    // What they are made of.
    void begin(const ctl_line &line);
    void begin(const ctl_line &line, int32_t person);
    void begin_quietly() { begin(ctl_line{}); }
    ctl_step *send(const utm_app_config_cmd &request);
    ctl_step *send(uint8_t type, int32_t arg0, int32_t arg1 = 0, int32_t arg2 = 0, int32_t arg3 = 0,
                   int32_t arg4 = 0);
    void send_device(uint8_t type, int32_t person, const ctl_mac &mac);
    void send_file(ctl_step_file file);
    void send_weekday(ctl_person_plan *person, int32_t day, int32_t minutes);
    void send_rules(const ctl_person_plan &person, const config_policy_rule_t *rules,
                    int32_t count);
    void set_todays_limit(ctl_person_plan *person, int32_t minutes);
    void enable(ctl_person_plan *person, bool enabled);
    void give_bonus(const ctl_daemon_person &from);
    void release(ctl_person_plan *person);
    void release_by_file(plain_vector<ctl_person_plan *> *people);
    void remove_devices_of(const ctl_daemon_person &person);
    void note_ghost(const ctl_mac &mac, plain_vector<ctl_mac> *ghosts);

    // What they ask.
    ctl_person_plan *of(int32_t number);
    const household_person_t *owner_of(const ctl_mac &mac) const;
    bool is_strangers_in_memory(const ctl_mac &mac, int32_t person) const;
    bool has_to_leave(const ctl_daemon_person &person, const ctl_mac &mac) const;
    bool is_joined_anew(const ctl_person_plan &person) const;
    bool is_pruned(const ctl_daemon_person &person) const;
    bool is_to_be_released(int32_t number, const ctl_daemon_person *now) const;
    bool is_policy_taken(int32_t policy) const;
    int32_t used_of(const ctl_person_plan &person, int32_t app_id) const;
    void choose_scratch();

    template <typename T>
    void keep(plain_vector<T> *list, const T &element) {
        fits_ = list->add(element) && fits_;
    }

    const ctl_plan_wish &wish_;
    ctl_plan &plan_;
    plain_vector<ctl_person_plan> people_;
    plain_vector<ctl_person_plan> lost_; ///< of no household any more, and gone from the daemon
    bool fits_ = true;
};
