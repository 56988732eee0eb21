#include "sim/harness/client.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

using moment = steady_clock::time_point;

struct unix_address {
    sockaddr_un name = {.sun_family = AF_UNIX, .sun_path = {}};

    /// @param path  cut where it does not fit
    explicit unix_address(const std::string &path) {
        path.copy(name.sun_path, sizeof(name.sun_path) - 1);
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&name); }
};

/// Waits until there is something to read, an end included.
/// @param deadline  the largest there is: the read waits
bool is_readable(int fd, moment deadline) {
    if (deadline == moment::max())
        return true;
    pollfd readable = {.fd = fd, .events = POLLIN, .revents = 0};
    const auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
    return left > 0 && poll(&readable, 1, static_cast<int>(left)) > 0;
}

std::vector<utm_app_config_reply> replies_in(const std::string &bytes) {
    std::vector<utm_app_config_reply> replies(bytes.size() / UTM_APP_CONFIG_REPLY_SIZE);
    if (!replies.empty())
        memcpy(replies.data(), bytes.data(), replies.size() * UTM_APP_CONFIG_REPLY_SIZE);
    return replies;
}

} // namespace

utm_app_config_cmd sim_device_command(uint8_t type, int32_t profile_id, const sim_mac &mac) {
    utm_app_config_cmd command = {.type = type, .arg0 = profile_id};
    utm_app_config_put_mac(&command, mac.data());
    return command;
}

utm_app_config_cmd sim_path_command(uint8_t type, const std::string &path) {
    utm_app_config_cmd command = {.type = type};
    utm_app_config_overlay(&command, UTM_APP_CONFIG_PATH_OFFSET, path.data(),
                           std::min(path.size(), UTM_APP_CONFIG_PATH_SIZE));
    return command;
}

utm_app_config_cmd sim_rules_command(int32_t policy_id,
                                     const std::vector<utm_app_config_app_entry> &rules) {
    constexpr size_t room = sizeof(utm_app_config_cmd) - UTM_APP_CONFIG_APP_LIST_OFFSET;
    const size_t count = std::min(rules.size(), room / sizeof(utm_app_config_app_entry));
    utm_app_config_cmd command = {.type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY,
                                  .arg0 = policy_id,
                                  .arg1 = static_cast<int32_t>(rules.size())};
    if (count > 0)
        utm_app_config_put_rules(&command, rules.data(), static_cast<int32_t>(count));
    return command;
}

std::string sim_bytes(const utm_app_config_cmd &command) {
    return std::string(reinterpret_cast<const char *>(&command), sizeof(command));
}

int sim_connect(const std::string &path) {
    const unix_address address(path);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(fd, address.get(), sizeof(address.name)) == 0)
        return fd;
    close(fd);
    return -1;
}

int sim_listen(const std::string &path, int backlog) {
    const unix_address address(path);
    unlink(path.c_str());
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(fd, address.get(), sizeof(address.name)) == 0 && listen(fd, backlog) == 0)
        return fd;
    close(fd);
    return -1;
}

bool sim_send(int fd, const std::string &bytes) {
    return send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool sim_read_to_end(int fd, std::string *bytes, sim_timeout timeout) {
    const moment deadline =
        timeout.limit == sim_forever.limit ? moment::max() : steady_clock::now() + timeout.limit;
    size_t total = 0;
    bool is_closed = false;
    while (!is_closed && is_readable(fd, deadline)) {
        char spare[65536];
        const size_t room = bytes->size() - total;
        const ssize_t got =
            room > 0 ? read(fd, bytes->data() + total, room) : read(fd, spare, sizeof(spare));
        if (got > 0 && room == 0)
            bytes->append(spare, static_cast<size_t>(got));
        if (got > 0)
            total += static_cast<size_t>(got);
        else if (got == 0 || errno == ECONNRESET) // reset: it closed with bytes of ours unread
            is_closed = true;
        else if (errno != EINTR)
            break;
    }
    bytes->resize(total);
    return is_closed;
}

bool sim_converse(const std::string &path, const std::string &bytes, std::string *answer) {
    const int fd = sim_connect(path);
    if (fd < 0)
        return false;
    const bool is_whole = sim_send(fd, bytes) && sim_read_to_end(fd, answer, sim_forever);
    close(fd);
    return is_whole;
}

sim_answer sim_read_answer(int fd, sim_timeout timeout) {
    sim_answer answer = {.connected = true};
    answer.closed = sim_read_to_end(fd, &answer.bytes, timeout);
    answer.replies = replies_in(answer.bytes);
    return answer;
}

sim_answer sim_ask_bytes(const std::string &bytes, sim_timeout timeout) {
    const int fd = sim_connect();
    if (fd < 0)
        return {};
    // A daemon that has gone away shows in the answer, too.
    if (!sim_send(fd, bytes))
        fprintf(stderr, "sending to the daemon: %s\n", strerror(errno));
    const sim_answer answer = sim_read_answer(fd, timeout);
    close(fd);
    return answer;
}

sim_answer sim_ask(const utm_app_config_cmd &command, sim_timeout timeout) {
    return sim_ask_bytes(sim_bytes(command), timeout);
}

int sim_status(const sim_answer &answer) {
    return answer.replies.empty() ? -1 : answer.replies.back().status;
}
