/// What has been used: a profile's sums, its applications in one period, and a page of everything.

#include "client/output.h"
#include "client/reason.h"
#include "client/report.h"
#include "client/standing.h"
#include "client/temporary_file.h"
#include "client/usage_document.h"
#include "client/verbs.h"
#include "core/owners.h"

#include <cstdio>

namespace {

ctl_exit print_standing(const ctl_standing &of) {
    ctl_table table;
    ctl_add_minutes(&table, "today", of.used.daily);
    ctl_add_minutes(&table, "this week", ctl_week_of(of.used));
    ctl_add_minutes(&table, "this month", ctl_month_of(of.used));
    ctl_add_minutes(&table, of.enabled ? "limit" : "limit, disabled", of.limit);
    ctl_add_minutes(&table, "extend", of.extend);
    if (of.enabled)
        ctl_add_minutes(&table, "left", of.left());
    return ctl_print(table);
}

ctl_exit print_standing_json(const ctl_standing &of) {
    ctl_document document;
    document.add_int("profile", of.number);
    document.add_int("today", of.used.daily);
    document.add_int("week", ctl_week_of(of.used));
    document.add_int("month", ctl_month_of(of.used));
    document.add_bool("enabled", of.enabled);
    document.add_int("limit", of.limit);
    document.add_int("extend", of.extend);
    document.add_int("left", of.left());
    return document.print();
}

ctl_exit show_standing(const ctl_call &call) {
    ctl_standing of = {};
    // Whether limits are on is not shown, so it is not asked.
    const ctl_exit status = ctl_read_standing(call.options.daemon, call.profile_id(), false, &of);
    if (status != CTL_DONE)
        return status;
    if (!of.is_known)
        return ctl_explain(call, call.request);
    return call.json() ? print_standing_json(of) : print_standing(of);
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

using app_list = plain_vector<app_minutes>;

ctl_exit read_apps(const ctl_call &call, int32_t selector, app_list *apps) {
    utm_app_config_cmd request = {
        .type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = call.profile_id(), .arg1 = selector};
    const ctl_exit status =
        ctl_ask_list(call.options.daemon, request, "", [apps](const utm_app_config_reply &reply) {
            // The daemon lists whatever a profile ever used, and fills up with entries of nothing.
            if (reply.app_usage_value == 0)
                return true;
            return apps->size() < ctl_list_max &&
                   apps->add({reply.app_usage_app_id, reply.app_usage_value});
        });
    return status == CTL_REFUSED ? ctl_explain(call, request) : status;
}

ctl_exit print_apps(const ctl_call &call, const app_list &apps) {
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

ctl_exit print_apps_json(const ctl_call &call, const period &of, const app_list &apps) {
    ctl_document document;
    document.add_int("profile", call.profile_id());
    document.add_text("unit", of.unit);
    document.add_int("ago", of.ago);
    json_object *array = document.add_array("applications");
    for (const app_minutes &app : apps) {
        ctl_document element;
        element.add_app(call.names, app.app_id);
        element.add_int("minutes", app.minutes);
        document.append(array, &element);
    }
    return document.print();
}

ctl_exit show_apps(const ctl_call &call) {
    const period of = period_of(call.options);
    app_list apps;
    const ctl_exit status = read_apps(call, of.selector, &apps);
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_apps_json(call, of, apps) : print_apps(call, apps);
}

/// Writes the page to standard output, or as a text into a document.
ctl_exit print_report(const ctl_call &call, const char *path) {
    if (!call.json())
        return ctl_write_report(stdout, path, call.names);
    char *page = nullptr;
    size_t size = 0;
    file_ptr stream(open_memstream(&page, &size));
    if (stream == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    const ctl_exit status = ctl_write_report(stream.get(), path, call.names);
    const bool is_whole = ferror(stream.get()) == 0;
    stream.reset(); // hands the text over
    const heap_ptr<char> owned(page);
    if (status != CTL_DONE)
        return status;
    if (!is_whole || page == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    ctl_document document;
    document.add_text("page", page);
    return document.print();
}

/// Has the daemon write a file for the page, which goes with its folder.
ctl_exit report_now(ctl_call call) {
    ctl_temporary_file file;
    ctl_exit status = file.make();
    if (status != CTL_DONE)
        return status;
    utm_app_config_put_path(&call.request, file.path());
    status = ctl_send(call);
    return status == CTL_DONE ? print_report(call, file.path()) : status;
}

} // namespace

ctl_exit ctl_usage(const ctl_call &call) {
    if (call.options.has(CTL_OPTION_HISTORY))
        return ctl_history(call);
    if ((call.options.given & (ctl_period_options | CTL_OPTION_APPS)) != 0)
        return show_apps(call);
    return show_standing(call);
}

ctl_exit ctl_report(const ctl_call &call) {
    if (call.operands.empty())
        return report_now(call);
    return print_report(call, call.operands[0]);
}
