#include "bench/Figure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string_view>
#include <vector>

namespace bench {

namespace {

/// n log n grows by 12.5 from ten thousand to a hundred thousand; the rest is for caches that no longer hold the larger
/// one. What is quadratic grows by 100.
constexpr double kMostGrowth = 16;

constexpr char kOurs[] = "ours";
constexpr char kYardstick[] = "yardstick";
constexpr char kLimit[] = "limit";
constexpr char kMeasure[] = "measure"; ///< what the limit is of
constexpr std::string_view kCheck = "--check";

/// What each of the measures answered, sorted.
std::pair<std::vector<double>, std::vector<double>> answersOf(benchmark::State& state, const Measure& one,
                                                              const Measure& other)
{
    one(); // the first runs fill caches
    other();
    std::vector<double> ours, others;
    for (auto _ : state) {
        ours.push_back(one());
        state.SetIterationTime(ours.back() / 1000);
        others.push_back(other());
    }
    std::sort(ours.begin(), ours.end());
    std::sort(others.begin(), others.end());
    return {ours, others};
}

void report(benchmark::State& state, double ours, double yardstick, double measure, double limit,
            const std::string& label)
{
    state.counters[kMeasure] = measure;
    state.counters[kOurs] = ours;
    state.counters[kYardstick] = yardstick;
    state.counters[kLimit] = limit;
    state.SetLabel(label);
}

/// One line a figure.
class Table final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override
    {
        std::printf("%-45s %10s %10s %7s %7s  %s\n", "figure", "ours", "yardstick", "here", "at most", "yardstick is");
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::printf("%-45s failed: %s\n", run.run_name.function_name.c_str(), run.error_message.c_str());
                isWithin_ = false;
                continue;
            }
            const double ours = run.counters.at(kOurs), yardstick = run.counters.at(kYardstick);
            const double limit = run.counters.at(kLimit), here = run.counters.at(kMeasure);
            const bool isOver = limit > 0 && here > limit;
            char most[16] = "-";
            if (limit > 0)
                std::snprintf(most, sizeof most, "%.2f", limit);
            std::printf("%-45s %10.2f %10.2f %7.2f %7s  %s%s\n", run.run_name.function_name.c_str(), ours, yardstick,
                        here, most, run.report_label.c_str(), isOver ? "  <-- over" : "");
            isWithin_ = isWithin_ && !isOver;
        }
        std::fflush(stdout);
    }

    bool isWithin() const { return isWithin_; }

private:
    bool isWithin_ = true;
};

} // namespace

double millisecondsOn(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double millisecondsOf(const std::function<void()>& work)
{
    const double start = millisecondsOn(CLOCK_PROCESS_CPUTIME_ID);
    work();
    return millisecondsOn(CLOCK_PROCESS_CPUTIME_ID) - start;
}

void add(const Figure& figure)
{
    const auto measure = [figure](benchmark::State& state) {
        const auto [ours, yardstick] = figure.prepare();
        const auto [all, others] = answersOf(state, ours, yardstick);
        const std::size_t counts = figure.clock == Figure::Clock::wall ? all.size() / 2 : 0;
        const bool isRatio = figure.limitOf == Figure::Limit::ratio;
        const double value = isRatio ? all[counts] / others[counts] : all[counts] - others[counts];
        report(state, all[counts], others[counts], value, figure.limit, figure.yardstick + ", " + figure.unit);
    };
    benchmark::RegisterBenchmark(figure.name.c_str(), measure)->Iterations(figure.runs)->UseManualTime();
}

void add(const Growth& growth)
{
    const auto measure = [growth](benchmark::State& state) {
        const Measure small = growth.prepare(growth.size);
        double least = std::numeric_limits<double>::max();
        for (int run = 0; run <= growth.runs; ++run)
            least = std::min(least, small());
        const Measure large = growth.prepare(growth.size * 10);
        const double tenfold = answersOf(state, large, [] { return 0.0; }).first.front();
        char label[64];
        std::snprintf(label, sizeof label, "a tenth of it, ms; exponent %.2f", std::log10(tenfold / least));
        report(state, tenfold, least, tenfold / least, kMostGrowth, label);
    };
    benchmark::RegisterBenchmark(growth.name.c_str(), measure)->Iterations(growth.runs)->UseManualTime();
}

bool runAll(int& argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    bool checks = false;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] != kCheck) {
            std::fprintf(stderr, "bench: what is %s?\n", argv[i]);
            return false;
        }
        checks = true;
    }
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.isWithin() || !checks;
}

} // namespace bench
