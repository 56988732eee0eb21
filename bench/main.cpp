/// Measures the daemon against the least that could do the same work and prints ratios.
///
///     utm_bench [--check] [--benchmark_filter=...] [--benchmark_min_time=...] ...
///
/// Exits with 0, or, with --check, with 1 when a ratio is over its budget.

#include "bench/memory.h"
#include "bench/ratios.h"
#include "bench/resident.h"
#include "bench/round_trip.h"
#include "bench/tick.h"
#include "bench/usage_file.h"
#include "daemon.h"
#include "sim/harness/sandbox.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <sched.h>

namespace {

/// Takes an option of ours out of the arguments.
bool take_option(int *argc, char **argv, const char *option) {
    for (int i = 1; i < *argc; ++i) {
        if (strcmp(argv[i], option) != 0)
            continue;
        for (int j = i; j < *argc; ++j)
            argv[j] = argv[j + 1];
        --*argc;
        return true;
    }
    return false;
}

/// Everything runs on one processor, servers and clients taking turns: what is compared is the
/// work, not where the machine happens to put it.
void stay_on_one_processor() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0)
        return;
    int last = CPU_SETSIZE - 1;
    while (last > 0 && !CPU_ISSET(last, &allowed))
        --last;
    CPU_ZERO(&allowed);
    CPU_SET(last, &allowed);
    // Where that is refused, the figures are only noisier.
    if (sched_setaffinity(0, sizeof(allowed), &allowed) != 0)
        fprintf(stderr, "The figures come from several processors\n");
}

bool print_all(ratio_reporter *reporter) {
    printf("%-34s %12s %12s     %6s  %6s\n", "", "daemon", "alone", "ratio", "budget");
    bool kept = reporter->print();
    for (const household_size_t &size : household_sizes)
        kept = memory_print(size) && kept;
    // The second figures are limits here, not what something else takes.
    for (const household_size_t &size : household_sizes)
        kept = resident_print(size) && kept;
    return kept;
}

} // namespace

int main(int argc, char **argv) {
    const bool check = take_option(&argc, argv, "--check");
    sim_enter_sandbox(argv, {UTM_BUILD_DIR});
    stay_on_one_processor();
    // The servers first: each is a fork of a process that has no thread and no store yet.
    std::vector<std::unique_ptr<round_trip_t>> round_trips;
    for (const household_size_t &size : household_sizes)
        round_trips.push_back(std::make_unique<round_trip_t>(size));
    if (utm_app_config_handler_init() != 0)
        return 2;
    for (size_t i = 0; i < std::size(household_sizes); ++i) {
        round_trips[i]->register_pairs();
        tick_register(household_sizes[i]);
        usage_file_register(household_sizes[i]);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return print_all(&reporter) || !check ? 0 : 1;
}
