#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "buffers/ClientBuffer.h"
#include "host/base/Mutex.h"

namespace quen::reprocess {

/**
 * Buffers for one frame after the other: the system has the pages of a fresh one to make and to
 * clear. Thread-safe.
 */
class BufferPool {
  public:
    /** @param kept most buffers to keep for further frames */
    explicit BufferPool(size_t kept) : mKept(kept) {}

    /** A buffer, its content undefined. @throws Failure as ClientBuffer's constructor does */
    std::unique_ptr<ClientBuffer> take(uint32_t width, uint32_t height, int32_t format);

    /** Takes a buffer back that is not in use any more. */
    void give(std::unique_ptr<ClientBuffer> buffer);

  private:
    size_t const mKept;
    host::Mutex mLock;
    std::vector<std::unique_ptr<ClientBuffer>> mFree HOST_GUARDED_BY(mLock);  // oldest first
};

}  // namespace quen::reprocess
