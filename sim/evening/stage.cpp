#include "sim/evening/stage.h"

#include "sim/evening/meaning.h"
#include "sim/router/router_dir.h"

#include <algorithm>
#include <sys/stat.h>

static constexpr char LOG_PATH[] = "/tmp/utm_log/utm_app_log";
static constexpr int TICK_SECONDS = 60;

/// The evening's date, as in its scenario: a Friday.
static tm first_day() {
    tm day = {};
    strptime("2030-03-15", "%Y-%m-%d", &day);
    day.tm_isdst = -1;
    return day;
}

template <class Thing>
static const Thing &named(const std::vector<Thing> &things, const std::string &handle) {
    return *std::find_if(things.begin(), things.end(),
                         [&](const Thing &thing) { return thing.handle == handle; });
}

const scenario_person &stage_person(const stage &set, const std::string &handle) {
    return named(set.scene.people, handle);
}

const scenario_app &stage_app(const stage &set, const std::string &handle) {
    return named(set.scene.apps, handle);
}

time_t stage_time(const char *text) {
    tm moment = first_day();
    int days = 0;
    int offset = 0;
    if (sscanf(text, "+%d %n", &days, &offset) == 1)
        text += offset;
    sscanf(text, "%d:%d", &moment.tm_hour, &moment.tm_min);
    moment.tm_mday += days;
    return mktime(&moment);
}

/// The daemon knows only numbers; the client reads names from this file.
static bool write_app_names(const scenario &scene) {
    std::string names;
    for (const scenario_app &app : scene.apps)
        names += std::to_string(app.id) + " " + app.name + "\n";
    return sim_write_file(STAGE_APP_NAMES, names);
}

bool stage_open(stage *set, const std::string &scenario_text, const char *start, std::string *why) {
    const std::string directory = "/tmp/router";
    *why = "cannot prepare the simulated router in " + directory;
    // The router provides the usage file's folder; the daemon never makes it.
    if (mkdir(directory.c_str(), 0777) != 0 || mkdir("/tmp/ApplicationData", 0777) != 0 ||
        !sim_write_file(directory + "/scenario", scenario_text) ||
        !sim_clock_create(&set->clock, directory + "/clock", stage_time(start)))
        return false;
    setenv(SIM_ROUTER_VARIABLE, directory.c_str(), 1);
    set->options = sim_built_options(directory);
    set->options.clock = &set->clock;
    set->options.time_zone = getenv("TZ");
    return scenario_read(directory + "/scenario", &set->scene, why) && write_app_names(set->scene);
}

void stage_expect(stage *set, bool holds, const std::string &expectation) {
    if (holds || set->broken)
        return;
    ++set->unexpected;
    timeline_complain(&set->out, expectation);
}

static void give_up(stage *set, const std::string &expectation) {
    stage_expect(set, false, expectation);
    set->broken = true;
}

void stage_start_daemon(stage *set) {
    if (!sim_daemon_start(&set->daemon, set->options) || !sim_clock_wait_asleep(set->clock))
        return give_up(set, "the daemon starts");
    timeline_say(&set->out, sim_clock_now(set->clock), voice::system, "utm_appd starts",
                 "the real program, with a /tmp and a control socket of its own");
}

void stage_stop_daemon(stage *set) {
    sim_exit how = sim_daemon_stop(&set->daemon);
    stage_follow(set);
    stage_expect(set, how.ended && how.status == 0, "SIGINT ends the daemon with status 0");
    timeline_say(&set->out, sim_clock_now(set->clock), voice::system,
                 "utm_appd gets SIGINT: exit status " + std::to_string(how.status));
}

/// The daemon logs every request; the timeline shows them already, as they were typed.
static bool is_noise(const std::string &line) {
    return line.rfind("[socket]", 0) == 0;
}

/// @return how often the line at `at` is repeated from there on
static size_t run_length(const std::vector<std::string> &lines, size_t at) {
    size_t end = at;
    while (end < lines.size() && lines[end] == lines[at])
        ++end;
    return end - at;
}

static void show(stage *set, voice who, const std::string &line, size_t times,
                 std::string meaning) {
    if (set->hushed)
        return;
    if (times > 1)
        meaning += (meaning.empty() ? "" : "; ") + std::to_string(times) + " times";
    timeline_say(&set->out, sim_clock_now(set->clock), who, line, meaning);
}

static void follow_log(stage *set) {
    std::vector<std::string> lines = sim_split_lines(sim_read_file(LOG_PATH));
    std::vector<std::string> news(
        lines.begin() + static_cast<ptrdiff_t>(std::min(set->log_lines_shown, lines.size())),
        lines.end());
    set->log_lines_shown = lines.size();
    std::erase_if(news, is_noise);
    for (size_t at = 0, times = 0; at < news.size(); at += times) {
        times = run_length(news, at);
        show(set, voice::daemon, news[at], times, "");
    }
}

static void follow_journal(stage *set) {
    const std::vector<std::string> lines = sim_journal(set->options.router_dir);
    size_t &shown = set->journal_lines_shown;
    for (size_t times = 0; shown < lines.size(); shown += times) {
        times = run_length(lines, shown);
        router_line read = meaning_of(set->scene, lines[shown]);
        set->router_counts[read.kind] += times;
        stage_expect(set, read.kind != ROUTER_REFUSED, "the router knows: " + lines[shown]);
        if (read.kind != ROUTER_QUERY)
            show(set, voice::router, lines[shown], times, read.meaning);
    }
}

void stage_follow(stage *set) {
    follow_log(set);
    follow_journal(set);
}

void stage_run_until(stage *set, const char *text) {
    const time_t end = stage_time(text);
    while (!set->broken && sim_clock_now(set->clock) < end) {
        if (!sim_clock_advance(&set->clock, TICK_SECONDS))
            give_up(set, "the daemon is ready for the next minute");
        stage_follow(set);
    }
}

bool stage_app_is_blocked(const stage &set, const std::string &device, const std::string &app) {
    const std::string &mac = named(set.scene.devices, device).mac;
    return sim_router_holds(SIM_GUARD_FACT) &&
           sim_router_holds(sim_rule_fact(mac.c_str(), stage_app(set, app).id).name);
}

bool stage_person_is_blocked(const stage &set, const std::string &person) {
    return sim_router_holds(sim_blocked_fact(stage_person(set, person).profile_id).name);
}
