#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace quen::reprocess {

/** Time spent on the legs of a road, in the order in which they were first begun. */
class Stopwatch {
  public:
    struct Leg {
        std::string name;
        double milliseconds;
    };

    /** Runs a piece of work and books its time under a leg. */
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
        ~Span() { mWatch.add(mLeg, Clock::now() - mBegin); }

        Stopwatch& mWatch;
        char const* mLeg;
        Clock::time_point mBegin = Clock::now();
    };

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

    std::vector<Leg> mLegs;
};

}  // namespace quen::reprocess
