#include "bench/round_trip.h"

#include "bench/ratios.h"
#include "sim/harness/client.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

/// Asks the daemon once, for the answer that the minimal server gives.
canned_t canned_of(const std::string &path, const utm_app_config_cmd &request, size_t replies) {
    std::string answer;
    if (!sim_converse(path, sim_bytes(request), &answer) ||
        answer.size() != replies * UTM_APP_CONFIG_REPLY_SIZE) {
        fprintf(stderr, "The daemon answered request %d with %zu bytes\n", request.type,
                answer.size());
        abort();
    }
    return {request, answer};
}

void run(benchmark::State &state, const std::string &path, const canned_t &canned) {
    const std::string request = sim_bytes(canned.request);
    std::string answer(canned.answer.size(), '\0');
    for (auto _ : state)
        if (!sim_converse(path, request, &answer) || answer.size() != canned.answer.size())
            state.SkipWithError("an answer was cut short");
    if (answer != canned.answer)
        state.SkipWithError("an answer was another one");
}

} // namespace

round_trip_t::round_trip_t(const household_size_t &size)
    : size_(size), socket_path_(std::string("/dev/utm_daemon-") + size.name),
      minimal_path_(std::string("/tmp/minimal-") + size.name),
      streaming_path_(std::string("/tmp/streaming-") + size.name) {
    daemon_.start_daemon(size);
    // A listening socket stays reachable where its name goes, which makes room for the next one.
    // (The name stays in /dev: a sandbox may have it on a file system of its own.)
    if (rename(UTM_APP_CONFIG_SOCKET_PATH, socket_path_.c_str()) != 0)
        abort();
    one_ = canned_of(socket_path_,
                     {.type = UTM_APP_CONFIG_GET_PROFILE_USAGE, .arg0 = size.profiles}, 1);
    list_ = canned_of(socket_path_, {.type = UTM_APP_CONFIG_GET_APP_USAGE, .arg0 = size.profiles},
                      static_cast<size_t>(size.apps) + 1);
    minimal_.start_minimal(minimal_path_.c_str(), {one_, list_}, UTM_APP_CONFIG_REPLY_SIZE);
    streaming_.start_minimal(streaming_path_.c_str(), {one_, list_},
                             std::numeric_limits<size_t>::max());
}

void round_trip_t::register_pairs() {
    const auto pair = [this](const char *what, double budget, const std::string &alone,
                             const canned_t &canned) {
        ratio_register(
            {std::string(what) + "/" + size_.name, budget, ratio_clock_t::wall},
            [this, &canned](benchmark::State &state) { run(state, socket_path_, canned); },
            [alone, &canned](benchmark::State &state) { run(state, alone, canned); });
    };
    pair("request", size_.budget, minimal_path_, one_);
    pair("list-request", size_.budget, minimal_path_, list_);
    // The protocol's clients take replies as a stream: what larger writes would gain, without a
    // budget.
    pair("list-request-as-one-write", 0, streaming_path_, list_);
}
