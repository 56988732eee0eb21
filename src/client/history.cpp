/// A profile's last thirty days or four weeks, as a chart or a document. The daemon keeps no days
/// of a profile itself, only of its applications: the chart shows their total, or with
/// --apps each on its own.

#include "client/message.h"
#include "client/output.h"
#include "client/people.h"
#include "client/text.h"
#include "client/verbs.h"
#include "core/clock.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr size_t periods_max = sizeof(utm_app_config_reply::prev_day_data) / sizeof(int32_t);

/// A unit of history: how many of them a reply holds, and the wire's number for it.
struct unit_t {
    const char *word;
    const char *name;
    int32_t selector;
    size_t periods;
};

constexpr unit_t units[] = {{"days", "day", UTM_APP_CONFIG_PREV_BY_DAY, periods_max},
                            {"weeks", "week", UTM_APP_CONFIG_PREV_BY_WEEK, 4}};

/// An application's minutes by period, the oldest first.
struct app_history {
    int32_t app_id;
    int64_t minutes[periods_max];
};

/// A person's part of the list.
struct person_history {
    int32_t number;
    household_part_t part;
};

struct history {
    const unit_t *unit;
    time_t now; ///< what "ago" counts from, for every chart alike
    plain_vector<person_history> people = {};
    plain_vector<app_history> apps = {};

    std::span<const app_history> records(const person_history &person) const {
        return household_records(apps, person.part);
    }

    /// @return the total of all of a person's applications
    app_history sum(const person_history &person) const {
        app_history total = {};
        for (const app_history &app : records(person))
            for (size_t i = 0; i < unit->periods; ++i)
                total.minutes[i] += app.minutes[i];
        return total;
    }
};

const unit_t *unit_of(const ctl_options &options) {
    if (options.history_unit == nullptr)
        return &units[0];
    for (const unit_t &unit : units)
        if (strcmp(unit.word, options.history_unit) == 0)
            return &unit;
    ctl_say("\"%s\" is not valid for --history: give days or weeks", options.history_unit);
    return nullptr;
}

/// The wire has the newest first.
app_history turn_around(const utm_app_config_reply &reply, size_t periods) {
    app_history app = {.app_id = reply.prev_day_app_id, .minutes = {}};
    for (size_t i = 0; i < periods; ++i)
        app.minutes[i] = reply.prev_day_data[periods - 1 - i];
    return app;
}

/// Adds a person's applications.
/// @return CTL_REFUSED, without a message, for somebody whom the daemon does not have
ctl_exit read_person(const ctl_call &call, int32_t number, history *of) {
    person_history person = {.number = number, .part = {.first = of->apps.size(), .count = 0}};
    ctl_exit status = ctl_ask_list(
        call.options.daemon,
        {.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE, .arg0 = number, .arg1 = of->unit->selector}, "",
        [&](const utm_app_config_reply &reply) {
            return ++person.part.count <= ctl_list_max &&
                   of->apps.add(turn_around(reply, of->unit->periods));
        });
    // The daemon refuses the history of a profile that has used nothing yet just as that of one
    // that does not exist; the verb's own question tells them apart.
    utm_app_config_reply reply = {};
    if (status == CTL_REFUSED && person.part.count == 0)
        status = ctl_ask(call.options.daemon, {.type = call.verb.type, .arg0 = number}, &reply, "");
    return status == CTL_DONE && !of->people.add(person) ? ctl_too_long() : status;
}

ctl_exit read_history(const ctl_call &call, history *of) {
    plain_vector<int32_t> numbers;
    ctl_exit status = ctl_people_meant(call, &numbers);
    for (size_t i = 0; i < numbers.size() && status == CTL_DONE; ++i) {
        status = read_person(call, numbers[i], of);
        if (status == CTL_REFUSED)
            status = ctl_not_there(call, numbers[i]);
    }
    return status;
}

void fill_label(ctl_cell *label, const history &of, int ago) {
    if (of.unit->selector == UTM_APP_CONFIG_PREV_BY_DAY)
        ctl_fill(label, "%s", ctl_write_day(ctl_local_day(of.now, ago), "%a %e %b").text);
    else if (ago < 2)
        ctl_fill(label, "%s", ago == 0 ? "this week" : "last week");
    else
        ctl_fill(label, "%d weeks ago", ago);
}

