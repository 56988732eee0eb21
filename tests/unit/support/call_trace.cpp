#include "tests/unit/support/call_trace.h"

#include "core/debug_log.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "store/store.h"

#include <cstring>
#include <json-c/json.h>
#include <pthread.h>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t *mutex);
int __real_pthread_mutex_unlock(pthread_mutex_t *mutex);
int __real_pthread_rwlock_rdlock(pthread_rwlock_t *lock);
int __real_pthread_rwlock_wrlock(pthread_rwlock_t *lock);
int __real_pthread_rwlock_unlock(pthread_rwlock_t *lock);
int __real_ftruncate(int fd, off_t size);
int __real_fsync(int fd);
int __real_renameat(int old_folder, const char *old_name, int folder, const char *name);
int __real_access(const char *path, int mode);
json_object *__real_json_tokener_parse_ex(json_tokener *tokener, const char *text, int length);
void __real_qsort(void *first, size_t count, size_t size,
                  int (*compare)(const void *a, const void *b));
}

namespace {

struct trace_t {
    std::string text;
    std::vector<std::string> held;
    std::function<void(const std::string &)> before_each;
};

/// The trace that this thread is making, null for none.
thread_local trace_t *trace = nullptr;

void add(const std::string &word) {
    trace_t *making = std::exchange(trace, nullptr);
    if (!making->text.empty() && making->text.back() != '(' && word[0] != ')')
        making->text += ' ';
    making->text += word;
    if (making->before_each)
        making->before_each(word);
    trace = making;
}

void add_taken(const std::string &name) {
    if (trace == nullptr || name.empty())
        return;
    add(name + "(");
    trace->held.push_back(name);
}

void add_given_back(const std::string &name) {
    if (trace == nullptr || name.empty())
        return;
    const bool is_innermost = !trace->held.empty() && trace->held.back() == name;
    add(is_innermost ? ")" : ")" + name);
    std::erase(trace->held, name);
}

/// @return empty for a mutex that is none of the daemon's
std::string name_of(const pthread_mutex_t *mutex) {
    if (mutex == &utm_app_config_mutex.native)
        return "store";
    if (mutex == &utm_app_export_import_mutex.native)
        return "file";
    return mutex == &utm_app_debug_mutex.native ? "debug" : "";
}

bool is_interval(const pthread_rwlock_t *lock) {
    return lock == &utm_export_interval_rwlock.native;
}

bool is_log(int fd) {
    char path[256] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    return readlink(link.c_str(), path, sizeof(path) - 1) > 0 && strcmp(path, debug_log_path) == 0;
}

} // namespace

namespace call_trace {

std::string of(const std::function<void()> &act) {
    return of(act, nullptr);
}

std::string of(const std::function<void()> &act,
               const std::function<void(const std::string &)> &before_each) {
    trace_t made = {{}, {}, before_each};
    trace = &made;
    act();
    trace = nullptr;
    return made.text;
}

void note(const char *word) {
    if (trace != nullptr)
        add(word);
}

void note_write(int fd) {
    if (trace != nullptr)
        add(is_log(fd) ? "log" : "write");
}

} // namespace call_trace

// ---- What the linker puts in place of the calls --------------------------------------------

extern "C" {

int __wrap_pthread_mutex_lock(pthread_mutex_t *mutex) {
    add_taken(name_of(mutex));
    return __real_pthread_mutex_lock(mutex);
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t *mutex) {
    add_given_back(name_of(mutex));
    return __real_pthread_mutex_unlock(mutex);
}

int __wrap_pthread_rwlock_rdlock(pthread_rwlock_t *lock) {
    add_taken(is_interval(lock) ? "interval-read" : "");
    return __real_pthread_rwlock_rdlock(lock);
}

int __wrap_pthread_rwlock_wrlock(pthread_rwlock_t *lock) {
    add_taken(is_interval(lock) ? "interval-write" : "");
    return __real_pthread_rwlock_wrlock(lock);
}

int __wrap_pthread_rwlock_unlock(pthread_rwlock_t *lock) {
    if (trace != nullptr && is_interval(lock) && !trace->held.empty())
        add_given_back(trace->held.back().starts_with("interval") ? trace->held.back()
                                                                  : "interval-read");
    return __real_pthread_rwlock_unlock(lock);
}

int __wrap_ftruncate(int fd, off_t size) {
    call_trace::note("empty");
    return __real_ftruncate(fd, size);
}

int __wrap_fsync(int fd) {
    call_trace::note("flush");
    return __real_fsync(fd);
}

int __wrap_renameat(int old_folder, const char *old_name, int folder, const char *name) {
    call_trace::note("rename");
    return __real_renameat(old_folder, old_name, folder, name);
}

int __wrap_access(const char *path, int mode) {
    if (!std::string_view(path).starts_with(debug_log_directory))
        call_trace::note("look");
    return __real_access(path, mode);
}

json_object *__wrap_json_tokener_parse_ex(json_tokener *tokener, const char *text, int length) {
    call_trace::note("parse");
    return __real_json_tokener_parse_ex(tokener, text, length);
}

void __wrap_qsort(void *first, size_t count, size_t size,
                  int (*compare)(const void *a, const void *b)) {
    call_trace::note("sort");
    __real_qsort(first, count, size, compare);
}

} // extern "C"
