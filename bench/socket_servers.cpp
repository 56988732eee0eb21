#include "bench/socket_servers.h"

#include "control/socket_server.h"
#include "daemon.h"
#include "sim/harness/client.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The child does not outlive whoever measures it.
int fork_server() {
    const int pid = fork();
    if (pid == 0)
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (pid < 0)
        abort();
    return pid;
}

void answer(int fd, const std::vector<canned_t> &canned, size_t piece) {
    utm_app_config_cmd request;
    if (read(fd, &request, sizeof(request)) != static_cast<ssize_t>(sizeof(request)))
        return;
    for (const canned_t &one : canned) {
        if (memcmp(&one.request, &request, sizeof(request)) != 0)
            continue;
        for (size_t at = 0; at < one.answer.size();) {
            const ssize_t n =
                write(fd, one.answer.data() + at, std::min(piece, one.answer.size() - at));
            if (n <= 0)
                return;
            at += static_cast<size_t>(n);
        }
        return;
    }
}

/// Waits for the listening socket and for one connection at a time, as the daemon's loop does.
[[noreturn]] void serve(int listening, const std::vector<canned_t> &canned, size_t piece) {
    int connection = -1;
    for (;;) {
        fd_set ready;
        FD_ZERO(&ready);
        FD_SET(listening, &ready);
        if (connection >= 0)
            FD_SET(connection, &ready);
        timeval timeout = {1, 0};
        if (select(std::max(listening, connection) + 1, &ready, nullptr, nullptr, &timeout) < 0)
            abort();
        if (connection >= 0 && FD_ISSET(connection, &ready)) {
            answer(connection, canned, piece);
            close(connection);
            connection = -1;
        } else if (FD_ISSET(listening, &ready)) {
            connection = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        }
    }
}

} // namespace

server_process::~server_process() {
    if (pid_ <= 0)
        return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void server_process::start_daemon(const household_size_t &size) {
    unlink(UTM_APP_CONFIG_SOCKET_PATH);
    pid_ = fork_server();
    if (pid_ == 0) {
        if (utm_app_config_handler_init() != 0)
            abort();
        household_build(size);
        utm_app_config_handler(nullptr);
        abort();
    }
    while (access(UTM_APP_CONFIG_SOCKET_PATH, F_OK) != 0)
        usleep(1000);
}

void server_process::start_minimal(const char *path, const std::vector<canned_t> &canned,
                                   size_t piece) {
    const int listening = sim_listen(path, 15);
    if (listening < 0)
        abort();
    pid_ = fork_server();
    if (pid_ == 0)
        serve(listening, canned, piece);
    close(listening);
}
