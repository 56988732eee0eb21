#include "tests/model/apply_machine.h"

#include "core/mac.h"
#include "store/store.h"

#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <optional>

namespace model {

namespace {

/// What an `apply` that is cut short says belongs to nobody: hundreds are.
class silence_t {
public:
    silence_t() : before_(dup(STDERR_FILENO)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    ~silence_t() {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }
    silence_t(const silence_t &) = delete;
    silence_t &operator=(const silence_t &) = delete;

private:
    int before_;
};

} // namespace

ctl_apply_wish wish_to(bool repair, bool prune, const char *usage) {
    return {.dry_run = false,
            .repair = repair,
            .prune = prune,
            .usage_path = usage,
            .state_path = state_folder.c_str(),
            .timeout_s = 30};
}

void machine_t::meet(const wanted_t &wanted) {
    for (const auto &[id, person] : wanted.people) {
        people_.insert(id);
        devices_.insert(person.devices.begin(), person.devices.end());
    }
    const mutex_guard lock(utm_app_config_mutex);
    for (config_user_profile_t &profile : all_profiles()) {
        people_.insert(profile.user_profile_id);
        for (const config_device_t &device : devices_of(&profile))
            devices_.insert(mac_text(device.mac).text);
    }
}

void machine_t::forget_unknown(const wanted_t &wanted) {
    meet(wanted);
    std::erase_if(engine_.blocked,
                  [this](const auto &rule) { return !devices_.contains(rule.first); });
    std::erase_if(engine_.cut_off,
                  [this](const auto &profile) { return !people_.contains(profile.first); });
}

ctl_exit machine_t::take(const std::string &answer, std::span<utm_app_config_reply> replies,
                         size_t *count) {
    *count = 0;
    utm_app_config_reply reply = {};
    for (size_t at = 0; at + sizeof(reply) <= answer.size(); at += sizeof(reply)) {
        memcpy(&reply, answer.data() + at, sizeof(reply));
        const bool ends_list = at > 0 && reply.status != UTM_APP_CONFIG_STATUS_DATA;
        if (!ends_list && *count < replies.size())
            replies[(*count)++] = reply;
    }
    if (answer.empty())
        return CTL_BROKEN;
    return reply.status == UTM_APP_CONFIG_STATUS_OK ? CTL_DONE : CTL_REFUSED;
}

ctl_exit machine_t::ask(void *context, const utm_app_config_cmd &request,
                        std::span<utm_app_config_reply> replies, size_t *count) {
    machine_t &machine = *static_cast<machine_t *>(context);
    const bool is_cut = machine.requests_ >= machine.cut_.after;
    const bool is_lost =
        is_cut && (machine.requests_ > machine.cut_.after || !machine.cut_.loses_answer);
    ++machine.requests_;
    if (is_lost)
        return CTL_NO_DAEMON;
    const std::string answer = world::exchange_bytes(sim_bytes(request));
    machine.hear();
    const ctl_exit status = machine.take(answer, replies, count);
    return is_cut ? CTL_BROKEN : status;
}

ctl_exit machine_t::apply(const wanted_t &wanted, const ctl_apply_wish &wish, const cut_t &cut) {
    std::optional<silence_t> silence;
    if (cut.after != INT_MAX)
        silence.emplace();
    household_t household = {};
    fill(wanted, &household);
    meet(wanted);
    cut_ = cut;
    requests_ = 0;
    ctl_apply_report report = {};
    const ctl_exit status = ctl_apply_household(household, wish, {this, ask}, &report);
    has_changed_ = !report.deeds.empty();
    if (status == CTL_DONE) {
        people_.clear();
        devices_.clear();
        meet(wanted);
    }
    return status;
}

/// What was counted is saved before, as the daemon does every half hour.
void machine_t::restart(const step_t &step) {
    hear();
    restart_daemon(step.done.now);
    if (step.what == step_t::kill) {
        world::trace();
        statuses_.clear();
    }
    hear();
}

void machine_t::apply(const step_t &step) {
    if (step.cut_after != INT_MAX)
        (void)apply(step.household, wish_to(false, step.prunes), {step.cut_after, false});
    if (step.restores)
        std::ofstream(usage_path) << counted_.usage;
    last_status_ = apply(step.household,
                         wish_to(false, step.prunes, step.restores ? usage_path.c_str() : nullptr));
}

} // namespace model
