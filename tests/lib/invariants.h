#pragma once
/// What holds of the store between any two operations, whatever clients, files and the statistics
/// service have said: lists are whole, counters count them, ids are unique, records that point at
/// each other do so both ways.
///
/// Any test that drives the store may ask, also with memory running out.

#include "store/store.h"

#include <string>

/// Whether an allocation may have failed since the store was empty. Then a profile may lack
/// weekdays, and its device list string may be missing or an older one.
enum class memory_t { enough, short_at_times };

/// @return what does not hold, in words; empty when everything holds
[[nodiscard]] std::string check_store_invariants(memory_t memory = memory_t::enough)
    UTM_EXCLUDES(utm_app_config_mutex);
