#include "sim/harness/daemon_process.h"

#include "sim/harness/preload.h"
#include "sim/preload/clock_page.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A sanitized daemon's standard error is the null device, so its runtime reports to a file.
void set_sanitizer_options(const std::string &router_dir) {
    const std::string log = "log_path=" + sim_outside(router_dir) + "/sanitizer";
    sim_accept_preload();
    sim_add_to_variable("ASAN_OPTIONS", ':', log);
    sim_add_to_variable("UBSAN_OPTIONS", ':', "print_stacktrace=1:" + log);
    sim_add_to_variable("TSAN_OPTIONS", ':', log);
}

pid_t launch(const sim_daemon_options &options) {
    pid_t pid = fork();
    if (pid != 0)
        return pid;
    sim_set_environment(options);
    setenv(SIM_SLEEPER_VARIABLE, "1", 1);
    if (options.in_child)
        options.in_child();
    std::vector<std::string> command_line = {options.binary};
    command_line.insert(command_line.end(), options.arguments.begin(), options.arguments.end());
    sim_exec(command_line);
}

/// musl's `daemon` forks twice: what is still in our session, or leads its own, is about to fork
/// and end. glibc's forks once.
bool is_on_its_way(pid_t pid) {
    return SIM_DAEMON_FORKS_TWICE && (getsid(pid) == getsid(0) || getsid(pid) == pid);
}

/// The orphan that the starter left is ours from the moment the starter has ended.
pid_t adopt_new_child(const std::set<pid_t> &before, sim_timeout timeout) {
    pid_t found = -1;
    bool adopted = sim_wait_for(
        [&] {
            for (pid_t pid : sim_children())
                if (before.count(pid) == 0 && !is_on_its_way(pid))
                    found = pid;
            return found > 0 || sim_children() == before;
        },
        timeout);
    return adopted ? found : -1;
}

} // namespace

void sim_set_environment(const sim_daemon_options &options) {
    const char *old_path = getenv("PATH");
    std::string path = options.fakes + ":" + (old_path != nullptr ? old_path : "/usr/bin:/bin");
    setenv("PATH", path.c_str(), 1);
    setenv("TZ", options.time_zone.c_str(), 1);
    setenv("UTM_SIM_DIR", options.router_dir.c_str(), 1);
    set_sanitizer_options(options.router_dir);
    sim_preload(options.preload, options.router_dir + "/preload.so");
    if (options.clock != nullptr)
        setenv(SIM_CLOCK_VARIABLE, options.clock->path.c_str(), 1);
    for (const auto &[name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
}

sim_daemon_options sim_built_options(const std::string &router_dir) {
    return {.binary = SIM_BUILT_DAEMON,
            .fakes = SIM_BUILT_FAKES,
            .router_dir = router_dir,
            .preload = SIM_TESTED_PRELOAD};
}

std::string sim_build_directory() {
    return SIM_BUILD_DIRECTORY;
}

sim_daemon::~sim_daemon() {
    if (pid > 0)
        sim_daemon_kill(this);
}

bool sim_daemon_start(sim_daemon *daemon, const sim_daemon_options &options, sim_timeout timeout) {
    daemon->pid = daemon->starter_status = -1;
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (options.clock != nullptr)
        sim_clock_forget_sleeper(options.clock);
    std::set<pid_t> before = sim_children();
    pid_t starter = launch(options);
    if (starter < 0)
        return false;
    sim_exit how = sim_reap(starter, timeout);
    if (!how.ended) {
        kill(starter, SIGKILL);
        waitpid(starter, nullptr, 0);
        return false;
    }
    daemon->starter_status = how.status;
    daemon->pid = daemon->starter_status == 0 ? adopt_new_child(before, timeout) : -1;
    return daemon->pid > 0;
}

sim_exit sim_daemon_wait_exit(sim_daemon *daemon, sim_timeout timeout) {
    if (daemon->pid <= 0)
        return {};
    sim_exit how = sim_reap(daemon->pid, timeout);
    if (how.ended)
        daemon->pid = -1;
    return how;
}

sim_exit sim_daemon_stop(sim_daemon *daemon, sim_timeout timeout) {
    const sim_timeout between_signals = {std::chrono::milliseconds(20)};
    sim_exit how;
    bool gone = sim_wait_for(
        [&] {
            if (!sim_daemon_signal(*daemon, SIGINT))
                return true;
            how = sim_daemon_wait_exit(daemon, between_signals);
            return how.ended;
        },
        timeout);
    return gone ? how : sim_exit{};
}

sim_exit sim_daemon_kill(sim_daemon *daemon) {
    if (!sim_daemon_signal(*daemon, SIGKILL))
        return {};
    return sim_daemon_wait_exit(daemon);
}

bool sim_daemon_signal(const sim_daemon &daemon, int signal_number) {
    return daemon.pid > 0 && kill(daemon.pid, signal_number) == 0;
}

std::string sim_sanitizer_reports(const std::string &router_dir) {
    std::string reports;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(router_dir, error))
        if (entry.path().filename().string().rfind("sanitizer.", 0) == 0)
            reports += sim_read_file(entry.path());
    return reports;
}
