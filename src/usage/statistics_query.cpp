#include "usage/statistics_query.h"

#include <cstring>
#include <json-c/json.h>

namespace {

/// Room for a query's fixed text and its two numbers.
constexpr size_t query_line_overhead = 101;
constexpr size_t chunk_size = 128;

struct json_release {
    void operator()(json_object *document) const { json_object_put(document); }
};
using json_ptr = std::unique_ptr<json_object, json_release>;

bool starts_with(const char *text, const char *prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

/// json-c's array functions assert on any other type, so every array passes through here.
json_object *array_member(json_object *object, const char *key) {
    json_object *member = nullptr;
    if (!json_object_is_type(object, json_type_object) ||
        !json_object_object_get_ex(object, key, &member) ||
        !json_object_is_type(member, json_type_array))
        return nullptr;
    return member;
}

/// Takes one element of "data" apart.
/// @return false for an element that is no figure
bool read_figure(json_object *element, statistics_figure_t *figure) {
    json_object *type = nullptr;
    json_object *app_id = nullptr;
    json_object *minutes = nullptr;
    if (!json_object_is_type(element, json_type_object) ||
        !json_object_object_get_ex(element, "type", &type) ||
        !json_object_object_get_ex(element, "app_id", &app_id) ||
        !json_object_object_get_ex(element, "total_time_usage", &minutes) ||
        !json_object_is_type(type, json_type_string))
        return false;
    const char *name = json_object_get_string(type);
    if (starts_with(name, "APP"))
        figure->kind = figure_kind_t::app;
    else if (starts_with(name, "INTERNET"))
        figure->kind = figure_kind_t::internet;
    else
        return false;
    figure->app_id = json_object_get_int(app_id);
    figure->minutes = json_object_get_int(minutes);
    return true;
}

/// Adds room for a chunk of `length` characters where the buffer has less than that to spare.
/// @return 0, or the size that could not be had
size_t grow(statistics_reply_t *reply, size_t length) {
    if (reply->capacity > reply->used + length + 1)
        return 0;
    const size_t wanted = reply->capacity + statistics_reply_step;
    char *grown = static_cast<char *>(realloc(reply->text.get(), wanted));
    if (grown == nullptr)
        return wanted;
    reply->text.release();
    reply->text.reset(grown);
    reply->capacity = wanted;
    return 0;
}

} // namespace

heap_ptr<char> utm_app_profile_query_line(time_t last, time_t now, const char *devices) {
    if (devices == nullptr)
        return nullptr;
    const size_t size = strlen(devices) + query_line_overhead;
    heap_ptr<char> line(heap_allocate<char>(size));
    if (line != nullptr)
        snprintf(line.get(), size,
                 "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour "
                 "'{\"s\":%ld,\"e\":%ld,\"mac\":\"%s\"}'",
                 static_cast<long>(last - statistics_lag_seconds),
                 static_cast<long>(now - statistics_lag_seconds), devices);
    return line;
}

global_query_line_t utm_app_global_query_line(time_t last, time_t now) {
    global_query_line_t line = {};
    snprintf(line.text, sizeof(line.text),
             "ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{\"s\":%ld,\"e\":%ld}'",
             static_cast<long>(last - statistics_lag_seconds),
             static_cast<long>(now - statistics_lag_seconds));
    return line;
}

bool utm_app_reply_create(statistics_reply_t *reply) {
    reply->text.reset(heap_allocate<char>(statistics_reply_step));
    reply->capacity = statistics_reply_step;
    reply->used = 0;
    return reply->text != nullptr;
}

void utm_app_reply_clear(statistics_reply_t *reply) {
    memset(reply->text.get(), 0, reply->capacity);
    reply->used = 0;
}

size_t utm_app_reply_read(statistics_reply_t *reply, FILE *pipe) {
    char chunk[chunk_size];
    while (fgets(chunk, sizeof(chunk), pipe) != nullptr) {
        const size_t length = strlen(chunk);
        const size_t failed = grow(reply, length);
        if (failed != 0)
            return failed;
        // The first chunk starts the text, each later one begins on the NUL before it.
        const size_t start = reply->used == 0 ? 0 : reply->used - 1;
        memcpy(reply->text.get() + start, chunk, length + 1);
        reply->used = start + length + 1;
    }
    return 0;
}

void utm_app_statistics_parse(const char *text, statistics_visitor_t visit, void *context) {
    const json_ptr document(json_tokener_parse(text));
    json_object *data = array_member(document.get(), "data");
    if (data == nullptr)
        return;
    const size_t count = json_object_array_length(data);
    for (size_t i = 0; i < count; ++i) {
        statistics_figure_t figure = {};
        if (read_figure(json_object_array_get_idx(data, i), &figure))
            visit(figure, context);
    }
}
