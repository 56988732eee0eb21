#include "tests/daemon/support/processes.h"

#include "sim/harness/files.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/resource.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

std::string proc_path(pid_t pid, const char *name) {
    return "/proc/" + std::to_string(pid) + "/" + name;
}

/// What of a process's or a thread's `stat` is looked at.
struct process_figures {
    int parent = -1;
    unsigned long own_ticks = 0;
    unsigned long kernel_ticks = 0;
};

/// @param path  the file `stat` of a process or of one of its threads
process_figures figures_in(const std::string &path) {
    process_figures figures;
    // "pid (name) state ppid ...": the name may hold anything, so look behind its last bracket.
    const std::string text = sim_read_file(path);
    const size_t bracket = text.rfind(')');
    if (bracket != std::string::npos)
        sscanf(text.c_str() + bracket, ") %*c %d %*d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu",
               &figures.parent, &figures.own_ticks, &figures.kernel_ticks);
    return figures;
}

/// The names of a directory's entries that are numbers.
std::set<int> numbers_in(const std::string &directory) {
    std::set<int> numbers;
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos)
            numbers.insert(atoi(name.c_str()));
    }
    return numbers;
}

/// @param directory  a thread's, below /proc
std::string activity_in(const std::string &directory) {
    std::string text;
    for (const char *name : {"wchan", "syscall"})
        for (const std::string &line : sim_split_lines(sim_read_file(directory + name)))
            text += std::string("  ") + name + ": " + line + "\n";
    for (const std::string &line : sim_split_lines(sim_read_file(directory + "status")))
        for (const char *key : {"Name:", "State:", "SigPnd:", "ShdPnd:", "SigBlk:"})
            if (line.rfind(key, 0) == 0)
                text += "  " + line + "\n";
    return text;
}

} // namespace

std::string descriptor_target(pid_t pid, int fd) {
    std::error_code error;
    return fs::read_symlink(proc_path(pid, "fd/") + std::to_string(fd), error);
}

std::set<int> open_descriptors(pid_t pid) {
    return numbers_in(proc_path(pid, "fd"));
}

int next_descriptor(pid_t pid) {
    const std::set<int> open = open_descriptors(pid);
    int lowest = 0;
    while (open.count(lowest) != 0)
        ++lowest;
    return lowest;
}

std::set<pid_t> children_of(pid_t pid) {
    std::set<pid_t> children;
    for (const pid_t other : numbers_in("/proc"))
        if (figures_in(proc_path(other, "stat")).parent == pid)
            children.insert(other);
    return children;
}

std::string activity_of(pid_t pid) {
    std::string text;
    for (const int thread : numbers_in(proc_path(pid, "task"))) {
        const std::string directory = proc_path(pid, "task/") + std::to_string(thread) + "/";
        text += "process " + std::to_string(pid) + " thread " + std::to_string(thread) + "\n" +
                activity_in(directory);
    }
    for (const pid_t child : children_of(pid))
        text += activity_of(child);
    return text;
}

std::chrono::milliseconds side_threads_time(pid_t pid) {
    unsigned long ticks = 0;
    for (const int thread : numbers_in(proc_path(pid, "task"))) {
        const process_figures figures =
            figures_in(proc_path(pid, "task/") + std::to_string(thread) + "/stat");
        if (thread != pid)
            ticks += figures.own_ticks + figures.kernel_ticks;
    }
    const auto per_second = static_cast<unsigned long>(sysconf(_SC_CLK_TCK));
    return std::chrono::milliseconds(ticks * 1000 / per_second);
}

bool limit_descriptors(pid_t pid, int first_refused) {
    rlimit limit = {};
    if (prlimit(pid, RLIMIT_NOFILE, nullptr, &limit) != 0)
        return false;
    limit.rlim_cur = static_cast<rlim_t>(first_refused);
    return prlimit(pid, RLIMIT_NOFILE, &limit, nullptr) == 0;
}

long resident_kib(pid_t pid) {
    // Where the emulator puts a program of 64 bits, its libraries, heap and stacks.
    constexpr unsigned long guest_begin = 0x40'0000'0000;
    constexpr unsigned long guest_end = 0x60'0000'0000;
    const bool is_emulated = sizeof UTM_EMULATOR > 1;
    long sum = 0;
    bool counts = false;
    for (const std::string &line : sim_split_lines(sim_read_file(proc_path(pid, "smaps")))) {
        unsigned long begin = 0;
        long kib = 0;
        if (sscanf(line.c_str(), "%lx-%*x ", &begin) == 1)
            counts = !is_emulated || (begin >= guest_begin && begin < guest_end);
        else if (counts && sscanf(line.c_str(), "Rss: %ld kB", &kib) == 1)
            sum += kib;
    }
    return sum;
}
