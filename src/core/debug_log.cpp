#include "core/debug_log.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

utm_mutex_t utm_app_debug_mutex;

namespace {

/// The moved-aside file: one older generation is kept.
constexpr char moved_aside_path[] = "/tmp/utm_log/utm_app_log2";
/// Room for the log's own command lines.
constexpr size_t command_size = 512;
/// Room for a line. The longest holds a file name, and names end at PATH_MAX (4096).
constexpr size_t line_size = 4096 + 128;

/// Read on every line by both threads, written by a command: atomic, so that neither side locks.
std::atomic<int> utm_app_debug_enable{0};

bool exists(const char *path) {
    return access(path, F_OK) == 0;
}

/// Says whether the file has outgrown the limit.
/// @return 1 or 0, or -1 when there is no file to write to
int is_oversized() {
    struct stat status = {};
    if (stat(debug_log_path, &status) != 0)
        return -1;
    return status.st_size > debug_log_size_limit ? 1 : 0;
}

void run(const char *format, const char *path) {
    char command[command_size] = {};
    snprintf(command, sizeof(command), format, path, path);
    // A command that fails leaves no file, and that is all the next step needs to know.
    if (system(command) != 0)
        return;
}

/// Makes sure that there is a file to append to, and that it is not too long.
/// @return false when the line must be dropped
bool prepare_file() {
    if (!exists(debug_log_path)) {
        if (!exists(debug_log_directory))
            run("mkdir -p %s", debug_log_directory);
        run("/bin/touch %s", debug_log_path);
    }
    const int oversized = is_oversized();
    if (oversized > 0)
        run("/bin/mv %s %s2", debug_log_path);
    return oversized >= 0;
}

/// The same with system calls alone, for the signal handler.
bool prepare_file_from_signal() {
    if (!exists(debug_log_path)) {
        mkdir(debug_log_directory, 0777);
        close(open(debug_log_path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
    }
    const int oversized = is_oversized();
    if (oversized > 0)
        rename(debug_log_path, moved_aside_path);
    return oversized >= 0;
}

/// Appends a line in one write, so that two threads' lines never mix. Plain descriptors rather
/// than stdio, because a signal handler appends in the same way.
void append(const char *line, size_t length) {
    const int fd = open(debug_log_path, O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0)
        return;
    // A full disk loses the line, as any other failure here does.
    [[maybe_unused]] const ssize_t written = write(fd, line, length);
    close(fd);
}

void write_line(const char *format, va_list arguments) {
    char line[line_size];
    const int length = vsnprintf(line, sizeof(line), format, arguments);
    if (length < 0 || !prepare_file())
        return;
    const size_t wanted = static_cast<size_t>(length);
    append(line, wanted < sizeof(line) ? wanted : sizeof(line) - 1);
}

} // namespace

int utm_app_debug_get() {
    return utm_app_debug_enable.load(std::memory_order_relaxed);
}

int32_t utm_app_debug_set(unsigned value) {
    if (value > 1)
        return -1;
    const mutex_guard lock(utm_app_debug_mutex);
    utm_app_debug_enable.store(static_cast<int>(value), std::memory_order_relaxed);
    return 0;
}

void utm_app_debug_log(const char *format, ...) {
    const int enabled = utm_app_debug_get();
    // A change of the flag that is under way is let through first. The mutex is free again before
    // the file is touched: a slow disk must not hold up the command that switches logging off.
    { const mutex_guard lock(utm_app_debug_mutex); }
    if (enabled == 0)
        return;
    va_list arguments;
    va_start(arguments, format);
    write_line(format, arguments);
    va_end(arguments);
}

void utm_app_log_always(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    write_line(format, arguments);
    va_end(arguments);
}

void utm_app_log_from_signal(const char *line) {
    const int saved_errno = errno;
    if (prepare_file_from_signal())
        append(line, strlen(line));
    errno = saved_errno;
}
