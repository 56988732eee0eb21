#include "client/usage_document.h"

#include "client/message.h"
#include "core/regular_file.h"
#include "core/text.h"
#include "format/protocol.h"
#include "format/usage_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

/// json-c takes a file whole before anybody looks at it, and needs many times its size. Five
/// thousand applications are one and a half million bytes; no family has as many.
constexpr size_t size_limit = size_t{2} * 1024 * 1024;

/// A file may have been written by anybody: a negative figure would turn a sum or a bar around.
int32_t minutes(int32_t read) {
    return std::max(read, 0);
}

usage_counters_t bounded(const usage_counters_t &used) {
    return {minutes(used.daily), minutes(used.weekly), minutes(used.monthly)};
}

/// Adds an application's days to a history.
void add_days(const usage_app_t &app, int64_t *history) {
    history[0] += minutes(app.used.daily);
    for (int days_ago = 1; days_ago <= day_ring_days; ++days_ago)
        history[days_ago] += minutes(day_ring_at(app, days_ago));
}

int compare(int64_t left, int64_t right) {
    return (left > right) - (left < right);
}

/// By month, then week, then today; the number last, so that equal ones have an order too.
int compare_apps(const void *left_record, const void *right_record) {
    const auto &left = *static_cast<const ctl_app_use *>(left_record);
    const auto &right = *static_cast<const ctl_app_use *>(right_record);
    const int month = compare(ctl_month_of(right.used), ctl_month_of(left.used));
    const int week = compare(ctl_week_of(right.used), ctl_week_of(left.used));
    const int today = compare(right.used.daily, left.used.daily);
    return month != 0   ? month
           : week != 0  ? week
           : today != 0 ? today
                        : compare(left.app_id, right.app_id);
}

/// @param history  where to add the applications' days, or null
[[nodiscard]] bool read_apps(json_object *list, plain_vector<ctl_app_use> *apps, ctl_part *part,
                             int64_t *history) {
    part->first = apps->size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        usage_app_t app;
        if (!usage_read_app(json_object_array_get_idx(list, i), &app))
            continue;
        if (!apps->add({app.app_id, bounded(app.used)}))
            return false;
        if (history != nullptr)
            add_days(app, history);
    }
    part->count = apps->size() - part->first;
    if (part->count > 1)
        qsort(apps->begin() + part->first, part->count, sizeof(ctl_app_use), compare_apps);
    return true;
}

[[nodiscard]] bool read_rules(json_object *list, plain_vector<config_policy_rule_t> *rules,
                              ctl_part *part) {
    part->first = rules->size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        config_policy_rule_t rule;
        if (!usage_read_rule(json_object_array_get_idx(list, i), &rule) ||
            (rule.action != POLICY_ACTION_LIMIT && rule.action != POLICY_ACTION_BLOCK))
            continue;
        if (!rules->add({rule.app_id, rule.action, minutes(rule.daily_limit)}))
            return false;
    }
    part->count = rules->size() - part->first;
    return true;
}

[[nodiscard]] bool read_devices(json_object *list, plain_vector<mac_text_t> *devices,
                                ctl_profile_use *profile) {
    profile->devices.first = devices->size();
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        if (!json_object_is_type(element, json_type_string))
            continue;
        if (profile->device_count++ >= ctl_devices_max)
            continue;
        mac_text_t device = {};
        text_copy_clean(device.text, sizeof(device.text), json_object_get_string(element));
        if (!devices->add(device))
            return false;
    }
    profile->devices.count = devices->size() - profile->devices.first;
    return true;
}

void read_limits(const usage_profile_t &read, ctl_profile_use *profile) {
    std::fill_n(profile->weekday_limits, days_per_week, ctl_no_limit);
    for (int32_t i = 0; i < read.weekday_count; ++i)
        profile->weekday_limits[read.weekdays[i].day] =
            std::min(minutes(read.weekdays[i].limit), ctl_no_limit);
    profile->daily_extend = minutes(read.daily_extend);
}

[[nodiscard]] bool read_profile(json_object *element, const usage_profile_t &read,
                                ctl_usage_document *document) {
    ctl_profile_use profile = {};
    profile.user_profile_id = read.user_profile_id;
    profile.used = bounded(read.used);
    profile.blocked = read.blocked != 0;
    read_limits(read, &profile);
    return read_apps(usage_apps_of(element), &document->apps, &profile.apps, profile.history) &&
           read_rules(usage_rules_of(element), &document->rules, &profile.rules) &&
           read_devices(usage_devices_of(element), &document->devices, &profile) &&
           document->profiles.add(profile);
}

[[nodiscard]] bool read_profiles(json_object *list, ctl_usage_document *document) {
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        usage_profile_t read;
        if (!usage_read_profile(element, &read))
            continue;
        if (document->profile_count++ < ctl_profiles_max && !read_profile(element, read, document))
            return false;
    }
    return true;
}

/// The daemon cuts its clock to 32 bits. Read without a sign they last until 2106, and no router
/// has written anything before 1970.
void read_time(json_object *root, ctl_usage_document *document) {
    int32_t timestamp = 0;
    usage_read_time(root, &timestamp);
    document->timestamp = static_cast<uint32_t>(timestamp);
    document->has_time = timestamp != 0;
}

ctl_exit refuse(const char *path, const char *reason) {
    return ctl_fail(CTL_USAGE, "cannot report %s: %s. Name a usage file that utm_appd has exported",
                    path, reason);
}

/// @param error  of opening or reading the file
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

} // namespace

ctl_exit ctl_read_usage_document(const char *path, ctl_usage_document *document) {
    const fd_guard file(regular_file_open(path));
    if (file.get() < 0)
        return refuse(path, reason_of(errno));
    const json_ptr root = usage_file_read(file.get(), size_limit);
    if (root == nullptr && errno != EBADMSG)
        return refuse(path, reason_of(errno));
    if (const char *objection = usage_objection_to(root.get()))
        return refuse(path, objection);
    read_time(root.get(), document);
    if (!read_profiles(usage_profiles_of(root.get()), document) ||
        !read_apps(usage_router_apps_of(root.get()), &document->apps, &document->router_apps,
                   nullptr))
        return ctl_fail(CTL_BROKEN, "%s: out of memory", path);
    return CTL_DONE;
}
