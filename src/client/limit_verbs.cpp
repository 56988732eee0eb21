/// People, their devices, and how long they may.

#include "client/arguments.h"
#include "client/document.h"
#include "client/minutes.h"
#include "client/requests.h"
#include "client/table.h"
#include "client/verbs.h"

#include <cstdio>

namespace {

constexpr char a_profile[] = "a profile's number";

/// Reads the profile that every verb here begins with.
bool read_profile(const ctl_call &call, int32_t *id) {
    return ctl_read_number(call.operands[0], a_profile, id);
}

/// Sends a request that needs nothing but the profile.
ctl_exit do_for_profile(const ctl_call &call, uint8_t type) {
    int32_t id = 0;
    if (!read_profile(call, &id))
        return CTL_USAGE;
    return ctl_do(call, {.type = type, .arg0 = id});
}

/// Sends a request for each of the devices. All addresses are looked at before the first is sent.
ctl_exit do_for_devices(const ctl_call &call, uint8_t type) {
    int32_t id = 0;
    uint8_t mac[ctl_mac_bytes];
    if (!read_profile(call, &id))
        return CTL_USAGE;
    for (size_t i = 1; i < call.operand_count; ++i)
        if (!ctl_read_mac(call.operands[i], mac))
            return CTL_USAGE;
    ctl_exit status = CTL_DONE;
    for (size_t i = 1; i < call.operand_count && status == CTL_DONE; ++i)
        if (ctl_read_mac(call.operands[i], mac))
            status = ctl_do(call, ctl_device_request(type, id, mac));
    return status;
}

ctl_exit enable(const ctl_call &call, int32_t value) {
    int32_t id = 0;
    if (!read_profile(call, &id))
        return CTL_USAGE;
    return ctl_do(call, {.type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE, .arg0 = id, .arg2 = value});
}

struct weekday_limits {
    struct {
        int32_t day;
        int32_t minutes;
    } days[ctl_days_per_week];
    size_t count;
};

ctl_exit print_weekdays(const weekday_limits &limits) {
    ctl_table table;
    ctl_cell *cells = ctl_add_row(&table);
    ctl_fill(&cells[0], "DAY");
    ctl_fill(&cells[1], "MINUTES");
    ctl_fill(&cells[2], "TIME");
    for (size_t i = 0; i < limits.count; ++i) {
        cells = ctl_add_row(&table);
        ctl_fill(&cells[0], "%s", ctl_weekday_name(limits.days[i].day));
        ctl_fill_minutes(&cells[1], limits.days[i].minutes);
    }
    return ctl_print(table);
}

ctl_exit print_weekdays_json(int32_t profile_id, const weekday_limits &limits) {
    ctl_document document;
    document.add_int("profile", profile_id);
    json_object *days = document.add_array("weekdays");
    for (size_t i = 0; i < limits.count; ++i) {
        ctl_document day;
        day.add_int("day", limits.days[i].day);
        day.add_text("name", ctl_weekday_name(limits.days[i].day));
        day.add_int("minutes", limits.days[i].minutes);
        document.append(days, &day);
    }
    return document.print();
}

} // namespace

ctl_exit ctl_profile_add(const ctl_call &call) {
    return do_for_profile(call, UTM_APP_CONFIG_CREATE_PROFILE);
}

ctl_exit ctl_profile_del(const ctl_call &call) {
    return do_for_profile(call, UTM_APP_CONFIG_DELETE_PROFILE);
}

ctl_exit ctl_device_add(const ctl_call &call) {
    return do_for_devices(call, UTM_APP_CONFIG_ADD_DEVICE);
}

ctl_exit ctl_device_del(const ctl_call &call) {
    return do_for_devices(call, UTM_APP_CONFIG_DEL_DEVICE);
}

