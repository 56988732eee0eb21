#pragma once
/// A server that a client cannot trust: a test says what it does with each connection.

#include "format/protocol.h"
#include "sim/harness/client.h"
#include "tests/daemon/support/appctl.h"

#include <functional>
#include <string>
#include <thread>
#include <vector>

/// Does something with a connection whose request has been read. It is closed afterwards.
using fake_service = std::function<void(int fd, const std::string &request)>;

inline constexpr char FAKE_SOCKET[] = "/tmp/fake_socket";
inline constexpr uint8_t DATA = UTM_APP_CONFIG_STATUS_DATA;

/// A service that sends these bytes in one write and closes.
fake_service sends(const std::string &bytes);

/// Runs the client against a server at FAKE_SOCKET, with time enough for a slow machine.
program_end ask_fake(std::vector<std::string> words);

/// Listens at a path and serves one connection after the other until it goes.
class fake_server {
public:
    fake_server(const std::string &path, fake_service serve);
    ~fake_server();
    fake_server(const fake_server &) = delete;
    fake_server &operator=(const fake_server &) = delete;

private:
    void serve_until_stopped(const fake_service &serve);

    std::string path_;
    int listener_ = -1;
    int stop_ = -1; ///< readable once the server is to go
    std::thread thread_;
};

/// A reply with everything that it does not name at zero: `{.status = 2, .app_id = 305}`.
struct fake_reply {
    uint8_t status = UTM_APP_CONFIG_STATUS_OK;
    int32_t activate = 0;        ///< GET_STATUS
    int32_t app_id = 0;          ///< of an entry of either list of applications
    int32_t app_minutes = 0;     ///< GET_APP_USAGE
    int32_t weekday = 0;         ///< GET_WEEKDAY_DAILY_LIMIT
    int32_t weekday_minutes = 0; ///< GET_WEEKDAY_DAILY_LIMIT
};

/// @return a reply as the wire has it
std::string wire_of(const fake_reply &reply);

/// Waits until the client has gone, or for so long.
/// @return whether it has gone
bool client_goes(int fd, int milliseconds);

/// Waits until the client has read everything that was sent.
/// @return false when it has gone, or takes too long
bool is_consumed(int fd);
