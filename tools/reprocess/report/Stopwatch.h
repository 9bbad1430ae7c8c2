#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace quen::reprocess {

/** The times of named legs of the work, in the order of their first start. Not thread-safe. */
class Stopwatch {
  public:
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
