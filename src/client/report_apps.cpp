#include "client/report_parts.h"

#include "client/minutes.h"
#include "client/page.h"

#include <algorithm>

namespace {

/// Rows of a table and of a list of rules; of more there is the sum or the number.
constexpr size_t rows_max = 20;

void put_app_name(const ctl_report_page &report, int32_t app_id) {
    const char *name = ctl_find_name(report.names, app_id);
    // A name of another writing direction must not turn what stands beside it.
    fputs("<bdi>", report.page);
    if (name != nullptr)
        ctl_put_text(report.page, name);
    else
        fprintf(report.page, "Application %d", app_id);
    fputs("</bdi>", report.page);
}

/// @return the first rule for an application, or null
const ctl_app_rule *rule_for(std::span<const ctl_app_rule> rules, int32_t app_id) {
    for (const ctl_app_rule &rule : rules)
        if (rule.app_id == app_id)
            return &rule;
    return nullptr;
}

void put_rule(FILE *page, const ctl_app_rule &rule, int64_t daily_used) {
    if (rule.action == POLICY_ACTION_BLOCK)
        fputs("always blocked", page);
    else
        fprintf(page, "limit %s a day%s", ctl_time_of(rule.daily_limit).text,
                daily_used >= rule.daily_limit ? ", used up" : "");
}

void put_cell(FILE *page, int64_t minutes) {
    fprintf(page, "<td title=\"%lld min\">%s</td>", static_cast<long long>(minutes),
            ctl_time_of(minutes).text);
}

void put_cells(FILE *page, const ctl_use &use) {
    put_cell(page, use.daily_used);
    put_cell(page, ctl_week_of(use));
    put_cell(page, ctl_month_of(use));
    fputs("</tr>\n", page);
}

void put_row(const ctl_report_page &report, const ctl_app_use &app, const ctl_app_rule *rule,
             int64_t longest) {
    fputs("<tr><th scope=\"row\">", report.page);
    put_app_name(report, app.app_id);
    if (rule != nullptr) {
        fputs(" <span class=\"rule\">", report.page);
        put_rule(report.page, *rule, app.use.daily_used);
        fputs("</span>", report.page);
    }
    if (longest > 0)
        ctl_put_bar(report.page, ctl_month_of(app.use), longest);
    fputs("</th>", report.page);
    put_cells(report.page, app.use);
}

/// Writes the row of those that have none of their own.
void put_rest(FILE *page, std::span<const ctl_app_use> rest) {
    ctl_use sum = {};
    for (const ctl_app_use &app : rest) {
        sum.daily_used += app.use.daily_used;
        sum.weekly_used += app.use.weekly_used;
        sum.monthly_used += app.use.monthly_used;
    }
    fprintf(page, "<tr><th scope=\"row\">%zu more</th>", rest.size());
    put_cells(page, sum);
}

void put_table(const ctl_report_page &report, std::span<const ctl_app_use> apps,
               std::span<const ctl_app_rule> rules) {
    fputs("<table>\n<caption>The most used this month first; a bar is the month.</caption>\n"
          "<thead><tr><th scope=\"col\">Application</th><th scope=\"col\">Today</th>"
          "<th scope=\"col\">Week</th><th scope=\"col\">Month</th></tr></thead>\n<tbody>\n",
          report.page);
    const int64_t longest = ctl_month_of(apps[0].use);
    const size_t rows = std::min(apps.size(), rows_max);
    for (const ctl_app_use &app : apps.first(rows))
        put_row(report, app, rule_for(rules, app.app_id), longest);
    if (apps.size() > rows)
        put_rest(report.page, apps.subspan(rows));
    fputs("</tbody>\n</table>\n", report.page);
}

bool is_among(std::span<const ctl_app_use> apps, int32_t app_id) {
    return std::any_of(apps.begin(), apps.end(),
                       [app_id](const ctl_app_use &app) { return app.app_id == app_id; });
}

/// Writes the rules whose applications have no row of their own.
void put_other_rules(const ctl_report_page &report, std::span<const ctl_app_use> shown,
                     std::span<const ctl_app_rule> rules) {
    size_t count = 0;
    for (const ctl_app_rule &rule : rules) {
        if (is_among(shown, rule.app_id) || ++count > rows_max)
            continue;
        if (count == 1)
            fputs("<h3>Other rules</h3>\n<ul>\n", report.page);
        fputs("<li>", report.page);
        put_app_name(report, rule.app_id);
        fputs(": ", report.page);
        put_rule(report.page, rule, -1);
        fputs("</li>\n", report.page);
    }
    if (count > rows_max)
        fprintf(report.page, "<li>%zu more</li>\n", count - rows_max);
    if (count > 0)
        fputs("</ul>\n", report.page);
}

} // namespace

void ctl_put_apps(const ctl_report_page &report, std::span<const ctl_app_use> apps,
                  std::span<const ctl_app_rule> rules) {
    if (apps.empty())
        fputs("<p class=\"soft\">No applications yet.</p>\n", report.page);
    else
        put_table(report, apps, rules);
    put_other_rules(report, apps.first(std::min(apps.size(), rows_max)), rules);
}
