/// The daemon against the model: thousands of random operations, and both must agree on every
/// reply, every line of the trace and the whole store after each of them.

#include "tests/model/daemon.h"
#include "tests/model/rules.h"

#include "tests/lib/render.h"
#include "tests/lib/world.h"

#include "core/debug_log.h"
#include "persist/export_schedule.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace {

using model::operation_t;

constexpr int operations_per_seed = 2500;
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
    return !operation.request.empty() && operation.request[0] == 36 ? with_ties_settled(replies)
                                                                    : replies;
}

std::string clockwork(int64_t last_export) {
    return "last export: " + std::to_string(last_export - world::default_now) + "\n";
}

/// All that can be seen of an operation.
struct outcome_t {
    std::string text;                         ///< replies, trace and store
    std::map<std::string, std::string> files; ///< their texts by path

    bool operator==(const outcome_t &) const = default;
};

outcome_t perform(const operation_t &operation) {
    const std::string replies = replies_of(operation, model::carry_out(operation));
    const std::string trace = world::trace();
    return {"replies:\n" + replies + "trace:\n" + trace + "store:\n" + world::render_store() +
                clockwork(last_export_statistics_ts),
            model::files_on_disk()};
}

outcome_t predict(model::state_t &state, const operation_t &operation) {
    const std::string replies = replies_of(operation, model::predict_replies(state, operation));
    outcome_t outcome;
    outcome.text = "replies:\n" + replies + "trace:\n" + state.trace + "store:\n" +
                   model::render(state) + clockwork(state.last_export);
    for (const auto &[path, file] : state.files)
        outcome.files[path] = file->text;
    return outcome;
}

/// The outcome as a failure shows it: without the files that are the same in the other one.
std::string text_beside(const outcome_t &outcome, const outcome_t &other) {
    std::string text = outcome.text;
    for (const auto &[path, content] : outcome.files)
        if (!other.files.contains(path) || other.files.at(path) != content)
            text += "file " + path + ":\n" + content + "\n";
    return text;
}

/// The trace reads the log again for each line: it is kept short.
void empty_log() {
    if (truncate(debug_log_path, 0) != 0)
        abort();
    world::trace();
}

struct seed_t {
    uint32_t seed;
    const char *zone;
};

/// Names the seed in the name of its test.
void PrintTo(const seed_t &seed, std::ostream *to) {
    *to << "seed " << seed.seed << " in " << seed.zone;
}

class Model : public testing::TestWithParam<seed_t> {
protected:
    void SetUp() override {
        world::reset();
        world::set_zone(GetParam().zone);
        world::on_system(model::status_of);
        model::set_last_export(world::default_now);
        model::clear_disk();
    }
    void TearDown() override {
        world::reset();
        model::clear_disk();
    }
};

TEST_P(Model, AgreesWithTheDaemonAfterEveryOperation) {
    model::state_t state = model::state_at_start();
    model::generator_t generator(GetParam().seed);
    std::vector<std::string> history;
    for (int i = 0; i < operations_per_seed; ++i) {
        operation_t operation = generator.next(state);
        model::keep_one_failure(&operation.answers);
        history.push_back(std::to_string(i) + ": " + operation.text + "\n");
        const outcome_t predicted = predict(state, operation);
        const outcome_t seen = perform(operation);
        if (seen != predicted) {
            std::string tail;
            for (size_t at = history.size() - std::min(history.size(), history_length);
                 at < history.size(); ++at)
                tail += history[at];
            FAIL() << "seed " << GetParam().seed << " in " << GetParam().zone << ", operation " << i
                   << "\n--- the daemon\n"
                   << text_beside(seen, predicted) << "--- the model\n"
                   << text_beside(predicted, seen) << "--- the last operations\n"
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
    model::state_t state = model::state_at_start();
    model::generator_t generator(1);
    std::string all;
    for (int i = 0; i < operations_per_seed; ++i) {
        operation_t operation = generator.next(state);
        model::keep_one_failure(&operation.answers);
        all += predict(state, operation).text;
    }
    const auto expect_in_text = [&all](std::initializer_list<const char *> fragments) {
        for (const char *fragment : fragments)
            EXPECT_NE(all.find(fragment), std::string::npos) << fragment;
    };
    expect_in_text({"event block profile", "event unblock profile", "status_changed 1 1",
                    "status_changed 1 0", "log Block profile", "log Block app", "return 256\n",
                    "return 256 != 0\n", "apg acl set", "apg acl del", "apg acl reset"});
    expect_in_text({"run profile_daily_limit.sh -C", "[WARNING] __block_one_device",
                    "log block device to use", "because exceed limit", "update app", "(unused)",
                    "blocked 1, days [", "because exceed limit\nrun lcsh apg acl set"});
    expect_in_text({"already has policy", "policy already exist", "id <= 0", "cannot find dev",
                    "because range error", "profile is not existed", "because popen failed",
                    "app signature fail", "not loaded in 136 bytes", "no reply", "from 1 to 1"});
    expect_in_text({"data day 6", "data app 0 minutes 0", "2147483647", "-2147483648", "next 29",
                    "Flush all profiles success\nlog Reset top apps success\n"});
    expect_in_text({"Set activate from 0 to 1\nlog export to /tmp/Application",
                    "}'\nlog export to /tmp/ApplicationData/app_usage.json success",
                    "app_usage.json failed\n", "usage.json success\n", "uuu success\n",
                    "missing/usage.json failed\n", "export to  failed\n",
                    "sysinfo code error = -14\n"});
    expect_in_text({"import from  failed\n", "import from /tmp/model failed\n",
                    "import from /tmp/model/usage.json success\n",
                    "import from /tmp/ApplicationData/app_usage.json success\n",
                    "import from /tmp/ApplicationData/app_usage.json failed\n",
                    "because it is from future\nlog import from"});
    for (const char *rule :
         {"on the same day", "after a day", "after a week", "after a month", "after days unnoticed",
          "without a date", "of a stranger", "of thirty days", "over the ring's end",
          "without an index", "with another ring", "without applications", "of lost applications",
          "blocks a profile", "enforces a rule", "before its time", "too early after boot",
          "with another interval"})
        EXPECT_TRUE(state.met.contains(rule)) << rule;
}

} // namespace
