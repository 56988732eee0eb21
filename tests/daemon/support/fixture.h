#pragma once
/// The real daemon in front of the simulated router, in the private /tmp and /dev of the test run.

#include "sim/harness/client.h"
#include "sim/harness/clock_control.h"
#include "sim/harness/daemon_process.h"
#include "sim/harness/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using text_lines = std::vector<std::string>;

inline constexpr char LOG_PATH[] = "/tmp/utm_log/utm_app_log";
inline constexpr char USAGE_PATH[] = "/tmp/ApplicationData/app_usage.json";
inline constexpr char ROUTER_DIR[] = "/tmp/router";
inline constexpr int OK = UTM_APP_CONFIG_STATUS_OK;
inline constexpr int FAIL = UTM_APP_CONFIG_STATUS_FAIL;
/// Tuesday 2030-01-01 12:00:00, in the daemon's time zone UTC.
inline constexpr time_t NOON = 1893499200;

/// Built with a sanitizer, the daemon links its runtime, and everything is slower.
inline constexpr bool IS_SANITIZED = sizeof UTM_SANITIZER > 1;

/// The programs are the router's, with its C library, and an emulator runs them.
inline constexpr bool IS_EMULATED = sizeof UTM_EMULATOR > 1;

/// How often a test does something: for a longer run a variable of the environment says so.
/// @param otherwise  where it is not set
size_t as_many_as(const char *variable, size_t otherwise);

/// @return the log's lines
text_lines log_lines();

/// @return the command lines and events that the simulated router saw
text_lines journal();

/// @return how often a line stands in the log
size_t log_count(const std::string &line);

/// @return the line that queries a profile's devices; `macs` as "020000000001 020000000002 "
std::string device_query(time_t from, time_t to, const std::string &macs);

/// @return the line that queries the whole router
std::string router_query(time_t from, time_t to);

/// Asks and expects an answer that is closed; @return its status, -1 for none.
int ask(const utm_app_config_cmd &command);

/// Sends a request and leaves the connection open; the caller closes the descriptor.
int send_request(const utm_app_config_cmd &request);

/// A ping as it is sent.
inline const std::string PING = sim_bytes({.type = UTM_APP_CONFIG_PING});

/// Asks for a signature to be loaded; @return the status
int load_signature(const std::string &path);

/// Prescribes the statistics service's reply to every query ("reply"), to those for a profile
/// ("reply.profile") or to those for the router ("reply.router").
void prescribe(const char *which, const std::string &reply);

/// @return a reply of the statistics service with one figure per application: (id, minutes); 0 is
/// the time online
std::string usage_reply(const std::vector<std::pair<int, int>> &apps);

/// Lets fakes go that wait.
void open_gates();

/// @return whether the other end has sent something or closed
bool is_readable(int fd);

/// Waits until a line stands in the log.
[[nodiscard]] bool wait_for_log(const std::string &line, size_t count = 1);

/// Every test ends with a daemon that still answers and stops with status 0, no process left over,
/// nothing that the router refused and nothing that a sanitizer found.
class daemon_test : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Starts the daemon with the clock at `start_time` and waits until its first tick is over.
    void start();
    /// The same, with the debug log on from then on; the log is empty and the journal forgotten.
    void start_with_log();
    /// Starts without waiting for the first tick.
    void launch();
    /// Lets a minute pass, at the end of which the daemon has worked off a tick.
    void tick(int minutes = 1);
    /// Lets a minute pass and the tick's first query wait until `open_gates`.
    void hold_up_a_tick();
    /// Stops the daemon and expects status 0.
    void stop();
    /// Keeps the socket's thread busy with a signature that loads until `open_gates`.
    /// @return the descriptor of the client that waits for it, which the caller closes
    int occupy_the_socket_thread();
    /// Waits until the daemon has as many descriptors open.
    [[nodiscard]] bool wait_for_descriptors(size_t count) const;

    sim_clock clock;
    time_t start_time = NOON;
    sim_daemon_options options;
    sim_daemon daemon; ///< after the clock: it is killed first
};
