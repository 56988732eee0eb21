#include "tests/model/rules.h"

#include <algorithm>

namespace model {

namespace {

std::vector<filed_app_t> filed(const std::vector<app_t> &apps) {
    std::vector<filed_app_t> all;
    for (const app_t &app : apps)
        all.push_back({app, "", 30});
    return all;
}

document_t document_of(state_t &state) {
    document_t document;
    for (const profile_t &profile : state.profiles) {
        filed_profile_t entry = {profile, filed(profile.apps), {}, ""};
        if (profile.policy)
            entry.policy = *find_policy(state, *profile.policy);
        document.profiles.push_back(entry);
    }
    document.written = static_cast<int32_t>(state.now);
    document.router = filed(state.router);
    return document;
}

bool can_be_written(const state_t &state, const std::string &path) {
    const std::vector<std::string> &paths = file_paths();
    return std::count(paths.begin(), paths.end(), path) > 0 &&
           (path != own_path || state.has_folder);
}

/// Days as the calendar counts them here: every year has 97/400 of a leap day, the ones begun in
/// January and February wait for March, and only whole ones count.
int64_t day_number(const tm &date) {
    constexpr int month_lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int64_t year = date.tm_year + 1900;
    int64_t number = year * 365 + date.tm_mday;
    for (int month = 0; month < date.tm_mon; ++month)
        number += month_lengths[month];
    return number + (date.tm_mon < 2 ? year - 1 : year) * 97 / 400;
}

/// What has passed since a file was written.
struct age_t {
    int64_t days = 0; ///< below 0 for a file from the future
    enum { nothing, day, week, month } widest = nothing;
};

age_t age_of(const document_t &document, time_t now) {
    age_t age;
    const tm then = date_of(document.lacks == "timestamp" ? now : time_t{document.written});
    const tm today = date_of(now);
    age.days = day_number(today) - day_number(then);
    if (today.tm_year != then.tm_year || today.tm_mon != then.tm_mon)
        age.widest = age_t::month;
    else if (today.tm_wday < then.tm_wday)
        age.widest = age_t::week;
    else if (today.tm_mday != then.tm_mday)
        age.widest = age_t::day;
    return age;
}

/// Notes what an import has come across.
void note(state_t &state, const document_t &document, const age_t &age) {
    const char *const names[] = {"on the same day", "after a day", "after a week", "after a month"};
    state.met.insert(names[age.widest]);
    if (age.days >= 7 && age.widest == age_t::day)
        state.met.insert("after days unnoticed");
    if (age.days >= 30)
        state.met.insert("of thirty days");
    if (document.lacks == "timestamp")
        state.met.insert("without a date");
    for (const filed_profile_t &profile : document.profiles) {
        if (find_profile(state, profile.profile.id) == nullptr)
            state.met.insert("of a stranger");
        if (profile.lacks == "app_stat_list" && !profile.apps.empty())
            state.met.insert("without applications");
    }
}

void note(state_t &state, const filed_app_t &filed, const age_t &age) {
    if (filed.lacks.ends_with("_used"))
        state.met.insert("of lost applications");
    if (filed.lacks == "next_day_idx")
        state.met.insert("without an index");
    if (filed.ring_length != 30)
        state.met.insert("with another ring");
    const int64_t index = static_cast<int64_t>(filed.app.finished_days.size() % 30);
    if (filed.lacks.empty() && age.days < 30 && index + age.days > 30)
        state.met.insert("over the ring's end");
}

/// Minutes of a file as they count today.
used_t brought_forward(const used_t &used, const age_t &age) {
    const auto sum = [](int64_t a, int64_t b, int64_t c = 0) { return saturated(a + b + c); };
    switch (age.widest) {
    case age_t::month:
        return {};
    case age_t::week:
        return {0, 0, sum(used.monthly, used.daily, used.weekly)};
    case age_t::day:
        return {0, sum(used.weekly, used.daily), used.monthly};
    default:
        return used;
    }
}

/// The days since the file pass without minutes; the file's own day is one of them.
std::vector<int32_t> days_until_now(const filed_app_t &filed, const age_t &age) {
    if (filed.lacks == "next_day_idx")
        return {};
    std::vector<int32_t> days = filed.app.finished_days;
    if (filed.lacks == "prev_30_days" || filed.ring_length != 30)
        std::fill(days.begin(), days.end(), 0);
    days.insert(days.end(), static_cast<size_t>(age.days), 0);
    if (days.size() >= 60) // nobody asks for the oldest, and the places stay the same
        days.erase(days.begin(), days.end() - static_cast<ptrdiff_t>(30 + days.size() % 30));
    return days;
}

std::vector<app_t> read_apps(state_t &state, const std::vector<filed_app_t> &all,
                             const age_t &age) {
    std::vector<app_t> apps;
    for (const filed_app_t &filed : all) {
        note(state, filed, age);
        if (filed.lacks == "app_id" || filed.lacks.ends_with("_used"))
            continue;
        app_t app;
        app.id = filed.app.id;
        app.used = brought_forward(filed.app.used, age);
        app.finished_days = days_until_now(filed, age);
        apps.push_back(app);
    }
    return apps;
}

/// What a file does not say was never used.
used_t read_used(const filed_profile_t &filed) {
    used_t used = filed.profile.used;
    if (filed.lacks == "daily_used")
        used.daily = 0;
    if (filed.lacks == "weekly_used")
        used.weekly = 0;
    if (filed.lacks == "monthly_used")
        used.monthly = 0;
    return used;
}

/// Whatever the rule's action and the switch say, and no flag remembers it.
void enforce(state_t &state, const profile_t &profile) {
    if (!profile.policy)
        return;
    for (const rule_t &rule : find_policy(state, *profile.policy)->rules) {
        const auto app = std::find_if(profile.apps.begin(), profile.apps.end(),
                                      [&rule](const app_t &one) { return one.id == rule.app; });
        if (app == profile.apps.end() || app->used.daily < rule.limit)
            continue;
        state.met.insert("enforces a rule");
        log(state, "block device to use %d because exceed limit", rule.app);
        block_app(state, profile, rule.app);
    }
}

void import_profile(state_t &state, const filed_profile_t &filed, const age_t &age) {
    if (filed.lacks == "user_profile_id")
        return;
    if (find_profile(state, filed.profile.id) == nullptr) {
        profile_t stranger;
        stranger.id = filed.profile.id;
        stranger.collected = state.now;
        state.profiles.push_back(stranger);
    }
    profile_t &profile = *find_profile(state, filed.profile.id);
    profile.used = brought_forward(read_used(filed), age);
    profile.apps.clear();
    if (filed.lacks != "app_stat_list") {
        profile.apps = read_apps(state, filed.apps, age);
        profile.app_count = static_cast<int32_t>(filed.apps.size());
        enforce(state, profile);
    }
    const bool was_blocked = profile.blocked;
    use_internet(state, profile, 0);
    if (profile.blocked && !was_blocked)
        state.met.insert("blocks a profile");
}

bool read_file(state_t &state, const std::string &path) {
    const auto found = state.files.find(path);
    if (found == state.files.end())
        return false;
    const document_t &document = found->second->document;
    if (document.is_torn || document.lacks == "user_profile_list" ||
        document.lacks == "global_stat")
        return false;
    const age_t age = age_of(document, state.now);
    if (age.days < 0) {
        log_always(state, "Import statistic failed because it is from future");
        return false;
    }
    note(state, document, age);
    for (const filed_profile_t &filed : document.profiles)
        import_profile(state, filed, age);
    state.router = read_apps(state, document.router, age);
    std::reverse(state.router.begin(), state.router.end());
    state.router_collected = state.now;
    state.last_export = state.now;
    return true;
}

bool write_file(state_t &state, const std::string &path) {
    if (path.empty())
        return false;
    state.last_export = state.now; // also of a file that cannot be written
    if (!can_be_written(state, path))
        return false;
    const document_t document = document_of(state);
    state.files[path] = std::make_shared<file_t>(file_t{document, text_of(document)});
    return true;
}

} // namespace

bool export_to(state_t &state, const std::string &path, bool force) {
    if (!state.active && !force)
        return false;
    const bool done = write_file(state, path);
    if (done)
        log(state, "export to %s success", path.c_str());
    else
        log_always(state, "export to %s failed", path.c_str());
    return done;
}

bool import_from(state_t &state, const std::string &path) {
    if (!state.active)
        return false;
    const bool done = read_file(state, path);
    log_always(state, "import from %s %s", path.c_str(), done ? "success" : "failed");
    return done;
}

void check_export(state_t &state) {
    if (state.sysinfo_result != 0)
        log(state, "sysinfo code error = %d", state.sysinfo_result);
    const int64_t uptime = state.sysinfo_result == 0 ? state.uptime : 0;
    // The interval in seconds is a number of 32 bits; no router is up for less than none.
    const int64_t seconds = static_cast<int32_t>(int64_t{state.export_interval} * 60);
    const bool is_time = state.now - state.last_export > seconds;
    const bool is_up = seconds >= 0 && uptime >= seconds;
    if (state.active && is_up && !is_time)
        state.met.insert("before its time");
    if (state.active && is_time && !is_up)
        state.met.insert("too early after boot");
    if (state.active && is_time && is_up && seconds != int64_t{state.export_interval} * 60)
        state.met.insert("with another interval");
    if (is_time && is_up)
        export_to(state, own_path);
}

} // namespace model