ctl_exit ctl_limit_show(const ctl_call &call) {
    int32_t id = 0;
    if (!read_profile(call, &id))
        return CTL_USAGE;
    utm_app_config_reply limit = {};
    utm_app_config_reply enabled = {};
    ctl_exit status = ctl_ask(call.daemon(), {.type = UTM_APP_CONFIG_GET_DAILY_LIMIT, .arg0 = id},
                              &limit, call.refusal);
    if (status == CTL_DONE)
        status = ctl_ask(call.daemon(), {.type = UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, .arg0 = id},
                         &enabled, call.refusal);
    if (status != CTL_DONE)
        return status;
    const bool is_enabled = enabled.daily_limit_enable != 0;
    if (!call.json()) {
        printf("limit    %d (%s)\nenabled  %s\n", limit.daily_limit,
               ctl_time_of(limit.daily_limit).text, is_enabled ? "yes" : "no");
        return CTL_DONE;
    }
    ctl_document document;
    document.add_int("profile", id);
    document.add_bool("enabled", is_enabled);
    document.add_int("limit", limit.daily_limit);
    return document.print();
}

ctl_exit ctl_limit_set(const ctl_call &call) {
    int32_t id = 0;
    int32_t minutes = 0;
    if (!read_profile(call, &id) || !ctl_read_minutes(call.operands[1], &minutes))
        return CTL_USAGE;
    return ctl_do(call, {.type = UTM_APP_CONFIG_SET_DAILY_LIMIT, .arg0 = id, .arg3 = minutes});
}

ctl_exit ctl_limit_enable(const ctl_call &call) {
    return enable(call, 1);
}

ctl_exit ctl_limit_disable(const ctl_call &call) {
    return enable(call, 0);
}

ctl_exit ctl_weekday_show(const ctl_call &call) {
    int32_t id = 0;
    if (!read_profile(call, &id))
        return CTL_USAGE;
    weekday_limits limits = {};
    const ctl_exit status =
        ctl_ask_list(call.daemon(), {.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = id},
                     call.refusal, [&limits](const utm_app_config_reply &reply) {
                         if (limits.count == ctl_days_per_week)
                             return false;
                         limits.days[limits.count++] = {reply.weekday_day, reply.weekday_limit};
                         return true;
                     });
    if (status != CTL_DONE)
        return status;
    return call.json() ? print_weekdays_json(id, limits) : print_weekdays(limits);
}

ctl_exit ctl_weekday_set(const ctl_call &call) {
    int32_t id = 0;
    int32_t day = 0;
    int32_t minutes = 0;
    if (!read_profile(call, &id) || !ctl_read_weekday(call.operands[1], &day) ||
        !ctl_read_minutes(call.operands[2], &minutes))
        return CTL_USAGE;
    return ctl_do(
        call,
        {.type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT, .arg0 = id, .arg1 = day, .arg3 = minutes});
}

ctl_exit ctl_extend_show(const ctl_call &call) {
    int32_t id = 0;
    if (!read_profile(call, &id))
        return CTL_USAGE;
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask(call.daemon(), {.type = UTM_APP_CONFIG_GET_EXTEND, .arg0 = id},
                                    &reply, call.refusal);
    if (status != CTL_DONE)
        return status;
    if (!call.json()) {
        printf("%d (%s)\n", reply.extend, ctl_time_of(reply.extend).text);
        return CTL_DONE;
    }
    ctl_document document;
    document.add_int("profile", id);
    document.add_int("extend", reply.extend);
    return document.print();
}

ctl_exit ctl_extend_add(const ctl_call &call) {
    int32_t id = 0;
    int32_t minutes = 0;
    if (!read_profile(call, &id) || !ctl_read_minutes(call.operands[1], &minutes))
        return CTL_USAGE;
    return ctl_do(call, {.type = UTM_APP_CONFIG_ADD_EXTEND, .arg0 = id, .arg4 = minutes});
}

ctl_exit ctl_extend_reset(const ctl_call &call) {
    return do_for_profile(call, UTM_APP_CONFIG_RESET_EXTEND);
}
