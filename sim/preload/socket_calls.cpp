/// The calls that take or tell a local socket's address, for the sandbox without namespaces
/// (redirect.h).
///
/// An address has room for 107 bytes of path, and the root may be longer than that. Then a socket
/// is bound in the root's folder `sockets`, by a short name and through a descriptor of that
/// folder, and moved to its place; a link of that name keeps what the program called it. Such a
/// socket is reached through a descriptor of itself.

#include "sim/preload/call.h"
#include "sim/preload/redirect.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr socklen_t path_offset = offsetof(sockaddr_un, sun_path);
constexpr size_t path_room = sizeof(sockaddr_un::sun_path);
constexpr char by_descriptor[] = "/proc/self/fd/";

/// An address's path as a text; empty where there is none: another family, an abstract name.
struct socket_path {
    char text[path_room + 1] = {};

    socket_path(const sockaddr *address, socklen_t length) {
        if (address != nullptr && length > path_offset && length <= sizeof(sockaddr_un) &&
            address->sa_family == AF_UNIX)
            memcpy(text, reinterpret_cast<const sockaddr_un *>(address)->sun_path,
                   length - path_offset);
    }
};

/// A path as an address; a longer one than there is room for leads nowhere.
class local_address {
public:
    explicit local_address(const char *path) {
        if (strlen(path) < path_room)
            strcpy(own_.sun_path, path);
    }

    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&own_); }
    socklen_t length() const {
        return static_cast<socklen_t>(path_offset + strlen(own_.sun_path) + 1);
    }

private:
    sockaddr_un own_ = {.sun_family = AF_UNIX, .sun_path = {}};
};

/// A descriptor that is good for naming its file, and nothing else.
class held_path {
public:
    explicit held_path(const char *path) : fd_(path != nullptr ? open(path, flags) : -1) {}
    held_path(const held_path &) = delete;
    held_path &operator=(const held_path &) = delete;
    ~held_path() {
        const int reason = errno;
        if (fd_ >= 0)
            close(fd_);
        errno = reason;
    }

    bool exists() const { return fd_ >= 0; }
    int fd() const { return fd_; }

private:
    static constexpr int flags = O_PATH | O_CLOEXEC;
    int fd_;
};

/// @return what is too long for an address, or null
const char *too_long(const char *place) {
    return strlen(place) < path_room ? nullptr : place;
}

/// The address of a socket that there is already, where it leads.
class reachable_address {
public:
    reachable_address(const sockaddr *address, socklen_t length)
        : address_(address), length_(length), path_(address, length), place_(path_.text),
          held_(too_long(place_)), own_(too_long(place_) == nullptr ? place_ : held_name()) {}

    bool is_redirected() const { return static_cast<const char *>(place_) != path_.text; }
    const sockaddr *get() const { return is_redirected() ? own_.get() : address_; }
    socklen_t length() const { return is_redirected() ? own_.length() : length_; }

private:
    /// Where nothing was found, the number is -1, and the kernel finds nothing either.
    const char *held_name() {
        snprintf(name_, sizeof(name_), "%s%d", by_descriptor, held_.fd());
        return name_;
    }

    const sockaddr *address_;
    socklen_t length_;
    socket_path path_;
    sim_redirected place_;
    held_path held_;
    char name_[32];
    local_address own_;
};

using bind_call = int(int, const sockaddr *, socklen_t);

/// @return whether a socket could be made there; if not, why is in errno
bool is_free(const char *place) {
    struct stat status;
    if (lstat(place, &status) != 0)
        return errno == ENOENT;
    errno = EADDRINUSE;
    return false;
}

/// @return whether the folder that the place is in can be reached; if not, why is in errno
bool has_folder(const char *place) {
    char folder[PATH_MAX];
    const char *name = strrchr(place, '/') + 1;
    snprintf(folder, sizeof(folder), "%.*s", static_cast<int>(name - place), place);
    return access(folder, W_OK) == 0;
}

/// Binds in the folder `sockets`.
/// @param home  receives the socket's path there
int bind_at_home(int fd, char *home, size_t room) {
    static std::atomic<unsigned> count;
    const int folder_length = snprintf(home, room, "%s/sockets", sim_sandbox_root());
    const held_path folder(home);
    int result = -1;
    do {
        char name[path_room];
        const unsigned number = count.fetch_add(1);
        snprintf(name, sizeof(name), "%s%d/%d.%u", by_descriptor, folder.fd(), getpid(), number);
        snprintf(home + folder_length, room - static_cast<size_t>(folder_length), "/%d.%u",
                 getpid(), number);
        const local_address own(name);
        result = sim_next<bind_call *>("bind")(fd, own.get(), own.length());
        // An earlier process had the same number.
    } while (result != 0 && errno == EADDRINUSE);
    return result;
}

