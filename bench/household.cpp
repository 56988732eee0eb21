#include "bench/household.h"

#include "store/policies.h"
#include "store/profiles.h"
#include "usage/accounting.h"
#include "usage/top_apps.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t devices_per_profile = 3;
constexpr int32_t rules_per_policy = 10;
constexpr int32_t unreachable_limit = 2'000'000'000;

const std::string *profile_reply = nullptr;
const std::string *router_reply = nullptr;

/// A household that could not be built measures nothing.
void must(int32_t result) {
    if (result != 0)
        abort();
}

/// Ids as engines number applications: in runs of some dozens, with gaps.
int32_t app_id(int32_t index) {
    return 1000 * (1 + index / 40) + index % 40;
}

/// Thirty days and three counters of everyday sizes.
void give_history(config_app_usage_t *usage) {
    for (int32_t slot = 0; slot < day_ring_days; ++slot)
        usage->prev_30_days[slot] = (usage->app_id * 7 + slot * 31) % 180;
    usage->next_day_idx = usage->app_id % day_ring_days;
    usage->weekly_used = usage->app_id % 400;
    usage->monthly_used = usage->app_id % 1600;
}

void make_devices(int32_t profile_id) {
    for (int32_t n = 0; n < devices_per_profile; ++n) {
        const uint8_t mac[mac_bytes] = {
            0x02, 0, 0, 0, static_cast<uint8_t>(profile_id), static_cast<uint8_t>(n)};
        must(utm_app_add_device(profile_id, mac));
    }
}

void make_policy(int32_t profile_id) {
    config_policy_rule_t rules[rules_per_policy];
    for (int32_t n = 0; n < rules_per_policy; ++n)
        rules[n] = {app_id(n * 9), POLICY_ACTION_LIMIT, unreachable_limit};
    must(utm_app_create_policy(profile_id) == profile_id ? 0 : -1);
    must(utm_app_add_apps_to_policy(profile_id, rules, rules_per_policy));
    must(utm_app_add_policy_to_profile(profile_id, profile_id));
}

void make_apps(int32_t profile_id, int32_t count) {
    const mutex_guard lock(utm_app_config_mutex);
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    app_index_t index = app_index_of(&profile->app_stat_list);
    for (int32_t n = 0; n < count; ++n)
        must(utm_app_update_app_usage(profile, app_id(n), 1 + n % 90, &index));
    for (config_app_usage_t &usage : apps_of(profile))
        give_history(&usage);
}

void make_router_apps(int32_t count) {
    const mutex_guard lock(utm_app_config_mutex);
    app_index_t index = app_index_of(&utm_app_config_global_app_stat_list);
    for (int32_t n = 0; n < count; ++n)
        utm_app_global_app_stat_add(app_id(n), 1 + n % 90, &index);
    for (config_app_usage_t &usage : global_apps())
        give_history(&usage);
}

std::string reply_of(int32_t apps, bool has_internet) {
    std::string text = "{\n\t\"data\": [\n";
    const auto add = [&text](const char *type, int32_t id, int32_t minutes) {
        text += std::string("\t\t{\n\t\t\t\"type\": \"") + type +
                "\",\n\t\t\t\"app_id\": " + std::to_string(id) +
                ",\n\t\t\t\"total_time_usage\": " + std::to_string(minutes) + "\n\t\t},\n";
    };
    if (has_internet)
        add("INTERNET", 0, 1);
    for (int32_t n = 0; n < apps; ++n)
        add("APP", app_id(n), 1);
    text.erase(text.size() - 2, 1);
    return text + "\t]\n}\n";
}

} // namespace

// ---- What the linker puts in place of these calls ----------------------------------------

extern "C" {

int __wrap_system(const char *) {
    return 0;
}

FILE *__wrap_popen(const char *line, const char *) {
    const std::string *reply = strstr(line, "\"mac\"") != nullptr ? profile_reply : router_reply;
    return fmemopen(const_cast<char *>(reply->data()), reply->size(), "r");
}

int __wrap_pclose(FILE *pipe) {
    return fclose(pipe);
}

} // extern "C"

void household_build(const household_size_t &size) {
    household_clear();
    for (int32_t id = 1; id <= size.profiles; ++id) {
        must(utm_app_create_profile(id));
        make_devices(id);
        make_policy(id);
        make_apps(id, size.apps);
    }
    make_router_apps(size.router_apps);
    const mutex_guard lock(utm_app_config_mutex);
    activate = 1;
}

void household_clear() {
    utm_app_flush_profiles();
    utm_app_reset_top_apps();
}

std::string household_profile_reply(const household_size_t &size) {
    return reply_of(size.apps, true);
}

std::string household_router_reply(const household_size_t &size) {
    return reply_of(size.router_apps, false);
}

void household_answer_queries(const std::string *profile, const std::string *router) {
    profile_reply = profile;
    router_reply = router;
}
