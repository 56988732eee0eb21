#include "client/verbs.h"

#include "client/arguments.h"
#include "client/monitor.h"
#include "client/reason.h"
#include "core/text_packer.h"

#include <cstdio>

namespace {

using cmd = utm_app_config_cmd;

constexpr unsigned usage_options = CTL_OPTION_ASCII | CTL_OPTION_CSV | CTL_OPTION_NAMES |
                                   CTL_OPTION_APPS | CTL_OPTION_YESTERDAY | CTL_OPTION_DAY |
                                   CTL_OPTION_WEEK | CTL_OPTION_MONTH | CTL_OPTION_HISTORY |
                                   CTL_OPTION_DAYS | CTL_OPTION_WEEKS;

// In the order of the help, which groups them. Dispatch, help and the number of operands all come
// from here; a row without `run` sends one request and shows nothing.
constexpr ctl_verb written[] = {
    {.group = "The daemon",
     .noun = "ping",
     .help = "ask whether the daemon answers",
     .example = "ping",
     .type = UTM_APP_CONFIG_PING},
    {.noun = "status",
     .help = "show whether limits are enforced",
     .example = "status",
     .type = UTM_APP_CONFIG_GET_STATUS,
     .run = ctl_status},
    {.noun = "activate",
     .synopsis = "on|off",
     .help = "enforce limits, or let everything pass",
     .example = "activate on",
     .type = UTM_APP_CONFIG_SET_ACTIVATE},
    {.noun = "debug",
     .synopsis = "on|off",
     .help = "have the daemon log what it does",
     .example = "debug on",
     .type = UTM_APP_CONFIG_SET_DEBUG},

    {.group = "The household",
     .noun = "apply",
     .synopsis = "[FILE]",
     .help = "make everything as the household file has it",
     .example = "apply household.json --dry-run",
     .options = CTL_OPTION_NAMES | CTL_OPTION_DRY_RUN | CTL_OPTION_REPAIR | CTL_OPTION_PRUNE |
                CTL_OPTION_RESTORE,
     .run = ctl_apply},

    {.group = "People",
     .noun = "people",
     .help = "show everybody: used, limit, left, blocked",
     .example = "people",
     .options = CTL_OPTION_NAMES,
     .run = ctl_people},
    {.noun = "profile",
     .word = "add",
     .synopsis = "ID",
     .help = "create a profile without limits",
     .example = "profile add mia",
     .type = UTM_APP_CONFIG_CREATE_PROFILE},
    {.noun = "profile",
     .word = "del",
     .synopsis = "ID",
     .help = "delete a profile and release its devices",
     .example = "profile del mia",
     .options = CTL_OPTION_YES,
     .type = UTM_APP_CONFIG_DELETE_PROFILE,
     .run = ctl_profile_del},
    {.noun = "device",
     .word = "add",
     .synopsis = "ID MAC...",
     .help = "add devices to a profile",
     .example = "device add mia 02:00:00:00:00:1a",
     .type = UTM_APP_CONFIG_ADD_DEVICE,
     .run = ctl_devices},
    {.noun = "device",
     .word = "del",
     .synopsis = "ID MAC...",
     .help = "remove devices from a profile, release them",
     .example = "device del mia 02:00:00:00:00:1a",
     .type = UTM_APP_CONFIG_DEL_DEVICE,
     .run = ctl_devices},
    {.noun = "device",
     .word = "list",
     .synopsis = "[ID]",
     .help = "list the devices of everybody, or of one",
     .example = "device list mia",
     .type = UTM_APP_CONFIG_GET_PROFILE_USAGE,
     .run = ctl_list},

    {.group = "Time limits",
     .noun = "limit",
     .word = "show",
     .synopsis = "ID",
     .help = "show today's limit and whether it is enabled",
     .example = "limit show mia",
     .type = UTM_APP_CONFIG_GET_DAILY_LIMIT,
     .run = ctl_limit_show},
    {.noun = "limit",
     .word = "set",
     .synopsis = "ID MINUTES",
     .help = "set the limit of today and of every weekday",
     .example = "limit set mia 1h30m",
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT,
     .minutes = &cmd::arg3,
     .minutes_most = household_no_limit},
    {.noun = "limit",
     .word = "enable",
     .synopsis = "ID",
     .help = "cut the profile off when its limit is reached",
     .example = "limit enable mia",
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE,
     .enable = true,
     .run = ctl_limit_enable},
    {.noun = "limit",
     .word = "disable",
     .synopsis = "ID",
     .help = "only count usage; do not enforce the limit",
     .example = "limit disable mia",
     .type = UTM_APP_CONFIG_SET_DAILY_LIMIT_ENABLE},
    {.noun = "weekday",
     .word = "show",
     .synopsis = "ID",
     .help = "show the limit of each weekday",
     .example = "weekday show mia",
     .type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT,
     .run = ctl_weekday_show},
    {.noun = "weekday",
     .word = "set",
     .synopsis = "ID DAY MINUTES",
     .help = "set the limit of one weekday",
     .example = "weekday set mia sat,sun 3h",
     .type = UTM_APP_CONFIG_SET_WEEKDAY_DAILY_LIMIT,
     .minutes = &cmd::arg3,
     .minutes_most = household_no_limit,
     .run = ctl_weekday_set},
    {.noun = "extend",
     .word = "show",
     .synopsis = "ID",
     .help = "show today's bonus",
     .example = "extend show mia",
     .type = UTM_APP_CONFIG_GET_EXTEND,
     .run = ctl_extend_show},
    {.noun = "extend",
     .word = "add",
     .synopsis = "ID MINUTES",
     .help = "add to today's bonus",
     .example = "extend add mia 30m",
     .type = UTM_APP_CONFIG_ADD_EXTEND,
     .minutes = &cmd::arg4,
     .minutes_most = 360},
    {.noun = "extend",
     .word = "reset",
     .synopsis = "ID",
     .help = "cancel today's bonus",
     .example = "extend reset mia",
     .type = UTM_APP_CONFIG_RESET_EXTEND},

    {.group = "Usage",
     .noun = "usage",
     .synopsis = "[ID]",
     .help = "show usage: totals, applications or a chart",
     .example = "usage mia --history",
     .options = usage_options,
     .type = UTM_APP_CONFIG_GET_PROFILE_USAGE,
     .run = ctl_usage},
    {.noun = "report",
     .synopsis = "[PATH]",
     .help = "write an HTML page, of now or of a usage file",
     .example = "report --person mia > mia.html",
     .options = CTL_OPTION_NAMES | CTL_OPTION_PERSON | CTL_OPTION_OUTPUT,
     .type = UTM_APP_CONFIG_EXPORT_STATISTICS,
     .run = ctl_monitor},
    {.noun = "watch",
     .help = "tell of everything that changes, until it is ended",
     .example = "watch --exec /etc/utm_appd/events",
     .options = CTL_OPTION_NAMES | CTL_OPTION_ALL | CTL_OPTION_EXEC | CTL_OPTION_INTERVAL,
     .run = ctl_monitor},
    {.noun = "metrics",
     .help = "show everybody's figures for a monitoring system",
     .example = "metrics --output /var/lib/node_exporter/utm.prom",
     .options = CTL_OPTION_NAMES | CTL_OPTION_OUTPUT,
     .run = ctl_monitor},

    {.group = "Applications",
     .noun = "policy",
     .word = "create",
     .synopsis = "POLICY",
     .help = "create a policy without rules",
     .example = "policy create 7",
     .type = UTM_APP_CONFIG_CREATE_POLICY},
    {.noun = "policy",
     .word = "rule",
     .synopsis = "POLICY APP=RULE...",
     .help = "limit, block or free applications",
     .example = "policy rule 7 video=45m games=block",
     .options = CTL_OPTION_NAMES,
     .type = UTM_APP_CONFIG_ADD_APPS_TO_POLICY,
     .run = ctl_policy_rule},
    {.noun = "policy",
     .word = "bind",
     .synopsis = "ID POLICY",
     .help = "give a profile a policy, permanently",
     .example = "policy bind mia 7",
     .type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE},
    {.noun = "policy",
     .word = "show",
     .synopsis = "[ID]",
     .help = "list the rules of everybody, or of one",
     .example = "policy show mia",
     .options = CTL_OPTION_NAMES,
     .type = UTM_APP_CONFIG_GET_PROFILE_USAGE,
     .run = ctl_list},
    {.noun = "policy",
     .word = "clear",
     .synopsis = "POLICY",
     .help = "remove all rules of a policy",
     .example = "policy clear 7",
     .type = UTM_APP_CONFIG_DELETE_POLICY},
    {.noun = "signature",
     .word = "load",
     .synopsis = "PATH",
     .help = "load signatures into the DPI engine",
     .example = "signature load /tmp/signatures",
     .type = UTM_APP_CONFIG_LOAD_SIGNATURE,
     .run = ctl_signature_load},

    {.group = "The usage file",
     .noun = "interval",
     .word = "show",
     .help = "show how often it is written",
     .example = "interval show",
     .type = UTM_APP_CONFIG_GET_EXPORT_INTERVAL,
     .run = ctl_interval_show},
    {.noun = "interval",
     .word = "set",
     .synopsis = "MINUTES",
     .help = "set how often it is written",
     .example = "interval set 30m",
     .type = UTM_APP_CONFIG_SET_EXPORT_INTERVAL},
    {.noun = "export",
     .synopsis = "PATH",
     .help = "have the daemon write a usage file",
     .example = "export /tmp/usage.json",
     .type = UTM_APP_CONFIG_EXPORT_STATISTICS},
    {.noun = "import",
     .synopsis = "PATH",
     .help = "have the daemon read a usage file",
     .example = "import /tmp/usage.json",
     .type = UTM_APP_CONFIG_IMPORT_STATISTICS},

    {.group = "For shells",
     .noun = "completion",
     .synopsis = "WORD...",
     .help = "print what may stand for the last word",
     .example = "completion limit s",
     .options = CTL_OPTION_NAMES,
     .run = ctl_completion},
};
constexpr size_t verb_count = sizeof(written) / sizeof(*written);

/// A row as it ships.
struct packed_verb {
    uint16_t group;
    uint16_t noun;
    uint16_t word;
    uint16_t synopsis;
    uint16_t help;
    uint16_t example;
    uint8_t type;
    bool enable;
    unsigned options;
    int32_t minutes_most;
    int32_t cmd::*minutes;
    ctl_exit (*run)(const ctl_call &call);
};

struct packed_table {
    packed_verb rows[verb_count] = {};
    text_packer texts = {};
};

constexpr packed_table pack() {
    packed_table table;
    for (size_t i = 0; i < verb_count; ++i) {
        const ctl_verb &from = written[i];
        packed_verb &to = table.rows[i];
        to.group = table.texts.add(from.group);
        to.noun = table.texts.add(from.noun);
        to.word = table.texts.add(from.word);
        to.synopsis = table.texts.add(from.synopsis);
        to.help = table.texts.add(from.help);
        to.example = table.texts.add(from.example);
        to.type = from.type;
        to.enable = from.enable;
        to.options = from.options;
        to.minutes_most = from.minutes_most;
        to.minutes = from.minutes;
        to.run = from.run;
    }
    return table;
}

struct packed_rows {
    packed_verb rows[verb_count] = {};

