/// `apply` against random walks: from whatever state a walk has brought the daemon and the engine
/// to, a household is applied, and both must be as if they had been set up so from the start.

#include "tests/model/apply_household.h"
#include "tests/model/daemon.h"
#include "tests/model/rules.h"

#include "tests/lib/exchange.h"
#include "tests/lib/world.h"

#include "client/apply.h"
#include "core/debug_log.h"
#include "core/mac.h"
#include "store/store.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <unistd.h>

namespace {

using model::kind_t;
using model::operation_t;
using model::wanted_t;

const std::string state_folder = "/tmp/apply_state";
const std::string usage_path = "/tmp/apply_usage.json";

struct step_t {
    enum {
        operation,
        stop,  ///< the daemon is stopped and started
        kill,  ///< it is killed and started: the engine hears nothing of it
        apply, ///< somebody applies a household
    } what = operation;
    operation_t done = {};    ///< of the others, only its time
    bool loses_lines = false; ///< the engine's shell fails meanwhile
    wanted_t household = {};
    bool prunes = false;
    bool restores = false; ///< what was counted before the daemon's end
    int cut_after = INT_MAX;
};

/// When the wire is cut.
struct cut_t {
    int after = INT_MAX;       ///< requests that are answered
    bool loses_answer = false; ///< the next one is carried out, too
};

struct walk_t {
    const char *zone;
    std::vector<step_t> steps;
    wanted_t household; ///< which is applied at the end
    bool prunes;
    cut_t cut;
};

ctl_apply_wish wish_to(bool repair, bool prune, const char *usage = nullptr) {
    return {.dry_run = false,
            .repair = repair,
            .prune = prune,
            .usage_path = usage,
            .state_path = state_folder.c_str(),
            .timeout_s = 30};
}

std::string text_of(const step_t &step) {
    switch (step.what) {
    case step_t::stop:
        return "stop, start at " + std::to_string(step.done.now);
    case step_t::kill:
        return "kill, start at " + std::to_string(step.done.now);
    case step_t::apply:
        return std::string("apply ") + (step.prunes ? "--prune " : "") +
               (step.restores ? "--restore " : "") + json_of(step.household) +
               (step.cut_after == INT_MAX
                    ? ""
                    : "\nand before, cut after " + std::to_string(step.cut_after) + " requests");
    default:
        return step.done.text + (step.loses_lines ? " (the engine fails)" : "");
    }
}

/// Whose last step is an `apply`.
struct peace_t {
    const char *zone;
    std::vector<step_t> steps;
};

std::string text_of(const char *zone, const std::vector<step_t> &steps) {
    std::string text = std::string("zone ") + zone + "\n";
    for (const step_t &step : steps)
        text += text_of(step) + "\n";
    return text;
}

std::string text_of(const peace_t &peace) {
    return text_of(peace.zone, peace.steps);
}

std::string text_of(const walk_t &walk) {
    std::string text = text_of(walk.zone, walk.steps);
    if (walk.cut.after != INT_MAX)
        text += "apply, cut after " + std::to_string(walk.cut.after) + " requests" +
                (walk.cut.loses_answer ? " and an answer" : "") + "\n";
    return text + "apply --repair " + (walk.prunes ? "--prune " : "") + json_of(walk.household) +
           "\n";
}

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

/// A router, its daemon, and a client.
class machine_t {
public:
    explicit machine_t(const char *zone) {
        world::reset();
        world::set_zone(zone);
        world::on_system([this](const std::string &) {
            statuses_.push_back(fails_ ? 256 : 0);
            return statuses_.back();
        });
        if (utm_app_debug_set(0) != 0)
            abort();
        model::set_last_export(world::default_now);
        model::clear_disk();
        std::filesystem::remove_all(state_folder);
    }

    void set_now(time_t now) {
        now_ = now;
        world::set_now(now);
    }
    time_t now() const { return now_; }

    void carry_out(const step_t &step) {
        if (step.what == step_t::stop || step.what == step_t::kill)
            counted_ = model::counted();
        set_now(step.done.now);
        fails_ = step.loses_lines;
        switch (step.what) {
        case step_t::stop:
        case step_t::kill:
            restart(step);
            break;
        case step_t::apply:
            apply(step);
            break;
        case step_t::operation:
            model::carry_out(step.done);
        }
        hear();
        fails_ = false;
    }

    ctl_exit apply(const wanted_t &wanted, const ctl_apply_wish &wish, const cut_t &cut = {});

    void set_up(const wanted_t &wanted, const model::restored_t &restored) {
        model::set_up(
            wanted, restored, [](void *machine) { static_cast<machine_t *>(machine)->hear(); },
            this);
    }

