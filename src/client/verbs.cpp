#include "client/verbs.h"

namespace {

constexpr size_t many = SIZE_MAX;
constexpr unsigned usage_options = CTL_OPTION_JSON | CTL_OPTION_ASCII | CTL_OPTION_NAMES |
                                   CTL_OPTION_APPS | CTL_OPTION_DAY | CTL_OPTION_WEEK |
                                   CTL_OPTION_MONTH | CTL_OPTION_HISTORY;

constexpr char no_profile[] = "there is no such profile; profile add creates it";
constexpr char bad_limit[] = "there is no such profile, or the limit is not 1m to 24h";

constexpr ctl_verb verbs[] = {
    {"The daemon", "ping", nullptr, "", "ask whether the daemon answers", 0, 0, 0, nullptr,
     ctl_ping},
    {nullptr, "status", nullptr, "", "show whether limits are enforced", 0, 0, CTL_OPTION_JSON,
     nullptr, ctl_status},
    {nullptr, "activate", nullptr, "on|off", "enforce limits, or let everything pass", 1, 1, 0,
     nullptr, ctl_activate},
    {nullptr, "debug", nullptr, "on|off", "have the daemon log what it does", 1, 1, 0, nullptr,
     ctl_debug},

    {"People", "profile", "add", "ID", "create a profile, without limits", 1, 1, 0,
     "it is out of memory", ctl_profile_add},
    {nullptr, "profile", "del", "ID", "delete a profile and release its devices", 1, 1, 0, nullptr,
     ctl_profile_del},
    {nullptr, "device", "add", "ID MAC...", "add devices to a profile", 2, many, 0, no_profile,
     ctl_device_add},
    {nullptr, "device", "del", "ID MAC...", "take devices from a profile, release them", 2, many, 0,
     no_profile, ctl_device_del},

    {"Time limits", "limit", "show", "ID", "show today's limit and whether it is enabled", 1, 1,
     CTL_OPTION_JSON, no_profile, ctl_limit_show},
    {nullptr, "limit", "set", "ID MINUTES", "set the limit of today and of every weekday", 2, 2, 0,
     bad_limit, ctl_limit_set},
    {nullptr, "limit", "enable", "ID", "cut the profile off when its limit is reached", 1, 1, 0,
     no_profile, ctl_limit_enable},
    {nullptr, "limit", "disable", "ID", "only count what the profile uses", 1, 1, 0, no_profile,
     ctl_limit_disable},
    {nullptr, "weekday", "show", "ID", "show the limit of each weekday", 1, 1, CTL_OPTION_JSON,
     no_profile, ctl_weekday_show},
    {nullptr, "weekday", "set", "ID DAY MINUTES", "set the limit of one weekday", 3, 3, 0,
     bad_limit, ctl_weekday_set},
    {nullptr, "extend", "show", "ID", "show today's bonus", 1, 1, CTL_OPTION_JSON, no_profile,
     ctl_extend_show},
    {nullptr, "extend", "add", "ID MINUTES", "add to today's bonus", 2, 2, 0,
     "there is no such profile, or the bonus is not 1m to 6h", ctl_extend_add},
    {nullptr, "extend", "reset", "ID", "take today's bonus back", 1, 1, 0, no_profile,
     ctl_extend_reset},

    {"What was used", "usage", nullptr, "ID", "show what a profile used, in many ways", 1, 1,
     usage_options, no_profile, ctl_usage},
    {nullptr, "report", nullptr, "[PATH]", "write a page (HTML), as of now or of a file", 0, 1,
     CTL_OPTION_NAMES,
     "limits are switched off (activate on enforces them), or it cannot write to the temporary "
     "folder",
     ctl_report},

    {"Applications", "policy", "create", "POLICY", "create a policy, without rules", 1, 1, 0,
     "there is such a policy already, or its number is not 1 or more", ctl_policy_create},
    {nullptr, "policy", "rule", "POLICY APP=RULE...", "limit, block or free applications", 2, many,
     CTL_OPTION_NAMES, "there is no such policy; policy create creates it", ctl_policy_rule},
    {nullptr, "policy", "bind", "ID POLICY", "give a profile a policy, for good", 2, 2, 0,
     "the profile or the policy does not exist, or one of them is bound already", ctl_policy_bind},
    {nullptr, "policy", "clear", "POLICY", "remove all rules of a policy", 1, 1, 0,
     "there is no such policy", ctl_policy_clear},
    {nullptr, "signature", "load", "PATH", "have the DPI engine learn applications", 1, 1, 0,
     "the DPI engine has not loaded the signatures; is the file there, and is it one of its kind?",
     ctl_signature_load},

    {"The usage file", "interval", "show", "", "show how often it is written", 0, 0,
     CTL_OPTION_JSON, nullptr, ctl_interval_show},
    {nullptr, "interval", "set", "MINUTES", "set how often it is written", 1, 1, 0,
     "an interval is one minute or more", ctl_interval_set},
    {nullptr, "export", nullptr, "PATH", "have the daemon write what was used", 1, 1, 0,
     "limits are switched off (activate on enforces them), or it cannot write there; is the folder "
     "there, and is "
     "there room?",
     ctl_export},
    {nullptr, "import", nullptr, "PATH", "have the daemon read such a file", 1, 1, 0,
     "limits are switched off (activate on enforces them), or the file is missing, damaged or from "
     "the future",
     ctl_import},
};

} // namespace

std::span<const ctl_verb> ctl_verbs() {
    return verbs;
}
