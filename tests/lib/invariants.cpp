#include "tests/lib/invariants.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

/// More records than any test makes: a longer list runs in a circle past its head.
constexpr size_t longest_list = 10'000'000;

/// The first thing that was found not to hold.
class findings_t {
public:
    /// Names where the next checks look.
    void at(const char *what, int64_t id) {
        what_ = what;
        id_ = id;
    }
    void check(bool holds, const char *otherwise) {
        if (!holds && first_.empty())
            first_ = std::string(what_) + " " + std::to_string(id_) + ": " + otherwise;
    }
    bool are_none() const { return first_.empty(); }
    const std::string &first() const { return first_; }

private:
    const char *what_ = "";
    int64_t id_ = 0;
    std::string first_;
};

bool is_flag(int32_t value) {
    return value == 0 || value == 1;
}

bool is_daily_limit(int32_t minutes) {
    return minutes >= 1 && minutes <= minutes_per_day;
}

/// @return whether a list is a ring both ways; nothing may walk it otherwise
bool is_whole(const config_list_node_t &head) {
    const config_list_node_t *node = &head;
    for (size_t length = 0; length < longest_list; ++length) {
        if (node->next == nullptr || node->next->prev != node)
            return false;
        node = node->next;
        if (node == &head)
            return true;
    }
    return false;
}

template <typename Record, typename Key>
bool are_unique(list_range<Record> records, Key key) {
    std::vector<decltype(key(*records.begin()))> keys;
    for (const Record &record : records)
        keys.push_back(key(record));
    std::sort(keys.begin(), keys.end());
    return std::adjacent_find(keys.begin(), keys.end()) == keys.end();
}

template <typename Record>
int64_t length_of(list_range<Record> records) {
    int64_t length = 0;
    for ([[maybe_unused]] const Record &record : records)
        ++length;
    return length;
}

template <typename Record>
bool contains(list_range<Record> records, const Record *wanted) {
    for (const Record &record : records)
        if (&record == wanted)
            return true;
    return false;
}

// ---- Profiles ------------------------------------------------------------------------------

void check_weekdays(config_user_profile_t *profile, memory_t memory,
                    findings_t *findings) UTM_STORE_LOCKED {
    int32_t before = -1;
    for (const config_weekday_limit_t &entry : weekdays_of(profile)) {
        findings->check(entry.day > before && entry.day < days_per_week,
                        "its weekdays are not in order");
        findings->check(is_daily_limit(entry.limit), "a weekday's limit is out of bounds");
        before = entry.day;
    }
    if (memory == memory_t::enough)
        findings->check(length_of(weekdays_of(profile)) == days_per_week, "a weekday is missing");
}

/// @return the string that a profile's devices give
std::string digits_of_devices(config_user_profile_t *profile) UTM_STORE_LOCKED {
    std::string text;
    for (const config_device_t &device : devices_of(profile))
        text += std::string(mac_digits(device.mac).text) + " ";
    return text;
}

/// @return whether a text is addresses and blanks, as it goes onto a command line
bool is_device_list_string(const std::string &text) {
    constexpr size_t piece = 2 * mac_bytes + 1;
    if (text.empty() || text.size() % piece != 0)
        return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (i % piece == piece - 1 ? text[i] != ' '
                                   : strchr("0123456789ABCDEF", text[i]) == nullptr)
            return false;
    return true;
}

void check_devices(config_user_profile_t *profile, memory_t memory,
                   findings_t *findings) UTM_STORE_LOCKED {
    findings->check(profile->device_count == length_of(devices_of(profile)),
                    "its device count is wrong");
    const auto mac_of = [](const config_device_t &device) {
        std::array<uint8_t, mac_bytes> mac;
        memcpy(mac.data(), device.mac, mac.size());
        return mac;
    };
    findings->check(are_unique(devices_of(profile), mac_of), "it holds a device twice");
    const char *text = profile->device_list_string;
    findings->check(text == nullptr || is_device_list_string(text),
                    "its device list string is malformed");
    // The text of a profile that has lost its last device stays; nobody reads it.
    if (memory == memory_t::enough && profile->device_count > 0)
        findings->check(text != nullptr && text == digits_of_devices(profile),
                        "its device list string is not that of its devices");
}

void check_apps(config_user_profile_t *profile, findings_t *findings) UTM_STORE_LOCKED {
    // An import counts the elements that it could not read too.
    findings->check(profile->app_count >= length_of(apps_of(profile)),
                    "its application count is too low");
    for (const config_app_usage_t &usage : apps_of(profile)) {
        findings->check(is_flag(usage.blocked), "an application's flag is neither 0 nor 1");
        findings->check(usage.next_day_idx >= 0 && usage.next_day_idx < day_ring_days,
                        "an application's next day is outside its ring");
        if (usage.policy_app == nullptr)
            continue;
        const bool is_rule_of_its_policy =
            profile->app_policy != nullptr &&
            contains(rules_of(profile->app_policy), usage.policy_app);
        findings->check(is_rule_of_its_policy,
                        "an application points at a rule of no policy of it");
        findings->check(!is_rule_of_its_policy || usage.policy_app->app_usage == &usage,
                        "an application points at a rule that does not point back");
        findings->check(!is_rule_of_its_policy || usage.policy_app->app_id == usage.app_id,
                        "an application points at a rule for another one");
    }
}

