/// The calls that take a local socket's address, for the sandbox without namespaces (redirect.h).
///
/// An address has room for 107 bytes of path, and the root may be longer than that. Such a path is
/// named through a descriptor of its folder.

#include "sim/preload/call.h"
#include "sim/preload/redirect.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr socklen_t path_offset = offsetof(sockaddr_un, sun_path);

/// What the kernel calls a socket that was bound through its folder, and what the program does.
struct bound_name {
    sockaddr_un kernel;
    sockaddr_un program;
};

/// The last few such sockets: a program has one or two.
bound_name bound_names[8];
size_t bound_count;
pthread_mutex_t bound_mutex = PTHREAD_MUTEX_INITIALIZER;

void remember(const sockaddr_un &kernel, const char *path) {
    pthread_mutex_lock(&bound_mutex);
    bound_name &name = bound_names[bound_count++ % (sizeof(bound_names) / sizeof(bound_name))];
    name = {.kernel = kernel, .program = {}};
    memcpy(name.program.sun_path, path, strnlen(path, sizeof(name.program.sun_path)));
    pthread_mutex_unlock(&bound_mutex);
}

/// @return the length of the program's path, or 0
size_t recall(char *path, size_t length) {
    size_t found = 0;
    pthread_mutex_lock(&bound_mutex);
    for (const bound_name &name : bound_names)
        if (length > 0 && strncmp(name.kernel.sun_path, path, length) == 0) {
            found = strnlen(name.program.sun_path, sizeof(name.program.sun_path));
            memcpy(path, name.program.sun_path, found);
            break;
        }
    pthread_mutex_unlock(&bound_mutex);
    return found;
}

/// Where an address leads; it is good as long as this lives.
class redirected_address {
public:
    redirected_address(const sockaddr *address, socklen_t length)
        : address_(address), length_(length) {
        if (address == nullptr || length <= path_offset || length > sizeof(own_) ||
            address->sa_family != AF_UNIX)
            return;
        char path[sizeof(own_.sun_path) + 1] = {};
        memcpy(path, reinterpret_cast<const sockaddr_un *>(address)->sun_path,
               length - path_offset);
        const sim_redirected redirected(path); // an abstract name begins with a NUL: no path
        const char *leads_to = redirected;
        if (leads_to != path)
            set_path(leads_to);
        if (folder_ >= 0)
            remember(own_, path);
    }
    redirected_address(const redirected_address &) = delete;
    redirected_address &operator=(const redirected_address &) = delete;
    ~redirected_address() {
        if (folder_ >= 0)
            close(folder_);
    }

    const sockaddr *get() const { return address_; }
    socklen_t length() const { return length_; }

private:
    void set_path(const char *path) {
        own_.sun_family = AF_UNIX;
        if (strlen(path) < sizeof(own_.sun_path))
            strcpy(own_.sun_path, path);
        else
            set_path_by_folder(path);
        address_ = reinterpret_cast<const sockaddr *>(&own_);
        length_ = static_cast<socklen_t>(path_offset + strlen(own_.sun_path) + 1);
    }

    void set_path_by_folder(const char *path) {
        char folder[PATH_MAX];
        const char *name = strrchr(path, '/') + 1;
        snprintf(folder, sizeof(folder), "%.*s", static_cast<int>(name - path), path);
        folder_ = open(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
        snprintf(own_.sun_path, sizeof(own_.sun_path), "/proc/self/fd/%d/%.90s", folder_, name);
    }

    sockaddr_un own_ = {};
    const sockaddr *address_;
    socklen_t length_;
    int folder_ = -1;
};

/// Gives a socket's name as the program knows it.
void show(sockaddr *address, socklen_t *length, socklen_t room) {
    if (*length <= path_offset || room < sizeof(sockaddr_un) || address->sa_family != AF_UNIX)
        return;
    char *path = reinterpret_cast<sockaddr_un *>(address)->sun_path;
    const size_t old_size = *length - path_offset;
    size_t size = recall(path, old_size);
    if (size == 0)
        size = sim_shown_path(path, old_size);
    else if (size < sizeof(sockaddr_un::sun_path))
        path[size++] = '\0';
    *length = static_cast<socklen_t>(path_offset + size);
    if (size < old_size)
        memset(path + size, 0, old_size - size);
}

} // namespace

SIM_DEFINE(int, bind, (int fd, const sockaddr *address, socklen_t length)) {
    const redirected_address to(address, length);
    return sim_next<int (*)(int, const sockaddr *, socklen_t)>("bind")(fd, to.get(), to.length());
}

SIM_DEFINE(int, connect, (int fd, const sockaddr *address, socklen_t length)) {
    const redirected_address to(address, length);
    return sim_next<int (*)(int, const sockaddr *, socklen_t)>("connect")(fd, to.get(),
                                                                          to.length());
}

SIM_DEFINE(ssize_t, sendto,
           (int fd, const void *bytes, size_t size, int flags, const sockaddr *address,
            socklen_t length)) {
    using call = ssize_t (*)(int, const void *, size_t, int, const sockaddr *, socklen_t);
    const redirected_address to(address, length);
    return sim_next<call>("sendto")(fd, bytes, size, flags, to.get(), to.length());
}

SIM_DEFINE(ssize_t, sendmsg, (int fd, const msghdr *message, int flags)) {
    const redirected_address to(static_cast<const sockaddr *>(message->msg_name),
                                message->msg_namelen);
    msghdr redirected = *message;
    redirected.msg_name = const_cast<sockaddr *>(to.get());
    redirected.msg_namelen = to.length();
    return sim_next<ssize_t (*)(int, const msghdr *, int)>("sendmsg")(fd, &redirected, flags);
}

SIM_DEFINE(int, getsockname, (int fd, sockaddr *address, socklen_t *length)) {
    const socklen_t room = *length;
    const int result =
        sim_next<int (*)(int, sockaddr *, socklen_t *)>("getsockname")(fd, address, length);
    if (result == 0)
        show(address, length, room);
    return result;
}

SIM_DEFINE(int, getpeername, (int fd, sockaddr *address, socklen_t *length)) {
    const socklen_t room = *length;
    const int result =
        sim_next<int (*)(int, sockaddr *, socklen_t *)>("getpeername")(fd, address, length);
    if (result == 0)
        show(address, length, room);
    return result;
}
