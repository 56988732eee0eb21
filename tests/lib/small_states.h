#pragma once
/// The smallest states that unit tests begin with, and the lines that the trace (world.h) has for
/// what is done to them.

#include "store/store.h"

#include <cstdint>
#include <string>
#include <vector>

namespace world {

using mac_t = std::vector<uint8_t>;
/// Two addresses, defined here so that a test's own constants may be made of them.
inline const mac_t tablet = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
inline const mac_t phone = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x0F};
inline const std::vector<mac_t> both = {tablet, phone};

/// Creates a profile with devices, without a line in the trace.
config_user_profile_t *make_profile(int32_t id, const std::vector<mac_t> &devices = {});

/// Gives a profile usage records, the first one given being the first in the list.
void make_usage(config_user_profile_t *profile, const std::vector<config_app_minutes_t> &apps);

/// Creates a policy whose rules are added in the order given, bound when a profile is given;
/// without a line in the trace.
config_app_policy_t *make_policy(int32_t id, const std::vector<config_policy_rule_t> &rules,
                                 config_user_profile_t *profile = nullptr);

/// @return the profile's usage record of an application, or null
config_app_usage_t *usage_of(config_user_profile_t *profile, int32_t app_id);

/// The trace's lines for one command on each of the devices, in order.
std::string block_lines(const std::vector<mac_t> &macs, int32_t app_id);
std::string unblock_lines(const std::vector<mac_t> &macs, int32_t app_id);
std::string reset_lines(const std::vector<mac_t> &macs);

/// The trace's lines for a profile that is told to be cut off, or to be free again.
std::string block_event(int32_t profile_id);
std::string unblock_event(int32_t profile_id);

/// Frees every record of the store, without a line in the trace.
void empty_store();

/// Sets the feature switch without its side effects.
void set_active(bool active);

} // namespace world