    constexpr explicit packed_rows(const packed_table &from) {
        for (size_t i = 0; i < verb_count; ++i)
            rows[i] = from.rows[i];
    }
};

constexpr packed_table packed = pack(); // only the compiler has it
constexpr packed_rows verbs(packed);
constexpr packed_texts<packed.texts.size> texts(packed.texts);

} // namespace

ctl_verb_name ctl_name_of(const ctl_verb &verb) {
    ctl_verb_name name = {};
    snprintf(name.text, sizeof(name.text), "%s%s%s", verb.noun, verb.word != nullptr ? " " : "",
             verb.word != nullptr ? verb.word : "");
    return name;
}

unsigned ctl_options_of(const ctl_verb &verb) {
    const bool has_names = ctl_has_operand(verb, "ID") || verb.has(CTL_OPTION_NAMES);
    return verb.options | ctl_common_options | (has_names ? unsigned{CTL_OPTION_HOUSEHOLD} : 0U);
}

size_t ctl_verb_list::size() {
    return verb_count;
}

ctl_verb ctl_verb_list::at(size_t place) {
    const packed_verb &of = verbs.rows[place];
    return {.group = texts.at(of.group),
            .noun = texts.at(of.noun),
            .word = texts.at(of.word),
            .synopsis = texts.at(of.synopsis),
            .help = texts.at(of.help),
            .example = texts.at(of.example),
            .options = of.options,
            .type = of.type,
            .enable = of.enable,
            .minutes = of.minutes,
            .minutes_most = of.minutes_most,
            .run = of.run};
}

ctl_exit ctl_send(const ctl_call &call) {
    utm_app_config_reply reply = {};
    const ctl_exit status = ctl_ask(call.options.daemon, call.request, &reply, "");
    return status == CTL_REFUSED ? ctl_explain(call, call.request) : status;
}

ctl_exit ctl_ask_each(const ctl_call &call, std::initializer_list<ctl_question> questions) {
    for (const ctl_question &question : questions) {
        utm_app_config_cmd request = call.request;
        request.type = question.type;
        const ctl_exit status = ctl_ask(call.options.daemon, request, question.reply, "");
        if (status != CTL_DONE)
            return status == CTL_REFUSED ? ctl_explain(call, request) : status;
    }
    return CTL_DONE;
}
