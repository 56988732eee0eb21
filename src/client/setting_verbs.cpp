/// Verbs about settings that take more than one request, or show what came back.

#include "client/arguments.h"
#include "client/output.h"
#include "client/people.h"
#include "client/reason.h"
#include "client/text.h"
#include "client/verbs.h"
#include "core/clock.h"
#include "format/spelling.h"

#include <algorithm>
#include <cstdio>

namespace {

const char *on_or_off(int32_t value) {
    return value != 0 ? "on" : "off";
}

/// Shows a time that is all of an answer.
/// @param document  what precedes it there
ctl_exit print_time(const ctl_call &call, int32_t minutes, const char *key,
                    ctl_document *document) {
    document->add_int(key, minutes);
    if (call.json())
        return document->print();
    printf("%d (%s)\n", minutes, ctl_time_of(minutes).text);
    return CTL_DONE;
}

struct weekday_limit {
    int32_t day;
    int32_t minutes;
};

using weekday_limits = plain_vector<weekday_limit>;

ctl_exit print_weekdays(const ctl_call &call, const weekday_limits &limits) {
    ctl_table table;
    ctl_print_heading(call, call.profile_id(), true);
    ctl_add_heading(&table, "DAY");
    for (const weekday_limit &limit : limits)
        ctl_add_minutes(&table, spelling_weekday(limit.day), limit.minutes);
    return ctl_print(table);
}

ctl_exit print_weekdays_json(const ctl_call &call, const weekday_limits &limits) {
    ctl_document document;
    ctl_add_person(&document, call, call.profile_id());
    json_object *days = document.add_array("weekdays");
    for (const weekday_limit &limit : limits) {
        ctl_document day;
        day.add_int("day", limit.day);
        day.add_text("name", spelling_weekday(limit.day));
        day.add_int("minutes", limit.minutes);
        document.append(days, &day);
    }
    return document.print();
}

using rule_list = plain_vector<utm_app_config_app_entry>;

/// Sends rules in their order, as many to a request as it has room for. A refusal ends it; what was
/// sent before stays.
ctl_exit send_rules(const ctl_call &call, const rule_list &rules) {
    constexpr size_t room = UTM_APP_CONFIG_APP_LIST_MAX;
    ctl_exit status = CTL_DONE;
    for (size_t next = 0; next < rules.size() && status == CTL_DONE; next += room) {
        ctl_call part = call;
        part.request.arg1 = static_cast<int32_t>(std::min(room, rules.size() - next));
        utm_app_config_put_rules(&part.request, rules.begin() + next, part.request.arg1);
        status = ctl_send(part);
    }
    return status;
}

} // namespace

ctl_exit ctl_status(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask_each(call, {{call.verb.type, &reply}});
    if (status != CTL_DONE)
        return status;
    if (!call.json()) {
        printf("limits     %s\ndebug log  %s\n", on_or_off(reply.activate), on_or_off(reply.debug));
        return CTL_DONE;
    }
    ctl_document document;
    document.add_bool("active", reply.activate != 0);
    document.add_bool("debug", reply.debug != 0);
    return document.print();
}

ctl_exit ctl_limit_show(const ctl_call &call) {
    utm_app_config_reply limit = {};
    utm_app_config_reply enabled = {};
    const ctl_exit status = ctl_ask_each(
        call, {{call.verb.type, &limit}, {UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, &enabled}});
    if (status != CTL_DONE)
        return status;
    const bool is_enabled = enabled.daily_limit_enable != 0;
    if (!call.json()) {
        ctl_print_heading(call, call.profile_id(), true);
        printf("limit    %d (%s)\nenabled  %s\n", limit.daily_limit,
               ctl_time_of(limit.daily_limit).text, is_enabled ? "yes" : "no");
        return CTL_DONE;
    }
    ctl_document document;
    ctl_add_person(&document, call, call.profile_id());
    document.add_bool("enabled", is_enabled);
    document.add_int("limit", limit.daily_limit);
    return document.print();
}

ctl_exit ctl_weekday_show(const ctl_call &call) {
    weekday_limits limits;
    const ctl_exit status = ctl_ask_list(
        call.options.daemon, call.request, "", [&limits](const utm_app_config_reply &reply) {
            // More days than a week has: the server is not the daemon.
            return limits.size() < size_t{days_per_week} &&
                   limits.add({reply.weekday_day, reply.weekday_limit});
        });
    if (status != CTL_DONE)
        return status == CTL_REFUSED ? ctl_explain(call, call.request) : status;
    return call.json() ? print_weekdays_json(call, limits) : print_weekdays(call, limits);
}

ctl_exit ctl_extend_show(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask_each(call, {{call.verb.type, &reply}});
    ctl_document document;
    ctl_add_person(&document, call, call.profile_id());
    return status == CTL_DONE ? print_time(call, reply.extend, "extend", &document) : status;
}

ctl_exit ctl_interval_show(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask_each(call, {{call.verb.type, &reply}});
    ctl_document document;
    return status == CTL_DONE
               ? print_time(call, reply.export_interval_minute, "interval", &document)
               : status;
}

ctl_exit ctl_policy_rule(const ctl_call &call) {
    // All rules are read before the first is sent, so that a slip of the hand changes nothing.
    rule_list rules;
    for (const char *operand : call.operands.subspan(1)) {
        utm_app_config_app_entry rule = {};
        if (!ctl_read_rule(call.names, operand, &rule))
            return CTL_USAGE;
        if (!rules.add(rule))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return send_rules(call, rules);
}
