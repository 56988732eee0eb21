#include "tests/faults/calls.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <unistd.h>

extern "C" {
int __real_pclose(FILE *pipe);
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *old, size_t size);
void *__real_reallocarray(void *old, size_t count, size_t size);
int __real_open(const char *path, int flags, ...);
int __real_openat(int folder, const char *path, int flags, ...);
ssize_t __real_write(int fd, const void *bytes, size_t size);
int __real_rename(const char *from, const char *to);
int __real_renameat(int from_folder, const char *from, int to_folder, const char *to);
int __real_stat(const char *path, struct stat *status);
int __real_lstat(const char *path, struct stat *status);
int __real_fstat(int fd, struct stat *status);
int __real_fstatat(int folder, const char *path, struct stat *status, int flags);
int __real_access(const char *path, int mode);
#if UTM_COVERAGE
void __gcov_dump();
#endif
}

namespace faults {
namespace {

std::atomic<bool> active{false};
fault chosen;
std::array<std::atomic<int>, calls> counts;

std::atomic<time_t> clock_now{0};
std::function<std::string(const std::string &)> answer_popen;
std::function<void()> act_on_sleep;
std::mutex pipes_lock;
std::set<FILE *> pipes;

/// Threads that the daemon starts are the daemon's.
thread_local bool is_outside = false;

int failed(int error) {
    errno = error;
    return -1;
}

/// The log's own command lines, which run `mkdir`, `touch` and `mv`.
void run_for_the_log(const std::string &line) {
    const size_t path = line.rfind(" /tmp/utm_log");
    if (path == std::string::npos)
        return;
    const std::string last = line.substr(path + 1);
    if (line.starts_with("mkdir "))
        mkdir(last.c_str(), 0755);
    else if (line.starts_with("/bin/touch "))
        close(__real_open(last.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    else if (line.starts_with("/bin/mv "))
        __real_rename(line.substr(8, path - 8).c_str(), last.c_str());
}

/// A stream of a text, whose end shows as a program's would.
FILE *stream_of(const std::string &text) {
    const int fd = memfd_create("reply", MFD_CLOEXEC);
    if (fd < 0 || __real_write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        abort();
    lseek(fd, 0, SEEK_SET);
    return fdopen(fd, "r");
}

} // namespace

const char *name_of(call which) {
    constexpr const char *names[calls] = {"allocation", "json allocation", "popen",  "system",
                                          "open",       "write",           "rename", "stat",
                                          "sync"};
    return names[static_cast<int>(which)];
}

void begin(const fault &what) {
    chosen = what;
    for (std::atomic<int> &count : counts)
        count = 0;
    is_outside = false;
    active = true;
}

void suspend() {
    active = false;
}

void resume() {
    active = true;
}

std::array<int, calls> counted() {
    std::array<int, calls> result = {};
    for (size_t i = 0; i < result.size(); ++i)
        result[i] = counts[i];
    return result;
}

outside::outside() : was_(is_outside) {
    is_outside = true;
}

outside::~outside() {
    is_outside = was_;
}

void set_now(time_t now) {
    clock_now = now;
}

time_t now() {
    return clock_now;
}

void on_popen(std::function<std::string(const std::string &)> answer) {
    answer_popen = std::move(answer);
}

void on_sleep(std::function<void()> act) {
    act_on_sleep = std::move(act);
}

int open_pipes() {
    const std::lock_guard lock(pipes_lock);
    return static_cast<int>(pipes.size());
}

void leave(int status) {
    fflush(nullptr);
#if UTM_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

bool fails(call which) {
    if (!active || is_outside)
        return false;
    const int count = ++counts[static_cast<size_t>(which)];
    if (chosen.nth == 0 || which != chosen.which)
        return false;
    return chosen.onwards ? count >= chosen.nth : count == chosen.nth;
}

} // namespace faults

using faults::call;
using faults::failed;
using faults::fails;

extern "C" {

void *__wrap_malloc(size_t size) {
    return fails(call::allocation) ? nullptr : __real_malloc(size);
}

void *__wrap_calloc(size_t count, size_t size) {
    return fails(call::allocation) ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *old, size_t size) {
    return fails(call::allocation) ? nullptr : __real_realloc(old, size);
}

void *__wrap_reallocarray(void *old, size_t count, size_t size) {
    return fails(call::allocation) ? nullptr : __real_reallocarray(old, count, size);
}

FILE *__wrap_popen(const char *line, const char *) {
    if (fails(call::popen)) {
        errno = EMFILE;
        return nullptr;
    }
    const faults::outside not_the_daemon;
    FILE *pipe = faults::stream_of(faults::answer_popen(line));
    const std::lock_guard lock(faults::pipes_lock);
    faults::pipes.insert(pipe);
    return pipe;
}

int __wrap_pclose(FILE *pipe) {
    const faults::outside not_the_daemon;
    {
        const std::lock_guard lock(faults::pipes_lock);
        if (faults::pipes.erase(pipe) == 0)
            return __real_pclose(pipe);
    }
    return fclose(pipe);
}

int __wrap_system(const char *line) {
    if (fails(call::system))
        return failed(ENOMEM);
    const faults::outside not_the_daemon;
    faults::run_for_the_log(line);
    return 0;
}

int __wrap_open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(call::open) ? failed(EMFILE) : __real_open(path, flags, mode);
}

int __wrap_openat(int folder, const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(call::open) ? failed(EMFILE) : __real_openat(folder, path, flags, mode);
}

ssize_t __wrap_write(int fd, const void *bytes, size_t size) {
    return fails(call::write) ? failed(ENOSPC) : __real_write(fd, bytes, size);
}

int __wrap_rename(const char *from, const char *to) {
    return fails(call::rename) ? failed(EIO) : __real_rename(from, to);
}

int __wrap_renameat(int from_folder, const char *from, int to_folder, const char *to) {
    return fails(call::rename) ? failed(EIO) : __real_renameat(from_folder, from, to_folder, to);
}

int __wrap_stat(const char *path, struct stat *status) {
    return fails(call::stat) ? failed(EIO) : __real_stat(path, status);
}

int __wrap_lstat(const char *path, struct stat *status) {
    return fails(call::stat) ? failed(EIO) : __real_lstat(path, status);
}

int __wrap_fstat(int fd, struct stat *status) {
    return fails(call::stat) ? failed(EIO) : __real_fstat(fd, status);
}

int __wrap_fstatat(int folder, const char *path, struct stat *status, int flags) {
    return fails(call::stat) ? failed(EIO) : __real_fstatat(folder, path, status, flags);
}

int __wrap_access(const char *path, int mode) {
    return fails(call::stat) ? failed(EIO) : __real_access(path, mode);
}

/// Nothing is lost by a power cut here.
int __wrap_fsync(int) {
    return fails(call::sync) ? failed(EIO) : 0;
}

int __wrap_gettimeofday(timeval *now, void *) {
    *now = {faults::clock_now, 0};
    return 0;
}

/// A router that has run for a day exports.
int __wrap_sysinfo(struct sysinfo *info) {
    info->uptime = 86'400;
    return 0;
}

unsigned __wrap_sleep(unsigned) {
    faults::act_on_sleep();
    return 0;
}

int __wrap_send_utm_notify_event(const void *) {
    return 0;
}

int __wrap_send_utm_notify_event_status_changed(int, int) {
    return 0;
}

} // extern "C"
