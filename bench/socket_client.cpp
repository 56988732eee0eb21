#include "bench/socket_client.h"

#include <algorithm>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

int connect_to(const char *path) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path, sizeof(address.sun_path) - 1);
    if (fd < 0 || connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0)
        return fd;
    close(fd);
    return -1;
}

long read_to_the_end(int fd, std::vector<char> *buffer) {
    static thread_local char dropped[65536];
    size_t total = 0;
    for (;;) {
        const size_t room = buffer->size() > total ? buffer->size() - total : 0;
        char *to = room > 0 ? buffer->data() + total : dropped;
        const ssize_t n =
            read(fd, to, room > 0 ? std::min(room, sizeof(dropped)) : sizeof(dropped));
        if (n < 0)
            return -1;
        if (n == 0)
            return static_cast<long>(total);
        total += static_cast<size_t>(n);
    }
}

} // namespace

long socket_request(const char *path, const utm_app_config_cmd &request,
                    std::vector<char> *buffer) {
    const int fd = connect_to(path);
    if (fd < 0)
        return -1;
    long received = -1;
    if (write(fd, &request, sizeof(request)) == static_cast<ssize_t>(sizeof(request)))
        received = read_to_the_end(fd, buffer);
    close(fd);
    return received;
}
