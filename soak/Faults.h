#pragma once

#include <cstdint>
#include <random>

#include "Plan.h"

namespace quensoak {

/** How a session comes to its end. */
enum class Ending : uint8_t {
    Orderly,         ///< everything is answered, then `destroy`
    InTheMiddle,     ///< `destroy` and destruction with requests outstanding
    WithoutDestroy,  ///< everything is answered, then destruction alone
    ModuleDies,      ///< with requests outstanding
};

/** What a session is, beside its requests. */
struct SessionPlan {
    Ending ending;
    int phases;          ///< each with a configuration of its own
    size_t outstanding;  ///< at most, while all goes well
    bool logs;           ///< every line is formatted
};

/** A stretch of requests of one configuration. */
struct Phase {
    Configuration configuration;
    int requests;
    bool mayLose;       ///< requests that are never answered may be among them
    bool releasesLate;  ///< what is held back is answered after the next reconfiguration
    bool isOutlasted;   ///< a callback of its last request takes longer than the drained wait
};

/** What costs whole time-outs, and is spent evenly over the run. */
class Budget {
  public:
    explicit Budget(uint64_t total) : mTotal(total) {}

    /** @param progress of the run, 0 to 1 */
    bool take(double progress) {
        bool const may = static_cast<double>(mUsed) < static_cast<double>(mTotal) * progress;
        mUsed += may ? 1 : 0;
        return may;
    }

  private:
    uint64_t const mTotal;
    uint64_t mUsed = 0;
};

/**
 * Decides what goes wrong. Everything follows from the seed and the order in which it is asked; the
 * threads' order is nobody's. One thread.
 */
class Faults {
  public:
    /**
     * @param requests of the whole run
     * @param soundAnswers how many of the ISP's answers are sound: the first ones
     */
    Faults(uint64_t seed, uint64_t requests, size_t soundAnswers, size_t answers);

    SessionPlan nextSession();

    /** @param isLast of its session */
    Phase nextPhase(SessionPlan const& session, Configuration const& before, bool isLast,
                    double progress);

    /** A request of a phase. One that may give up a drained wait does not wait itself. */
    Plan nextRequest(Phase const& phase, bool mayWait, double progress);

    /** The request during which the module dies. */
    Plan deadlyRequest(Phase const& phase);

    /** A request whose callback takes longer than a drained wait. */
    Plan outlastingRequest(Phase const& phase);

    Configuration firstConfiguration();

    /** Whether the number of a request that is held back is used a second time. */
    bool usesNumberTwice(double progress);

  private:
    bool oneIn(uint32_t n) { return below(n) == 0; }
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(mRandom() % limit); }
    Configuration otherConfiguration(Configuration const& before);
    void chooseFate(Plan& plan, Phase const& phase, double progress);
    void chooseWaitingFate(Plan& plan, Phase const& phase, double progress);
    void chooseAnswer(Plan& plan);
    void chooseBuffers(Plan& plan, double progress);

    std::mt19937_64 mRandom;
    size_t const mSoundAnswers;
    size_t const mAnswers;
    uint64_t mSpentDrains = 0;
    Budget mDrains;       // 2 s each
    Budget mTimeouts;     // 1 s each
    Budget mEarly;        // 1 s each, in the default build
    Budget mSlowImports;  // 25 ms each
    Budget mRetries;      // 5 ms each
    Budget mSecondUses;   // a leak each, in the default build
};

}  // namespace quensoak
