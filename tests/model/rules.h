#pragma once
/// The operations, as the model tells them. A result says whether the operation succeeded.

#include "tests/model/change.h"
#include "tests/model/state.h"

namespace model {

// people.cpp
bool create_profile(state_t &state, int32_t id);
bool delete_profile(state_t &state, int32_t id);
/// Every profile goes, as at the daemon's end.
void flush_profiles(state_t &state);
bool add_device(state_t &state, int32_t profile_id, const std::string &mac);
bool delete_device(state_t &state, int32_t profile_id, const std::string &mac);

// policies.cpp
bool create_policy(state_t &state, int32_t id);
bool add_rules(state_t &state, int32_t policy_id, const std::vector<rule_t> &rules);
bool delete_rules(state_t &state, int32_t policy_id);
bool bind_policy(state_t &state, int32_t profile_id, int32_t policy_id);

// limits.cpp
bool enable_limit(state_t &state, int32_t id, int32_t enable);
bool set_limit(state_t &state, int32_t id, int32_t minutes);
bool set_weekday_limit(state_t &state, int32_t id, int32_t weekday, int32_t minutes);
bool add_extend(state_t &state, int32_t id, int32_t minutes);
bool reset_extend(state_t &state, int32_t id);
bool switch_feature(state_t &state, int32_t value);
/// A profile's limit and bonus.
int32_t budget_of(const profile_t &profile);

// tick.cpp
/// One tick: every profile's collection, then the router's, then the periodic export.
void tick(state_t &state);
/// A profile's minutes, and its block once they have used up the budget.
void use_internet(state_t &state, profile_t &profile, int32_t minutes);

// usage_file.cpp
/// @param force  although the feature is off
bool export_to(state_t &state, const std::string &path, bool force = false);
bool import_from(state_t &state, const std::string &path);
/// Exports to the daemon's own file when it is time to.
void check_export(state_t &state);

// document.cpp
/// @return the text of a usage file
std::string text_of(const document_t &document);

// outside.cpp
/// The daemon ends and starts again.
void restart(state_t &state);
/// Somebody does something to the files.
void change(state_t &state, const change_t &change);

// commands.cpp
/// Serves a request.
/// @return the replies, one line each, in the form of `world::exchange`
std::string serve(state_t &state, const std::string &request);

} // namespace model
