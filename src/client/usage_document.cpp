#include "client/usage_document.h"

#include "client/message.h"
#include "client/text.h"
#include "core/json.h"
#include "core/owners.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// json-c takes a file whole before anybody looks at it, and needs many times its size. Five
/// thousand applications are one and a half million bytes; no family has as many.
constexpr off_t size_limit = off_t{2} * 1024 * 1024;
constexpr int ring_days = 30;

/// By day number. Day 0 is Sunday and stands under "mon": the names are places in a list.
constexpr const char *weekday_keys[] = {"mon", "tues", "wed", "thur", "fri", "sat", "sun"};

/// @return a member, null when there is none or `object` is no object
json_object *member(json_object *object, const char *key) {
    json_object *value = nullptr;
    if (json_object_is_type(object, json_type_object))
        json_object_object_get_ex(object, key, &value);
    return value;
}

bool has(json_object *object, const char *key) {
    return json_object_is_type(object, json_type_object) &&
           json_object_object_get_ex(object, key, nullptr) != 0;
}

/// json-c's array functions assert on any other type.
/// @return an array, null for a value of another type
json_object *array_or_null(json_object *value) {
    return json_object_is_type(value, json_type_array) ? value : nullptr;
}

size_t size_of(json_object *array) {
    return array == nullptr ? 0 : json_object_array_length(array);
}

/// json-c's integer for a value of any type. A NaN, which its parser takes, would become another
/// number on another processor.
int32_t integer_of(json_object *value) {
    if (json_object_is_type(value, json_type_double)) {
        const double number = json_object_get_double(value);
        if (number != number)
            return 0;
    }
    return json_object_get_int(value);
}

int32_t integer_at(json_object *object, const char *key) {
    return integer_of(member(object, key));
}

int32_t minutes_of(json_object *value) {
    return std::max(integer_of(value), 0);
}

int32_t minutes_at(json_object *object, const char *key) {
    return minutes_of(member(object, key));
}

ctl_use read_use(json_object *object) {
    return {minutes_at(object, "daily_used"), minutes_at(object, "weekly_used"),
            minutes_at(object, "monthly_used")};
}

bool is_application(json_object *element) {
    return has(element, "app_id") && has(element, "daily_used") && has(element, "weekly_used") &&
           has(element, "monthly_used");
}

/// Adds an application's days to a history. A ring without its place, or of another size than
/// thirty, has no days, as for the daemon.
void add_days(json_object *app, int64_t *history) {
    history[0] += minutes_at(app, "daily_used");
    json_object *ring = array_or_null(member(app, "prev_30_days"));
    if (!has(app, "next_day_idx") || size_of(ring) != ring_days)
        return;
    const int next = integer_at(app, "next_day_idx") % ring_days + ring_days;
    for (int days_ago = 1; days_ago <= ring_days; ++days_ago) {
        const int slot = (next + ring_days - days_ago) % ring_days;
        history[days_ago] += minutes_of(json_object_array_get_idx(ring, static_cast<size_t>(slot)));
    }
}

int compare(int64_t left, int64_t right) {
    return (left > right) - (left < right);
}

int compare_apps(const void *left_record, const void *right_record) {
    const auto &left = *static_cast<const ctl_app_use *>(left_record);
    const auto &right = *static_cast<const ctl_app_use *>(right_record);
    const int month = compare(ctl_month_of(right.use), ctl_month_of(left.use));
    const int week = compare(ctl_week_of(right.use), ctl_week_of(left.use));
    const int today = compare(right.use.daily_used, left.use.daily_used);
    return month != 0   ? month
           : week != 0  ? week
           : today != 0 ? today
                        : compare(left.app_id, right.app_id);
}

/// @param history  where to add the applications' days, or null
[[nodiscard]] bool read_apps(json_object *list, ctl_growing<ctl_app_use> *apps, ctl_part *part,
                             int64_t *history) {
    part->first = apps->size();
    const size_t count = size_of(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        if (!is_application(element))
            continue;
        if (!apps->add({integer_at(element, "app_id"), read_use(element)}))
            return false;
        if (history != nullptr)
            add_days(element, history);
    }
    part->count = apps->size() - part->first;
    if (part->count > 1)
        qsort(apps->begin() + part->first, part->count, sizeof(ctl_app_use), compare_apps);
    return true;
}

[[nodiscard]] bool read_rules(json_object *policy, ctl_growing<ctl_app_rule> *rules,
                              ctl_part *part) {
    json_object *list = array_or_null(member(policy, "app_list"));
    part->first = rules->size();
    const size_t count = size_of(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        const int32_t action = integer_at(element, "action");
        if (!has(element, "app_id") || (action != CTL_RULE_LIMIT && action != CTL_RULE_BLOCK))
            continue;
        if (!rules->add(
                {integer_at(element, "app_id"), action, minutes_at(element, "daily_limit")}))
            return false;
    }
    part->count = rules->size() - part->first;
    return true;
}

