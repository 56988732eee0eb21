#include "format/usage_file.h"

#include "core/read_whole.h"
#include "core/write_whole.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace {

// ---- Writing -------------------------------------------------------------------------------

constexpr size_t first_room = 4096;

/// Doubles what is allocated, so that even a long document is moved a few times only.
/// @return room for `size` more bytes, or null when memory ran out
char *room_for(usage_text_t *text, size_t size) {
    if (text->has_failed)
        return nullptr;
    size_t room = text->room == 0 ? first_room : text->room;
    while (room - text->size < size)
        room *= 2;
    if (room != text->room) {
        char *larger = static_cast<char *>(realloc(text->bytes.get(), room));
        text->has_failed = larger == nullptr;
        if (text->has_failed)
            return nullptr;
        static_cast<void>(text->bytes.release());
        text->bytes.reset(larger);
        text->room = room;
    }
    return text->bytes.get() + text->size;
}

void put(usage_text_t *text, const char *bytes, size_t size) {
    char *to = room_for(text, size);
    if (to == nullptr)
        return;
    memcpy(to, bytes, size);
    text->size += size;
}

void put(usage_text_t *text, const char *piece) {
    put(text, piece, strlen(piece));
}

/// Sets a value apart from the one before it.
void separate(usage_text_t *text) {
    if (!text->is_at_start)
        put(text, ",");
    text->is_at_start = false;
}

void put_key(usage_text_t *text, const char *key) {
    separate(text);
    put(text, "\"");
    put(text, key);
    put(text, "\":");
}

/// @param bracket  "[" or "{"
void open_bracket(usage_text_t *text, const char *bracket) {
    put(text, bracket);
    text->is_at_start = true;
}

void open_member(usage_text_t *text, const char *key, const char *bracket) {
    put_key(text, key);
    open_bracket(text, bracket);
}

void open_element(usage_text_t *text) {
    separate(text);
    open_bracket(text, "{");
}

/// @param brackets  one or several
void close_brackets(usage_text_t *text, const char *brackets) {
    put(text, brackets);
    text->is_at_start = false;
}

/// By hand, since a document has them by the hundred thousand.
void put_number(usage_text_t *text, int32_t value) {
    char digits[sizeof("-2147483648")];
    char *first = digits + sizeof(digits);
    uint32_t rest = value < 0 ? 0U - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (value < 0)
        *--first = '-';
    put(text, first, static_cast<size_t>(digits + sizeof(digits) - first));
}

void put_int(usage_text_t *text, const char *key, int32_t value) {
    put_key(text, key);
    put_number(text, value);
}

void put_counters(usage_text_t *text, const usage_counters_t &used) {
    put_int(text, usage_key::daily_used, used.daily);
    put_int(text, usage_key::weekly_used, used.weekly);
    put_int(text, usage_key::monthly_used, used.monthly);
}

// ---- Reading -------------------------------------------------------------------------------

