#include "tests/model/apply_household.h"

#include "control/feature_switch.h"
#include "core/json.h"
#include "core/mac.h"
#include "format/usage_file.h"
#include "persist/export.h"
#include "persist/import.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "tests/lib/small_states.h"
#include "tests/model/state.h"
#include "usage/calendar.h"
#include "usage/limits.h"
#include "usage/top_apps.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace model {

namespace {

constexpr const char *weekday_names[] = {"sunday",   "monday", "tuesday", "wednesday",
                                         "thursday", "friday", "saturday"};

const std::string counted_path = "/tmp/apply_counted.json";

std::string joined(const std::vector<std::string> &elements) {
    std::string text;
    for (const std::string &element : elements)
        text += (text.empty() ? "" : ", ") + element;
    return text;
}

std::string quoted(const std::string &text) {
    return "\"" + text + "\"";
}

std::string json_of(int32_t number, const wanted_person_t &person) {
    std::vector<std::string> devices;
    std::vector<std::string> limits;
    std::vector<std::string> rules;
    for (const std::string &mac : person.devices)
        devices.push_back("{\"mac\": " + quoted(mac) + "}");
    for (size_t day = 0; day < person.weekdays.size(); ++day)
        limits.push_back(quoted(weekday_names[day]) + ": " + std::to_string(person.weekdays[day]));
    for (const auto &[app, minutes] : person.rules)
        rules.push_back("{\"name\": " + quoted(std::to_string(app)) + ", \"rule\": " +
                        (minutes == rule_blocks ? quoted("blocked") : std::to_string(minutes)) +
                        "}");
    return "{\"number\": " + std::to_string(number) + ", \"name\": \"person " +
           std::to_string(number) + "\", \"devices\": [" + joined(devices) + "], \"limit\": {" +
           joined(limits) + "}, \"enforced\": " + (person.enforced ? "true" : "false") +
           ", \"applications\": [" + joined(rules) + "]}";
}

int32_t below(std::mt19937 *random, int32_t bound) {
    return static_cast<int32_t>((*random)() % static_cast<uint32_t>(bound));
}

bool one_in(std::mt19937 *random, int32_t n) {
    return below(random, n) == 0;
}

// Few numbers, small limits: they meet those of the walks.

std::string random_device(std::mt19937 *random) {
    return std::string("00:11:22:AA:BB:0") + "ABCD"[below(random, 4)];
}

int32_t random_number(std::mt19937 *random) {
    constexpr int32_t odd[] = {0, -3, INT_MAX, INT_MIN, 9};
    return one_in(random, 20) ? odd[below(random, 5)] : 1 + below(random, 4);
}

int32_t random_limit(std::mt19937 *random) {
    return one_in(random, 8) ? 1440 : 1 + below(random, 12);
}

void choose_limits(wanted_person_t *person, std::mt19937 *random) {
    person->weekdays.fill(random_limit(random));
    if (one_in(random, 3))
        for (int32_t &limit : person->weekdays)
            limit = random_limit(random);
}

void choose_rule(wanted_person_t *person, std::mt19937 *random) {
    const int32_t app = 1 + below(random, 5);
    if (one_in(random, 3))
        person->rules.erase(app);
    else
        person->rules[app] = one_in(random, 3) ? rule_blocks : 1 + below(random, 8);
}

/// A device is one person's.
void give_device(wanted_t *household, wanted_person_t *person, std::mt19937 *random) {
    const std::string mac = random_device(random);
    for (auto &[number, other] : household->people)
        other.devices.erase(mac);
    person->devices.insert(mac);
}

void add_person(wanted_t *household, std::mt19937 *random) {
    wanted_person_t &person = household->people[random_number(random)];
    choose_limits(&person, random);
    person.enforced = !one_in(random, 4);
    for (int32_t i = below(random, 3); i > 0; --i)
        give_device(household, &person, random);
    for (int32_t i = below(random, 4); i > 0; --i)
        choose_rule(&person, random);
}

void change_something(wanted_t *household, std::mt19937 *random) {
    if (household->people.empty() || one_in(random, 8)) {
        add_person(household, random);
        return;
    }
    auto person = household->people.begin();
    std::advance(person, below(random, static_cast<int32_t>(household->people.size())));
    switch (below(random, 8)) {
    case 0:
        household->limits = !household->limits;
        break;
    case 1:
        household->people.erase(person);
        break;
    case 2:
        choose_limits(&person->second, random);
        break;
    case 3:
        person->second.enforced = !person->second.enforced;
        break;
    case 4:
        person->second.devices.clear();
        break;
    case 5:
        give_device(household, &person->second, random);
        break;
    default:
        choose_rule(&person->second, random);
    }
}

// ---- What is there --------------------------------------------------------------------------

std::string digits(int64_t value) {
    return std::to_string(value);
}

std::string used_text(const config_app_usage_t &usage) {
    std::string text = "app " + digits(usage.app_id) + " used " + digits(usage.daily_used) + "/" +
                       digits(usage.weekly_used) + "/" + digits(usage.monthly_used) + " days";
    for (int32_t ago = 1; ago <= day_ring_days; ++ago)
        text +=
            " " +
            digits(usage.prev_30_days[(usage.next_day_idx + day_ring_days - ago) % day_ring_days]);
    return text;
}

std::string flag_text(int32_t flag, bool counts) {
    return counts ? " blocked " + digits(flag) : "";
}

std::string person_text(config_user_profile_t *profile, bool flags) UTM_STORE_LOCKED {
    std::string text = " enabled " + digits(profile->daily_limit_enable) + " limit " +
                       digits(profile->daily_limit) + "+" + digits(profile->daily_extend) +
                       " used " + digits(profile->daily_used) + "/" + digits(profile->weekly_used) +
                       "/" + digits(profile->monthly_used) + flag_text(profile->blocked, flags) +
                       " weekdays";
    for (const config_weekday_limit_t &day : weekdays_of(profile))
        text += " " + digits(day.limit);
    return text;
}

void look_at(config_user_profile_t *profile, bool flags, view_t *view) UTM_STORE_LOCKED {
    const std::string person = "person " + digits(profile->user_profile_id);
    view->lines.insert(person + person_text(profile, flags));
    for (const config_device_t &device : devices_of(profile))
        view->lines.insert(person + " device " + mac_text(device.mac).text);
    for (const config_app_usage_t &usage : apps_of(profile))
        view->lines.insert(person + " " + used_text(usage) + flag_text(usage.blocked, flags));
    if (profile->app_policy != nullptr)
        for (const config_policy_app_t &rule : rules_of(profile->app_policy))
            view->lines.insert(person + " rule " + digits(rule.app_id) + " " + digits(rule.action) +
                               "/" + digits(rule.daily_limit));
}

void look_at_store(const std::set<int32_t> *only, bool flags, view_t *view) {
    const mutex_guard lock(utm_app_config_mutex);
    view->lines.insert("limits " + digits(activate));
    for (config_user_profile_t &profile : all_profiles())
        if (only == nullptr || only->contains(profile.user_profile_id))
            look_at(&profile, flags, view);
    for (const config_app_usage_t &usage :
         list_range<config_app_usage_t>(&utm_app_config_global_app_stat_list))
        view->lines.insert("router " + used_text(usage));
}

void look_at_engine(const engine_t &engine, const std::set<int32_t> *only,
                    const std::set<std::string> &devices, view_t *view) {
    view->lines.insert("engine guard " + digits(engine.guard));
    for (const auto &[mac, app] : engine.blocked)
        if (only == nullptr || devices.contains(mac))
            view->lines.insert("engine blocks " + digits(app) + " on " + mac);
    for (const auto &[profile, macs] : engine.cut_off) {
        if (only != nullptr && !only->contains(profile))
            continue;
        std::string line = "engine cuts off person " + digits(profile) + ":";
        for (const std::string &mac : macs)
            line += " " + mac;
        view->lines.insert(line);
    }
}

// ---- A daemon that was set up so from the start ---------------------------------------------

/// The use of those whom the household names.
std::string usage_of_household(const wanted_t &household, const std::string &usage) {
    const json_ptr root(json_tokener_parse(usage.c_str()));
    json_object *people = usage_profiles_of(root.get());
    for (size_t i = json_array_size(people); i-- > 0;) {
        usage_profile_t profile;
        json_object *element = json_object_array_get_idx(people, i);
        if (!usage_read_profile(element, &profile) ||
            !household.people.contains(profile.user_profile_id))
            json_object_array_del_idx(people, i, 1);
    }
    return json_object_to_json_string(root.get());
}

std::array<uint8_t, mac_bytes> bytes_of(const std::string &mac) {
    std::array<uint8_t, mac_bytes> bytes = {};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(strtol(mac.c_str() + 3 * i, nullptr, 16));
    return bytes;
}

void expect(int32_t result) {
    if (result != 0)
        abort();
}

struct listener_t {
    void (*hear)(void *);
    void *context;
    void operator()() const { hear(context); }
};

void create_people(const wanted_t &household, const listener_t &hear) {
    for (const auto &[id, person] : household.people) {
        expect(utm_app_create_profile(id));
        for (const std::string &mac : person.devices)
            expect(utm_app_add_device(id, bytes_of(mac).data()));
        for (int32_t day = 0; day < 7; ++day)
            expect(utm_app_set_weekday_daily_limit(id, day,
                                                   person.weekdays[static_cast<size_t>(day)]));
        // Without a device nobody would ever be told that the person is free again.
        expect(utm_app_set_daily_limit_enable(id, person.enforced && !person.devices.empty()));
        hear();
    }
}

/// @return the number of the person's policy
std::map<int32_t, int32_t> bind_empty_policies(const wanted_t &household, const listener_t &hear) {
    std::map<int32_t, int32_t> policies;
    for (const auto &[id, person] : household.people) {
        const int32_t policy = static_cast<int32_t>(policies.size()) + 1;
        policies[id] = utm_app_create_policy(policy);
        expect(utm_app_add_policy_to_profile(id, policy));
        hear();
    }
    return policies;
}

void give_extends(const wanted_t &household, const restored_t &restored, const listener_t &hear) {
    for (const auto &[id, extend] : restored.extends)
        for (int32_t left = household.people.contains(id) ? extend : 0; left > 0; left -= 360) {
            expect(utm_app_add_extend(id, std::min(left, 360)));
            hear();
        }
}

} // namespace

