#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Comparison.h"
#include "RecordedOrder.h"
#include "recording.pb.h"

namespace quen::replay {

/**
 * One thread of a recording, played by one thread: it makes the calls that the client or the ISP
 * made on it, and meets those that the library makes meanwhile with what was recorded. Used by its
 * own thread alone.
 */
class ThreadReplay {
  public:
    /** Makes the call of a crossing to the library and meets its return. */
    using Perform = std::function<void(ThreadReplay& thread, size_t index)>;

    /** @param crossings of the thread, by their indices */
    ThreadReplay(RecordedOrder& order, Comparison& comparison, std::vector<size_t> crossings,
                 Perform perform);

    /** Plays the thread from its first crossing to its last. */
    void run();

    /** The replay that runs on the calling thread. */
    static ThreadReplay& current();

    /** Waits for the turn of a call that the thread is about to make, and passes it. */
    void begin(size_t index);

    /**
     * The library has made a call or returned from one: compares that with the thread's next
     * crossing and waits for its turn. Another crossing than was recorded ends the replay.
     *
     * @param call the recorded call that a return belongs to; 0 for calls
     * @return the recorded crossing's index
     */
    size_t meet(recording::Crossing const& actual, uint64_t call);

    /**
     * Makes what calls were made before a recorded call of the library was answered, up to the
     * answer. One over which the library ends the process ends the replay instead.
     */
    recording::Crossing const& answerOf(size_t call);

    recording::Crossing const& at(size_t index) const { return mOrder.at(index); }
    RecordedOrder& order() { return mOrder; }
    Comparison& comparison() { return mComparison; }

  private:
    size_t next();

    RecordedOrder& mOrder;
    Comparison& mComparison;
    std::vector<size_t> const mCrossings;
    Perform const mPerform;
    size_t mPlace = 0;  // in mCrossings
};

}  // namespace quen::replay
