#include "bench/ratios.h"

#include <algorithm>
#include <cstdio>

namespace {

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// @return what stands in front of a name's second slash
std::string pair_of(const std::string &name) {
    return name.substr(0, name.find('/', name.find('/') + 1));
}

/// @return a repetition's time, by the clock that its name says it was measured with
double seconds_of(const benchmark::BenchmarkReporter::Run &run) {
    const bool is_wall = run.benchmark_name().find("/real_time") != std::string::npos;
    return is_wall ? run.real_accumulated_time : run.cpu_accumulated_time;
}

} // namespace

std::vector<ratio_pair_t> &ratio_pairs() {
    static std::vector<ratio_pair_t> pairs;
    return pairs;
}

void ratio_reporter::ReportRuns(const std::vector<Run> &runs) {
    for (const Run &run : runs) {
        if (run.run_type != Run::RT_Iteration)
            continue;
        const std::string name = run.benchmark_name();
        if (run.error_occurred) {
            fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
            failed_ = true;
            continue;
        }
        // "export/8x100/daemon/repeats:5/real_time" is the daemon's side of "export/8x100".
        const bool is_daemon = name.find("/daemon") != std::string::npos;
        nanoseconds_[pair_of(name) + (is_daemon ? "/daemon" : "/alone")].push_back(
            run.iterations == 0 ? 0 : seconds_of(run) / static_cast<double>(run.iterations) * 1e9);
    }
}

bool ratio_reporter::print() const {
    bool kept = !failed_;
    for (const ratio_pair_t &pair : ratio_pairs()) {
        const auto daemon = nanoseconds_.find(pair.name + "/daemon");
        const auto alone = nanoseconds_.find(pair.name + "/alone");
        if (daemon == nanoseconds_.end() || alone == nanoseconds_.end())
            continue;
        if (!ratio_print(pair.name, median(daemon->second) / 1e3, median(alone->second) / 1e3, "us",
                         pair.budget))
            kept = false;
    }
    return kept;
}

bool ratio_print(const std::string &what, double daemon, double alone, const char *unit,
                 double budget) {
    const double ratio = daemon / alone;
    const bool kept = budget == 0 || ratio <= budget;
    printf("%-34s %12.1f %12.1f %-3s %6.2f", what.c_str(), daemon, alone, unit, ratio);
    if (budget == 0)
        printf("       -\n");
    else
        printf("  %6.2f%s\n", budget, kept ? "" : "  over budget");
    fflush(stdout);
    return kept;
}
