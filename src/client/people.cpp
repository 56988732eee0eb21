/// Everybody of the household, and how they stand today.

#include "client/people.h"

#include "client/household_file.h"
#include "client/reason.h"
#include "client/text.h"
#include "client/usage_document.h"

#include <cstdio>
#include <cstring>

namespace {

/// One person's line.
struct person_day {
    ctl_standing standing;
    household_part_t apps;
};

struct household_day {
    bool limits_on;
    plain_vector<person_day> people;
    ctl_app_standings apps;
};

ctl_exit read_person(const ctl_call &call, const household_person_t &person, household_day *day) {
    person_day one = {};
    one.apps.first = day->apps.size();
    ctl_exit status =
        ctl_read_standing(call.options.daemon, person.number, day->limits_on, &one.standing);
    if (status == CTL_DONE)
        status = ctl_read_app_standings(call.options.daemon, one.standing,
                                        household_records(call.household.rules, person.rules),
                                        &day->apps);
    one.apps.count = day->apps.size() - one.apps.first;
    if (status == CTL_DONE && !day->people.add(one))
        status = ctl_fail(CTL_BROKEN, "out of memory");
    return status;
}

ctl_exit read_day(const ctl_call &call, household_day *day) {
    ctl_exit status = ctl_read_limits_on(call.options.daemon, &day->limits_on);
    for (const household_person_t &person : call.household.people)
        if (status == CTL_DONE)
            status = read_person(call, person, day);
    return status;
}

/// Adds to a list with commas, as long as there is room.
void add_item(ctl_cell *cell, const char *item) {
    const size_t length = strlen(cell->text);
    const char *comma = length == 0 ? "" : ", ";
    if (length + strlen(comma) + strlen(item) < sizeof(cell->text))
        snprintf(cell->text + length, sizeof(cell->text) - length, "%s%s", comma, item);
}

void fill_blocked(ctl_cell *cell, const ctl_call &call, const household_day &day,
                  const person_day &person) {
    if (person.standing.cut_off())
        add_item(cell, "everything");
    for (const ctl_app_standing &app : household_records(day.apps, person.apps)) {
        ctl_cell name = {};
        if (app.blocked) {
            ctl_fill_app(&name, call.names, app.rule.app_id);
            add_item(cell, name.text);
        }
    }
}

void add_row(const ctl_call &call, const household_day &day, const person_day &person,
             ctl_table *table) {
    const ctl_standing &of = person.standing;
    ctl_cell *cells = ctl_add_row(table);
    ctl_fill(&cells[0], "%s", ctl_person_name(call.household, of.number).text);
    if (!of.is_known) {
        ctl_fill(&cells[5], "not at the daemon: see utm_appctl apply");
        return;
    }
    ctl_fill(&cells[1], "%s", ctl_time_of(of.used.daily).text);
    ctl_fill_limit(&cells[2], of);
    if (of.extend != 0)
        ctl_fill(&cells[3], "%s", ctl_time_of(of.extend).text);
    ctl_fill_left(&cells[4], of);
    fill_blocked(&cells[5], call, day, person);
}

ctl_exit print_day(const ctl_call &call, const household_day &day) {
    ctl_table table = {.columns = 6, .left = 1U | 1U << 5U};
    ctl_add_texts(&table, {"PERSON", "TODAY", "LIMIT", "BONUS", "LEFT", "BLOCKED"});
    for (const person_day &person : day.people)
        add_row(call, day, person, &table);
    const ctl_exit status = ctl_print(table);
    if (status == CTL_DONE && !day.limits_on)
        puts("\nLimits are off, and nothing is blocked: see utm_appctl activate.");
    return status;
}

void add_apps(const ctl_call &call, const household_day &day, const person_day &person,
              ctl_document *document) {
    json_object *array = document->add_array("applications");
    for (const ctl_app_standing &app : household_records(day.apps, person.apps)) {
        ctl_document element;
        element.add_app(call.names, app.rule.app_id);
        element.add_int("today", app.used);
        element.add_int("limit", app.rule.action == POLICY_ACTION_BLOCK ? 0 : app.rule.daily_limit);
        element.add_bool("blocked", app.blocked);
        document->append(array, &element);
    }
}

ctl_exit print_day_json(const ctl_call &call, const household_day &day) {
    ctl_document document;
    document.add_bool("active", day.limits_on);
    json_object *array = document.add_array("people");
    for (const person_day &person : day.people) {
        const ctl_standing &of = person.standing;
        ctl_document element;
        ctl_add_person(&element, call, of.number);
        element.add_bool("known", of.is_known);
        if (of.is_known) {
            ctl_add_standing(&element, of);
            element.add_bool("cut_off", of.cut_off());
            add_apps(call, day, person, &element);
        }
        document.append(array, &element);
    }
    return document.print();
}

} // namespace

