#include "tests/model/state.h"

#include "tests/lib/world.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <map>

namespace model {

namespace {

std::string format_of(const char *format, va_list arguments) {
    char text[512];
    vsnprintf(text, sizeof(text), format, arguments);
    return text;
}

__attribute__((format(printf, 1, 2))) std::string text_of(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = format_of(format, arguments);
    va_end(arguments);
    return text;
}

/// Runs a line; a status that is not 0 is logged with `complaint` behind it.
void run(state_t &state, const std::string &line, const char *complaint) {
    state.trace += "run " + line + "\n";
    if (const int status = status_of(line); status != 0 && complaint != nullptr)
        log(state, "Command %s return %d%s", line.c_str(), status, complaint);
}

/// The slots of the ring: day number n is kept in slot n modulo 30 until day n + 30 comes.
std::string ring_of(const app_t &app) {
    const size_t days = app.finished_days.size();
    std::map<size_t, int32_t> slots;
    for (size_t day = days > 30 ? days - 30 : 0; day < days; ++day)
        slots[day % 30] = app.finished_days[day];
    std::string text;
    for (const auto &[slot, minutes] : slots)
        if (minutes != 0)
            text += text_of("%s%zu:%d", text.empty() ? "" : " ", slot, minutes);
    return "[" + text + text_of("] next %zu", days % 30);
}

std::string used_text(const used_t &used) {
    return text_of("used %d/%d/%d", used.daily, used.weekly, used.monthly);
}

std::string render_app(const app_t &app, const rule_t *rule) {
    return text_of("  app %d: %s, blocked %d, days %s", app.id, used_text(app.used).c_str(),
                   app.blocked, ring_of(app).c_str()) +
           (rule ? text_of(", rule %d/%d", rule->action, rule->limit) : "") + "\n";
}

std::string render_profile(state_t &state, const profile_t &profile) {
    std::string text =
        text_of("profile %d: devices %zu [%s]", profile.id, profile.devices.size(),
                profile.device_text.c_str()) +
        (profile.devices.empty() && !profile.device_text.empty() ? " (really [])" : "") +
        text_of(", enabled %d, limit %d + %d, ", profile.enabled, profile.limit, profile.extend);
    text +=
        used_text(profile.used) +
        text_of(", blocked %d, collected %+lld, apps %d, policy %s\n  weekdays", profile.blocked,
                static_cast<long long>(profile.collected - world::default_now), profile.app_count,
                profile.policy ? std::to_string(*profile.policy).c_str() : "none");
    for (size_t day = 0; day < 7; ++day)
        text += text_of(" %zu:%d", day, profile.weekdays[day]);
    text += "\n";
    for (const app_t &app : profile.apps)
        text += render_app(app, rule_for(state, profile, app.id));
    return text;
}

std::string render_policy(state_t &state, const policy_t &policy) {
    std::string text =
        text_of("policy %d: profile %s, count %d, rules", policy.id,
                policy.profile ? std::to_string(*policy.profile).c_str() : "none", policy.count);
    for (const rule_t &rule : policy.rules) {
        profile_t *profile = policy.profile ? find_profile(state, *policy.profile) : nullptr;
        const bool is_used = profile && find_app(profile->apps, rule.app);
        text +=
            text_of(" %d/%d/%d%s", rule.app, rule.action, rule.limit, is_used ? "" : " (unused)");
    }
    return text + "\n";
}

template <typename List, typename Matches>
auto first(List &list, Matches matches) {
    const auto found = std::find_if(list.begin(), list.end(), matches);
    return found == list.end() ? nullptr : &*found;
}

} // namespace

std::string render(const state_t &state) {
    state_t copy = state;
    std::string text;
    for (const profile_t &profile : copy.profiles)
        text += render_profile(copy, profile);
    for (const policy_t &policy : copy.policies)
        text += render_policy(copy, policy);
    text += text_of("router: apps %zu, collected %+lld\n", copy.router.size(),
                    static_cast<long long>(copy.router_collected - world::default_now));
    for (const app_t &app : copy.router)
        text += render_app(app, nullptr);
    return text;
}

profile_t *find_profile(state_t &state, int32_t id) {
    return first(state.profiles, [id](const profile_t &profile) { return profile.id == id; });
}

policy_t *find_policy(state_t &state, int32_t id) {
    return first(state.policies, [id](const policy_t &policy) { return policy.id == id; });
}

app_t *find_app(std::vector<app_t> &apps, int32_t id) {
    return first(apps, [id](const app_t &app) { return app.id == id; });
}

rule_t *find_rule(policy_t &policy, int32_t app) {
    return first(policy.rules, [app](const rule_t &rule) { return rule.app == app; });
}

rule_t *rule_for(state_t &state, const profile_t &profile, int32_t app) {
    return profile.policy ? find_rule(*find_policy(state, *profile.policy), app) : nullptr;
}

void log(state_t &state, const char *format, ...) {
    if (!state.debug)
        return;
    va_list arguments;
    va_start(arguments, format);
    state.trace += "log " + format_of(format, arguments) + "\n";
    va_end(arguments);
}

void log_always(state_t &state, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    state.trace += "log " + format_of(format, arguments) + "\n";
    va_end(arguments);
}

void guard(state_t &state, bool on) {
    run(state, on ? "lcsh apg on" : "lcsh apg off", nullptr);
}

void block_app(state_t &state, const std::string &device, int32_t app) {
    run(state, text_of("lcsh apg acl set %s %d 0 18", device.c_str(), app), "");
}

void unblock_app(state_t &state, const std::string &device, int32_t app) {
    run(state, text_of("lcsh apg acl del %s %d 0", device.c_str(), app), " != 0");
}

void reset_device(state_t &state, const std::string &device) {
    run(state, "lcsh apg acl reset " + device, " != 0");
}

void block_app(state_t &state, const profile_t &profile, int32_t app) {
    for (const std::string &device : profile.devices)
        block_app(state, device, app);
}

void unblock_app(state_t &state, const profile_t &profile, int32_t app) {
    for (const std::string &device : profile.devices)
        unblock_app(state, device, app);
}

void reset_devices(state_t &state, const profile_t &profile) {
    for (const std::string &device : profile.devices)
        reset_device(state, device);
}

int status_of(const std::string &line) {
    return line.find(":0C") != std::string::npos ? 256 : 0;
}

void announce(state_t &state, const profile_t &profile, bool block) {
    const char *what = block ? "block" : "unblock";
    state.trace += text_of("event %s profile %d\n", what, profile.id);
    log(state, "send event: %s profile %d to use network", what, profile.id);
}

answer_t ask(state_t &state, const std::string &line) {
    answer_t answer;
    if (!state.answers.empty()) {
        answer = state.answers.front();
        state.answers.erase(state.answers.begin());
    }
    state.trace += (answer.fails ? "query failed " : "query ") + line + "\n";
    return answer;
}

int32_t saturated(int64_t value) {
    using limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, limits::min(), limits::max()));
}

tm date_of(time_t instant) {
    tm date = {};
    localtime_r(&instant, &date);
    return date;
}

int32_t minutes_of_days(const app_t &app, int first, int last) {
    int64_t sum = 0;
    const int days = static_cast<int>(app.finished_days.size());
    for (int days_ago = first; days_ago <= last && days_ago <= days; ++days_ago)
        sum += app.finished_days[static_cast<size_t>(days - days_ago)];
    return saturated(sum);
}

} // namespace model
