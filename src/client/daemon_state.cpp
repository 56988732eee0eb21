#include "client/daemon_state.h"

#include "core/regular_file.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <sys/stat.h>

namespace {

/// As for a report: json-c takes many times a file's size.
constexpr size_t size_limit = size_t{2} * 1024 * 1024;

[[nodiscard]] bool read_devices(json_object *list, ctl_daemon_state *state,
                                household_part_t *part) {
    part->first = state->devices.size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        ctl_mac mac;
        if (!json_object_is_type(element, json_type_string) ||
            !mac_parse(json_object_get_string(element), mac.bytes))
            continue;
        if (!state->devices.add(mac))
            return false;
    }
    part->count = state->devices.size() - part->first;
    return true;
}

[[nodiscard]] bool read_rules(json_object *list, ctl_daemon_state *state, household_part_t *part) {
    part->first = state->rules.size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        config_policy_rule_t rule;
        if (usage_read_rule(json_object_array_get_idx(list, i), &rule) && !state->rules.add(rule))
            return false;
    }
    part->count = state->rules.size() - part->first;
    return true;
}

bool is_any(const usage_counters_t &used) {
    return used.daily != 0 || used.weekly != 0 || used.monthly != 0;
}

bool is_any(const usage_app_t &app) {
    return is_any(app.used) || std::any_of(std::begin(app.prev_30_days), std::end(app.prev_30_days),
                                           [](int32_t minutes) { return minutes != 0; });
}

[[nodiscard]] bool read_apps(json_object *list, ctl_daemon_state *state, household_part_t *part) {
    part->first = state->apps.size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        usage_app_t app;
        if (!usage_read_app(json_object_array_get_idx(list, i), &app))
            continue;
        state->has_counted |= is_any(app);
        if (!state->apps.add({app.app_id, app.used.daily}))
            return false;
    }
    part->count = state->apps.size() - part->first;
    return true;
}

int32_t policy_of(json_object *element) {
    json_object *policy = nullptr;
    json_object *number = nullptr;
    if (json_object_object_get_ex(element, usage_key::app_policy, &policy) == 0 ||
        !json_object_is_type(policy, json_type_object) ||
        json_object_object_get_ex(policy, usage_key::app_policy_id, &number) == 0)
        return 0;
    return json_int(number);
}

[[nodiscard]] bool read_person(json_object *element, const usage_profile_t &read,
                               ctl_daemon_state *state) {
    ctl_daemon_person person = {};
    person.number = read.user_profile_id;
    std::fill_n(person.weekday_limits, days_per_week, household_no_limit);
    for (int32_t i = 0; i < read.weekday_count; ++i)
        person.weekday_limits[read.weekdays[i].day] = read.weekdays[i].limit;
    person.limit = household_no_limit;
    person.extend = read.daily_extend;
    person.used = read.used.daily;
    person.blocked = read.blocked != 0;
    person.policy = policy_of(element);
    state->has_counted |= is_any(read.used);
    return read_devices(usage_devices_of(element), state, &person.devices) &&
           read_rules(usage_rules_of(element), state, &person.rules) &&
           read_apps(usage_apps_of(element), state, &person.apps) && state->people.add(person);
}

bool is_today(int32_t timestamp) {
    const time_t then = timestamp;
    const time_t now = utm_app_now();
    tm day = {};
    tm today = {};
    localtime_r(&then, &day);
    localtime_r(&now, &today);
    return day.tm_year == today.tm_year && day.tm_yday == today.tm_yday;
}

const char *reason_of(int error) {
    switch (error) {
    case ENOTSUP:
        return "it is not a regular file";
    case EFBIG:
        return "it is larger than 2 MiB";
    case EOVERFLOW:
        return "it holds more than 64 profiles of 500 applications would";
    default:
        return strerror(error);
    }
}

/// Asks one getter about a person.
ctl_exit get(const ctl_wire &wire, uint8_t type, int32_t number, utm_app_config_reply *reply) {
    return ctl_wire_ask(wire, {.type = type, .arg0 = number}, reply);
}

ctl_exit ask_weekdays(const ctl_wire &wire, ctl_daemon_person *person) {
    utm_app_config_reply replies[days_per_week];
    size_t count = 0;
    const ctl_exit status = wire.ask(
        wire.context, {.type = UTM_APP_CONFIG_GET_WEEKDAY_DAILY_LIMIT, .arg0 = person->number},
        std::span<utm_app_config_reply>(replies, days_per_week), &count);
    for (size_t i = 0; status == CTL_DONE && i < count; ++i)
        if (replies[i].weekday_day >= 0 && replies[i].weekday_day < days_per_week)
            person->weekday_limits[replies[i].weekday_day] = replies[i].weekday_limit;
    return status;
}

/// What an export does not have.
ctl_exit ask_limit(const ctl_wire &wire, ctl_daemon_person *person) {
    utm_app_config_reply reply = {};
    ctl_exit status = get(wire, UTM_APP_CONFIG_GET_DAILY_LIMIT_ENABLE, person->number, &reply);
    if (status != CTL_DONE)
        return status;
    person->enabled = reply.daily_limit_enable != 0;
    status = get(wire, UTM_APP_CONFIG_GET_DAILY_LIMIT, person->number, &reply);
    person->limit = reply.daily_limit;
    return status;
}

