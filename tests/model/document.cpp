#include "tests/model/rules.h"

#include <functional>

namespace model {

namespace {

/// An object's members, but the one that was taken out.
class members_t {
public:
    explicit members_t(const std::string &lacks) : lacks_(lacks) {}
    members_t &add(const std::string &key, const std::string &value) {
        if (key != lacks_)
            text_ += (text_.empty() ? "\"" : ",\"") + key + "\":" + value;
        return *this;
    }
    members_t &add(const std::string &key, int32_t value) {
        return add(key, std::to_string(value));
    }
    members_t &add(const used_t &used) {
        return add("daily_used", used.daily)
            .add("weekly_used", used.weekly)
            .add("monthly_used", used.monthly);
    }
    std::string text() const { return "{" + text_ + "}"; }

private:
    std::string lacks_;
    std::string text_;
};

template <typename Values, typename Write>
std::string list_of(const Values &values, Write write) {
    std::string text;
    for (const auto &value : values)
        text += (text.empty() ? "" : ",") + write(value);
    return "[" + text + "]";
}

/// Day number n stands at place n modulo 30, until day n + 30 comes.
std::vector<int32_t> places_of(const std::vector<int32_t> &days, size_t length) {
    std::vector<int32_t> places(30, 0);
    for (size_t day = 0; day < days.size(); ++day)
        places[day % 30] = days[day];
    places.resize(length, 7);
    return places;
}

std::string text_of_app(const filed_app_t &filed) {
    const std::vector<int32_t> &days = filed.app.finished_days;
    const auto number = [](int32_t value) { return std::to_string(value); };
    return members_t(filed.lacks)
        .add("app_id", filed.app.id)
        .add(filed.app.used)
        .add("next_day_idx", static_cast<int32_t>(days.size() % 30))
        .add("prev_30_days", list_of(places_of(days, filed.ring_length), number))
        .text();
}

std::string text_of_rule(const rule_t &rule) {
    return members_t("")
        .add("app_id", rule.app)
        .add("action", rule.action)
        .add("daily_limit", rule.limit)
        .text();
}

std::string text_of_policy(const policy_t &policy) {
    return members_t("")
        .add("app_policy_id", policy.id)
        .add("app_list", list_of(policy.rules, text_of_rule))
        .text();
}

std::string text_of_profile(const filed_profile_t &filed) {
    const profile_t &profile = filed.profile;
    const char *const days[] = {"mon", "tues", "wed", "thur", "fri", "sat", "sun"};
    members_t members(filed.lacks);
    members.add("user_profile_id", profile.id);
    for (size_t day = 0; day < 7; ++day)
        members.add(days[day], profile.weekdays[day]);
    members.add("daily_extend", profile.extend)
        .add(profile.used)
        .add("blocked", profile.blocked ? 1 : 0)
        .add("app_stat_list", list_of(filed.apps, text_of_app))
        .add("device_list",
             list_of(profile.devices, [](const std::string &mac) { return "\"" + mac + "\""; }));
    if (filed.policy)
        members.add("app_policy", text_of_policy(*filed.policy));
    return members.text();
}

} // namespace

std::string text_of(const document_t &document) {
    const std::string text =
        members_t(document.lacks)
            .add("user_profile_list", list_of(document.profiles, text_of_profile))
            .add("timestamp", document.written)
            .add("global_stat", list_of(document.router, text_of_app))
            .text();
    return document.is_torn ? text.substr(0, text.size() / 2) : text;
}

} // namespace model
