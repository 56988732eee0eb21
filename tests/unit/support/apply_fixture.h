#pragma once
/// Households, and what a daemon has, in a few words.

#include "client/apply_plan.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace apply {

struct person_t {
    int32_t number = 1;
    std::string name = "Mia";
    int32_t limit = 1440; ///< of every day
    bool enforced = true;
    std::vector<uint8_t> devices = {}; ///< last bytes of their addresses
    std::vector<config_policy_rule_t> rules = {};
};

void fill(household_t *household, const std::vector<person_t> &people);

/// What the daemon has of somebody. The limit is today's and every day's.
struct known_t {
    int32_t number = 1;
    int32_t limit = 1440;
    int32_t used = 0;
    int32_t extend = 0;
    bool enabled = true;
    bool blocked = false;
    int32_t policy = 0;
    std::vector<uint8_t> devices = {};
    std::vector<config_policy_rule_t> rules = {};
    std::vector<ctl_app_today> apps = {};
};

void fill(ctl_daemon_state *state, const std::vector<known_t> &people);

ctl_mac mac(uint8_t last);

/// A plan as text: a line for each request, "add 1 02:00:00:00:00:0A", and before the requests that
/// belong together what people see of them, if anything: "# Mia: device 02:00:00:00:00:0A joins".
std::string text_of(const ctl_plan &plan);

/// @return one request
std::string text_of(const utm_app_config_cmd &request);

} // namespace apply