ctl_exit ask_person(const ctl_wire &wire, ctl_daemon_person *person) {
    utm_app_config_reply reply = {};
    ctl_exit status = ask_limit(wire, person);
    if (status == CTL_DONE)
        status = ask_weekdays(wire, person);
    if (status == CTL_DONE)
        status = get(wire, UTM_APP_CONFIG_GET_EXTEND, person->number, &reply);
    person->extend = reply.extend;
    if (status == CTL_DONE)
        status = get(wire, UTM_APP_CONFIG_GET_PROFILE_USAGE, person->number, &reply);
    person->used = reply.daily_used;
    return status;
}

/// Seconds after which the daemon replaces the file by itself, unless it was told otherwise.
constexpr time_t own_export_after = 30 * 60;

/// To the nanosecond: a daemon is started in the second in which the last one has saved.
bool is_before(const timespec &one, const timespec &other) {
    return one.tv_sec != other.tv_sec ? one.tv_sec < other.tv_sec : one.tv_nsec < other.tv_nsec;
}

/// A file that is older than the daemon may be of an earlier life and wait for its import.
bool is_file_still_to_be_read(const char *socket_path) {
    struct stat socket = {};
    struct stat file = {};
    if (socket_path == nullptr || stat(usage_file_path, &file) != 0)
        return false;
    return stat(socket_path, &socket) == 0 && is_before(file.st_mtim, socket.st_mtim) &&
           time(nullptr) - socket.st_mtim.tv_sec <= own_export_after;
}

} // namespace

const ctl_daemon_person *ctl_state_person(const ctl_daemon_state &state, int32_t number) {
    for (const ctl_daemon_person &person : state.people)
        if (person.number == number)
            return &person;
    return nullptr;
}

bool ctl_state_has_device(const ctl_daemon_state &state, const ctl_daemon_person &person,
                          const ctl_mac &mac) {
    for (const ctl_mac &device : household_records(state.devices, person.devices))
        if (device == mac)
            return true;
    return false;
}

bool ctl_state_knows_device(const ctl_daemon_state &state, const ctl_mac &mac) {
    return ctl_contains(state.devices, mac);
}

bool ctl_state_read(json_object *root, ctl_daemon_state *state) {
    state->active = true;
    int32_t written = 0;
    state->is_of_today = usage_read_time(root, &written) && is_today(written);
    json_object *list = usage_profiles_of(root);
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        usage_profile_t read;
        if (usage_read_profile(element, &read) && !read_person(element, read, state))
            return false;
    }
    return true;
}

json_ptr ctl_usage_file_open(const char *path, const char **objection) {
    const fd_guard file(regular_file_open(path));
    json_ptr document(file.get() < 0 ? nullptr : usage_file_read(file.get(), size_limit));
    if (document == nullptr && (file.get() < 0 || errno != EBADMSG)) {
        *objection = reason_of(errno);
        return nullptr;
    }
    *objection = usage_objection_to(document.get());
    return *objection != nullptr ? nullptr : std::move(document);
}

ctl_exit ctl_state_export(const ctl_wire &wire, const char *file, json_ptr *document) {
    utm_app_config_cmd request = {.type = UTM_APP_CONFIG_EXPORT_STATISTICS};
    utm_app_config_put_path(&request, file);
    const ctl_exit status = ctl_wire_send(wire, request);
    if (status == CTL_REFUSED)
        ctl_say("the daemon refused to write down what it has at %s: is there space? Set TMPDIR to "
                "use another folder",
                file);
    if (status != CTL_DONE)
        return status;
    const char *objection = nullptr;
    *document = ctl_usage_file_open(file, &objection);
    return *document == nullptr
               ? ctl_fail(CTL_BROKEN, "cannot read what the daemon has (%s): %s", file, objection)
               : CTL_DONE;
}

void ctl_make_up_for_export(const ctl_wire &wire, const char *socket_path,
                            const ctl_daemon_state &state) {
    if (!state.has_counted || is_file_still_to_be_read(socket_path))
        return;
    utm_app_config_cmd request = {.type = UTM_APP_CONFIG_EXPORT_STATISTICS};
    utm_app_config_put_path(&request, usage_file_path);
    const ctl_exit ignored = ctl_wire_send(wire, request);
    static_cast<void>(ignored);
}

ctl_exit ctl_state_learn(const ctl_wire &wire, const char *file, ctl_daemon_state *state) {
    json_ptr document;
    ctl_exit status = ctl_state_export(wire, file, &document);
    if (status != CTL_DONE)
        return status;
    if (!ctl_state_read(document.get(), state))
        return ctl_fail(CTL_BROKEN, "out of memory");
    for (ctl_daemon_person &person : state->people) {
        status = ask_limit(wire, &person);
        if (status == CTL_REFUSED)
            ctl_say("somebody else has deleted person %d just now: try again", person.number);
        if (status != CTL_DONE)
            return status;
    }
    return CTL_DONE;
}

ctl_exit ctl_state_ask(const ctl_wire &wire, std::span<const int32_t> people,
                       plain_vector<ctl_daemon_person> *known) {
    for (const int32_t number : people) {
        ctl_daemon_person person = {};
        person.number = number;
        const ctl_exit status = ask_person(wire, &person);
        if (status == CTL_REFUSED)
            continue;
        if (status != CTL_DONE)
            return status;
        if (!known->add(person))
            return ctl_fail(CTL_BROKEN, "out of memory");
    }
    return CTL_DONE;
}
