#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/base/Mutex.h"
#include "recording.pb.h"

namespace quen::replay {

/** Compares what the library says with what it said, and keeps the differences. Any thread. */
class Comparison {
  public:
    /** @param holdsPictures whether the recording does: pictures are compared then */
    explicit Comparison(bool holdsPictures) : mHoldsPictures(holdsPictures) {}

    /** @param index of the recorded crossing in its recording */
    void compare(size_t index, recording::Crossing const& recorded,
                 recording::Crossing const& actual);

    /** Keeps a difference that is no crossing's. */
    void add(size_t index, recording::Crossing const& recorded, std::string const& difference);

    /** A line each, in the order of the recording. */
    std::vector<std::string> differences() const;

  private:
    bool const mHoldsPictures;
    mutable host::Mutex mLock;
    std::multimap<size_t, std::string> mDifferences HOST_GUARDED_BY(mLock);
};

}  // namespace quen::replay
