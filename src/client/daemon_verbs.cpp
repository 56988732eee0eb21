/// The daemon as a whole: is it there, is it on, what does it log, how often does it save.

#include "client/arguments.h"
#include "client/document.h"
#include "client/minutes.h"
#include "client/requests.h"
#include "client/verbs.h"

#include <cstdio>

static const char *on_or_off(int32_t value) {
    return value != 0 ? "on" : "off";
}

/// Sends a switch's new position.
static ctl_exit turn(const ctl_call &call, uint8_t type) {
    int32_t value = 0;
    if (!ctl_read_switch(call.operands[0], &value))
        return CTL_USAGE;
    return ctl_do(call, {.type = type, .arg0 = value});
}

ctl_exit ctl_ping(const ctl_call &call) {
    return ctl_do(call, {.type = UTM_APP_CONFIG_PING});
}

ctl_exit ctl_status(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status =
        ctl_ask(call.daemon(), {.type = UTM_APP_CONFIG_GET_STATUS}, &reply, call.refusal);
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

ctl_exit ctl_activate(const ctl_call &call) {
    return turn(call, UTM_APP_CONFIG_SET_ACTIVATE);
}

ctl_exit ctl_debug(const ctl_call &call) {
    return turn(call, UTM_APP_CONFIG_SET_DEBUG);
}

ctl_exit ctl_signature_load(const ctl_call &call) {
    ctl_path path = {};
    if (!ctl_read_signature_path(call.operands[0], &path))
        return CTL_USAGE;
    return ctl_do(call, ctl_path_request(UTM_APP_CONFIG_LOAD_SIGNATURE, path));
}

ctl_exit ctl_interval_show(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status =
        ctl_ask(call.daemon(), {.type = UTM_APP_CONFIG_GET_EXPORT_INTERVAL}, &reply, call.refusal);
    if (status != CTL_DONE)
        return status;
    if (!call.json()) {
        printf("%d (%s)\n", reply.export_interval_minute,
               ctl_time_of(reply.export_interval_minute).text);
        return CTL_DONE;
    }
    ctl_document document;
    document.add_int("interval", reply.export_interval_minute);
    return document.print();
}

ctl_exit ctl_interval_set(const ctl_call &call) {
    int32_t minutes = 0;
    if (!ctl_read_minutes(call.operands[0], &minutes))
        return CTL_USAGE;
    return ctl_do(call, {.type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL, .arg0 = minutes});
}
