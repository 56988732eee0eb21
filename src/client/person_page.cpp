#include "client/person_page.h"

#include "client/household_file.h"
#include "client/page.h"
#include "core/clock.h"

#include <algorithm>
#include <cstring>

namespace {

household_name_t name_of(const household_t &household, int32_t number) {
    household_name_t name = {};
    snprintf(name.text, sizeof(name.text), "%s", ctl_person_name(household, number).text);
    return name;
}

/// Adds up all applications' days. The daemon refuses where nothing was used yet.
ctl_exit read_history(const ctl_daemon &daemon, int32_t number, int64_t *history) {
    const ctl_exit status = ctl_ask_list(daemon,
                                         {.type = UTM_APP_CONFIG_GET_PREV_DAY_USAGE,
                                          .arg0 = number,
                                          .arg1 = UTM_APP_CONFIG_PREV_BY_DAY},
                                         "", [history](const utm_app_config_reply &reply) {
                                             for (int i = 0; i < ctl_history_days; ++i)
                                                 history[i] += std::max(reply.prev_day_data[i], 0);
                                             return true;
                                         });
    return status == CTL_REFUSED ? CTL_DONE : status;
}

const ctl_profile_use *find_profile(const ctl_usage_document &document, int32_t number) {
    for (const ctl_profile_use &profile : document.profiles)
        if (profile.user_profile_id == number)
            return &profile;
    return nullptr;
}

/// The file's own rules, and whether they are used up: whether limits are on is not in the file.
ctl_exit read_rules(const ctl_usage_document &document, const ctl_profile_use &profile,
                    ctl_app_standings *apps) {
    for (const config_policy_rule_t &rule : ctl_records(document.rules, profile.rules)) {
        ctl_app_standing app = {rule, 0, false};
        for (const ctl_app_use &use : ctl_records(document.apps, profile.apps))
            if (use.app_id == rule.app_id)
                app.used = use.used.daily;
        app.blocked = rule.action == POLICY_ACTION_BLOCK || app.used >= rule.daily_limit;
        if (!apps->add(app))
            return ctl_too_long();
    }
    return CTL_DONE;
}

void put_header(FILE *page, const ctl_person_day &day) {
    fputs("<header>\n<h1>", page);
    ctl_put_name(page, day.name.text);
    fputs("</h1>\n<p class=\"soft\">", page);
    if (day.time != 0)
        fputs(ctl_write_date(ctl_local_day(day.time, 0), "%A, ", " %B %Y, %H:%M").text, page);
    fputs("</p>\n</header>\n", page);
}

/// What is left comes first: that is what the person wants to know.
void put_left(FILE *page, const ctl_person_day &day) {
    const int64_t whole = day.limit + day.extend;
    const int64_t left = std::max<int64_t>(whole - day.used.daily, 0);
    fputs("<p class=\"today\">", page);
    ctl_put_minutes(page, "strong", left);
    fprintf(page, " <span>left today</span> <span class=\"soft\">%s of %s used",
            ctl_time_of(day.used.daily).text, ctl_time_of(whole).text);
    if (day.extend > 0)
        fprintf(page, ", with a bonus of %s", ctl_time_of(day.extend).text);
    fputs("</span></p>\n", page);
    char meaning[96];
    snprintf(meaning, sizeof(meaning), "%lld of %lld minutes used today",
             static_cast<long long>(day.used.daily), static_cast<long long>(whole));
    ctl_put_meter(page, day.used.daily, whole, meaning);
}

void put_today(FILE *page, const ctl_person_day &day) {
    fprintf(page,
            "<section>\n<div class=\"head\"><h2>Today</h2><span class=\"badge%s\">%s</span></div>"
            "\n",
            day.cut_off ? " stop" : "", day.cut_off ? "No more today" : "Go ahead");
    if (day.has_limit) {
        put_left(page, day);
    } else {
        fputs("<p class=\"today\">", page);
        ctl_put_minutes(page, "strong", day.used.daily);
        fputs(" <span>used today</span> <span class=\"soft\">no limit</span></p>\n", page);
    }
    fputs("</section>\n", page);
}

void put_app(FILE *page, const ctl_app_standing &app, const household_t &household) {
    fputs("<tr><th scope=\"row\">", page);
    ctl_put_app_name(page, household_app_name(household, app.rule.app_id), app.rule.app_id);
    if (app.rule.action == POLICY_ACTION_BLOCK) {
        fputs("</th><td>blocked</td><td></td></tr>\n", page);
        return;
    }
    char meaning[96];
    snprintf(meaning, sizeof(meaning), "%d of %d minutes used today", app.used,
             app.rule.daily_limit);
    ctl_put_meter(page, app.used, app.rule.daily_limit, meaning);
    fputs("</th>", page);
    ctl_put_minutes(page, "td", std::max(app.rule.daily_limit - app.used, 0));
    fprintf(page, "<td>%s of %s</td></tr>\n", ctl_time_of(app.used).text,
            ctl_time_of(app.rule.daily_limit).text);
}

void put_apps(FILE *page, const ctl_person_day &day, const household_t &household) {
    if (!day.limits_on || day.apps.empty())
        return;
    fputs("<section>\n<h2>Applications</h2>\n<table class=\"rules\">\n"
          "<thead><tr><th scope=\"col\">Application</th><th scope=\"col\">Left</th>"
          "<th scope=\"col\">Used</th></tr></thead>\n<tbody>\n",
          page);
    for (const ctl_app_standing &app : day.apps)
        put_app(page, app, household);
    fputs("</tbody>\n</table>\n</section>\n", page);
}

} // namespace