    void hear() {
        engine_.hear(world::trace(), statuses_);
        statuses_.clear();
        if (truncate(debug_log_path, 0) != 0)
            abort();
    }

    const model::engine_t &engine() const { return engine_; }
    /// How many requests the last `apply` has sent.
    int requests() const { return requests_; }
    /// Whether the last `apply` said that it did something.
    bool has_changed() const { return has_changed_; }

    /// How the last step's `apply` ended.
    ctl_exit last_status() const { return last_status_; }
    const model::restored_t &counted_before_the_end() const { return counted_; }

    /// Forgets blocks of what no client can know: what others have given the daemon since the last
    /// `apply`, and the daemon has lost.
    void forget_unknown(const wanted_t &wanted);

private:
    void restart(const step_t &step);
    void apply(const step_t &step);
    void meet(const wanted_t &wanted);
    static ctl_exit ask(void *context, const utm_app_config_cmd &request,
                        std::span<utm_app_config_reply> replies, size_t *count);
    ctl_exit take(const std::string &answer, std::span<utm_app_config_reply> replies,
                  size_t *count);

    model::engine_t engine_;
    time_t now_ = world::default_now;
    std::vector<int> statuses_; ///< of the command lines that the engine has not heard yet
    bool fails_ = false;
    cut_t cut_;
    int requests_ = 0;
    bool has_changed_ = false;
    ctl_exit last_status_ = CTL_DONE;
    model::restored_t counted_; ///< before the daemon's last end
    /// What a client has met: in the daemon or in a household, at the last `apply` that came to
    /// its end and since.
    std::set<std::string> devices_;
    std::set<int32_t> people_;
};

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
    model::fill(wanted, &household);
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
    model::restart_daemon(step.done.now);
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

// ---- What walks are made of ------------------------------------------------------------------

int32_t below(std::mt19937 *random, int32_t bound) {
    return static_cast<int32_t>((*random)() % static_cast<uint32_t>(bound));
}

/// A usage file's time has 32 bits: a daemon that runs longer cannot read what it wrote.
constexpr time_t end_of_time = INT_MAX - 400 * 24 * 3600;

/// @return whether a client may do that in a walk: debug logging is slow, and the model tests it
bool is_of_interest(const operation_t &operation) {
    return operation.kind != kind_t::command || operation.request[0] != 41;
}

step_t random_operation(model::generator_t *generator, model::state_t *state) {
    step_t step;
    do
        step.done = generator->next(*state);
    while (!is_of_interest(step.done));
    model::keep_one_failure(&step.done.answers);
    if (step.done.now > end_of_time)
        step.done.now = state->now;
    model::predict_replies(*state, step.done);
    return step;
}

const char *zone_of(uint32_t seed) {
    constexpr const char *zones[] = {"UTC", "Europe/Berlin", "America/Santiago"};
    return zones[seed % std::size(zones)];
}

walk_t random_walk(uint32_t seed) {
    std::mt19937 random(seed);
    model::generator_t generator(seed);
    model::state_t state = model::state_at_start();
    walk_t walk = {};
    walk.zone = zone_of(seed);
    wanted_t household = model::random_household(&random);
    const int32_t length = 3 + below(&random, 70);
    const bool is_applied_first = below(&random, 4) != 0;
    for (int32_t i = 0; i < length; ++i) {
        const int32_t dice = below(&random, 100);
        step_t step;
        step.done.now = state.now;
        if ((i == 0 && is_applied_first) || dice < 4) {
            household = model::changed_household(household, &random);
            step.what = step_t::apply;
            step.household = household;
        } else if (dice < 8) {
            step.what = step_t::kill;
            step.done.now = state.now += below(&random, 2) * below(&random, 2 * 24 * 3600);
        } else {
            step = random_operation(&generator, &state);
            step.loses_lines = dice < 12;
        }
        walk.steps.push_back(step);
    }
    walk.household = below(&random, 4) == 0 ? model::random_household(&random)
                                            : model::changed_household(household, &random);
    walk.prunes = below(&random, 4) != 0;
    if (below(&random, 2) == 0)
        walk.cut = {below(&random, 80), below(&random, 2) == 0};
    return walk;
}

// ---- What must come out ----------------------------------------------------------------------

std::string difference(const model::view_t &seen, const model::view_t &expected) {
    std::string text;
    for (const std::string &line : seen.lines)
        if (!expected.lines.contains(line))
            text += "  has:   " + line + "\n";
    for (const std::string &line : expected.lines)
        if (!seen.lines.contains(line))
            text += "  lacks: " + line + "\n";
    return text;
}

/// What counts of a household when others are there too.
struct scope_t {
    std::optional<std::set<int32_t>> people;
    std::set<std::string> devices;
    bool flags = true;