/// A socket that is bound stays so: whatever can fail is looked at before.
int bind_far(int fd, const char *place, const char *called) {
    char home[PATH_MAX];
    if (!is_free(place) || !has_folder(place) || bind_at_home(fd, home, sizeof(home)) != 0)
        return -1;
    return rename(home, place) == 0 ? symlink(called, home) : -1;
}

/// @return the size of what a program calls the socket, which takes the place of its path, or 0
size_t name_by_link(char *path, size_t size) {
    char kernel_name[path_room + 1] = {};
    memcpy(kernel_name, path, size);
    if (strncmp(kernel_name, by_descriptor, strlen(by_descriptor)) != 0)
        return 0;
    char link[PATH_MAX];
    const int length =
        snprintf(link, sizeof(link), "%s/sockets%s", sim_sandbox_root(), strrchr(kernel_name, '/'));
    char called[path_room + 1] = {};
    if (static_cast<size_t>(length) >= sizeof(link) || readlink(link, called, path_room) <= 0)
        return 0;
    memcpy(path, called, path_room);
    return strlen(called) < path_room ? strlen(called) + 1 : path_room;
}

/// Gives a socket's name as the program knows it.
void show(sockaddr *address, socklen_t *length, socklen_t room) {
    if (address == nullptr || *length <= path_offset || *length > sizeof(sockaddr_un) ||
        room < sizeof(sockaddr_un) || address->sa_family != AF_UNIX)
        return;
    char *path = reinterpret_cast<sockaddr_un *>(address)->sun_path;
    const size_t old_size = *length - path_offset;
    size_t size = name_by_link(path, old_size);
    if (size == 0)
        size = sim_shown_path(path, old_size);
    if (size < old_size)
        memset(path + size, 0, old_size - size);
    *length = static_cast<socklen_t>(path_offset + size);
}

} // namespace

/// Defines a call that tells an address.
#define SIM_TELL(result, name, parameters, arguments)                                              \
    SIM_DEFINE(result, name, parameters) {                                                         \
        const socklen_t room = length != nullptr ? *length : 0;                                    \
        const result outcome = sim_next<result(*) parameters>(#name) arguments;                    \
        if (outcome >= 0)                                                                          \
            show(address, length, room);                                                           \
        return outcome;                                                                            \
    }

SIM_TELL(int, getsockname, (int fd, sockaddr *address, socklen_t *length), (fd, address, length))
SIM_TELL(int, getpeername, (int fd, sockaddr *address, socklen_t *length), (fd, address, length))
SIM_TELL(int, accept, (int fd, sockaddr *address, socklen_t *length), (fd, address, length))
SIM_TELL(int, accept4, (int fd, sockaddr *address, socklen_t *length, int flags),
         (fd, address, length, flags))
SIM_TELL(ssize_t, recvfrom,
         (int fd, void *bytes, size_t size, int flags, sockaddr *address, socklen_t *length),
         (fd, bytes, size, flags, address, length))

SIM_DEFINE(int, bind, (int fd, const sockaddr *address, socklen_t length)) {
    const auto next = sim_next<bind_call *>("bind");
    const socket_path path(address, length);
    const sim_redirected redirected(path.text);
    const char *place = redirected;
    if (place == path.text)
        return next(fd, address, length);
    if (too_long(place) != nullptr)
        return bind_far(fd, place, path.text);
    const local_address own(place);
    return next(fd, own.get(), own.length());
}

SIM_DEFINE(int, connect, (int fd, const sockaddr *address, socklen_t length)) {
    const reachable_address to(address, length);
    return sim_next<bind_call *>("connect")(fd, to.get(), to.length());
}

SIM_DEFINE(ssize_t, sendto,
           (int fd, const void *bytes, size_t size, int flags, const sockaddr *address,
            socklen_t length)) {
    using call = ssize_t(int, const void *, size_t, int, const sockaddr *, socklen_t);
    const reachable_address to(address, length);
    return sim_next<call *>("sendto")(fd, bytes, size, flags, to.get(), to.length());
}

SIM_DEFINE(ssize_t, sendmsg, (int fd, const msghdr *message, int flags)) {
    const reachable_address to(static_cast<const sockaddr *>(message->msg_name),
                               message->msg_namelen);
    msghdr redirected = *message;
    redirected.msg_name = const_cast<sockaddr *>(to.get());
    redirected.msg_namelen = to.length();
    return sim_next<ssize_t (*)(int, const msghdr *, int)>("sendmsg")(fd, &redirected, flags);
}
