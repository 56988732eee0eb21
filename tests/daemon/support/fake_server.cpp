#include "tests/daemon/support/fake_server.h"

#include "sim/harness/client.h"

#include <chrono>
#include <cstring>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

fake_server::fake_server(const std::string &path, fake_service serve)
    : path_(path), listener_(sim_listen(path, 8)), stop_(eventfd(0, EFD_CLOEXEC)),
      thread_([this, serve = std::move(serve)] { serve_until_stopped(serve); }) {}

fake_server::~fake_server() {
    eventfd_write(stop_, 1);
    thread_.join();
    close(stop_);
    close(listener_);
    unlink(path_.c_str());
}

void fake_server::serve_until_stopped(const fake_service &serve) {
    pollfd events[] = {{.fd = listener_, .events = POLLIN, .revents = 0},
                       {.fd = stop_, .events = POLLIN, .revents = 0}};
    while (poll(events, 2, -1) > 0 && events[1].revents == 0) {
        const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        std::string request(4096, '\0');
        const ssize_t size = recv(fd, request.data(), request.size(), 0);
        request.resize(size > 0 ? static_cast<size_t>(size) : 0);
        serve(fd, request);
        close(fd);
    }
}

std::string wire_of(const fake_reply &reply) {
    utm_app_config_reply wire = {};
    wire.status = reply.status;
    wire.activate = reply.activate;
    wire.app_usage_app_id = wire.prev_day_app_id = reply.app_id;
    wire.app_usage_value = reply.app_minutes;
    wire.weekday_day = reply.weekday;
    wire.weekday_limit = reply.weekday_minutes;
    return std::string(reinterpret_cast<const char *>(&wire), sizeof(wire));
}

bool client_goes(int fd, int milliseconds) {
    pollfd gone = {.fd = fd, .events = POLLRDHUP, .revents = 0};
    return poll(&gone, 1, milliseconds) > 0;
}

bool is_consumed(int fd) {
    int left = 0;
    return sim_wait_for([&] { return ioctl(fd, SIOCOUTQ, &left) != 0 || left == 0; }) &&
           !client_goes(fd, 0);
}

fake_service sends(const std::string &bytes) {
    return [bytes](int fd, const std::string &) { sim_send(fd, bytes); };
}

program_end ask_fake(std::vector<std::string> words) {
    words.insert(words.end(), {"-s", FAKE_SOCKET, "-t", "60"});
    return appctl(words, {}, {std::chrono::seconds(90)});
}
