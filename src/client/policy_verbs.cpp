/// Policies: rules for single applications.

#include "client/arguments.h"
#include "client/growing.h"
#include "client/message.h"
#include "client/requests.h"
#include "client/verbs.h"

#include <algorithm>

namespace {

bool read_policy(const char *text, int32_t *id) {
    return ctl_read_number(text, "a policy's number", id);
}

/// Sends a request that needs nothing but the policy.
ctl_exit do_for_policy(const ctl_call &call, uint8_t type) {
    int32_t id = 0;
    if (!read_policy(call.operands[0], &id))
        return CTL_USAGE;
    return ctl_do(call, {.type = type, .arg0 = id});
}

using rule_list = ctl_growing<utm_app_config_app_entry>;

/// Sends rules in their order, as many to a request as it has room for.
ctl_exit send_rules(const ctl_call &call, int32_t policy_id, const rule_list &rules) {
    constexpr size_t room = UTM_APP_CONFIG_APP_LIST_MAX;
    ctl_exit status = CTL_DONE;
    for (size_t next = 0; next < rules.size() && status == CTL_DONE; next += room) {
        const size_t count = std::min(room, rules.size() - next);
        status = ctl_do(
            call, ctl_rules_request(policy_id, rules.begin() + next, static_cast<int32_t>(count)));
    }
    return status;
}

} // namespace

ctl_exit ctl_policy_create(const ctl_call &call) {
    return do_for_policy(call, UTM_APP_CONFIG_CREATE_POLICY);
}

ctl_exit ctl_policy_rule(const ctl_call &call) {
    int32_t policy_id = 0;
    rule_list rules;
    if (!read_policy(call.operands[0], &policy_id))
        return CTL_USAGE;
    for (size_t i = 1; i < call.operand_count; ++i) {
        utm_app_config_app_entry rule = {};
        if (!ctl_read_rule(call.names, call.operands[i], &rule))
            return CTL_USAGE;
        if (!rules.add(rule))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return send_rules(call, policy_id, rules);
}

ctl_exit ctl_policy_bind(const ctl_call &call) {
    int32_t profile_id = 0;
    int32_t policy_id = 0;
    if (!ctl_read_number(call.operands[0], "a profile's number", &profile_id) ||
        !read_policy(call.operands[1], &policy_id))
        return CTL_USAGE;
    return ctl_do(
        call,
        {.type = UTM_APP_CONFIG_ADD_POLICY_TO_PROFILE, .arg0 = profile_id, .arg1 = policy_id});
}

ctl_exit ctl_policy_clear(const ctl_call &call) {
    return do_for_policy(call, UTM_APP_CONFIG_DELETE_POLICY);
}
