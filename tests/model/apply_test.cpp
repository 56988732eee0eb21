/// `apply` against random walks: from whatever state a walk has brought the daemon and the engine
/// to, a household is applied, and both must be as if they had been set up so from the start.

#include "tests/model/apply_machine.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using model::cut_t;
using model::kind_t;
using model::machine_t;
using model::operation_t;
using model::state_folder;
using model::step_t;
using model::usage_path;
using model::wanted_t;
using model::wish_to;

struct walk_t {
    const char *zone;
    std::vector<step_t> steps;
    wanted_t household; ///< which is applied at the end
    bool prunes;
    cut_t cut;
};

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
