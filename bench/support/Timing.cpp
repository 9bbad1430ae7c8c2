#include "support/Timing.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <numeric>
#include <random>
#include <utility>

namespace quenbench {

namespace {

/** Time of a group's repetition: as many rounds as fit, at least one. */
constexpr double kSecondsARepetition = 0.1;

/** Keeps the time of every run. */
class Recorder final : public Figures {
  public:
    explicit Recorder(std::string const& countsFile) {
        std::ifstream in(countsFile);
        std::string kind;
        std::string name;
        for (double count = 0; in >> kind >> name >> count;) {
            mCounts[{kind, name}] = count;
        }
    }

    void add(std::string const& name, double seconds) { mSeconds[name].push_back(seconds); }

    double seconds(std::string const& name) const override {
        auto const found = mSeconds.find(name);
        if (found == mSeconds.end()) {
            return -1;
        }
        std::vector<double> times = found->second;
        auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

    double count(std::string const& kind, std::string const& name) const override {
        auto const found = mCounts.find({kind, name});
        return found == mCounts.end() ? -1 : found->second;
    }

  private:
    std::map<std::string, std::vector<double>> mSeconds;
    std::map<std::pair<std::string, std::string>, double> mCounts;
};

/** Prints nothing: the table is the only output. */
class SilentReporter final : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const&) override {}
};

using Group = std::vector<Case const*>;

/**
 * Runs every case of a group once per round, in random order: a case leaves the caches in a state
 * that favours or hinders the next one.
 */
void timeGroup(benchmark::State& state, Group const& group, Recorder& recorder) {
    std::vector<Run> runs;
    for (Case const* const one : group) {
        runs.push_back(one->prepare());
        runs.back()();  // warms up
    }
    std::minstd_rand random;  // the same orders in every run
    std::vector<size_t> turns(group.size());
    std::iota(turns.begin(), turns.end(), size_t{0});
    for ([[maybe_unused]] auto const& step : state) {
        double total = 0;
        std::shuffle(turns.begin(), turns.end(), random);
        for (size_t const turn : turns) {
            double const seconds = runs[turn]();
            recorder.add(group[turn]->name, seconds / static_cast<double>(group[turn]->operations));
            total += seconds;
        }
        state.SetIterationTime(total);
    }
    while (!runs.empty()) {
        runs.pop_back();  // sessions end in reverse order
    }
}

}  // namespace

Figures const* timeCases(Cases const& cases, std::string const& counts, int argc, char** argv) {
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=9";
    std::vector<char*> arguments(argv, argv + argc);
    // Before the caller's own, which override them.
    arguments.insert(arguments.begin() + 1, {interleaving.data(), repetitions.data()});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return nullptr;
    }
    static auto* const recorder = new Recorder(counts);
    std::map<std::string, Group> groups;
    for (Case const& one : cases) {
        groups[one.group].push_back(&one);
    }
    for (auto const& [name, group] : groups) {
        benchmark::RegisterBenchmark(
                name.c_str(),
                [&group = group](benchmark::State& state) { timeGroup(state, group, *recorder); })
                ->UseManualTime()
                ->MinTime(kSecondsARepetition);
    }
    SilentReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return recorder;
}

}  // namespace quenbench