bool has(json_object *object, const char *key) {
    return json_object_is_type(object, json_type_object) &&
           json_object_object_get_ex(object, key, nullptr) != 0;
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

void read_counters(json_object *object, usage_counters_t *used) {
    read_int(object, usage_key::daily_used, &used->daily);
    read_int(object, usage_key::weekly_used, &used->weekly);
    read_int(object, usage_key::monthly_used, &used->monthly);
}

void read_weekdays(json_object *object, usage_profile_t *profile) {
    for (int32_t day = 0; day < days_per_week; ++day) {
        usage_weekday_t entry = {day, 0};
        if (read_int(object, usage_key::weekdays[day], &entry.limit))
            profile->weekdays[profile->weekday_count++] = entry;
    }
}

/// A member, which may be there and be null.
struct member_t {
    bool is_there;
    json_object *value;
};

/// What is read of an application.
struct app_members_t {
    member_t app_id;
    member_t daily_used;
    member_t weekly_used;
    member_t monthly_used;
    member_t next_day_idx;
    member_t prev_30_days;
};

/// @return where a member of this name goes; null for a name that is not read
member_t *place_of(const char *name, app_members_t *members) {
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
app_members_t members_of(json_object *element) {
    app_members_t members = {};
    json_object_object_foreach(element, name, value) {
        member_t *place = place_of(name, &members);
        if (place != nullptr)
            *place = {true, value};
    }
    return members;
}

void read_ring(const app_members_t &members, usage_app_t *app) {
    app->has_ring = members.next_day_idx.is_there;
    if (!app->has_ring)
        return;
    const int32_t index = json_int(members.next_day_idx.value) % day_ring_days;
    app->next_day_idx = index < 0 ? index + day_ring_days : index;
    json_object *ring = members.prev_30_days.value;
    if (!json_object_is_type(ring, json_type_array) ||
        json_object_array_length(ring) != day_ring_days)
        return;
    for (size_t slot = 0; slot < day_ring_days; ++slot)
        app->prev_30_days[slot] = json_int(json_object_array_get_idx(ring, slot));
}

} // namespace

json_ptr usage_file_read(int fd, size_t size_limit) {
    size_t size = 0;
    const heap_ptr<char> bytes = read_whole(fd, size_limit, &size);
    if (bytes == nullptr)
        return nullptr;
    errno = EOVERFLOW;
    return json_is_within(bytes.get(), size, usage_file_limits)
               ? json_parse(bytes.get(), size, 0, nullptr)
               : nullptr;
}

bool usage_text_is_readable(const char *text, size_t size) {
    return size <= usage_file_size_limit && json_is_within(text, size, usage_file_limits);
}

void usage_write_begin(usage_text_t *text) {
    open_bracket(text, "{");
    open_member(text, usage_key::user_profile_list, "[");
}

void usage_write_profile(usage_text_t *text, const usage_profile_t &profile) {
    open_element(text);
    put_int(text, usage_key::user_profile_id, profile.user_profile_id);
    for (int32_t i = 0; i < profile.weekday_count; ++i)
        put_int(text, usage_key::weekdays[profile.weekdays[i].day], profile.weekdays[i].limit);
    put_int(text, usage_key::daily_extend, profile.daily_extend);
    put_counters(text, profile.used);
    put_int(text, usage_key::blocked, profile.blocked);
    open_member(text, usage_key::app_stat_list, "[");
}

void usage_write_app(usage_text_t *text, const usage_app_t &app) {
    open_element(text);
    put_int(text, usage_key::app_id, app.app_id);
    put_counters(text, app.used);
    put_int(text, usage_key::next_day_idx, app.next_day_idx);
    open_member(text, usage_key::prev_30_days, "[");
    for (const int32_t minutes : app.prev_30_days) {
        separate(text);
        put_number(text, minutes);
    }
    close_brackets(text, "]}");
}

void usage_write_devices(usage_text_t *text) {
    close_brackets(text, "]");
    open_member(text, usage_key::device_list, "[");
}

void usage_write_device(usage_text_t *text, const mac_text_t &mac) {
    separate(text);
    put(text, "\"");
    put(text, mac.text);
    put(text, "\"");
}

void usage_write_devices_end(usage_text_t *text) {
    close_brackets(text, "]");
}

void usage_write_policy(usage_text_t *text, int32_t app_policy_id) {
    open_member(text, usage_key::app_policy, "{");
    put_int(text, usage_key::app_policy_id, app_policy_id);
    open_member(text, usage_key::app_list, "[");
}

void usage_write_rule(usage_text_t *text, const config_policy_rule_t &rule) {
    open_element(text);
    put_int(text, usage_key::app_id, rule.app_id);
    put_int(text, usage_key::action, rule.action);
    put_int(text, usage_key::daily_limit, rule.daily_limit);
    close_brackets(text, "}");
}

void usage_write_policy_end(usage_text_t *text) {
    close_brackets(text, "]}");
}

void usage_write_profile_end(usage_text_t *text) {
    close_brackets(text, "}");
}

void usage_write_router(usage_text_t *text, int32_t timestamp) {
    close_brackets(text, "]");
    put_int(text, usage_key::timestamp, timestamp);
    open_member(text, usage_key::global_stat, "[");
}

void usage_write_end(usage_text_t *text) {
    close_brackets(text, "]}");
}

bool usage_text_write(const usage_text_t &text, int fd) {
    return write_whole(text.bytes.get(), text.size,
                       [fd](const char *next, size_t left) { return write(fd, next, left); });
}

void usage_add_weekday(usage_profile_t *profile, int32_t day, int32_t limit) {
    for (; day >= 0 && day < days_per_week; ++day) {
        const auto end = profile->weekdays + profile->weekday_count;
        const auto found =
            std::find_if(profile->weekdays, end,
                         [day](const usage_weekday_t &entry) { return entry.day == day; });
        *found = {day, limit};
        profile->weekday_count += found == end;
    }
}

const char *usage_objection_to(json_object *root) {
    if (root == nullptr)
        return "it is not JSON, is cut off, or is nested deeper than 32";
    if (!json_object_is_type(root, json_type_object))
        return "it is not a JSON object";
    if (!has(root, usage_key::user_profile_list))
        return "it has no user_profile_list";
    return has(root, usage_key::global_stat) ? nullptr : "it has no global_stat";
}

bool usage_read_time(json_object *root, int32_t *timestamp) {
    return read_int(root, usage_key::timestamp, timestamp);
}

json_object *usage_profiles_of(json_object *root) {
    return json_array_member(root, usage_key::user_profile_list);
}

json_object *usage_router_apps_of(json_object *root) {
    return json_array_member(root, usage_key::global_stat);
}

json_object *usage_apps_of(json_object *profile) {
    return json_array_member(profile, usage_key::app_stat_list);
}

json_object *usage_devices_of(json_object *profile) {
    return json_array_member(profile, usage_key::device_list);
}

json_object *usage_rules_of(json_object *profile) {
    json_object *policy = nullptr;
    json_object_object_get_ex(profile, usage_key::app_policy, &policy);
    return json_array_member(policy, usage_key::app_list);
}

bool usage_has_apps(json_object *profile) {
    return has(profile, usage_key::app_stat_list);
}

bool usage_read_profile(json_object *element, usage_profile_t *profile) {
    *profile = {};
    if (!usage_read_profile_id(element, &profile->user_profile_id))
        return false;
    read_weekdays(element, profile);
    read_int(element, usage_key::daily_extend, &profile->daily_extend);
    read_counters(element, &profile->used);
    read_int(element, usage_key::blocked, &profile->blocked);
    return true;
}

bool usage_read_profile_id(json_object *element, int32_t *profile_id) {
    return json_object_is_type(element, json_type_object) &&
           read_int(element, usage_key::user_profile_id, profile_id);
}

bool usage_read_app(json_object *element, usage_app_t *app) {
    *app = {};
    if (!json_object_is_type(element, json_type_object))
        return false;
    const app_members_t members = members_of(element);
    if (!members.app_id.is_there || !members.daily_used.is_there || !members.weekly_used.is_there ||
        !members.monthly_used.is_there)
        return false;
    app->app_id = json_int(members.app_id.value);
    app->used = {json_int(members.daily_used.value), json_int(members.weekly_used.value),
                 json_int(members.monthly_used.value)};
    read_ring(members, app);
    return true;
}

bool usage_read_rule(json_object *element, config_policy_rule_t *rule) {
    *rule = {};
    if (!json_object_is_type(element, json_type_object) ||
        !read_int(element, usage_key::app_id, &rule->app_id))
        return false;
    read_int(element, usage_key::action, &rule->action);
    read_int(element, usage_key::daily_limit, &rule->daily_limit);
    return true;
}
