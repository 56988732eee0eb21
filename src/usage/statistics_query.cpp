#include "usage/statistics_query.h"

#include "core/json.h"

#include <cstring>

namespace {

/// Room for a query's fixed text and its two numbers.
constexpr size_t query_line_overhead = 101;
/// Replies are taken in chunks: a line, or as much of a longer one. That shows only where a NUL
/// stands in a chunk, which ends it early; the text goes on with the next one.
constexpr size_t longest_chunk = 127;
/// What is read at once. A client prints short lines by the thousand, and a call for each of them
/// costs a fifth of what parsing them does.
constexpr size_t block_size = 4096;

bool starts_with(const char *text, const char *prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

/// The members of an element that make a figure. A member may be there and be null.
struct members_t {
    json_object *type;
    json_object *app_id;
    json_object *minutes;
    bool has_app_id;
    bool has_minutes;
};

/// Most names differ in their first letter, which saves the call.
inline bool is_named(const char *key, const char *name) {
    return key[0] == name[0] && strcmp(key, name) == 0;
}

/// Goes through an element's members once: a look-up for each of the three would hash the same
/// names thousands of times a tick.
members_t members_of(json_object *element) {
    members_t members = {};
    json_object_object_foreach(element, key, value) {
        if (is_named(key, "type")) {
            members.type = value;
        } else if (is_named(key, "app_id")) {
            members.app_id = value;
            members.has_app_id = true;
        } else if (is_named(key, "total_time_usage")) {
            members.minutes = value;
            members.has_minutes = true;
        }
    }
    return members;
}

/// Takes one element of "data" apart.
/// @return false for an element that is no figure
bool read_figure(json_object *element, statistics_figure_t *figure) {
    if (!json_object_is_type(element, json_type_object))
        return false;
    const members_t members = members_of(element);
    if (!members.has_app_id || !members.has_minutes ||
        !json_object_is_type(members.type, json_type_string))
        return false;
    const char *name = json_object_get_string(members.type);
    if (starts_with(name, "APP"))
        figure->kind = figure_kind_t::app;
    else if (starts_with(name, "INTERNET"))
        figure->kind = figure_kind_t::internet;
    else
        return false;
    figure->app_id = json_int(members.app_id);
    figure->minutes = json_int(members.minutes);
    return true;
}

/// Makes room for a text of `length` characters, its NUL and one byte more, step by step.
/// @return 0, or the size that could not be had
size_t grow(statistics_reply_t *reply, size_t length) {
    while (reply->capacity <= length + 2) {
        const size_t wanted = reply->capacity + statistics_reply_step;
        char *grown = static_cast<char *>(realloc(reply->text.get(), wanted));
        if (grown == nullptr)
            return wanted;
        reply->text.release();
        reply->text.reset(grown);
        reply->capacity = wanted;
    }
    return 0;
}

/// Adds characters to the reply.
/// @return 0, or the size that could not be had
size_t append(statistics_reply_t *reply, const char *text, size_t length) {
    // The first character starts the text, each later one begins on the NUL before it.
    const size_t start = reply->used == 0 ? 0 : reply->used - 1;
    const size_t failed = grow(reply, start + length);
    if (failed != 0)
        return failed;
    memcpy(reply->text.get() + start, text, length);
    reply->text.get()[start + length] = '\0';
    reply->used = start + length + 1;
    return 0;
}

/// Where reading stands in the current chunk.
struct chunk_t {
    size_t length;  ///< characters so far
    bool has_ended; ///< by a NUL: what follows it in the chunk is lost
};

/// Adds a block that contains no NUL.
size_t append_text(statistics_reply_t *reply, const char *block, size_t size, chunk_t *chunk) {
    const void *line_end = memrchr(block, '\n', size);
    if (line_end != nullptr)
        chunk->length = static_cast<size_t>(block + size - static_cast<const char *>(line_end)) - 1;
    else
        chunk->length += size;
    chunk->length %= longest_chunk;
    return append(reply, block, size);
}

/// Adds a block character by character.
size_t append_bytes(statistics_reply_t *reply, const char *block, size_t size, chunk_t *chunk) {
    for (size_t i = 0; i < size; ++i) {
        chunk->has_ended = chunk->has_ended || block[i] == '\0';
        const size_t failed = chunk->has_ended ? 0 : append(reply, &block[i], 1);
        if (failed != 0)
            return failed;
        chunk->length += 1;
        if (block[i] == '\n' || chunk->length == longest_chunk)
            *chunk = {};
    }
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
    char block[block_size];
    chunk_t chunk = {};
    while (const size_t size = fread(block, 1, sizeof(block), pipe)) {
        const bool is_text = !chunk.has_ended && memchr(block, '\0', size) == nullptr;
        const size_t failed = is_text ? append_text(reply, block, size, &chunk)
                                      : append_bytes(reply, block, size, &chunk);
        if (failed != 0)
            return failed;
    }
    return 0;
}

void utm_app_statistics_parse(const char *text, statistics_visitor_t visit, void *context) {
    const json_ptr document(json_tokener_parse(text));
    json_object *data = json_array_member(document.get(), "data");
    const size_t count = json_array_size(data);
    for (size_t i = 0; i < count; ++i) {
        statistics_figure_t figure = {};
        if (read_figure(json_object_array_get_idx(data, i), &figure))
            visit(figure, context);
    }
}
