#include "trace/Tracks.h"

#include <algorithm>
#include <utility>

namespace quen::reprocess {

/** Gives a thread's track back when the thread ends. */
struct Tracks::Lease {
    ~Lease() {
        if (tracks) {
            tracks->give(track);
        }
    }

    std::shared_ptr<Tracks> tracks;
    uint16_t track = 0;
};

uint16_t Tracks::ofThisThread(ThreadKind kind, TimePoint begin) {
    thread_local Lease tLease;
    if (tLease.tracks.get() != this) {
        if (tLease.tracks) {
            tLease.tracks->give(tLease.track);
        }
        tLease.track = take(kind, begin);
        tLease.tracks = shared_from_this();
    }
    return tLease.track;
}

std::vector<Tracks::Track> Tracks::all() const {
    host::MutexLock const lock(mLock);
    return mTracks;
}

/** The first track of a kind that was free at a time, or a new one. */
uint16_t Tracks::take(ThreadKind kind, TimePoint begin) {
    host::MutexLock const lock(mLock);
    int number = 1;
    for (size_t i = 0; i < mTracks.size(); ++i) {
        if (mTracks[i].kind != kind) {
            continue;
        }
        if (mFreeFrom[i] <= begin) {
            mFreeFrom[i] = TimePoint::max();
            return static_cast<uint16_t>(i);
        }
        ++number;
    }
    mTracks.push_back({kind, number});
    mFreeFrom.push_back(TimePoint::max());
    return static_cast<uint16_t>(mTracks.size() - 1);
}

void Tracks::give(uint16_t track) {
    host::MutexLock const lock(mLock);
    mFreeFrom[track] = std::chrono::steady_clock::now();
}

std::string trackName(Tracks::Track const& track) {
    constexpr char const* kNames[] = {"client", "ISP", "reader", "writer", "helper"};
    std::string const name = kNames[static_cast<size_t>(track.kind)];
    return track.kind == ThreadKind::Client ? name : name + " " + std::to_string(track.number);
}

}  // namespace quen::reprocess
