#pragma once
/// One rule of a policy as plain figures: as a request asks for it, as the store lists it and as a
/// usage file has it. The store's own record of a rule has links besides (`config_policy_app_t`).

#include <cstdint>

struct config_policy_rule_t {
    int32_t app_id;
    int32_t action;      ///< `config_policy_action`; what comes from outside may be any number
    int32_t daily_limit; ///< minutes; decides only for POLICY_ACTION_LIMIT
};
