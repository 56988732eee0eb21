#include "client/apply_words.h"

#include "client/arguments.h"
#include "format/spelling.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr char rest[] = " and more";

/// Adds a piece with what separates it from the one before, as long as there is room.
void add_piece(ctl_line *line, const char *separator, const char *piece) {
    const size_t length = strlen(line->text);
    const size_t size = strlen(separator) + strlen(piece);
    if (length + size + sizeof(rest) <= sizeof(line->text))
        snprintf(line->text + length, sizeof(line->text) - length, "%s%s", separator, piece);
    else if (length < strlen(rest) || strcmp(line->text + length - strlen(rest), rest) != 0)
        strcpy(line->text + length, rest);
}

/// A limit of a whole day is none.
ctl_line limit_text(int32_t minutes) {
    return minutes >= household_no_limit ? ctl_line_of("none")
                                         : ctl_line_of("%s", ctl_time_of(minutes).text);
}

const char *app_name(const household_t &household, int32_t app_id) {
    for (const household_app_t &app : household.apps)
        if (app.number == app_id)
            return app.name.text;
    return nullptr;
}

bool is_same_rule(const config_policy_rule_t &a, const config_policy_rule_t &b) {
    return a.action == b.action &&
           (a.action != POLICY_ACTION_LIMIT || a.daily_limit == b.daily_limit);
}

ctl_line rule_text(const household_t &household, const config_policy_rule_t &rule) {
    const char *name = app_name(household, rule.app_id);
    const ctl_line called =
        name != nullptr ? ctl_line_of("%s", name) : ctl_line_of("application %d", rule.app_id);
    if (rule.action == POLICY_ACTION_LIMIT)
        return ctl_line_of("%s %s", called.text, ctl_time_of(rule.daily_limit).text);
    return ctl_line_of("%s %s", called.text,
                       rule.action == POLICY_ACTION_BLOCK ? "blocked" : "free");
}

/// The week as a family sees it.
constexpr int32_t week[] = {1, 2, 3, 4, 5, 6, 0};

} // namespace

ctl_line ctl_line_of(const char *format, ...) {
    ctl_line line;
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line.text, sizeof(line.text), format, arguments);
    va_end(arguments);
    return line;
}

ctl_called ctl_person_called(const household_t &household, int32_t number) {
    ctl_called called;
    const household_person_t *person = household_person_of(household, number);
    if (person != nullptr)
        strcpy(called.text, person->name.text);
    else
        snprintf(called.text, sizeof(called.text), "person %d", number);
    return called;
}

ctl_line ctl_device_line(const household_t &household, int32_t person,
                         const household_device_t &device) {
    const bool has_name = device.name.text[0] != '\0';
    return ctl_line_of("%s: device %s joins%s%s%s", ctl_person_called(household, person).text,
                       mac_text(device.mac).text, has_name ? " (" : "", device.name.text,
                       has_name ? ")" : "");
}

ctl_line ctl_limits_line(const household_t &household, const household_person_t &person,
                         const int32_t *before, int32_t today) {
    const int32_t *wanted = person.weekday_limits;
    const ctl_called called = ctl_person_called(household, person.number);
    bool differs[days_per_week];
    int changed = 0;
    bool is_one = true;
    for (int32_t day = 0; day < days_per_week; ++day) {
        differs[day] = before[day] != wanted[day];
        changed += differs[day];
        is_one = is_one && wanted[day] == wanted[0];
    }
    if (changed == 0)
        return today != 0 ? ctl_line_of("%s: limit %s today", called.text, limit_text(today).text)
                          : ctl_line{};
    if (changed == days_per_week && is_one)
        return ctl_line_of("%s: limit %s every day", called.text, limit_text(wanted[0]).text);
    ctl_line line = ctl_line_of("%s: limit", called.text);
    const char *separator = " ";
    for (const int32_t first : week) {
        if (!differs[first])
            continue;
        ctl_line piece = limit_text(wanted[first]);
        for (const int32_t day : week)
            if (differs[day] && wanted[day] == wanted[first]) {
                differs[day] = false;
                add_piece(&piece, " ", spelling_weekday(day));
            }
        add_piece(&line, separator, piece.text);
        separator = ", ";
    }
    return line;
}

ctl_line ctl_enforcement_line(const household_t &household, int32_t person, bool was_enabled,
                              bool was_blocked, bool is_enabled, bool is_blocked) {
    const char *what = nullptr;
    if (was_enabled != is_enabled)
        what = is_enabled ? "limit enforced" : "limit only counted";
    else if (was_blocked != is_blocked)
        what = is_blocked ? "cut off" : "no longer cut off";
    return what == nullptr ? ctl_line{}
                           : ctl_line_of("%s: %s", ctl_person_called(household, person).text, what);
}

ctl_line ctl_rules_line(const household_t &household, int32_t person,
                        std::span<const config_policy_rule_t> before,
                        std::span<const config_policy_rule_t> wanted) {
    ctl_line line = ctl_line_of("%s:", ctl_person_called(household, person).text);
    const char *separator = " ";
    bool is_any = false;
    const auto add = [&](const config_policy_rule_t &rule) {
        add_piece(&line, separator, rule_text(household, rule).text);
        separator = ", ";
        is_any = true;
    };
    for (const config_policy_rule_t &rule : wanted) {
        const config_policy_rule_t *old = ctl_find_rule(before, rule.app_id);
        if (old == nullptr || !is_same_rule(*old, rule))
            add(rule);
    }
    for (const config_policy_rule_t &rule : before)
        if (ctl_find_rule(wanted, rule.app_id) == nullptr)
            add({rule.app_id, POLICY_ACTION_REMOVE, 0});
    return is_any ? line : ctl_line{};
}

const config_policy_rule_t *ctl_find_rule(std::span<const config_policy_rule_t> rules,
                                          int32_t app_id) {
    for (const config_policy_rule_t &rule : rules)
        if (rule.app_id == app_id)
            return &rule;
    return nullptr;
}
