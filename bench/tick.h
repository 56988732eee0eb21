#pragma once
/// A tick without its programs, against json-c parsing the same replies.

#include "bench/household.h"

void tick_register(const household_size_t &size);
