#include "tests/model/rules.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace model {

namespace {

/// A request's bytes, read at the documented places.
struct request_t {
    const std::string &bytes;

    uint8_t type() const { return static_cast<uint8_t>(bytes[0]); }
    /// The n-th 32-bit argument.
    int32_t argument(size_t n) const { return read<int32_t>(8 + 4 * n); }
    std::string mac() const {
        char text[18];
        const auto byte = [&](size_t i) { return static_cast<unsigned>(read<uint8_t>(12 + i)); };
        snprintf(text, sizeof(text), "%02X:%02X:%02X:%02X:%02X:%02X", byte(0), byte(1), byte(2),
                 byte(3), byte(4), byte(5));
        return text;
    }
    rule_t rule(size_t n) const {
        const size_t at = 16 + 8 * n;
        return {read<int32_t>(at), read<uint16_t>(at + 4), read<uint16_t>(at + 6)};
    }
    std::string path() const { return bytes.substr(8, strnlen(bytes.data() + 8, 128)); }

private:
    template <typename T>
    T read(size_t at) const {
        T value = {};
        memcpy(&value, bytes.data() + at, sizeof(value));
        return value;
    }
};

std::string status(bool done) {
    return done ? "ok\n" : "fail\n";
}

/// A reply with fields: "ok daily 1 weekly 2", or "fail".
std::string fields(bool done, const std::string &text) {
    return done ? "ok " + text + "\n" : "fail\n";
}

std::string number(int64_t value) {
    return std::to_string(value);
}

std::string weekdays(const profile_t *profile) {
    if (profile == nullptr)
        return status(false);
    std::string text;
    for (size_t day = 0; day < 7; ++day)
        text +=
            "data day " + std::to_string(day) + " limit " + number(profile->weekdays[day]) + "\n";
    return text + status(true);
}

std::string counters(state_t &state, int32_t id) {
    const profile_t *profile = find_profile(state, id);
    if (profile == nullptr) {
        log(state, "Get usage for profile %d failed because profile is not existed", id);
        return status(false);
    }
    return fields(true, "daily " + number(profile->used.daily) + " weekly " +
                            number(profile->used.weekly) + " monthly " +
                            number(profile->used.monthly));
}

std::string extend(state_t &state, int32_t id) {
    const profile_t *profile = find_profile(state, id);
    if (profile == nullptr)
        log(state, "Get extended for profile %d failed because profile is not existed", id);
    return fields(profile != nullptr, "extend " + number(profile ? profile->extend : 0));
}

bool is_period(int32_t period) {
    return (period >= 0 && period <= 30) || (period >= 1000 && period <= 1003) || period == 2000;
}

int32_t minutes_in(const app_t &app, int32_t period, int weekday) {
    if (period == 0)
        return app.used.daily;
    if (period <= 30)
        return minutes_of_days(app, period, period);
    const int64_t this_week = int64_t{app.used.weekly} + app.used.daily;
    if (period == 1000)
        return saturated(this_week);
    if (period == 2000)
        return saturated(this_week + app.used.monthly);
    const int weeks_ago = period - 1000;
    return minutes_of_days(app, weekday + 7 * (weeks_ago - 1) + 1, weekday + 7 * weeks_ago);
}

std::string app_usage(state_t &state, int32_t id, int32_t period) {
    const profile_t *profile = find_profile(state, id);
    if (!is_period(period) || profile == nullptr)
        return status(false);
    std::vector<std::pair<int32_t, int32_t>> ranking; // minutes, application
    for (const app_t &app : profile->apps)
        ranking.emplace_back(minutes_in(app, period, date_of(state.now).tm_wday), app.id);
    // A file may have counted applications that could not be read.
    if (ranking.empty())
        ranking.emplace_back(0, 0);
    else
        ranking.resize(static_cast<size_t>(profile->app_count));
    std::stable_sort(ranking.begin(), ranking.end(),
                     [](auto &a, auto &b) { return a.first > b.first; });
    std::string text;
    for (const auto &[minutes, app] : ranking)
        text += "data app " + number(app) + " minutes " + number(minutes) + "\n";
    return text + status(true);
}

std::string prev_days(state_t &state, int32_t id, int32_t mode) {
    const profile_t *profile = find_profile(state, id);
    if (mode < 0 || mode > 1 || profile == nullptr || profile->apps.empty())
        return status(false);
    const int weekday = date_of(state.now).tm_wday;
    std::string text;
    for (const app_t &app : profile->apps) {
        std::vector<int32_t> row = {app.used.daily};
        for (int days_ago = 1; mode == 0 && days_ago <= 30; ++days_ago)
            row.push_back(minutes_of_days(app, days_ago, days_ago));
        if (mode == 1) {
            row[0] = saturated(int64_t{app.used.daily} + minutes_of_days(app, 1, weekday));
            for (const int32_t period : {1001, 1002, 1003})
                row.push_back(minutes_in(app, period, weekday));
        }
        while (!row.empty() && row.back() == 0)
            row.pop_back();
        text += "data app " + number(app.id) + " minutes";
        for (const int32_t minutes : row)
            text += " " + number(minutes);
        text += "\n";
    }
    return text + status(true);
}

bool switch_debug(state_t &state, int32_t value) {
    if (value != 0 && value != 1)
        return false;
    state.debug = value == 1;
    return true;
}

std::string switches(const state_t &state) {
    return fields(true, "activate " + number(state.active) + " debug " + number(state.debug));
}

bool set_interval(state_t &state, int32_t minutes) {
    if (minutes < 1)
        return false;
    state.export_interval = minutes;
    return true;
}

bool add_rules(state_t &state, const request_t &request) {
    const int32_t count = request.argument(1);
    if (count < 1 || count > 10)
        return false;
    std::vector<rule_t> rules;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i)
        rules.push_back(request.rule(i));
    return model::add_rules(state, request.argument(0), rules);
}

