#pragma once
/// What the daemon itself has in memory around an import and an export.

#include "bench/household.h"

/// Starts the daemon, has it import a household and export it, and prints what is resident then,
/// and by how much an export exceeds that while it runs, each beside its limit.
/// @return whether both are within their limits
bool resident_print(const household_size_t &size);
