#include "tests/lib/world.h"

#include "core/debug_log.h"
#include "core/owners.h"
#include "format/protocol.h"
#include "notify/qvutm_notify.h"
#include "persist/export_schedule.h"
#include "store/store.h"
#include "tests/unit/support/call_trace.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <unistd.h>
#include <utility>

extern "C" {
int __real_system(const char *line);
int __real_pclose(FILE *pipe);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *old, size_t size);
ssize_t __real_write(int fd, const void *bytes, size_t size);
ssize_t __real_read(int fd, void *bytes, size_t size);
ssize_t __real_send(int fd, const void *bytes, size_t size, int flags);
int __real_stat(const char *path, struct stat *status);
int __real_fstatat(int folder, const char *path, struct stat *status, int flags);
int __real_lstat(const char *path, struct stat *status);
int __real_select(int descriptors, fd_set *read, fd_set *write, fd_set *except, timeval *timeout);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          world::thread_body_t *body, void *argument);
}

namespace {

/// What is in the way of bytes that are given out.
struct disturbance_t {
    int interruptions;
    size_t most; ///< bytes a call, 0 for any number
};

struct state_t {
    std::string trace;
    size_t log_traced = 0; ///< bytes of the log file that are in the trace already
    time_t now = world::default_now;
    std::function<int(const std::string &)> answer_system;
    std::function<std::string(const std::string &)> answer_popen;
    std::function<void(unsigned)> answer_sleep;
    std::function<int(int, const timeval &)> answer_select;
    std::function<int(const pthread_attr_t *, world::thread_body_t *, void *)> answer_thread;
    bool intercept_log_commands = false;
    int popen_until_failure = 0;
    int allocations = 0;
    int allocation_to_fail = 0;
    bool fail_onwards = false;
    int selects_left = -1; ///< until one fails; -1 for any number
    long uptime = 86'400;
    int sysinfo_result = 0;
    std::set<FILE *> pipes;
    disturbance_t write = {0, 0};
    disturbance_t read = {0, 0};
    disturbance_t send = {0, 0};
    std::function<void(const std::string &)> act_after_stat;
    std::function<int(struct stat *)> change_lstat;
};

state_t state;

/// Writes what the log has gained into the trace, so that both keep one order.
void record_log() {
    const std::string text = world::log();
    if (text.size() < state.log_traced)
        state.log_traced = 0;
    std::istringstream lines(text.substr(state.log_traced));
    state.log_traced = text.size();
    for (std::string line; std::getline(lines, line);)
        state.trace += "log " + line + "\n";
}

void record(const std::string &line) {
    record_log();
    state.trace += line + "\n";
}

bool is_log_command(const std::string &line) {
    return line.starts_with("mkdir -p /tmp/utm_log") ||
           line.starts_with("/bin/touch /tmp/utm_log") || line.starts_with("/bin/mv /tmp/utm_log");
}

bool is_allocation_to_fail() {
    ++state.allocations;
    if (state.allocation_to_fail == 0)
        return false;
    return state.fail_onwards ? state.allocations >= state.allocation_to_fail
                              : state.allocations == state.allocation_to_fail;
}

/// @return whether a call fails, with `errno` set
bool is_interrupted(disturbance_t *disturbance) {
    if (disturbance->interruptions == 0)
        return false;
    --disturbance->interruptions;
    errno = EINTR;
    return true;
}

/// @return the bytes that a call takes
size_t taken(const disturbance_t &disturbance, size_t size) {
    return disturbance.most == 0 ? size : std::min(size, disturbance.most);
}

/// A readable stream of a text of any length.
FILE *stream_of(const std::string &text) {
    const int fd = memfd_create("reply", MFD_CLOEXEC);
    if (fd < 0 || __real_write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        abort();
    lseek(fd, 0, SEEK_SET);
    return fdopen(fd, "r");
}

void empty_log() {
    std::filesystem::remove_all(debug_log_directory);
    std::filesystem::create_directory(debug_log_directory);
    // The machine's umask is no part of a test.
    std::filesystem::permissions(debug_log_directory, std::filesystem::perms(0755));
    std::ofstream{debug_log_path};
}

} // namespace

// ---- What the linker puts in place of these calls ----------------------------------------

extern "C" {

int __wrap_system(const char *line) {
    if (is_log_command(line) && !state.intercept_log_commands)
        return __real_system(line);
    call_trace::note("run");
    record(std::string("run ") + line);
    return state.answer_system ? state.answer_system(line) : 0;
}

FILE *__wrap_popen(const char *line, const char *) {
    call_trace::note("query");
    if (state.popen_until_failure > 0 && --state.popen_until_failure == 0) {
        record(std::string("query failed ") + line);
        return nullptr;
    }
    record(std::string("query ") + line);
    FILE *pipe = stream_of(state.answer_popen ? state.answer_popen(line) : std::string());
    state.pipes.insert(pipe);
    return pipe;
}

int __wrap_pclose(FILE *pipe) {
    if (state.pipes.erase(pipe) == 0)
        return __real_pclose(pipe);
    call_trace::note(feof(pipe) != 0 ? "reap" : "cut");
    return fclose(pipe);
}

int __wrap_gettimeofday(timeval *now, void *) {
    call_trace::note("clock");
    *now = {state.now, 0};
    return 0;
}

/// The daemon gives its line as the one argument of "%s".
void __wrap_syslog(int, const char *, const char *line) {
    record(std::string("syslog ") + line);
}

/// What a fortified program calls instead.
void __wrap___syslog_chk(int, int, const char *, const char *line) {
    record(std::string("syslog ") + line);
}

int __wrap_sysinfo(struct sysinfo *info) {
    call_trace::note("uptime");
    if (state.sysinfo_result == 0)
        info->uptime = static_cast<decltype(info->uptime)>(state.uptime); // unsigned in musl
    return state.sysinfo_result;
}

ssize_t __wrap_write(int fd, const void *bytes, size_t size) {
    call_trace::note_write(fd);
    if (is_interrupted(&state.write))
        return -1;
    return __real_write(fd, bytes, taken(state.write, size));
}

ssize_t __wrap_read(int fd, void *bytes, size_t size) {
    if (is_interrupted(&state.read))
        return -1;
    return __real_read(fd, bytes, taken(state.read, size));
}

ssize_t __wrap_send(int fd, const void *bytes, size_t size, int flags) {
    call_trace::note(size == UTM_APP_CONFIG_CMD_SIZE ? "request" : "reply");
    if (is_interrupted(&state.send))
        return -1;
    return __real_send(fd, bytes, taken(state.send, size), flags);
}

int __wrap_stat(const char *path, struct stat *status) {
    const int result = __real_stat(path, status);
    if (state.act_after_stat)
        state.act_after_stat(path);
    return result;
}

int __wrap_fstatat(int folder, const char *path, struct stat *status, int flags) {
    const int result = __real_fstatat(folder, path, status, flags);
    if (state.act_after_stat)
        state.act_after_stat(path);
    return result;
}

int __wrap_lstat(const char *path, struct stat *status) {
    struct stat found = {};
    int result = __real_lstat(path, &found);
    if (result == 0 && state.change_lstat)
        result = state.change_lstat(&found);
    if (result == 0)
        *status = found;
    return result;
}

void *__wrap_calloc(size_t count, size_t size) {
    return is_allocation_to_fail() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *old, size_t size) {
    return is_allocation_to_fail() ? nullptr : __real_realloc(old, size);
}

unsigned __wrap_sleep(unsigned seconds) {
    if (state.answer_sleep)
        state.answer_sleep(seconds);
    return 0;
}

int __wrap_select(int descriptors, fd_set *read, fd_set *write, fd_set *except, timeval *timeout) {
    if (state.answer_select)
        return state.answer_select(descriptors, *timeout);
    if (state.selects_left == 0) {
        errno = EBADF;
        return -1;
    }
    if (state.selects_left > 0)
        --state.selects_left;
    return __real_select(descriptors, read, write, except, timeout);
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          world::thread_body_t *body, void *argument) {
    if (state.answer_thread)
        return state.answer_thread(attributes, body, argument);
    return __real_pthread_create(thread, attributes, body, argument);
}

int __wrap_send_utm_notify_event(const utm_notify_event_t *event) {
    call_trace::note("event");
    utm_notify_event_t expected = {};
    expected.type = 128;
    expected.profile_id = event->profile_id;
    expected.action = event->action;
    const bool is_clean = memcmp(event, &expected, sizeof(expected)) == 0;
    record(std::string("event ") + (event->action == 0 ? "block" : "unblock") + " profile " +
           std::to_string(event->profile_id) + (is_clean ? "" : " (with stray bytes)"));
    return 0;
}

int __wrap_send_utm_notify_event_status_changed(int feature, int status) {
    call_trace::note("status");
    record("status_changed " + std::to_string(feature) + " " + std::to_string(status));
    return 0;
}

} // extern "C"

namespace world {

void reset() {
    static bool is_first = true;
    state.answer_system = nullptr;
    state.intercept_log_commands = false;
    state.fail_onwards = false;
    state.allocation_to_fail = 0;
    if (is_first) {
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_store_init(default_now);
        is_first = false;
    }
    empty_log(); // what the test before has put in its place might be a pipe
    empty_store();
    empty_log();
    set_active(false);
    if (utm_app_debug_set(1) != 0 || utm_app_set_export_interval(30) != 0)
        abort();
    state = {};
    set_zone("UTC");
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_store_init(default_now);
}

std::string trace() {
    record_log();
    return std::exchange(state.trace, {});
}

void quietly(const std::function<void()> &act) {
    const std::string before = trace();
    act();
    trace();
    state.trace = before;
}

std::string log() {
    std::ifstream file(debug_log_path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void set_now(time_t now) {
    state.now = now;
}

void set_zone(const char *zone) {
    setenv("TZ", zone, 1);
    tzset();
}

time_t local(int year, int month, int day, int hour, int minute, int second) {
    tm fields = {};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return mktime(&fields);
}

void on_system(std::function<int(const std::string &)> answer) {
    state.answer_system = std::move(answer);
}

void intercept_log_commands() {
    state.intercept_log_commands = true;
}

void on_popen(std::function<std::string(const std::string &)> answer) {
    state.answer_popen = std::move(answer);
}

void fail_popen(int nth) {
    state.popen_until_failure = nth;
}

void fail_allocation(int nth) {
    state.allocations = 0;
    state.allocation_to_fail = nth;
    state.fail_onwards = false;
}

void fail_allocations_from(int nth) {
    fail_allocation(nth);
    state.fail_onwards = true;
}

int allocations() {
    return state.allocations;
}

void set_uptime(long seconds) {
    state.uptime = seconds;
}

void fail_sysinfo(int result) {
    state.sysinfo_result = result;
}

void on_sleep(std::function<void(unsigned)> answer) {
    state.answer_sleep = std::move(answer);
}

void on_select(std::function<int(int, const timeval &)> answer) {
    state.answer_select = std::move(answer);
}

void end_select_after(int calls) {
    state.selects_left = calls;
}

void disturb_write(int interruptions, size_t most) {
    state.write = {interruptions, most};
}

void disturb_read(int interruptions, size_t most) {
    state.read = {interruptions, most};
}

void disturb_send(int interruptions, size_t most) {
    state.send = {interruptions, most};
}

void after_stat(std::function<void(const std::string &)> act) {
    state.act_after_stat = std::move(act);
}

void on_lstat(std::function<int(struct stat *)> change) {
    state.change_lstat = std::move(change);
}

void on_thread(std::function<int(const pthread_attr_t *, thread_body_t *, void *)> answer) {
    state.answer_thread = std::move(answer);
}

int open_pipes() {
    return static_cast<int>(state.pipes.size());
}

void close_pipes() {
    for (FILE *pipe : state.pipes)
        fclose(pipe);
    state.pipes.clear();
}

} // namespace world
