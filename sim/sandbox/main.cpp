/// The sandbox for people: a shell, or one command, beside the real daemon, its client and the
/// simulated router, in virtual time. scripts/sandbox builds and starts it.

#include "sim/harness/program.h"
#include "sim/harness/sandbox.h"
#include "sim/router/router_dir.h"
#include "sim/router/scenario.h"
#include "sim/sandbox/household.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Central European time written out: the machine may have no time zone files.
constexpr char default_zone[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char default_start[] = "2030-03-15 16:59";

constexpr char usage[] =
    "usage: sandbox [OPTION]... [COMMAND [ARGUMENT]...]\n"
    "  A shell, or one command, beside the real daemon and a simulated router.\n"
    "  --scenario FILE         what the household does (sim/README.md); none: nobody does "
    "anything\n"
    "  --start 'DATE HH:MM'    when it begins, in local time (TZ); 2030-03-15 16:59 unless told\n"
    "  --no-daemon             begin without the daemon\n"
    "  --which                 only say by which way this machine has a sandbox\n";

constexpr char greeting[] =
    "The real daemon runs here, on a simulated router, in virtual time. Try:\n"
    "  utm_appctl status          the client\n"
    "  tick 60                    an hour passes\n"
    "  clock                      what time it is\n"
    "  journal                    what has reached the router\n"
    "  simrouter blocked          what is blocked now\n"
    "  daemon stop; daemon start  a restart\n"
    "/tmp and the control socket are the sandbox's own. Leave with exit.\n";

struct sandbox_wish {
    std::string scenario = SANDBOX_SCENARIO;
    std::string start = default_start;
    bool has_daemon = true;
    bool says_which = false;
    std::vector<std::string> command = {};
};

[[noreturn]] void fail(const std::string &why) {
    fprintf(stderr, "sandbox: %s\n", why.c_str());
    exit(1);
}

sandbox_wish read_arguments(int argc, char **argv) {
    enum { scenario = 1, start, no_daemon, which, help };
    const option options[] = {{"scenario", required_argument, nullptr, scenario},
                              {"start", required_argument, nullptr, start},
                              {"no-daemon", no_argument, nullptr, no_daemon},
                              {"which", no_argument, nullptr, which},
                              {"help", no_argument, nullptr, help},
                              {}};
    sandbox_wish wish;
    // Words after the command belong to the command.
    for (int found = 0; (found = getopt_long(argc, argv, "+", options, nullptr)) != -1;) {
        if (found == scenario)
            wish.scenario = optarg;
        else if (found == start)
            wish.start = optarg;
        else if (found == no_daemon)
            wish.has_daemon = false;
        else if (found == which)
            wish.says_which = true;
        else {
            fputs(usage, found == help ? stdout : stderr);
            exit(found == help ? 0 : 2);
        }
    }
    wish.command.assign(argv + optind, argv + argc);
    return wish;
}

/// @return what stays in sight: the sources and the build, and what the command names below /tmp
std::vector<std::string> kept_paths(const sandbox_wish &wish) {
    std::vector<std::string> keep = {SANDBOX_SOURCE_DIR, sim_build_directory()};
    std::vector<std::string> named = wish.command;
    named.push_back(wish.scenario);
    for (const std::string &word : named) {
        char path[PATH_MAX];
        if (realpath(word.c_str(), path) != nullptr && strncmp(path, "/tmp/", 5) == 0)
            keep.push_back(path);
    }
    return keep;
}

time_t start_time(const std::string &text) {
    tm fields = {};
    const char *rest = strptime(text.c_str(), "%Y-%m-%d %H:%M", &fields);
    if (rest == nullptr || *rest != '\0')
        fail("a start is written like '" + std::string(default_start) + "', not '" + text + "'");
    fields.tm_isdst = -1;
    return mktime(&fields);
}

/// @return the file's text; one that nobody could play ends the program
std::string checked_scenario(const std::string &path) {
    scenario read;
    std::string why;
    const std::string text = sim_read_file(path);
    if (text.empty())
        fail(path + " cannot be read, or is empty");
    if (!scenario_read(path, &read, &why))
        fail(why);
    return text;
}

/// Lays a scenario's household file, where it has one beside it, to where the client looks for it.
bool lay_household_file(std::string scenario) {
    const std::string ending = ".scenario";
    if (!scenario.ends_with(ending))
        return true;
    scenario.replace(scenario.size() - ending.size(), ending.size(), ".household.json");
    const std::string text = sim_read_file(scenario);
    return text.empty() || sim_write_file(getenv("UTM_APPCTL_HOUSEHOLD"), text);
}

void make_household(const sandbox_wish &wish, sim_clock *clock, sim_daemon_options *options) {
    std::string household;
    if (wish.scenario != "none")
        household = checked_scenario(wish.scenario);
    // The router provides the usage file's folder; the daemon never makes it.
    if (mkdir(household_router, 0777) != 0 || mkdir("/tmp/ApplicationData", 0777) != 0 ||
        !sim_write_file(household_file("scenario"), household) ||
        !lay_household_file(wish.scenario) ||
        !sim_clock_create(clock, household_file("clock"), start_time(wish.start)))
        fail(std::string("cannot prepare ") + household_router + ": " + strerror(errno));
    *options = sim_built_options(household_router);
    options->clock = clock;
    options->time_zone = getenv("TZ");
}

std::string end_text(int wait_status) {
    if (WIFSIGNALED(wait_status))
        return "signal " + std::to_string(WTERMSIG(wait_status)) + "\n";
    return "exit status " + std::to_string(WEXITSTATUS(wait_status)) + "\n";
}

/// Notes how the daemon ended; other orphans of the sandbox end unnoticed.
void note_end(pid_t ended, int wait_status) {
    if (atoi(sim_read_file(household_file("daemon.pid")).c_str()) != ended)
        return;
    if (!sim_write_file(household_file("daemon.exit"), end_text(wait_status)) ||
        unlink(household_file("daemon.pid").c_str()) != 0)
        perror("sandbox: daemon.exit");
}

/// Reaps whatever ends until `awaited` does.
/// @return its wait status
int reap_until(pid_t awaited) {
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(-1, &status, 0);
        if (ended == awaited)
            return status;
        if (ended > 0)
            note_end(ended, status);
        else if (errno == ECHILD)
            return sim_lost_status;
    }
}

