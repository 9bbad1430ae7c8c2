#include "RecordedOrder.h"

#include <algorithm>
#include <cstdint>

#include "CrashReport.h"
#include "Fields.h"

namespace quen::replay {

using Clock = std::chrono::steady_clock;

namespace {

/** Longer than this only clients take for a crossing, and those of a replay do not wait. */
constexpr auto kLongestWait = std::chrono::seconds(60);

}  // namespace

size_t RecordedOrder::next() const {
    host::MutexLock const lock(mLock);
    return mNext;
}

void RecordedOrder::awaitTurn(size_t index) {
    host::MutexLock const lock(mLock);
    while (mNext != index || mIsStopped) {
        mChanged.wait(mLock);
    }
}

void RecordedOrder::pass(size_t index) {
    host::MutexLock const lock(mLock);
    mNext = index + 1;
    notePassed(mNext);
    mChanged.notifyAll();
}

void RecordedOrder::stop(std::string const& reason) {
    {
        host::MutexLock const lock(mLock);
        if (!mIsStopped) {
            mIsStopped = true;
            mReason = reason;
        }
        mChanged.notifyAll();
    }
    park();
}

void RecordedOrder::leave() {
    host::MutexLock const lock(mLock);
    --mRunning;
    mChanged.notifyAll();
}

void RecordedOrder::park() {
    host::MutexLock const lock(mLock);
    for (;;) {
        mChanged.wait(mLock);
    }
}

RecordedOrder::End RecordedOrder::waitForEnd(std::chrono::seconds patience) {
    host::MutexLock const lock(mLock);
    while (!hasEndedLocked()) {
        size_t const next = mNext;
        if (!waitForProgressLocked(next, Clock::now() + patience + recordedTime(next))) {
            mIsStopped = true;
            mReason = missingText(next);
        }
    }
    return {mNext == size() && !mIsStopped, mRunning == 0, mReason};
}

bool RecordedOrder::hasEndedLocked() const {
    return mIsStopped || (mNext == size() && (isCut() || mRunning == 0));
}

/** Waits until a crossing has happened or the replay is stopped. @return false at the end */
bool RecordedOrder::waitForProgressLocked(size_t index, Clock::time_point end) {
    while (mNext == index && !hasEndedLocked()) {
        if (!mChanged.waitUntil(mLock, end) && mNext == index && !hasEndedLocked()) {
            return false;
        }
    }
    return true;
}

/** Time from the crossing before it to this one, as far as the library may need it again. */
std::chrono::nanoseconds RecordedOrder::recordedTime(size_t index) const {
    if (index == size()) {
        return std::chrono::nanoseconds(0);
    }
    uint64_t const before = index == 0 ? 0 : at(index - 1).time_ns();
    uint64_t const then = at(index).time_ns();
    uint64_t const took = then > before ? then - before : 0;
    return std::min<std::chrono::nanoseconds>(
            std::chrono::nanoseconds(std::min<uint64_t>(took, INT64_MAX)), kLongestWait);
}

std::string RecordedOrder::missingText(size_t index) const {
    if (index == size()) {
        return "everything has happened, but the library does not return";
    }
    return "what comes next in the recording does not happen: no. " + std::to_string(index + 1) +
           ", " + titleOf(at(index)) + " (thread " + std::to_string(at(index).thread()) +
           ", session " + std::to_string(at(index).session()) + ")";
}

}  // namespace quen::replay
