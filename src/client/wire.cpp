#include "client/wire.h"

namespace {

ctl_exit ask_daemon(void *context, const utm_app_config_cmd &request,
                    std::span<utm_app_config_reply> replies, size_t *count) {
    const ctl_daemon &daemon = *static_cast<const ctl_daemon *>(context);
    *count = 0;
    if (request.type == UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT)
        return ctl_ask_list(daemon, request, "",
                            [replies, count](const utm_app_config_reply &reply) {
                                if (*count == replies.size())
                                    return false;
                                replies[(*count)++] = reply;
                                return true;
                            });
    *count = 1;
    return ctl_ask(daemon, request, replies.data(), "");
}

} // namespace

ctl_wire ctl_wire_to(const ctl_daemon &daemon) {
    return {const_cast<ctl_daemon *>(&daemon), ask_daemon};
}

ctl_exit ctl_wire_ask(const ctl_wire &wire, const utm_app_config_cmd &request,
                      utm_app_config_reply *reply) {
    size_t count = 0;
    *reply = {};
    return wire.ask(wire.context, request, {reply, 1}, &count);
}

ctl_exit ctl_wire_send(const ctl_wire &wire, const utm_app_config_cmd &request) {
    utm_app_config_reply reply = {};
    return ctl_wire_ask(wire, request, &reply);
}
