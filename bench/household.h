#pragma once
/// The households that everything is measured with, and the fakes of a tick's programs.

#include <cstdint>
#include <string>

/// How large a household is.
struct household_size_t {
    const char *name;
    int32_t profiles;
    int32_t apps;        ///< of each profile
    int32_t router_apps; ///< of the router as a whole
    double budget;       ///< how many times the least the daemon may take
};

inline constexpr household_size_t household_sizes[] = {
    {"8x100", 8, 100, 500, 1.15},
    {"32x500", 32, 500, 2000, 1.25},
};

/// Fills the daemon's store, in place of what it held: profiles 1, 2, ... with three devices, a
/// policy of ten rules that nothing reaches, and applications with thirty days of history.
void household_build(const household_size_t &size);

/// Frees the daemon's store.
void household_clear();

/// @return what the statistics client prints for one profile, in its layout, or for the router
std::string household_profile_reply(const household_size_t &size);
std::string household_router_reply(const household_size_t &size);

/// Lets every query from now on be answered with these texts, which must stay where they are.
void household_answer_queries(const std::string *profile_reply, const std::string *router_reply);
