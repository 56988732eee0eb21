#pragma once
/// Export and import, against json-c writing and reading the same document.

#include "bench/household.h"

void usage_file_register(const household_size_t &size);
