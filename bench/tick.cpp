#include "bench/tick.h"

#include "bench/ratios.h"
#include "usage/collector.h"

#include <json-c/json.h>

namespace {

/// A size's replies, for the whole run.
struct replies_t {
    household_size_t size;
    std::string profile;
    std::string router;
};

void run_daemon(benchmark::State &state, const replies_t *replies) {
    household_build(replies->size);
    household_answer_queries(&replies->profile, &replies->router);
    for (auto _ : state)
        if (utm_app_update_app_status() != 0 || utm_app_update_global_app_status() != 0)
            state.SkipWithError("a collection failed");
    household_clear();
}

void parse(const std::string &text) {
    json_object *document = json_tokener_parse(text.c_str());
    benchmark::DoNotOptimize(document);
    json_object_put(document);
}

void run_alone(benchmark::State &state, const replies_t *replies) {
    for (auto _ : state) {
        for (int32_t n = 0; n < replies->size.profiles; ++n)
            parse(replies->profile);
        parse(replies->router);
    }
}

} // namespace

void tick_register(const household_size_t &size) {
    const auto *replies =
        new replies_t{size, household_profile_reply(size), household_router_reply(size)};
    ratio_register(
        {std::string("tick/") + size.name, size.budget, ratio_clock_t::processor},
        [replies](benchmark::State &state) { run_daemon(state, replies); },
        [replies](benchmark::State &state) { run_alone(state, replies); });
}
