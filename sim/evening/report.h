#pragma once
/// What the daemon says about usage, laid out for people.

#include "sim/evening/stage.h"

/// One person's standing, as the daemon answers it.
struct person_usage {
    int32_t today = 0; ///< minutes, as are the others
    int32_t week = 0;  ///< finished days of this week
    int32_t month = 0; ///< finished weeks of this month
    int32_t limit = 0;
    int32_t bonus = 0;
    bool is_limited = false;
};

person_usage usage_of_person(stage *set, const scenario_person &person);

/// @param period  0 today, 1 yesterday and so on
/// @return each application's minutes on that day, by its id
std::map<int32_t, int32_t> app_usage_of_person(stage *set, const scenario_person &person,
                                               int32_t period);

/// Shows how far everybody is, a line per person.
void show_progress(stage *set);

/// @param period  the day whose applications are listed, as above
/// @return a table of everybody's counters and applications
std::string usage_table(stage *set, int32_t period);

/// Shows how often which kind of command or event reached the router.
void show_router_counts(const stage &set);
