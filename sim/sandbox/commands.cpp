/// The commands of a sandbox: one program, which looks at the name that it was called by.

#include "sim/sandbox/household.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

namespace {

constexpr int wrong_use = 2;
constexpr int tick_seconds = 60;

struct command_world {
    sim_clock clock;
    sim_daemon_options options;
};

using words = std::vector<std::string>;

struct command {
    const char *name;
    const char *synopsis;
    int (*run)(command_world *world, const words &operands);
};

int fail(const std::string &why) {
    fprintf(stderr, "%s: %s\n", program_invocation_short_name, why.c_str());
    return 1;
}

/// @return a whole number that is the word's all, or 0
long whole_number(const std::string &word) {
    char *end = nullptr;
    const long number = strtol(word.c_str(), &end, 10);
    return !word.empty() && *end == '\0' ? number : 0;
}

int tick(command_world *world, const words &operands) {
    const long minutes = operands.empty() ? 1 : whole_number(operands[0]);
    if (operands.size() > 1 || minutes < 1 || minutes > 1'000'000)
        return wrong_use;
    for (long i = 0; i < minutes; ++i) {
        if (household_daemon() < 0)
            return fail("no daemon is running");
        if (!sim_clock_advance(&world->clock, tick_seconds))
            return fail("the daemon does not finish its tick");
    }
    return 0;
}

bool read_time(const std::string &text, time_t *when) {
    tm fields = {};
    const char *rest = strptime(text.c_str(), "%Y-%m-%d %H:%M", &fields);
    fields.tm_isdst = -1;
    *when = mktime(&fields);
    return rest != nullptr && *rest == '\0';
}

int show_clock(const sim_clock &clock) {
    const time_t now = sim_clock_now(clock);
    char text[64];
    strftime(text, sizeof(text), "%a %Y-%m-%d %H:%M:%S %Z", localtime(&now));
    puts(text);
    return 0;
}

int clock_command(command_world *world, const words &operands) {
    if (operands.empty())
        return show_clock(world->clock);
    time_t then = 0;
    if (operands.size() != 2 || operands[0] != "set" || !read_time(operands[1], &then))
        return wrong_use;
    sim_clock_jump(&world->clock, then - sim_clock_now(world->clock));
    return 0;
}

int start_daemon(const command_world &world) {
    if (household_daemon() > 0)
        return fail("it is running already");
    return household_start_daemon(world.options) ? 0 : fail("it does not start");
}

/// What the sandbox's program saw when the daemon ended.
int report_end(const std::string &expected) {
    std::string how;
    const bool is_known = sim_wait_for([&how] {
        how = sim_read_file(household_file("daemon.exit"));
        return !how.empty();
    });
    if (!is_known)
        return fail("nobody knows how it ended");
    return how == expected + "\n" ? 0 : fail(how.substr(0, how.size() - 1));
}

int end_daemon(int signal_number, const std::string &expected) {
    if (household_daemon() < 0)
        return fail("none is running");
    return household_end_daemon(signal_number) ? report_end(expected) : fail("it does not end");
}

int daemon_command(command_world *world, const words &operands) {
    const std::string verb = operands.size() == 1 ? operands[0] : "";
    if (verb == "start")
        return start_daemon(*world);
    if (verb == "stop")
        return end_daemon(SIGINT, "exit status 0");
    if (verb == "kill")
        return end_daemon(SIGKILL, "signal 9");
    if (verb == "pid") {
        const pid_t pid = household_daemon();
        return pid > 0 ? printf("%d\n", pid) * 0 : fail("none is running");
    }
    return wrong_use;
}

int journal(command_world *, const words &operands) {
    bool with_queries = false;
    size_t shown =
        static_cast<size_t>(whole_number(sim_read_file(household_file("journal.read")).c_str()));
    for (const std::string &option : operands) {
        if (option == "--all")
            shown = 0;
        else if (option == "--queries")
            with_queries = true;
        else
            return wrong_use;
    }
    const words lines = sim_journal(household_router);
    for (size_t i = std::min(shown, lines.size()); i < lines.size(); ++i)
        if (with_queries || lines[i].rfind("ubus ", 0) != 0)
            puts(lines[i].c_str());
    return sim_write_file(household_file("journal.read"), std::to_string(lines.size())) ? 0 : 1;
}

constexpr command commands[] = {
    {"tick", "tick [MINUTES]           let minutes pass: a tick of the daemon each", tick},
    {"clock", "clock [set 'DATE HH:MM']  show the clock, or let it jump", clock_command},
    {"daemon", "daemon start|stop|kill|pid", daemon_command},
    {"journal", "journal [--all] [--queries]  what has reached the router since last time",
     journal},
};

int run(const command &wanted, const words &operands) {
    command_world world;
    if (!household_open(&world.clock, &world.options))
        return fail("this is no sandbox: it is for use within scripts/sandbox");
    const int status = wanted.run(&world, operands);
    if (status == wrong_use)
        fprintf(stderr, "usage: %s\n", wanted.synopsis);
    return status;
}

} // namespace

int main(int argc, char **argv) {
    for (const command &known : commands)
        if (strcmp(known.name, program_invocation_short_name) == 0)
            return run(known, words(argv + 1, argv + argc));
    for (const command &known : commands)
        puts(known.synopsis);
    return wrong_use;
}
