#include "sim/router/usage.h"

#include "sim/router/router_dir.h"

#include <algorithm>

namespace {

using spans = std::vector<scenario_span>;

bool has_device(const usage_query &query, const scenario_device &device) {
    return query.router_wide ||
           std::find(query.macs.begin(), query.macs.end(), device.mac) != query.macs.end();
}

bool is_blocked(const scenario &scene, const scenario_use &use) {
    const scenario_device &device = scene.devices[use.device];
    if (sim_router_holds(sim_blocked_fact(scene.people[device.person].profile_id).name))
        return true;
    return use.app != scenario_use::NO_APP && sim_router_holds(SIM_GUARD_FACT) &&
           sim_router_holds(sim_rule_fact(device.mac.c_str(), scene.apps[use.app].id).name);
}

/// Counts overlapping spans once.
int64_t minutes_of(spans list) {
    std::sort(list.begin(), list.end(),
              [](const scenario_span &a, const scenario_span &b) { return a.from < b.from; });
    int64_t minutes = 0;
    for (size_t i = 0; i < list.size();) {
        scenario_span joined = list[i];
        for (++i; i < list.size() && list[i].from <= joined.to; ++i)
            joined.to = std::max(joined.to, list[i].to);
        minutes += whole_minutes(joined);
    }
    return minutes;
}

/// @return the uses within the query that are not blocked, cut to the query's span
std::vector<scenario_use> uses_in(const scenario &scene, const usage_query &query) {
    std::vector<scenario_use> found;
    for (scenario_use use : scene.uses) {
        use.span.from = std::max(use.span.from, query.span.from);
        use.span.to = std::min(use.span.to, query.span.to);
        if (use.span.from < use.span.to && has_device(query, scene.devices[use.device]) &&
            !is_blocked(scene, use))
            found.push_back(use);
    }
    return found;
}

int64_t app_minutes(const scenario &scene, const std::vector<scenario_use> &uses, size_t app) {
    int64_t minutes = 0;
    for (size_t device = 0; device < scene.devices.size(); ++device) {
        spans on_device;
        for (const scenario_use &use : uses)
            if (use.app == app && use.device == device)
                on_device.push_back(use.span);
        minutes += minutes_of(on_device);
    }
    return minutes;
}

} // namespace

int64_t whole_minutes(const scenario_span &span) {
    auto mark = [](int64_t second) { return second / 60 - (second % 60 < 0 ? 1 : 0); };
    return mark(span.to) - mark(span.from);
}

std::vector<usage_element> usage_of(const scenario &scene, const usage_query &query) {
    std::vector<usage_element> elements;
    const std::vector<scenario_use> uses = uses_in(scene, query);
    for (size_t app = 0; app < scene.apps.size(); ++app)
        if (int64_t minutes = app_minutes(scene, uses, app))
            elements.push_back({"APP", scene.apps[app].id, minutes});
    spans online;
    for (const scenario_use &use : uses)
        online.push_back(use.span);
    if (int64_t minutes = minutes_of(online))
        elements.push_back({"INTERNET", 0, minutes});
    return elements;
}
