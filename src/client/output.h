#pragma once
/// What goes to standard output: tables and bar charts for people, JSON for scripts.

#include "client/message.h"
#include "client/names.h"
#include "core/json.h"
#include "core/vector.h"

#include <cstdint>
#include <initializer_list>

inline constexpr int ctl_table_columns_max = 6;

struct ctl_cell {
    char text[ctl_name_size + 16];
};

/// Fills a cell with text, cut to its room.
__attribute__((format(printf, 2, 3))) void ctl_fill(ctl_cell *cell, const char *format, ...);

/// Fills two cells with minutes: as a number and as hours and minutes.
void ctl_fill_minutes(ctl_cell *cells, int64_t minutes);

/// Fills a cell with an application's name, or its number.
void ctl_fill_app(ctl_cell *cell, const ctl_app_names &names, int32_t app_id);

/// A table, each column as wide as its widest cell.
struct ctl_table {
    int columns = 3;   ///< at most `ctl_table_columns_max`
    unsigned left = 1; ///< a bit for each column that stands left, as the first does
    plain_vector<ctl_cell> cells = {};
    bool complete = true; ///< false once memory ran out
};

/// Begins a row. Cells that it does not fill stay empty.
/// @return its cells, until the next row begins
ctl_cell *ctl_add_row(ctl_table *table);

/// Adds a row of a name and minutes.
void ctl_add_minutes(ctl_table *table, const char *name, int64_t minutes);

/// Adds the row above minutes.
/// @param first  what the first column has
void ctl_add_heading(ctl_table *table, const char *first);

/// Adds a row of texts, one for each column.
void ctl_add_texts(ctl_table *table, std::initializer_list<const char *> texts);

/// Prints the table on standard output.
/// @return CTL_DONE, or CTL_BROKEN, after a message, when memory ran out
[[nodiscard]] ctl_exit ctl_print(const ctl_table &table);

/// Prints a table for other programs as RFC 4180 has it: fields that commas separate, in quotes
/// where they need them; lines end with CR and LF. The first line names the fields.
class ctl_csv {
public:
    /// @param heading  the fields' names, with commas
    explicit ctl_csv(const char *heading);

    void add_text(const char *text); ///< null: an empty field
    void add_int(int64_t value);
    void end_line();

private:
    void separate();

    bool is_begun_ = false; ///< the line has a field
};

/// A bar of a chart: the oldest first, a line each.
struct ctl_bar {
    ctl_cell label;
    int64_t minutes;
    bool is_present; ///< the day or week that is not over yet: in another colour
};

using ctl_bars = plain_vector<ctl_bar>;

/// How a chart is drawn.
struct ctl_style {
    bool utf8;   ///< eighths of a block; else number signs
    bool colour; ///< on a terminal, unless the environment asks for none
    int columns; ///< of the terminal; 80 without one
};

/// Finds out how standard output can show a chart. The locale must be set.
/// @param ascii  plain ASCII, whatever the locale
[[nodiscard]] ctl_style ctl_style_of_output(bool ascii);

/// Prints the bars on standard output; the longest fills its line.
void ctl_print_bars(const ctl_bars &bars, const ctl_style &style);

/// Builds one JSON object. When memory runs out it notes that, and printing fails. The names of
/// keys are an interface: the manual page lists them.
class ctl_document {
public:
    ctl_document() : object_(json_object_new_object()) {}

    void add_int(const char *key, int64_t value) { add(key, json_object_new_int64(value)); }
    void add_bool(const char *key, bool value) { add(key, json_object_new_boolean(value)); }
    void add_text(const char *key, const char *value) { add(key, json_object_new_string(value)); }
    /// Adds null.
    void add_nothing(const char *key);
    /// Adds "app" and "name"; the name is null when there is none.
    void add_app(const ctl_app_names &names, int32_t app_id);
    /// Adds an array of minutes.
    void add_minutes(const char *key, const int64_t *minutes, size_t count);
    /// Adds an array, to which `append` adds objects.
    json_object *add_array(const char *key);
    /// Moves another object to the end of an array of this one.
    void append(json_object *array, ctl_document *element);
    /// Moves another object into this one.
    void add_document(const char *key, ctl_document *element);
    /// Adds any other value, which it takes over; null for want of memory.
    void add(const char *key, json_object *value);

    /// Adds an array of what was said, if anything was, and forgets it.
    void add_messages(const char *key);
    /// Adds what was said last as "error", with all that was said as "messages" when it was more.
    void add_error();

    /// @return the document on one line, for as long as it is there; null when memory ran out
    [[nodiscard]] const char *text() const;

    /// Prints the document and a line end on standard output. What was said before it goes along as
    /// "warnings".
    [[nodiscard]] ctl_exit print();

private:
    void add_to(json_object *array, json_object *value);

    json_ptr object_;
    bool complete_ = true;
};

/// Ends a call that was asked for JSON and prints one document unless it has: {"done":true}, or
/// {"error":...} with the last message, and "messages" with all if there are several.
/// @return `status`, or CTL_BROKEN when there is no memory for the document
[[nodiscard]] ctl_exit ctl_end_documents(ctl_exit status);
