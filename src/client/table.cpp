#include "client/table.h"

#include "client/message.h"
#include "client/minutes.h"
#include "client/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

struct widths {
    size_t of[ctl_table_columns];
};

widths widths_of(const ctl_table &table) {
    widths widest = {};
    for (const ctl_table::row &row : table.rows)
        for (int i = 0; i < ctl_table_columns; ++i)
            widest.of[i] = std::max(widest.of[i], ctl_text_width(row.cells[i].text));
    return widest;
}

/// @return columns up to the last cell with text: a line ends without blanks
int filled_columns(const ctl_table::row &row) {
    int count = ctl_table_columns;
    while (count > 1 && row.cells[count - 1].text[0] == '\0')
        --count;
    return count;
}

void print_row(const ctl_table::row &row, const widths &widest) {
    const int count = filled_columns(row);
    for (int i = 0; i < count; ++i) {
        const char *text = row.cells[i].text;
        const int padding = static_cast<int>(widest.of[i] - ctl_text_width(text));
        if (i == 0)
            printf("%s%*s", text, count > 1 ? padding : 0, "");
        else
            printf("  %*s%s", padding, "", text);
    }
    putchar('\n');
}

} // namespace

ctl_cell *ctl_add_row(ctl_table *table) {
    static ctl_table::row nowhere;
    if (table->rows.add({}))
        return table->rows[table->rows.size() - 1].cells;
    table->complete = false;
    return nowhere.cells;
}

void ctl_fill(ctl_cell *cell, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(cell->text, sizeof cell->text, format, arguments);
    va_end(arguments);
}

void ctl_fill_minutes(ctl_cell *cells, int64_t minutes) {
    ctl_fill(&cells[0], "%lld", static_cast<long long>(minutes));
    ctl_fill(&cells[1], "%s", ctl_time_of(minutes).text);
}

void ctl_fill_app(ctl_cell *cell, const ctl_app_names &names, int32_t app_id) {
    const char *name = ctl_find_name(names, app_id);
    if (name != nullptr)
        ctl_fill(cell, "%s", name);
    else
        ctl_fill(cell, "%d", app_id);
}

ctl_exit ctl_print(const ctl_table &table) {
    if (!table.complete)
        return ctl_fail(CTL_BROKEN, "out of memory");
    const widths widest = widths_of(table);
    for (const ctl_table::row &row : table.rows)
        print_row(row, widest);
    return CTL_DONE;
}
