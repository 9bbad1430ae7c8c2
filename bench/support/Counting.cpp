#include "support/Counting.h"

#include <valgrind/callgrind.h>

#include "support/Section.h"
#include "watch/Watch.h"

namespace quenbench {

namespace {

constexpr int kRuns = 4;

/** Runs before the first counted one, for what is set up once. */
constexpr int kWarmUps = 2;

bool matches(std::string const& name, std::string const& filter) {
    bool const isGroup = filter.empty() || filter.back() == '/';
    return isGroup ? name.compare(0, filter.size(), filter) == 0 : name == filter;
}

void print(std::ostream& out, Case const& counted, WatchCounts const& counts) {
    double const operations = static_cast<double>(kRuns * counted.operations);
    auto const line = [&](char const* kind, uint64_t count) {
        out << kind << ' ' << counted.name << ' ' << static_cast<double>(count) / operations
            << '\n';
    };
    line("allocations", counts.allocations);
    line("allocatedBytes", counts.bytes);
    line("largeCopies", counts.largeCopies);
    line("formats", counts.formats);
    line("entryCopies", counts.entryCopies);
}

}  // namespace

void countCases(std::ostream& out, Cases const& cases, std::string const& filter) {
    for (Case const& one : cases) {
        if (!one.counted || !matches(one.name, filter)) {
            continue;
        }
        Run const run = one.prepare();
        for (int i = 0; i < kWarmUps; ++i) {
            run();
        }
        WatchCounts counts = {};
        takeCounts(counts);
        Section::countFor(one.name);
        for (int i = 0; i < kRuns; ++i) {
            run();
        }
        Section::countFor("");
        CALLGRIND_DUMP_STATS_AT(one.name.c_str());
        out << "operations " << one.name << ' ' << kRuns * one.operations << '\n';
        if (takeCounts(counts)) {
            print(out, one, counts);
        }
    }
}

}  // namespace quenbench
