#pragma once
/// What the store takes of the heap.

#include "bench/household.h"

/// Prints the store's heap beside the sum of its records' sizes.
///
/// The heap is what the allocator says is in use (`mallinfo2`, its own head-room per block
/// included) with the household, less what it says without.
/// @return whether the ratio is within its budget
bool memory_print(const household_size_t &size);
