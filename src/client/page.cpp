#include "client/page.h"

#include "client/page_css.h" // made of page.css by the build
#include "client/text.h"

#include <algorithm>

namespace {

// The chart's measures, in the units of its view box. A phone shows about one unit as one pixel.
constexpr int chart_width = 340;
constexpr int chart_height = 138;
constexpr int plot_left = 54;
constexpr int plot_top = 8;
constexpr int plot_base = 118;
constexpr int marks_base = 133;
/// Most lines of a scale, without its base.
constexpr int grid_lines = 4;

/// @return how much of `size` a part of a whole takes
double share(int64_t part, int64_t whole, double size) {
    return whole <= 0 || part >= whole
               ? (part > 0 ? size : 0)
               : size * static_cast<double>(part) / static_cast<double>(whole);
}

/// @return minutes between two grid lines, as round as a clock has it
int64_t grid_step(int64_t longest) {
    int64_t step = 15;
    for (const int64_t round : {15, 30, 60, 120, 180, 240, 360, 480, 720, 1440}) {
        step = round;
        if (longest <= step * grid_lines)
            return step;
    }
    while (longest / grid_lines >= step)
        step *= 2;
    return step;
}

void put_grid(FILE *page, int64_t step, int lines) {
    for (int line = 0; line <= lines; ++line) {
        const int y = plot_base - (plot_base - plot_top) * line / lines;
        fprintf(page, "<line class=\"grid\" x1=\"%d\" x2=\"%d\" y1=\"%d\" y2=\"%d\"/>", plot_left,
                chart_width, y, y);
        fprintf(page, "<text x=\"%d\" y=\"%d\" text-anchor=\"end\">%s</text>\n", plot_left - 5,
                y + 4, line == 0 ? "0" : ctl_time_of(step * line).text);
    }
}

void put_day(FILE *page, const ctl_day_bar &day, double left, double width, int64_t top,
             bool is_current) {
    if (day.minutes > 0) {
        // A minute must be seen even beside a whole day.
        const double height = std::max(share(day.minutes, top, plot_base - plot_top), 1.0);
        fprintf(page,
                "<rect class=\"%s\" x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" "
                "rx=\"1\"><title>%s: %s (%lld min)</title></rect>\n",
                is_current ? "now" : "use", left + width / 10, plot_base - height, width * 4 / 5,
                height, day.name.text, ctl_time_of(day.minutes).text,
                static_cast<long long>(day.minutes));
    }
    if (day.mark.text[0] != '\0')
        fprintf(page, "<text x=\"%.1f\" y=\"%d\" text-anchor=\"%s\">%s</text>\n",
                is_current ? chart_width : left + width / 2, marks_base,
                is_current ? "end" : "middle", day.mark.text);
}

/// @return the entity for a character that has a meaning in HTML, or null
const char *entity_of(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return nullptr;
    }
}

/// Names a day of the chart. Without a date it goes by its distance.
ctl_day_bar day_bar(int64_t time, int days_ago, int64_t minutes) {
    ctl_day_bar bar = {minutes, {}, {}};
    const bool is_marked = days_ago % 7 == 0;
    if (time != 0) {
        const tm day = ctl_local_day(time, days_ago);
        bar.name = ctl_write_date(day, "%a ", " %b");
        if (is_marked)
            bar.mark = ctl_write_date(day, "", " %b");
    } else {
        snprintf(bar.name.text, sizeof(bar.name.text), "%d days ago", days_ago);
        if (is_marked)
            snprintf(bar.mark.text, sizeof(bar.mark.text), "\xE2\x88\x92%d days", days_ago);
    }
    if (days_ago == 0) {
        snprintf(bar.name.text, sizeof(bar.name.text), "today");
        bar.mark = bar.name;
    }
    return bar;
}

} // namespace

void ctl_put_text(FILE *page, const char *text) {
    for (; *text != '\0'; ++text) {
        if (const char *entity = entity_of(*text))
            fputs(entity, page);
        else
            fputc(*text, page);
    }
}

void ctl_put_minutes(FILE *page, const char *element, int64_t minutes) {
    fprintf(page, "<%s title=\"%lld min\">%s</%s>", element, static_cast<long long>(minutes),
            ctl_time_of(minutes).text, element);
}

