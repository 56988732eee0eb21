#pragma once
/// The DPI statistics query: its command lines, reading what the client prints, and its JSON.
///
/// Each query is one run of the ubus command-line client:
///
///     ubus -t 2 call lc-dpi.lc-dev-statd time_usage_hour '{"s":S,"e":E,"mac":"AABBCCDDEEFF ..."}'
///
/// S and E are seconds since the epoch, and without "mac" the answer is the whole router's. It is
/// an object of this form; figures of other types and elements of another shape are passed over:
///
///     {"data":[{"type":"APP","app_id":305,"total_time_usage":4},
///              {"type":"INTERNET","app_id":0,"total_time_usage":9}]}
///
/// Nothing here knows a profile or takes a lock. The text comes from another program: any bytes,
/// any shape and any numbers are met without harm.

#include "core/json.h"
#include "core/owners.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iterator>

/// Seconds by which both ends of a query's interval lag the clock: the service has finished
/// counting a minute once the next one is over.
inline constexpr time_t statistics_lag_seconds = 60;

/// Formats the query for a profile's devices.
/// @param last     seconds since the epoch of the collection before; the interval starts a lag
///                 before it
/// @param now      seconds since the epoch; the interval ends a lag before it
/// @param devices  the profile's device list string; null gives null
/// @return the command line, or null when memory runs out
[[nodiscard]] heap_ptr<char> utm_app_profile_query_line(time_t last, time_t now,
                                                        const char *devices);

/// The router-wide query's command line.
struct global_query_line_t {
    char text[128];
};
[[nodiscard]] global_query_line_t utm_app_global_query_line(time_t last, time_t now);

/// Bytes that a reply buffer starts with, and by which it grows.
inline constexpr size_t statistics_reply_step = 1024;

/// A reply as text, always ended by a NUL. One buffer serves all queries of a tick.
struct statistics_reply_t {
    heap_ptr<char> text;
    size_t capacity; ///< bytes allocated
    size_t used;     ///< bytes held, the NUL included; 0 for none
};

/// Allocates the buffer's first step, zero-filled.
/// @return false when memory runs out
[[nodiscard]] bool utm_app_statistics_create(statistics_reply_t *reply);

/// Clears the buffer for the next reply; it keeps its size.
void utm_app_statistics_clear(statistics_reply_t *reply);

/// Reads a pipe to its end. A NUL ends its line, and in a longer line the piece of 127 characters
/// that it stands in.
/// @return 0, or the number of bytes asked for when the buffer could not grow
[[nodiscard]] size_t utm_app_statistics_read(statistics_reply_t *reply, FILE *pipe);

/// What a figure counts, from the first letters of its "type".
enum class figure_kind_t { app, internet };

/// One element of a reply.
struct statistics_figure_t {
    figure_kind_t kind;
    int32_t app_id;
    int32_t minutes; ///< of use in the interval
};

/// The figures of a reply as a range, in array order.
class statistics_figures_t {
public:
    /// @param text  a reply, whatever it holds
    explicit statistics_figures_t(const char *text);

    class iterator {
    public:
        /// Stands at the first figure.
        explicit iterator(json_object *data) : data_(data), count_(json_array_size(data)) {
            find();
        }
        const statistics_figure_t &operator*() const { return figure_; }
        iterator &operator++() {
            ++at_;
            find();
            return *this;
        }
        bool operator==(std::default_sentinel_t) const { return at_ == count_; }

    private:
        /// Passes over elements that are no figures.
        void find();

        json_object *data_;
        size_t count_;
        size_t at_ = 0;
        statistics_figure_t figure_ = {};
    };

    iterator begin() const { return iterator(data_); }
    std::default_sentinel_t end() const { return {}; }

private:
    json_ptr document_;
    json_object *data_; ///< the array in the document, or null
};
