#include "client/output.h"

#include "client/text.h"
#include "core/text.h"
#include "format/spelling.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// Whether a document has gone out.
bool is_printed = false;

struct widths {
    size_t of[ctl_table_columns_max];
};

widths widths_of(const ctl_table &table) {
    widths widest = {};
    for (size_t i = 0; i < table.cells.size(); ++i) {
        size_t &width = widest.of[i % static_cast<size_t>(table.columns)];
        width = std::max(width, text_width(table.cells[i].text));
    }
    return widest;
}

/// @return columns up to the last cell with text: a line ends without blanks
int filled_columns(const ctl_cell *row, int columns) {
    int count = columns;
    while (count > 1 && row[count - 1].text[0] == '\0')
        --count;
    return count;
}

void print_row(const ctl_table &table, const ctl_cell *row, const widths &widest) {
    const int count = filled_columns(row, table.columns);
    for (int i = 0; i < count; ++i) {
        const int padding = static_cast<int>(widest.of[i] - text_width(row[i].text));
        const bool is_left = (table.left >> i & 1U) != 0;
        const int behind = is_left && i + 1 < count ? padding : 0;
        printf("%s%*s%s%*s", i == 0 ? "" : "  ", is_left ? 0 : padding, "", row[i].text, behind,
               "");
    }
    putchar('\n');
}

constexpr int columns_unless_told = 80;
constexpr int bar_columns_least = 10;
/// Some terminals are very wide; a bar of more tells nothing more.
constexpr int bar_columns_most = 100;

constexpr char past_colour[] = "\033[36m";
constexpr char present_colour[] = "\033[33m";
constexpr char no_colour[] = "\033[0m";

/// A block of 1 to 7 eighths of a column, then a whole one.
constexpr const char *eighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█"};

bool is_set(const char *variable) {
    const char *value = getenv(variable);
    return value != nullptr && value[0] != '\0';
}

/// The terminal's own answer comes first: COLUMNS stays behind when a window changes its size.
int terminal_columns() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const char *columns = getenv("COLUMNS");
    int32_t number = 0;
    if (columns != nullptr && spelling_number(columns, &number) && number > 0)
        return number;
    return columns_unless_told;
}

/// The columns of a chart: what precedes the bars, and the bars.
struct layout {
    int label;
    int number;
    int time;
    int bar;
    int64_t largest;
};

int number_width(int64_t number) {
    return snprintf(nullptr, 0, "%lld", static_cast<long long>(number));
}

layout layout_of(const ctl_bars &bars, int columns) {
    layout of = {};
    for (const ctl_bar &bar : bars) {
        of.label = std::max(of.label, static_cast<int>(text_width(bar.label.text)));
        of.number = std::max(of.number, number_width(bar.minutes));
        of.time = std::max(of.time, static_cast<int>(strlen(ctl_time_of(bar.minutes).text)));
        of.largest = std::max(of.largest, bar.minutes);
    }
    const int blanks = 6; // two between columns
    of.bar = std::clamp(columns - of.label - of.number - of.time - blanks, bar_columns_least,
                        bar_columns_most);
    return of;
}

/// The longest bar fills the columns, and not a day's limit: a chart compares days with each other.
/// @return eighths of a column; whatever was used at all shows
int bar_length(int64_t minutes, const layout &of) {
    if (minutes <= 0)
        return 0;
    const double share = static_cast<double>(minutes) / static_cast<double>(of.largest);
    return std::max(1, static_cast<int>(share * of.bar * 8 + 0.5));
}

void print_bar(int length, bool utf8) {
    const int whole = utf8 ? length / 8 : (length + 7) / 8;
    for (int i = 0; i < whole; ++i)
        fputs(utf8 ? eighths[8] : "#", stdout);
    if (utf8)
        fputs(eighths[length % 8], stdout);
}

void print_line(const ctl_bar &bar, const layout &of, const ctl_style &style) {
    const int padding = of.label - static_cast<int>(text_width(bar.label.text));
    const int length = bar_length(bar.minutes, of);
    printf("%s%*s  %*lld  %*s", bar.label.text, padding, "", of.number,
           static_cast<long long>(bar.minutes), of.time, ctl_time_of(bar.minutes).text);
    if (length > 0) {
        fputs("  ", stdout);
        if (style.colour)
            fputs(bar.is_present ? present_colour : past_colour, stdout);
        print_bar(length, style.utf8);
        if (style.colour)
            fputs(no_colour, stdout);
    }
    putchar('\n');
}

} // namespace

ctl_cell *ctl_add_row(ctl_table *table) {
    static ctl_cell nowhere[ctl_table_columns_max];
    const size_t first = table->cells.size();
    for (int i = 0; i < table->columns; ++i)
        table->complete = table->complete && table->cells.add({});
    return table->complete ? &table->cells[first] : nowhere;
}

void ctl_add_texts(ctl_table *table, std::initializer_list<const char *> texts) {
    ctl_cell *cell = ctl_add_row(table);
    for (const char *text : texts)
        ctl_fill(cell++, "%s", text);
}

