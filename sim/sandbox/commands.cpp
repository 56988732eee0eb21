/// The commands of a sandbox: one program, which looks at the name that it was called by.

#include "sim/sandbox/household.h"

#include "core/debug_log.h"

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
constexpr long most_minutes = 1'000'000;

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

/// @return the lines that were not seen before; they are from now on
/// @param seen_file  in the router's folder: how many lines were seen
words take_new(words lines, const char *seen_file, bool from_start = false) {
    const std::string path = household_file(seen_file);
    auto seen = static_cast<size_t>(whole_number(sim_read_file(path)));
    const size_t count = lines.size();
    // A log that somebody removed begins anew.
    if (from_start || seen > count)
        seen = 0;
    lines.erase(lines.begin(), lines.begin() + static_cast<ptrdiff_t>(seen));
    if (!sim_write_file(path, std::to_string(count)))
        exit(fail("cannot write " + path));
    return lines;
}

bool is_query(const std::string &line) {
    return line.rfind("ubus ", 0) == 0;
}

/// @return what the daemon has logged; a line that it is writing comes next time
words logged() {
    const std::string text = sim_read_file(debug_log_path);
    return sim_split_lines(text.substr(0, text.rfind('\n') + 1));
}

/// Stamps every line with the present time, whenever it was written.
void tell_news(const sim_clock &clock) {
    const time_t now = sim_clock_now(clock);
    char at[8];
    strftime(at, sizeof(at), "%H:%M", localtime(&now));
    for (const std::string &line : take_new(logged(), "log.read"))
        printf("%s  daemon  %s\n", at, line.c_str());
    for (const std::string &line : take_new(sim_journal(household_router), "journal.read"))
        if (!is_query(line))
            printf("%s  router  %s\n", at, line.c_str());
    // Whoever reads along does not wait for more.
    fflush(stdout);
}

int news(command_world *world, const words &operands) {
    if (!operands.empty())
        return wrong_use;
    tell_news(world->clock);
    return 0;
}

bool read_time(const std::string &text, time_t *when) {
    tm fields = {};
    const char *rest = strptime(text.c_str(), "%Y-%m-%d %H:%M", &fields);
    fields.tm_isdst = -1;
    *when = mktime(&fields);
    return rest != nullptr && *rest == '\0';
}

/// @param when  the next time that the clock shows this time of day
bool read_time_of_day(const std::string &text, time_t now, time_t *when) {
    tm fields = *localtime(&now);
    const char *rest = strptime(text.c_str(), "%H:%M", &fields);
    fields.tm_sec = 0;
    fields.tm_isdst = -1;
    *when = mktime(&fields);
    if (*when <= now) {
        ++fields.tm_mday;
        fields.tm_isdst = -1;
        *when = mktime(&fields);
    }
    return rest != nullptr && *rest == '\0';
}

/// @param end  when the last tick is over
bool read_stretch(const words &operands, time_t now, time_t *end) {
    if (operands.size() == 2 && operands[0] == "until")
        return read_time_of_day(operands[1], now, end) || read_time(operands[1], end);
    const long minutes = operands.empty() ? 1 : whole_number(operands[0]);
    *end = now + tick_seconds * std::clamp(minutes, 0L, most_minutes);
    return operands.size() < 2 && minutes <= most_minutes;
}

int tick(command_world *world, const words &operands) {
    const bool tells = !operands.empty() && operands[0] == "--news";
    const time_t now = sim_clock_now(world->clock);
    time_t end = 0;
    if (!read_stretch(words(operands.begin() + tells, operands.end()), now, &end) || end <= now ||
        end - now > tick_seconds * most_minutes)
        return wrong_use;
    while (sim_clock_now(world->clock) < end) {
        if (household_daemon() < 0)
            return fail("no daemon is running");
        if (!sim_clock_advance(&world->clock, tick_seconds))
            return fail("the daemon does not finish its tick");
        if (tells)
            tell_news(world->clock);
    }
    return 0;
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
    bool from_start = false;
    for (const std::string &option : operands) {
        if (option == "--all")
            from_start = true;
        else if (option == "--queries")
            with_queries = true;
        else
            return wrong_use;
    }
    for (const std::string &line :
         take_new(sim_journal(household_router), "journal.read", from_start))
        if (with_queries || !is_query(line))
            puts(line.c_str());
    return 0;
}

constexpr command commands[] = {
    {"tick",
     "tick [--news] [MINUTES | until 'HH:MM' | until 'DATE HH:MM']\n"
     "                         let minutes pass: a tick of the daemon each",
     tick},
    {"clock", "clock [set 'DATE HH:MM']  show the clock, or let it jump", clock_command},
    {"daemon", "daemon start|stop|kill|pid", daemon_command},
    {"journal", "journal [--all] [--queries]  what has reached the router since last time",
     journal},
    {"news", "news                     what was logged and has reached the router since last time",
     news},
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
