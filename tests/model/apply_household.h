#pragma once
/// Households for tests of `apply`: how things should be, and the daemon that was set up so from
/// the start.

#include "format/household.h"
#include "tests/model/apply_engine.h"

#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace model {

inline constexpr int32_t rule_blocks = 0; ///< in place of a rule's minutes

struct wanted_person_t {
    std::set<std::string> devices;
    std::array<int32_t, 7> weekdays = {1440, 1440, 1440, 1440, 1440, 1440, 1440};
    bool enforced = true;
    std::map<int32_t, int32_t> rules; ///< minutes by application
};

struct wanted_t {
    bool limits = true;
    std::map<int32_t, wanted_person_t> people;
};

/// @return the household as its file has it
std::string json_of(const wanted_t &household);

/// Fills a household as its reader would.
/// @param filled  empty before
void fill(const wanted_t &household, household_t *filled);

wanted_t random_household(std::mt19937 *random);
/// @return the household with a change or a few
wanted_t changed_household(const wanted_t &household, std::mt19937 *random);

/// What a usage file carries, and what it does not: the bonus.
struct restored_t {
    std::string usage; ///< a usage file's text
    std::map<int32_t, int32_t> extends;
};

/// @return what the daemon has counted
restored_t counted();

/// Everything of a household that counts: people, devices, limits, rules, figures, flags and
/// blocks, in lines whose order means nothing.
struct view_t {
    std::set<std::string> lines;
    bool operator==(const view_t &) const = default;
};

/// @param only  people; others and what belongs to them alone are left out. Null for all
/// @param devices  those whose blocks count, when only some people do
/// @param flags  whether the daemon's flags count: while limits are off they block nothing
view_t view_of(const engine_t &engine, const std::set<int32_t> *only,
               const std::set<std::string> &devices, bool flags);

/// Empties the store and sets a daemon up for a household, one request after the other in the one
/// order that does no harm (docs/integration.md).
/// @param hear  called after each request
void set_up(const wanted_t &household, const restored_t &restored, void (*hear)(void *),
            void *context);

} // namespace model
