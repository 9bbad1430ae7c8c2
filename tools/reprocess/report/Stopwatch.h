#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "trace/Trace.h"

namespace quen::reprocess {

/**
 * The times of named legs of the work, in the order of their first start, which are also spans of
 * the timeline where there is one. Not thread-safe.
 */
class Stopwatch {
  public:
    Stopwatch() = default;

    /** @param trace the timeline; null for none. The notes are beside each of the spans */
    explicit Stopwatch(Trace* trace, TraceNote first = {}, TraceNote second = {})
        : mTrace(trace), mFirst(first), mSecond(second) {}

    struct Leg {
        std::string name;
        double milliseconds;
    };

    /** Runs a piece of work and adds its time to a leg. */
    template <typename Work>
    auto time(char const* leg, Work&& work) {
        Span const span(*this, leg);
        return std::forward<Work>(work)();
    }

    std::vector<Leg> const& legs() const { return mLegs; }

  private:
    using Clock = std::chrono::steady_clock;

    struct Span {
        Span(Stopwatch& watch, char const* leg) : mWatch(watch), mLeg(leg) {}
        ~Span() { mWatch.end(mLeg, mBegin, Clock::now()); }

        Stopwatch& mWatch;
        char const* mLeg;
        Clock::time_point mBegin = Clock::now();
    };

    void end(char const* leg, Clock::time_point begin, Clock::time_point end) {
        add(leg, end - begin);
        if (mTrace != nullptr) {
            mTrace->addSpan(TraceSource::Tool, leg, begin, end, mFirst, mSecond);
            mTrace->addMemory();
        }
    }

    void add(char const* name, Clock::duration duration) {
        double const milliseconds = std::chrono::duration<double, std::milli>(duration).count();
        for (Leg& leg : mLegs) {
            if (leg.name == name) {
                leg.milliseconds += milliseconds;
                return;
            }
        }
        mLegs.push_back({name, milliseconds});
    }

    Trace* mTrace = nullptr;
    TraceNote mFirst;
    TraceNote mSecond;
    std::vector<Leg> mLegs;
};

}  // namespace quen::reprocess
