#include "sim/harness/program.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

using moment = steady_clock::time_point;

/// A pipe's two ends, closed with their owner.
struct pipe_ends {
    int read = -1;
    int write = -1;

    pipe_ends() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            return;
        read = ends[0];
        write = ends[1];
    }
    pipe_ends(const pipe_ends &) = delete;
    pipe_ends &operator=(const pipe_ends &) = delete;
    ~pipe_ends() {
        close_end(&read);
        close_end(&write);
    }

    static void close_end(int *end) {
        if (*end >= 0)
            close(*end);
        *end = -1;
    }
};

volatile sig_atomic_t gets_signals = 0;

void pass_on(int signal_number) {
    if (gets_signals > 0)
        kill(static_cast<pid_t>(gets_signals), signal_number);
}

sim_exit describe(int wait_status) {
    sim_exit how = {.ended = true};
    if (WIFEXITED(wait_status))
        how.status = WEXITSTATUS(wait_status);
    else
        how.signal = WTERMSIG(wait_status);
    return how;
}

sim_timeout timeout_until(moment deadline) {
    auto left = duration_cast<milliseconds>(deadline - steady_clock::now());
    return {std::max(left, milliseconds(0))};
}

[[noreturn]] void exec_child(const std::vector<std::string> &command_line,
                             const std::function<void()> &in_child, int out, int err) {
    int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (in_child)
        in_child();
    sim_exec(command_line);
}

/// Reads a piece; at the end, or when it cannot go on, the end is closed.
void read_piece(int *end, std::string *text) {
    char piece[4096];
    ssize_t got = read(*end, piece, sizeof(piece));
    if (got > 0)
        text->append(piece, static_cast<size_t>(got));
    else if (got == 0 || errno != EINTR)
        pipe_ends::close_end(end);
}

/// Reads both pipes side by side: a program that waits for room in one of them does not end.
void collect(int *out, int *err, sim_outcome *of, moment deadline) {
    while (*out >= 0 || *err >= 0) {
        // A descriptor below zero is passed over.
        pollfd ends[] = {{.fd = *out, .events = POLLIN, .revents = 0},
                         {.fd = *err, .events = POLLIN, .revents = 0}};
        auto left = timeout_until(deadline).limit.count();
        if (left <= 0)
            return;
        if (poll(ends, 2, static_cast<int>(left)) <= 0)
            continue; // a signal, or the time is up: the clock tells
        if (ends[0].revents != 0)
            read_piece(out, &of->out);
        if (ends[1].revents != 0)
            read_piece(err, &of->err);
    }
}

pid_t parent_of(pid_t pid) {
    // "pid (name) state ppid": the name may hold anything, so look behind its last bracket.
    std::string status = sim_read_file("/proc/" + std::to_string(pid) + "/stat");
    size_t bracket = status.rfind(')');
    int parent = -1;
    if (bracket == std::string::npos || sscanf(status.c_str() + bracket, ") %*c %d", &parent) != 1)
        return -1;
    return parent;
}

} // namespace

[[noreturn]] static void exec_through(const char *emulator,
                                      const std::vector<std::string> &command_line) {
    std::vector<char *> arguments;
    if (emulator[0] != '\0')
        arguments.push_back(const_cast<char *>(emulator));
    for (const std::string &word : command_line)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    perror(arguments[0]);
    _exit(127);
}

void sim_exec(const std::vector<std::string> &command_line) {
    exec_through(SIM_EMULATOR, command_line);
}

void sim_exec_own(const std::vector<std::string> &command_line) {
    exec_through(SIM_OWN_EMULATOR, command_line);
}

sim_exit sim_reap(pid_t pid, sim_timeout timeout) {
    int wait_status = 0;
    bool ended = sim_wait_for([&] { return waitpid(pid, &wait_status, WNOHANG) == pid; }, timeout);
    return ended ? describe(wait_status) : sim_exit{};
}

sim_outcome sim_run(const std::vector<std::string> &command_line,
                    const std::function<void()> &in_child, sim_timeout timeout) {
    const moment deadline = steady_clock::now() + timeout.limit;
    sim_outcome outcome;
    pipe_ends out;
    pipe_ends err;
    pid_t pid = fork();
    if (pid < 0)
        return outcome;
    if (pid == 0)
        exec_child(command_line, in_child, out.write, err.write);
    pipe_ends::close_end(&out.write);
    pipe_ends::close_end(&err.write);
    collect(&out.read, &err.read, &outcome, deadline);
    outcome.how = sim_reap(pid, timeout_until(deadline));
    if (!outcome.how.ended) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    return outcome;
}

void sim_leave_signals_to(pid_t process) {
    gets_signals = process;
    signal(SIGINT, SIG_IGN);
    signal(SIGQUIT, SIG_IGN);
    signal(SIGTERM, pass_on);
    signal(SIGHUP, pass_on);
}

std::set<pid_t> sim_children() {
    std::set<pid_t> found;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc", error)) {
        pid_t pid = atoi(entry.path().filename().c_str());
        if (pid > 0 && parent_of(pid) == getpid())
            found.insert(pid);
    }
    return found;
}