void check_profile(config_user_profile_t *profile, memory_t memory,
                   findings_t *findings) UTM_STORE_LOCKED {
    findings->at("profile", profile->user_profile_id);
    findings->check(is_whole(profile->weekday_list), "its list of weekdays is broken");
    findings->check(is_whole(profile->device_list), "its list of devices is broken");
    findings->check(is_whole(profile->app_stat_list), "its list of applications is broken");
    const bool has_whole_policy =
        profile->app_policy == nullptr ||
        (contains(all_policies(), profile->app_policy) && profile->app_policy->profile == profile);
    findings->check(has_whole_policy, "its policy is none, or another profile's");
    if (!findings->are_none())
        return;
    findings->check(is_flag(profile->daily_limit_enable), "its enable flag is neither 0 nor 1");
    findings->check(is_flag(profile->blocked), "its blocked flag is neither 0 nor 1");
    findings->check(is_daily_limit(profile->daily_limit), "its limit is out of bounds");
    findings->check(profile->daily_extend >= 0, "its bonus is below 0");
    check_weekdays(profile, memory, findings);
    check_devices(profile, memory, findings);
    check_apps(profile, findings);
}

// ---- Policies ------------------------------------------------------------------------------

void check_rule(config_app_policy_t *policy, const config_policy_app_t &rule,
                findings_t *findings) UTM_STORE_LOCKED {
    findings->check(rule.action == POLICY_ACTION_LIMIT || rule.action == POLICY_ACTION_BLOCK,
                    "a rule's action is neither to limit nor to block");
    // Of several records of one application the first one counts.
    config_app_usage_t *usage =
        policy->profile == nullptr
            ? nullptr
            : utm_app_find_app_usage(&policy->profile->app_stat_list, rule.app_id);
    findings->check(rule.app_usage == usage, "a rule points at another record than its own");
    findings->check(usage == nullptr || usage->policy_app == &rule,
                    "a rule's record does not point back");
}

void check_policy(config_app_policy_t *policy, findings_t *findings) UTM_STORE_LOCKED {
    findings->at("policy", policy->app_policy_id);
    findings->check(policy->app_policy_id >= 1, "its id is below 1");
    findings->check(is_whole(policy->app_list), "its list of rules is broken");
    const bool has_whole_profile =
        policy->profile == nullptr ||
        (contains(all_profiles(), policy->profile) && policy->profile->app_policy == policy);
    findings->check(has_whole_profile, "its profile is none, or has another policy");
    if (!findings->are_none())
        return;
    // Deleting a policy's rules leaves its count.
    findings->check(policy->app_count >= length_of(rules_of(policy)), "its rule count is too low");
    findings->check(
        are_unique(rules_of(policy), [](const config_policy_app_t &rule) { return rule.app_id; }),
        "it has two rules for an application");
    for (const config_policy_app_t &rule : rules_of(policy))
        check_rule(policy, rule, findings);
}

// ---- The router ----------------------------------------------------------------------------

void check_router(findings_t *findings) UTM_STORE_LOCKED {
    findings->at("router", 0);
    findings->check(utm_app_config_global_app_stat_list_count == length_of(global_apps()),
                    "its application count is wrong");
    for (const config_app_usage_t &usage : global_apps()) {
        findings->check(usage.blocked == 0, "an application is blocked");
        findings->check(usage.policy_app == nullptr, "an application points at a rule");
        findings->check(usage.next_day_idx >= 0 && usage.next_day_idx < day_ring_days,
                        "an application's next day is outside its ring");
    }
}

void check_lists(findings_t *findings) UTM_STORE_LOCKED {
    findings->at("store", 0);
    findings->check(is_flag(activate), "the feature switch is neither 0 nor 1");
    findings->check(is_whole(utm_app_config_user_profile_list), "the list of profiles is broken");
    findings->check(is_whole(utm_app_config_app_policy_list), "the list of policies is broken");
    findings->check(is_whole(utm_app_config_global_app_stat_list),
                    "the list of the router's applications is broken");
    if (!findings->are_none())
        return;
    findings->check(
        are_unique(all_profiles(),
                   [](const config_user_profile_t &profile) { return profile.user_profile_id; }),
        "two profiles have one id");
    findings->check(
        are_unique(all_policies(),
                   [](const config_app_policy_t &policy) { return policy.app_policy_id; }),
        "two policies have one id");
}

} // namespace

std::string check_store_invariants(memory_t memory) {
    const mutex_guard lock(utm_app_config_mutex);
    findings_t findings;
    check_lists(&findings);
    if (!findings.are_none())
        return findings.first();
    for (config_user_profile_t &profile : all_profiles())
        check_profile(&profile, memory, &findings);
    // Rules point into the lists of profiles: those must be whole first.
    if (!findings.are_none())
        return findings.first();
    for (config_app_policy_t &policy : all_policies())
        check_policy(&policy, &findings);
    check_router(&findings);
    return findings.first();
}