std::string load_signature(state_t &state, const std::string &path) {
    log(state, "UTM_APP_CONFIG_LOAD_SIGNATURE");
    const std::string line = ("lcsh load " + path).substr(0, 127);
    log(state, "cmd = %s", line.c_str());
    const answer_t answer = ask(state, line);
    if (answer.fails) {
        log(state, "cmd popen :lcsh load app signature fail.");
        return "not loaded in 136 bytes\n";
    }
    return answer.text.find("loaded") != std::string::npos ? "ok\n" : "not loaded\n";
}

} // namespace

std::string serve(state_t &state, const std::string &bytes) {
    const request_t request = {bytes};
    const int32_t id = request.argument(0);
    const int32_t second = request.argument(1);
    log(state, "[socket] Receive cmd type=%d", request.type());
    profile_t *profile = find_profile(state, id);
    const bool is_known = profile != nullptr;
    const std::map<int, std::function<std::string()>> replies = {
        {0, [&] { return status(true); }},
        {1, [&] { return status(create_profile(state, id)); }},
        {2, [&] { return status(delete_profile(state, id)); }},
        {3, [&] { return status(add_device(state, id, request.mac())); }},
        {4, [&] { return status(delete_device(state, id, request.mac())); }},
        {26, [&] { return status(enable_limit(state, id, request.argument(2))); }},
        {27, [&] { return fields(is_known, "enabled " + number(is_known && profile->enabled)); }},
        {28, [&] { return status(set_limit(state, id, request.argument(3))); }},
        {29, [&] { return fields(is_known, "limit " + number(is_known ? profile->limit : 0)); }},
        {30, [&] { return status(set_weekday_limit(state, id, second, request.argument(3))); }},
        {31, [&] { return weekdays(profile); }},
        {32, [&] { return status(add_extend(state, id, request.argument(4))); }},
        {33, [&] { return extend(state, id); }},
        {34, [&] { return status(reset_extend(state, id)); }},
        {35, [&] { return counters(state, id); }},
        {36, [&] { return app_usage(state, id, second); }},
        {37, [&] { return prev_days(state, id, second); }},
        {39, [&] { return status(switch_feature(state, id)); }},
        {41, [&] { return status(switch_debug(state, id)); }},
        {42, [&] { return fields(create_policy(state, id), "policy " + number(id)); }},
        {43, [&] { return status(add_rules(state, request)); }},
        {44, [&] { return status(delete_rules(state, id)); }},
        {45, [&] { return status(bind_policy(state, id, second)); }},
        {46, [&] { return load_signature(state, request.path()); }},
        {47, [&] { return switches(state); }},
        {48, [&] { return fields(true, "interval " + number(state.export_interval)); }},
        {49, [&] { return status(set_interval(state, id)); }},
        {50, [&] { return status(import_from(state, request.path())); }},
        {51, [&] { return status(export_to(state, request.path())); }},
    };
    const auto reply = replies.find(request.type());
    return reply == replies.end() ? "no reply\n" : reply->second();
}

} // namespace model
