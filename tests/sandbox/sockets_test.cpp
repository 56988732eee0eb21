/// Local sockets by paths of any length that an address has room for, whatever the root's length.

#include "tests/sandbox/support.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr size_t longest_path = sizeof(sockaddr_un::sun_path) - 1;

struct descriptor {
    int fd;

    explicit descriptor(int opened) : fd(opened) {}
    descriptor(const descriptor &) = delete;
    descriptor &operator=(const descriptor &) = delete;
    ~descriptor() { close(fd); }
};

struct address {
    sockaddr_un bytes = {.sun_family = AF_UNIX, .sun_path = {}};
    socklen_t length;

    explicit address(const std::string &path)
        : length(static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size() + 1)) {
        memcpy(bytes.sun_path, path.data(), path.size());
    }
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&bytes); }
};

int bind_to(int fd, const std::string &path) {
    const address to(path);
    return bind(fd, to.get(), to.length);
}

int connect_to(int fd, const std::string &path) {
    const address to(path);
    return connect(fd, to.get(), to.length);
}

/// One of the calls that fill in an address.
using telling_call = std::function<int(sockaddr *told, socklen_t *length)>;

std::string told_by(const telling_call &tells) {
    sockaddr_storage told = {};
    socklen_t length = sizeof(told);
    if (tells(reinterpret_cast<sockaddr *>(&told), &length) < 0)
        return strerror(errno);
    const char *path = reinterpret_cast<sockaddr_un *>(&told)->sun_path;
    EXPECT_EQ(length, offsetof(sockaddr_un, sun_path) + strlen(path) + 1);
    return path;
}

std::string own_name(int fd) {
    return told_by(
        [fd](sockaddr *told, socklen_t *length) { return getsockname(fd, told, length); });
}

std::string peer_name(int fd) {
    return told_by(
        [fd](sockaddr *told, socklen_t *length) { return getpeername(fd, told, length); });
}

/// @return a path of that many bytes in the place's folder
std::string path_of_size(const place &here, size_t size, char filler) {
    return here.folder + "/" + std::string(size - here.folder.size() - 1, filler);
}

class Sockets : public testing::TestWithParam<size_t> {
protected:
    const place here;
    const std::string path = path_of_size(here, GetParam(), 's');
    const std::string other_path = path_of_size(here, GetParam(), 'c');
};

INSTANTIATE_TEST_SUITE_P(PathOf, Sockets, testing::Values(50, 90, 91, 92, longest_path),
                         testing::PrintToStringParamName());

} // namespace

const std::set<std::string> &socket_call_names() {
    static const std::set<std::string> names = {"bind",    "connect",     "sendto",
                                                "sendmsg", "getsockname", "accept",
                                                "accept4", "recvfrom",    "getpeername"};
    return names;
}

TEST_P(Sockets, AreBoundInThePrivateFolder) {
    const descriptor server(socket(AF_UNIX, SOCK_STREAM, 0));

    EXPECT_EQ(bind_to(server.fd, path), 0) << strerror(errno);

    EXPECT_TRUE(std::filesystem::is_socket(in_private(path)));
    EXPECT_FALSE(exists(on_machine(path)));
    EXPECT_EQ(own_name(server.fd), path);
}

TEST_P(Sockets, AreConnectedAndTellBothNames) {
    const descriptor server(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind_to(server.fd, path), 0);
    ASSERT_EQ(listen(server.fd, 2), 0);
    for (const bool with_flags : {false, true}) {
        const descriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
        unlink(other_path.c_str());
        ASSERT_EQ(bind_to(client.fd, other_path), 0);
        ASSERT_EQ(connect_to(client.fd, path), 0) << strerror(errno);

        int accepted = -1;
        EXPECT_EQ(told_by([&](sockaddr *told, socklen_t *length) {
                      accepted = with_flags ? accept4(server.fd, told, length, SOCK_CLOEXEC)
                                            : accept(server.fd, told, length);
                      return accepted;
                  }),
                  other_path);
        const descriptor connection(accepted);
        EXPECT_EQ(peer_name(client.fd), path);
        EXPECT_EQ(peer_name(connection.fd), other_path);
        EXPECT_EQ(own_name(connection.fd), path);
    }
}