pid_t start_command(std::vector<std::string> command, const sim_daemon_options &options) {
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    std::vector<char *> arguments;
    for (std::string &word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    sim_set_environment(options);
    // What is preloaded into programs that an emulator runs is of no use to this machine's.
    if (SANDBOX_EMULATES)
        unsetenv("LD_PRELOAD");
    setenv("PATH", (std::string(SANDBOX_COMMANDS ":") + getenv("PATH")).c_str(), 1);
    execvp(arguments[0], arguments.data());
    const int reason = errno;
    perror(arguments[0]);
    _exit(reason == ENOENT ? 127 : 126);
}

std::vector<std::string> shell() {
    const char *wanted = getenv("SHELL");
    puts(sim_sandbox_way().c_str());
    fputs(greeting, stdout);
    fflush(stdout);
    return {wanted != nullptr && access(wanted, X_OK) == 0 ? wanted : "/bin/sh"};
}

int run_command(const sandbox_wish &wish, const sim_daemon_options &options) {
    const pid_t pid = start_command(wish.command.empty() ? shell() : wish.command, options);
    if (pid < 0)
        fail(std::string("cannot start a process: ") + strerror(errno));
    // The sandbox ends when its command does, so that the daemon is always stopped.
    sim_leave_signals_to(pid);
    const int status = reap_until(pid);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

/// The last daemon is stopped as a router stops it.
bool stop_daemon() {
    sim_daemon daemon;
    daemon.pid = household_daemon();
    return daemon.pid < 0 || sim_daemon_stop(&daemon).ended;
}

} // namespace

int main(int argc, char **argv) {
    const sandbox_wish wish = read_arguments(argc, argv);
    setenv("TZ", default_zone, 0);
    sim_enter_sandbox(argv, kept_paths(wish));
    if (wish.says_which)
        return puts(sim_sandbox_way().c_str()) < 0;
    sim_clock clock;
    sim_daemon_options options;
    make_household(wish, &clock, &options);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (wish.has_daemon && !household_start_daemon(options))
        fail("the daemon does not start");
    int status = run_command(wish, options);
    if (!stop_daemon()) {
        fputs("sandbox: the daemon does not stop\n", stderr);
        status = 1;
    }
    const std::string reports = sim_sanitizer_reports(household_router);
    if (!reports.empty()) {
        fputs(reports.c_str(), stderr);
        status = 1;
    }
    return status;
}