std::string json_of(const wanted_t &household) {
    std::vector<std::string> people;
    for (const auto &[id, person] : household.people)
        people.push_back(json_of(id, person));
    return std::string("{\"limits\": ") + (household.limits ? "true" : "false") +
           ", \"people\": [" + joined(people) + "]}";
}

void fill(const wanted_t &household, household_t *filled) {
    filled->limits = household.limits;
    for (const auto &[id, person] : household.people) {
        household_person_t record = {};
        record.number = id;
        snprintf(record.name.text, sizeof(record.name.text), "person %d", id);
        std::copy(person.weekdays.begin(), person.weekdays.end(), record.weekday_limits);
        record.enforced = person.enforced;
        record.devices = {filled->devices.size(), person.devices.size()};
        record.rules = {filled->rules.size(), person.rules.size()};
        expect(filled->people.add(record) ? 0 : -1);
        for (const std::string &mac : person.devices) {
            household_device_t device = {};
            const auto bytes = bytes_of(mac);
            std::copy(bytes.begin(), bytes.end(), device.mac);
            expect(filled->devices.add(device) ? 0 : -1);
        }
        for (const auto &[app, minutes] : person.rules)
            expect(filled->rules.add({app, minutes == rule_blocks ? 2 : 1, minutes}) ? 0 : -1);
    }
}

