#include "tests/unit/support/usage_file_fixture.h"

#include "core/debug_log.h"
#include "core/mac.h"
#include "core/owners.h"
#include "persist/export.h"
#include "persist/export_schedule.h"
#include "persist/import.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/world.h"
#include "usage/top_apps.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

config_app_usage_t *new_record(const usage_file::app_t &app) {
    config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
    usage->app_id = app.id;
    usage->daily_used = app.daily;
    usage->weekly_used = app.weekly;
    usage->monthly_used = app.monthly;
    usage->next_day_idx = app.next;
    std::copy_n(app.ring.begin(), day_ring_days, usage->prev_30_days);
    return usage;
}

world::mac_t mac_of(const std::string &text) {
    world::mac_t mac(mac_bytes);
    if (!mac_parse(text.c_str(), mac.data()))
        abort();
    return mac;
}

std::vector<world::mac_t> macs_of(const std::vector<std::string> &texts) {
    std::vector<world::mac_t> macs;
    for (const std::string &text : texts)
        macs.push_back(mac_of(text));
    return macs;
}

/// Rules come to the front one by one, so they are added last one first.
void make_rules(const usage_file::policy_t &policy, config_user_profile_t *profile) {
    std::vector<config_policy_rule_t> rules;
    for (auto rule = policy.rules.rbegin(); rule != policy.rules.rend(); ++rule)
        rules.push_back({rule->app_id, rule->action, rule->limit});
    world::make_policy(policy.id, rules, profile);
}

} // namespace

void usage_file_fixture::SetUp() {
    world::reset();
    world::set_active(true);
    set_last_export(world::default_now);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    std::filesystem::remove_all("/tmp/ApplicationData");
}

void usage_file_fixture::TearDown() {
    std::filesystem::remove_all(folder);
    std::filesystem::remove_all("/tmp/ApplicationData");
}

void usage_file_fixture::write_file(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string usage_file_fixture::read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

int32_t usage_file_fixture::import_text(const std::string &text) {
    write_file(import_path, text);
    return utm_app_import_statistics(import_path);
}

std::string usage_file_fixture::export_text() {
    world::quietly([] { EXPECT_EQ(utm_app_export_statistics(export_path, 1), 0); });
    return read_file(export_path);
}

void usage_file_fixture::empty_store() {
    world::empty_store();
}

void usage_file_fixture::forget_log() {
    world::trace();
    std::ofstream{debug_log_path};
    world::trace();
}

void usage_file_fixture::set_last_export(int64_t seconds) {
    last_export_statistics_ts = seconds;
}

void usage_file_fixture::make(const usage_file::profile_t &from) {
    config_user_profile_t *profile = world::make_profile(from.id, macs_of(from.devices));
    {
        const mutex_guard lock(utm_app_config_mutex);
        profile->daily_used = from.daily;
        profile->weekly_used = from.weekly;
        profile->monthly_used = from.monthly;
        profile->daily_extend = from.extend;
        profile->blocked = from.blocked;
        size_t day = 0;
        for (config_weekday_limit_t &entry : weekdays_of(profile))
            entry.limit = from.weekdays[day++];
        for (const usage_file::app_t &app : from.apps) {
            list_append(&profile->app_stat_list, &new_record(app)->link);
            profile->app_count += 1;
        }
    }
    if (from.policy)
        make_rules(*from.policy, profile);
}

void usage_file_fixture::make_router_app(const usage_file::app_t &app) {
    const mutex_guard lock(utm_app_config_mutex);
    list_append(&utm_app_config_global_app_stat_list, &new_record(app)->link);
    utm_app_config_global_app_stat_list_count += 1;
}

void usage_file_fixture::make(const usage_file::document_t &document) {
    for (const usage_file::profile_t &profile : document.profiles)
        make(profile);
    for (const usage_file::app_t &app : document.router)
        make_router_app(app);
}
