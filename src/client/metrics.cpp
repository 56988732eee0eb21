#include "client/metrics.h"

#include "client/household_file.h"
#include "client/output_file.h"
#include "client/verbs.h"

namespace {

/// A metric of each person.
struct person_metric {
    const char *name;
    const char *help;
    bool (*applies)(const ctl_standing &is);
    int64_t (*value)(const ctl_standing &is);
};

constexpr int64_t seconds(int64_t minutes) {
    return minutes * 60;
}

bool always(const ctl_standing & /*is*/) {
    return true;
}

bool known(const ctl_standing &is) {
    return is.is_known;
}

bool enforced(const ctl_standing &is) {
    return is.is_known && is.enabled;
}

// Weeks and months include what is shorter, and are metrics of their own: a sum over a label of
// periods would count minutes twice.
constexpr person_metric person_metrics[] = {
    {"utm_person_known", "Whether the daemon has the person, else it knows no figures.", always,
     [](const ctl_standing &is) -> int64_t { return is.is_known; }},
    {"utm_person_used_today_seconds", "Time used today.", known,
     [](const ctl_standing &is) { return seconds(is.used.daily); }},
    {"utm_person_used_week_seconds", "Time used this week, which begins on Sunday.", known,
     [](const ctl_standing &is) { return seconds(int64_t{is.used.daily} + is.used.weekly); }},
    {"utm_person_used_month_seconds", "Time used in the weeks of this month.", known,
     [](const ctl_standing &is) {
         return seconds(int64_t{is.used.daily} + is.used.weekly + is.used.monthly);
     }},
    {"utm_person_limit_seconds", "The limit of today; a whole day is none.", known,
     [](const ctl_standing &is) { return seconds(is.limit); }},
    {"utm_person_bonus_seconds", "The bonus of today.", known,
     [](const ctl_standing &is) { return seconds(is.extend); }},
    {"utm_person_left_seconds", "Time left today, of those whose limit cuts off.", enforced,
     [](const ctl_standing &is) { return seconds(is.left()); }},
    {"utm_person_enforced", "Whether the limit cuts off, or time is only counted.", known,
     [](const ctl_standing &is) -> int64_t { return is.enabled; }},
    {"utm_person_cut_off", "Whether the person's time is used up and limits are on.", known,
     [](const ctl_standing &is) -> int64_t { return is.cut_off(); }},
};

/// A metric of each application that has a rule.
struct app_metric {
    const char *name;
    const char *help;
    bool (*applies)(const ctl_app_standing &is);
    int64_t (*value)(const ctl_app_standing &is);
};

bool with_any_rule(const ctl_app_standing & /*is*/) {
    return true;
}

bool with_limit(const ctl_app_standing &is) {
    return is.rule.action == POLICY_ACTION_LIMIT;
}

constexpr app_metric app_metrics[] = {
    {"utm_application_used_today_seconds", "Time that a person used an application with a rule.",
     with_any_rule, [](const ctl_app_standing &is) { return seconds(is.used); }},
    {"utm_application_limit_seconds", "An application's limit for a person.", with_limit,
     [](const ctl_app_standing &is) { return seconds(is.rule.daily_limit); }},
    {"utm_application_blocked", "Whether an application is blocked for a person.", with_any_rule,
     [](const ctl_app_standing &is) -> int64_t { return is.blocked; }},
};

void put_heading(FILE *out, const char *name, const char *help) {
    fprintf(out, "# HELP %s %s\n# TYPE %s gauge\n", name, help, name);
}

void put_switch(FILE *out, const char *name, const char *help, bool on) {
    put_heading(out, name, help);
    fprintf(out, "%s %d\n", name, on);
}

/// @param before  what stands in front of the label's name
void put_label(FILE *out, const char *before, const char *name, const household_name_t &value) {
    fprintf(out, "%s%s=\"", before, name);
    for (const char *text = value.text; *text != '\0'; ++text) {
        if (*text == '"' || *text == '\\')
            fputc('\\', out);
        fputc(*text, out);
    }
    fputc('"', out);
}

/// Writes a metric of each record that it applies to; a metric of none is left out.
template <typename Metric, typename Record, typename PutLabels>
void put_metric(FILE *out, const Metric &metric, const plain_vector<Record> &records,
                PutLabels put_labels) {
    bool has_heading = false;
    for (const Record &record : records) {
        if (!metric.applies(record.is))
            continue;
        if (!has_heading)
            put_heading(out, metric.name, metric.help);
        has_heading = true;
        put_labels(record);
        fprintf(out, "} %lld\n", static_cast<long long>(metric.value(record.is)));
    }
}

ctl_exit read_person(const ctl_daemon &daemon, const household_t &household,
                     const household_person_t &person, ctl_figures *figures) {
    ctl_person_figures of = {person.name, {}};
    ctl_app_standings apps;
    ctl_exit status = ctl_read_standing(daemon, person.number, figures->limits_on, &of.is);
    if (status == CTL_DONE)
        status = ctl_read_app_standings(daemon, of.is,
                                        household_records(household.rules, person.rules), &apps);
    for (const ctl_app_standing &app : apps)
        if (!figures->apps.add({person.name, ctl_app_title(household, app.rule.app_id), app}))
            return ctl_too_long();
    return status == CTL_DONE && !figures->people.add(of) ? ctl_too_long() : status;
}

/// A daemon that does not answer is a figure, too.
ctl_exit read_figures(const ctl_daemon &daemon, const household_t &household,
                      ctl_figures *figures) {
    ctl_exit status = ctl_read_limits_on(daemon, &figures->limits_on);
    for (size_t i = 0; i < household.people.size() && status == CTL_DONE; ++i)
        status = read_person(daemon, household, household.people[i], figures);
    figures->is_up = status == CTL_DONE;
    return status == CTL_USAGE ? status : CTL_DONE;
}

} // namespace

void ctl_write_metrics(FILE *out, const ctl_figures &figures) {
    put_switch(out, "utm_up", "Whether the daemon answers.", figures.is_up);
    if (!figures.is_up)
        return;
    put_switch(out, "utm_limits_active", "Whether limits are on.", figures.limits_on);
    for (const person_metric &metric : person_metrics)
        put_metric(out, metric, figures.people, [&](const ctl_person_figures &person) {
            put_label(out, metric.name, "{person", person.name);
        });
    for (const app_metric &metric : app_metrics)
        put_metric(out, metric, figures.apps, [&](const ctl_app_figures &app) {
            put_label(out, metric.name, "{person", app.person);
            put_label(out, ",", "application", app.app);
        });
}

ctl_exit ctl_metrics(const ctl_call &call) {
    ctl_figures figures;
    ctl_output_file file;
    ctl_exit status = file.open(call.options.output_path, call.json() ? "metrics" : nullptr);
    if (status == CTL_DONE)
        status = read_figures(call.options.daemon, call.household, &figures);
    if (status != CTL_DONE)
        return status;
    ctl_write_metrics(file.stream(), figures);
    return file.commit();
}
