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

utm_app_config_cmd sim_command(const sim_request &request) {
    utm_app_config_cmd command = {};
    command.type = request.type;
    command.arg0 = request.arg0;
    command.arg1 = request.arg1;
    command.arg2 = request.arg2;
    command.arg3 = request.arg3;
    command.arg4 = request.arg4;
    return command;
}

/// Lays bytes over the request, as the overlays of the protocol do.
static void overlay(utm_app_config_cmd *command, size_t offset, const void *bytes, size_t size) {
    if (size > 0) // no rules: there may be nothing to point at
        memcpy(reinterpret_cast<char *>(command) + offset, bytes,
               std::min(size, sizeof *command - offset));
}

utm_app_config_cmd sim_device_command(uint8_t type, int32_t profile_id, const sim_mac &mac) {
    utm_app_config_cmd command = sim_command({.type = type, .arg0 = profile_id});
    overlay(&command, UTM_APP_CONFIG_MAC_OFFSET, mac.data(), mac.size());
    return command;
}

utm_app_config_cmd sim_path_command(uint8_t type, const std::string &path) {
    utm_app_config_cmd command = sim_command({.type = type});
    overlay(&command, UTM_APP_CONFIG_PATH_OFFSET, path.c_str(),
            std::min(path.size(), UTM_APP_CONFIG_PATH_SIZE - 1));
    return command;
}

utm_app_config_cmd sim_rules_command(int32_t policy_id,
                                     const std::vector<utm_app_config_app_entry> &rules) {
    utm_app_config_cmd command = sim_command({.type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY,
                                              .arg0 = policy_id,
                                              .arg1 = static_cast<int32_t>(rules.size())});
    overlay(&command, UTM_APP_CONFIG_APP_LIST_OFFSET, rules.data(),
            rules.size() * sizeof(utm_app_config_app_entry));
    return command;
}

sim_mac sim_parse_mac(const std::string &text) {
    sim_mac mac = {};
    if (text.size() != 17 || sscanf(text.c_str(), "%2hhx:%2hhx:%2hhx:%2hhx:%2hhx:%2hhx", &mac[0],
                                    &mac[1], &mac[2], &mac[3], &mac[4], &mac[5]) != 6)
        mac = {};
    return mac;
}

int sim_connect() {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, UTM_APP_CONFIG_SOCKET_PATH, sizeof UTM_APP_CONFIG_SOCKET_PATH);
    if (connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0)
        return fd;
    close(fd);
    return -1;
}

static void split_replies(sim_answer *answer) {
    size_t count = answer->bytes.size() / UTM_APP_CONFIG_REPLY_SIZE;
    answer->replies.resize(count);
    if (count > 0)
        memcpy(answer->replies.data(), answer->bytes.data(), count * UTM_APP_CONFIG_REPLY_SIZE);
}

sim_answer sim_read_answer(int fd, sim_timeout timeout) {
    sim_answer answer = {.connected = true};
    auto deadline = steady_clock::now() + timeout.limit;
    while (!answer.closed) {
        auto left = duration_cast<milliseconds>(deadline - steady_clock::now()).count();
        pollfd readable = {.fd = fd, .events = POLLIN, .revents = 0};
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left)) <= 0)
            break;
        char chunk[4096];
        ssize_t got = read(fd, chunk, sizeof chunk);
        if (got > 0)
            answer.bytes.append(chunk, static_cast<size_t>(got));
        else if (got == 0 || errno == ECONNRESET) // reset: it closed with bytes of ours unread
            answer.closed = true;
        else if (errno != EINTR)
            break;
    }
    split_replies(&answer);
    return answer;
}

sim_answer sim_ask_bytes(const std::string &bytes, sim_timeout timeout) {
    int fd = sim_connect();
    if (fd < 0)
        return {};
    // A daemon that has gone away shows in the answer, not as a SIGPIPE.
    if (send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        fprintf(stderr, "sending to the daemon: %s\n", strerror(errno));
    sim_answer answer = sim_read_answer(fd, timeout);
    close(fd);
    return answer;
}

sim_answer sim_ask_command(const utm_app_config_cmd &command, sim_timeout timeout) {
    std::string bytes(reinterpret_cast<const char *>(&command), sizeof command);
    return sim_ask_bytes(bytes, timeout);
}

sim_answer sim_ask(const sim_request &request, sim_timeout timeout) {
    return sim_ask_command(sim_command(request), timeout);
}

int sim_status(const sim_answer &answer) {
    return answer.replies.empty() ? -1 : answer.replies.back().status;
}