wanted_t random_household(std::mt19937 *random) {
    wanted_t household;
    household.limits = !one_in(random, 5);
    for (int32_t i = below(random, 5); i > 0; --i)
        add_person(&household, random);
    return household;
}

wanted_t changed_household(const wanted_t &household, std::mt19937 *random) {
    wanted_t changed = household;
    for (int32_t i = 1 + below(random, 3); i > 0; --i)
        change_something(&changed, random);
    return changed;
}

restored_t counted() {
    restored_t restored;
    expect(utm_app_export_statistics(counted_path.c_str(), 1));
    std::ifstream file(counted_path);
    restored.usage.assign(std::istreambuf_iterator<char>(file), {});
    const mutex_guard lock(utm_app_config_mutex);
    for (const config_user_profile_t &profile : all_profiles())
        restored.extends[profile.user_profile_id] = profile.daily_extend;
    return restored;
}

view_t view_of(const engine_t &engine, const std::set<int32_t> *only,
               const std::set<std::string> &devices, bool flags) {
    view_t view;
    look_at_store(only, flags, &view);
    look_at_engine(engine, only, devices, &view);
    return view;
}

void set_up(const wanted_t &household, const restored_t &restored, void (*hear_with)(void *),
            void *context) {
    const listener_t hear = {hear_with, context};
    expect(utm_app_set_activate(1));
    hear();
    create_people(household, hear);
    const std::map<int32_t, int32_t> policies = bind_empty_policies(household, hear);
    give_extends(household, restored, hear);
    std::ofstream(counted_path) << usage_of_household(household, restored.usage);
    expect(utm_app_import_statistics(counted_path.c_str()));
    hear();
    for (const auto &[id, person] : household.people)
        for (const auto &[app, minutes] : person.rules) {
            const config_policy_rule_t rule = {app, minutes == rule_blocks ? 2 : 1, minutes};
            expect(utm_app_add_apps_to_policy(policies.at(id), &rule, 1));
            hear();
        }
    if (!household.limits)
        expect(utm_app_set_activate(0));
    hear();
}

} // namespace model
