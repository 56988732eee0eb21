#pragma once
/// The household's figures for a monitoring system, as Prometheus' text format has them.

#include "client/standing.h"
#include "core/vector.h"
#include "format/household.h"

#include <cstdio>

/// An application that has a rule.
struct ctl_app_figures {
    household_name_t person;
    household_name_t app;
    ctl_app_standing is;
};

struct ctl_person_figures {
    household_name_t name;
    ctl_standing is;
};

struct ctl_figures {
    bool is_up = false; ///< the daemon has answered; else nothing below means anything
    bool limits_on = false;
    plain_vector<ctl_person_figures> people = {};
    plain_vector<ctl_app_figures> apps = {};
};

/// Writes the figures, in seconds.
void ctl_write_metrics(FILE *out, const ctl_figures &figures);