    model::view_t view_of(const machine_t &machine) const {
        return model::view_of(machine.engine(), people ? &*people : nullptr, devices, flags);
    }
};

scope_t scope_of(const wanted_t &household, bool prunes) {
    scope_t scope;
    if (prunes)
        return scope;
    scope.people.emplace();
    for (const auto &[id, person] : household.people) {
        scope.people->insert(id);
        scope.devices.insert(person.devices.begin(), person.devices.end());
    }
    return scope;
}

/// @return what is wrong after a walk, or nothing
std::string fault_of(const walk_t &walk) {
    model::view_t seen;
    model::restored_t restored;
    const scope_t scope = scope_of(walk.household, walk.prunes);
    const ctl_apply_wish wish = wish_to(true, walk.prunes);
    time_t now = 0;
    {
        machine_t machine(walk.zone);
        for (const step_t &step : walk.steps)
            machine.carry_out(step);
        now = machine.now();
        restored = model::counted();
        machine.hear();
        machine.forget_unknown(walk.household);
        if (walk.cut.after != INT_MAX)
            (void)machine.apply(walk.household, wish, walk.cut);
        if (machine.apply(walk.household, wish) != CTL_DONE)
            return "the repair fails\n";
        seen = scope.view_of(machine);
        if (machine.apply(walk.household, wish_to(false, walk.prunes)) != CTL_DONE)
            return "the second time fails\n";
        if (machine.has_changed())
            return "the second time says that it did something\n";
        if (const model::view_t again = scope.view_of(machine); again != seen)
            return "the second time makes a difference:\n" + difference(again, seen);
    }
    machine_t fresh(walk.zone);
    fresh.set_now(now);
    fresh.set_up(walk.household, restored);
    return difference(seen, scope.view_of(fresh));
}

/// Takes steps out of a walk as long as it stays wrong.
template <typename Walk>
Walk shortened(Walk walk, std::string (*fault_of)(const Walk &)) {
    for (size_t length = walk.steps.size(); length > 0; length /= 2)
        for (size_t at = 0; at + length <= walk.steps.size();) {
            Walk shorter = walk;
            const auto from = shorter.steps.begin() + static_cast<ptrdiff_t>(at);
            shorter.steps.erase(from, from + static_cast<ptrdiff_t>(length));
            if (fault_of(shorter).empty())
                at += length;
            else
                walk = shorter;
        }
    return walk;
}

/// @return a number of the environment: longer runs have more
uint32_t from_environment(const char *name, uint32_t otherwise) {
    const char *text = getenv(name);
    return text == nullptr ? otherwise : static_cast<uint32_t>(strtoul(text, nullptr, 10));
}

class Apply : public testing::Test {
protected:
    void TearDown() override {
        world::reset();
        model::clear_disk();
        std::filesystem::remove_all(state_folder);
    }
};

// ---- Without a repair ------------------------------------------------------------------------

/// Commands of people who only give time and switch limits off and on.
step_t harmless_command(const wanted_t &household, time_t now, std::mt19937 *random) {
    step_t step;
    step.done.kind = kind_t::command;
    step.done.now = now;
    const int32_t dice = below(random, 4);
    if (dice == 0 || household.people.empty()) {
        const int32_t on = below(random, 2);
        step.done.text = on != 0 ? "on" : "off";
        step.done.request = sim_bytes(world::request(39, {on}));
        return step;
    }
    auto person = household.people.begin();
    std::advance(person, below(random, static_cast<int32_t>(household.people.size())));
    const std::string whose = std::to_string(person->first);
    const int32_t minutes = 1 + below(random, 10);
    if (dice == 1) {
        step.done.text = "bonus for " + whose + " reset";
        step.done.request = sim_bytes(world::request(34, {person->first}));
    } else {
        step.done.text = "bonus for " + whose + ": " + std::to_string(minutes);
        step.done.request = sim_bytes(world::request(32, {person->first, 0, 0, 0, minutes}));
    }
    return step;
}

/// A minute of use.
step_t used_minute(model::generator_t *generator, model::state_t *state) {
    step_t step;
    do
        step.done = generator->next(*state);
    while (step.done.kind != kind_t::tick);
    step.done.now = state->now += 60;
    return step;
}

/// A household changes, is used, and is applied at every change and after every end of the daemon.
/// Nobody else acts but those who give time or switch limits off and on.
peace_t peaceful_walk(uint32_t seed) {
    std::mt19937 random(seed);
    model::generator_t generator(seed);
    model::state_t state = model::state_at_start();
    wanted_t household = model::random_household(&random);
    std::vector<step_t> steps;
    bool is_fresh = false;
    for (int32_t i = 3 + below(&random, 60); i > 0; --i) {
        const int32_t dice = below(&random, 100);
        step_t step;
        step.done.now = state.now;
        if (steps.empty() || is_fresh || dice < 12) {
            household = model::changed_household(household, &random);
            step.what = step_t::apply;
            step.household = household;
            step.prunes = below(&random, 4) != 0;
            step.restores = is_fresh && below(&random, 4) != 0;
            if (!is_fresh && below(&random, 3) == 0)
                step.cut_after = below(&random, 40);
            is_fresh = false;
        } else if (dice < 18) {
            step.what = below(&random, 2) == 0 ? step_t::stop : step_t::kill;
            step.done.now = state.now += below(&random, 2) * below(&random, 2 * 24 * 3600);
            is_fresh = true;
        } else if (dice < 50) {
            step = harmless_command(household, state.now, &random);
        } else {
            if (dice < 56)
                state.now += below(&random, 24 * 3600);
            step = used_minute(&generator, &state);
        }
        steps.push_back(step);
    }
    // Only the last one is looked at.
    while (steps.back().what != step_t::apply)
        steps.pop_back();
    return {zone_of(seed), steps};
}

/// What was counted before the daemon's end, as it counts now.
model::restored_t rolled_forward(model::restored_t restored, time_t then, time_t now) {
    tm before = {};
    tm after = {};
    localtime_r(&then, &before);
    localtime_r(&now, &after);
    if (before.tm_year != after.tm_year || before.tm_yday != after.tm_yday)
        restored.extends.clear();
    return restored;
}

/// Whatever steps were taken out.
bool is_peace(const std::vector<step_t> &steps) {
    const auto ends_daemon = [](const step_t &step) {
        return step.what == step_t::stop || step.what == step_t::kill;
    };
    for (size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].restores && (i == 0 || !ends_daemon(steps[i - 1])))
            return false;
        if (i + 1 < steps.size() && ends_daemon(steps[i]) && steps[i + 1].what != step_t::apply)
            return false;
    }
    return !steps.empty() && steps.back().what == step_t::apply;
}

