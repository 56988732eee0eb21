#include "tests/model/daemon.h"

#include "tests/lib/exchange.h"
#include "tests/lib/world.h"
#include "tests/model/rules.h"

#include "core/debug_log.h"
#include "persist/export_schedule.h"
#include "store/policies.h"
#include "store/profiles.h"
#include "usage/collector.h"
#include "usage/top_apps.h"

namespace model {

namespace {

/// The programs' texts in turn. Those that cannot be started print nothing and are not asked.
void prepare_programs(const std::vector<answer_t> &answers) {
    std::vector<std::string> texts;
    int first_failure = 0;
    for (size_t i = 0; i < answers.size(); ++i) {
        if (answers[i].fails && first_failure == 0)
            first_failure = static_cast<int>(i) + 1;
        else
            texts.push_back(answers[i].text);
    }
    world::on_popen([texts, next = size_t{0}](const std::string &) mutable {
        return next < texts.size() ? texts[next++] : std::string();
    });
    world::fail_popen(first_failure);
}

} // namespace

void keep_one_failure(std::vector<answer_t> *answers) {
    bool has_failed = false;
    for (answer_t &answer : *answers) {
        answer.fails = answer.fails && !has_failed;
        has_failed = has_failed || answer.fails;
    }
}

void set_last_export(time_t instant) {
    last_export_statistics_ts = instant;
}

void restart_daemon(time_t now) {
    utm_app_flush_profiles();
    utm_app_reset_top_apps();
    if (utm_app_debug_set(0) != 0 || utm_app_set_export_interval(30) != 0)
        abort();
    world::set_active(false);
    set_last_export(now);
    const mutex_guard lock(utm_app_config_mutex);
    for (config_app_policy_t &policy : all_policies())
        utm_app_destroy_policy(&policy);
    utm_app_store_init(now);
}

std::string carry_out(const operation_t &operation) {
    prepare_programs(operation.answers);
    world::set_now(operation.now);
    world::set_uptime(operation.uptime);
    world::fail_sysinfo(operation.sysinfo_result);
    change_disk(operation.change);
    if (operation.kind == kind_t::restart)
        restart_daemon(operation.now);
    if (operation.kind == kind_t::command)
        return world::describe(static_cast<uint8_t>(operation.request[0]),
                               world::exchange_bytes(operation.request));
    if (operation.kind == kind_t::tick) {
        // The tick ignores its collectors' results; so does the model.
        [[maybe_unused]] const int32_t ignored[] = {utm_app_update_app_status(),
                                                    utm_app_update_global_app_status()};
        utm_app_export_check();
    }
    return "";
}

std::string predict_replies(state_t &state, const operation_t &operation) {
    state.trace.clear();
    state.answers = operation.answers;
    state.now = operation.now;
    state.uptime = operation.uptime;
    state.sysinfo_result = operation.sysinfo_result;
    change(state, operation.change);
    if (operation.kind == kind_t::restart)
        restart(state);
    if (operation.kind == kind_t::command)
        return serve(state, operation.request);
    if (operation.kind == kind_t::tick)
        tick(state);
    return "";
}

state_t state_at_start() {
    state_t state;
    state.now = state.router_collected = state.last_export = world::default_now;
    return state;
}

} // namespace model