void ctl_fill(ctl_cell *cell, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(cell->text, sizeof(cell->text), format, arguments);
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

void ctl_add_minutes(ctl_table *table, const char *name, int64_t minutes) {
    ctl_cell *cells = ctl_add_row(table);
    ctl_fill(&cells[0], "%s", name);
    ctl_fill_minutes(&cells[1], minutes);
}

void ctl_add_heading(ctl_table *table, const char *first) {
    ctl_cell *cells = ctl_add_row(table);
    ctl_fill(&cells[0], "%s", first);
    ctl_fill(&cells[1], "MINUTES");
    ctl_fill(&cells[2], "TIME");
}

ctl_exit ctl_print(const ctl_table &table) {
    if (!table.complete)
        return ctl_fail(CTL_BROKEN, "out of memory");
    const widths widest = widths_of(table);
    const size_t columns = static_cast<size_t>(table.columns);
    for (size_t first = 0; first < table.cells.size(); first += columns)
        print_row(table, &table.cells[first], widest);
    return CTL_DONE;
}

ctl_csv::ctl_csv(const char *heading) {
    printf("%s\r\n", heading);
}

void ctl_csv::separate() {
    if (is_begun_)
        putchar(',');
    is_begun_ = true;
}

void ctl_csv::add_text(const char *text) {
    separate();
    if (text == nullptr)
        return;
    const bool is_quoted = strpbrk(text, ",\"\r\n") != nullptr;
    if (is_quoted)
        putchar('"');
    for (; *text != '\0'; ++text) {
        if (*text == '"')
            putchar('"');
        putchar(*text);
    }
    if (is_quoted)
        putchar('"');
}

void ctl_csv::add_int(int64_t value) {
    separate();
    printf("%lld", static_cast<long long>(value));
}

void ctl_csv::end_line() {
    fputs("\r\n", stdout);
    is_begun_ = false;
}

void ctl_document::add(const char *key, json_object *value) {
    if (value != nullptr && object_ != nullptr &&
        json_object_object_add(object_.get(), key, value) == 0)
        return;
    json_object_put(value);
    complete_ = false;
}

void ctl_document::add_app(const ctl_app_names &names, int32_t app_id) {
    add_int("app", app_id);
    const char *name = ctl_find_name(names, app_id);
    if (name != nullptr)
        add_text("name", name);
    else
        add_nothing("name");
}

void ctl_document::add_nothing(const char *key) {
    if (object_ == nullptr || json_object_object_add(object_.get(), key, nullptr) != 0)
        complete_ = false;
}

json_object *ctl_document::add_array(const char *key) {
    json_object *array = json_object_new_array();
    add(key, array);
    return complete_ ? array : nullptr;
}

void ctl_document::add_to(json_object *array, json_object *value) {
    if (array != nullptr && value != nullptr && json_object_array_add(array, value) == 0)
        return;
    json_object_put(value);
    complete_ = false;
}

void ctl_document::add_minutes(const char *key, const int64_t *minutes, size_t count) {
    json_object *array = add_array(key);
    for (size_t i = 0; i < count && complete_; ++i)
        add_to(array, json_object_new_int64(minutes[i]));
}

void ctl_document::append(json_object *array, ctl_document *element) {
    complete_ = complete_ && element->complete_;
    add_to(array, element->object_.release());
}

void ctl_document::add_document(const char *key, ctl_document *element) {
    complete_ = complete_ && element->complete_;
    add(key, element->object_.release());
}

void ctl_document::add_messages(const char *key) {
    if (ctl_said().empty())
        return;
    json_object *array = add_array(key);
    for (const ctl_message &message : ctl_said())
        add_to(array, json_object_new_string(message.text));
    ctl_said().clear();
}

const char *ctl_document::text() const {
    return complete_ && object_ != nullptr
               ? json_object_to_json_string_ext(object_.get(), JSON_C_TO_STRING_PLAIN)
               : nullptr;
}

ctl_exit ctl_document::print() {
    add_messages("warnings");
    const char *line = text();
    if (line == nullptr)
        return ctl_fail(CTL_BROKEN, "out of memory");
    puts(line);
    is_printed = true;
    return CTL_DONE;
}

void ctl_document::add_error() {
    const plain_vector<ctl_message> &said = ctl_said();
    add_text("error", said.empty() ? "not done" : said[said.size() - 1].text);
    if (said.size() > 1)
        add_messages("messages");
    ctl_said().clear(); // the error is no warning
}

ctl_exit ctl_end_documents(ctl_exit status) {
    if (is_printed)
        return status;
    ctl_document document;
    if (status == CTL_DONE)
        document.add_bool("done", true);
    else
        document.add_error();
    const ctl_exit printed = document.print();
    return printed == CTL_DONE ? status : printed;
}

ctl_style ctl_style_of_output(bool ascii) {
    const char *terminal = getenv("TERM");
    const bool is_dumb = terminal != nullptr && strcmp(terminal, "dumb") == 0;
    return {.utf8 = !ascii && strcmp(nl_langinfo(CODESET), "UTF-8") == 0,
            .colour = isatty(STDOUT_FILENO) != 0 && !is_set("NO_COLOR") && !is_dumb,
            .columns = terminal_columns()};
}

void ctl_print_bars(const ctl_bars &bars, const ctl_style &style) {
    const layout of = layout_of(bars, style.columns);
    for (const ctl_bar &bar : bars)
        print_line(bar, of, style);
}
