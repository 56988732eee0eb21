#include "tests/lib/sockets.h"

#include <cerrno>
#include <fstream>
#include <map>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

extern "C" {
int __real_socket(int domain, int type, int protocol);
int __real_setsockopt(int fd, int level, int option, const void *value, socklen_t size);
int __real_listen(int fd, int backlog);
int __real_accept4(int fd, sockaddr *address, socklen_t *size, int flags);
}

namespace {

struct state_t {
    std::map<std::string, int> errors;
    std::string calls;
    std::vector<int> accepted;
};

state_t state;

/// @return whether the call is to fail; then `errno` is set
bool fails(const char *function) {
    const auto found = state.errors.find(function);
    if (found == state.errors.end() || found->second == 0)
        return false;
    errno = found->second;
    return true;
}

void note(const char *function, const std::vector<int> &arguments) {
    state.calls += function;
    for (const int argument : arguments)
        state.calls += " " + std::to_string(argument);
    state.calls += "\n";
}

} // namespace

extern "C" {

int __wrap_socket(int domain, int type, int protocol) {
    note("socket", {domain, type, protocol});
    return fails("socket") ? -1 : __real_socket(domain, type, protocol);
}

int __wrap_setsockopt(int fd, int level, int option, const void *value, socklen_t size) {
    note("setsockopt", {level, option});
    return fails("setsockopt") ? -1 : __real_setsockopt(fd, level, option, value, size);
}

int __wrap_listen(int fd, int backlog) {
    note("listen", {backlog});
    return fails("listen") ? -1 : __real_listen(fd, backlog);
}

int __wrap_accept4(int fd, sockaddr *address, socklen_t *size, int flags) {
    note("accept4", {flags});
    if (fails("accept4"))
        return -1;
    const int accepted = __real_accept4(fd, address, size, flags);
    if (accepted >= 0)
        state.accepted.push_back(accepted);
    return accepted;
}

} // extern "C"

namespace sockets {

void reset() {
    state = {};
}

void fail(const std::string &function, int error) {
    state.errors[function] = error;
}

std::string calls() {
    return std::exchange(state.calls, {});
}

std::vector<int> accepted() {
    return state.accepted;
}

thread_t::thread_t(std::function<void()> run)
    : thread_([this, run] {
          id_ = gettid();
          run();
      }) {}

void thread_t::wait_until_asleep() const {
    // The state stands behind the name, which is in brackets.
    const auto state = [this] {
        std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
        const std::string text(std::istreambuf_iterator<char>(file), {});
        const size_t bracket = text.rfind(") ");
        return bracket == std::string::npos ? '?' : text[bracket + 2];
    };
    while (id_ == 0 || state() != 'S')
        std::this_thread::yield();
}

} // namespace sockets
