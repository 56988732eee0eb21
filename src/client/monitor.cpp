#include "client/monitor.h"

#include "client/verbs.h"

#include <cstring>

const bool ctl_monitor_is_apart = false;

ctl_exit ctl_monitor(const ctl_call &call) {
    if (strcmp(call.verb.noun, "watch") == 0)
        return ctl_watch(call);
    return strcmp(call.verb.noun, "metrics") == 0 ? ctl_metrics(call) : ctl_report(call);
}