/// @return the date of a day, or of a week's first: weeks begin on Sunday
ctl_day_text first_day(const history &of, int ago) {
    if (of.unit->selector == UTM_APP_CONFIG_PREV_BY_DAY)
        return ctl_write_day(ctl_local_day(of.now, ago), "%Y-%m-%d");
    const int weekday = ctl_local_day(of.now, 0).tm_wday;
    return ctl_write_day(ctl_local_day(of.now, weekday + ago * days_per_week), "%Y-%m-%d");
}

ctl_exit print_chart(const ctl_call &call, const history &of, const app_history &app) {
    ctl_bars bars;
    for (size_t i = 0; i < of.unit->periods; ++i) {
        const size_t ago = of.unit->periods - 1 - i;
        ctl_bar bar = {.label = {}, .minutes = app.minutes[i], .is_present = ago == 0};
        fill_label(&bar.label, of, static_cast<int>(ago));
        if (!bars.add(bar))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    ctl_print_bars(bars, ctl_style_of_output(call.options.has(CTL_OPTION_ASCII)));
    return CTL_DONE;
}

/// Prints a chart for each application, below its name and whose it is.
ctl_exit print_chart_per_app(const ctl_call &call, const history &of, const person_history &person,
                             bool is_first) {
    const char *whose = ctl_name_of_person(call, person.number);
    ctl_exit status = CTL_DONE;
    for (const app_history &app : of.records(person)) {
        ctl_cell name = {};
        ctl_fill_app(&name, call.names, app.app_id);
        printf("%s%s%s%s\n", is_first ? "" : "\n", whose != nullptr ? whose : "",
               whose != nullptr ? ", " : "", name.text);
        is_first = false;
        status = print_chart(call, of, app);
        if (status != CTL_DONE)
            break;
    }
    return status;
}

ctl_exit print_charts(const ctl_call &call, const history &of) {
    ctl_exit status = CTL_DONE;
    for (size_t i = 0; i < of.people.size() && status == CTL_DONE; ++i) {
        const person_history &person = of.people[i];
        if (call.options.has(CTL_OPTION_APPS) && person.part.count != 0) {
            status = print_chart_per_app(call, of, person, i == 0);
            continue;
        }
        ctl_print_heading(call, person.number, i == 0);
        status = print_chart(call, of, of.sum(person));
    }
    return status;
}

void add_history(const ctl_call &call, const history &of, const person_history &person,
                 ctl_document *document) {
    document->add_text("unit", of.unit->name);
    document->add_minutes("minutes", of.sum(person).minutes, of.unit->periods);
    json_object *apps = document->add_array("applications");
    for (const app_history &app : of.records(person)) {
        ctl_document element;
        element.add_app(call.names, app.app_id);
        element.add_minutes("minutes", app.minutes, of.unit->periods);
        document->append(apps, &element);
    }
}

/// Prints a line for each period.
/// @param has_app  else it is the total of all applications
void print_periods_csv(const ctl_call &call, const history &of, int32_t number,
                       const app_history &minutes, bool has_app, ctl_csv *csv) {
    for (size_t i = 0; i < of.unit->periods; ++i) {
        const int ago = static_cast<int>(of.unit->periods - 1 - i);
        ctl_add_person(csv, call, number);
        csv->add_text(of.unit->name);
        csv->add_int(ago);
        csv->add_text(first_day(of, ago).text);
        if (has_app) {
            csv->add_int(minutes.app_id);
            csv->add_text(ctl_find_name(call.names, minutes.app_id));
        }
        csv->add_int(minutes.minutes[i]);
        csv->end_line();
    }
}

ctl_exit print_csv(const ctl_call &call, const history &of) {
    const bool has_app = call.options.has(CTL_OPTION_APPS);
    ctl_csv csv(has_app ? "profile,person,unit,ago,date,app,application,minutes"
                        : "profile,person,unit,ago,date,minutes");
    for (const person_history &person : of.people) {
        if (!has_app)
            print_periods_csv(call, of, person.number, of.sum(person), false, &csv);
        else
            for (const app_history &app : of.records(person))
                print_periods_csv(call, of, person.number, app, true, &csv);
    }
    return CTL_DONE;
}

} // namespace

ctl_exit ctl_history(const ctl_call &call) {
    history of = {.unit = unit_of(call.options), .now = utm_app_now()};
    if (of.unit == nullptr)
        return CTL_USAGE;
    const ctl_exit status = read_history(call, &of);
    if (status != CTL_DONE)
        return status;
    if (call.json())
        return ctl_print_documents(call, of.people,
                                   [&](const person_history &person, ctl_document *document) {
                                       add_history(call, of, person, document);
                                   });
    return call.options.has(CTL_OPTION_CSV) ? print_csv(call, of) : print_charts(call, of);
}
