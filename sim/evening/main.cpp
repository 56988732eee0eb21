/// One household's evening against the real daemon, in virtual time.
///
/// Everything that the timeline shows as the daemon's or the router's is what they did: the
/// daemon's log, and the command lines and events that reached the simulated router.
/// Whatever it is asked goes through utm_appctl, as it would at a terminal.
/// The evening knows how it has to end, so it also serves as a test of the whole.

#include "sim/evening/report.h"
#include "sim/evening/scenes.h"
#include "sim/harness/sandbox.h"

#include <cstdlib>
#include <cstring>

/// Central European time written out: the machine may have no time zone files.
static constexpr char TIME_ZONE[] = "CET-1CEST,M3.5.0,M10.5.0/3";

static int fail(const std::string &why) {
    fprintf(stderr, "utm_evening: %s\n", why.c_str());
    return 2;
}

static void play(stage *set) {
    for (const scene_entry &scene : evening_scenes()) {
        if (set->broken)
            return;
        timeline_title(&set->out, scene.title);
        scene.play(set);
    }
}

static int finish(stage *set) {
    show_router_counts(set);
    timeline_title(&set->out, "Friday, as the daemon counted it");
    printf("%s", set->day_table.c_str());
    std::string reports = sim_sanitizer_reports(set->options.router_dir);
    stage_expect(set, reports.empty(), "memory and threads are sound\n" + reports);
    if (set->unexpected > 0) {
        printf("\n%d times not as expected, see above.\n", set->unexpected);
        return 1;
    }
    printf("\nThe evening as a page for the browser: %s\nAll as it should be.\n",
           report_path().c_str());
    return 0;
}

int main(int argc, char **argv) {
    bool fast = argc == 2 && strcmp(argv[1], "--fast") == 0;
    if (argc > 1 && !fast)
        return fail("usage: utm_evening [--fast]");
    setenv("TZ", TIME_ZONE, 1);
    // The caller's terminal may be a wide one.
    setenv("COLUMNS", "80", 1);
    // The source stays in sight too: the scenario is there, and sanitizers' suppressions.
    sim_enter_sandbox(argv, {UTM_SOURCE_DIR, sim_build_directory()});
    puts(sim_sandbox_way().c_str());
    std::string why;
    stage set = {.out = timeline_open(fast)};
    if (!stage_open(&set, sim_read_file(UTM_EVENING_SCENARIO), "16:59", &why))
        return fail(why);
    play(&set);
    return finish(&set);
}
