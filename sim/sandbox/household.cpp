#include "sim/sandbox/household.h"

#include "sim/preload/clock_page.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

std::string household_file(const char *name) {
    return std::string(household_router) + "/" + name;
}

bool household_open(sim_clock *clock, sim_daemon_options *options) {
    const char *page = getenv(SIM_CLOCK_VARIABLE);
    if (page == nullptr || !sim_clock_attach(clock, page))
        return false;
    *options = sim_built_options(household_router);
    options->clock = clock;
    options->time_zone = getenv("TZ");
    return true;
}

pid_t household_daemon() {
    const pid_t pid = atoi(sim_read_file(household_file("daemon.pid")).c_str());
    return pid > 0 && kill(pid, 0) == 0 ? pid : -1;
}

bool household_start_daemon(const sim_daemon_options &options) {
    sim_daemon daemon;
    unlink(household_file("daemon.exit").c_str());
    if (!sim_daemon_start(&daemon, options))
        return false;
    const bool is_noted =
        sim_write_file(household_file("daemon.pid"), std::to_string(daemon.pid) + "\n");
    // It lives on when this process ends.
    daemon.pid = -1;
    return is_noted && sim_clock_wait_asleep(*options.clock);
}

bool household_end_daemon(int signal_number) {
    return sim_wait_for([signal_number] {
        const pid_t pid = household_daemon();
        if (pid < 0)
            return true;
        kill(pid, signal_number);
        return sim_wait_for([] { return household_daemon() < 0; }, {std::chrono::milliseconds(50)});
    });
}
