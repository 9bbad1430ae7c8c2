#include "Session.h"

#include "Build.h"
#include "host/log/LogControl.h"

namespace quensoak {

namespace {

constexpr int kCallsAfterDeath = 8;

/** Drops every line, once it is formatted. */
class Drop final : public quen::host::LogSink {
  public:
    void write(char const*, int, char const*) override {}
};

/** Turns every level of the log on for the length of a scope. */
class LoudLog {
  public:
    explicit LoudLog(bool isLoud) : mIsLoud(isLoud) {
        if (mIsLoud) {
            mBefore = quen::host::setLogSink(&mDrop);
            quen::host::setLogLevel(quen::host::LogLevel::Debug);
        }
    }
    ~LoudLog() {
        if (mIsLoud) {
            quen::host::setLogLevel(quen::host::LogLevel::Silent);
            quen::host::setLogSink(mBefore);
        }
    }
    LoudLog(LoudLog const&) = delete;
    LoudLog& operator=(LoudLog const&) = delete;

  private:
    bool const mIsLoud;
    Drop mDrop;
    quen::host::LogSink* mBefore = nullptr;
};

}  // namespace

Session::Session(Cast const& cast)
    : mCast(cast),
      mPlan(cast.faults.nextSession()),
      mConfiguration(cast.faults.firstConfiguration()) {}

double Session::progress() const {
    return static_cast<double>(mCast.ledger.count(Count::Requests)) /
           static_cast<double>(mCast.requests);
}

void Session::run() {
    LoudLog const log(mPlan.logs);
    mCast.ledger.add(Count::Sessions);
    callUnconnected();
    mCast.client.create(*mDevice, mConfiguration);
    for (int i = 1; i <= mPlan.phases; ++i) {
        bool const isLast =
                i == mPlan.phases || mCast.ledger.count(Count::Requests) >= mCast.requests;
        Phase const phase = mCast.faults.nextPhase(mPlan, mConfiguration, isLast, progress());
        runPhase(phase);
        finishPhase(phase, isLast);
        if (isLast) {
            break;
        }
    }
    end();
}

void Session::runPhase(Phase const& phase) {
    mConfiguration = phase.configuration;
    reconfigure(phase);
    for (int i = 1; i < phase.requests; ++i) {
        submit(mCast.faults.nextRequest(phase, true, progress()), {});
        if (!mCast.isp.held().empty() && mCast.faults.usesNumberTwice(progress())) {
            useNumberTwice(phase);
        }
        mCast.isp.waitForRoom(mPlan.outstanding);
    }
}

/** The first request of a phase: the library waits for all that is outstanding, or gives it up. */
void Session::reconfigure(Phase const& phase) {
    mCast.ledger.add(Count::Drains);
    Plan plan = mCast.faults.nextRequest(phase, false, progress());
    plan.call = Call::Good;  // so that it does reconfigure
    plan.fate = mOutlasting != 0 ? Fate::Held : Fate::Answered;
    if (plan.buffers == BufferFault::MapInput || plan.buffers == BufferFault::MapJpeg) {
        plan.buffers = BufferFault::None;
    }
    Client::Circumstances circumstances;
    bool const holdsBack = !mCast.isp.held().empty();
    circumstances.mustGiveUp = mStuck > 0 || holdsBack || mOutlasting != 0;
    circumstances.mayGiveUp = mMaybeStuck > 0;
    circumstances.number = mOutlasting;
    submit(plan, circumstances);
    if (mOutlasting != 0) {
        // What the older result erases must not be the younger request of its number.
        mCast.isp.waitUntilIdle();
        mCast.isp.releaseHeld();
        mOutlasting = 0;
    } else if (circumstances.mustGiveUp) {
        afterGivingUp();
    }
    mStuck = 0;
    mMaybeStuck = 0;
    mStuckDescriptors = 0;
}

uint32_t Session::submit(Plan const& plan, Client::Circumstances circumstances) {
    circumstances.inDoomedSession = isDoomed();
    Client::Outcome const outcome = mCast.client.submit(*mDevice, plan, circumstances);
    mMaybeStuck += outcome.mayStayOutstanding ? 1 : 0;
    // The default build takes nothing out of the table but what is answered.
    if (outcome.staysOutstanding || (outcome.mayStayOutstanding && !kHardened)) {
        ++mStuck;
        mStuckDescriptors += Client::descriptorsOf(plan);
    }
    if (circumstances.secondOf != 0 && outcome.result >= 0) {
        abandon(1, Client::descriptorsOf(plan));
    }
    return outcome.number;
}

/** Records that the default build leaks, which its contract wants. */
void Session::abandon(uint64_t records, uint64_t descriptors) {
    if (!kHardened) {
        mCast.ledger.add(Count::Abandoned, records);
        mCast.ledger.add(Count::AbandonedDescriptors, descriptors);
    }
}

/** A request under the number of one that is held back: the first one keeps its place. */
void Session::useNumberTwice(Phase const& phase) {
    Plan plan = mCast.faults.nextRequest(phase, false, 0);
    plan.call = Call::Good;
    plan.buffers = BufferFault::None;
    plan.fate = Fate::Dropped;
    Client::Circumstances circumstances;
    circumstances.secondOf = mCast.isp.held().back()->number;
    submit(plan, circumstances);
}

/** What is held back is answered now, or only after the next phase's first request. */
void Session::finishPhase(Phase const& phase, bool isLast) {
    if (isLast && isDoomed()) {
        dieIn(phase);
        return;
    }
    if (phase.releasesLate) {
        return;
    }
    bool const endsInTheMiddle = isLast && mPlan.ending == Ending::InTheMiddle;
    mCast.isp.releaseHeld();
    if (!kHardened && !endsInTheMiddle) {
        // The answer of a call that timed out would end the wait of the next one.
        mCast.isp.waitUntilIdle();
    }
    if (phase.isOutlasted) {
        Client::Circumstances circumstances;
        circumstances.numberIsTaken = true;
        mOutlasting = submit(mCast.faults.outlastingRequest(phase), circumstances);
    }
}

/** A drained wait has emptied the table: whatever is answered from now on finds nothing. */
void Session::afterGivingUp() {
    for (AccountRef const& held : mCast.isp.held()) {
        held->givenUp = true;
        abandon(1, Client::descriptorsOf(held->plan));
    }
    abandon(mStuck, mStuckDescriptors);
    mCast.ledger.add(Count::LateAnswers, mCast.isp.releaseHeld());
}

/**
 * The module dies with requests outstanding; its client needs a few calls to notice. The first of
 * them waits for what is outstanding, if it is faster than the death.
 */
void Session::dieIn(Phase const& phase) {
    submit(mCast.faults.deadlyRequest(phase), {});
    Client::Circumstances circumstances;
    circumstances.moduleMayBeDead = true;
    Phase const next = mCast.faults.nextPhase(mPlan, phase.configuration, true, 0);
    for (int i = 0; i < kCallsAfterDeath; ++i) {
        Plan plan = mCast.faults.nextRequest(next, i > 0, 0);
        plan.reusesLastNumber = false;
        submit(plan, circumstances);
    }
    mCast.isp.waitUntilIdle();
}

/** Calls on an object that has no ISP device: the hardened build refuses each. */
void Session::callUnconnected() {
    if (!kHardened) {
        return;
    }
    Plan plan = mCast.faults.nextRequest({mConfiguration, 1, false, false, false}, true, 0);
    plan.call = Call::Good;
    Client::Circumstances circumstances;
    circumstances.isUnconnected = true;
    submit(plan, circumstances);
    mDevice->flush();
    mDevice->setOfflineCallback(nullptr);
    mDevice->destroy();
}

void Session::end() {
    switch (mPlan.ending) {
        case Ending::Orderly:
        case Ending::ModuleDies:
            mCast.isp.waitUntilIdle();
            mDevice->destroy();
            mCast.isp.forgetHeld();
            callUnconnected();
            break;
        case Ending::InTheMiddle:
            mCast.ledger.add(Count::SessionsEndedInTheMiddle);
            mDevice->flush();
            mDevice->destroy();
            break;
        case Ending::WithoutDestroy:
            mCast.isp.waitUntilIdle();
            break;
    }
    mDevice = nullptr;
    mCast.isp.waitUntilIdle();
}

}  // namespace quensoak
