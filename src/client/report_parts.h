#pragma once
/// The sections of the report.

#include "client/names.h"
#include "client/usage_document.h"

#include <cstdio>

/// What every section needs.
struct ctl_report_page {
    FILE *page;
    const ctl_usage_document &document;
    const ctl_app_names &names;
};

/// Writes a list of applications as a table, the first ones each in a row and the rest added up.
/// @param rules  the rules of the profile; none for the router
void ctl_put_apps(const ctl_report_page &report, std::span<const ctl_app_use> apps,
                  std::span<const ctl_app_rule> rules);

/// Writes a profile's section.
void ctl_put_profile(const ctl_report_page &report, const ctl_profile_use &profile);
