#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::reprocess {

/** What a thread does. In the order of a timeline's tracks. */
enum class ThreadKind { Client, Isp, Reader, Writer, Helper };

/**
 * The tracks of a timeline: one a thread. A thread that ends leaves its track to the next one of
 * its kind, so that a batch of any length has as many as it has threads at a time. Thread-safe.
 */
class Tracks : public std::enable_shared_from_this<Tracks> {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /**
     * The track of the calling thread; a thread without one gets one of this kind.
     *
     * @param begin of what the track will show of the thread
     */
    uint16_t ofThisThread(ThreadKind kind, TimePoint begin);

    struct Track {
        ThreadKind kind;
        int number;  ///< among those of its kind, from 1
    };

    /** The tracks so far, by the numbers that ofThisThread returns. */
    std::vector<Track> all() const;

  private:
    struct Lease;

    uint16_t take(ThreadKind kind, TimePoint begin);
    void give(uint16_t track);

    mutable host::Mutex mLock;
    std::vector<Track> mTracks HOST_GUARDED_BY(mLock);
    std::vector<TimePoint> mFreeFrom HOST_GUARDED_BY(mLock);  // by track; the end of time: taken
};

/** "client", "ISP 2". */
std::string trackName(Tracks::Track const& track);

}  // namespace quen::reprocess
