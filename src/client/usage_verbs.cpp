/// What has been used: a profile's sums, and its applications in one period.

#include "client/arguments.h"
#include "client/document.h"
#include "client/history.h"
#include "client/message.h"
#include "client/table.h"
#include "client/verbs.h"

#include <algorithm>

namespace {

constexpr unsigned period_options = CTL_OPTION_DAY | CTL_OPTION_WEEK | CTL_OPTION_MONTH;

/// One profile's standing, in minutes.
struct standing {
    int64_t today;
    int64_t week;  ///< with today
    int64_t month; ///< with this week
    int64_t limit;
    int64_t extend;
    bool enabled;

    int64_t left() const { return std::max<int64_t>(0, limit + extend - today); }
};

/// Asks four times: the protocol has a command for each figure. Between them time may pass, so the
/// figures can be a minute apart.
ctl_exit read_standing(const ctl_call &call, int32_t id, standing *of) {
    utm_app_config_reply used = {};
    utm_app_config_reply limit = {};
    utm_app_config_reply enable = {};
    utm_app_config_reply extend = {};
    const struct {
        uint8_t type;
        utm_app_config_reply *reply;
    } questions[] = {{UTM_APP_CONFIG_GET_PROFILE_USAGE, &used},
                     {UTM_APP_CONFIG_GET_DAILY_LIMIT, &limit},
                     {UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, &enable},
                     {UTM_APP_CONFIG_GET_EXTEND, &extend}};
    for (const auto &question : questions) {
        const ctl_exit status = ctl_ask(call.daemon(), {.type = question.type, .arg0 = id},
                                        question.reply, call.refusal);
        if (status != CTL_DONE)
            return status;
    }
    // The daemon's counters exclude each other; people think of sums.
    of->today = used.daily_used;
    of->week = of->today + used.weekly_used;
    of->month = of->week + used.monthly_used;
    of->limit = limit.daily_limit;
    of->enabled = enable.daily_limit_enable != 0;
    of->extend = extend.extend;
    return CTL_DONE;
}

void add_line(ctl_table *table, const char *name, int64_t minutes) {
    ctl_cell *cells = ctl_add_row(table);
    ctl_fill(&cells[0], "%s", name);
    ctl_fill_minutes(&cells[1], minutes);
}

ctl_exit print_standing(const standing &of) {
    ctl_table table;
    add_line(&table, "today", of.today);
    add_line(&table, "this week", of.week);
    add_line(&table, "this month", of.month);
    add_line(&table, of.enabled ? "limit" : "limit, disabled", of.limit);
    add_line(&table, "extend", of.extend);
    if (of.enabled)
        add_line(&table, "left", of.left());
    return ctl_print(table);
}

ctl_exit print_standing_json(int32_t id, const standing &of) {
    ctl_document document;
    document.add_int("profile", id);
    document.add_int("today", of.today);
    document.add_int("week", of.week);
    document.add_int("month", of.month);
    document.add_bool("enabled", of.enabled);
    document.add_int("limit", of.limit);
    document.add_int("extend", of.extend);
    document.add_int("left", of.left());
    return document.print();
}

ctl_exit show_standing(const ctl_call &call, int32_t id) {
    standing of = {};
    const ctl_exit status = read_standing(call, id, &of);
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_standing_json(id, of) : print_standing(of);
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

using app_list = ctl_growing<app_minutes>;

ctl_exit print_apps(const ctl_call &call, const app_list &apps) {
    ctl_table table;
    int64_t sum = 0;
    ctl_cell *cells = ctl_add_row(&table);
    ctl_fill(&cells[0], "APPLICATION");
    ctl_fill(&cells[1], "MINUTES");
    ctl_fill(&cells[2], "TIME");
    for (const app_minutes &app : apps) {
        cells = ctl_add_row(&table);
        ctl_fill_app(&cells[0], call.names, app.app_id);
        ctl_fill_minutes(&cells[1], app.minutes);
        sum += app.minutes;
    }
    add_line(&table, "together", sum);
    return ctl_print(table);
}

ctl_exit print_apps_json(const ctl_call &call, int32_t id, const period &of, const app_list &apps) {
    ctl_document document;
    document.add_int("profile", id);
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

ctl_exit show_apps(const ctl_call &call, int32_t id) {
    const period of = period_of(call.options);
    app_list apps;
    const ctl_exit status = ctl_ask_list(
        call.daemon(), {.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = id, .arg1 = of.selector},
        call.refusal, [&apps](const utm_app_config_reply &reply) {
            // The daemon lists whatever a profile ever used, and fills up with entries of nothing.
            if (reply.app_usage_value == 0)
                return true;
            return apps.size() < ctl_list_max &&
                   apps.add({reply.app_usage_app_id, reply.app_usage_value});
        });
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_apps_json(call, id, of, apps) : print_apps(call, apps);
}

bool has_more_than_one(unsigned bits) {
    return (bits & (bits - 1)) != 0;
}

/// Checks what the table of verbs cannot say: which options exclude each other.
bool options_agree(const ctl_call &call) {
    const unsigned periods = call.options.given & period_options;
    const bool history = call.options.has(CTL_OPTION_HISTORY);
    if (has_more_than_one(periods))
        ctl_say("--day, --week and --month exclude each other: give one of them");
    else if (periods != 0 && history)
        ctl_say("--%s and --history exclude each other: give one of them",
                ctl_option_name(periods));
    else
        return true;
    return false;
}

} // namespace

ctl_exit ctl_usage(const ctl_call &call) {
    int32_t id = 0;
    if (!options_agree(call) || !ctl_read_number(call.operands[0], "a profile's number", &id))
        return CTL_USAGE;
    if (call.options.has(CTL_OPTION_HISTORY))
        return ctl_show_history(call, id);
    if ((call.options.given & (period_options | CTL_OPTION_APPS)) != 0)
        return show_apps(call, id);
    return show_standing(call, id);
}
