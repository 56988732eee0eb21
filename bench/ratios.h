#pragma once
/// From repetitions to ratios: how many times as long the daemon takes as the smallest program that
/// does the same work.
///
/// A pair is two benchmarks named "<what>/<size>/daemon" and "<what>/<size>/alone". Repetitions of
/// all of them are mixed at random, so that a machine that slows down slows both; each side counts
/// with its median.

#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

/// Collects each benchmark's repetitions and prints nothing by itself.
class ratio_reporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override;

    /// Prints a line for each pair.
    /// @return whether every pair with a budget kept it
    bool print() const;

private:
    std::map<std::string, std::vector<double>> nanoseconds_;
    bool failed_ = false;
};

/// What a pair is measured by: this process's own time on the processor, which other programs
/// disturb least, or the wall clock, where another process takes part.
enum class ratio_clock_t { processor, wall };

/// A pair, and the highest ratio that it may have; 0 for one that is only shown.
struct ratio_pair_t {
    std::string name;
    double budget;
    ratio_clock_t clock;
};

/// The pairs, as they were registered.
std::vector<ratio_pair_t> &ratio_pairs();

/// Registers a pair.
template <typename Daemon, typename Alone>
void ratio_register(const ratio_pair_t &pair, Daemon daemon, Alone alone) {
    ratio_pairs().push_back(pair);
    auto *of_daemon = benchmark::RegisterBenchmark((pair.name + "/daemon").c_str(), daemon);
    auto *of_alone = benchmark::RegisterBenchmark((pair.name + "/alone").c_str(), alone);
    if (pair.clock == ratio_clock_t::wall) {
        of_daemon->UseRealTime();
        of_alone->UseRealTime();
    }
}

/// Prints one line of the table.
/// @return whether the ratio is within the budget
bool ratio_print(const std::string &what, double daemon, double alone, const char *unit,
                 double budget);
