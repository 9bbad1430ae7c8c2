#pragma once

#include <chrono>
#include <string>
#include <utility>

namespace quenbench {

using Clock = std::chrono::steady_clock;

inline double secondsBetween(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double>(end - start).count();
}

/**
 * The measured part of a run, on the thread that opens it. Its time is always measured. While a
 * case is counted, its start and end are marked for external tools: callgrind collects, the watch
 * library counts, and a failing system call marks the place in a trace.
 */
class Section {
  public:
    /** Sets the case whose sections are marked from now on; empty for none. */
    static void countFor(std::string name);

    Section();
    ~Section() { stop(); }
    Section(Section const&) = delete;
    Section& operator=(Section const&) = delete;

    /** Ends the section. Returns its seconds. */
    double stop();

  private:
    bool mOpen = true;
    Clock::time_point mStart;
    double mSeconds = 0;
};

template <typename Work>
double measured(Work&& work) {
    Section section;
    std::forward<Work>(work)();
    return section.stop();
}

}  // namespace quenbench
