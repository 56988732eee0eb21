#include "sim/evening/report.h"

#include "sim/evening/terminal.h"

#include <json-c/json.h>
#include <memory>

namespace {

struct put_document {
    void operator()(json_object *document) const { json_object_put(document); }
};
using document_owner = std::unique_ptr<json_object, put_document>;

/// Asks utm_appctl for a JSON document.
/// @return null when there is none, which counts as unexpected
document_owner ask_document(stage *set, const typed_words &words) {
    const std::string printed = terminal_ask(set, words);
    document_owner document(json_tokener_parse(printed.c_str()));
    stage_expect(set, printed.empty() || document != nullptr, "this is JSON: " + printed);
    return document;
}

/// @return the value of that name and type, or null; one that is missing counts as unexpected
json_object *value_of(stage *set, const json_object *object, const char *name, json_type type) {
    json_object *value = nullptr;
    if (object == nullptr)
        return nullptr;
    bool found = json_object_object_get_ex(object, name, &value) != 0 &&
                 json_object_is_type(value, type) != 0;
    stage_expect(set, found, std::string("utm_appctl's JSON has the value ") + name);
    return found ? value : nullptr;
}

int32_t number_of(stage *set, const json_object *object, const char *name) {
    return json_object_get_int(value_of(set, object, name, json_type_int));
}

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

std::string app_list(const stage &set, const std::map<int32_t, int32_t> &apps) {
    std::string text;
    for (const auto &[id, minutes] : apps)
        if (minutes > 0)
            text += (text.empty() ? "" : ", ") + app_name(set, id) + " " + minutes_text(minutes);
    return text.empty() ? "-" : text;
}

} // namespace

person_usage usage_of_person(stage *set, const scenario_person &person) {
    const std::string id = std::to_string(person.profile_id);
    const document_owner standing = ask_document(set, {"usage", id, "--json"});
    const json_object *of = standing.get();
    return {.today = number_of(set, of, "today"),
            .week = number_of(set, of, "week"),
            .month = number_of(set, of, "month"),
            .limit = number_of(set, of, "limit"),
            .bonus = number_of(set, of, "extend"),
            .is_limited =
                json_object_get_boolean(value_of(set, of, "enabled", json_type_boolean)) != 0};
}

std::map<int32_t, int32_t> app_usage_of_person(stage *set, const scenario_person &person,
                                               int32_t days_ago) {
    const document_owner day =
        ask_document(set, {"usage", std::to_string(person.profile_id), "--apps", "--day",
                           std::to_string(days_ago), "--json"});
    std::map<int32_t, int32_t> minutes;
    json_object *apps = value_of(set, day.get(), "applications", json_type_array);
    const size_t count = apps != nullptr ? json_object_array_length(apps) : 0;
    for (size_t i = 0; i < count; ++i) {
        const json_object *app = json_object_array_get_idx(apps, i);
        minutes[number_of(set, app, "app")] = number_of(set, app, "minutes");
    }
    return minutes;
}

void show_progress(stage *set) {
    for (const scenario_person &person : set->scene.people) {
        person_usage usage = usage_of_person(set, person);
        std::string text = person.name + ": " + minutes_text(usage.today);
        if (usage.is_limited)
            text += " of " + minutes_text(usage.limit + usage.bonus) + " " +
                    bar(usage.today, usage.limit + usage.bonus);
        timeline_say(&set->out, sim_clock_now(set->clock), voice::usage, text,
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

std::string usage_table(stage *set, int32_t days_ago) {
    std::map<int32_t, int32_t> total;
    std::string table = table_row("", "today", "this week", "this month",
                                  days_ago == 0 ? "applications today" : "applications yesterday");
    for (const scenario_person &person : set->scene.people) {
        person_usage usage = usage_of_person(set, person);
        std::map<int32_t, int32_t> apps = app_usage_of_person(set, person, days_ago);
        table += table_row(person.name, minutes_text(usage.today), minutes_text(usage.week),
                           minutes_text(usage.month), app_list(*set, apps));
        for (const auto &[id, minutes] : apps)
            total[id] += minutes;
    }
    return table + table_row("total", "", "", "", app_list(*set, total));
}

void show_router_counts(stage *set) {
    timeline_title(&set->out, "What reached the router");
    for (const auto &[kind, count] : set->router_counts)
        printf("%6zu  %s\n", count, kind.c_str());
}

std::string report_path() {
    return sim_build_directory() + "/demo-report.html";
}
