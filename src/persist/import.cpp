#include "persist/import.h"

#include "core/clock.h"
#include "core/debug_log.h"
#include "core/json.h"
#include "core/owners.h"
#include "core/saturate.h"
#include "persist/export_schedule.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "usage/accounting.h"
#include "usage/calendar.h"
#include "usage/top_apps.h"

#include <algorithm>
#include <cstring>

namespace {

/// The widest boundary that lies between the file's time and now.
enum class passed_t { nothing, day, week, month };

/// How far the file's figures are to be rolled forward.
struct age_t {
    int32_t days; ///< local calendar days since the file was written
    passed_t passed;
};

/// A week is noticed by its weekday number going down, as everywhere: a gap of a week or more
/// within a month, to the same or a later weekday, passes for the same week.
passed_t passed_between(time_t then, time_t now) {
    if (utm_app_is_year_changed(then, now) != 0 || utm_app_is_month_changed(then, now) != 0)
        return passed_t::month;
    if (utm_app_is_week_changed(then, now) != 0)
        return passed_t::week;
    return utm_app_is_day_changed(then, now) != 0 ? passed_t::day : passed_t::nothing;
}

/// Three running figures that exclude each other: today, earlier days of this week, earlier weeks
/// of this month.
struct counters_t {
    int32_t daily;
    int32_t weekly;
    int32_t monthly;
};

counters_t rolled_forward(const counters_t &read, passed_t passed) {
    switch (passed) {
    case passed_t::month:
        return {0, 0, 0};
    case passed_t::week:
        return {0, 0, saturate(int64_t{read.monthly} + read.daily + read.weekly)};
    case passed_t::day:
        return {0, saturating_sum(read.weekly, read.daily), read.monthly};
    case passed_t::nothing:
        break;
    }
    return read;
}

bool has(json_object *object, const char *key) {
    return json_object_object_get_ex(object, key, nullptr) != 0;
}

/// Reads a member as json-c converts it to an integer.
/// @param value  out: 0 when it is absent
/// @return whether it is there
bool read_int(json_object *object, const char *key, int32_t *value) {
    json_object *member = nullptr;
    const bool found = json_object_object_get_ex(object, key, &member) != 0;
    *value = json_int(member);
    return found;
}

/// Reads the three counters of a profile; each one that is absent counts as 0.
counters_t read_counters(json_object *object) {
    counters_t counters = {};
    read_int(object, usage_key::daily_used, &counters.daily);
    read_int(object, usage_key::weekly_used, &counters.weekly);
    read_int(object, usage_key::monthly_used, &counters.monthly);
    return counters;
}

/// A member, which may be there and be null.
struct member_t {
    bool is_there;
    json_object *value;
};

/// What is read of an application.
struct application_members_t {
    member_t app_id;
    member_t daily_used;
    member_t weekly_used;
    member_t monthly_used;
    member_t next_day_idx;
    member_t prev_30_days;
};

/// @return where a member of this name goes; null for a name that is not read
member_t *place_of(const char *name, application_members_t *members) {
    const struct {
        const char *name;
        member_t *place;
    } places[] = {
        {usage_key::app_id, &members->app_id},
        {usage_key::daily_used, &members->daily_used},
        {usage_key::weekly_used, &members->weekly_used},
        {usage_key::monthly_used, &members->monthly_used},
        {usage_key::next_day_idx, &members->next_day_idx},
        {usage_key::prev_30_days, &members->prev_30_days},
    };
    for (const auto &place : places)
        // The first letters differ, which saves nearly every call.
        if (place.name[0] == name[0] && strcmp(place.name, name) == 0)
            return place.place;
    return nullptr;
}

/// Goes through an element's members once: files hold them by the ten thousand, and a look-up for
/// each name would hash the same six again for every element.
application_members_t members_of(json_object *element) {
    application_members_t members = {};
    json_object_object_foreach(element, name, value) {
        member_t *place = place_of(name, &members);
        if (place != nullptr)
            *place = {true, value};
    }
    return members;
}

/// Fills a record's ring, turned on by the days that have passed. Those days have no figures, and
/// the file's own day is among them: its minutes live on in the week's and the month's figure.
///
/// An index outside the ring is reduced into it rather than refused: the element's counters are
/// as good as any, and only the order of its history is in doubt.
void read_ring(const application_members_t &members, int32_t days, config_app_usage_t *usage) {
    if (!members.next_day_idx.is_there)
        return;
    const int32_t read = json_int(members.next_day_idx.value) % day_ring_days;
    const int32_t index = read < 0 ? read + day_ring_days : read;
    usage->next_day_idx = static_cast<int32_t>((int64_t{index} + days) % day_ring_days);
    json_object *ring = members.prev_30_days.value;
    if (!json_object_is_type(ring, json_type_array) ||
        json_object_array_length(ring) != day_ring_days)
        return;
    for (size_t slot = 0; slot < day_ring_days; ++slot)
        usage->prev_30_days[slot] = json_int(json_object_array_get_idx(ring, slot));
    for (int32_t day = 0; day < std::min(days, day_ring_days); ++day)
        usage->prev_30_days[(index + day) % day_ring_days] = 0;
}

/// Reads one application.
/// @return a record that the caller links in, or null for an element that lacks a figure
config_app_usage_t *read_application(json_object *element, const age_t &age) {
    if (!json_object_is_type(element, json_type_object))
        return nullptr;
    const application_members_t members = members_of(element);
    if (!members.app_id.is_there || !members.daily_used.is_there || !members.weekly_used.is_there ||
        !members.monthly_used.is_there)
        return nullptr;
    config_app_usage_t *usage = heap_allocate<config_app_usage_t>();
    if (usage == nullptr)
        return nullptr;
    const counters_t counters =
        rolled_forward({json_int(members.daily_used.value), json_int(members.weekly_used.value),
                        json_int(members.monthly_used.value)},
                       age.passed);
    usage->app_id = json_int(members.app_id.value);
    usage->daily_used = counters.daily;
    usage->weekly_used = counters.weekly;
    usage->monthly_used = counters.monthly;
    read_ring(members, age.days, usage);
    return usage;
}

/// Finds the profile that takes an element's figures, or creates it.
/// @return null when memory runs out
config_user_profile_t *profile_to_fill(int32_t profile_id) UTM_REQUIRES(utm_app_config_mutex) {
    config_user_profile_t *profile = utm_app_find_profile(profile_id);
    if (profile != nullptr) {
        utm_app_free_app_usage(profile);
        return profile;
    }
    profile = utm_app_new_profile(profile_id, utm_app_now());
    if (profile == nullptr)
        return nullptr;
    list_append(&utm_app_config_user_profile_list, &profile->link);
    utm_app_add_weekday_limits(profile_id);
    return profile;
}

/// Gives a profile the file's applications, in the file's order. Its application count becomes
/// the file's too, elements that could not be read included.
void import_applications(json_object *element, const age_t &age, config_user_profile_t *profile)
    UTM_REQUIRES(utm_app_config_mutex) {
    json_object *list = json_array_member(element, usage_key::app_stat_list);
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i) {
        config_app_usage_t *usage = read_application(json_object_array_get_idx(list, i), age);
        if (usage != nullptr)
            list_append(&profile->app_stat_list, &usage->link);
    }
    profile->app_count = saturate(static_cast<int64_t>(count));
    utm_app_relink_and_enforce(profile);
}