ctl_exit ctl_ask_person_day(const ctl_daemon &daemon, const household_t &household, int32_t number,
                            ctl_person_day *day) {
    ctl_standing is = {};
    day->name = name_of(household, number);
    day->time = utm_app_now();
    const household_person_t *person = household_person_of(household, number);
    ctl_exit status = ctl_read_limits_on(daemon, &day->limits_on);
    if (status == CTL_DONE)
        status = ctl_read_standing(daemon, number, day->limits_on, &is);
    if (status == CTL_DONE && !is.is_known)
        return ctl_fail(CTL_REFUSED, "the daemon does not know %s", day->name.text);
    if (status == CTL_DONE && person != nullptr)
        status = ctl_read_app_standings(
            daemon, is, household_records(household.rules, person->rules), &day->apps);
    if (status == CTL_DONE)
        status = read_history(daemon, number, day->history);
    day->used = is.used;
    day->has_limit = day->limits_on && is.enabled && is.limit < household_no_limit;
    day->limit = is.limit;
    day->extend = is.extend;
    day->cut_off = is.cut_off();
    return status;
}

ctl_exit ctl_read_person_day(const char *path, const household_t &household, int32_t number,
                             ctl_person_day *day) {
    ctl_usage_document document = {};
    const ctl_exit status = ctl_read_usage_document(path, &document);
    if (status != CTL_DONE)
        return status;
    day->name = name_of(household, number);
    const ctl_profile_use *profile = find_profile(document, number);
    if (profile == nullptr)
        return ctl_fail(CTL_USAGE, "%s has nothing about %s", path, day->name.text);
    day->time = document.timestamp;
    day->used = profile->used;
    day->limits_on = true;
    const int32_t limit = profile->weekday_limits[ctl_local_day(day->time, 0).tm_wday];
    day->has_limit = document.has_time && limit < ctl_no_limit;
    day->limit = limit;
    day->extend = profile->daily_extend;
    day->cut_off = profile->blocked;
    std::copy_n(profile->history, ctl_history_days, day->history);
    return read_rules(document, *profile, &day->apps);
}

void ctl_write_person_page(FILE *page, const ctl_person_day &day, const household_t &household) {
    ctl_begin_page(page, day.name.text);
    put_header(page, day);
    fputs("<main>\n", page);
    put_today(page, day);
    put_apps(page, day, household);
    fputs("<section>\n", page);
    ctl_put_history(page, day.history, day.time);
    fputs("</section>\n</main>\n", page);
    ctl_end_page(page);
}
