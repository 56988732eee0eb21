/// What has been used: a profile's sums, and its applications in one period.

#include "client/household_file.h"
#include "client/output.h"
#include "client/people.h"
#include "client/report.h"
#include "client/temporary_file.h"
#include "client/text.h"
#include "client/usage_document.h"
#include "client/verbs.h"
#include "core/owners.h"

#include <cstdio>

namespace {

using standings = plain_vector<ctl_standing>;

ctl_exit read_standings(const ctl_call &call, standings *all) {
    plain_vector<int32_t> numbers;
    ctl_exit status = ctl_people_meant(call, &numbers);
    for (size_t i = 0; i < numbers.size() && status == CTL_DONE; ++i) {
        ctl_standing of = {};
        // Whether limits are on is not shown, so it is not asked.
        status = ctl_read_standing(call.options.daemon, numbers[i], false, &of);
        if (status == CTL_DONE && !of.is_known)
            status = ctl_not_there(call, numbers[i]);
        else if (status == CTL_DONE && !all->add(of))
            status = ctl_fail(CTL_BROKEN, "out of memory");
    }
    return status;
}

ctl_exit print_standing(const ctl_call &call, const ctl_standing &of) {
    ctl_table table;
    ctl_print_heading(call, of.number, true);
    ctl_add_minutes(&table, "today", of.used.daily);
    ctl_add_minutes(&table, "this week", ctl_week_of(of.used));
    ctl_add_minutes(&table, "this month", ctl_month_of(of.used));
    ctl_add_minutes(&table, of.enabled ? "limit" : "limit, disabled", of.limit);
    ctl_add_minutes(&table, "extend", of.extend);
    if (of.enabled)
        ctl_add_minutes(&table, "left", of.left());
    return ctl_print(table);
}

ctl_exit print_standings(const ctl_call &call, const standings &all) {
    ctl_table table = {.columns = 6};
    ctl_add_texts(&table, {"PERSON", "TODAY", "THIS WEEK", "THIS MONTH", "LIMIT", "LEFT"});
    for (const ctl_standing &of : all) {
        ctl_cell *cells = ctl_add_row(&table);
        ctl_fill(&cells[0], "%s", ctl_person_name(call.household, of.number).text);
        ctl_fill(&cells[1], "%s", ctl_time_of(of.used.daily).text);
        ctl_fill(&cells[2], "%s", ctl_time_of(ctl_week_of(of.used)).text);
        ctl_fill(&cells[3], "%s", ctl_time_of(ctl_month_of(of.used)).text);
        ctl_fill_limit(&cells[4], of);
        ctl_fill_left(&cells[5], of);
    }
    return ctl_print(table);
}

ctl_exit print_standings_csv(const ctl_call &call, const standings &all) {
    ctl_csv csv("profile,person,today,week,month,enabled,limit,extend,left");
    for (const ctl_standing &of : all) {
        ctl_add_person(&csv, call, of.number);
        csv.add_int(of.used.daily);
        csv.add_int(ctl_week_of(of.used));
        csv.add_int(ctl_month_of(of.used));
        csv.add_text(of.enabled ? "true" : "false");
        csv.add_int(of.limit);
        csv.add_int(of.extend);
        csv.add_int(of.left());
        csv.end_line();
    }
    return CTL_DONE;
}

ctl_exit show_standings(const ctl_call &call) {
    standings all;
    const ctl_exit status = read_standings(call, &all);
    if (status != CTL_DONE)
        return status;
    if (call.json())
        return ctl_print_documents(call, all, [](const ctl_standing &of, ctl_document *document) {
            ctl_add_standing(document, of);
        });
    if (call.options.has(CTL_OPTION_CSV))
        return print_standings_csv(call, all);
    return call.operands.empty() ? print_standings(call, all) : print_standing(call, all[0]);
}

/// A day, week or month that is asked for.
struct period {
    const char *unit;
    int32_t ago;
    int32_t selector;
};

period period_of(const ctl_options &options) {
    if (options.has(CTL_OPTION_MONTH))
        return {"month", 0, UTM_APP_CONFIG_PERIOD_MONTH};
    if (options.has(CTL_OPTION_WEEK))
        return {"week", options.week, UTM_APP_CONFIG_PERIOD_WEEK + options.week};
    return {"day", options.day, options.day};
}

struct app_minutes {
    int32_t app_id;
    int32_t minutes;
};

/// Where a person's applications stand.
struct person_apps {
    int32_t number;
    household_part_t part;
};

struct period_apps {
    period of;
    plain_vector<person_apps> people = {};
    plain_vector<app_minutes> apps = {};

