#pragma once
/// The daemon that the walks are made on: its own code, in this process, between the world's fakes.

#include "tests/model/operations.h"

namespace model {

/// Sets the world for an operation and carries it out.
/// @return the replies, in the form of `world::exchange`
std::string carry_out(const operation_t &operation);

/// What the daemon's end and its next start do to its memory.
void restart_daemon(time_t now);

void set_last_export(time_t instant);

/// Only one start can fail in the daemon's world, so only the first failure of an operation counts.
void keep_one_failure(std::vector<answer_t> *answers);

/// Carries an operation out in the model, as `carry_out` does in the daemon.
/// @return the same
std::string predict_replies(state_t &state, const operation_t &operation);

/// @return the state that both sides start from
state_t state_at_start();

} // namespace model
