#pragma once
/// What an evening is played on: the real daemon, the simulated router around it, the virtual
/// clock, and the timeline that shows what all of them do.

#include "sim/evening/timeline.h"
#include "sim/harness/daemon_process.h"
#include "sim/router/scenario.h"

#include <map>
#include <string>

/// What the applications' numbers are called, for the client's --names.
inline constexpr char STAGE_APP_NAMES[] = "/tmp/apps";

struct stage {
    timeline out = {};
    scenario scene = {};
    sim_daemon_options options = {};
    sim_clock clock = {};
    sim_daemon daemon = {};
    size_t log_lines_shown = 0;
    size_t journal_lines_shown = 0;
    std::map<std::string, size_t> router_counts = {}; ///< what reached the router, by kind
    std::string day_table = {};                       ///< the day's usage just before midnight
    int typed = 0;                                    ///< command lines, those in a hush included
    int unexpected = 0;                               ///< things that should not have happened
    bool hushed = false;                              ///< what happens is followed but not shown
    bool broken = false;                              ///< daemon or client are of no use any more
};

/// Prepares the simulated router for the scenario's text, names its applications and sets the
/// clock; the daemon is not started.
/// @param start  local time, as `stage_time` takes it
[[nodiscard]] bool stage_open(stage *set, const std::string &scenario_text, const char *start,
                              std::string *why);

/// @param text  "HH:MM" of the evening's date, "+1 HH:MM" of the day after
time_t stage_time(const char *text);

/// Starts the daemon and waits until its first tick is over.
void stage_start_daemon(stage *set);

/// Stops the daemon as the router's service manager does and shows what it does on its way out.
void stage_stop_daemon(stage *set);

/// Lets the time pass to `text` minute by minute and shows what happens meanwhile.
void stage_run_until(stage *set, const char *text);

/// Shows what the daemon logged and what reached the router since the last time.
void stage_follow(stage *set);

/// Notes a failure when `holds` is false. Once `broken`, nothing more is noted.
void stage_expect(stage *set, bool holds, const std::string &expectation);

/// @return whether the application is barred on the device now
bool stage_app_is_blocked(const stage &set, const std::string &device, const std::string &app);

/// @return whether the person is cut off from the network now
bool stage_person_is_blocked(const stage &set, const std::string &person);

const scenario_person &stage_person(const stage &set, const std::string &handle);
const scenario_app &stage_app(const stage &set, const std::string &handle);