const char *ctl_name_of_person(const ctl_call &call, int32_t number) {
    const household_person_t *person = household_person_of(call.household, number);
    return person == nullptr ? nullptr : person->name.text;
}

void ctl_print_heading(const ctl_call &call, int32_t number, bool is_first) {
    const char *name = ctl_name_of_person(call, number);
    if (!is_first)
        putchar('\n');
    if (name != nullptr)
        puts(name);
}

void ctl_add_person(ctl_document *document, const ctl_call &call, int32_t number) {
    document->add_int("profile", number);
    const char *name = ctl_name_of_person(call, number);
    if (name != nullptr)
        document->add_text("person", name);
    else
        document->add_nothing("person");
}

void ctl_add_person(ctl_csv *csv, const ctl_call &call, int32_t number) {
    csv->add_int(number);
    csv->add_text(ctl_name_of_person(call, number));
}

ctl_exit ctl_people_meant(const ctl_call &call, plain_vector<int32_t> *numbers) {
    if (!call.operands.empty())
        return numbers->add(call.profile_id()) ? CTL_DONE : ctl_fail(CTL_BROKEN, "out of memory");
    for (const household_person_t &person : call.household.people)
        if (!numbers->add(person.number))
            return ctl_fail(CTL_BROKEN, "out of memory");
    if (numbers->empty())
        return ctl_fail(
            CTL_USAGE,
            "%s names nobody\n"
            "Write a household and run utm_appctl apply, see docs/household.md; or give "
            "a person's number",
            ctl_household_place_of(call.options.household_path).path);
    return CTL_DONE;
}

ctl_exit ctl_not_there(const ctl_call &call, int32_t number) {
    if (!call.operands.empty())
        return ctl_explain(call, call.request);
    ctl_say("the daemon does not have %s; see utm_appctl apply",
            ctl_person_name(call.household, number).text);
    return CTL_DONE;
}

void ctl_fill_limit(ctl_cell *cell, const ctl_standing &of) {
    ctl_fill(cell, "%s", of.limit == ctl_no_limit ? "none" : ctl_time_of(of.limit).text);
}

void ctl_fill_left(ctl_cell *cell, const ctl_standing &of) {
    const bool cuts_off = of.enabled && of.limit != ctl_no_limit;
    ctl_fill(cell, "%s", cuts_off ? ctl_time_of(of.left()).text : "-");
}

void ctl_add_standing(ctl_document *document, const ctl_standing &of) {
    document->add_int("today", of.used.daily);
    document->add_int("week", ctl_week_of(of.used));
    document->add_int("month", ctl_month_of(of.used));
    document->add_bool("enabled", of.enabled);
    document->add_int("limit", of.limit);
    document->add_int("extend", of.extend);
    document->add_int("left", of.left());
}

ctl_exit ctl_people(const ctl_call &call) {
    plain_vector<int32_t> numbers;
    household_day day = {};
    ctl_exit status = ctl_people_meant(call, &numbers);
    if (status == CTL_DONE)
        status = read_day(call, &day);
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_day_json(call, day) : print_day(call, day);
}
