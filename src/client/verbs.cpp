#include "client/verbs.h"

namespace {

using cmd = utm_app_config_cmd;

constexpr unsigned usage_options =
    CTL_OPTION_ASCII | CTL_OPTION_NAMES | CTL_OPTION_APPS | CTL_OPTION_DAY |
    CTL_OPTION_WEEK | CTL_OPTION_MONTH | CTL_OPTION_HISTORY | CTL_OPTION_DAYS | CTL_OPTION_WEEKS;

// The daemon says of a refusal only that it is one, so each verb tells what it can have been.
constexpr char no_profile[] = "no such profile; create it with profile add";
constexpr char bad_limit[] = "no such profile, or the limit is not between 1m and 24h";

// In the order of the help, which groups them. Dispatch, help and the number of operands all come
// from here; a row without `run` sends one request and shows nothing.
constexpr ctl_verb verbs[] = {
    {.group = "The daemon",
     .noun = "ping",
     .help = "ask whether the daemon answers",
     .type = UTM_APP_CONFIG_PING},
    {.noun = "status",
     .help = "show whether limits are enforced",
     .type = UTM_APP_CONFIG_GET_STATUS,
     .run = ctl_status},
    {.noun = "activate",
     .synopsis = "on|off",
     .help = "enforce limits, or let everything pass",
     .type = UTM_APP_CONFIG_SET_ACTIVATE},
    {.noun = "debug",
     .synopsis = "on|off",
     .help = "have the daemon log what it does",
     .type = UTM_APP_CONFIG_SET_DEBUG},

    {.group = "People",
     .noun = "profile",
     .word = "add",
     .synopsis = "ID",
     .help = "create a profile without limits",
     .refusal = "it is out of memory",
     .type = UTM_APP_CONFIG_CREATE_PROFILE},
    {.noun = "profile",
     .word = "del",
     .synopsis = "ID",
     .help = "delete a profile and release its devices",
     .type = UTM_APP_CONFIG_DELETE_PROFILE},
    {.noun = "device",
     .word = "add",
     .synopsis = "ID MAC...",
     .help = "add devices to a profile",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_ADD_DEVICE,
     .run = ctl_devices},
    {.noun = "device",
     .word = "del",
     .synopsis = "ID MAC...",
     .help = "remove devices from a profile, release them",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_DEL_DEVICE,
     .run = ctl_devices},

    {.group = "Time limits",
     .noun = "limit",
     .word = "show",
     .synopsis = "ID",
     .help = "show today's limit and whether it is enabled",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_GET_DAILY_LIMIT,
     .run = ctl_limit_show},
    {.noun = "limit",
     .word = "set",
     .synopsis = "ID MINUTES",
     .help = "set the limit of today and of every weekday",
     .refusal = bad_limit,
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT,
     .minutes = &cmd::arg3},
    {.noun = "limit",
     .word = "enable",
     .synopsis = "ID",
     .help = "cut the profile off when its limit is reached",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE,
     .enable = true},
    {.noun = "limit",
     .word = "disable",
     .synopsis = "ID",
     .help = "only count usage; do not enforce the limit",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE},
    {.noun = "weekday",
     .word = "show",
     .synopsis = "ID",
     .help = "show the limit of each weekday",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT,
     .run = ctl_weekday_show},
    {.noun = "weekday",
     .word = "set",
     .synopsis = "ID DAY MINUTES",
     .help = "set the limit of one weekday",
     .refusal = bad_limit,
     .type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT,
     .minutes = &cmd::arg3},
    {.noun = "extend",
     .word = "show",
     .synopsis = "ID",
     .help = "show today's bonus",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_GET_EXTEND,
     .run = ctl_extend_show},
    {.noun = "extend",
     .word = "add",
     .synopsis = "ID MINUTES",
     .help = "add to today's bonus",
     .refusal = "no such profile, or the bonus is not between 1m and 6h",
     .type = UTM_APP_CONFIG_ADD_EXTEND,
     .minutes = &cmd::arg4},
    {.noun = "extend",
     .word = "reset",
     .synopsis = "ID",
     .help = "cancel today's bonus",
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_RESET_EXTEND},

    {.group = "Usage",
     .noun = "usage",
     .synopsis = "ID",
     .help = "show usage: totals, applications or a chart",
     .options = usage_options,
     .refusal = no_profile,
     .type = UTM_APP_CONFIG_GET_PROFILE_USAGE,
     .run = ctl_usage},
    {.noun = "report",
     .synopsis = "[PATH]",
     .help = "write an HTML page, of now or of a usage file",
     .options = CTL_OPTION_NAMES,
     .refusal = "limits are off (turn them on with activate on), or it cannot write to the "
                "temporary folder",
     .type = UTM_APP_CONFIG_EXPORT_STATISTICS,
     .run = ctl_report},

    {.group = "Applications",
     .noun = "policy",
     .word = "create",
     .synopsis = "POLICY",
     .help = "create a policy without rules",
     .refusal = "the policy exists already, or its number is less than 1",
     .type = UTM_APP_CONFIG_CREATE_POLICY},
    {.noun = "policy",
     .word = "rule",
     .synopsis = "POLICY APP=RULE...",
     .help = "limit, block or free applications",
     .options = CTL_OPTION_NAMES,
     .refusal = "no such policy; create it with policy create",
     .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY,
     .run = ctl_policy_rule},
    {.noun = "policy",
     .word = "bind",
     .synopsis = "ID POLICY",
     .help = "give a profile a policy, permanently",
     .refusal = "the profile or the policy does not exist, or one of them is bound already",
     .type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE},
    {.noun = "policy",
     .word = "clear",
     .synopsis = "POLICY",
     .help = "remove all rules of a policy",
     .refusal = "no such policy",
     .type = UTM_APP_CONFIG_DELETE_POLICY},
    {.noun = "signature",
     .word = "load",
     .synopsis = "PATH",
     .help = "load signatures into the DPI engine",
     .refusal = "the DPI engine did not load the signatures; does the file exist, and is it a "
                "signature file?",
     .type = UTM_APP_CONFIG_LOAD_SIGNATURE},

    {.group = "The usage file",
     .noun = "interval",
     .word = "show",
     .help = "show how often it is written",
     .type = UTM_APP_CONFIG_GET_EXPORT_INTERVAL,
     .run = ctl_interval_show},
    {.noun = "interval",
     .word = "set",
     .synopsis = "MINUTES",
     .help = "set how often it is written",
     .refusal = "the interval must be at least one minute",
     .type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL},
    {.noun = "export",
     .synopsis = "PATH",
     .help = "have the daemon write a usage file",
     .refusal = "limits are off (turn them on with activate on), or it cannot write there; does "
                "the folder exist, and is there space?",
     .type = UTM_APP_CONFIG_EXPORT_STATISTICS},
    {.noun = "import",
     .synopsis = "PATH",
     .help = "have the daemon read a usage file",
     .refusal = "limits are off (turn them on with activate on), or the file is missing, "
                "damaged or from the future",
     .type = UTM_APP_CONFIG_IMPORT_STATISTICS},
};

} // namespace

std::span<const ctl_verb> ctl_verbs() {
    return verbs;
}

ctl_exit ctl_send(const ctl_call &call) {
    utm_app_config_reply reply = {};
    return ctl_ask(call.options.daemon, call.request, &reply, call.verb.refusal);
}

ctl_exit ctl_ask_each(const ctl_call &call, std::initializer_list<ctl_question> questions) {
    for (const ctl_question &question : questions) {
        utm_app_config_cmd request = call.request;
        request.type = question.type;
        const ctl_exit status =
            ctl_ask(call.options.daemon, request, question.reply, call.verb.refusal);
        if (status != CTL_DONE)
            return status;
    }
    return CTL_DONE;
}
