#pragma once

#include <future>
#include <memory>
#include <utility>

#include "buffers/ClientBuffer.h"

namespace quen::reprocess {

/**
 * Frees buffers on another thread: giving a large picture's memory back takes the system a while,
 * and whoever is done with it has other things to do.
 *
 * One thread at a time. The destructor waits for what is being freed.
 */
class BackgroundRelease {
  public:
    /** Waits for the buffer before this one. */
    void release(std::unique_ptr<ClientBuffer> buffer) {
        // Where no thread is to be had, the buffer goes with the future.
        mLatest = std::async([held = std::move(buffer)]() mutable { held.reset(); });
    }

  private:
    std::future<void> mLatest;
};

}  // namespace quen::reprocess
