#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "recording.pb.h"

namespace quen::replay {

/**
 * Follows the calls of a recording, crossing by crossing: those that are open on each thread, and
 * the device objects that are there. Finds crossings that cannot come where they stand. One thread.
 */
class OpenCalls {
  public:
    /** @return what is wrong with the next crossing; empty when nothing is */
    std::string take(recording::Crossing const& crossing);

    /** Threads that have crossings so far. */
    size_t threads() const { return mThreads.size(); }

  private:
    struct Call {
        uint64_t number;
        recording::Crossing::WhatCase kind;
        uint32_t session;
        bool constructs;
    };

    std::string takeCall(recording::Crossing const& crossing, std::vector<Call>& open);
    std::string takeReturn(recording::Crossing const& crossing, std::vector<Call>& open);
    std::string takeClientCall(recording::Crossing const& crossing);

    std::map<uint32_t, std::vector<Call>> mThreads;  // the open calls, the latest one last
    std::map<uint32_t, size_t> mDevices;             // open client's calls of each device object
    std::set<uint32_t> mReceivers;                   // sessions that gave the ISP a callback
};

}  // namespace quen::replay
