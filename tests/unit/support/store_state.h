#pragma once
/// The store as text, so that a test compares whole records at once, and the lines that a device
/// gives rise to.

#include "store/records.h"

#include <cstdint>
#include <string>
#include <vector>

/// Describes a profile with everything that it owns:
///
///     profile 1: enable 0, limit 1440+0, used 0/0/0, blocked 0, since 1772625600, policy 4
///      week 0=1440 1=1440 2=1440 3=1440 4=1440 5=1440 6=1440
///      2 devices "001122334455 AABBCCDDEE0F ": 00:11:22:33:44:55 AA:BB:CC:DD:EE:0F
///      1 apps: 12 used 5/0/0 blocked 1 ruled;
///
/// An application is "ruled" while it and a rule of the profile's policy point at each other.
/// Whatever points elsewhere, or is linked one way only, reads "ASTRAY".
/// @return "no profile 1\n" without one
std::string profile_text(int32_t profile_id);

/// Describes a policy with its rules:
///
///     policy 4: profile 1, 2 apps: 13 action 1 limit 60; 12 action 2 limit 0 used;
///
/// A rule is "used" while it and a usage record of the bound profile point at each other.
/// @return "no policy 4\n" without one
std::string policy_text(int32_t policy_id);

/// @return every profile, then every policy, each in list order
std::string store_text();

/// @return the profile's usage record of an application, or null
config_app_usage_t *usage_of(config_user_profile_t *profile, int32_t app_id);

/// The trace's lines for one command on each of the devices, in order.
std::string block_lines(const std::vector<std::vector<uint8_t>> &macs, int32_t app_id);
std::string unblock_lines(const std::vector<std::vector<uint8_t>> &macs, int32_t app_id);
std::string reset_lines(const std::vector<std::vector<uint8_t>> &macs);
