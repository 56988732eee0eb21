/// A profile's last thirty days or four weeks, as a chart or a document. The daemon keeps no days
/// of a profile itself, only of its applications: the chart shows their total, or with
/// --apps each on its own.

#include "client/message.h"
#include "client/output.h"
#include "client/reason.h"
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

struct history {
    const unit_t *unit;
    time_t now; ///< what "ago" counts from, for every chart alike
    plain_vector<app_history> apps = {};

    /// @return the total of all applications
    app_history sum() const {
        app_history total = {};
        for (const app_history &app : apps)
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

ctl_exit read_history(const ctl_call &call, history *of) {
    const ctl_exit status =
        ctl_ask_list(call.options.daemon,
                     {.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE,
                      .arg0 = call.profile_id(),
                      .arg1 = of->unit->selector},
                     "", [of](const utm_app_config_reply &reply) {
                         return of->apps.size() < ctl_list_max &&
                                of->apps.add(turn_around(reply, of->unit->periods));
                     });
    if (status != CTL_REFUSED)
        return status;
    // The daemon refuses the history of a profile that has used nothing yet just as that of one
    // that does not exist; the verb's own question tells them apart.
    return of->apps.empty() ? ctl_send(call) : ctl_explain(call, call.request);
}

void fill_label(ctl_cell *label, const history &of, int ago) {
    if (of.unit->selector == UTM_APP_CONFIG_PREV_BY_DAY)
        ctl_fill(label, "%s", ctl_write_day(ctl_local_day(of.now, ago), "%a %e %b").text);
    else if (ago < 2)
        ctl_fill(label, "%s", ago == 0 ? "this week" : "last week");
    else
        ctl_fill(label, "%d weeks ago", ago);
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

ctl_exit print_chart_per_app(const ctl_call &call, const history &of) {
    ctl_exit status = CTL_DONE;
    for (size_t i = 0; i < of.apps.size() && status == CTL_DONE; ++i) {
        ctl_cell name = {};
        ctl_fill_app(&name, call.names, of.apps[i].app_id);
        printf("%s%s\n", i == 0 ? "" : "\n", name.text);
        status = print_chart(call, of, of.apps[i]);
    }
    return status;
}

ctl_exit print_json(const ctl_call &call, const history &of) {
    ctl_document document;
    document.add_int("profile", call.profile_id());
    document.add_text("unit", of.unit->name);
    document.add_minutes("minutes", of.sum().minutes, of.unit->periods);
    json_object *apps = document.add_array("applications");
    for (const app_history &app : of.apps) {
        ctl_document element;
        element.add_app(call.names, app.app_id);
        element.add_minutes("minutes", app.minutes, of.unit->periods);
        document.append(apps, &element);
    }
    return document.print();
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
        return print_json(call, of);
    if (call.options.has(CTL_OPTION_APPS) && !of.apps.empty())
        return print_chart_per_app(call, of);
    return print_chart(call, of, of.sum());
}
