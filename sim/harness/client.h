#pragma once
/// A client of the daemon's control socket: of the demo, the tests and the benchmarks. A request is
/// the wire's own record: `{.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = 3, .arg4 = 30}`.

#include "format/protocol.h"
#include "sim/harness/files.h"

#include <array>
#include <string>
#include <vector>

using sim_mac = std::array<uint8_t, mac_bytes>;

/// ADD_DEVICE or DEL_DEVICE.
utm_app_config_cmd sim_device_command(uint8_t type, int32_t profile_id, const sim_mac &mac);

/// LOAD_SIGNATURE, IMPORT_STATISTICS or EXPORT_STATISTICS. A path that fills all 128 bytes goes
/// without its NUL; a longer one is cut.
utm_app_config_cmd sim_path_command(uint8_t type, const std::string &path);

/// ADD_APPS_TO_POLICY. A request has room for fifteen rules; a daemon takes ten of them.
utm_app_config_cmd sim_rules_command(int32_t policy_id,
                                     const std::vector<utm_app_config_app_entry> &rules);

/// @return a request as it is sent
std::string sim_bytes(const utm_app_config_cmd &command);

/// Everything that one connection answered.
struct sim_answer {
    bool connected = false;                         ///< somebody accepted the connection
    bool closed = false;                            ///< and closed it within the time allowed
    std::string bytes = {};                         ///< as received
    std::vector<utm_app_config_reply> replies = {}; ///< the whole replies among them
};

/// @return a descriptor connected to the daemon, or to what listens at a path; the caller
/// closes it. -1 when nobody listens.
int sim_connect(const std::string &path = UTM_APP_CONFIG_SOCKET_PATH);

/// @return a socket that listens at a path, replacing what was there, and accepts nobody; the
/// caller closes it. -1 on failure.
int sim_listen(const std::string &path, int backlog);

/// Sends everything in one write, without a SIGPIPE.
/// @return false when the other end has gone
bool sim_send(int fd, const std::string &bytes);

/// Reads until the other end closes the connection. Where `bytes` is as long as what comes, or
/// longer, nothing is copied or allocated: a benchmark measures the server.
///
/// @param bytes  overwritten
/// @return whether it was closed in time
bool sim_read_to_end(int fd, std::string *bytes, sim_timeout timeout = {});

/// A whole conversation at a path, as a benchmark has it: it connects, sends in one write and
/// reads to the end, without a limit.
/// @param answer  overwritten, as by `sim_read_to_end`
/// @return whether it was answered to the end
bool sim_converse(const std::string &path, const std::string &bytes, std::string *answer);

/// Reads as `sim_read_to_end` does and takes the replies apart.
sim_answer sim_read_answer(int fd, sim_timeout timeout = {});

/// Sends one request in one write and reads the answer to its end.
sim_answer sim_ask(const utm_app_config_cmd &command, sim_timeout timeout = {});

/// The same with any bytes at all.
sim_answer sim_ask_bytes(const std::string &bytes, sim_timeout timeout = {});

/// @return the status of the last reply, or -1 when there was none
int sim_status(const sim_answer &answer);