/// @return what is wrong after the last `apply`, or nothing
std::string fault_of_peace(const peace_t &peace) {
    if (!is_peace(peace.steps))
        return "";
    const step_t &last = peace.steps.back();
    scope_t scope = scope_of(last.household, last.prunes);
    // What was used while limits are off sets no flag, and there may be nothing to do.
    scope.flags = last.household.limits;
    model::restored_t restored;
    model::view_t seen;
    {
        machine_t machine(peace.zone);
        time_t counted_at = world::default_now;
        for (const step_t &step : peace.steps) {
            if (&step == &last && !step.restores) {
                machine.set_now(step.done.now);
                restored = model::counted();
                machine.hear();
            }
            if (step.what == step_t::stop || step.what == step_t::kill)
                counted_at = machine.now();
            machine.carry_out(step);
        }
        if (machine.last_status() != CTL_DONE)
            return "it fails\n";
        seen = scope.view_of(machine);
        if (last.restores)
            restored = rolled_forward(machine.counted_before_the_end(), counted_at, machine.now());
    }
    machine_t fresh(peace.zone);
    fresh.set_now(last.done.now);
    fresh.set_up(last.household, restored);
    return difference(seen, scope.view_of(fresh));
}

template <typename Walk>
void try_walks(Walk (*walk_of)(uint32_t seed), std::string (*fault_of)(const Walk &)) {
    const uint32_t first = from_environment("UTM_APPLY_SEED", 1);
    const uint32_t count = from_environment("UTM_APPLY_WALKS", 200);
    for (uint32_t seed = first; seed < first + count; ++seed) {
        const Walk walk = walk_of(seed);
        if (fault_of(walk).empty())
            continue;
        const Walk shorter = shortened(walk, fault_of);
        FAIL() << "seed " << seed << "\n" << text_of(shorter) << fault_of(shorter);
    }
    printf("%u walks from seed %u on\n", count, first);
}

TEST_F(Apply, RepairsWhateverAWalkLeaves) {
    try_walks(random_walk, fault_of);
}

TEST_F(Apply, NeedsNoRepairWhereNobodyElseActs) {
    try_walks(peaceful_walk, fault_of_peace);
}

} // namespace
