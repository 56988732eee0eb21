#include "client/report_parts.h"

#include "client/local_day.h"
#include "client/minutes.h"
#include "client/page.h"

#include <algorithm>

namespace {

void put_head(FILE *page, const ctl_profile_use &profile) {
    fprintf(page,
            "<div class=\"head\"><h2>Profile %d</h2><span class=\"badge%s\">%s</span></div>\n",
            profile.user_profile_id, profile.blocked ? " stop" : "",
            profile.blocked ? "Blocked now" : "Not blocked");
}

/// Writes today's use where no limit can be shown.
void put_today_alone(FILE *page, int64_t used, const char *limit) {
    fprintf(page,
            "<p class=\"today\"><strong title=\"%lld min\">%s</strong> <span>today</span> "
            "<span class=\"soft\">%s</span></p>\n",
            static_cast<long long>(used), ctl_time_of(used).text, limit);
}

/// Writes today's use against a limit and its bonus.
/// @param weekday  the day's name
void put_today_of(FILE *page, const ctl_profile_use &profile, int32_t limit, const char *weekday) {
    const int64_t used = profile.use.daily_used;
    const int64_t allowance = int64_t{limit} + profile.daily_extend;
    const int64_t left = allowance - used;
    fprintf(page,
            "<p class=\"today\"><strong title=\"%lld min\">%s</strong> <span>of %s today</span> "
            "<span class=\"soft\">%s %s</span></p>\n",
            static_cast<long long>(used), ctl_time_of(used).text, ctl_time_of(allowance).text,
            ctl_time_of(left < 0 ? -left : left).text, left < 0 ? "over" : "left");
    char meaning[96];
    snprintf(meaning, sizeof meaning, "%lld of %lld minutes used today",
             static_cast<long long>(used), static_cast<long long>(allowance));
    ctl_put_meter(page, used, allowance, meaning);
    fprintf(page, "<p class=\"soft\">%s on %ss", ctl_time_of(limit).text, weekday);
    if (profile.daily_extend > 0)
        fprintf(page, " and a bonus of %s today", ctl_time_of(profile.daily_extend).text);
    fputs("</p>\n", page);
}

void put_today(const ctl_report_page &report, const ctl_profile_use &profile) {
    if (!report.document.has_time) {
        put_today_alone(report.page, profile.use.daily_used,
                        "The file has no date, so the day's limit is not known.");
        return;
    }
    const tm today = ctl_local_day(report.document.timestamp, 0);
    const int32_t limit = profile.weekday_limits[today.tm_wday];
    char weekday[16] = "";
    strftime(weekday, sizeof weekday, "%A", &today);
    if (limit < ctl_no_limit)
        put_today_of(report.page, profile, limit, weekday);
    else
        put_today_alone(report.page, profile.use.daily_used, "no limit");
}

void put_sum(FILE *page, const char *label, int64_t minutes) {
    fprintf(page, "<div><dt>%s</dt><dd title=\"%lld min\">%s</dd></div>\n", label,
            static_cast<long long>(minutes), ctl_time_of(minutes).text);
}

void put_sums(FILE *page, const ctl_profile_use &profile) {
    fputs("<dl>\n", page);
    put_sum(page, "This week", ctl_week_of(profile.use));
    put_sum(page, "This month", ctl_month_of(profile.use));
    fprintf(page, "<div><dt>Devices</dt><dd>%zu</dd></div>\n</dl>\n", profile.device_count);
}

void put_devices(const ctl_report_page &report, const ctl_profile_use &profile) {
    if (profile.device_count == 0)
        return;
    fputs("<details><summary>Device addresses</summary>\n<ul class=\"mac\">\n", report.page);
    for (const ctl_device_name &device : ctl_records(report.document.devices, profile.devices)) {
        fputs("<li>", report.page);
        ctl_put_text(report.page, device.text);
        fputs("</li>\n", report.page);
    }
    if (profile.device_count > profile.devices.count)
        fprintf(report.page, "<li>%zu more</li>\n", profile.device_count - profile.devices.count);
    fputs("</ul>\n</details>\n", report.page);
}

/// Names a day of the chart. Without a date it goes by its distance.
ctl_day_bar day_bar(const ctl_usage_document &document, int days_ago, int64_t minutes) {
    ctl_day_bar bar = {minutes, {}, {}};
    const bool is_marked = days_ago % 7 == 0;
    if (document.has_time) {
        const tm day = ctl_local_day(document.timestamp, days_ago);
        bar.name = ctl_weekday_day(day);
        if (is_marked)
            bar.mark = ctl_short_day(day);
    } else {
        snprintf(bar.name.text, sizeof bar.name.text, "%d days ago", days_ago);
        if (is_marked)
            snprintf(bar.mark.text, sizeof bar.mark.text, "\xE2\x88\x92%d days", days_ago);
    }
    if (days_ago == 0) {
        snprintf(bar.name.text, sizeof bar.name.text, "today");
        bar.mark = bar.name;
    }
    return bar;
}

void put_history(const ctl_report_page &report, const ctl_profile_use &profile) {
    ctl_day_bar bars[ctl_history_days];
    for (int days_ago = 0; days_ago < ctl_history_days; ++days_ago)
        bars[ctl_history_days - 1 - days_ago] =
            day_bar(report.document, days_ago, profile.history[days_ago]);
    const ctl_day_bar &busiest =
        *std::max_element(std::begin(bars), std::end(bars),
                          [](const auto &a, const auto &b) { return a.minutes < b.minutes; });
    fputs("<h3>Thirty days and today</h3>\n", report.page);
    if (busiest.minutes == 0) {
        fputs("<p class=\"soft\">No use in these days.</p>\n", report.page);
        return;
    }
    char meaning[224];
    snprintf(meaning, sizeof meaning, "Bar chart of %s to today. The busiest day: %s, %s.",
             bars[0].name.text, busiest.name.text, ctl_time_of(busiest.minutes).text);
    ctl_put_day_chart(report.page, bars, meaning);
    fprintf(report.page,
            "<p class=\"soft\">The applications\xE2\x80\x99 minutes of each day, added together. "
            "The busiest: %s, %s.</p>\n",
            busiest.name.text, ctl_time_of(busiest.minutes).text);
}

} // namespace

void ctl_put_profile(const ctl_report_page &report, const ctl_profile_use &profile) {
    fputs("<section>\n", report.page);
    put_head(report.page, profile);
    fputs("<div class=\"halves\">\n<div>\n", report.page);
    put_today(report, profile);
    put_sums(report.page, profile);
    put_history(report, profile);
    put_devices(report, profile);
    fputs("</div>\n<div>\n<h3>Applications</h3>\n", report.page);
    ctl_put_apps(report, ctl_records(report.document.apps, profile.apps),
                 ctl_records(report.document.rules, profile.rules));
    fputs("</div>\n</div>\n</section>\n", report.page);
}
