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
 * The measured part of a run, on the thread that opens it. Its time is always taken. While a case
 * is being counted, tools from outside see where it begins and ends: callgrind collects, the watch
 * library counts, and a system call that fails marks the place in a trace.
 */
class Section {
  public:
    /** Names the case whose sections are marked from now on; empty: none are. */
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