[[nodiscard]] bool read_devices(json_object *list, ctl_growing<ctl_device_name> *devices,
                                ctl_profile_use *profile) {
    profile->devices.first = devices->size();
    const size_t count = size_of(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        if (!json_object_is_type(element, json_type_string))
            continue;
        if (profile->device_count++ >= ctl_devices_max)
            continue;
        ctl_device_name device = {};
        ctl_copy_clean(device.text, sizeof device.text, json_object_get_string(element));
        if (!devices->add(device))
            return false;
    }
    profile->devices.count = devices->size() - profile->devices.first;
    return true;
}

void read_limits(json_object *element, ctl_profile_use *profile) {
    for (size_t day = 0; day < std::size(weekday_keys); ++day)
        profile->weekday_limits[day] =
            has(element, weekday_keys[day])
                ? std::min(minutes_at(element, weekday_keys[day]), ctl_no_limit)
                : ctl_no_limit;
    profile->daily_extend = minutes_at(element, "daily_extend");
}

[[nodiscard]] bool read_profile(json_object *element, ctl_usage_document *document) {
    ctl_profile_use profile = {};
    profile.user_profile_id = integer_at(element, "user_profile_id");
    profile.use = read_use(element);
    profile.blocked = integer_at(element, "blocked") != 0;
    read_limits(element, &profile);
    return read_apps(array_or_null(member(element, "app_stat_list")), &document->apps,
                     &profile.apps, profile.history) &&
           read_rules(member(element, "app_policy"), &document->rules, &profile.rules) &&
           read_devices(array_or_null(member(element, "device_list")), &document->devices,
                        &profile) &&
           document->profiles.add(profile);
}

[[nodiscard]] bool read_profiles(json_object *list, ctl_usage_document *document) {
    const size_t count = size_of(list);
    for (size_t i = 0; i < count; ++i) {
        json_object *element = json_object_array_get_idx(list, i);
        if (!has(element, "user_profile_id"))
            continue;
        if (document->profile_count++ < ctl_profiles_max && !read_profile(element, document))
            return false;
    }
    return true;
}

/// The daemon cuts its clock to 32 bits. Read without a sign they last until 2106, and no router
/// has written anything before 1970.
void read_time(json_object *root, ctl_usage_document *document) {
    document->timestamp = static_cast<uint32_t>(integer_at(root, "timestamp"));
    document->has_time = document->timestamp != 0;
}

ctl_exit refuse(const char *path, const char *reason) {
    return ctl_fail(CTL_USAGE, "cannot report %s: %s. Name a usage file that utm_appd has exported",
                    path, reason);
}

/// @return what keeps an open file from being read, or null
const char *objection_to(const struct stat &status) {
    if (!S_ISREG(status.st_mode))
        return "it is no regular file";
    return status.st_size > size_limit ? "it is larger than 2 MiB" : nullptr;
}

/// Looks before it opens, because opening a device may already do something, and once more
/// afterwards, because something else may have taken the file's place. Without O_NONBLOCK the open
/// would then wait for a pipe's other end.
ctl_exit open_file(const char *path, fd_guard *file) {
    struct stat status = {};
    if (stat(path, &status) != 0)
        return refuse(path, strerror(errno));
    if (const char *objection = objection_to(status))
        return refuse(path, objection);
    file->reset(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file->get() < 0 || fstat(file->get(), &status) != 0)
        return refuse(path, strerror(errno));
    if (const char *objection = objection_to(status))
        return refuse(path, objection);
    return CTL_DONE;
}

/// @return what keeps a document from being a usage file, or null
const char *objection_to(json_object *root) {
    if (root == nullptr)
        return "it is no JSON, is cut off, or is nested deeper than 32";
    if (!json_object_is_type(root, json_type_object))
        return "it is no JSON object";
    if (!has(root, "user_profile_list"))
        return "it has no user_profile_list";
    return has(root, "global_stat") ? nullptr : "it has no global_stat";
}

} // namespace

ctl_exit ctl_read_usage_document(const char *path, ctl_usage_document *document) {
    fd_guard file;
    const ctl_exit opened = open_file(path, &file);
    if (opened != CTL_DONE)
        return opened;
    const json_ptr root(json_object_from_fd(file.get()));
    if (const char *objection = objection_to(root.get()))
        return refuse(path, objection);
    read_time(root.get(), document);
    json_object *profiles = array_or_null(member(root.get(), "user_profile_list"));
    json_object *apps = array_or_null(member(root.get(), "global_stat"));
    if (!read_profiles(profiles, document) ||
        !read_apps(apps, &document->apps, &document->router_apps, nullptr))
        return ctl_fail(CTL_BROKEN, "%s: out of memory", path);
    return CTL_DONE;
}
