#include "sim/evening/report.h"

#include <algorithm>

namespace {

std::string app_name(const stage &set, int32_t id) {
    for (const scenario_app &app : set.scene.apps)
        if (app.id == id)
            return app.name;
    return "application " + std::to_string(id);
}

std::string minutes_text(int32_t minutes) {
    char text[32];
    snprintf(text, sizeof text, "%d:%02d", minutes / 60, minutes % 60);
    return text;
}

std::string bar(int32_t part, int32_t whole) {
    const size_t width = 20;
    size_t full = width;
    if (part < whole)
        full = width * static_cast<size_t>(part) / static_cast<size_t>(whole);
    return "[" + std::string(full, '#') + std::string(width - full, '.') + "]";
}

utm_app_config_reply ask_once(stage *set, uint8_t type, int32_t profile_id) {
    std::vector<utm_app_config_reply> replies = stage_ask(set, {.type = type, .arg0 = profile_id});
    return replies.empty() ? utm_app_config_reply{} : replies.front();
}

std::string app_list(const stage &set, const std::map<int32_t, int32_t> &apps) {
    std::string text;
    for (const auto &[id, minutes] : apps)
        if (minutes > 0)
            text += (text.empty() ? "" : ", ") + app_name(set, id) + " " + minutes_text(minutes);
    return text.empty() ? "-" : text;
}

} // namespace

person_usage usage_of_person(stage *set, const scenario_person &person) {
    int32_t id = person.profile_id;
    utm_app_config_reply used = ask_once(set, UTM_APP_CONFIG_GET_PROFILE_USAGE, id);
    person_usage usage = {
        .today = used.daily_used, .week = used.weekly_used, .month = used.monthly_used};
    usage.limit = ask_once(set, UTM_APP_CONFIG_GET_DAILY_LIMIT, id).daily_limit;
    usage.bonus = ask_once(set, UTM_APP_CONFIG_GET_EXTEND, id).extend;
    usage.is_limited =
        ask_once(set, UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, id).daily_limit_enable == 1;
    return usage;
}

std::map<int32_t, int32_t> app_usage_of_person(stage *set, const scenario_person &person,
                                               int32_t period) {
    std::map<int32_t, int32_t> minutes;
    for (const utm_app_config_reply &reply : stage_ask(
             set,
             {.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = person.profile_id, .arg1 = period}))
        if (reply.status == UTM_APP_CONFIG_STATUS_DATA)
            minutes[reply.app_usage_app_id] = reply.app_usage_value;
    return minutes;
}

void show_progress(stage *set) {
    for (const scenario_person &person : set->scene.people) {
        person_usage usage = usage_of_person(set, person);
        std::string text = person.name + ": " + minutes_text(usage.today);
        if (usage.is_limited)
            text += " of " + minutes_text(usage.limit + usage.bonus) + " " +
                    bar(usage.today, usage.limit + usage.bonus);
        timeline_say(set->out, sim_clock_now(set->clock), voice::daemon, text,
                     app_list(*set, app_usage_of_person(set, person, 0)));
    }
}

static std::string table_row(const std::string &name, const std::string &today,
                             const std::string &week, const std::string &month,
                             const std::string &apps) {
    char figures[64];
    snprintf(figures, sizeof figures, "%-8s %8s %11s %11s   ", name.c_str(), today.c_str(),
             week.c_str(), month.c_str());
    return figures + apps + "\n";
}

std::string usage_table(stage *set, int32_t period) {
    std::map<int32_t, int32_t> together;
    std::string table = table_row("", "today", "days before", "weeks before",
                                  period == 0 ? "applications today" : "applications yesterday");
    for (const scenario_person &person : set->scene.people) {
        person_usage usage = usage_of_person(set, person);
        std::map<int32_t, int32_t> apps = app_usage_of_person(set, person, period);
        table += table_row(person.name, minutes_text(usage.today), minutes_text(usage.week),
                           minutes_text(usage.month), app_list(*set, apps));
        for (const auto &[id, minutes] : apps)
            together[id] += minutes;
    }
    return table + table_row("together", "", "", "", app_list(*set, together));
}

void show_router_counts(const stage &set) {
    timeline_title(set.out, "What reached the router");
    for (const auto &[kind, count] : set.router_counts)
        printf("%6zu  %s\n", count, kind.c_str());
}
