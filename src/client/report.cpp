#include "client/report.h"

#include "client/page.h"
#include "client/text.h"
#include "client/usage_document.h"
#include "format/protocol.h"

#include <algorithm>

namespace {

/// Rows of a table and of a list of rules; of more there is the sum or the number.
constexpr size_t rows_max = 20;

/// What every section needs.
struct report_page {
    FILE *page;
    const ctl_usage_document &document;
    const household_t &household;
};

void put_app_name(const report_page &report, int32_t app_id) {
    ctl_put_app_name(report.page, household_app_name(report.household, app_id), app_id);
}

/// @return the first rule for an application, or null
const config_policy_rule_t *rule_for(std::span<const config_policy_rule_t> rules, int32_t app_id) {
    for (const config_policy_rule_t &rule : rules)
        if (rule.app_id == app_id)
            return &rule;
    return nullptr;
}

/// "Used up" compares two figures of the file. The router may block nothing: limits may be off.
void put_rule(FILE *page, const config_policy_rule_t &rule, int64_t daily_used) {
    if (rule.action == POLICY_ACTION_BLOCK)
        fputs("always blocked", page);
    else
        fprintf(page, "limit %s a day%s", ctl_time_of(rule.daily_limit).text,
                daily_used >= rule.daily_limit ? ", used up" : "");
}

void put_cells(FILE *page, int64_t today, int64_t week, int64_t month) {
    ctl_put_minutes(page, "td", today);
    ctl_put_minutes(page, "td", week);
    ctl_put_minutes(page, "td", month);
    fputs("</tr>\n", page);
}

void put_row(const report_page &report, const ctl_app_use &app, const config_policy_rule_t *rule,
             int64_t longest) {
    fputs("<tr><th scope=\"row\">", report.page);
    put_app_name(report, app.app_id);
    if (rule != nullptr) {
        fputs(" <span class=\"rule\">", report.page);
        put_rule(report.page, *rule, app.used.daily);
        fputs("</span>", report.page);
    }
    if (longest > 0)
        ctl_put_bar(report.page, ctl_month_of(app.used), longest);
    fputs("</th>", report.page);
    put_cells(report.page, app.used.daily, ctl_week_of(app.used), ctl_month_of(app.used));
}

/// Writes the row of those that have none of their own.
void put_rest(FILE *page, std::span<const ctl_app_use> rest) {
    int64_t today = 0;
    int64_t week = 0;
    int64_t month = 0;
    for (const ctl_app_use &app : rest) {
        today += app.used.daily;
        week += ctl_week_of(app.used);
        month += ctl_month_of(app.used);
    }
    fprintf(page, "<tr><th scope=\"row\">%zu more</th>", rest.size());
    put_cells(page, today, week, month);
}

void put_table(const report_page &report, std::span<const ctl_app_use> apps,
               std::span<const config_policy_rule_t> rules) {
    fputs("<table>\n<caption>The most used this month first; a bar is the month.</caption>\n"
          "<thead><tr><th scope=\"col\">Application</th><th scope=\"col\">Today</th>"
          "<th scope=\"col\">Week</th><th scope=\"col\">Month</th></tr></thead>\n<tbody>\n",
          report.page);
    const int64_t longest = ctl_month_of(apps[0].used);
    const size_t rows = std::min(apps.size(), rows_max);
    for (const ctl_app_use &app : apps.first(rows))
        put_row(report, app, rule_for(rules, app.app_id), longest);
    if (apps.size() > rows)
        put_rest(report.page, apps.subspan(rows));
    fputs("</tbody>\n</table>\n", report.page);
}

/// Both lists are short (`rows_max`), so a search through one is good enough.
bool is_among(std::span<const ctl_app_use> apps, int32_t app_id) {
    return std::any_of(apps.begin(), apps.end(),
                       [app_id](const ctl_app_use &app) { return app.app_id == app_id; });
}

/// Writes the rules whose applications have no row of their own.
void put_other_rules(const report_page &report, std::span<const ctl_app_use> shown,
                     std::span<const config_policy_rule_t> rules) {
    size_t count = 0;
    for (const config_policy_rule_t &rule : rules) {
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

/// Writes a list of applications as a table, the first ones each in a row and the rest added up.
/// @param rules  the rules of the profile; none for the router
void put_apps(const report_page &report, std::span<const ctl_app_use> apps,
              std::span<const config_policy_rule_t> rules) {
    if (apps.empty())
        fputs("<p class=\"soft\">No applications yet.</p>\n", report.page);
    else
        put_table(report, apps, rules);
    put_other_rules(report, apps.first(std::min(apps.size(), rows_max)), rules);
}

void put_head(const report_page &report, const ctl_profile_use &profile) {
    const household_person_t *person =
        household_person_of(report.household, profile.user_profile_id);
    fputs("<div class=\"head\"><h2>", report.page);
    if (person != nullptr)
        ctl_put_name(report.page, person->name.text);
    else
        fprintf(report.page, "Profile %d", profile.user_profile_id);
    fprintf(report.page, "</h2><span class=\"badge%s\">%s</span></div>\n",
            profile.blocked ? " stop" : "", profile.blocked ? "Blocked now" : "Not blocked");
}

/// Writes today's use where no limit can be shown. No meter stands there: an empty one would look
/// like time that is left.
void put_today_alone(FILE *page, int64_t used, const char *limit) {
    fputs("<p class=\"today\">", page);
    ctl_put_minutes(page, "strong", used);
    fprintf(page, " <span>today</span> <span class=\"soft\">%s</span></p>\n", limit);
}

/// Writes today's use against a limit and its bonus.
/// @param weekday  the day's name
void put_today_of(FILE *page, const ctl_profile_use &profile, int32_t limit, const char *weekday) {
    const int64_t used = profile.used.daily;
    const int64_t allowance = int64_t{limit} + profile.daily_extend;
    const int64_t left = allowance - used;
    fputs("<p class=\"today\">", page);
    ctl_put_minutes(page, "strong", used);
    fprintf(page, " <span>of %s today</span> <span class=\"soft\">%s %s</span></p>\n",
            ctl_time_of(allowance).text, ctl_time_of(left < 0 ? -left : left).text,
            left < 0 ? "over" : "left");
    char meaning[96];
    snprintf(meaning, sizeof(meaning), "%lld of %lld minutes used today",
             static_cast<long long>(used), static_cast<long long>(allowance));
    ctl_put_meter(page, used, allowance, meaning);
    fprintf(page, "<p class=\"soft\">%s on %ss", ctl_time_of(limit).text, weekday);
    if (profile.daily_extend > 0)
        fprintf(page, " and a bonus of %s today", ctl_time_of(profile.daily_extend).text);
    fputs("</p>\n", page);
}

void put_today(const report_page &report, const ctl_profile_use &profile) {
    if (!report.document.has_time) {
        put_today_alone(report.page, profile.used.daily,
                        "The file has no date, so the day's limit is not known.");
        return;
    }
    const tm today = ctl_local_day(report.document.timestamp, 0);
    const int32_t limit = profile.weekday_limits[today.tm_wday];
    if (limit < ctl_no_limit)
        put_today_of(report.page, profile, limit, ctl_write_day(today, "%A").text);
    else
        put_today_alone(report.page, profile.used.daily, "no limit");
}

void put_sum(FILE *page, const char *label, int64_t minutes) {
    fprintf(page, "<div><dt>%s</dt>", label);
    ctl_put_minutes(page, "dd", minutes);
    fputs("</div>\n", page);
}

void put_sums(FILE *page, const ctl_profile_use &profile) {
    fputs("<dl>\n", page);
    put_sum(page, "This week", ctl_week_of(profile.used));
    put_sum(page, "This month", ctl_month_of(profile.used));
    fprintf(page, "<div><dt>Devices</dt><dd>%zu</dd></div>\n</dl>\n", profile.device_count);
}

void put_devices(const report_page &report, const ctl_profile_use &profile) {
    if (profile.device_count == 0)
        return;
    fputs("<details><summary>Device addresses</summary>\n<ul class=\"mac\">\n", report.page);
    for (const mac_text_t &device : ctl_records(report.document.devices, profile.devices)) {
        fputs("<li>", report.page);
        ctl_put_text(report.page, device.text);
        fputs("</li>\n", report.page);
    }
    if (profile.device_count > profile.devices.count)
        fprintf(report.page, "<li>%zu more</li>\n", profile.device_count - profile.devices.count);
    fputs("</ul>\n</details>\n", report.page);
}

void put_profile(const report_page &report, const ctl_profile_use &profile) {
    fputs("<section>\n", report.page);
    put_head(report, profile);
    fputs("<div class=\"halves\">\n<div>\n", report.page);
    put_today(report, profile);
    put_sums(report.page, profile);
    ctl_put_history(report.page, profile.history, report.document.timestamp);
    put_devices(report, profile);
    fputs("</div>\n<div>\n<h3>Applications</h3>\n", report.page);
    put_apps(report, ctl_records(report.document.apps, profile.apps),
             ctl_records(report.document.rules, profile.rules));
    fputs("</div>\n</div>\n</section>\n", report.page);
}

void put_header(const report_page &report) {
    fputs("<header>\n<h1>Internet time</h1>\n<p class=\"soft\">", report.page);
    if (report.document.has_time) {
        const tm written = ctl_local_day(report.document.timestamp, 0);
        fputs(ctl_write_date(written, "%A, ", " %B %Y, %H:%M").text, report.page);
    } else {
        fputs("The file has no date.", report.page);
    }
    fputs("</p>\n</header>\n", report.page);
}

void put_profiles(const report_page &report) {
    const ctl_usage_document &document = report.document;
    for (const ctl_profile_use &profile : document.profiles)
        put_profile(report, profile);
    const size_t missing = document.profile_count - document.profiles.size();
    if (document.profile_count == 0)
        fputs("<section>\n<h2>Profiles</h2>\n<p class=\"soft\">No profiles yet.</p>\n</section>\n",
              report.page);
    if (missing > 0)
        fprintf(report.page, "<section>\n<p>Profiles that are not shown: %zu</p>\n</section>\n",
                missing);
}

void put_router(const report_page &report) {
    fputs("<section>\n<h2>The whole router</h2>\n<h3>Applications</h3>\n", report.page);
    put_apps(report, ctl_records(report.document.apps, report.document.router_apps), {});
    fputs("</section>\n", report.page);
}

/// Writes what a reader could otherwise take for a mistake.
void put_footer(FILE *page) {
    fputs("<footer>\n"
          "<p>Weeks begin on Sunday. Applications that run at the same time each count their own "
          "minutes, so in total they may have more than the profile.</p>\n"
          "<p>Limits are shown as they are set; whether they are switched on is not in the "
          "file.</p>\n</footer>\n",
          page);
}

} // namespace

ctl_exit ctl_write_report(FILE *page, const char *path, const household_t &household) {
    ctl_usage_document document = {};
    const ctl_exit status = ctl_read_usage_document(path, &document);
    if (status != CTL_DONE)
        return status;
    const report_page report = {page, document, household};
    ctl_begin_page(page, "Internet time");
    put_header(report);
    fputs("<main>\n", page);
    put_profiles(report);
    put_router(report);
    fputs("</main>\n", page);
    put_footer(page);
    ctl_end_page(page);
    return CTL_DONE;
}