    std::span<const app_minutes> records(const person_apps &person) const {
        return household_records(apps, person.part);
    }
};

/// Adds a person's applications.
/// @return CTL_REFUSED, without a message, for somebody whom the daemon does not have
ctl_exit read_apps(const ctl_call &call, int32_t number, period_apps *all) {
    person_apps person = {.number = number, .part = {.first = all->apps.size(), .count = 0}};
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = number, .arg1 = all->of.selector};
    const ctl_exit status =
        ctl_ask_list(call.options.daemon, request, "", [&](const utm_app_config_reply &reply) {
            // The daemon lists whatever a profile ever used, and fills up with entries of nothing.
            if (reply.app_usage_value == 0)
                return true;
            return ++person.part.count <= ctl_list_max &&
                   all->apps.add({reply.app_usage_app_id, reply.app_usage_value});
        });
    return status == CTL_DONE && !all->people.add(person) ? ctl_too_long() : status;
}

ctl_exit read_all_apps(const ctl_call &call, period_apps *all) {
    plain_vector<int32_t> numbers;
    ctl_exit status = ctl_people_meant(call, &numbers);
    for (size_t i = 0; i < numbers.size() && status == CTL_DONE; ++i) {
        status = read_apps(call, numbers[i], all);
        if (status == CTL_REFUSED)
            status = ctl_not_there(call, numbers[i]);
    }
    return status;
}

ctl_exit print_apps(const ctl_call &call, std::span<const app_minutes> apps) {
    ctl_table table;
    int64_t sum = 0;
    ctl_add_heading(&table, "APPLICATION");
    for (const app_minutes &app : apps) {
        ctl_cell *cells = ctl_add_row(&table);
        ctl_fill_app(&cells[0], call.names, app.app_id);
        ctl_fill_minutes(&cells[1], app.minutes);
        sum += app.minutes;
    }
    ctl_add_minutes(&table, "total", sum);
    return ctl_print(table);
}

ctl_exit print_all_apps(const ctl_call &call, const period_apps &all) {
    ctl_exit status = CTL_DONE;
    for (size_t i = 0; i < all.people.size() && status == CTL_DONE; ++i) {
        ctl_print_heading(call, all.people[i].number, i == 0);
        status = print_apps(call, all.records(all.people[i]));
    }
    return status;
}

void add_apps(const ctl_call &call, const period_apps &all, const person_apps &person,
              ctl_document *document) {
    document->add_text("unit", all.of.unit);
    document->add_int("ago", all.of.ago);
    json_object *array = document->add_array("applications");
    for (const app_minutes &app : all.records(person)) {
        ctl_document element;
        element.add_app(call.names, app.app_id);
        element.add_int("minutes", app.minutes);
        document->append(array, &element);
    }
}

ctl_exit print_apps_csv(const ctl_call &call, const period_apps &all) {
    ctl_csv csv("profile,person,unit,ago,app,application,minutes");
    for (const person_apps &person : all.people)
        for (const app_minutes &app : all.records(person)) {
            ctl_add_person(&csv, call, person.number);
            csv.add_text(all.of.unit);
            csv.add_int(all.of.ago);
            csv.add_int(app.app_id);
            csv.add_text(ctl_find_name(call.names, app.app_id));
            csv.add_int(app.minutes);
            csv.end_line();
        }
    return CTL_DONE;
}

ctl_exit show_apps(const ctl_call &call) {
    period_apps all = {.of = period_of(call.options)};
    const ctl_exit status = read_all_apps(call, &all);
    if (status != CTL_DONE)
        return status;
    if (call.json())
        return ctl_print_documents(call, all.people,
                                   [&](const person_apps &person, ctl_document *document) {
                                       add_apps(call, all, person, document);
                                   });
    return call.options.has(CTL_OPTION_CSV) ? print_apps_csv(call, all) : print_all_apps(call, all);
}

} // namespace

ctl_exit ctl_usage(const ctl_call &call) {
    if (call.options.has(CTL_OPTION_HISTORY))
        return ctl_history(call);
    if ((call.options.given & (ctl_period_options | CTL_OPTION_APPS)) != 0)
        return show_apps(call);
    return show_standings(call);
}
