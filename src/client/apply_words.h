#pragma once
/// What `apply` says of its plan: one line about one thing, "Mia: limit 2h every day".

#include "client/apply_plan.h"
#include "client/text.h"
#include "format/household.h"

#include <cstdint>
#include <span>

__attribute__((format(printf, 1, 2))) ctl_line ctl_line_of(const char *format, ...);

/// A person's name, or "person 7".
struct ctl_called {
    char text[household_name_size];
};

[[nodiscard]] ctl_called ctl_person_called(const household_t &household, int32_t number);

/// A device that joins.
[[nodiscard]] ctl_line ctl_device_line(const household_t &household, int32_t person,
                                       const household_device_t &device);

/// @param before  weekday limits that there were
/// @param today  minutes, if today's own limit was another than it has to be; else 0
/// @return the days that change, or an empty line
[[nodiscard]] ctl_line ctl_limits_line(const household_t &household,
                                       const household_person_t &person, const int32_t *before,
                                       int32_t today);

/// @return what changes, or an empty line
[[nodiscard]] ctl_line ctl_enforcement_line(const household_t &household, int32_t person,
                                            bool was_enabled, bool was_blocked, bool is_enabled,
                                            bool is_blocked);

/// @return the rules that change, or an empty line
[[nodiscard]] ctl_line ctl_rules_line(const household_t &household, int32_t person,
                                      std::span<const config_policy_rule_t> before,
                                      std::span<const config_policy_rule_t> wanted);

/// @return the application's rule, or null
[[nodiscard]] const config_policy_rule_t *ctl_find_rule(std::span<const config_policy_rule_t> rules,
                                                        int32_t app_id);
