#pragma once
/// Tables for people: columns as wide as their widest cell.

#include "client/growing.h"
#include "client/names.h"

#include <cstdint>

inline constexpr int ctl_table_columns = 3;

struct ctl_cell {
    char text[ctl_name_size + 16];
};

/// A table of at most `ctl_table_columns` columns. The first column stands left, the others right.
struct ctl_table {
    struct row {
        ctl_cell cells[ctl_table_columns];
    };
    ctl_growing<row> rows = {};
    bool complete = true; ///< false once memory ran out
};

/// Begins a row. Cells that it does not fill stay empty.
/// @return its cells, until the next row begins
ctl_cell *ctl_add_row(ctl_table *table);

/// Fills a cell with text, cut to its room.
__attribute__((format(printf, 2, 3))) void ctl_fill(ctl_cell *cell, const char *format, ...);

/// Fills two cells with minutes: as a number and as hours and minutes.
void ctl_fill_minutes(ctl_cell *cells, int64_t minutes);

/// Fills a cell with an application's name, or its number.
void ctl_fill_app(ctl_cell *cell, const ctl_app_names &names, int32_t app_id);

/// Prints the table on standard output.
/// @return CTL_DONE, or CTL_BROKEN when memory ran out; said
[[nodiscard]] ctl_exit ctl_print(const ctl_table &table);
