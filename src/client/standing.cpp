#include "client/standing.h"

namespace {

/// Reads one figure of a person.
/// @param is_known  in and out: nothing more is asked of somebody who is not there
ctl_exit read_figure(const ctl_daemon &daemon, uint8_t type, int32_t number, bool *is_known,
                     utm_app_config_reply *reply) {
    if (!*is_known)
        return CTL_DONE;
    const ctl_exit status = ctl_ask(daemon, {.type = type, .arg0 = number}, reply, "");
    *is_known = status != CTL_REFUSED;
    return *is_known ? status : CTL_DONE;
}

bool is_blocked(const ctl_app_standing &app, bool limits_on) {
    return limits_on &&
           (app.rule.action == POLICY_ACTION_BLOCK ||
            (app.rule.action == POLICY_ACTION_LIMIT && app.used >= app.rule.daily_limit));
}

} // namespace

ctl_exit ctl_read_limits_on(const ctl_daemon &daemon, bool *on) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask(daemon, {.type = UTM_APP_CONFIG_GET_STATUS}, &reply, nullptr);
    *on = reply.activate != 0;
    return status;
}

ctl_exit ctl_read_standing(const ctl_daemon &daemon, int32_t number, bool limits_on,
                           ctl_standing *standing) {
    constexpr uint8_t questions[] = {
        UTM_APP_CONFIG_GET_PROFILE_USAGE, UTM_APP_CONFIG_GET_DAILY_LIMIT,
        UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, UTM_APP_CONFIG_GET_EXTEND};
    utm_app_config_reply replies[4] = {};
    *standing = {};
    standing->number = number;
    standing->is_known = true;
    standing->limits_on = limits_on;
    for (int i = 0; i < 4; ++i) {
        const ctl_exit status =
            read_figure(daemon, questions[i], number, &standing->is_known, &replies[i]);
        if (status != CTL_DONE)
            return status;
    }
    standing->used = {replies[0].daily_used, replies[0].weekly_used, replies[0].monthly_used};
    standing->limit = replies[1].daily_limit;
    standing->enabled = replies[2].daily_limit_enable != 0;
    standing->extend = replies[3].extend;
    return CTL_DONE;
}

ctl_exit ctl_read_app_standings(const ctl_daemon &daemon, const ctl_standing &standing,
                                std::span<const config_policy_rule_t> rules,
                                ctl_app_standings *apps) {
    if (!standing.is_known || rules.empty())
        return CTL_DONE;
    for (const config_policy_rule_t &rule : rules)
        if (!apps->add({.rule = rule, .used = 0, .blocked = false}))
            return ctl_too_long();
    constexpr int32_t today = 0;
    const ctl_exit status = ctl_ask_list(
        daemon, {.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = standing.number, .arg1 = today}, "",
        [apps](const utm_app_config_reply &reply) {
            for (ctl_app_standing &app : *apps)
                if (app.rule.app_id == reply.app_usage_app_id)
                    app.used = reply.app_usage_value;
            return true;
        });
    if (status != CTL_DONE && status != CTL_REFUSED) // refused: deleted meanwhile
        return status;
    for (ctl_app_standing &app : *apps)
        app.blocked = is_blocked(app, standing.limits_on);
    return CTL_DONE;
}
