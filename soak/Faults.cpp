#include "Faults.h"

#include <algorithm>
#include <iterator>

#include "Build.h"
#include "Client.h"

namespace quensoak {

namespace {

// Of the default build's waiting requests: the answer must not come before the wait.
constexpr uint16_t kPatientMicroseconds = 500;

constexpr uint32_t kLongerThanADrainedWait = 2500000;

/** A share of the requests, between a least and a most. */
uint64_t share(uint64_t requests, uint64_t oneIn, uint64_t least, uint64_t most) {
    return std::clamp(requests / oneIn, least, most);
}

constexpr BufferFault kInputFaults[] = {BufferFault::LockInput, BufferFault::LostDescriptor,
                                        BufferFault::LostFree, BufferFault::MapInput};
constexpr BufferFault kJpegFaults[] = {BufferFault::LockJpegFirst, BufferFault::LockJpegSecond,
                                       BufferFault::MapJpeg};
constexpr BufferFault kSlowFaults[] = {BufferFault::AllocateInput,   BufferFault::AllocateJpeg,
                                       BufferFault::AllocateTuning,  BufferFault::ImportInput,
                                       BufferFault::ImportJpegFirst, BufferFault::ImportJpegSecond,
                                       BufferFault::ImportTuning};

}  // namespace

Faults::Faults(uint64_t seed, uint64_t requests, size_t soundAnswers, size_t answers)
    : mRandom(seed),
      mSoundAnswers(soundAnswers),
      mAnswers(answers),
      mDrains(share(requests, 25000, 4, 40)),
      mTimeouts(share(requests, 25000, 3, 40)),
      mEarly(share(requests, 25000, 2, 40)),
      mSlowImports(share(requests, 1000, 10, 1000)),
      mRetries(share(requests, 500, 20, 2000)),
      mSecondUses(kHardened ? requests / 100 : share(requests, 5000, 5, 100)) {}

Configuration Faults::firstConfiguration() {
    return otherConfiguration({Stage::RawToYuv, false, 0, 0});
}

Configuration Faults::otherConfiguration(Configuration const& before) {
    Configuration next = before;
    while (next == before) {
        Size const& size = kSizes[below(std::size(kSizes))];
        next = {oneIn(2) ? Stage::RawToYuv : Stage::YuvToJpeg, false, size.width, size.height};
        next.passThrough = next.stage == Stage::YuvToJpeg && oneIn(4);
    }
    return next;
}

SessionPlan Faults::nextSession() {
    constexpr size_t kOutstanding[] = {1, 4, 16, 64, 200};
    SessionPlan plan;
    uint32_t const dice = below(10);
    plan.ending = dice < 4   ? Ending::Orderly
                  : dice < 8 ? Ending::InTheMiddle
                  : dice < 9 ? Ending::WithoutDestroy
                             : (kHardened ? Ending::ModuleDies : Ending::Orderly);
    plan.phases = 1 + static_cast<int>(below(16));
    plan.outstanding = kOutstanding[below(std::size(kOutstanding))];
    plan.logs = oneIn(50);
    return plan;
}

Phase Faults::nextPhase(SessionPlan const& session, Configuration const& before, bool isLast,
                        double progress) {
    Phase phase;
    phase.configuration = otherConfiguration(before);
    phase.requests = 1 + static_cast<int>(below(oneIn(2) ? 20 : 300));
    // What is never answered costs a drained wait's two seconds, unless the session ends first.
    bool const dies = session.ending == Ending::ModuleDies;
    bool const spends = !isLast && !dies && mDrains.take(progress);
    phase.isOutlasted = spends && ++mSpentDrains % 3 == 0;
    phase.mayLose = isLast ? oneIn(2) : spends && !phase.isOutlasted;
    phase.releasesLate = !isLast && phase.mayLose && oneIn(2);
    return phase;
}

bool Faults::usesNumberTwice(double progress) {
    return oneIn(20) && mSecondUses.take(progress);
}

Plan Faults::nextRequest(Phase const& phase, bool mayWait, double progress) {
    Plan plan = {};
    plan.configuration = phase.configuration;
    if (oneIn(200)) {
        plan.call = kHardened ? static_cast<Call>(1 + below(6)) : Call::NullParams;
        bool const isCopied =
                phase.configuration.stage == Stage::YuvToJpeg && !phase.configuration.passThrough;
        if (plan.call == Call::BufferTooSmall && !isCopied) {
            plan.call = Call::NullInput;
        }
    }
    plan.waits = mayWait && oneIn(kHardened ? 10 : 40);
    plan.reusesLastNumber = oneIn(8);
    plan.twoOutputs = phase.configuration.stage == Stage::RawToYuv && oneIn(10);
    plan.realBuffers = oneIn(50);
    bool const toJpeg = phase.configuration.stage == Stage::YuvToJpeg;
    plan.settings = static_cast<uint8_t>(below(toJpeg ? kSettings : kNoSettings));
    if (plan.settings == kWithTuningBytes && !oneIn(10)) {
        plan.settings = kWithIndex;
    }
    if (plan.waits) {
        chooseWaitingFate(plan, phase, progress);
    } else {
        chooseFate(plan, phase, progress);
    }
    chooseAnswer(plan);
    chooseBuffers(plan, progress);
    plan.slowMicroseconds = oneIn(2000) ? 100 + below(2000) : 0;
    plan.listenerLost = oneIn(50);
    return plan;
}

Plan Faults::outlastingRequest(Phase const& phase) {
    Plan plan = nextRequest(phase, false, 0);
    plan.call = Call::Good;
    plan.buffers = BufferFault::None;
    plan.fate = Fate::Answered;
    plan.reusesLastNumber = false;
    plan.slowMicroseconds = kLongerThanADrainedWait;
    return plan;
}

Plan Faults::deadlyRequest(Phase const& phase) {
    Plan plan = nextRequest(phase, false, 0);
    plan.call = Call::Good;
    plan.buffers = BufferFault::None;
    plan.moduleDies = true;
    plan.waits = oneIn(2);
    plan.reusesLastNumber = false;
    plan.fate = plan.waits ? Fate::Dropped : Fate::Answered;
    plan.delayMicroseconds = static_cast<uint16_t>(below(500));
    return plan;
}

void Faults::chooseFate(Plan& plan, Phase const& phase, double progress) {
    (void)progress;
    if (phase.mayLose && oneIn(30)) {
        plan.fate = Fate::Dropped;
    } else if ((phase.mayLose || kHardened) && oneIn(200)) {
        plan.fate = oneIn(2) ? Fate::Refused : Fate::NeverReached;
    } else if (oneIn(400)) {
        plan.fate = Fate::ReplyLost;
    } else if (oneIn(20)) {
        plan.fate = Fate::Held;
    } else if (oneIn(4)) {
        plan.fate = Fate::AtOnce;
    }
}

/** A waiting call's answer that is late or missing costs its time-out. */
void Faults::chooseWaitingFate(Plan& plan, Phase const& phase, double progress) {
    if (phase.mayLose && mTimeouts.take(progress)) {
        plan.fate = oneIn(2) ? Fate::Dropped : Fate::Held;
        return;
    }
    if ((phase.mayLose || kHardened) && oneIn(100)) {
        plan.fate = oneIn(2) ? Fate::Refused : Fate::NeverReached;
    } else if (kHardened && oneIn(200)) {
        plan.fate = Fate::ReplyLost;
    } else if (kHardened ? oneIn(4) : mEarly.take(progress)) {
        plan.fate = Fate::AtOnce;
    }
    plan.delayMicroseconds =
            kHardened ? (oneIn(50) ? static_cast<uint16_t>(below(500)) : 0) : kPatientMicroseconds;
    if (plan.fate == Fate::AtOnce) {
        plan.delayMicroseconds = 0;
    }
}

void Faults::chooseAnswer(Plan& plan) {
    if (oneIn(16)) {
        plan.copies = static_cast<uint8_t>(2 + below(2));
        plan.copiesTogether = oneIn(3);
    }
    plan.earlyResult = oneIn(50);
    plan.strayResult = oneIn(50);
    if (oneIn(8)) {
        plan.status = static_cast<isphal::Status>(oneIn(20) ? 0xffffffffu - below(3) : below(10));
    }
    bool const isMalformed = kHardened && oneIn(10);
    plan.metadata = static_cast<uint8_t>(
            isMalformed ? mSoundAnswers + below(static_cast<uint32_t>(mAnswers - mSoundAnswers))
                        : below(static_cast<uint32_t>(mSoundAnswers)));
    plan.jpegBytes = static_cast<uint16_t>(64 + below(2000));
    if (oneIn(50)) {
        plan.trailer = static_cast<Trailer>(1 + below(3));
    }
}

void Faults::chooseBuffers(Plan& plan, double progress) {
    bool const toJpeg = plan.configuration.stage == Stage::YuvToJpeg;
    bool const copiesInput = toJpeg && !plan.configuration.passThrough;
    plan.threeA = oneIn(8) ? (oneIn(2) ? ThreeA::None : ThreeA::TooSmall) : ThreeA::Given;
    if (plan.realBuffers) {
        return;  // the host's do not fail
    }
    if (oneIn(100) && copiesInput) {
        plan.buffers = kInputFaults[below(std::size(kInputFaults))];
    } else if (oneIn(plan.waits ? 20 : 100) && toJpeg) {
        plan.buffers = kJpegFaults[below(std::size(kJpegFaults))];
    } else if (oneIn(100) && !toJpeg) {
        plan.buffers = BufferFault::LockTuning;
    } else if (copiesInput && mRetries.take(progress)) {
        plan.buffers = BufferFault::ImportInputOnce;
    } else if (oneIn(toJpeg && plan.waits ? 1 : 10) && mSlowImports.take(progress)) {
        plan.buffers = kSlowFaults[below(std::size(kSlowFaults))];
    }
}

}  // namespace quensoak
