#include "core/debug_log.h"

#include "core/own_folder.h"
#include "core/owners.h"

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

/// The file in its folder, and the moved-aside one: one older generation is kept.
constexpr char file_name[] = "utm_app_log";
constexpr char moved_aside_name[] = "utm_app_log2";
/// Room for the log's own command lines.
constexpr size_t command_size = 512;
/// Room for a line. The longest holds a file name, and names end at PATH_MAX (4096).
constexpr size_t line_size = 4096 + 128;

/// Read on every line by both threads, written by a command: atomic, so that neither side locks.
std::atomic<int> utm_app_debug_enable{0};

void run(const char *format, const char *path) {
    char command[command_size] = {};
    snprintf(command, sizeof(command), format, path, path);
    // A command that fails leaves no file, and that is all the next step needs to know.
    if (system(command) != 0)
        return;
}

/// How the folder and the file are made, and an oversized file is moved aside.
struct ways_t {
    void (*make_folder)();
    void (*make_file)(int folder);
    void (*move_aside)(int folder);
};

constexpr ways_t by_commands = {
    [] { run("mkdir -p %s", debug_log_directory); },
    [](int) { run("/bin/touch %s", debug_log_path); },
    [](int) { run("/bin/mv %s %s2", debug_log_path); },
};

constexpr int file_flags =
    O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t file_mode = 0666;

/// The same with system calls alone, for the signal handler.
constexpr ways_t by_calls = {
    [] { mkdir(debug_log_directory, 0755); },
    [](int folder) { close(openat(folder, file_name, file_flags, file_mode)); },
    [](int folder) { renameat(folder, file_name, folder, moved_aside_name); },
};

/// Opens the log's folder, which is made when there is none.
/// @return -1 when the line must be dropped, with `errno` set
int open_folder(const ways_t &ways) {
    const int folder = utm_app_open_own_folder(utm_app_log_folder);
    if (folder >= 0 || errno != ENOENT)
        return folder;
    ways.make_folder();
    return utm_app_open_own_folder(utm_app_log_folder);
}

/// Makes sure that there is a file to append to, and that it is not too long.
/// @return false when the line must be dropped
bool prepare_file(int folder, const ways_t &ways) {
    const auto look = [folder](struct stat *status) {
        return fstatat(folder, file_name, status, AT_SYMLINK_NOFOLLOW) == 0;
    };
    struct stat status = {};
    if (!look(&status)) {
        ways.make_file(folder);
        if (!look(&status))
            return false;
    }
    if (S_ISREG(status.st_mode) && status.st_size > debug_log_size_limit)
        ways.move_aside(folder);
    return S_ISREG(status.st_mode);
}

/// Appends a line in one write, so that two threads' lines never mix. Plain descriptors rather
/// than stdio, because a signal handler appends in the same way.
void append(int folder, const char *line, size_t length) {
    const fd_guard file(openat(folder, file_name, file_flags, file_mode));
    struct stat status = {};
    if (file.get() < 0 || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    // A full disk loses the line, as any other failure here does.
    [[maybe_unused]] const ssize_t written = write(file.get(), line, length);
}

/// @return 0, or what kept the folder from being opened
int add(const char *line, size_t length, const ways_t &ways) {
    const fd_guard folder(open_folder(ways));
    if (folder.get() < 0)
        return errno;
    if (prepare_file(folder.get(), ways))
        append(folder.get(), line, length);
    return 0;
}

void write_line(const char *format, va_list arguments) {
    char line[line_size];
    const int length = vsnprintf(line, sizeof(line), format, arguments);
    if (length < 0)
        return;
    const size_t wanted = static_cast<size_t>(length);
    const int error = add(line, wanted < sizeof(line) ? wanted : sizeof(line) - 1, by_commands);
    utm_app_report_own_folder(&utm_app_log_folder, error);
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
    // A folder that may not be used is reported by the next line that comes from elsewhere.
    add(line, strlen(line), by_calls);
    errno = saved_errno;
}
