#pragma once
/// Reads the router's journal out to people.

#include "sim/router/scenario.h"

#include <string>

/// Kinds of journal lines, named as the closing count shows them.
inline constexpr char ROUTER_QUERY[] = "usage queries";
inline constexpr char ROUTER_REFUSED[] = "refused command lines";

struct router_line {
    std::string kind;
    std::string meaning; ///< empty where the line speaks for itself
};

router_line meaning_of(const scenario &scene, const std::string &line);
