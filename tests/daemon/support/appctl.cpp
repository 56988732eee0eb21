#include "tests/daemon/support/appctl.h"

#include "sim/harness/preload.h"
#include "sim/preload/clock_page.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// Both ends of a terminal that leaves line ends as they are.
struct terminal {
    int ours = -1;
    int theirs = -1;

    explicit terminal(int columns) {
        if (columns == 0 || !have_terminals())
            return;
        const int unlocked = 0;
        const auto width = static_cast<unsigned short>(columns);
        const winsize size = {.ws_row = 24, .ws_col = width, .ws_xpixel = 0, .ws_ypixel = 0};
        termios mode = {};
        ours = open("/dev/ptmx", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        ioctl(ours, TIOCSPTLCK, &unlocked);
        theirs = ioctl(ours, TIOCGPTPEER, O_RDWR | O_NOCTTY | O_CLOEXEC);
        tcgetattr(theirs, &mode);
        cfmakeraw(&mode);
        tcsetattr(theirs, TCSANOW, &mode);
        ioctl(theirs, TIOCSWINSZ, &size);
    }
    terminal(const terminal &) = delete;
    terminal &operator=(const terminal &) = delete;
    ~terminal() {
        close(theirs);
        close(ours);
    }

    /// @return what was written to it: at most some thousand bytes, which the system keeps
    std::string text() const {
        std::string all;
        char piece[4096];
        for (;;) {
            const ssize_t got = read(ours, piece, sizeof(piece));
            if (got <= 0)
                return all;
            all.append(piece, static_cast<size_t>(got));
        }
    }
};

void set_environment(const appctl_setting &setting) {
    for (const char *unwanted : {"COLUMNS", "NO_COLOR", "TMPDIR", "LANG", "LC_CTYPE"})
        unsetenv(unwanted);
    setenv("TERM", "xterm", 1);
    setenv("LC_ALL", "C", 1);
    setenv("TZ", "UTC", 1);
    sim_accept_preload();
    sim_preload(UTM_PRELOAD, "/tmp/preload.so");
    if (!setting.clock_path.empty())
        setenv(SIM_CLOCK_VARIABLE, setting.clock_path.c_str(), 1);
    for (const auto &[name, value] : setting.environment)
        setenv(name.c_str(), value.c_str(), 1);
}

/// Prepares the new process for the exec of the client.
void prepare(const appctl_setting &setting, int terminal_fd) {
    if (terminal_fd >= 0)
        dup2(terminal_fd, STDOUT_FILENO);
    set_environment(setting);
    if (setting.in_child)
        setting.in_child();
}

} // namespace

program_end appctl(const std::vector<std::string> &words, const appctl_setting &setting,
                   sim_timeout timeout) {
    std::vector<std::string> command_line = {UTM_APPCTL};
    command_line.insert(command_line.end(), words.begin(), words.end());
    const terminal screen(setting.terminal_columns);
    program_end end = run_program(
        command_line, [&] { prepare(setting, screen.theirs); }, timeout);
    if (screen.ours >= 0)
        end.out = screen.text();
    return end;
}

program_end done(const std::string &out) {
    return {.status = 0, .out = out};
}

program_end fails(int status, const std::string &message) {
    return {.status = status, .err = "utm_appctl: " + message + "\n"};
}

bool have_terminals() {
    const int terminal = open("/dev/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC);
    const bool have_one = terminal >= 0;
    if (have_one)
        close(terminal);
    return have_one;
}
