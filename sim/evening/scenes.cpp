#include "sim/evening/scenes.h"

#include "sim/evening/report.h"

namespace {

constexpr int32_t MIAS_POLICY = 10;
constexpr int32_t LEOS_POLICY = 11;
constexpr char USAGE_FILE[] = "/tmp/ApplicationData/app_usage.json";
constexpr uint16_t LIMIT = 1;
constexpr uint16_t BLOCK = 2;

/// Days are numbered from Sunday. School is tomorrow on Sunday to Thursday.
bool is_school_night(int32_t day) {
    return day <= 4;
}

void switch_on(stage *set) {
    stage_start_daemon(set);
    stage_do(set, "Ana asks the daemon to write its log",
             {.type = UTM_APP_CONFIG_SET_DEBUG, .arg0 = 1});
    stage_do(set, "and switches time limits on", {.type = UTM_APP_CONFIG_SET_ACTIVATE, .arg0 = 1});
}

void introduce_family(stage *set) {
    for (const scenario_person &person : set->scene.people)
        stage_do(set, person.name + " is profile " + std::to_string(person.profile_id),
                 {.type = UTM_APP_CONFIG_CREATE_PROFILE, .arg0 = person.profile_id});
    for (const scenario_device &device : set->scene.devices)
        stage_do_command(set, device.name + " joins",
                         sim_device_command(UTM_APP_CONFIG_ADD_DEVICE,
                                            set->scene.people[device.person].profile_id,
                                            sim_parse_mac(device.mac)));
}

void limit_days(stage *set, const char *handle, int32_t school_night, int32_t weekend) {
    const scenario_person &person = stage_person(*set, handle);
    for (int32_t day = 0; day < 7; ++day) {
        int32_t minutes = is_school_night(day) ? school_night : weekend;
        sim_answer answer = sim_ask({.type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT,
                                     .arg0 = person.profile_id,
                                     .arg1 = day,
                                     .arg3 = minutes});
        stage_expect(set, sim_status(answer) == UTM_APP_CONFIG_STATUS_OK,
                     "every day's limit can be set");
    }
    stage_do(set,
             person.name + " gets " + std::to_string(school_night) + " minutes on school nights, " +
                 std::to_string(weekend) + " on Friday and Saturday",
             {.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = person.profile_id, .arg2 = 1});
}

void give_policy(stage *set, const char *handle, int32_t policy_id, const std::string &words,
                 const std::vector<utm_app_config_app_entry> &rules) {
    const scenario_person &person = stage_person(*set, handle);
    stage_do(set, "A policy for " + person.name + ": " + words,
             {.type = UTM_APP_CONFIG_CREATE_POLICY, .arg0 = policy_id});
    stage_do_command(set, "with its rules", sim_rules_command(policy_id, rules));
    stage_do(set, "and it is " + person.name + "'s",
             {.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE,
              .arg0 = person.profile_id,
              .arg1 = policy_id});
}

utm_app_config_app_entry rule(const stage &set, const char *app, uint16_t action,
                              uint16_t minutes) {
    return {static_cast<uint32_t>(stage_app(set, app).id), action, minutes};
}

void set_rules(stage *set) {
    limit_days(set, "mia", 120, 150);
    limit_days(set, "leo", 90, 120);
    give_policy(set, "mia", MIAS_POLICY, "60 minutes of video, no short clips",
                {rule(*set, "video", LIMIT, 60), rule(*set, "shorts", BLOCK, 0)});
    give_policy(set, "leo", LEOS_POLICY, "45 minutes of games", {rule(*set, "games", LIMIT, 45)});
    stage_expect(set, stage_app_is_blocked(*set, "phone", "shorts"),
                 "short clips are blocked from the start");
}

/// The front end keeps the family and its rules and sends them to a daemon that has started.
void configure_again(stage *set) {
    set->hushed = true;
    introduce_family(set);
    set_rules(set);
    set->hushed = false;
}

void restart_router(stage *set) {
    stage_run_until(set, "17:45");
    show_progress(set);
    const scenario_person &mia = stage_person(*set, "mia");
    const int32_t used = usage_of_person(set, mia).today;
    stage_do_command(set, "An update is due: what was used is saved",
                     sim_path_command(UTM_APP_CONFIG_EXPORT_STATISTICS, USAGE_FILE));
    stage_stop_daemon(set);
    switch_on(set);
    configure_again(set);
    timeline_say(set->out, sim_clock_now(set->clock), voice::family,
                 "The front end sends people, devices and rules again");
    stage_expect(set, usage_of_person(set, mia).today == 0, "a new daemon knows of no usage");
    stage_do_command(set, "and has the saved usage read back",
                     sim_path_command(UTM_APP_CONFIG_IMPORT_STATISTICS, USAGE_FILE));
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
    stage_do(set, "\"Half an hour more, please?\" Ana gives Mia 30 minutes",
             {.type = UTM_APP_CONFIG_ADD_EXTEND,
              .arg0 = stage_person(*set, "mia").profile_id,
              .arg4 = 30});
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
        {"and what the rules are", set_rules},
        {"The afternoon, and the router restarts", restart_router},
        {"Video and games have limits of their own", use_up_applications},
        {"The evening: Mia's day is used up", use_up_the_day},
        {"A bonus", give_bonus},
        {"Later that evening", end_the_day},
        {"Midnight", begin_the_next_day},
        {"The router shuts down", switch_off},
    };
    return scenes;
}
