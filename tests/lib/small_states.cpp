#include "tests/lib/small_states.h"

#include "core/mac.h"
#include "core/owners.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/world.h"
#include "usage/accounting.h"
#include "usage/top_apps.h"

#include <cstdlib>

namespace {

std::string command_lines(const char *verb, const std::vector<world::mac_t> &macs,
                          const std::string &rest) {
    std::string lines;
    for (const world::mac_t &mac : macs)
        lines +=
            std::string("run lcsh apg acl ") + verb + " " + mac_text(mac.data()).text + rest + "\n";
    return lines;
}

std::string event_lines(const std::string &verb, int32_t profile_id) {
    const std::string what = verb + " profile " + std::to_string(profile_id);
    return "event " + what + "\nlog send event: " + what + " to use network\n";
}

} // namespace

namespace world {

config_user_profile_t *make_profile(int32_t id, const std::vector<mac_t> &devices) {
    quietly([&] {
        if (utm_app_create_profile(id) != 0)
            abort();
        for (const mac_t &mac : devices)
            if (utm_app_add_device(id, mac.data()) != 0)
                abort();
    });
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_find_profile(id);
}

void make_usage(config_user_profile_t *profile, const std::vector<config_app_minutes_t> &apps) {
    const mutex_guard lock(utm_app_config_mutex);
    for (auto app = apps.rbegin(); app != apps.rend(); ++app) {
        config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
        usage->app_id = app->app_id;
        usage->daily_used = app->minutes;
        list_push_front(&profile->app_stat_list, &usage->link);
        profile->app_count += 1;
    }
    utm_app_link_policy_to_usage(profile);
}

config_app_policy_t *make_policy(int32_t id, const std::vector<config_policy_rule_t> &rules,
                                 config_user_profile_t *profile) {
    quietly([&] {
        const int32_t count = static_cast<int32_t>(rules.size());
        if (utm_app_create_policy(id) != id ||
            utm_app_add_apps_to_policy(id, rules.data(), count) != 0 ||
            (profile != nullptr &&
             utm_app_add_policy_to_profile(profile->user_profile_id, id) != 0))
            abort();
    });
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_find_policy(id);
}

config_app_usage_t *usage_of(config_user_profile_t *profile, int32_t app_id) {
    const mutex_guard lock(utm_app_config_mutex);
    return utm_app_find_app_usage(&profile->app_stat_list, app_id);
}

std::string block_lines(const std::vector<mac_t> &macs, int32_t app_id) {
    return command_lines("set", macs, " " + std::to_string(app_id) + " 0 18");
}

std::string unblock_lines(const std::vector<mac_t> &macs, int32_t app_id) {
    return command_lines("del", macs, " " + std::to_string(app_id) + " 0");
}

std::string reset_lines(const std::vector<mac_t> &macs) {
    return command_lines("reset", macs, "");
}

std::string block_event(int32_t profile_id) {
    return event_lines("block", profile_id);
}

std::string unblock_event(int32_t profile_id) {
    return event_lines("unblock", profile_id);
}

void empty_store() {
    quietly([] {
        utm_app_flush_profiles();
        const mutex_guard lock(utm_app_config_mutex);
        utm_app_clear_global_app_stat();
        for (config_app_policy_t &policy : all_policies())
            utm_app_destroy_policy(&policy);
    });
}

void set_active(bool active) {
    const mutex_guard lock(utm_app_config_mutex);
    activate = active ? 1 : 0;
}

} // namespace world
