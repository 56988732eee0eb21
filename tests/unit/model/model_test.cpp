/// The daemon against the model: thousands of random operations, and both must agree on every
/// reply, every line of the story and the whole store after each of them.

#include "tests/unit/model/operations.h"
#include "tests/unit/model/rules.h"

#include "tests/unit/support/exchange.h"
#include "tests/unit/support/render.h"
#include "tests/unit/support/world.h"

#include "core/debug_log.h"
#include "usage/collector.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace {

using model::kind_t;
using model::operation_t;

constexpr int operations_per_seed = 2000;
constexpr size_t history_length = 25;

/// The lines of a ranking with equal minutes keep no defined order: they are sorted here, in the
/// daemon's replies and in the model's.
std::string with_ties_settled(const std::string &replies) {
    std::istringstream text(replies);
    std::vector<std::pair<std::string, std::string>> lines; // minutes, line
    for (std::string line; std::getline(text, line);)
        lines.emplace_back(line.substr(line.rfind(' ') + 1), line);
    for (auto run = lines.begin(); run != lines.end();) {
        const auto end = std::find_if(run, lines.end(),
                                      [&](const auto &line) { return line.first != run->first; });
        std::sort(run, end);
        run = end;
    }
    std::string settled;
    for (const auto &[minutes, line] : lines)
        settled += line + "\n";
    return settled;
}

std::string replies_of(const operation_t &operation, const std::string &replies) {
    return operation.request[0] == 36 ? with_ties_settled(replies) : replies;
}

/// The programs' texts in turn. Those that cannot be started print nothing and are not asked.
void prepare_programs(const std::vector<model::answer_t> &answers) {
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

/// Only one start can fail in the daemon's world, so only the first failure of an operation counts.
void keep_one_failure(std::vector<model::answer_t> *answers) {
    bool has_failed = false;
    for (model::answer_t &answer : *answers) {
        answer.fails = answer.fails && !has_failed;
        has_failed = has_failed || answer.fails;
    }
}

std::string perform(const operation_t &operation) {
    prepare_programs(operation.answers);
    world::set_now(operation.now);
    std::string replies;
    if (operation.kind == kind_t::command)
        replies = replies_of(operation, world::describe(static_cast<uint8_t>(operation.request[0]),
                                                        world::exchange_bytes(operation.request)));
    if (operation.kind == kind_t::tick) {
        // The tick ignores its collectors' results; so does the model.
        [[maybe_unused]] const int32_t ignored[] = {utm_app_update_app_status(),
                                                    utm_app_update_global_app_status()};
    }
    const std::string story = world::story();
    return "replies:\n" + replies + "story:\n" + story + "store:\n" + world::render_store();
}

std::string predict(model::state_t &state, const operation_t &operation) {
    state.story.clear();
    state.answers = operation.answers;
    state.now = operation.now;
    std::string replies;
    if (operation.kind == kind_t::command)
        replies = replies_of(operation, model::serve(state, operation.request));
    if (operation.kind == kind_t::tick)
        model::tick(state);
    return "replies:\n" + replies + "story:\n" + state.story + "store:\n" + model::render(state);
}

/// The story reads the log again for each line: it is kept short.
void empty_log() {
    if (truncate(debug_log_path, 0) != 0)
        abort();
    world::story();
}

struct seed_t {
    uint32_t seed;
    const char *zone;
};

class Model : public testing::TestWithParam<seed_t> {
protected:
    void SetUp() override {
        world::reset();
        world::set_zone(GetParam().zone);
        world::on_system(model::status_of);
    }
    void TearDown() override { world::reset(); }
};

TEST_P(Model, AgreesWithTheDaemonAfterEveryOperation) {
    model::state_t state;
    state.now = state.router_collected = world::default_now;
    model::generator_t generator(GetParam().seed);
    std::vector<std::string> history;
    for (int i = 0; i < operations_per_seed; ++i) {
        operation_t operation = generator.next(state);
        keep_one_failure(&operation.answers);
        history.push_back(std::to_string(i) + ": " + operation.text + "\n");
        const std::string predicted = predict(state, operation);
        const std::string seen = perform(operation);
        if (seen != predicted) {
            std::string tail;
            for (size_t at = history.size() - std::min(history.size(), history_length);
                 at < history.size(); ++at)
                tail += history[at];
            FAIL() << "seed " << GetParam().seed << " in " << GetParam().zone << ", operation " << i
                   << "\n--- the daemon\n"
                   << seen << "--- the model\n"
                   << predicted << "--- the last operations\n"
                   << tail;
        }
        empty_log();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Model,
                         testing::Values(seed_t{1, "UTC"}, seed_t{2, "UTC"},
                                         seed_t{3, "Europe/Berlin"}, seed_t{4, "Europe/Berlin"},
                                         seed_t{5, "America/Santiago"},
                                         seed_t{6, "Pacific/Kiritimati"}),
                         [](const auto &seed) { return std::to_string(seed.param.seed); });

/// What a run has to come across for its agreement to mean something.
TEST(ModelReach, MeetsEveryRuleWithinASeed) {
    world::reset();
    model::state_t state;
    state.now = state.router_collected = world::default_now;
    model::generator_t generator(1);
    std::string all;
    for (int i = 0; i < operations_per_seed; ++i) {
        operation_t operation = generator.next(state);
        keep_one_failure(&operation.answers);
        all += predict(state, operation);
    }
    for (const char *fragment : {"event block profile",
                                 "event unblock profile",
                                 "status_changed 1 1",
                                 "status_changed 1 0",
                                 "log Block profile",
                                 "log Block app",
                                 "return 256\n",
                                 "return 256 != 0\n",
                                 "apg acl set",
                                 "apg acl del",
                                 "apg acl reset",
                                 "run profile_daily_limit.sh -C",
                                 "[WARNING] __block_one_device",
                                 "log block device to use",
                                 "because exceed limit",
                                 "already has policy",
                                 "policy already exist",
                                 "id <= 0",
                                 "cannot find dev",
                                 "because range error",
                                 "profile is not existed",
                                 "because popen failed",
                                 "app signature fail",
                                 "not loaded in 136 bytes",
                                 "no reply",
                                 "data day 6",
                                 "data app 0 minutes 0",
                                 "(unused)",
                                 "blocked 1, days [",
                                 "2147483647",
                                 "-2147483648",
                                 "next 29",

                                 "update app",
                                 "from 1 to 1"})
        EXPECT_NE(all.find(fragment), std::string::npos) << fragment;
}

} // namespace
