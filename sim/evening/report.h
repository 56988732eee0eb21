#pragma once
/// What the daemon says about usage, laid out for people.

#include "sim/evening/stage.h"

/// One person's standing, as utm_appctl tells it.
struct person_usage {
    int32_t today = 0; ///< minutes, as are the others
    int32_t week = 0;  ///< with today
    int32_t month = 0; ///< with this week
    int32_t limit = 0;
    int32_t bonus = 0;
    bool is_limited = false;
};

person_usage usage_of_person(stage *set, const scenario_person &person);

/// @return each application's minutes on that day, by its id
std::map<int32_t, int32_t> app_usage_of_person(stage *set, const scenario_person &person,
                                               int32_t days_ago);

/// Shows how far everybody is, a line per person.
void show_progress(stage *set);

/// @param days_ago  the day whose applications are listed
/// @return a table of everybody's counters and applications
std::string usage_table(stage *set, int32_t days_ago);

/// Shows how often which kind of command or event reached the router.
void show_router_counts(stage *set);

/// @return where the page that utm_appctl makes of the evening is put: in the build's directory,
/// which is still in sight when the evening's own /tmp is gone
std::string report_path();