void ctl_begin_page(FILE *page, const char *title) {
    fputs("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
          "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
          "<meta name=\"color-scheme\" content=\"light dark\">\n<title>",
          page);
    ctl_put_text(page, title);
    fprintf(page, "</title>\n<style>%s</style>\n</head>\n<body>\n", ctl_page_css);
}

void ctl_end_page(FILE *page) {
    fputs("</body>\n</html>\n", page);
}

void ctl_put_meter(FILE *page, int64_t minutes, int64_t whole, const char *meaning) {
    fputs("<svg class=\"meter\" role=\"img\" aria-label=\"", page);
    ctl_put_text(page, meaning);
    fputs("\"><title>", page);
    ctl_put_text(page, meaning);
    fprintf(page,
            "</title><rect class=\"track\" width=\"100%%\" height=\"100%%\" rx=\"6\"/>"
            "<rect class=\"%s\" width=\"%.1f%%\" height=\"100%%\" rx=\"6\"/></svg>\n",
            minutes > whole ? "over" : "now", share(minutes, whole, 100));
}

void ctl_put_bar(FILE *page, int64_t minutes, int64_t longest) {
    fprintf(page,
            "<svg class=\"bar\" aria-hidden=\"true\"><title>%lld min this month</title>"
            "<rect class=\"use\" width=\"%.1f%%\" height=\"100%%\" rx=\"3\"/></svg>",
            static_cast<long long>(minutes), share(minutes, longest, 100));
}

void ctl_put_day_chart(FILE *page, std::span<const ctl_day_bar> days, const char *meaning) {
    int64_t longest = 1;
    for (const ctl_day_bar &day : days)
        longest = std::max(longest, day.minutes);
    const int64_t step = grid_step(longest);
    const int64_t lines = (longest - 1) / step + 1;
    fprintf(page, "<svg class=\"chart\" viewBox=\"0 0 %d %d\" role=\"img\" aria-label=\"",
            chart_width, chart_height);
    ctl_put_text(page, meaning);
    fputs("\">\n", page);
    put_grid(page, step, static_cast<int>(lines));
    const double width = (chart_width - plot_left) / static_cast<double>(days.size());
    for (size_t i = 0; i < days.size(); ++i)
        put_day(page, days[i], plot_left + width * static_cast<double>(i), width, step * lines,
                i + 1 == days.size());
    fputs("</svg>\n", page);
}

void ctl_put_name(FILE *page, const char *name) {
    fputs("<bdi>", page);
    ctl_put_text(page, name);
    fputs("</bdi>", page);
}

void ctl_put_app_name(FILE *page, const char *name, int32_t app_id) {
    constexpr int32_t not_recognised = 0;
    char number[32];
    snprintf(number, sizeof(number), "Application %d", app_id);
    ctl_put_name(page, name != nullptr            ? name
                       : app_id == not_recognised ? "not recognised"
                                                  : number);
}

void ctl_put_history(FILE *page, const int64_t *minutes, int64_t time) {
    ctl_day_bar bars[ctl_history_days];
    for (int days_ago = 0; days_ago < ctl_history_days; ++days_ago)
        bars[ctl_history_days - 1 - days_ago] = day_bar(time, days_ago, minutes[days_ago]);
    const ctl_day_bar &busiest =
        *std::max_element(std::begin(bars), std::end(bars),
                          [](const auto &a, const auto &b) { return a.minutes < b.minutes; });
    fputs("<h3>Thirty days and today</h3>\n", page);
    if (busiest.minutes == 0) {
        fputs("<p class=\"soft\">No use in these days.</p>\n", page);
        return;
    }
    char meaning[224];
    snprintf(meaning, sizeof(meaning), "Bar chart of %s to today. The busiest day: %s, %s.",
             bars[0].name.text, busiest.name.text, ctl_time_of(busiest.minutes).text);
    ctl_put_day_chart(page, bars, meaning);
    fprintf(page,
            "<p class=\"soft\">The applications\xE2\x80\x99 minutes of each day, added together. "
            "The busiest: %s, %s.</p>\n",
            busiest.name.text, ctl_time_of(busiest.minutes).text);
}
