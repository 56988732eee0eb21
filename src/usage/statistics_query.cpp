#include "usage/statistics_query.h"

#include <cstring>

namespace {

/// Room for a query's fixed text and its two numbers.
constexpr size_t query_line_overhead = 101;
/// Most characters of a line that a NUL cuts off; the text continues with the next ones.
constexpr size_t longest_piece = 127;
/// Bytes of one read. A client prints thousands of short lines, and a call for each of them costs a
/// fifth of what parsing them does.
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

/// Takes the NULs out of a text, each with what follows it in its piece.
/// @return what is left, in characters
size_t without_nuls(char *text, size_t length) {
    size_t kept = 0;
    size_t piece = 0;
    bool has_ended = false;
    for (size_t i = 0; i < length; ++i) {
        const char character = text[i];
        has_ended = has_ended || character == '\0';
        if (!has_ended)
            text[kept++] = character;
        if (character != '\n' && ++piece < longest_piece)
            continue;
        piece = 0;
        has_ended = false;
    }
    return kept;
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

bool utm_app_statistics_create(statistics_reply_t *reply) {
    reply->text.reset(heap_allocate<char>(statistics_reply_step));
    reply->capacity = statistics_reply_step;
    reply->used = 0;
    return reply->text != nullptr;
}

void utm_app_statistics_clear(statistics_reply_t *reply) {
    memset(reply->text.get(), 0, reply->capacity);
    reply->used = 0;
}

size_t utm_app_statistics_read(statistics_reply_t *reply, FILE *pipe) {
    char block[block_size];
    size_t length = 0;
    while (const size_t size = fread(block, 1, sizeof(block), pipe)) {
        const size_t failed = grow(reply, length + size);
        if (failed != 0)
            return failed;
        memcpy(reply->text.get() + length, block, size);
        length += size;
    }
    char *text = reply->text.get();
    // Rare: no client prints NULs, and a text without them needs no change.
    if (memchr(text, '\0', length) != nullptr)
        length = without_nuls(text, length);
    text[length] = '\0';
    reply->used = length == 0 ? 0 : length + 1;
    return 0;
}

statistics_figures_t::statistics_figures_t(const char *text)
    : document_(json_tokener_parse(text)), data_(json_array_member(document_.get(), "data")) {}

void statistics_figures_t::iterator::find() {
    while (at_ < count_ && !read_figure(json_object_array_get_idx(data_, at_), &figure_))
        ++at_;
}
