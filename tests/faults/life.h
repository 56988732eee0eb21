#pragma once
/// One scripted life of the daemon, in this process: its start, every command, ticks, midnight, a
/// month's end, an export, an import, its stop. One of its calls may fail.

#include "tests/faults/calls.h"

#include <array>
#include <string>

namespace faults {

/// How a life came out.
struct life_t {
    std::array<int, calls> counted = {};
    std::string wrong = {};           ///< what does not hold, in words; empty when all is well
    bool is_ended_by_json = false;    ///< json-c crashed
    bool is_ended_on_purpose = false; ///< the daemon aborted as it is meant to, see below
};

/// Lives in a process of its own.
///
/// After every step the store must hold its invariants, in the end the daemon must answer, first
/// with the fault and then without, and after the stop there must be no record and no descriptor
/// left. A reply of the statistics service that does not fit into memory ends the daemon on
/// purpose, with a line in the log.
life_t live(const fault &what);

} // namespace faults
