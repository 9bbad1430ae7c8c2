#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "Recording.h"
#include "host/base/Mutex.h"

namespace quen::replay {

/**
 * The order in which a recording's crossings happened, kept by the threads of a replay: each waits
 * for the turn of its next crossing. No thread waits here inside the library: at a crossing it
 * holds none of the library's locks. Any thread.
 */
class RecordedOrder {
  public:
    /**
     * @param recording must outlive the object
     * @param threads that play it
     */
    RecordedOrder(Recording const& recording, size_t threads)
        : mRecording(recording), mRunning(threads) {}

    size_t size() const { return mRecording.crossings.size(); }
    recording::Crossing const& at(size_t index) const { return mRecording.crossings[index]; }
    bool isCut() const { return mRecording.isCut; }

    /** The crossing whose turn it is; size() when all have happened. */
    size_t next() const;

    /** Blocks until every crossing before this one has happened. */
    void awaitTurn(size_t index);

    /** This crossing has happened. Its turn has come. */
    void pass(size_t index);

    /**
     * Ends the replay here: what follows cannot be compared. The first reason counts; an empty one
     * says that the library ends the process here, as it did.
     */
    [[noreturn]] void stop(std::string const& reason);

    /** A thread has played its last crossing. */
    void leave();

    /** Blocks for good: nothing is left to do, and the thread is inside the library. */
    [[noreturn]] void park();

    /** How a replay ended. */
    struct End {
        bool isWhole;        ///< every crossing has happened
        bool isLeft;         ///< no thread is playing any more; otherwise some are blocked for good
        std::string reason;  ///< of an end before that
    };

    /**
     * Blocks until everything has happened and, unless the recording is cut off, no thread plays;
     * or the replay was stopped; or nothing happens any more.
     *
     * @param patience for a crossing, beyond the time that the recording took for it
     */
    End waitForEnd(std::chrono::seconds patience);

  private:
    bool hasEndedLocked() const HOST_REQUIRES(mLock);
    bool waitForProgressLocked(size_t index, std::chrono::steady_clock::time_point end)
            HOST_REQUIRES(mLock);
    std::chrono::nanoseconds recordedTime(size_t index) const;
    std::string missingText(size_t index) const;

    Recording const& mRecording;
    mutable host::Mutex mLock;
    host::Condition mChanged;
    size_t mNext HOST_GUARDED_BY(mLock) = 0;
    size_t mRunning HOST_GUARDED_BY(mLock);  // threads
    bool mIsStopped HOST_GUARDED_BY(mLock) = false;
    std::string mReason HOST_GUARDED_BY(mLock);
};

}  // namespace quen::replay
