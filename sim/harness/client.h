#pragma once
/// A client of the daemon's control socket.

#include "format/protocol.h"
#include "sim/harness/files.h"

#include <array>
#include <string>
#include <vector>

using sim_mac = std::array<uint8_t, 6>;

/// A request with every argument that it does not name at zero:
/// `{.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30}`.
struct sim_request {
    uint8_t type;
    int32_t arg0 = 0;
    int32_t arg1 = 0;
    int32_t arg2 = 0;
    int32_t arg3 = 0;
    int32_t arg4 = 0;
};

utm_app_config_cmd sim_command(const sim_request &request);

/// ADD_DEVICE or DEL_DEVICE.
utm_app_config_cmd sim_device_command(uint8_t type, int32_t profile_id, const sim_mac &mac);

/// LOAD_SIGNATURE, IMPORT_STATISTICS or EXPORT_STATISTICS; a longer path is cut to 127 bytes.
utm_app_config_cmd sim_path_command(uint8_t type, const std::string &path);

/// ADD_APPS_TO_POLICY with at most ten rules.
utm_app_config_cmd sim_rules_command(int32_t policy_id,
                                     const std::vector<utm_app_config_app_entry> &rules);

/// "02:00:00:00:00:0A" to its bytes; all zero when it is not written like that.
sim_mac sim_parse_mac(const std::string &text);

/// Everything that one connection answered.
struct sim_answer {
    bool connected = false;                         ///< somebody accepted the connection
    bool closed = false;                            ///< and closed it within the time allowed
    std::string bytes = {};                         ///< as received
    std::vector<utm_app_config_reply> replies = {}; ///< the whole replies among them
};

/// @return a descriptor connected to the daemon, which the caller closes, or -1
int sim_connect();

/// Reads until the daemon closes the connection.
sim_answer sim_read_answer(int fd, sim_timeout timeout = {});

/// Sends one request in one write and reads the answer to its end.
sim_answer sim_ask(const sim_request &request, sim_timeout timeout = {});

/// The same for a request with an overlay, or one that was put together by hand.
sim_answer sim_ask_command(const utm_app_config_cmd &command, sim_timeout timeout = {});

/// Sends any bytes at all, in one write, and reads the answer to its end.
sim_answer sim_ask_bytes(const std::string &bytes, sim_timeout timeout = {});

/// @return the status of the last reply, or -1 when there was none
int sim_status(const sim_answer &answer);