void import_profile(json_object *element, const age_t &age) UTM_REQUIRES(utm_app_config_mutex) {
    int32_t profile_id = 0;
    if (!json_object_is_type(element, json_type_object) ||
        !read_int(element, usage_key::user_profile_id, &profile_id))
        return;
    config_user_profile_t *profile = profile_to_fill(profile_id);
    if (profile == nullptr)
        return;
    const counters_t counters = rolled_forward(read_counters(element), age.passed);
    profile->daily_used = counters.daily;
    profile->weekly_used = counters.weekly;
    profile->monthly_used = counters.monthly;
    if (has(element, usage_key::app_stat_list))
        import_applications(element, age, profile);
    if (utm_app_update_profile_usage(profile, 0) < 0)
        utm_app_debug_log("Import from file and block failed\n");
}

void import_profiles(json_object *root, const age_t &age) UTM_EXCLUDES(utm_app_config_mutex) {
    const mutex_guard lock(utm_app_config_mutex);
    json_object *list = json_array_member(root, usage_key::user_profile_list);
    const size_t count = json_array_size(list);
    for (size_t i = 0; i < count; ++i)
        import_profile(json_object_array_get_idx(list, i), age);
}

void import_global(json_object *root, const age_t &age, time_t now)
    UTM_EXCLUDES(utm_app_config_mutex) {
    json_object *list = json_array_member(root, usage_key::global_stat);
    const size_t count = json_array_size(list);
    const mutex_guard lock(utm_app_config_mutex);
    utm_app_clear_global_app_stat();
    for (size_t i = 0; i < count; ++i) {
        config_app_usage_t *usage = read_application(json_object_array_get_idx(list, i), age);
        if (usage == nullptr)
            continue;
        list_push_front(&utm_app_config_global_app_stat_list, &usage->link);
        utm_app_config_global_app_stat_list_count += 1;
    }
    utm_app_config_global_app_stat_last_ts = now;
}

json_ptr read_document(const char *path) {
    if (path == nullptr || path[0] == '\0')
        return nullptr;
    const fd_guard file(usage_file_open_to_read(path));
    return json_ptr(file.get() < 0 ? nullptr : json_object_from_fd(file.get()));
}

bool is_usage_document(json_object *root) {
    return json_object_is_type(root, json_type_object) && has(root, usage_key::user_profile_list) &&
           has(root, usage_key::global_stat);
}

/// Imports under the usage file's lock.
/// @return whether the file was taken over; if not, the store is untouched
[[nodiscard]] bool import_now(const char *path)
    UTM_EXCLUDES(utm_app_export_import_mutex, utm_app_config_mutex) {
    const mutex_guard lock(utm_app_export_import_mutex);
    const time_t now = utm_app_now();
    const json_ptr document = read_document(path);
    json_object *root = document.get();
    if (!is_usage_document(root))
        return false;
    int32_t written = 0;
    const time_t then = read_int(root, usage_key::timestamp, &written) ? written : now;
    const age_t age = {utm_app_days_between(then, now), passed_between(then, now)};
    if (age.days < 0) {
        utm_app_log_always("Import statistic failed because it is from future\n");
        return false;
    }
    import_profiles(root, age);
    import_global(root, age, now);
    last_export_statistics_ts = now;
    return true;
}

} // namespace

int32_t utm_app_import_statistics(const char *path) {
    if (utm_app_get_activate() == 0)
        return -1;
    if (!import_now(path)) {
        utm_app_log_always("import from %s failed\n", usage_file_shown(path));
        return -1;
    }
    utm_app_log_always("import from %s success\n", usage_file_shown(path));
    return 0;
}
