#include "tests/model/rules.h"

#include <algorithm>

namespace model {

namespace {

/// "00:11:22:33:44:55 AA:..." as "001122334455 AA... ". Without devices the old text stays.
void rewrite_device_text(profile_t &profile) {
    if (profile.devices.empty())
        return;
    profile.device_text.clear();
    for (std::string mac : profile.devices) {
        std::erase(mac, ':');
        profile.device_text += mac + " ";
    }
}

/// A device that joins a profile comes under all of its blocks.
void block_newcomer(state_t &state, const profile_t &profile, const std::string &mac) {
    if (profile.blocked && profile.enabled)
        log(state, "[WARNING] __block_one_device_to_use_network is not implemented");
    for (const app_t &app : profile.apps)
        if (app.blocked)
            block_app(state, mac, app.id);
    if (!profile.policy)
        return;
    for (const rule_t &rule : find_policy(state, *profile.policy)->rules)
        if (rule.action == 2)
            block_app(state, mac, rule.app);
}

/// What a profile that goes leaves behind: its policy goes too, and its devices are free. One
/// without devices is announced to nobody.
void take_leave(state_t &state, const profile_t &profile) {
    std::erase_if(state.policies,
                  [&](const policy_t &policy) { return policy.id == profile.policy; });
    reset_devices(state, profile);
    if (!profile.devices.empty() && profile.blocked)
        announce(state, profile, false);
    log(state, "Delete user profile %d and unblock all success", profile.id);
}

} // namespace

bool create_profile(state_t &state, int32_t id) {
    if (find_profile(state, id) == nullptr) {
        profile_t profile;
        profile.id = id;
        profile.collected = state.now;
        state.profiles.push_back(profile);
    }
    log(state, "Create profile %d success", id);
    return true;
}

bool delete_profile(state_t &state, int32_t id) {
    if (const profile_t *profile = find_profile(state, id)) {
        take_leave(state, *profile);
        std::erase_if(state.profiles, [id](const profile_t &other) { return other.id == id; });
    }
    log(state, "Delete profile %d success", id);
    return true;
}

void flush_profiles(state_t &state) {
    for (const profile_t &profile : state.profiles)
        take_leave(state, profile);
    state.profiles.clear();
    log(state, "Flush all profiles success");
}

bool add_device(state_t &state, int32_t profile_id, const std::string &mac) {
    profile_t *profile = find_profile(state, profile_id);
    if (profile == nullptr) {
        log(state, "Add dev to profile %d failed because profile not exist", profile_id);
        return false;
    }
    if (std::count(profile->devices.begin(), profile->devices.end(), mac) > 0)
        return true;
    profile->devices.push_back(mac);
    rewrite_device_text(*profile);
    if (state.active)
        block_newcomer(state, *profile, mac);
    log(state, "Add dev mac = %s to profile %d success", mac.c_str(), profile_id);
    return true;
}

bool delete_device(state_t &state, int32_t profile_id, const std::string &mac) {
    profile_t *profile = find_profile(state, profile_id);
    if (profile == nullptr) {
        log(state, "Del dev from profile %d failed because profile not exist", profile_id);
        return false;
    }
    if (std::erase(profile->devices, mac) == 0) {
        log(state, "Del dev %s from profile %d failed because cannot find dev", mac.c_str(),
            profile_id);
        return true;
    }
    rewrite_device_text(*profile);
    if (state.active) {
        reset_device(state, mac);
        if (profile->blocked && profile->enabled)
            state.trace += "run profile_daily_limit.sh -C " + std::to_string(profile_id) + "\n";
    }
    log(state, "Del dev %s from profile %d success", mac.c_str(), profile_id);
    return true;
}

} // namespace model
