#include "sim/evening/scenes.h"

#include "sim/evening/report.h"
#include "sim/evening/terminal.h"

namespace {

constexpr char USAGE_FILE[] = "/tmp/ApplicationData/app_usage.json";

std::string id_of(const scenario_person &person) {
    return std::to_string(person.profile_id);
}

void switch_on(stage *set) {
    stage_start_daemon(set);
    terminal_do(set, {"debug", "on"}, "the daemon is to write its log");
    terminal_do(set, {"activate", "on"}, "time limits hold from now on");
}

void introduce_family(stage *set) {
    for (const scenario_person &person : set->scene.people)
        terminal_do(set, {"profile", "add", id_of(person)}, person.name);
    for (const scenario_device &device : set->scene.devices)
        terminal_do(set, {"device", "add", id_of(set->scene.people[device.person]), device.mac},
                    device.name);
}

/// School is tomorrow on all nights but two.
void limit_days(stage *set, const char *handle, const char *school_night, const char *weekend) {
    const scenario_person &person = stage_person(*set, handle);
    const std::string id = id_of(person);
    terminal_do(set, {"limit", "set", id, school_night},
                person.name + ": " + school_night + " a day");
    for (const char *day : {"friday", "saturday"})
        terminal_do(set, {"weekday", "set", id, day, weekend}, "no school tomorrow");
    terminal_do(set, {"limit", "enable", id}, "after that, " + person.name + " is offline");
}

void give_policy(stage *set, const char *handle, const char *policy,
                 const std::vector<std::string> &rules, const std::string &meaning) {
    typed_words rule_words = {"policy", "rule", policy};
    rule_words.insert(rule_words.end(), rules.begin(), rules.end());
    rule_words.insert(rule_words.end(), {"--names", STAGE_APP_NAMES});
    const scenario_person &person = stage_person(*set, handle);
    terminal_do(set, {"policy", "create", policy});
    terminal_do(set, rule_words, meaning);
    terminal_do(set, {"policy", "bind", id_of(person), policy}, "for " + person.name);
}

void limit_people(stage *set) {
    limit_days(set, "mia", "2h", "2h30m");
    limit_days(set, "leo", "90m", "2h");
}

/// @return a rule by the application's name, which may be of several words
std::string rule(const stage &set, const char *app, const char *what) {
    return stage_app(set, app).name + "=" + what;
}

void show_names(stage *set) {
    timeline_say(&set->out, sim_clock_now(set->clock), voice::family,
                 std::string("$ cat ") + STAGE_APP_NAMES, "what the applications' numbers mean");
    for (const std::string &line : sim_split_lines(sim_read_file(STAGE_APP_NAMES)))
        timeline_note(&set->out, line);
}

void limit_applications(stage *set) {
    if (!set->hushed)
        show_names(set);
    give_policy(set, "mia", "10", {rule(*set, "video", "1h"), rule(*set, "shorts", "block")},
                "an hour of video a day, no short clips");
    give_policy(set, "leo", "11", {rule(*set, "games", "45m")}, "45 minutes of games a day");
    stage_expect(set, stage_app_is_blocked(*set, "phone", "shorts"),
                 "short clips are blocked from the start");
}

/// The daemon keeps what was used, not who there is: whoever starts it tells it again.
void configure_again(stage *set) {
    const int typed_before = set->typed;
    set->hushed = true;
    introduce_family(set);
    limit_people(set);
    limit_applications(set);
    set->hushed = false;
    timeline_say(&set->out, sim_clock_now(set->clock), voice::family,
                 "and the " + std::to_string(set->typed - typed_before) +
                     " lines for people, devices and rules again");
}

void restart_router(stage *set) {
    stage_run_until(set, "17:45");
    show_progress(set);
    const scenario_person &mia = stage_person(*set, "mia");
    const int32_t used = usage_of_person(set, mia).today;
    terminal_do(set, {"export", USAGE_FILE}, "an update is due: what was used is saved");
    stage_stop_daemon(set);
    switch_on(set);
    configure_again(set);
    stage_expect(set, usage_of_person(set, mia).today == 0, "a new daemon knows of no usage");
    terminal_do(set, {"import", USAGE_FILE}, "and what was used is read back");
    show_progress(set);
    stage_expect(set, used > 0 && usage_of_person(set, mia).today == used,
                 "Mia's usage has come back");
}

void use_up_applications(stage *set) {
    stage_run_until(set, "18:30");
    show_progress(set);
    stage_expect(set, stage_app_is_blocked(*set, "tablet", "video"),
                 "Mia's video is blocked after 60 minutes");
    stage_expect(set, stage_app_is_blocked(*set, "phone", "video"),
                 "a limit holds on all of Mia's devices");
    stage_expect(set, stage_app_is_blocked(*set, "console", "games"),
                 "Leo's games are blocked after 45 minutes");
    stage_expect(set, !stage_app_is_blocked(*set, "console", "video"), "Leo may still see video");
    stage_expect(set, !stage_person_is_blocked(*set, "mia"), "Mia is still online");
}

void use_up_the_day(stage *set) {
    stage_run_until(set, "19:40");
    show_progress(set);
    stage_expect(set, stage_person_is_blocked(*set, "mia"), "Mia is offline after 150 minutes");
    stage_expect(set, !stage_person_is_blocked(*set, "leo"), "Leo is still online");
}

void give_bonus(stage *set) {
    stage_run_until(set, "19:45");
    terminal_do(set, {"extend", "add", id_of(stage_person(*set, "mia")), "30m"},
                "\"Half an hour more, please?\"");
    stage_expect(set, !stage_person_is_blocked(*set, "mia"), "the bonus frees Mia at once");
    stage_run_until(set, "20:30");
    show_progress(set);
    stage_expect(set, stage_person_is_blocked(*set, "mia"), "Mia is offline after the bonus");
    stage_expect(set, stage_person_is_blocked(*set, "leo"), "Leo is offline after 120 minutes");
}

void end_the_day(stage *set) {
    stage_run_until(set, "23:58");
    show_progress(set);
    set->day_table = usage_table(set, 0);
    const scenario_person &mia = stage_person(*set, "mia");
    std::map<int32_t, int32_t> apps = app_usage_of_person(set, mia, 0);
    stage_expect(set, usage_of_person(set, mia).today == 180, "Mia used 150 + 30 minutes");
    stage_expect(set, apps[stage_app(*set, "video").id] == 60, "60 of them were video");
    stage_expect(set, apps.count(stage_app(*set, "shorts").id) == 0, "none were short clips");
    stage_expect(set, usage_of_person(set, stage_person(*set, "leo")).today == 120,
                 "Leo used 120 minutes");
    stage_expect(set, !stage_person_is_blocked(*set, "ana"), "nobody limits Ana");
}

void begin_the_next_day(stage *set) {
    stage_run_until(set, "+1 00:05");
    show_progress(set);
    for (const scenario_person &person : set->scene.people) {
        person_usage usage = usage_of_person(set, person);
        stage_expect(set, usage.today == 0 && usage.bonus == 0, person.name + " starts afresh");
        stage_expect(set, !stage_person_is_blocked(*set, person.handle),
                     person.name + " may go online");
    }
    stage_expect(set, !stage_app_is_blocked(*set, "tablet", "video"), "video works again");
    stage_expect(set, !stage_app_is_blocked(*set, "console", "games"), "games work again");
    stage_expect(set, stage_app_is_blocked(*set, "phone", "shorts"), "short clips stay blocked");
}

/// What the client prints for people, as Ana sees it.
void look_back(stage *set) {
    const std::string mia = id_of(stage_person(*set, "mia"));
    terminal_show(set, {"usage", mia}, "Mia, now that it is Saturday");
    terminal_show(set, {"usage", mia, "--apps", "--day", "1", "--names", STAGE_APP_NAMES},
                  "what it was yesterday");
    const std::string days =
        terminal_show(set, {"usage", mia, "--history"}, "two at once count twice", 3);
    stage_expect(set, days.find("Fri 15 Mar  215 ") != std::string::npos,
                 "the history has Friday's 155 minutes of chat and 60 of video");
    const std::string page = terminal_save(set, {"report", "--names", STAGE_APP_NAMES},
                                           report_path(), "all of it, for the browser");
    stage_expect(set, page.find("</html>") != std::string::npos, "the page is complete");
}

void switch_off(stage *set) {
    stage_stop_daemon(set);
    stage_expect(set, !stage_app_is_blocked(*set, "phone", "shorts"),
                 "the daemon leaves nothing blocked behind");
}

} // namespace

const std::vector<scene_entry> &evening_scenes() {
    static const std::vector<scene_entry> scenes = {
        {"Friday, 16:59: the daemon starts", switch_on},
        {"Ana tells it who there is", introduce_family},
        {"how long they may be online", limit_people},
        {"and what they may use", limit_applications},
        {"The afternoon, and the router restarts", restart_router},
        {"Video and games have limits of their own", use_up_applications},
        {"The evening: Mia's day is used up", use_up_the_day},
        {"A bonus", give_bonus},
        {"Later that evening", end_the_day},
        {"Midnight", begin_the_next_day},
        {"Ana looks back", look_back},
        {"The router shuts down", switch_off},
    };
    return scenes;
}
