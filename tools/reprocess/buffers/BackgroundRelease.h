#pragma once

#include <future>
#include <memory>
#include <utility>

#include "buffers/ClientBuffer.h"

namespace quen::reprocess {

/**
 * Frees buffers on another thread: unmapping a large picture takes the system a while.
 *
 * Not thread-safe. The destructor waits until the last buffer is freed.
 */
class BackgroundRelease {
  public:
    /** Starts to free a buffer; waits until the previous one is freed. */
    void release(std::unique_ptr<ClientBuffer> buffer) {
        // Without a thread, the buffer is freed with the future.
        mLatest = std::async([held = std::move(buffer)]() mutable { held.reset(); });
    }

  private:
    std::future<void> mLatest;
};

}  // namespace quen::reprocess
