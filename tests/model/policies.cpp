#include "tests/model/rules.h"

#include <algorithm>

namespace model {

namespace {

/// The profile that a policy is bound to, and its record of an application.
struct bound_t {
    profile_t *profile = nullptr;
    app_t *app = nullptr;
};

bound_t bound_to(state_t &state, const policy_t &policy, int32_t app) {
    bound_t bound;
    if (policy.profile) {
        bound.profile = find_profile(state, *policy.profile);
        bound.app = find_app(bound.profile->apps, app);
    }
    return bound;
}

void set_blocked(state_t &state, const bound_t &bound, int32_t app, bool blocked) {
    if (state.active && bound.profile != nullptr) {
        if (blocked)
            block_app(state, *bound.profile, app);
        else
            unblock_app(state, *bound.profile, app);
    }
    if (bound.app != nullptr)
        bound.app->blocked = blocked;
}

void add_rule(state_t &state, policy_t &policy, const rule_t &rule) {
    policy.rules.insert(policy.rules.begin(), rule);
    policy.count += 1;
    log(state, "Policy %d add app %d action %d limit %d success", policy.id, rule.app, rule.action,
        rule.limit);
    const bound_t bound = bound_to(state, policy, rule.app);
    if (rule.action == 2)
        set_blocked(state, bound, rule.app, true);
    else if (state.active && bound.app != nullptr && rule.limit <= bound.app->used.daily)
        set_blocked(state, bound, rule.app, true);
}

/// A limit takes the place of an earlier rule.
void change_to_limit(state_t &state, const bound_t &bound, const rule_t &rule) {
    if (!state.active)
        return;
    if (bound.app == nullptr) {
        set_blocked(state, bound, rule.app, false);
        return;
    }
    const bool ought_to_be = bound.app->used.daily >= rule.limit;
    if (bound.app->blocked != ought_to_be)
        set_blocked(state, bound, rule.app, ought_to_be);
}

void change_rule(state_t &state, policy_t &policy, const rule_t &rule) {
    log(state, "Policy %d update app %d action %d limit %d success", policy.id, rule.app,
        rule.action, rule.limit);
    const bound_t bound = bound_to(state, policy, rule.app);
    if (rule.action == 0) {
        set_blocked(state, bound, rule.app, false);
        std::erase_if(policy.rules, [&](const rule_t &old) { return old.app == rule.app; });
        policy.count -= 1;
        return;
    }
    *find_rule(policy, rule.app) = rule;
    if (rule.action == 2)
        set_blocked(state, bound, rule.app, true);
    else
        change_to_limit(state, bound, rule);
}

bool set_rule(state_t &state, policy_t &policy, const rule_t &rule) {
    if (rule.action < 0 || rule.action > 2)
        return false;
    if (find_rule(policy, rule.app) != nullptr)
        change_rule(state, policy, rule);
    else if (rule.action != 0)
        add_rule(state, policy, rule);
    return true;
}

} // namespace

bool create_policy(state_t &state, int32_t id) {
    if (id < 1) {
        log(state, "Create policy %d failed because id <= 0", id);
        return false;
    }
    if (find_policy(state, id) != nullptr) {
        log(state, "Create policy %d failed because policy already exist", id);
        return false;
    }
    policy_t policy;
    policy.id = id;
    state.policies.push_back(policy);
    log(state, "Create policy %d success", id);
    return true;
}

bool add_rules(state_t &state, int32_t policy_id, const std::vector<rule_t> &rules) {
    policy_t *policy = find_policy(state, policy_id);
    bool done = policy != nullptr;
    if (policy != nullptr)
        for (const rule_t &rule : rules)
            done = set_rule(state, *policy, rule) && done;
    log(state, "Add apps to policy %d %s", policy_id, done ? "success" : "failed");
    return done;
}

bool delete_rules(state_t &state, int32_t policy_id) {
    policy_t *policy = find_policy(state, policy_id);
    if (policy == nullptr)
        return false;
    if (policy->profile) {
        profile_t *profile = find_profile(state, *policy->profile);
        for (app_t &app : profile->apps)
            app.blocked = false;
        reset_devices(state, *profile);
    }
    policy->rules.clear(); // and the count stays
    return true;
}

bool bind_policy(state_t &state, int32_t profile_id, int32_t policy_id) {
    profile_t *profile = find_profile(state, profile_id);
    if (profile == nullptr) {
        log(state, "Add policy %d to profile %d failed because profile not exist", policy_id,
            profile_id);
        return false;
    }
    if (profile->policy) {
        log(state, "Add policy %d to profile %d failed because already has policy", policy_id,
            profile_id);
        return false;
    }
    policy_t *policy = find_policy(state, policy_id);
    if (policy == nullptr || policy->profile)
        return false;
    profile->policy = policy_id;
    policy->profile = profile_id;
    for (const rule_t &rule : policy->rules) {
        const app_t *app = find_app(profile->apps, rule.app);
        const bool exceeds = rule.action == 1 && app != nullptr && app->used.daily >= rule.limit;
        if (rule.action != 2 && !exceeds)
            continue;
        log(state, "block device to use %d%s", rule.app, exceeds ? " because exceed limit" : "");
        block_app(state, *profile, rule.app);
    }
    log(state, "Add policy %d to profile %d success", policy_id, profile_id);
    return true;
}

} // namespace model
