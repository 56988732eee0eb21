#pragma once
/// One conversation with the dispatcher, over a pair of connected sockets.
///
/// Replies are taken apart by the documented offsets, as a client in another language would.

#include "format/protocol.h"
#include "sim/harness/client.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace world {

/// @param arguments  arg0, arg1, ... ; those left out are 0
/// @return a request whose unread bytes are not 0
utm_app_config_cmd request(uint8_t type, std::initializer_list<int32_t> arguments = {});

/// ADD_DEVICE and DEL_DEVICE.
utm_app_config_cmd device_request(uint8_t type, int32_t profile_id,
                                  const std::vector<uint8_t> &mac);

/// ADD_APPS_TO_POLICY.
/// @param count  as the request says, whatever the number of rules is
utm_app_config_cmd rules_request(int32_t policy_id, int32_t count,
                                 const std::vector<utm_app_config_app_entry> &rules);

/// Sends bytes to the dispatcher, closes the sending side, and returns all that comes back.
std::string exchange_bytes(const std::string &sent);

/// Sends a request and returns the replies, one line each: what became of it, then the fields
/// that replies to this type carry. "ok", "fail", "ok limit 60", "data 3 1440", "no reply".
std::string exchange(const utm_app_config_cmd &request);

/// The bytes of a reply or of several as such lines.
/// @param type  of the request
std::string describe(uint8_t type, const std::string &bytes);

/// @return the int32 at an offset
int32_t int32_at(const std::string &bytes, size_t offset);

} // namespace world