TEST_P(Sockets, TellTheServersNameToAnotherProcess) {
    const descriptor server(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind_to(server.fd, path), 0);
    ASSERT_EQ(listen(server.fd, 1), 0);
    EXPECT_EQ(status_of_child([&] {
                  // Other numbers than the parent's.
                  const descriptor unused(dup(server.fd));
                  const descriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
                  const bool is_told =
                      connect_to(client.fd, path) == 0 && peer_name(client.fd) == path;
                  _exit(is_told ? 0 : 1);
              }),
              0);
}

TEST_P(Sockets, TakeAndAnswerDatagrams) {
    const descriptor server(socket(AF_UNIX, SOCK_DGRAM, 0));
    const descriptor client(socket(AF_UNIX, SOCK_DGRAM, 0));
    ASSERT_EQ(bind_to(server.fd, path), 0);
    ASSERT_EQ(bind_to(client.fd, other_path), 0);
    address to(path);
    iovec piece = {.iov_base = const_cast<char *>("two"), .iov_len = 3};
    msghdr message = {};
    message.msg_name = &to.bytes;
    message.msg_namelen = to.length;
    message.msg_iov = &piece;
    message.msg_iovlen = 1;

    EXPECT_EQ(sendto(client.fd, "one", 3, 0, to.get(), to.length), 3) << strerror(errno);
    EXPECT_EQ(sendmsg(client.fd, &message, 0), 3) << strerror(errno);

    for (const std::string expected : {"one", "two"}) {
        char text[4] = {};
        EXPECT_EQ(told_by([&](sockaddr *told, socklen_t *length) {
                      return static_cast<int>(recvfrom(server.fd, text, 3, 0, told, length));
                  }),
                  other_path);
        EXPECT_EQ(text, expected);
    }
}

TEST_P(Sockets, DoNotTakeAPlaceThatIsTaken) {
    const descriptor first(socket(AF_UNIX, SOCK_STREAM, 0));
    const descriptor second(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind_to(first.fd, path), 0);

    EXPECT_EQ(bind_to(second.fd, path), -1);
    EXPECT_EQ(errno, EADDRINUSE);

    // As a server does at its start, with the same socket.
    ASSERT_EQ(unlink(path.c_str()), 0);
    EXPECT_EQ(bind_to(second.fd, path), 0) << strerror(errno);
    EXPECT_EQ(own_name(second.fd), path);
}

TEST_P(Sockets, AreNotFoundWhereThereIsNone) {
    const descriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
    EXPECT_EQ(connect_to(client.fd, path), -1);
    EXPECT_EQ(errno, ENOENT);

    ASSERT_EQ(std::filesystem::remove(here.folder), true);
    EXPECT_EQ(bind_to(client.fd, path), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(SocketsElsewhere, AreLeftAlone) {
    const descriptor abstract(socket(AF_UNIX, SOCK_STREAM, 0));
    const descriptor unnamed(socket(AF_UNIX, SOCK_STREAM, 0));
    const std::string name = std::string(1, '\0') + "utm_redirection." + std::to_string(getpid());
    ASSERT_EQ(bind_to(abstract.fd, name), 0);
    ASSERT_EQ(listen(abstract.fd, 1), 0);

    EXPECT_EQ(connect_to(unnamed.fd, name), 0) << strerror(errno);
    sockaddr_storage told = {};
    socklen_t length = sizeof(told);
    EXPECT_EQ(getsockname(unnamed.fd, reinterpret_cast<sockaddr *>(&told), &length), 0);
    EXPECT_EQ(length, sizeof(sa_family_t));
}
