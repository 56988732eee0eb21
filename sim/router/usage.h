#pragma once
/// Counting the minutes of use in a scenario, as the router's statistics service would.

#include "sim/router/scenario.h"

#include <cstdint>
#include <string>
#include <vector>

struct usage_query {
    scenario_span span = {};
    bool router_wide = false;           ///< all devices, `macs` does not matter
    std::vector<std::string> macs = {}; ///< upper case with colons
};

struct usage_element {
    const char *type; ///< "APP" or "INTERNET"
    int32_t app_id;   ///< 0 for "INTERNET"
    int64_t minutes;  ///< 1 or more
};

/// Counts the minute marks within a span: adjoining spans have as many together as the span that
/// covers both, so a minute is never lost between two queries, nor counted by both.
int64_t whole_minutes(const scenario_span &span);

/// Answers a query. An application's minutes are added up over the devices; the internet minutes
/// are those in which any of the devices was online.
///
/// What is blocked at this moment is not used, throughout the span.
std::vector<usage_element> usage_of(const scenario &scene, const usage_query &query);
