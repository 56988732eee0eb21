#include "tests/unit/support/usage_file_special.h"

#include "sim/harness/client.h"

#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace usage_file {

pipe_reader_t::pipe_reader_t(const std::string &path) : fd_(-1) {
    if (mkfifo(path.c_str(), 0600) == 0)
        fd_ = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0)
        abort();
}

pipe_reader_t::~pipe_reader_t() {
    close(fd_);
}

std::string pipe_reader_t::available() const {
    std::string text;
    char chunk[4096];
    for (ssize_t n; (n = read(fd_, chunk, sizeof(chunk))) > 0;)
        text.append(chunk, static_cast<size_t>(n));
    return text;
}

bound_socket_t::bound_socket_t(const std::string &path) : fd_(sim_listen(path, 1)) {
    if (fd_ < 0)
        abort();
}

bound_socket_t::~bound_socket_t() {
    close(fd_);
}

namespace {

/// The first words of the calling thread's capabilities.
struct thread_capabilities {
    __user_cap_header_struct header = {.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    __user_cap_data_struct words[_LINUX_CAPABILITY_U32S_3] = {};

    thread_capabilities() {
        if (syscall(SYS_capget, &header, words) != 0)
            abort();
    }
    void set_effective(unsigned effective) {
        words[0].effective = effective;
        if (syscall(SYS_capset, &header, words) != 0)
            abort();
    }
};

} // namespace

unprivileged_t::unprivileged_t() : effective_(0) {
    constexpr unsigned reads_everything = 1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH;
    thread_capabilities mine;
    effective_ = mine.words[0].effective;
    mine.set_effective(effective_ & ~reads_everything);
}

unprivileged_t::~unprivileged_t() {
    thread_capabilities().set_effective(effective_);
}

size_t open_descriptors() {
    DIR *directory = opendir("/proc/self/fd");
    if (directory == nullptr)
        abort();
    size_t count = 0;
    while (readdir(directory) != nullptr)
        ++count;
    closedir(directory);
    return count;
}

} // namespace usage_file
